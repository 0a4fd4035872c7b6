// The leaf classes, XmlObject::Texte and its kin (Feuilles.def), Ggl::TexteOnHref (a group
// URL held in the "href" of its element) and Ggl::CConstante (a GData relation URI shown to
// scripts as an index into s_TabConstantes).
#pragma once
#include "xmlobject/XmlObjectClasse.h"
#include "xmlobject/XmlObjectSimple.h"

namespace XmlObject {
#define XML_FEUILLE(C, T)                                                                          \
    class C : public CXmlObjectSimple<T> {                                                         \
    public:                                                                                        \
        XML_FEUILLE_DECLARE(C)                                                                     \
    };
#include "xmlobject/Feuilles.def"
} // namespace XmlObject

namespace Ggl {

class TexteOnHref final : public CXmlObjectSimpleAttribut<CXYString<wchar_t>> {
public:
    XML_FEUILLE_DECLARE(TexteOnHref)
};

class CConstante final : public XmlObject::Entier {
public:
    static constexpr int knNbConstantes = 17;
    // Row 0 is the empty text; the others the GData schema URI and a fragment.
    static const wchar_t* const s_TabConstantes[knNbConstantes];

    XML_FEUILLE_DECLARE(CConstante)
    // The row whose text matches, case ignored; empty gives 0; an unknown text is 600054.
    bool vbSet(const wchar_t* pszValeur, CXError& clErreur) override;
    // The text of the row; an index out of the table is 600054.
    bool vbGet(CXYString<wchar_t>& sValeur, CXError& clErreur) const override;
};

} // namespace Ggl
