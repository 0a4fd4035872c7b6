// What the Google connection does with the entries of the XML feeds. It stands with the update
// queue because it needs the XML objects; the class itself is in connection/.
#include "connection/GoogleConnexion.h"

#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"
#include "frame/ModuleInfo.h"
#include "xmlobject/FctFind.h"
#include "xmlobject/XmlObjectMulti.h"

#include "Ref.h"
#include "VM.h"
#include "XMLService.h"

namespace {}

void CGoogleConnexion::UpdateVersionXmlObjectMulti(IVM* piVM, CXError* pclErreur,
                                                   CXmlObjectMulti* pclObjet) {
    CXmlObjectListe* pclLiens = pclObjet ? pclObjet->pclGetListe("link") : nullptr;
    FctFind::LinkSelf clSelf;
    CXmlObject* pclLien = pclLiens ? pclLiens->pclFind(&clSelf, 0) : nullptr;
    CXmlObject* pclHref = pclLien ? pclLien->pclGetPropriete("href", 0) : nullptr;
    CXYString<wchar_t> sURL;
    CXError clLecture;
    if (!pclHref || !pclHref->vbGet(sURL, clLecture))
        return;
    CHTTPRequete clRequete(static_cast<eSERVICESGOOGLE>(pclObjet->veGetService()), sURL.pszGet(),
                           HTTPCT_TEXTE);
    CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, HTTPGET, pclErreur);
    if (!pclErreur || !pclErreur->bEstPropre())
        return;
    auto clDocument = s_piParseXMLResponse(clReponse, pclErreur, HTTPOK);
    auto clRacine = CRef<INoeudXML>::Adopt(clDocument ? clDocument->piGetRacine(0) : nullptr);
    if (!clRacine)
        return;
    CXmlObject* pclNouveau = pclObjet->vpfnGetFctCreation()(
        clRacine.pGet(), pclObjet->eGetType(), pclObjet->pclGetParent(), pclObjet->czGetNom().pszGet());
    if (!pclNouveau)
        return;
    if (CXmlObjectMulti* pclMulti = pclNouveau->vpclGetXmlObjectMulti())
        pclObjet->RemplaceListe(pclMulti->pclGetListe("link"));
    pclNouveau->vRelease();
}

bool CGoogleConnexion::_bGglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CXmlObjectMulti* pclObjet) {
    if (!pclObjet)
        return false;
    CUpdatesManager& clFile = pclObjet->clGetUpdates();
    // A new entry is nowhere to delete; one that queues no deletion of its own neither.
    const bool bNouveau = pclObjet->vbIsNouvelObjet();
    if (!bNouveau) {
        clFile.ClearOps();
        pclObjet->vNotifieSuppr();
    }
    if (bNouveau || !clFile.bHasOperations(UPDATEOPS_SUPPR)) {
        if (pclErreur)
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_NOT_SAVED);
        return false;
    }
    clFile.doOperations(this, CCtxInfo::s_piGetVM(pclCtx), pclErreur);
    return pclErreur && pclErreur->bEstPropre();
}
