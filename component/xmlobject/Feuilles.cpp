#include "xmlobject/Feuilles.h"

#include "frame/ModuleInfo.h"

#include "KVResult.h"

#include <cwchar>

namespace XmlObject {
#define XML_FEUILLE(C, T)                                                                          \
    XML_FEUILLE_DEFINE(C, CXmlObjectSimple<T>())                                                   \
    XML_ACCEPTE_DEFINE(C, )
#include "xmlobject/Feuilles.def"
} // namespace XmlObject

namespace Ggl {

XML_FEUILLE_DEFINE(TexteOnHref, CXmlObjectSimpleAttribut<CXYString<wchar_t>>("href"))
XML_ACCEPTE_DEFINE(TexteOnHref, )

#define GGL_SCHEMA L"http://schemas.google.com/g/2005"
namespace {
constexpr size_t knLongueurSchema = sizeof(GGL_SCHEMA) / sizeof(wchar_t) - 1;
}
const wchar_t* const CConstante::s_TabConstantes[knNbConstantes] = {
    L"",
    GGL_SCHEMA L"#home",
    GGL_SCHEMA L"#other",
    GGL_SCHEMA L"#work",
    GGL_SCHEMA L"#fax",
    GGL_SCHEMA L"#home_fax",
    GGL_SCHEMA L"#mobile",
    GGL_SCHEMA L"#pager",
    GGL_SCHEMA L"#work_fax",
    GGL_SCHEMA L"#AIM",
    GGL_SCHEMA L"#MSN",
    GGL_SCHEMA L"#YAHOO",
    GGL_SCHEMA L"#SKYPE",
    GGL_SCHEMA L"#QQ",
    GGL_SCHEMA L"#GOOGLE_TALK",
    GGL_SCHEMA L"#ICQ",
    GGL_SCHEMA L"#JABBER",
};
#undef GGL_SCHEMA

XML_FEUILLE_DEFINE(CConstante, XmlObject::Entier(nullptr, XML_ELEMENT, nullptr, nullptr))
XML_ACCEPTE_DEFINE(CConstante, )

bool CConstante::vbSet(const wchar_t* pszValeur, CXError& clErreur) {
    if (!pszValeur || !*pszValeur) {
        SetValeur(0);
        return true;
    }
    // Every row but the empty one is the schema and a fragment: the schema is compared once.
    if (wcsncmp(pszValeur, s_TabConstantes[1], knLongueurSchema) == 0 ||
        wcsncasecmp(pszValeur, s_TabConstantes[1], knLongueurSchema) == 0)
        for (int i = 1; i < knNbConstantes; ++i)
            if (wcscasecmp(pszValeur + knLongueurSchema, s_TabConstantes[i] + knLongueurSchema) == 0) {
                SetValeur(i);
                return true;
            }
    clErreur.SetUserError(&gstMyModuleInfo60, KVERR_INVALID_CONSTANT);
    return false;
}

bool CConstante::vbGet(CXYString<wchar_t>& sValeur, CXError& clErreur) const {
    if (static_cast<unsigned>(GetValeur()) >= knNbConstantes) {
        sValeur.Vide();
        clErreur.SetUserError(&gstMyModuleInfo60, KVERR_INVALID_CONSTANT);
        return false;
    }
    return sValeur.nAffecte(s_TabConstantes[GetValeur()]) == KV_OK;
}

} // namespace Ggl
