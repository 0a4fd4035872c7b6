-- The LuaRocks package. `./kvggl rock` copies it to build/ under the name LuaRocks wants and
-- runs `luarocks make` on it from the repository: the same targets as ./kvggl build (CMake and
-- Ninja, tests off), installed through the project's own install rules: the module kvggl and
-- the component kv220ggl.so side by side, the reference data of describe, the emulators and
-- kvggl-describe, the docs and the examples.
rockspec_format = "3.0"
package = "kvggl"
version = "dev-1"
source = {url = "git+file://."}
description = {
    summary = "Script access to Google services through the kv220ggl component",
    detailed = "The Lua module of the kv220ggl component and its reference host: calendars, " ..
               "contacts, documents, maps and photos, and local emulators of the services.",
    license = "Proprietary",
}
dependencies = {"lua >= 5.4, < 5.5"}
build = {
    type = "cmake",
    variables = {
        CMAKE_BUILD_TYPE = "RelWithDebInfo",
        CMAKE_INSTALL_PREFIX = "$(PREFIX)",
        KVGGL_TESTS = "OFF",
        KVGGL_LUA_CDIR = "$(LIBDIR)",
        KVGGL_LUA_DIR = "$(LUADIR)",
    },
}
