#include "xmlobject/GglElements.h"

namespace Ggl {

const stXmlPropriete CCategory::s_m_stTabXmlDescription__[] = {
#include "xmlobject/CategoryXml.def"
};
const stXmlPropriete CLink::s_m_stTabXmlDescription__[] = {
#include "xmlobject/LinkXml.def"
};
const stXmlPropriete CContent::s_m_stTabXmlDescription__[] = {
#include "xmlobject/ContentXml.def"
};
const stXmlPropriete CGenerator::s_m_stTabXmlDescription__[] = {
#include "xmlobject/GeneratorXml.def"
};
const stXmlPropriete CTitre::s_m_stTabXmlDescription__[] = {
#include "xmlobject/TitreXml.def"
};
const stXmlPropriete CReminder::s_m_stTabXmlDescription__[] = {
#include "xmlobject/ReminderXml.def"
};
const stXmlPropriete CWhen::s_m_stTabXmlDescription__[] = {
#include "xmlobject/WhenXml.def"
};

// A class with text shows its text part too, so that getters and finders read a title as
// plain text.
#define GGL_ELEMENT(C, DEF)                                                                        \
    XML_OBJET_DEFINE(C, CXmlObjectMulti)                                                           \
    XML_ACCEPTE_DEFINE(C, )
#define GGL_ELEMENT_TEXTE(C, DEF)                                                                  \
    XML_OBJET_DEFINE(C, CXmlObjectMultiWithText<XmlObject::Texte>)                                 \
    XML_ACCEPTE_DEFINE(C, pclVisiteur->pXmlObject_Texte = pclGetTexte())
#include "xmlobject/GglElements.def"

} // namespace Ggl
