// The handler slots of the built kv220ggl.so against the syntax rows. A function served for a
// kind of object is all or nothing: once one of its syntaxes has a stub, every syntax of the
// same class, function and object argument has one, so a connector cannot land half its forms.
// Rows registered without a handler keep a null slot. The rows come from frame/Functions.def
// itself; the slots from the library, reached only through dlopen.
#include "Tables.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

enum eGenre { SERVI, LIBRE, SANS_HANDLER };
struct STLigne {
    const char* pszFonction;
    int k;
    eGenre eGenre_;
    std::string sGroupe; // class, function, and the first object argument after the served one
};

// The first "OBJ(...)" after the served object, or "".
std::string s_ObjetArgument(const char* pszParametres) {
    std::string s = pszParametres;
    size_t n = s.find("OBJ(");
    n = n == std::string::npos ? n : s.find("OBJ(", n + 4);
    return n == std::string::npos ? "" : s.substr(n, s.find(')', n) - n + 1);
}

std::vector<STLigne> s_Lignes() {
    std::vector<STLigne> tab;
#define KLL_SYNTAX(C, F, k, R, ...)                                                                \
    tab.push_back({#F, k, SERVI, #C "::" #F " " + s_ObjetArgument(#__VA_ARGS__)});
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...) tab.push_back({#F, k, SERVI, #C "::" #F});
#define KLL_SYNTAX_FREE(F, k, R, ...) tab.push_back({#F, k, LIBRE, #F});
#define KLL_SYNTAX_NONE(F, k, R, ...) tab.push_back({#F, k, SANS_HANDLER, ""});
#include "frame/Functions.def"
    return tab;
}

// The handler slots in table order, a function registered twice counted once.
std::vector<const void*> s_Slots(void* h) {
    constexpr int knNbFonction = 0
#define KLL_FUNCTION(n, F, Famille) +1
#define KLL_FUNCTION_AGAIN(n, F, Famille) +1
#include "frame/Functions.def"
        ;
    auto* pst = static_cast<const STKLFonction*>(dlsym(h, "__gstTabFonction_60"));
    std::vector<const void*> tab;
    std::set<const STKLSyntaxe*> setVus;
    for (int i = 0; pst && i < knNbFonction; ++i) {
        if (!setVus.insert(pst[i].pstSyntaxe).second)
            continue;
        for (unsigned k = 0; k < pst[i].nGetNbSyntaxe(); ++k)
            tab.push_back(reinterpret_cast<const void*>(pst[i].pstSyntaxe[k].pfnMethode));
    }
    return tab;
}

TEST(Handlers, EveryLandedFormServedAndNoneGained) {
    void* h = dlopen(KVGGL_SO_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(h, nullptr) << dlerror();
    const std::vector<STLigne> tabLignes = s_Lignes();
    const std::vector<const void*> tabSlots = s_Slots(h);
    ASSERT_EQ(tabLignes.size(), tabSlots.size()) << "the rows and the library disagree";

    std::map<std::string, std::vector<size_t>> mapGroupes;
    for (size_t i = 0; i < tabLignes.size(); ++i) {
        const STLigne& st = tabLignes[i];
        if (st.eGenre_ == SANS_HANDLER)
            EXPECT_EQ(tabSlots[i], nullptr)
                << st.pszFonction << " syntax " << st.k << " gained a handler";
        else
            mapGroupes[st.sGroupe].push_back(i);
    }
    size_t nServis = 0;
    for (auto& [sGroupe, tabIndices] : mapGroupes) {
        size_t nAvec = 0;
        for (size_t i : tabIndices)
            nAvec += tabSlots[i] != nullptr;
        nServis += nAvec;
        if (nAvec == 0)
            continue;
        for (size_t i : tabIndices)
            EXPECT_NE(tabSlots[i], nullptr) << sGroupe << " syntax " << tabLignes[i].k
                                            << " has no handler while its other forms have";
    }
    // The connection's own functions have landed: the check has something to check.
    EXPECT_GE(nServis, 8u);
    RecordProperty("served_syntaxes", static_cast<int>(nServis));
    dlclose(h);
}

} // namespace
