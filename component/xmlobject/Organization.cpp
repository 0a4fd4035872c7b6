#include "xmlobject/Organization.h"

ITypeDescription* COrganization::ms_piType = nullptr;

const stXmlPropriete COrganization::s_m_stTabXmlDescription__[] = {
#include "xmlobject/OrganizationXml.def"
};
XML_OBJET_DEFINE(COrganization, CXmlObjectMulti)
XML_ACCEPTE_DEFINE(COrganization, )

#include "frame/KllStubs.h"
#include "xmlobject/Organization.def"
