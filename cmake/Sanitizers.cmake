# The test build runs under ASan and UBSan; every target of the tree picks the flags up, so
# the component, the host and the tests share one instrumented runtime.
if(KVGGL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
