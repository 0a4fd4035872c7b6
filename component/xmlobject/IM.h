// CIM: a gd:im (instant messaging address) of a contact.
#pragma once
#include "xmlobject/XmlObjectScript.h"

class CIM final : public CXmlObjectMulti, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CIM)
    XML_SCRIPT_DECLARE(CIM)
    XML_SCRIPT_TEXTE(Adresse, "address")
    XML_SCRIPT_TEXTE(Libelle, "label")
    XML_SCRIPT_ENTIER(Principal, "primary")
    XML_SCRIPT_ENTIER(Type, "rel")
    XML_SCRIPT_ENTIER(Messagerie, "protocol")
};
