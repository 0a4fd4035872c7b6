#include "ObjetComposante.h"

#include "InformationDLL.h"

CObjetComposanteBase::~CObjetComposanteBase() {
    if (m_piKLObjetComposante) m_piKLObjetComposante->vRelease();
}

void CObjetComposanteBase::vSetKLObjetComposante(IKLObjetComposante* piKLObjet) {
    if (piKLObjet) piKLObjet->vAddRef();
    if (m_piKLObjetComposante) m_piKLObjetComposante->vRelease();
    m_piKLObjetComposante = piKLObjet;
}

int CObjetComposanteBase::vbGetObjetC(void*& pObjet, ITypeDescription* piType, int nMode,
                                      CXError* pclErreur) {
    pObjet = nullptr;
    if (m_piKLObjetComposante)
        return m_piKLObjetComposante->vbGetObjetC(pObjet, piType, nMode, pclErreur);
    if (piType != vpiGetTypeReel()) return 0;
    pObjet = vpGetObjetC();
    return 1;
}

void* CObjetComposanteBase::vpGetSafeObjetC(ITypeDescription* piType) {
    return piType == vpiGetTypeReel() ? vpGetObjetC() : nullptr;
}

IKLObjetComposante* CObjetComposanteBase::_piAssurePair() {
    if (!m_piKLObjetComposante && CInformationDLL::ms_piGlobalFactory) {
        // The factory gives a new reference, which the object keeps.
        m_piKLObjetComposante =
            CInformationDLL::ms_piGlobalFactory->vpiCreeKLObjetComposante(this, nullptr);
    }
    return m_piKLObjetComposante;
}

void CObjetComposanteBase::vNotifieErreurInstance(IVM* piVM, CXError* pclErreur, int nOption) {
    if (IKLObjetComposante* pi = _piAssurePair()) pi->vNotifieErreurInstance(piVM, nOption, pclErreur);
}

void CObjetComposanteBase::vNotifieInstanceOrpheline() {
    if (IKLObjetComposante* pi = _piAssurePair()) pi->vNotifieInstanceOrpheline();
}

CObjetComposanteBase* CObjetComposanteBase::s_pclDepuisObjetBase(IObjetBase* pi) {
    if (!pi) return nullptr;
    return static_cast<CObjetComposanteBase*>(pi->vpiGetIObjetComposante());
}
