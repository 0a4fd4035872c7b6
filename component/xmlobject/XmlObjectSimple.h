// CXmlObjectSimple<T>: a leaf, a member that holds one value, read from an attribute or from
// an element's text. A change is found by comparing texts, never typed values: a value whose
// canonical form differs from what the server sent ("true" read as 1) counts as changed, and
// is written back in the canonical form.
#pragma once
#include "xmlobject/XmlObject.h"
#include "xmlobject/XmlObjectSimpleConv.h"

#include <type_traits>

template <class T> class CXmlObjectSimple : public virtual CXmlObject {
public:
    void vInit(CXError& clErreur) override;
    CXmlObject* vpclGetXmlObject() override { return this; }
    // The text in the XML, UTF-8.
    CXYString<char> czGetXmlContent();
    bool vbSet(const wchar_t* pszValeur, CXError& clErreur) override;
    bool vbGet(CXYString<wchar_t>& sValeur, CXError& clErreur) const override;
    bool vbApplyToXml(CXError& clErreur) override;
    bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) override;
    bool vbEstObjetTemporaire() override { return !m_bRenseigne; }
    // A reset leaf is set: it writes an empty value or zero.
    void _vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) override;

    const T& GetValeur() const {
        _Materialise();
        return m_Valeur;
    }
    // The value stored as it is, bypassing the conversion; the leaf becomes set.
    void SetValeur(const T& Valeur) {
        m_bEnAttente = false;
        m_Valeur = Valeur;
        m_bRenseigne = 1;
    }
    bool bEstRenseigne() const { return m_bRenseigne != 0; }

    // The text in the XML as the node gives it, never null. When the text belongs to another
    // node, piGarde receives a reference to it, to release once the text has been used.
    virtual const char* _vpszContenu(INoeudXML*& piGarde);

protected:
    CXmlObjectSimple() = default;
    // The text into the node: an element's text or an attribute's value.
    bool _bSetNodeText(const CXYString<wchar_t>& sTexte);
    // What a clone takes: the value, and set whatever the source was.
    void _CopieDe(const CXmlObjectSimple& clSource) { SetValeur(clSource.GetValeur()); }
    // The node's text is what the value was read from: it is converted before the node goes.
    void vAvantChangementNoeud() override { _Materialise(); }

private:
    // A text leaf read from XML converts its text when first asked: most texts of a feed are
    // never read nor changed, and an unchanged text needs no comparison to be applied.
    static constexpr bool kbParesseux = std::is_same_v<T, CXYString<wchar_t>>;
    void _Materialise() const;

    mutable T m_Valeur{};
    int32_t m_bRenseigne = 0;
    mutable bool m_bEnAttente = false; // the value is still the node's text
};

extern template class CXmlObjectSimple<CXYString<wchar_t>>;
extern template class CXmlObjectSimple<int>;
extern template class CXmlObjectSimple<long>;
extern template class CXmlObjectSimple<double>;
extern template class CXmlObjectSimple<CDateTimeRFC3339>;

// CXmlObjectSimpleAttribut<T>: an element whose value sits in an attribute of its own, its
// text empty. There is no comparison when changes are applied: the attribute is written again
// on every pass, and counts as changed whenever the host accepts it.
template <class T> class CXmlObjectSimpleAttribut : public CXmlObjectSimple<T> {
public:
    bool vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) override;
    bool vbApplyToXml(CXError& clErreur) override;
    const char* _vpszContenu(INoeudXML*& piGarde) override;

protected:
    explicit CXmlObjectSimpleAttribut(const char* pszAttribut) : m_czAttribut(pszAttribut) {}
    CXYString<char> m_czAttribut;
};

extern template class CXmlObjectSimpleAttribut<CXYString<wchar_t>>;
