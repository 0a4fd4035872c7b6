#include "xmlobject/XmlObjectListe.h"

#include "xmlobject/FctFind.h"

#include "XMLService.h"

#include <algorithm>

CXmlObjectListe::CXmlObjectListe(const char* pszNom) : CKVUnknown(0), m_czNom(czNomPartage(pszNom)) {}
CXmlObjectListe::CXmlObjectListe(const CXYString<char>& czNom) : CKVUnknown(0), m_czNom(czNom) {}

CXmlObjectListe::~CXmlObjectListe() { SupprimeTout(); }

void CXmlObjectListe::vSetParent(CXmlObjectMulti* pclParent) {
    for (CXmlObject* pcl : m_tab)
        pcl->vSetParent(pclParent);
}

void CXmlObjectListe::Ajoute(CXmlObject* pclFils) {
    if (pclFils)
        m_tab.push_back(pclFils);
}

void CXmlObjectListe::Insere(int i, CXmlObject* pclFils) {
    if (pclFils && i >= 0 && i <= nGetNbElement())
        m_tab.insert(m_tab.begin() + i, pclFils);
}

void CXmlObjectListe::Deplace(int nDepuis, int nVers) {
    if (nDepuis < 0 || nVers < 0 || nDepuis >= nGetNbElement() || nVers >= nGetNbElement())
        return;
    CXmlObject* pcl = m_tab[static_cast<size_t>(nDepuis)];
    m_tab.erase(m_tab.begin() + nDepuis);
    m_tab.insert(m_tab.begin() + nVers, pcl);
}

void CXmlObjectListe::SupprimeTout() {
    std::vector<CXmlObject*> tab;
    tab.swap(m_tab);
    for (CXmlObject* pcl : tab)
        pcl->vRelease();
}

void CXmlObjectListe::Supprime(int i) {
    if (i < 0 || i >= nGetNbElement())
        return;
    CXmlObject* pcl = m_tab[static_cast<size_t>(i)];
    m_tab.erase(m_tab.begin() + i);
    pcl->vRelease();
}

CXmlObject* CXmlObjectListe::pclFind(FctFind::IFinder* pclFinder, unsigned nOccurrence) const {
    if (!pclFinder)
        return nullptr;
    for (CXmlObject* pcl : m_tab)
        if ((*pclFinder)(pcl) && nOccurrence-- == 0)
            return pcl;
    return nullptr;
}

int CXmlObjectListe::nCompareXmlObjectPtr(const CXmlObject* pclFils) const {
    auto it = std::find(m_tab.begin(), m_tab.end(), pclFils);
    return it == m_tab.end() ? -1 : static_cast<int>(it - m_tab.begin());
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
    bool b = m_tab.empty();
    for (CXmlObject* pcl : m_tab)
        b = __bCreateXmlPourFils(pcl, piNoeud, bLie, clErreur) || b;
    return b;
}

bool CXmlObjectListe::vbApplyToXml(INoeudXML* piNoeud, CXError& clErreur) {
    bool b = false;
    for (CXmlObject* pcl : m_tab) {
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
    pclClone->m_tab.reserve(m_tab.size());
    for (CXmlObject* pcl : m_tab)
        pclClone->Ajoute(pcl->vpclClone(pclParent));
    return pclClone;
}

bool CXmlObjectListe::vbEstObjetTemporaire() {
    return std::all_of(m_tab.begin(), m_tab.end(),
                       [](CXmlObject* pcl) { return pcl->vbEstObjetTemporaire(); });
}
