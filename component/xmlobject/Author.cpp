#include "xmlobject/Author.h"

ITypeDescription* CAuthor::ms_piType = nullptr;

const stXmlPropriete CAuthor::s_m_stTabXmlDescription__[] = {
#include "xmlobject/AuthorXml.def"
};
XML_OBJET_DEFINE(CAuthor, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CAuthor, )

#include "frame/KllStubs.h"
#include "xmlobject/Author.def"
