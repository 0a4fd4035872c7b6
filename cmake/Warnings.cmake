# Our own targets build with every warning an error; third-party code is not ours to police.
# GCC 12 at -O3 (Release) reports a false overlap in std::string's operator+ (its bug 105329):
# that one warning is off there.
function(kvggl_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Wno-restrict>)
    endif()
endfunction()
