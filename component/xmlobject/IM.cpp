#include "xmlobject/IM.h"

ITypeDescription* CIM::ms_piType = nullptr;

const stXmlPropriete CIM::s_m_stTabXmlDescription__[] = {
#include "xmlobject/IMXml.def"
};
XML_OBJET_DEFINE(CIM, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(CIM, )

#include "frame/KllStubs.h"
#include "xmlobject/IM.def"
