#include "xmlobject/XmlObjectListe.h"

#include "xmlobject/FctFind.h"

#include "XMLService.h"

#include <algorithm>

CXmlObjectListe::CXmlObjectListe(const char* pszNom) : CKVUnknown(0), m_czNom(czNomPartage(pszNom)) {}
CXmlObjectListe::CXmlObjectListe(const CXYString<char>& czNom) : CKVUnknown(0), m_czNom(czNom) {}

CXmlObjectListe::~CXmlObjectListe() { SupprimeTout(); }

void CXmlObjectListe::Reserve(size_t n) {
    if (n <= m_nCapacite || n > UINT32_MAX)
        return;
    auto** ptab = new CXmlObject*[n];
    std::copy(pDebut(), pDebut() + m_nNb, ptab);
    if (m_nCapacite > 1)
        delete[] m_ptab;
    m_ptab = ptab;
    m_nCapacite = static_cast<uint32_t>(n);
}

void CXmlObjectListe::vSetParent(CXmlObjectMulti* pclParent) {
    for (CXmlObject* pcl : *this)
        pcl->vSetParent(pclParent);
}

void CXmlObjectListe::Ajoute(CXmlObject* pclFils) {
    Insere(nGetNbElement(), pclFils);
}

void CXmlObjectListe::Insere(int i, CXmlObject* pclFils) {
    if (!pclFils || i < 0 || i > nGetNbElement())
        return;
    if (m_nNb == m_nCapacite)
        Reserve(m_nCapacite < 4 ? 4 : static_cast<size_t>(m_nCapacite) * 2);
    CXmlObject** p = pDebut();
    std::copy_backward(p + i, p + m_nNb, p + m_nNb + 1);
    p[i] = pclFils;
    ++m_nNb;
}

void CXmlObjectListe::Deplace(int nDepuis, int nVers) {
    if (nDepuis < 0 || nVers < 0 || nDepuis >= nGetNbElement() || nVers >= nGetNbElement())
        return;
    CXmlObject** p = pDebut();
    if (nDepuis < nVers)
        std::rotate(p + nDepuis, p + nDepuis + 1, p + nVers + 1);
    else
        std::rotate(p + nVers, p + nDepuis, p + nDepuis + 1);
}

void CXmlObjectListe::SupprimeTout() {
    // The list is empty before any child goes, whatever a child's destruction does.
    CXmlObject** ptab = pDebut();
    CXmlObject* pclUn = m_pclUn;
    const uint32_t nNb = m_nNb, nCapacite = m_nCapacite;
    m_pclUn = nullptr;
    m_nNb = 0;
    m_nCapacite = 1;
    if (nCapacite == 1) {
        if (nNb)
            pclUn->vRelease();
        return;
    }
    for (uint32_t i = 0; i < nNb; ++i)
        ptab[i]->vRelease();
    delete[] ptab;
}

void CXmlObjectListe::Supprime(int i) {
    if (i < 0 || i >= nGetNbElement())
        return;
    CXmlObject** p = pDebut();
    CXmlObject* pcl = p[i];
    std::copy(p + i + 1, p + m_nNb, p + i);
    --m_nNb;
    pcl->vRelease();
}

CXmlObject* CXmlObjectListe::pclFind(FctFind::IFinder* pclFinder, unsigned nOccurrence) const {
    if (!pclFinder)
        return nullptr;
    for (CXmlObject* pcl : *this)
        if ((*pclFinder)(pcl) && nOccurrence-- == 0)
            return pcl;
    return nullptr;
}

int CXmlObjectListe::nCompareXmlObjectPtr(const CXmlObject* pclFils) const {
    auto it = std::find(begin(), end(), pclFils);
    return it == end() ? -1 : static_cast<int>(it - begin());
}

bool CXmlObjectListe::__bCreateXmlPourFils(CXmlObject* pclFils, INoeudXML* piNoeud, int bLie,
                                           CXError& clErreur) {
    if (pclFils->vbEstObjetTemporaire())
        return true;
    INoeudXML* piCible = nullptr;
    if (pclFils->eGetType() == XML_ATTRIBUT) {
        piCible = piNoeud;
        piCible->vAddRef();
    } else if (!piNoeud->bAjouteEnfant(pszGetNom(), &piCible) || !piCible) {
        return false;
    }
    if (!pclFils->vbCreateXml(piCible, bLie, clErreur)) {
        // Even the parent's own node, when the child was an attribute: what failed is not kept.
        piCible->SupprimeNoeud();
        piCible->vRelease();
        return false;
    }
    piCible->vRelease();
    return true;
}

bool CXmlObjectListe::vbCreateXml(INoeudXML* piNoeud, int bLie, CXError& clErreur) {
    if (m_czNom.bVide() || !piNoeud)
        return false;
    bool b = m_nNb == 0;
    for (CXmlObject* pcl : *this)
        b = __bCreateXmlPourFils(pcl, piNoeud, bLie, clErreur) || b;
    return b;
}

bool CXmlObjectListe::vbApplyToXml(INoeudXML* piNoeud, CXError& clErreur) {
    bool b = false;
    for (CXmlObject* pcl : *this) {
        if (pcl->vbIsNouvelObjet())
            b = (piNoeud && __bCreateXmlPourFils(pcl, piNoeud, 1, clErreur)) || b;
        else
            b = pcl->vbApplyToXml(clErreur) || b;
    }
    return b;
}

CXmlObjectListe* CXmlObjectListe::vpclClone(CXmlObjectMulti* pclParent) {
    auto* pclClone = new CXmlObjectListe(m_czNom);
    pclClone->vAddRef();
    pclClone->Reserve(m_nNb);
    for (CXmlObject* pcl : *this)
        pclClone->Ajoute(pcl->vpclClone(pclParent));
    return pclClone;
}

bool CXmlObjectListe::vbEstObjetTemporaire() {
    return std::all_of(begin(), end(), [](CXmlObject* pcl) { return pcl->vbEstObjetTemporaire(); });
}
