// What the embedded Lua test runners share: the scripts of a folder as test cases, their names,
// and whether the component is still in the process (KVGGL_SO_PATH, from the build).
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <dirent.h>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace KVLuaTest {

// The .lua files of a folder whose names begin with the prefix, sorted.
inline std::vector<std::string> tabScripts(const char* pszDossier, const char* pszPrefixe) {
    std::vector<std::string> tab;
    if (DIR* pDir = opendir(pszDossier)) {
        while (dirent* p = readdir(pDir)) {
            std::string s = p->d_name;
            if (s.size() > 4 && s.compare(s.size() - 4, 4, ".lua") == 0 &&
                s.rfind(pszPrefixe, 0) == 0)
                tab.push_back(std::string(pszDossier) + "/" + s);
        }
        closedir(pDir);
    }
    std::sort(tab.begin(), tab.end());
    return tab;
}

// The host keeps the component's code mapped while any of its objects lives.
inline bool bComposanteChargee() {
    void* h = dlopen(KVGGL_SO_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (h)
        dlclose(h);
    return h != nullptr;
}

// A test name from a script's file name.
inline std::string sNomTest(const testing::TestParamInfo<std::string>& st) {
    std::string s = st.param.substr(st.param.rfind('/') + 1);
    s = s.substr(0, s.size() - 4);
    for (char& c : s)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return s;
}

} // namespace KVLuaTest
