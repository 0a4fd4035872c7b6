#include "xmlobject/XmlObjectSimple.h"

#include "xmlobject/LectureAttributs.h"

#include "KVResult.h"
#include "Utf8.h"
#include "XMLService.h"

namespace {

bool bPorteTexte(INoeudXML* pi) {
    const eGENRENOEUDXML e = pi->eGetGenre();
    return e == NOEUDXML_ATTRIBUT || e == NOEUDXML_TEXTE;
}

CXYString<wchar_t> sVersWide(const CXYString<char>& cz) {
    CXYString<wchar_t> s;
    KVUtf8::nVersWide(cz.sv(), s);
    return s;
}

} // namespace

template <class T> CXYString<char> CXmlObjectSimple<T>::czGetXmlContent() {
    INoeudXML* piNoeud = piGetNoeud();
    if (!piNoeud)
        return {};
    if (bPorteTexte(piNoeud))
        return piNoeud->pszGetValeur();
    if (piNoeud->eGetGenre() != NOEUDXML_ELEMENT)
        return {};
    if (eGetType() == XML_ATTRIBUT)
        return CLectureAttributs::s_pszValeur(piNoeud, czGetNom().pszGet());
    if (eGetType() == XML_ELEMENT) {
        // Only the first child is looked at: text after a comment or an element is not seen.
        if (INoeudXML* piEnfant = piNoeud->piGetEnfant(0)) {
            CXYString<char> cz;
            bool bTexte = bPorteTexte(piEnfant);
            if (bTexte)
                cz = piEnfant->pszGetValeur();
            piEnfant->vRelease();
            if (bTexte)
                return cz;
        }
    }
    return piNoeud->pszGetValeur();
}

template <class T> void CXmlObjectSimple<T>::vInit(CXError& clErreur) {
    // A leaf that was read is set, even when the node held nothing; a text converts later.
    if (kbParesseux && piGetNoeud()) {
        m_bEnAttente = true;
        m_bRenseigne = 1;
        return;
    }
    vbSet(sVersWide(czGetXmlContent()).pszGet(), clErreur);
}

template <class T> void CXmlObjectSimple<T>::_Materialise() const {
    if (!m_bEnAttente)
        return;
    m_bEnAttente = false;
    CXmlObjectSimpleConv::s_bConvertToType(
        sVersWide(const_cast<CXmlObjectSimple*>(this)->czGetXmlContent()).pszGet(), m_Valeur);
}

template <class T> bool CXmlObjectSimple<T>::vbSet(const wchar_t* pszValeur, CXError&) {
    m_bEnAttente = false;
    if (!CXmlObjectSimpleConv::s_bConvertToType(pszValeur ? pszValeur : L"", m_Valeur))
        return false;
    m_bRenseigne = 1;
    return true;
}

template <class T> bool CXmlObjectSimple<T>::vbGet(CXYString<wchar_t>& sValeur, CXError& clErreur) const {
    return CXmlObjectSimpleConv::s_bConvertFromType(GetValeur(), sValeur, clErreur);
}

template <class T> bool CXmlObjectSimple<T>::_bSetNodeText(const CXYString<wchar_t>& sTexte) {
    INoeudXML* piNoeud = piGetNoeud();
    if (!piNoeud)
        return false;
    if (eGetType() == XML_ELEMENT)
        return piNoeud->bSetTexte(sTexte.pszGet());
    if (eGetType() == XML_ATTRIBUT)
        return piNoeud->bSetValeurAttribut(czGetNom().pszGet(), sTexte.pszGet());
    return false;
}

template <class T> bool CXmlObjectSimple<T>::vbApplyToXml(CXError& clErreur) {
    // A text still pending is the node's own: nothing changed.
    if (vbIsNouvelObjet() || m_bEnAttente)
        return false;
    CXYString<wchar_t> sTexte;
    if (!vbGet(sTexte, clErreur))
        return false;
    if (sTexte == sVersWide(czGetXmlContent()))
        return false;
    return _bSetNodeText(sTexte);
}

template <class T> bool CXmlObjectSimple<T>::vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) {
    CXYString<wchar_t> sTexte;
    if (!piNoeud || !vbGet(sTexte, clErreur))
        return false;
    bool b;
    if (eGetType() == XML_ELEMENT)
        b = piNoeud->bSetTexte(sTexte.pszGet());
    else if (eGetType() == XML_ATTRIBUT)
        b = piNoeud->bSetValeurAttribut(czGetNom().pszGet(), sTexte.pszGet());
    else
        return false;
    if (b && bLie)
        _Lie(piNoeud);
    return b;
}

template <class T> void CXmlObjectSimple<T>::_vRAZ(CCtxInfo*, CXError*) {
    m_bEnAttente = false;
    m_Valeur = T{};
    m_bRenseigne = 1;
}

template class CXmlObjectSimple<CXYString<wchar_t>>;
template class CXmlObjectSimple<int>;
template class CXmlObjectSimple<long>;
template class CXmlObjectSimple<double>;
template class CXmlObjectSimple<CDateTimeRFC3339>;

template <class T> CXYString<char> CXmlObjectSimpleAttribut<T>::czGetXmlContent() {
    INoeudXML* piNoeud = this->piGetNoeud();
    return piNoeud ? CXYString<char>(piNoeud->pszGetAttribut(m_czAttribut.pszGet())) : CXYString<char>();
}

template <class T>
bool CXmlObjectSimpleAttribut<T>::vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) {
    CXYString<wchar_t> sTexte;
    if (!piNoeud || !this->vbGet(sTexte, clErreur))
        return false;
    CXYString<char> cz;
    KVUtf8::nVersUtf8(sTexte.sv(), cz);
    bool b = piNoeud->bSetAttributUTF8(m_czAttribut.pszGet(), cz.pszGet());
    if (b && bLie)
        this->_Lie(piNoeud);
    return b;
}

template <class T> bool CXmlObjectSimpleAttribut<T>::vbApplyToXml(CXError& clErreur) {
    if (this->vbIsNouvelObjet())
        return false;
    CXYString<wchar_t> sTexte;
    if (!this->vbGet(sTexte, clErreur))
        return false;
    CXYString<char> cz;
    KVUtf8::nVersUtf8(sTexte.sv(), cz);
    return this->piGetNoeud()->bSetAttributUTF8(m_czAttribut.pszGet(), cz.pszGet());
}

template class CXmlObjectSimpleAttribut<CXYString<wchar_t>>;
