// CAuthor: the author of an entry, read-only to scripts; the component sets it with ForceNom and ForceEmail, without notification.
#pragma once
#include "xmlobject/XmlObjectScript.h"

class CAuthor final : public CXmlObjectMulti, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CAuthor)
    XML_SCRIPT_DECLARE(CAuthor)
    CXYString<wchar_t> GetNom(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, "name"); }
    CXYString<wchar_t> GetEmail(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, "email"); }
    void ForceNom(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { SetPropriete("name", 0, s.pszGet()); }
    void ForceEmail(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { SetPropriete("email", 0, s.pszGet()); }
};
