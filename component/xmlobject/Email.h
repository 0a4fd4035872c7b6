// CEmail: a gd:email of a contact.
#pragma once
#include "xmlobject/XmlObjectScript.h"

class CEmail final : public CXmlObjectMulti, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CEmail)
    XML_SCRIPT_DECLARE(CEmail)
    XML_SCRIPT_TEXTE(Adresse, "address")
    XML_SCRIPT_TEXTE(Libelle, "label")
    XML_SCRIPT_ENTIER(Principal, "primary")
    XML_SCRIPT_ENTIER(Type, "rel")
};
