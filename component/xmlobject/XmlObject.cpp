#include "xmlobject/XmlObject.h"

#include "XMLService.h"

#include <cstdint>
#include <cstring>
#include <mutex>
#include <string_view>
#include <unordered_map>

CXmlObject::CXmlObject(INoeudXML* piNoeud, eTypePropXML eType, CXmlObjectMulti* pclParent,
                       const char* pszNom, long nRefInitial)
    : CKVUnknown(nRefInitial), m_piNoeud(piNoeud), m_pclParent(pclParent), m_eType(eType),
      m_czNom(czNomPartage(pszNom)) {
    if (m_piNoeud)
        m_piNoeud->vAddRef();
}

CXmlObject::~CXmlObject() {
    if (m_piNoeud)
        m_piNoeud->vRelease();
}

void CXmlObject::_Lie(INoeudXML* piNoeud) {
    if (piNoeud == m_piNoeud)
        return;
    vAvantChangementNoeud();
    if (piNoeud)
        piNoeud->vAddRef();
    if (m_piNoeud)
        m_piNoeud->vRelease();
    m_piNoeud = piNoeud;
}

CXYString<char> czNomPartage(const char* pszNom) {
    if (!pszNom || !*pszNom)
        return {};
    // Names come from the static rows: a few dozen texts, each asked for by one pointer. A
    // small cache of this thread answers by pointer, its text checked, since a pointer from
    // elsewhere may later hold another text; the shared table answers the rest. The cache only
    // points into the table, which keeps its texts: it holds nothing that would need to be
    // destroyed with the thread, so the library can still be unloaded.
    struct STCase {
        const char* psz;
        char* pBloc;
    };
    thread_local STCase s_tabCache[64];
    STCase& stCase = s_tabCache[(reinterpret_cast<uintptr_t>(pszNom) >> 3) % 64];
    if (stCase.psz == pszNom && std::strcmp(stCase.pBloc, pszNom) == 0)
        return CXYString<char>::Retain(stCase.pBloc);
    static std::mutex s_mutex;
    static std::unordered_map<std::string_view, CXYString<char>> s_cache;
    std::lock_guard<std::mutex> verrou(s_mutex);
    auto it = s_cache.find(pszNom);
    if (it == s_cache.end()) {
        CXYString<char> cz(pszNom);
        // A name beyond the bound is simply copied.
        if (s_cache.size() >= 4096 || cz.bVide())
            return cz;
        it = s_cache.emplace(cz.sv(), cz).first;
    }
    stCase = {pszNom, it->second.pGetBrut()};
    return it->second;
}
