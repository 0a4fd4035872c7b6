// The Atom and GData common elements (GglElements.def): title, link, category, content,
// generator, and the time span with its reminder.
#pragma once
#include "xmlobject/XmlObjectClasse.h"
#include "xmlobject/XmlObjectMultiWithText.h"

namespace Ggl {
#define GGL_ELEMENT(C, DEF)                                                                        \
    class C final : public CXmlObjectMulti {                                                       \
    public:                                                                                        \
        XML_OBJET_DECLARE(C)                                                                       \
    };
#define GGL_ELEMENT_TEXTE(C, DEF)                                                                  \
    class C final : public CXmlObjectMultiWithText<XmlObject::Texte> {                             \
    public:                                                                                        \
        XML_OBJET_DECLARE(C)                                                                       \
    };
#include "xmlobject/GglElements.def"
} // namespace Ggl
