#include "xmlobject/XmlObjectMulti.h"

#include "xmlobject/LectureAttributs.h"

#include "XMLService.h"

#include <strings.h>

#include <cstring>

namespace {

// "prefix:name" against a row's name, ignoring case, without building the key.
bool bEgalCle(const char* pszLigne, const char* pszPrefixe, const char* pszNom) {
    if (pszPrefixe && *pszPrefixe) {
        size_t n = std::strlen(pszPrefixe);
        if (strncasecmp(pszLigne, pszPrefixe, n) != 0 || pszLigne[n] != ':')
            return false;
        pszLigne += n + 1;
    }
    return strcasecmp(pszLigne, pszNom) == 0;
}

// The prefix of a node as written; "" when it has none.
const char* pszPrefixeDe(INoeudXML* piNoeud, INamespaceXML*& piNamespace) {
    piNamespace = piNoeud->piGetNamespace();
    return piNamespace ? piNamespace->pszGetPrefixe() : "";
}

} // namespace

const stXmlPropriete* CXmlObjectMulti::_pclFindInDescription(const char* pszPrefixe,
                                                             const char* pszNom) const {
    if (!pszNom)
        return nullptr;
    for (uint32_t i = 0; i < m_nNbDescription; ++i)
        if (bEgalCle(m_pstDescription[i].pszNom, pszPrefixe, pszNom))
            return &m_pstDescription[i];
    if (pszPrefixe && *pszPrefixe)
        return _pclFindInDescription(nullptr, pszNom);
    return nullptr;
}

void CXmlObjectMulti::vInit(CXError&) {
    INoeudXML* piNoeud = piGetNoeud();
    if (m_nNbDescription == 0 || !piNoeud)
        return;
    // Attributes first, then the child elements in document order; what has no row stays in
    // the retained XML untouched.
    _LitAttributs(piNoeud);
    for (int i = 0;; ++i) {
        INoeudXML* piEnfant = piNoeud->piGetEnfant(i);
        if (!piEnfant)
            break;
        if (piEnfant->eGetGenre() == NOEUDXML_ELEMENT) {
            INamespaceXML* piNamespace;
            const char* pszPrefixe = pszPrefixeDe(piEnfant, piNamespace);
            if (const stXmlPropriete* pst = _pclFindInDescription(pszPrefixe, piEnfant->pszGetNom()))
                _vAjoutePropriete(pst->pszNom,
                                  pst->pfnCreation(piEnfant, pst->eType, this, pst->pszNom));
            if (piNamespace)
                piNamespace->vRelease();
        }
        piEnfant->vRelease();
    }
}

void CXmlObjectMulti::_LitAttributs(INoeudXML* piNoeud) {
    CLectureAttributs clLecture(piNoeud);
    for (int i = 0;; ++i) {
        INoeudXML* piAttribut = piNoeud->piGetAttribut(i);
        if (!piAttribut)
            break;
        INamespaceXML* piNamespace;
        const char* pszPrefixe = pszPrefixeDe(piAttribut, piNamespace);
        if (const stXmlPropriete* pst = _pclFindInDescription(pszPrefixe, piAttribut->pszGetNom()))
            _vAjoutePropriete(pst->pszNom, pst->pfnCreation(piNoeud, pst->eType, this, pst->pszNom));
        if (piNamespace)
            piNamespace->vRelease();
        piAttribut->vRelease();
    }
}

CXmlObjectListe* CXmlObjectMulti::pclCreateListe(const char* pszNom) {
    // Names come from the rows: the first one makes room for as many as the table has.
    if (m_mapProprietes.bEstVide())
        m_mapProprietes.Reserve(m_nNbDescription < 8 ? m_nNbDescription : 8);
    auto* pclListe = new CXmlObjectListe(pszNom);
    pclListe->vAddRef();
    if (!m_mapProprietes.bInsere(pclListe)) {
        pclListe->vRelease();
        return nullptr;
    }
    return pclListe;
}

void CXmlObjectMulti::RemplaceListe(CXmlObjectListe* pclListe) {
    if (!pclListe)
        return;
    pclListe->vAddRef();
    pclListe->vSetParent(this);
    if (!m_mapProprietes.bRemplace(pclListe))
        pclListe->vRelease();
}

void CXmlObjectMulti::_vAjoutePropriete(const char* pszNom, CXmlObject* pclObjet) {
    if (!pclObjet)
        return;
    CXmlObjectListe* pclListe = m_mapProprietes.pclCherche(pszNom);
    if (!pclListe)
        pclListe = pclCreateListe(pszNom);
    if (pclListe)
        pclListe->Ajoute(pclObjet);
    else
        pclObjet->vRelease();
}

CXmlObject* CXmlObjectMulti::pclGetPropriete(const char* pszNom, int nIndice) {
    CXmlObjectListe* pclListe = m_mapProprietes.pclCherche(pszNom);
    return pclListe ? pclListe->pclGetElement(nIndice) : nullptr;
}

CXmlObject* CXmlObjectMulti::pclGetCreatePropriete(const char* pszNom, int nIndice) {
    if (CXmlObject* pcl = pclGetPropriete(pszNom, nIndice))
        return pcl;
    // Appended whatever the index was.
    return _vpclAjouteNouveau(pszNom);
}

CXmlObject* CXmlObjectMulti::_vpclAjouteNouveau(const char* pszNom) {
    const stXmlPropriete* pst = _pclFindInDescription(nullptr, pszNom);
    if (!pst)
        return nullptr;
    CXmlObject* pcl = pst->pfnCreation(nullptr, pst->eType, pclGetParent(), pszNom);
    _vAjoutePropriete(pst->pszNom, pcl);
    return pcl;
}

eTypePropXML CXmlObjectMulti::eGetXmlType(const char* pszNom) const {
    const stXmlPropriete* pst = _pclFindInDescription(nullptr, pszNom);
    return pst ? pst->eType : XML_ELEMENT;
}

void CXmlObjectMulti::SetPropriete(const char* pszNom, int nIndice, const wchar_t* pszValeur) {
    if (CXmlObject* pcl = pclGetCreatePropriete(pszNom, nIndice)) {
        CXError clErreur;
        pcl->vbSet(pszValeur, clErreur);
    }
}

void CXmlObjectMulti::SetPropriete(const char* pszNom, int nIndice, CXmlObject* pclSource,
                                   CXError& clErreur) {
    CXYString<wchar_t> s;
    if (pclSource && pclSource->vbGet(s, clErreur))
        SetPropriete(pszNom, nIndice, s.pszGet());
}

bool CXmlObjectMulti::vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) {
    bool b = true;
    for (size_t i = 0; i < m_mapProprietes.nGetNbElement(); ++i)
        b = m_mapProprietes.pclGetElement(i)->vbCreateXml(piNoeud, bLie, clErreur) && b;
    if (b && bLie)
        _Lie(piNoeud);
    return b;
}

bool CXmlObjectMulti::vbApplyToXml(CXError& clErreur) {
    bool b = false;
    for (size_t i = 0; i < m_mapProprietes.nGetNbElement(); ++i)
        b = m_mapProprietes.pclGetElement(i)->vbApplyToXml(piGetNoeud(), clErreur) || b;
    return b;
}

bool CXmlObjectMulti::vbEstObjetTemporaire() {
    for (size_t i = 0; i < m_mapProprietes.nGetNbElement(); ++i)
        if (!m_mapProprietes.pclGetElement(i)->vbEstObjetTemporaire())
            return false;
    return true;
}

void CXmlObjectMulti::vAssign(CXmlObjectMulti* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    _Delie();
    _SetType(pclSource->eGetType());
    m_pstDescription = pclSource->m_pstDescription;
    m_nNbDescription = pclSource->m_nNbDescription;
    m_mapProprietes.Vide(0);
    for (size_t i = 0; i < pclSource->m_mapProprietes.nGetNbElement(); ++i) {
        CXmlObjectListe* pclClone =
            pclSource->m_mapProprietes.pclGetElement(i)->vpclClone(vpclGetXmlObjectMulti());
        if (!m_mapProprietes.bInsere(pclClone))
            pclClone->vRelease();
    }
}

CXmlObject* CXmlObjectMulti::vpclClone(CXmlObjectMulti* pclParent) {
    CXmlObject* pcl = vpfnGetFctCreation()(nullptr, XML_ELEMENT, pclParent, czGetNom().pszGet());
    if (pcl && pcl->vpclGetXmlObjectMulti())
        pcl->vpclGetXmlObjectMulti()->vAssign(this);
    return pcl;
}

void CXmlObjectMulti::vNotifieAjout(CXmlObjectMulti*) {
    if (pclGetParent())
        pclGetParent()->vNotifieModif();
}

void CXmlObjectMulti::vNotifieModif() {
    if (pclGetParent())
        pclGetParent()->vNotifieModif();
}

void CXmlObjectMulti::vNotifieSuppr() {
    if (pclGetParent())
        pclGetParent()->vNotifieModif();
}

void CXmlObjectMulti::_vRAZ(CCtxInfo*, CXError*) {
    m_clUpdates.ClearOps();
    m_mapProprietes.Vide(0);
}
