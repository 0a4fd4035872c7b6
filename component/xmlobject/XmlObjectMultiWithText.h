// CXmlObjectMultiWithText<T>: an element with attributes and text, such as a title or a
// content. Each operation both bases have is settled here. The order of vbApplyToXml is the
// program's own: attributes are applied only when the text changed too, and when it did the
// result is that of the attributes alone, so a new title with unchanged attributes is written
// into the retained node and yet reports no change.
#pragma once
#include "xmlobject/Feuilles.h"
#include "xmlobject/XmlObjectMulti.h"

template <class T> class CXmlObjectMultiWithText : public CXmlObjectMulti, public T {
public:
    void vInit(CXError& clErreur) override {
        T::vInit(clErreur);
        CXmlObjectMulti::vInit(clErreur);
    }
    CXmlObject* vpclGetXmlObject() override { return CXmlObjectMulti::vpclGetXmlObject(); }
    bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) override {
        if (!CXmlObjectMulti::vbCreateXml(piNoeud, bLie, clErreur))
            return false;
        return T::vbCreateXml(piNoeud, bLie, clErreur);
    }
    bool vbApplyToXml(CXError& clErreur) override {
        if (!T::vbApplyToXml(clErreur))
            return false;
        return CXmlObjectMulti::vbApplyToXml(clErreur);
    }
    bool vbEstObjetTemporaire() override {
        return !T::bEstRenseigne() && CXmlObjectMulti::vbEstObjetTemporaire();
    }
    void _vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) override {
        T::_vRAZ(pclCtx, pclErreur);
        CXmlObjectMulti::_vRAZ(pclCtx, pclErreur);
    }
    bool vbGet(CXYString<wchar_t>& sValeur, CXError& clErreur) const override {
        return T::vbGet(sValeur, clErreur);
    }
    bool vbSet(const wchar_t* pszValeur, CXError& clErreur) override {
        return T::vbSet(pszValeur, clErreur);
    }
    CXmlObject* pclGetPropriete(const char* pszNom, int nIndice) override {
        return CXmlObjectMulti::pclGetPropriete(pszNom, nIndice);
    }
    void vSetParent(CXmlObjectMulti* pclParent) override { CXmlObject::vSetParent(pclParent); }
    // The members and the text: a copy of a title keeps its text, set.
    void vAssign(CXmlObjectMulti* pclSource) override {
        CXmlObjectMulti::vAssign(pclSource);
        CXYString<wchar_t> s;
        CXError clErreur;
        if (pclSource && pclSource != this && pclSource->vbGet(s, clErreur))
            T::vbSet(s.pszGet(), clErreur);
    }
    CXmlObject* vpclClone(CXmlObjectMulti* pclParent) override {
        return CXmlObjectMulti::vpclClone(pclParent);
    }

    // The text part, as finders and getters see it.
    T* pclGetTexte() { return this; }

protected:
    CXmlObjectMultiWithText(const stXmlPropriete* pstDescription, uint32_t nNbDescription)
        : CXmlObjectMulti(pstDescription, nNbDescription), T(nullptr, XML_ELEMENT, nullptr, nullptr) {}
};
