#include "xmlobject/FctFind.h"

#include "xmlobject/Feuilles.h"
#include "xmlobject/Visiteur.h"
#include "foundation/LooseCompare.h"

namespace FctFind {

bool Texte::operator()(CXmlObject* pclObjet) {
    if (!pclObjet)
        return false;
    // A title is seen through its text part: classes with text fill the Texte field too.
    CVisiteur clVisiteur;
    if (CXmlObject* pclMembre = pclObjet->vpclGetXmlObject()->pclGetPropriete(m_pszPropriete, 0))
        pclMembre->vAccepte(&clVisiteur);
    if (!clVisiteur.pXmlObject_Texte)
        return false;
    return STR_bEgalSoupleSansEspaces(clVisiteur.pXmlObject_Texte->GetValeur().sv(),
                                      m_pszValeur ? m_pszValeur : L"");
}

} // namespace FctFind
