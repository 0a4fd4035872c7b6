// CPhoneNumber: a gd:phoneNumber of a contact; the number is the element's text.
#pragma once
#include "xmlobject/XmlObjectScript.h"
#include "xmlobject/XmlObjectMultiWithText.h"

class CPhoneNumber final : public CXmlObjectMultiWithText<XmlObject::Texte>, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CPhoneNumber)
    XML_SCRIPT_DECLARE(CPhoneNumber)
    XML_SCRIPT_TEXTE(Libelle, "label")
    XML_SCRIPT_ENTIER(Principal, "primary")
    XML_SCRIPT_ENTIER(Type, "rel")
    // Not a script property.
    XML_SCRIPT_TEXTE(URI, "uri")
    CXYString<wchar_t> GetNumero(CCtxInfo*, CXError*) { return GetValeur(); }
    void SetNumero(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexteObjet(this, this, s); }
};
