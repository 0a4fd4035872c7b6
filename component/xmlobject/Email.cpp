#include "xmlobject/Email.h"

ITypeDescription* CEmail::ms_piType = nullptr;

const stXmlPropriete CEmail::s_m_stTabXmlDescription__[] = {
#include "xmlobject/EmailXml.def"
};
XML_OBJET_DEFINE(CEmail, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CEmail, )

#include "frame/KllStubs.h"
#include "xmlobject/Email.def"
