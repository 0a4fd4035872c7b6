# Our own targets build with every warning an error; third-party code is not ours to police.
function(kvggl_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
