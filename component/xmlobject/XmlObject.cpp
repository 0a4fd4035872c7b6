#include "xmlobject/XmlObject.h"

#include "XMLService.h"

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
    if (piNoeud)
        piNoeud->vAddRef();
    if (m_piNoeud)
        m_piNoeud->vRelease();
    m_piNoeud = piNoeud;
}

CXYString<char> czNomPartage(const char* pszNom) {
    if (!pszNom || !*pszNom)
        return {};
    // The names are those of the static rows: a few dozen texts. A name beyond the cache's
    // bound is simply copied.
    static std::mutex s_mutex;
    static std::unordered_map<std::string_view, CXYString<char>> s_cache;
    std::lock_guard<std::mutex> verrou(s_mutex);
    auto it = s_cache.find(pszNom);
    if (it != s_cache.end())
        return it->second;
    CXYString<char> cz(pszNom);
    if (s_cache.size() < 4096)
        s_cache.emplace(cz.sv(), cz);
    return cz;
}
