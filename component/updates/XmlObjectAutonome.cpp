#include "updates/XmlObjectAutonome.h"

#include "connection/GoogleConnexion.h"
#include "connection/HTTPResponse.h"
#include "updates/UpdateOps.h"

#include "Ref.h"
#include "XMLService.h"

namespace {

// The queue takes its own reference; the creator's goes.
void Queue(CXmlObjectMulti* pclFile, IUpdateOperation* piOperation) {
    pclFile->clGetUpdates().Ajoute(piOperation);
    piOperation->vRelease();
}

eSERVICESGOOGLE eServiceDe(CXmlObject* pcl) { return static_cast<eSERVICESGOOGLE>(pcl->veGetService()); }

} // namespace

void CXmlObjectAutonome::vNotifieModif() {
    if (!pclGetParent())
        return;
    if (vbIsNouvelObjet())
        pclGetParent()->vNotifieAjout(this);
    else
        Queue(this, new UpdateOps::CModif(eServiceDe(this), this));
}

void CXmlObjectAutonome::vNotifieAjout(CXmlObjectMulti* pclFils) {
    // A nested element added is a change of this entry.
    if (!pclFils || !pclFils->vbEstObjetAutonome()) {
        vNotifieModif();
        return;
    }
    Queue(this, new UpdateOps::CAjout(eServiceDe(this), this, pclFils));
}

void CXmlObjectAutonome::vNotifieSuppr() {
    CXmlObjectMulti* pclParent = vpclGetParentLogique();
    if (!pclParent)
        return;
    // Whatever was pending on the entry is void.
    clGetUpdates().ClearOps();
    Queue(pclParent, new UpdateOps::CSuppr(eServiceDe(this), this));
}

void CXmlObjectAutonome::_RemplaceParReponse(CHTTPResponse& clReponse, CXError* pclErreur,
                                             int eAttendu) {
    if (clReponse.eGetCodeRetour() != eAttendu)
        return;
    auto clDocument = CGoogleConnexion::s_piParseXMLResponse(clReponse, pclErreur,
                                                             static_cast<eHTTPCODE>(eAttendu));
    if (!clDocument)
        return;
    auto clRacine = CRef<INoeudXML>::Adopt(clDocument->piGetRacine(0));
    if (!clRacine)
        return;
    CXmlObject* pclNouveau =
        vpfnGetFctCreation()(clRacine.pGet(), eGetType(), pclGetParent(), czGetNom().pszGet());
    if (!pclNouveau)
        return;
    if (CXmlObjectMulti* pclMulti = pclNouveau->vpclGetXmlObjectMulti())
        vAssign(pclMulti);
    pclNouveau->vRelease();
}

void CXmlObjectAutonome::vPostAjout(CHTTPResponse& clReponse, CXError* pclErreur,
                                    CGoogleConnexion*, IVM*) {
    _RemplaceParReponse(clReponse, pclErreur, HTTPCreated);
}

void CXmlObjectAutonome::vPostModif(CHTTPResponse& clReponse, CXError* pclErreur, IVM*) {
    _RemplaceParReponse(clReponse, pclErreur, HTTPOK);
}

void CXmlObjectAutonomeRacine::vNotifieModif() {
    if (!vbIsNouvelObjet())
        Queue(this, new UpdateOps::CModif(eServiceDe(this), this));
    else
        vNotifieAjoutMoiMeme();
}

void CXmlObjectAutonomeRacine::vNotifieSuppr() {
    clGetUpdates().ClearOps();
    Queue(this, new UpdateOps::CSuppr(eServiceDe(this), this));
}

void CXmlObjectAutonomeRacine::vNotifieAjoutMoiMeme() {
    Queue(this, new UpdateOps::CAjoutMoiMeme(eServiceDe(this), this, vpszGetURLAjoutMoiMeme()));
}
