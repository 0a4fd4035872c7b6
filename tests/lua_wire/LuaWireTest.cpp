// Lua scripts against the emulators: each tests/lua_wire/test_*.lua script, and each example
// of examples/, is one test, run in a fresh Lua state with the module preloaded and the
// host set up as a user sets it up by hand: every origin routed to the fixture's emulators
// (KVGGL_ROUTE) and curl as the browser (KVGGL_BROWSER), so that auto-approved consent pages
// come back to the login dialogue at once.
//
// The scripts get a native helper, require "kvggl_wire":
//   kvggl_wire.port()                    the fixture's port, read from its port file
//   kvggl_wire.http(port, method, target [, body [, content_type]])
//                                        status and body of one request to 127.0.0.1:port
//   kvggl_wire.setenv(name, value|nil)   for settings the host reads when it starts
//   kvggl_wire.store(path, key[, value]) the host store's KVGGL value under key, written first
//   kvggl_wire.emulators(auto_approve)   emulators of their own, in-process on a free port:
//                                        e.port, e:stop() (also when collected)
//   kvggl_wire.run(code, ...)            runs the chunk in another fresh Lua state (the same
//                                        host serves both) with the texts as `...`; its results
//                                        as texts, or its error raised here
//   kvggl_wire.dir                       this folder, for the scripts' companions
//   kvggl_wire.image(bytes)              "png", "gif" or "jpeg", width and height, as libgd
//                                        reads the bytes; nil for bytes it cannot read
//   kvggl_wire.pixel(bytes, x, y)        the colour 0xRRGGBB of that pixel
//   kvggl_wire.project(lat, lng, zoom, w, h, at_lat, at_lng)
//                                        where a point falls on a Web Mercator map of that
//                                        centre, zoom and size in pixels
// After a script, the component must be gone from the process, as in tests/lua.
#include "EmulatorHarness.h"
#include "HttpProbe.h"
#include "LuaModule.h"
#include "MapImage.h"

#include <gd.h>

#include <lua.hpp>
#include <sqlite3.h>

#include <gtest/gtest.h>

#include "LuaScriptSupport.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr const char* gszHarnessMeta = "kvggl_wire.emulators";
constexpr const char* gszBrowser = "curl -s -L -o /dev/null";

int s_nFixturePort() {
    const char* psz = std::getenv("KVGGL_EMULATORS_PORT_FILE");
    std::ifstream in(psz && *psz ? psz : KVGGL_EMULATORS_PORT_FILE);
    int nPort = 0;
    in >> nPort;
    return nPort;
}

// No Lua error may be raised while a C++ value lives (Lua unwinds with longjmp): each function
// does its work in an inner scope, leaves either its results or an error text on the stack,
// and raises only after that scope.
int s_nRaise(lua_State* L) {
    return lua_error(L);
}

int s_nPort(lua_State* L) {
    lua_pushinteger(L, s_nFixturePort());
    return 1;
}

int s_nHttp(lua_State* L) {
    const auto nPort = static_cast<int>(luaL_checkinteger(L, 1));
    const char* pszMethod = luaL_checkstring(L, 2);
    const char* pszTarget = luaL_checkstring(L, 3);
    size_t nBody = 0;
    const char* pszBody = luaL_optlstring(L, 4, "", &nBody);
    const char* pszType = luaL_optstring(L, 5, nBody ? "application/json" : "");
    bool bConnected = false;
    {
        STReply st =
            CHttpProbe(nPort).Send(pszMethod, "", pszTarget, std::string(pszBody, nBody), pszType);
        bConnected = st.bConnected;
        if (bConnected) {
            lua_pushinteger(L, st.nStatus);
            lua_pushlstring(L, st.sBody.data(), st.sBody.size());
        } else {
            lua_pushfstring(L, "no answer from 127.0.0.1:%d to %s %s", nPort, pszMethod, pszTarget);
        }
    }
    return bConnected ? 2 : s_nRaise(L);
}

int s_nSetenv(lua_State* L) {
    const char* pszName = luaL_checkstring(L, 1);
    if (lua_isnoneornil(L, 2))
        unsetenv(pszName);
    else
        setenv(pszName, luaL_checkstring(L, 2), 1);
    return 0;
}

// store(path, key [, value]): the value of section "KVGGL" under key in the host's SQLite store
// at path, after writing value when one is given; nil when there is none. What a user would see
// with the sqlite3 shell, and how a test puts a connection there that another runtime saved.
int s_nStore(lua_State* L) {
    const char* pszPath = luaL_checkstring(L, 1);
    const char* pszKey = luaL_checkstring(L, 2);
    sqlite3* pDb = nullptr;
    if (sqlite3_open(pszPath, &pDb) != SQLITE_OK) {
        sqlite3_close(pDb);
        return luaL_error(L, "store %s cannot be opened", pszPath);
    }
    sqlite3_exec(pDb,
                 "CREATE TABLE IF NOT EXISTS entries(section TEXT NOT NULL, key TEXT NOT NULL,"
                 " value TEXT NOT NULL, PRIMARY KEY(section, key)) WITHOUT ROWID;",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* pStmt = nullptr;
    if (!lua_isnoneornil(L, 3)) {
        sqlite3_prepare_v2(pDb, "INSERT OR REPLACE INTO entries VALUES('KVGGL', ?1, ?2)", -1,
                           &pStmt, nullptr);
        sqlite3_bind_text(pStmt, 1, pszKey, -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(pStmt, 2, luaL_checkstring(L, 3), -1, SQLITE_TRANSIENT);
        sqlite3_step(pStmt);
        sqlite3_finalize(pStmt);
    }
    sqlite3_prepare_v2(pDb, "SELECT value FROM entries WHERE section = 'KVGGL' AND key = ?1", -1,
                       &pStmt, nullptr);
    sqlite3_bind_text(pStmt, 1, pszKey, -1, SQLITE_TRANSIENT);
    if (sqlite3_step(pStmt) == SQLITE_ROW)
        lua_pushstring(L, reinterpret_cast<const char*>(sqlite3_column_text(pStmt, 0)));
    else
        lua_pushnil(L);
    sqlite3_finalize(pStmt);
    sqlite3_close(pDb);
    return 1;
}

CEmulatorHarness** s_ppHarness(lua_State* L) {
    return static_cast<CEmulatorHarness**>(luaL_checkudata(L, 1, gszHarnessMeta));
}

int s_nHarnessStop(lua_State* L) {
    CEmulatorHarness** pp = s_ppHarness(L);
    delete *pp;
    *pp = nullptr;
    return 0;
}

int s_nEmulators(lua_State* L) {
    const bool bAutoApprove = lua_toboolean(L, 1);
    auto** pp = static_cast<CEmulatorHarness**>(lua_newuserdatauv(L, sizeof(CEmulatorHarness*), 0));
    *pp = nullptr;
    luaL_setmetatable(L, gszHarnessMeta);
    bool bOk = false;
    {
        std::string sError;
        try {
            *pp = new CEmulatorHarness(bAutoApprove);
        } catch (const std::exception& e) {
            sError = e.what();
        }
        bOk = *pp != nullptr;
        if (!bOk)
            lua_pushfstring(L, "the emulators did not start: %s", sError.c_str());
    }
    return bOk ? 1 : s_nRaise(L);
}

int s_nHarnessIndex(lua_State* L) {
    CEmulatorHarness** pp = s_ppHarness(L);
    const char* pszKey = luaL_checkstring(L, 2);
    if (std::string_view(pszKey) == "port") {
        if (*pp)
            lua_pushinteger(L, (*pp)->nPort());
        else
            lua_pushnil(L);
    } else if (std::string_view(pszKey) == "stop") {
        lua_pushcfunction(L, s_nHarnessStop);
    } else {
        lua_pushnil(L);
    }
    return 1;
}

// The image of the bytes, by their signature; null for bytes libgd cannot read.
struct STGdDeleter {
    void operator()(gdImage* p) const { gdImageDestroy(p); }
};
std::unique_ptr<gdImage, STGdDeleter> s_pImage(std::string_view sv, const char** ppszKind) {
    void* p = const_cast<char*>(sv.data());
    const int n = static_cast<int>(sv.size());
    gdImage* pImage = nullptr;
    *ppszKind = nullptr;
    if (sv.starts_with("\x89PNG")) {
        pImage = gdImageCreateFromPngPtr(n, p);
        *ppszKind = "png";
    } else if (sv.starts_with("GIF8")) {
        pImage = gdImageCreateFromGifPtr(n, p);
        *ppszKind = "gif";
    } else if (sv.starts_with("\xff\xd8")) {
        pImage = gdImageCreateFromJpegPtr(n, p);
        *ppszKind = "jpeg";
    }
    return std::unique_ptr<gdImage, STGdDeleter>(pImage);
}

int s_nImage(lua_State* L) {
    size_t n = 0;
    const char* psz = luaL_checklstring(L, 1, &n);
    const char* pszKind = nullptr;
    auto pImage = s_pImage(std::string_view(psz, n), &pszKind);
    if (!pImage) {
        lua_pushnil(L);
        return 1;
    }
    lua_pushstring(L, pszKind);
    lua_pushinteger(L, gdImageSX(pImage.get()));
    lua_pushinteger(L, gdImageSY(pImage.get()));
    return 3;
}

int s_nPixel(lua_State* L) {
    size_t n = 0;
    const char* psz = luaL_checklstring(L, 1, &n);
    const auto x = static_cast<int>(luaL_checkinteger(L, 2));
    const auto y = static_cast<int>(luaL_checkinteger(L, 3));
    const char* pszKind = nullptr;
    bool bOk = false;
    {
        auto pImage = s_pImage(std::string_view(psz, n), &pszKind);
        bOk = pImage && gdImageBoundsSafe(pImage.get(), x, y);
        if (bOk) {
            const int c = gdImageGetTrueColorPixel(pImage.get(), x, y);
            lua_pushinteger(L, gdTrueColorGetRed(c) << 16 | gdTrueColorGetGreen(c) << 8 |
                                   gdTrueColorGetBlue(c));
        } else {
            lua_pushfstring(L, "no pixel (%d, %d) in these bytes", x, y);
        }
    }
    return bOk ? 1 : s_nRaise(L);
}

int s_nProject(lua_State* L) {
    double x = 0, y = 0;
    CMapImage::s_Project({luaL_checknumber(L, 1), luaL_checknumber(L, 2)},
                         static_cast<int>(luaL_checkinteger(L, 3)), 1,
                         static_cast<int>(luaL_checkinteger(L, 4)),
                         static_cast<int>(luaL_checkinteger(L, 5)),
                         {luaL_checknumber(L, 6), luaL_checknumber(L, 7)}, x, y);
    lua_pushinteger(L, static_cast<lua_Integer>(std::lround(x)));
    lua_pushinteger(L, static_cast<lua_Integer>(std::lround(y)));
    return 2;
}

int s_nOpenWire(lua_State* L);

lua_State* s_pNewState() {
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_getsubtable(L, LUA_REGISTRYINDEX, LUA_PRELOAD_TABLE);
    lua_pushcfunction(L, luaopen_kvggl);
    lua_setfield(L, -2, "kvggl");
    lua_pushcfunction(L, s_nOpenWire);
    lua_setfield(L, -2, "kvggl_wire");
    lua_pop(L, 1);
    return L;
}

// Runs the chunk on top of L with nArgs arguments above it, under a traceback; the error text,
// empty on success, with the results left on the stack.
std::string s_sCall(lua_State* L, int nArgs) {
    lua_getglobal(L, "debug");
    lua_getfield(L, -1, "traceback");
    lua_remove(L, -2);
    const int nHandler = lua_gettop(L) - nArgs - 1;
    lua_insert(L, nHandler);
    if (lua_pcall(L, nArgs, LUA_MULTRET, nHandler) != LUA_OK) {
        std::string s = luaL_tolstring(L, -1, nullptr);
        return s.empty() ? "(an error without text)" : s;
    }
    lua_remove(L, nHandler);
    return {};
}

int s_nRun(lua_State* L) {
    size_t nCode = 0;
    const char* pszCode = luaL_checklstring(L, 1, &nCode);
    const int nArgs = lua_gettop(L) - 1;
    for (int i = 2; i <= nArgs + 1; ++i)
        luaL_checkstring(L, i);
    bool bOk = false;
    int nResults = 0;
    {
        std::vector<std::string> tabResults;
        std::string sError;
        lua_State* L2 = s_pNewState();
        if (luaL_loadbuffer(L2, pszCode, nCode, "=kvggl_wire.run") != LUA_OK) {
            sError = lua_tostring(L2, -1);
        } else {
            for (int i = 2; i <= nArgs + 1; ++i)
                lua_pushstring(L2, lua_tostring(L, i));
            const int nBase = lua_gettop(L2) - nArgs - 1;
            sError = s_sCall(L2, nArgs);
            for (int i = nBase + 1; sError.empty() && i <= lua_gettop(L2); ++i) {
                tabResults.emplace_back(luaL_tolstring(L2, i, nullptr));
                lua_pop(L2, 1);
            }
        }
        lua_close(L2);
        bOk = sError.empty();
        if (bOk) {
            luaL_checkstack(L, static_cast<int>(tabResults.size()) + 1, "too many results");
            for (const std::string& s : tabResults)
                lua_pushlstring(L, s.data(), s.size());
            nResults = static_cast<int>(tabResults.size());
        } else {
            lua_pushfstring(L, "in the other state: %s", sError.c_str());
        }
    }
    return bOk ? nResults : s_nRaise(L);
}

int s_nOpenWire(lua_State* L) {
    if (luaL_newmetatable(L, gszHarnessMeta)) {
        lua_pushcfunction(L, s_nHarnessStop);
        lua_setfield(L, -2, "__gc");
        lua_pushcfunction(L, s_nHarnessIndex);
        lua_setfield(L, -2, "__index");
    }
    lua_pop(L, 1);
    lua_newtable(L);
    lua_pushstring(L, KVGGL_LUA_WIRE_SCRIPTS);
    lua_setfield(L, -2, "dir");
    const luaL_Reg tabFunctions[] = {
        {"port", s_nPort},           {"http", s_nHttp},       {"setenv", s_nSetenv},
        {"store", s_nStore},         {"emulators", s_nEmulators}, {"run", s_nRun},
        {"image", s_nImage},         {"pixel", s_nPixel},     {"project", s_nProject},
        {nullptr, nullptr},
    };
    luaL_setfuncs(L, tabFunctions, 0);
    return 1;
}

// The settings of a user who runs a script by hand against the emulators.
void s_SetHostEnvironment(int nPort) {
    setenv("KVGGL_COMPONENT", KVGGL_SO_PATH, 1);
    setenv("KVGGL_ROUTE", ("*=127.0.0.1:" + std::to_string(nPort)).c_str(), 1);
    setenv("KVGGL_BROWSER", gszBrowser, 1);
    // The emulators' map services want a key, as the real ones do; their seed accepts this.
    setenv("KVGGL_GOOGLE_API_KEY", "demo-key", 1);
    // A dialogue that cannot end fails the test in seconds, not in five minutes.
    setenv("KVGGL_LOGIN_WAIT", "30", 1);
}

std::string s_sExecute(const std::string& sScript) {
    lua_State* L = s_pNewState();
    lua_createtable(L, 0, 1);
    lua_pushstring(L, sScript.c_str());
    lua_rawseti(L, -2, 0);
    lua_setglobal(L, "arg");
    std::string sErreur;
    if (luaL_loadfile(L, sScript.c_str()) != LUA_OK)
        sErreur = lua_tostring(L, -1);
    else
        sErreur = s_sCall(L, 0);
    lua_close(L);
    return sErreur;
}

void s_Run(const std::string& sScript) {
    const int nPort = s_nFixturePort();
    ASSERT_GT(nPort, 0) << "no port in the fixture's file: is kvggl_emulators running?";
    s_SetHostEnvironment(nPort);
    EXPECT_EQ(s_sExecute(sScript), "");
    EXPECT_FALSE(KVLuaTest::bComposanteChargee()) << "an object outlived its Lua state";
}

class Scripts : public testing::TestWithParam<std::string> {};
TEST_P(Scripts, Reussit) {
    s_Run(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Wire, Scripts,
                         testing::ValuesIn(KVLuaTest::tabScripts(KVGGL_LUA_WIRE_SCRIPTS, "test_")),
                         KVLuaTest::sNomTest);

// The tour runs as a user runs it.
class Exemples : public testing::TestWithParam<std::string> {};
TEST_P(Exemples, Tournent) {
    s_Run(GetParam());
}
// Every example but the maps tour, which the test below runs to look at the image it writes.
std::vector<std::string> s_tabExemples() {
    std::vector<std::string> tab = KVLuaTest::tabScripts(KVGGL_EXAMPLES, "");
    std::erase_if(tab, [](const std::string& s) { return s.ends_with("/maps.lua"); });
    return tab;
}
INSTANTIATE_TEST_SUITE_P(Wire, Exemples, testing::ValuesIn(s_tabExemples()), KVLuaTest::sNomTest);

// The maps tour writes its image; opened here, it has the size asked and each marker where its
// place falls (the colours through the 8-bit palette the tour asks for, hence the margin).
TEST(Wire, LeTourDesCartesEcritSonImage) {
    const std::string sFichier = testing::TempDir() + "kvggl-tour-map.png";
    std::remove(sFichier.c_str());
    setenv("KVGGL_MAP_FILE", sFichier.c_str(), 1);
    s_Run(std::string(KVGGL_EXAMPLES) + "/maps.lua");
    unsetenv("KVGGL_MAP_FILE");

    std::ifstream in(sFichier, std::ios::binary);
    const std::string sOctets((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const char* pszKind = nullptr;
    auto pImage = s_pImage(sOctets, &pszKind);
    ASSERT_TRUE(pImage) << "no image in " << sFichier;
    EXPECT_STREQ(pszKind, "png");
    EXPECT_EQ(gdImageSX(pImage.get()), 640);
    EXPECT_EQ(gdImageSY(pImage.get()), 400);
    // The seeded places of the two addresses, the centre between them, the zoom of the tour.
    const STLatLng tabPlaces[] = {{48.8584, 2.2945}, {48.8606, 2.3376}};
    const uint32_t tabCouleurs[] = {0xFF0000, 0x00FF00};
    const STLatLng centre{(48.8584 + 48.8606) / 2, (2.2945 + 2.3376) / 2};
    for (int i = 0; i < 2; ++i) {
        double x = 0, y = 0;
        CMapImage::s_Project(centre, 14, 1, 640, 400, tabPlaces[i], x, y);
        // Beside the letter, inside the disc.
        const int c = gdImageGetTrueColorPixel(pImage.get(), static_cast<int>(std::lround(x)) - 6,
                                               static_cast<int>(std::lround(y)));
        const int tabObtenu[] = {gdTrueColorGetRed(c), gdTrueColorGetGreen(c), gdTrueColorGetBlue(c)};
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(tabObtenu[k], static_cast<int>(tabCouleurs[i] >> (16 - 8 * k) & 0xFF), 8)
                << "marker " << i << " channel " << k;
    }
}

// The helper itself: a failing script is seen, with the place, and the other state's error
// comes back as an error of this one.
TEST(Wire, UnEchecEstVu) {
    const int nPort = s_nFixturePort();
    ASSERT_GT(nPort, 0);
    s_SetHostEnvironment(nPort);
    lua_State* L = s_pNewState();
    const char* pszCode = R"lua(
        local w = require "kvggl_wire"
        local status, body = w.http(w.port(), "GET", "/_emulator/")
        assert(status == 200, body)
        assert(body:find('"requests":', 1, true), body)
        local ok, err = pcall(w.run, "error('inner failure')")
        assert(not ok and err:find("inner failure", 1, true), err)
        local a, b = w.run("return ... .. '!', 7", "x")
        assert(a == "x!" and b == "7", tostring(a) .. tostring(b))
        error("outer failure")
    )lua";
    ASSERT_EQ(luaL_loadstring(L, pszCode), LUA_OK) << lua_tostring(L, -1);
    const std::string sErreur = s_sCall(L, 0);
    lua_close(L);
    EXPECT_NE(sErreur.find("outer failure"), std::string::npos) << sErreur;
}

} // namespace
