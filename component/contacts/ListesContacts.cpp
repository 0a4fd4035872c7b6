#include "contacts/ListesContacts.h"

#include "contacts/GoogleContact.h"
#include "xmlobject/Author.h"
#include "xmlobject/Feuilles.h"
#include "xmlobject/GglElements.h"

const stXmlPropriete CListeContacts::s_m_stTabXmlDescription__[] = {
#include "contacts/FluxContactsXml.def"
    XML_ROW("entry", CGoogleContact, XML_ELEMENT)
};
XML_OBJET_DEFINE(CListeContacts, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CListeContacts, )

const stXmlPropriete CListeGroupesContacts::s_m_stTabXmlDescription__[] = {
#include "contacts/FluxContactsXml.def"
    XML_ROW("entry", CGglGroupeContact, XML_ELEMENT)
};
XML_OBJET_DEFINE(CListeGroupesContacts, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CListeGroupesContacts, )
