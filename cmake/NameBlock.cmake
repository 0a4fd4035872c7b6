# The name block gbyBlocNom_60: tools/PackNames reads the vocabulary's .def files (it includes
# them, so its own build follows their edits) and writes the block as a generated source of
# the component's frame. Included by component/CMakeLists.txt before the layers.
add_executable(PackNames ${PROJECT_SOURCE_DIR}/tools/PackNames.cpp)
target_include_directories(PackNames PRIVATE ${PROJECT_SOURCE_DIR}/component)
target_link_libraries(PackNames PRIVATE kvabi)
kvggl_warnings(PackNames)

set(KVGGL_NAME_BLOCK ${CMAKE_CURRENT_BINARY_DIR}/frame/NameBlock60.cpp)
add_custom_command(
    OUTPUT ${KVGGL_NAME_BLOCK}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/frame
    COMMAND PackNames ${KVGGL_NAME_BLOCK}
    DEPENDS PackNames
    COMMENT "Packing the name block"
    VERBATIM)
