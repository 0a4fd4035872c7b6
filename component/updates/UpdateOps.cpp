#include "updates/UpdateOps.h"

#include "connection/GoogleConnexion.h"
#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "xmlobject/FctFind.h"
#include "xmlobject/XmlObjectMulti.h"

#include "Ref.h"
#include "XMLService.h"

namespace UpdateOps {

namespace {}

COperationBase::COperationBase(eUPDATEOPS eOperation, eSERVICESGOOGLE eService,
                               CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet, bool bReference)
    : m_eOperation(eOperation), m_pclObjet(pclObjet), m_pclConteneur(pclConteneur),
      m_eService(eService), m_bReference(bReference && pclObjet) {
    if (m_bReference)
        m_pclObjet->vAddRef();
}

COperationBase::~COperationBase() {
    if (m_piRemplacant)
        m_piRemplacant->vRelease();
    if (m_bReference)
        m_pclObjet->vRelease();
}

void COperationBase::operator()(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) {
    if (m_piRemplacant)
        (*m_piRemplacant)(pclConnexion, piVM, pclErreur);
    else
        _vDoOperation(pclConnexion, piVM, pclErreur);
}

void COperationBase::vRemplace(IUpdateOperation* piAutre) {
    if (piAutre)
        piAutre->vAddRef();
    if (m_piRemplacant)
        m_piRemplacant->vRelease();
    m_piRemplacant = piAutre;
}

CTString COperationBase::__clGetUrl(CXmlObjectMulti* pclObjet, FctFind::IFinder* pclFinder) {
    CXmlObjectListe* pclLiens = pclObjet ? pclObjet->pclGetListe("link") : nullptr;
    CXmlObject* pclLien = pclLiens ? pclLiens->pclFind(pclFinder, 0) : nullptr;
    CXmlObject* pclHref = pclLien ? pclLien->pclGetPropriete("href", 0) : nullptr;
    CXYString<wchar_t> sURL;
    CXError clErreur;
    if (pclHref)
        pclHref->vbGet(sURL, clErreur);
    return CTString(sURL.pszGet());
}

CTString COperationBase::_vclGetUrlAjout() {
    FctFind::LinkAlternate clFinder;
    return __clGetUrl(m_pclConteneur, &clFinder);
}

CTString COperationBase::_vclGetUrlModif() {
    FctFind::LinkEdit clFinder;
    return __clGetUrl(m_pclObjet, &clFinder);
}

IDocumentXML* COperationBase::_piNouvelleEntree(INoeudXML** ppiRacine) {
    *ppiRacine = nullptr;
    CRef<IDocumentXML> clDocument = CComposanteGGL::s_piGetXMLDoc(nullptr);
    if (!clDocument)
        return nullptr;
    clDocument->SetEncodage(L"UTF-8");
    if (!clDocument->bCreeRacine("entry", ppiRacine) || !*ppiRacine)
        return nullptr;
    CComposanteGGL::s_AddNamespaceAttributes(*ppiRacine);
    return clDocument.pDetach();
}

CHTTPResponse COperationBase::_clEnvoieXml(CGoogleConnexion* pclConnexion, IVM* piVM,
                                           CXError* pclErreur, const CTString& sURL,
                                           INoeudXML* piRacine, int eMethode) {
    CXYString<char> czXml;
    CComposanteGGL::s_GetChaineXml(piRacine, czXml, pclErreur);
    CHTTPRequete clRequete(m_eService, sURL.pszGet(), HTTPCT_ATOM);
    clRequete.AjouteDonnees(reinterpret_cast<unsigned char*>(czXml.pGetTampon()),
                            static_cast<unsigned long>(czXml.nLongueur()));
    return pclConnexion->clExecuteRequeteCOM(piVM, clRequete, static_cast<HTTPMethod>(eMethode),
                                             pclErreur);
}

// ---- Addition -----------------------------------------------------------------------------

// The entry holds a reference unless it is the container itself.
CAjout::CAjout(eSERVICESGOOGLE eService, CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet)
    : COperationBase(UPDATEOPS_AJOUT, eService, pclConteneur, pclObjet, pclObjet != pclConteneur) {}

IUpdateOperation* CAjout::vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) {
    return new CAjout(m_eService, pclConteneur, pclObjet);
}

void CAjout::_vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) {
    // An entry that exists already is not sent again.
    if (!m_pclObjet->vbIsNouvelObjet())
        return;
    INoeudXML* piRacineBrute;
    auto clDocument = CRef<IDocumentXML>::Adopt(_piNouvelleEntree(&piRacineBrute));
    auto clRacine = CRef<INoeudXML>::Adopt(piRacineBrute);
    if (!clDocument)
        return;
    CXError clIgnore;
    CXError& clErreur = pclErreur ? *pclErreur : clIgnore;
    // Unbound: the server's answer replaces the whole object.
    if (!m_pclObjet->vbPreAjout(clErreur) || !m_pclObjet->vbCreateXml(clRacine.pGet(), 0, clErreur))
        return;
    CTString sURL = _vclGetUrlAjout();
    if (sURL.bEstVide())
        return;
    CHTTPResponse clReponse = _clEnvoieXml(pclConnexion, piVM, pclErreur, sURL, clRacine.pGet(), HTTPPOST);
    if (clErreur.bEstPropre() && clReponse.eGetCodeRetour() != HTTPCreated) {
        if (clReponse.eGetCodeRetour() == HTTPConflict)
            clErreur.SetUserError(&gstMyModuleInfo60, KVERR_CONFLICT);
        else
            clReponse.SetErreurStatut(&clErreur);
        return;
    }
    m_pclObjet->vPostAjout(clReponse, pclErreur, pclConnexion, piVM);
}

IUpdateOperation* CAjoutMoiMeme::vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti*) {
    return new CAjoutMoiMeme(m_eService, pclConteneur, m_sURL.pszGet());
}

// ---- Change -------------------------------------------------------------------------------

IUpdateOperation* CModif::vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) {
    return new CModif(m_eService, pclConteneur ? pclConteneur : pclObjet);
}

void CModif::_vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) {
    CXError clIgnore;
    CXError& clErreur = pclErreur ? *pclErreur : clIgnore;
    if (!m_pclObjet->vbPreModif(clErreur))
        return;
    CRef<IDocumentXML> clDocument;
    CRef<INoeudXML> clNoeud;
    bool bChange;
    if (INoeudXML* piNoeud = m_pclObjet->piGetNoeud()) {
        // The retained node with the changes applied: what no table describes goes back as it
        // came.
        clNoeud = CRef<INoeudXML>::Retain(piNoeud);
        bChange = m_pclObjet->vbApplyToXml(clErreur);
    } else {
        INoeudXML* piRacine;
        clDocument = CRef<IDocumentXML>::Adopt(_piNouvelleEntree(&piRacine));
        clNoeud = CRef<INoeudXML>::Adopt(piRacine);
        // Bound to the new document, so that the next change takes the retained road.
        bChange = clDocument && m_pclObjet->vbCreateXml(piRacine, 1, clErreur);
    }
    // A change with no effect costs no request.
    if (!bChange)
        return;
    CHTTPResponse clReponse =
        _clEnvoieXml(pclConnexion, piVM, pclErreur, _vclGetUrlModif(), clNoeud.pGet(), HTTPPUT);
    if (clErreur.bEstPropre() && clReponse.eGetCodeRetour() != HTTPOK) {
        clReponse.SetErreurStatut(&clErreur);
        return;
    }
    m_pclObjet->vPostModif(clReponse, pclErreur, piVM);
}

// ---- Deletion -----------------------------------------------------------------------------

IUpdateOperation* CSuppr::vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) {
    auto* pcl = new CSuppr(m_eService, pclConteneur ? pclConteneur : pclObjet);
    pcl->m_sNomEntete = m_sNomEntete;
    pcl->m_sValeurEntete = m_sValeurEntete;
    return pcl;
}

void CSuppr::_vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) {
    CXError clIgnore;
    CXError& clErreur = pclErreur ? *pclErreur : clIgnore;
    CTString sURL = _vclGetUrlSuppr();
    CHTTPRequete clRequete(m_eService, sURL.pszGet(), HTTPCT_FORMULAIRE);
    if (!m_sNomEntete.bVide())
        clRequete.AjouteHeader(m_sNomEntete.pszGet(), m_sValeurEntete.pszGet());
    CHTTPResponse clReponse = pclConnexion->clExecuteRequeteCOM(piVM, clRequete, HTTPDELETE, pclErreur);
    // Only 200 is success: a 204 is reported like any other status.
    if (clErreur.bEstPropre() && clReponse.eGetCodeRetour() != HTTPOK) {
        clReponse.SetErreurStatut(&clErreur);
        return;
    }
    m_pclObjet->vPostSuppr(clReponse, pclErreur, pclConnexion, piVM);
}

} // namespace UpdateOps
