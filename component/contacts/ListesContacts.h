// CListeContacts and CListeGroupesContacts: a whole contacts or groups feed, its head and its
// entries. They are read, never written: the entries are handed to the script and saved on
// their own.
#pragma once
#include "xmlobject/XmlObjectClasse.h"

class CListeContacts final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CListeContacts)
};

class CListeGroupesContacts final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CListeGroupesContacts)
};
