# Installation: what a script needs outside the repository, laid out where the stock lua5.4
# looks under the prefix. The module and the component go side by side (the module loads the
# component found beside itself); the reference data of `describe` goes on the Lua path; the
# emulators and kvggl-describe in bin/; the docs and the examples in the doc folder.
# `luarocks make` gives its own module folders through the two cache variables.
include(GNUInstallDirs)
set(KVGGL_LUA_CDIR "${CMAKE_INSTALL_LIBDIR}/lua/5.4" CACHE STRING
    "Where the Lua module and the component are installed (relative: under the prefix)")
set(KVGGL_LUA_DIR "${CMAKE_INSTALL_DATADIR}/lua/5.4" CACHE STRING
    "Where the Lua files are installed (relative: under the prefix)")
# The stock interpreter looks in lib/lua/5.4, not in a multiarch folder.
if(KVGGL_LUA_CDIR MATCHES "^lib/[^/]+-linux-gnu/lua/5.4$")
    set(KVGGL_LUA_CDIR "lib/lua/5.4" CACHE STRING "" FORCE)
endif()

install(TARGETS kvggl kv220ggl LIBRARY DESTINATION ${KVGGL_LUA_CDIR})
install(FILES ${CMAKE_BINARY_DIR}/kvggl_reference.lua DESTINATION ${KVGGL_LUA_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/host/lua/describe.lua
        DESTINATION ${CMAKE_INSTALL_DATADIR}/kvggl)
install(TARGETS kvggl-emulators RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# kvggl-describe finds the module, the data and describe.lua from where it is installed (bin/
# under the prefix); under luarocks, which gives absolute folders and deploys the module and the
# data elsewhere in its tree, describe.lua stays in the rock's folder and Lua's own paths
# (`luarocks path`) find the rest.
if(IS_ABSOLUTE "${KVGGL_LUA_DIR}")
    set(KVGGL_DESCRIBE_CDIR "${KVGGL_LUA_CDIR}")
    set(KVGGL_DESCRIBE_DIR "${KVGGL_LUA_DIR}")
    set(KVGGL_DESCRIBE_SCRIPT "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/kvggl/describe.lua")
else()
    set(KVGGL_DESCRIBE_CDIR "$here/../${KVGGL_LUA_CDIR}")
    set(KVGGL_DESCRIBE_DIR "$here/../${KVGGL_LUA_DIR}")
    set(KVGGL_DESCRIBE_SCRIPT "$here/../${CMAKE_INSTALL_DATADIR}/kvggl/describe.lua")
endif()
configure_file(${PROJECT_SOURCE_DIR}/host/lua/kvggl-describe.in
               ${CMAKE_BINARY_DIR}/kvggl-describe @ONLY)
install(PROGRAMS ${CMAKE_BINARY_DIR}/kvggl-describe DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/emulators/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
        RENAME emulators.md)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
