// COrganization: a gd:organization of a contact.
#pragma once
#include "xmlobject/XmlObjectScript.h"

class COrganization final : public CXmlObjectMulti, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(COrganization)
    XML_SCRIPT_DECLARE(COrganization)
    XML_SCRIPT_TEXTE(Nom, "gd:orgName")
    XML_SCRIPT_TEXTE(Libelle, "label")
    XML_SCRIPT_ENTIER(Principal, "primary")
    XML_SCRIPT_TEXTE(Titre, "gd:orgTitle")
    XML_SCRIPT_ENTIER(Type, "rel")
};
