// CPostalAddress: a gd:postalAddress of a contact; the address is the element's text.
#pragma once
#include "xmlobject/XmlObjectScript.h"
#include "xmlobject/XmlObjectMultiWithText.h"

class CPostalAddress final : public CXmlObjectMultiWithText<XmlObject::Texte>, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CPostalAddress)
    XML_SCRIPT_DECLARE(CPostalAddress)
    XML_SCRIPT_TEXTE(Libelle, "label")
    XML_SCRIPT_ENTIER(Principal, "primary")
    XML_SCRIPT_ENTIER(Type, "rel")
    CXYString<wchar_t> GetValeur(CCtxInfo*, CXError*) { return XmlObject::Texte::GetValeur(); }
    void SetValeur(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexteObjet(this, this, s); }
};
