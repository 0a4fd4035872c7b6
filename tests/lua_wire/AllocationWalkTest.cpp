// The allocation walk: a whole Google tour (the module loaded, a connection restored from a
// refresh token, the silent login, a GglRequete, the connection serialised, everything
// released) run again and again against the emulators with the Nth allocation failing, N
// walking from 1 until a run passes with nothing failed. Every run must end in a clean success
// or a clean error (an error table with its number and text, or a Lua error with a text), the
// component must be gone from the process after it, and ASan must see no crash and no leak.
//
// Counted: the host's counted-string allocator and operator new in this program, routed through
// the host's fault counter below. A state of the test keeps the module loaded, so that the walk
// covers the tour (KVGGL_WALK_LOAD=1 walks the load as well). KVGGL_WALK_FROM=N starts the walk at N (to replay a run that
// crashed: each run's N is on stderr first), KVGGL_WALK_STEP=K walks every Kth N only.
#include "AllocationFaults.h"
#include "LuaModule.h"

#include <lua.hpp>

#include <gtest/gtest.h>

#include "LuaScriptSupport.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <string>

void* operator new(size_t n) {
    if (void* p = KVAllocationFaults::pNew(n))
        return p;
    throw std::bad_alloc();
}
void* operator new[](size_t n) {
    if (void* p = KVAllocationFaults::pNew(n))
        return p;
    throw std::bad_alloc();
}
void* operator new(size_t n, const std::nothrow_t&) noexcept {
    return KVAllocationFaults::pNew(n);
}
void* operator new[](size_t n, const std::nothrow_t&) noexcept {
    return KVAllocationFaults::pNew(n);
}
void operator delete(void* p) noexcept {
    KVAllocationFaults::Delete(p);
}
void operator delete[](void* p) noexcept {
    KVAllocationFaults::Delete(p);
}
void operator delete(void* p, size_t) noexcept {
    KVAllocationFaults::Delete(p);
}
void operator delete[](void* p, size_t) noexcept {
    KVAllocationFaults::Delete(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    KVAllocationFaults::Delete(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    KVAllocationFaults::Delete(p);
}

namespace {

// The tour; its outcome is "ok", or the step and the error that stopped it.
constexpr const char* gszTour = R"lua(
local saved = ...
local step = "require"
local function check(v, err)
    if err ~= nil then
        if type(err) ~= "table" or math.type(err.code) ~= "integer" or err.code <= 0
           or type(err.message) ~= "string" or err.message == "" then
            return error("UNCLEAN " .. step .. ": an error without a number or a text", 0)
        end
        return error(("%s: %d"):format(step, err.code), 0)
    end
    return v
end
local ok, outcome = pcall(function()
    local kvggl = require "kvggl"
    step = "restore"
    local c = check(kvggl.deserialize("gglConnexion", saved))
    step = "login"
    check(kvggl.GglConnecte(c, kvggl.gglServiceAgenda))
    step = "request"
    local list = check(kvggl.GglRequete(c, kvggl.gglServiceAgenda,
        "https://www.googleapis.com/calendar/v3/users/me/calendarList"))
    if not list:find("calendar#calendarList", 1, true) then
        error("UNCLEAN request: the answer is not the calendar list", 0)
    end
    step = "serialize"
    check(kvggl.serialize(c))
    return "ok"
end)
if not ok and type(outcome) ~= "string" then outcome = "UNCLEAN " .. step .. ": a raised " .. type(outcome) end
if not ok and outcome == "" then outcome = "UNCLEAN " .. step .. ": an error without text" end
if not ok and outcome:sub(1, #step + 2) ~= step .. ": " then outcome = step .. ": " .. outcome end
return outcome
)lua";

constexpr const char* gszSaved =
    R"({"type":"gglConnexion","properties":{"ClientID":"demo-client",)"
    R"("ClientSecret":"demo-secret","RefreshTokens":"{\"calendar\":\"1//demo-refresh-token\"}"}})";

constexpr long knLeakCheckEvery = 50;

// Whether memory leaked so far (under ASan; elsewhere nothing is seen).
bool s_bLeaked() {
#if defined(__SANITIZE_ADDRESS__)
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
}

int s_nFixturePort() {
    const char* psz = std::getenv("KVGGL_EMULATORS_PORT_FILE");
    std::ifstream in(psz && *psz ? psz : KVGGL_EMULATORS_PORT_FILE);
    int nPort = 0;
    in >> nPort;
    return nPort;
}

lua_State* s_pNewState() {
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_getsubtable(L, LUA_REGISTRYINDEX, LUA_PRELOAD_TABLE);
    lua_pushcfunction(L, luaopen_kvggl);
    lua_setfield(L, -2, "kvggl");
    lua_pop(L, 1);
    return L;
}

// One run of the tour in a fresh state: its outcome, the Lua error's text when it raised one.
std::string s_sTour() {
    lua_State* L = s_pNewState();
    std::string sOutcome;
    if (luaL_loadstring(L, gszTour) != LUA_OK) {
        sOutcome = std::string("UNCLEAN the tour does not load: ") + lua_tostring(L, -1);
    } else {
        lua_pushstring(L, gszSaved);
        if (lua_pcall(L, 1, 1, 0) != LUA_OK)
            sOutcome = std::string("UNCLEAN outside the tour: ") + luaL_tolstring(L, -1, nullptr);
        else
            sOutcome = lua_tostring(L, -1);
    }
    lua_close(L);
    return sOutcome;
}

TEST(AllocationWalk, EveryFailureIsClean) {
    const int nPort = s_nFixturePort();
    ASSERT_GT(nPort, 0) << "no port in the fixture's file: is kvggl_emulators running?";
    setenv("KVGGL_COMPONENT", KVGGL_SO_PATH, 1);
    setenv("KVGGL_ROUTE", ("*=127.0.0.1:" + std::to_string(nPort)).c_str(), 1);
    // A failure that sends the login to the dialogue ends it at once.
    setenv("KVGGL_BROWSER", "false", 1);
    setenv("KVGGL_LOGIN_WAIT", "0.2", 1);
    auto Setting = [](const char* pszName) {
        const char* psz = std::getenv(pszName);
        return psz && std::atol(psz) > 0 ? std::atol(psz) : 1;
    };

    // The module's load is walked too when asked (KVGGL_WALK_LOAD=1, some 2300 more runs);
    // otherwise a state of its own keeps the host loaded, and tells the objects still alive.
    const char* pszLoad = std::getenv("KVGGL_WALK_LOAD");
    lua_State* LHost = nullptr;
    if (!pszLoad || std::strcmp(pszLoad, "1") != 0) {
        LHost = s_pNewState();
        ASSERT_EQ(luaL_dostring(LHost, "kvggl = require 'kvggl'"), LUA_OK);
    }
    auto Gone = [&] {
        if (!LHost)
            return !KVLuaTest::bComposanteChargee();
        luaL_dostring(LHost, "return kvggl.status().objects");
        lua_Integer n = lua_tointeger(LHost, -1);
        lua_pop(LHost, 1);
        return n == 0;
    };
    ASSERT_EQ(s_sTour(), "ok") << "the tour fails with no fault injected";
    std::map<std::string, int> mapOutcomes; // what the runs ended with, and how often
    long nRuns = 0;
    for (long n = Setting("KVGGL_WALK_FROM");; n += Setting("KVGGL_WALK_STEP")) {
        std::fprintf(stderr, "walk: allocation %ld fails: ", n);
        KVAllocationFaults::Arm(n);
        std::string sOutcome = s_sTour();
        KVAllocationFaults::Disarm();
        std::fprintf(stderr, "%s\n", sOutcome.c_str());
        ++nRuns;
        SCOPED_TRACE("allocation " + std::to_string(n) + " failing");
        EXPECT_EQ(sOutcome.rfind("UNCLEAN", 0), std::string::npos) << sOutcome;
        EXPECT_TRUE(Gone()) << "an object outlived its Lua state";
        // A leak check takes a while: one every few runs narrows a leak down well enough.
        if (nRuns % knLeakCheckEvery == 0 || KVAllocationFaults::nFailed() == 0) {
            EXPECT_FALSE(s_bLeaked()) << "memory leaked in one of the last " << knLeakCheckEvery
                                      << " runs (the report is above)";
        }
        ++mapOutcomes[sOutcome.substr(0, 80)];
        if (KVAllocationFaults::nFailed() == 0) {
            EXPECT_EQ(sOutcome, "ok") << "nothing failed, yet the tour did not pass";
            std::printf("walk: %ld runs over %ld allocations\n", nRuns,
                        KVAllocationFaults::nCounted());
            break;
        }
        if (testing::Test::HasFailure())
            break;
    }
    for (const auto& [sOutcome, nCount] : mapOutcomes)
        std::printf("walk: %5d x %s\n", nCount, sOutcome.c_str());
    if (LHost)
        lua_close(LHost);
    EXPECT_FALSE(KVLuaTest::bComposanteChargee());
}

} // namespace
