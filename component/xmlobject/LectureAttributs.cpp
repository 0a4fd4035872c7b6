#include "xmlobject/LectureAttributs.h"

#include "XMLService.h"

#include <cstring>

namespace {
thread_local CLectureAttributs* gpclCourante = nullptr;
}

CLectureAttributs::CLectureAttributs(INoeudXML* piNoeud)
    : m_piNoeud(piNoeud), m_pclPrecedente(gpclCourante) {
    gpclCourante = this;
}

CLectureAttributs::~CLectureAttributs() { gpclCourante = m_pclPrecedente; }

const char* CLectureAttributs::s_pszValeur(INoeudXML* piNoeud, const char* pszNom) {
    CLectureAttributs* pcl = gpclCourante;
    if (!pcl || pcl->m_piNoeud != piNoeud)
        return piNoeud->pszGetAttribut(pszNom);
    for (const auto& [pszCle, pszValeur] : pcl->m_tabValeurs)
        if (pszCle == pszNom || std::strcmp(pszCle, pszNom) == 0)
            return pszValeur;
    // The node is not changed while it is read, so the text stays valid for the scope.
    const char* pszValeur = piNoeud->pszGetAttribut(pszNom);
    pcl->m_tabValeurs.emplace_back(pszNom, pszValeur);
    return pszValeur;
}
