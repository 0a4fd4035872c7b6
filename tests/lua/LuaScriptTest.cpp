// Each Lua script of tests/lua is one test, run in a fresh state with the module preloaded as
// `require "kvggl"` finds it. A script fails by raising an error. After the state closes, the
// component must be gone from the process: the host keeps its code mapped while any of its
// objects lives, so a leaked object shows here (and to LeakSanitizer).
#include "LuaModule.h"

#include <lua.hpp>

#include <gtest/gtest.h>

#include "LuaScriptSupport.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace {

// Runs a script with its arguments in `arg`; the error text, empty on success.
std::string s_sExecute(const std::string& sScript, const std::vector<std::string>& tabArgs = {}) {
    setenv("KVGGL_COMPONENT", KVGGL_SO_PATH, 1);
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_getsubtable(L, LUA_REGISTRYINDEX, LUA_PRELOAD_TABLE);
    lua_pushcfunction(L, luaopen_kvggl);
    lua_setfield(L, -2, "kvggl");
    lua_pop(L, 1);
    lua_createtable(L, static_cast<int>(tabArgs.size()), 1);
    lua_pushstring(L, sScript.c_str());
    lua_rawseti(L, -2, 0);
    for (size_t i = 0; i < tabArgs.size(); ++i) {
        lua_pushstring(L, tabArgs[i].c_str());
        lua_rawseti(L, -2, static_cast<lua_Integer>(i + 1));
    }
    lua_setglobal(L, "arg");
    std::string sErreur;
    // A traceback on failure, to find the line.
    lua_getglobal(L, "debug");
    lua_getfield(L, -1, "traceback");
    lua_remove(L, -2);
    if (luaL_loadfile(L, sScript.c_str()) != LUA_OK || lua_pcall(L, 0, 0, -2) != LUA_OK)
        sErreur = luaL_tolstring(L, -1, nullptr);
    lua_close(L);
    return sErreur;
}

class Scripts : public testing::TestWithParam<std::string> {};

TEST_P(Scripts, Reussit) {
    std::string sErreur = s_sExecute(GetParam());
    EXPECT_EQ(sErreur, "");
    EXPECT_FALSE(KVLuaTest::bComposanteChargee()) << "an object outlived its Lua state";
}
INSTANTIATE_TEST_SUITE_P(Lua, Scripts, testing::ValuesIn(KVLuaTest::tabScripts(KVGGL_LUA_SCRIPTS, "test_")),
                         KVLuaTest::sNomTest);

TEST(Lua, UnScriptQuiEchoueEstVu) {
    std::string sScript = std::string(KVGGL_LUA_SCRIPTS) + "/support_fails.lua";
    std::string sErreur = s_sExecute(sScript);
    EXPECT_NE(sErreur.find("bad argument #2 to 'GglRequete'"), std::string::npos) << sErreur;
    EXPECT_NE(sErreur.find("support_fails.lua:"), std::string::npos)
        << "the message says where: " << sErreur;
    EXPECT_FALSE(KVLuaTest::bComposanteChargee());
}

TEST(Lua, DeuxEtatsPartagentUnHote) {
    setenv("KVGGL_COMPONENT", KVGGL_SO_PATH, 1);
    lua_State* L1 = luaL_newstate();
    lua_State* L2 = luaL_newstate();
    for (lua_State* L : {L1, L2}) {
        luaL_openlibs(L);
        luaL_requiref(L, "kvggl", luaopen_kvggl, 1);
        lua_pop(L, 1);
        ASSERT_EQ(luaL_dostring(L, "c = kvggl.gglChemin(); c.Epaisseur = 7"), LUA_OK)
            << lua_tostring(L, -1);
    }
    lua_close(L1);
    EXPECT_TRUE(KVLuaTest::bComposanteChargee()) << "the second state still uses it";
    ASSERT_EQ(luaL_dostring(L2, "assert(c.Epaisseur == 7)"), LUA_OK) << lua_tostring(L2, -1);
    lua_close(L2);
    EXPECT_FALSE(KVLuaTest::bComposanteChargee());
}

TEST(Lua, SansComposanteLeModuleNeSeChargePas) {
    setenv("KVGGL_COMPONENT", "/nonexistent/kv220ggl.so", 1);
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_getsubtable(L, LUA_REGISTRYINDEX, LUA_PRELOAD_TABLE);
    lua_pushcfunction(L, luaopen_kvggl);
    lua_setfield(L, -2, "kvggl");
    lua_pop(L, 1);
    ASSERT_NE(luaL_dostring(L, "require 'kvggl'"), LUA_OK);
    std::string s = lua_tostring(L, -1);
    EXPECT_NE(s.find("kvggl: the component cannot be loaded"), std::string::npos) << s;
    lua_close(L);
    setenv("KVGGL_COMPONENT", KVGGL_SO_PATH, 1);
}

} // namespace
