#include "connection/PersistanceConnexion.h"

#include "connection/ConnexionOAuthBase.h"
#include "frame/ComposanteGGL.h"
#include "frame/InformationDLL.h"
#include "frame/InterfAuthentification.h"
#include "frame/XErrorModule60.h"

#include "LibShop.h"
#include "Ref.h"
#include "StoreService.h"
#include "VM.h"
#include "XError.h"

#include <cwchar>
#include <string>
#include <string_view>

namespace {

constexpr wchar_t gszSection[] = L"KVGGL";
constexpr wchar_t gszCle[] = L"KV_GGL_ACCOUNTS";
constexpr wchar_t gszFinRecord[] = L"\r\n";

// Bucket counts, one size after another.
constexpr uint32_t gtabTailles[] = {
    17u,        53u,        97u,        193u,       389u,       769u,       1543u,
    3079u,      6151u,      12289u,     24593u,     49157u,     98317u,     196613u,
    393241u,    786433u,    1572869u,   3145739u,   6291469u,   12582917u,  25165843u,
    50331653u,  100663319u, 201326611u, 402653189u, 805306457u, 1610612741u, 3221225473u,
    4294967291u};

} // namespace

CPersistanceConnexion* CPersistanceConnexion::ms_pclInstance = nullptr;

CPersistanceConnexion::CPersistanceConnexion() { (void)_bRedimensionne(0); }

CPersistanceConnexion::~CPersistanceConnexion() {
    for (STElement& st : m_tabElements)
        delete st.pclConnexion;
}

CPersistanceConnexion* CPersistanceConnexion::s_pclGetInstance() {
    if (!ms_pclInstance) {
        ms_pclInstance = new CPersistanceConnexion;
        CComposanteGGL::s_AjouteFinDeComposante(&Cleanup);
    }
    return ms_pclInstance;
}

void CPersistanceConnexion::Cleanup() {
    delete ms_pclInstance;
    ms_pclInstance = nullptr;
}

bool CPersistanceConnexion::s_bStockageActif() {
    return CInformationDLL::ms_nCodeProduitExecution != knProduitAvecDialogue;
}

// ---- the table ---------------------------------------------------------------------------

uint32_t CPersistanceConnexion::s_nHash(const wchar_t* pszCle) {
    uint32_t h = 5381;
    for (const wchar_t* p = pszCle; p && *p; ++p)
        h = h * 33 + static_cast<uint32_t>(*p);
    return h;
}

uint32_t CPersistanceConnexion::_nTrouve(const wchar_t* pszCle) const {
    if (m_tabSeaux.empty())
        return 0;
    for (uint32_t n = m_tabSeaux[s_nHash(pszCle) % m_tabSeaux.size()]; n;
         n = m_tabElements[n - 1].nSuivant)
        if (std::wcscmp(m_tabElements[n - 1].sCle.pszGet(), pszCle) == 0)
            return n;
    return 0;
}

// Rebuilds the table at size nIndiceTaille. The elements keep their order, which is the order
// of a walk; the free ones follow, lowest first.
bool CPersistanceConnexion::_bRedimensionne(size_t nIndiceTaille) {
    if (nIndiceTaille >= std::size(gtabTailles))
        return false;
    const uint32_t nSeaux = gtabTailles[nIndiceTaille];
    std::vector<STElement> tabAnciens;
    tabAnciens.swap(m_tabElements);
    m_tabSeaux.assign(nSeaux, 0);
    m_tabElements.resize(nSeaux / 2);
    m_nIndiceTaille = nIndiceTaille;
    uint32_t nPlace = 0;
    for (STElement& st : tabAnciens) {
        if (!st.bOccupe)
            continue;
        STElement& stNouveau = m_tabElements[nPlace++];
        stNouveau = std::move(st);
        uint32_t& nSeau = m_tabSeaux[s_nHash(stNouveau.sCle.pszGet()) % nSeaux];
        stNouveau.nSuivant = nSeau;
        nSeau = nPlace;
    }
    m_nLibre = 0;
    for (uint32_t n = static_cast<uint32_t>(m_tabElements.size()); n > nPlace; --n) {
        m_tabElements[n - 1].nSuivant = m_nLibre;
        m_nLibre = n;
    }
    return true;
}

bool CPersistanceConnexion::_bInsere(const CXYString<wchar_t>& sCle,
                                     CConnexionOAuthBase* pclConnexion) {
    if (!m_nLibre && !_bRedimensionne(m_nIndiceTaille + 1))
        return false;
    const uint32_t n = m_nLibre;
    STElement& st = m_tabElements[n - 1];
    m_nLibre = st.nSuivant;
    uint32_t& nSeau = m_tabSeaux[s_nHash(sCle.pszGet()) % m_tabSeaux.size()];
    st.nSuivant = nSeau;
    st.bOccupe = true;
    st.sCle = sCle;
    st.pclConnexion = pclConnexion;
    nSeau = n;
    ++m_nNbElement;
    return true;
}

void CPersistanceConnexion::_Supprime(uint32_t nElement) {
    STElement& st = m_tabElements[nElement - 1];
    for (uint32_t* pn = &m_tabSeaux[s_nHash(st.sCle.pszGet()) % m_tabSeaux.size()]; *pn;
         pn = &m_tabElements[*pn - 1].nSuivant) {
        if (*pn == nElement) {
            *pn = st.nSuivant;
            break;
        }
    }
    delete st.pclConnexion;
    st = STElement();
    st.nSuivant = m_nLibre;
    m_nLibre = nElement;
    --m_nNbElement;
}

// One size down when the count falls under a quarter of the smaller size.
void CPersistanceConnexion::_ReduitSiBesoin() {
    if (m_nIndiceTaille > 0 && m_nNbElement < gtabTailles[m_nIndiceTaille - 1] / 4)
        (void)_bRedimensionne(m_nIndiceTaille - 1);
}

// ---- the operations ----------------------------------------------------------------------

bool CPersistanceConnexion::bAddConnexion(CConnexionOAuthBase* pclConnexion) {
    if (!s_bStockageActif() || !pclConnexion)
        return false;
    const CTString sCle = pclConnexion->vcszGetCleHash();
    if (!sCle.pszGet() || !*sCle.pszGet())
        return false;
    CConnexionOAuthBase* pclClone = pclConnexion->vpclClone();
    if (!pclClone)
        return false;
    if (const uint32_t n = _nTrouve(sCle.pszGet())) {
        delete m_tabElements[n - 1].pclConnexion;
        m_tabElements[n - 1].pclConnexion = pclClone;
        return true;
    }
    if (_bInsere(CXYString<wchar_t>(sCle.pszGet()), pclClone))
        return true;
    delete pclClone;
    return false;
}

bool CPersistanceConnexion::bRetrieveConnexion(CConnexionOAuthBase* pclConnexion) {
    if (!s_bStockageActif() || !pclConnexion)
        return false;
    const uint32_t n = _nTrouve(pclConnexion->vcszGetCleHash().pszGet());
    if (!n)
        return false;
    pclConnexion->vCopieOAuthData(*m_tabElements[n - 1].pclConnexion);
    return true;
}

bool CPersistanceConnexion::bDeleteConnexion(CConnexionOAuthBase* pclConnexion) {
    if (!s_bStockageActif() || !pclConnexion)
        return false;
    const uint32_t n = _nTrouve(pclConnexion->vcszGetCleHash().pszGet());
    if (!n)
        return false;
    _Supprime(n);
    _ReduitSiBesoin();
    return true;
}

IPersistance* CPersistanceConnexion::__piGetIPersistanceSTD(IVM* piVM, CXError* pclErreur) {
    ILibShop* piLibShop = CInformationDLL::ms_piLibShop;
    if (!piVM || !piLibShop)
        return nullptr;
    auto clComposante =
        CRef<IInterfaceObjetBase>::Adopt(piVM->piGetService(SERVICEVM_COMPOSANTE, pclErreur));
    IInterfaceObjetBase* pi = piLibShop->piGetInterfaceVM(clComposante.pGet(), 60, 4, 1,
                                                          gszServicePersistance, pclErreur);
    return static_cast<IPersistance*>(pi);
}

bool CPersistanceConnexion::bLoadData(IVM* piVM, CXError* pclErreur,
                                      PFNNouvelleConnexion pfnNouvelle) {
    if (!s_bStockageActif() || m_bCharge)
        return true;
    auto clStore = CRef<IPersistance>::Adopt(__piGetIPersistanceSTD(piVM, pclErreur));
    if (!clStore)
        return false;
    wchar_t* pszValeur = nullptr;
    std::wstring sValeur;
    if (clStore->vbLit(gszSection, gszCle, L"", &pszValeur, pclErreur) && pszValeur)
        sValeur = pszValeur;
    clStore->vLibere(pszValeur);

    // One record per piece; a piece that its connection cannot read is passed over, so that
    // the walk always moves on.
    const std::wstring_view sv = sValeur;
    for (size_t nDebut = 0; nDebut < sv.size() && pfnNouvelle;) {
        size_t nFin = sv.find(gszFinRecord, nDebut);
        if (nFin == std::wstring_view::npos)
            nFin = sv.size();
        const std::wstring sRecord(sv.substr(nDebut, nFin - nDebut));
        nDebut = nFin + std::size(gszFinRecord) - 1;
        if (sRecord.empty())
            continue;
        CConnexionOAuthBase* pclConnexion = pfnNouvelle();
        if (pclConnexion && pclConnexion->vbDeserialise(sRecord.c_str()))
            (void)bAddConnexion(pclConnexion);
        delete pclConnexion;
    }
    m_bCharge = 1;
    return true;
}

bool CPersistanceConnexion::bSaveData(IVM* piVM, CXError* pclErreur) {
    if (!s_bStockageActif())
        return true;
    auto clStore = CRef<IPersistance>::Adopt(__piGetIPersistanceSTD(piVM, pclErreur));
    if (!clStore)
        return false;
    std::wstring sTexte;
    for (STElement& st : m_tabElements) {
        CXYString<wchar_t> sRecord;
        if (!st.bOccupe || !st.pclConnexion->vbSerialise(sRecord))
            continue;
        sTexte += sRecord.sv();
        sTexte += gszFinRecord;
    }
    _CXErrorModule60 clErreurEcriture;
    CXError* pcl = pclErreur ? pclErreur : &clErreurEcriture;
    const bool bAvant = pcl->bEstPropre();
    clStore->vEcrit(gszSection, gszCle, sTexte.c_str(), pcl);
    return !bAvant || pcl->bEstPropre();
}
