#include "xmlobject/XmlObjectSimple.h"

#include "xmlobject/LectureAttributs.h"

#include "KVResult.h"
#include "Utf8.h"
#include "XMLService.h"

#include <string>
#include <string_view>

namespace {

bool bPorteTexte(INoeudXML* pi) {
    const eGENRENOEUDXML e = pi->eGetGenre();
    return e == NOEUDXML_ATTRIBUT || e == NOEUDXML_TEXTE;
}

// A UTF-8 text as wide text: short ASCII texts, most of a feed's, in place; others converted.
class CTexteWide {
public:
    explicit CTexteWide(const char* psz) {
        size_t n = 0;
        for (; psz[n] && n < knCourt; ++n) {
            if (static_cast<unsigned char>(psz[n]) >= 0x80)
                break;
            m_sz[n] = static_cast<unsigned char>(psz[n]);
        }
        if (!psz[n]) {
            m_sz[n] = 0;
            m_sv = {m_sz, n};
        } else {
            m_s = KVUtf8::VersWide(psz);
            m_sv = m_s;
        }
    }
    const wchar_t* pszGet() const { return m_sv.data(); }
    std::wstring_view sv() const { return m_sv; }

private:
    static constexpr size_t knCourt = 127;
    wchar_t m_sz[knCourt + 1];
    std::wstring m_s;
    std::wstring_view m_sv;
};

// The leaf's text in the XML, with what holds it alive for as long as it is used.
class CContenu {
public:
    template <class L> explicit CContenu(L& clFeuille) : m_psz(clFeuille._vpszContenu(m_piGarde)) {}
    ~CContenu() {
        if (m_piGarde)
            m_piGarde->vRelease();
    }
    CContenu(const CContenu&) = delete;
    CContenu& operator=(const CContenu&) = delete;
    const char* pszGet() const { return m_psz; }

private:
    INoeudXML* m_piGarde = nullptr;
    const char* m_psz;
};

} // namespace

template <class T> const char* CXmlObjectSimple<T>::_vpszContenu(INoeudXML*& piGarde) {
    INoeudXML* piNoeud = piGetNoeud();
    if (!piNoeud)
        return "";
    if (bPorteTexte(piNoeud))
        return piNoeud->pszGetValeur();
    if (piNoeud->eGetGenre() != NOEUDXML_ELEMENT)
        return "";
    if (eGetType() == XML_ATTRIBUT)
        return CLectureAttributs::s_pszValeur(piNoeud, czGetNom().pszGet());
    if (eGetType() == XML_ELEMENT) {
        // Only the first child is looked at: text after a comment or an element is not seen.
        if (INoeudXML* piEnfant = piNoeud->piGetEnfant(0)) {
            if (bPorteTexte(piEnfant)) {
                piGarde = piEnfant;
                return piEnfant->pszGetValeur();
            }
            piEnfant->vRelease();
        }
    }
    return piNoeud->pszGetValeur();
}

template <class T> CXYString<char> CXmlObjectSimple<T>::czGetXmlContent() {
    CContenu clContenu(*this);
    return clContenu.pszGet();
}

template <class T> void CXmlObjectSimple<T>::vInit(CXError& clErreur) {
    // A leaf that was read is set, even when the node held nothing; a text converts later.
    if (kbParesseux && piGetNoeud()) {
        m_bEnAttente = true;
        m_bRenseigne = 1;
        return;
    }
    CContenu clContenu(*this);
    vbSet(CTexteWide(clContenu.pszGet()).pszGet(), clErreur);
}

template <class T> void CXmlObjectSimple<T>::_Materialise() const {
    if (!m_bEnAttente)
        return;
    m_bEnAttente = false;
    CContenu clContenu(*const_cast<CXmlObjectSimple*>(this));
    CXmlObjectSimpleConv::s_bConvertToType(CTexteWide(clContenu.pszGet()).pszGet(), m_Valeur);
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
    {
        CContenu clContenu(*this);
        if (sTexte.sv() == CTexteWide(clContenu.pszGet()).sv())
            return false;
    }
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

template <class T> const char* CXmlObjectSimpleAttribut<T>::_vpszContenu(INoeudXML*&) {
    INoeudXML* piNoeud = this->piGetNoeud();
    return piNoeud ? piNoeud->pszGetAttribut(m_czAttribut.pszGet()) : "";
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
