// CAny_Intern: the implementation object of a value of no known type, or of an array, and the
// behaviour the storage classes inherit.
#include "AnyNeutre.h"

#include "ObjectInterfaces.h"

using namespace KVAny;

// ---- CAny_Intern: no known type, or an array ------------------------------------------------

CAny& CAny_Intern::rAny() const {
    auto* pby = reinterpret_cast<unsigned char*>(const_cast<CAny_Intern*>(this));
    return *reinterpret_cast<CAny*>(pby - offsetof(CAny, m_abyImpl));
}
unsigned char* CAny_Intern::pbyValeur() const {
    return rAny().m_abyValeur;
}
uint16_t CAny_Intern::nType() const {
    return rAny().m_nType;
}

void CAny_Intern::Duplique(CAny* pclCible) const {
    CAny& clSource = rAny();
    if (!pclCible || pclCible == &clSource)
        return;
    pclCible->m_pclImpl->vLibere();
    std::memcpy(pclCible->m_abyValeur, clSource.m_abyValeur, CAny::knTailleValeur);
    pclCible->m_nType = clSource.m_nType;
    pclCible->Installe(clSource.m_nType);
    pclCible->m_pclImpl->vRetient();
}

size_t CAny_Intern::nGetSize() const {
    return vnGetStockage() == KV_STOCKAGE_TABLEAU ? sizeof(void*) : 0;
}
const void* CAny_Intern::nGetAdr() const {
    return nGetSize() ? pbyValeur() : nullptr;
}
int CAny_Intern::nFillBuffer(void* pBuffer, size_t nTaille) const {
    return s_nCopie(pBuffer, nTaille, nGetAdr(), nGetSize());
}
size_t CAny_Intern::nGetDataSize() const {
    return vnGetStockage() == KV_STOCKAGE_TABLEAU ? 0 : nGetSize();
}
const void* CAny_Intern::nGetDataAdr() const {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU)
        return tLit<void*>(pbyValeur());
    return nGetAdr();
}
int CAny_Intern::nFillDataBuffer(void* pBuffer, size_t nTaille) const {
    return s_nCopie(pBuffer, nTaille, nGetDataAdr(), nGetDataSize());
}
int CAny_Intern::SetValue(const void* pValeur) {
    if (vnGetStockage() != KV_STOCKAGE_TABLEAU)
        return KV_ERR_TYPE;
    if (!pValeur)
        return KV_ERR_PARAMETRE;
    auto* pi = tLit<IInterfaceObjetBase*>(static_cast<const unsigned char*>(pValeur));
    if (pi)
        pi->vAddRef();
    vLibere();
    Ecrit(pbyValeur(), pi);
    return KV_OK;
}
// An array has no data form that could be trusted to hold a reference.
int CAny_Intern::SetValue(const void*, unsigned long) {
    return KV_ERR_TYPE;
}
const char* CAny_Intern::nGetPCASTR() const {
    return nullptr;
}
const wchar_t* CAny_Intern::nGetPCWSTR() const {
    return nullptr;
}
size_t CAny_Intern::nGetSTRLEN() const {
    return 0;
}
bool CAny_Intern::bIsPositive() const {
    return true;
}
size_t CAny_Intern::nGetUtilDataSize() const {
    return nGetDataSize();
}
int CAny_Intern::nFillUtilDataBuffer(void* pBuffer, size_t nTaille) const {
    size_t nUtile = nGetUtilDataSize();
    if (nUtile == 0)
        return KV_OK;
    if (!pBuffer)
        return KV_ERR_PARAMETRE;
    std::memcpy(pBuffer, nGetDataAdr(), nTaille < nUtile ? nTaille : nUtile);
    return nTaille < nUtile ? KV_TRONQUE : KV_OK;
}
int CAny_Intern::nIncremente() {
    return KV_ERR_TYPE;
}
int CAny_Intern::nDecremente() {
    return KV_ERR_TYPE;
}

int CAny_Intern::SetValueFromANSI(const char* psz) {
    return SetValueFromANSI(psz, 0u);
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* psz) {
    return SetValueFromUNICODE(psz, 0u);
}
int CAny_Intern::SetValueFromANSI(const char* psz, unsigned nCodePage) {
    if (!psz)
        return KV_ERR_PARAMETRE;
    return SetValueFromANSI(psz, std::strlen(psz), nCodePage);
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* psz, unsigned nCodePage) {
    if (!psz)
        return KV_ERR_PARAMETRE;
    return SetValueFromUNICODE(psz, std::wcslen(psz), nCodePage);
}
int CAny_Intern::SetValueFromANSI(const char* p, size_t nLongueur, unsigned nCodePage) {
    if ((!p && nLongueur) || !s_bCodePageValide(nCodePage))
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sDepuisNarrow({p, nLongueur}, nCodePage);
        return vnEcrit(st, nCodePage);
    });
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* p, size_t nLongueur, unsigned nCodePage) {
    if ((!p && nLongueur) || !s_bCodePageValide(nCodePage))
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = KVUtf8::VersUtf8({p, nLongueur});
        return vnEcrit(st, nCodePage);
    });
}
int CAny_Intern::SetValueOption(const void* pDonnees, unsigned long nTaille, unsigned nOptions) {
    auto nTypeDonnees = static_cast<uint16_t>(nOptions & 0xFFFFu);
    if (nTypeDonnees == 0 || nTypeDonnees == nType())
        return SetValue(pDonnees, nTaille);
    CAny clDonnees;
    (void)clDonnees.__SetType(nTypeDonnees, 0);
    if (clDonnees.nGetType() == 0)
        return KV_ERR_TYPE;
    int nRes = clDonnees.m_pclImpl->SetValue(pDonnees, nTaille);
    if (!KV_bSucces(nRes))
        return nRes;
    // May replace this very object: nothing of it is used after.
    return rAny().nAffecteConverti(clDonnees, 0);
}

eKVSTOCKAGE CAny_Intern::vnGetStockage() const {
    return (nType() & CAny::knTableau) ? KV_STOCKAGE_TABLEAU : KV_STOCKAGE_AUCUN;
}
void CAny_Intern::vLibere() {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU) {
        if (auto* pi = tLit<IInterfaceObjetBase*>(pbyValeur()))
            pi->vRelease();
    }
    std::memset(pbyValeur(), 0, CAny::knTailleValeur);
}
void CAny_Intern::vRetient() {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU) {
        if (auto* pi = tLit<IInterfaceObjetBase*>(pbyValeur()))
            pi->vAddRef();
    }
}
int CAny_Intern::vnLit(STAnyNeutre&, unsigned) const {
    return KV_ERR_CONVERSION;
}
int CAny_Intern::vnEcrit(const STAnyNeutre&, unsigned) {
    return KV_ERR_CONVERSION;
}
