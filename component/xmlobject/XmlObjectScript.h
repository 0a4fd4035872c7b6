// What a script-visible element of the tree adds to its described class: the script object
// side (CObjetComposanteBase), counted through the tree's own count, and the getters and
// setters that read and write a member at index 0 by its name.
//
// A getter reads the member's value, or "" or 0 when there is none. A setter stores the value
// in the member's leaf directly (no conversion, so a bad index in a relation shows only when
// the entry is written), marks it set and notifies the change.
#pragma once
#include "frame/ObjetComposante.h"
#include "xmlobject/Feuilles.h"
#include "xmlobject/XmlObjectClasse.h"

class CXmlProprietesScript {
public:
    static CXYString<wchar_t> s_sGetTexte(CXmlObjectMulti* pclObjet, const char* pszMembre);
    static int s_nGetEntier(CXmlObjectMulti* pclObjet, const char* pszMembre);
    static void s_SetTexte(CXmlObjectMulti* pclObjet, const char* pszMembre, const CXYString<wchar_t>& s);
    static void s_SetEntier(CXmlObjectMulti* pclObjet, const char* pszMembre, int n);
    // The object's own text part (the number of a phone, the value of an address).
    static void s_SetTexteObjet(CXmlObjectMulti* pclObjet, XmlObject::Texte* pclTexte,
                                const CXYString<wchar_t>& s);
};

// In the class: the script side. A new object made for a script has count 0, as the host's
// first vAddRef owns it; one read from a feed starts at 1, owned by its list.
#define XML_SCRIPT_DECLARE(C)                                                                      \
    static ITypeDescription* ms_piType;                                                            \
    static C* s_pclCreeObjet(CCtxInfo*, CXError*) { return new C(nullptr, XML_ELEMENT, nullptr, nullptr, 0); } \
    void CopieObjet(CCtxInfo*, CXError*, C* pclSource) {                                           \
        if (pclSource)                                                                             \
            vAssign(pclSource);                                                                    \
    }                                                                                              \
    void RAZObjet(CCtxInfo* pclCtx, CXError* pclErreur) { _vRAZ(pclCtx, pclErreur); }              \
    void vAddRef() override { CXmlObject::vAddRef(); }                                             \
    void vRelease() override { CXmlObject::vRelease(); }                                           \
    int veGetFamille() override { return 5; }                                                      \
    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }                              \
    void* vpGetObjetC() override { return this; }                                                  \
    IObjetBase* vpiGetObjetBaseScript() override { return piGetObjetBase(); }                      \
    CXmlObject* vpclGetXmlObjectScript() override { return vpclGetXmlObject(); }

// Getter and setter of a text or integer member, as the .def rows name them.
#define XML_SCRIPT_TEXTE(P, M)                                                                     \
    CXYString<wchar_t> Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, M); } \
    void Set##P(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) {                                \
        CXmlProprietesScript::s_SetTexte(this, M, s);                                              \
    }
#define XML_SCRIPT_ENTIER(P, M)                                                                    \
    int Get##P(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_nGetEntier(this, M); }        \
    void Set##P(CCtxInfo*, CXError*, int n) { CXmlProprietesScript::s_SetEntier(this, M, n); }
