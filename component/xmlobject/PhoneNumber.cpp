#include "xmlobject/PhoneNumber.h"

ITypeDescription* CPhoneNumber::ms_piType = nullptr;

const stXmlPropriete CPhoneNumber::s_m_stTabXmlDescription__[] = {
#include "xmlobject/PhoneNumberXml.def"
};
XML_OBJET_DEFINE(CPhoneNumber, CXmlObjectMultiWithText<XmlObject::Texte>)
XML_ACCEPTE_DEFINE(CPhoneNumber, pclVisiteur->pXmlObject_Texte = pclGetTexte())

#include "frame/KllStubs.h"
#include "xmlobject/PhoneNumber.def"
