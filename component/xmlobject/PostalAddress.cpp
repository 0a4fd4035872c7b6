#include "xmlobject/PostalAddress.h"

ITypeDescription* CPostalAddress::ms_piType = nullptr;

const stXmlPropriete CPostalAddress::s_m_stTabXmlDescription__[] = {
#include "xmlobject/PostalAddressXml.def"
};
XML_OBJET_DEFINE(CPostalAddress, CXmlObjectMultiWithText<XmlObject::Texte>)
XML_ACCEPTE_DEFINE(CPostalAddress, pclVisiteur->pXmlObject_Texte = pclGetTexte())

#include "frame/KllStubs.h"
#include "xmlobject/PostalAddress.def"
