# The coverage build (`./kvggl coverage`): every target of the tree instrumented for gcov,
# unoptimised so that lines map one to one.
if(KVGGL_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
endif()
