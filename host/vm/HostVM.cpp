#include "HostVM.h"

#include "Any.h"
#include "HostArray.h"
#include "HostBarrier.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "MemoImage.h"
#include "Ref.h"
#include "Utf8.h"
#include "VMErrors.h"
#include "XYString.h"

#ifdef KVGGL_HAVE_HOST_FUNCTIONS
#include "HostFunctions.h"
#endif

#include <cstring>
#include <string>
#include <utility>

namespace {

// The VM's component object: what ILibShop::piGetInterfaceVM receives for services tied to the
// VM. It lives as long as the process; its count is not kept.
class CVMComponentObject final : public IInterfaceObjetBase {
public:
    void vAddRef() override {}
    void vRelease() override {}
};
CVMComponentObject gclComponentObject;

constexpr int knLibraryVM = 8;

} // namespace

CHostVM::CHostVM() = default;
CHostVM::~CHostVM() = default;

bool CHostVM::s_bHasHostFunctions() {
#ifdef KVGGL_HAVE_HOST_FUNCTIONS
    return true;
#else
    return false;
#endif
}

void CHostVM::SetPosition(std::wstring sLabel, std::wstring sName, int nLine) {
    m_sLabel = std::move(sLabel);
    m_sName = std::move(sName);
    m_nLine = nLine;
}

intptr_t CHostVM::nInfoVM(int nInfo, int nSousCode) {
    if (nInfo != INFOVM_TRAITEMENT_COURANT)
        return 0;
    switch (nSousCode) {
    case INFOTRAITEMENT_LIBELLE:
        return reinterpret_cast<intptr_t>(m_sLabel.c_str());
    case INFOTRAITEMENT_NOM:
        return reinterpret_cast<intptr_t>(m_sName.c_str());
    case INFOTRAITEMENT_LIGNE:
        return m_nLine;
    default:
        return 0;
    }
}

int CHostVM::bEmpileAny(CAny* pclRecepteur) {
    m_pclReceiver = pclRecepteur;
    return 1;
}

int CHostVM::bEmpileDateHeure(const CDateTime* pclDateHeure) {
    return KVHost::Guard(nullptr, 0, [&] {
        if (!pclDateHeure)
            return 0;
        m_tabStack.emplace_back();
        m_tabStack.back().SetDateTime(*pclDateHeure);
        return 1;
    });
}

int CHostVM::bEmpileChaineA(const char* psz, int nLongueur) {
    return KVHost::Guard(nullptr, 0, [&] {
        m_tabStack.emplace_back();
        if (!KV_bSucces(m_tabStack.back().SetStringA(psz ? psz : "",
                                                     psz && nLongueur > 0 ? nLongueur : -1))) {
            m_tabStack.pop_back();
            return 0;
        }
        return 1;
    });
}

int CHostVM::nFunctionCalls(int nFonction) const {
    auto it = m_mapFunctionCalls.find(nFonction);
    return it == m_mapFunctionCalls.end() ? 0 : it->second;
}

int CHostVM::bAppelleFonctionVM(int nComposante, int nFonction, int, int nNbParametre,
                                CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&] {
        // The parameters and the receiver belong to this call alone, whatever its outcome.
        std::vector<CAny> tabParametres;
        tabParametres.swap(m_tabStack);
        CAny* pclRecepteur = std::exchange(m_pclReceiver, nullptr);
        ++m_mapFunctionCalls[nFonction];
        if (nComposante != knLibraryVM || nNbParametre < 0 ||
            static_cast<size_t>(nNbParametre) > tabParametres.size()) {
            KVHostVM::SetError(pclErreur, VMERROR_BAD_PARAMETERS,
                               "host function " + std::to_string(nFonction) + " of library " +
                                   std::to_string(nComposante) + " called with " +
                                   std::to_string(nNbParametre) + " parameter(s), " +
                                   std::to_string(tabParametres.size()) + " stacked");
            return 0;
        }
        tabParametres.erase(tabParametres.begin(),
                            tabParametres.end() - static_cast<std::ptrdiff_t>(nNbParametre));
#ifdef KVGGL_HAVE_HOST_FUNCTIONS
        if (nFonction == FONCTIONVM_URL_ENCODE && nNbParametre == 1) {
            CXYString<char> sTexte;
            if (!KV_bSucces(tabParametres[0].__nFillString(sTexte))) {
                KVHostVM::SetError(pclErreur, VMERROR_BAD_PARAMETERS,
                                   "URL encoding (297) takes a text");
                return 0;
            }
            std::string s = KVHost::UrlEncode(sTexte.sv());
            if (pclRecepteur &&
                !KV_bSucces(pclRecepteur->SetStringA(s.c_str(), static_cast<int>(s.size())))) {
                KVHostVM::SetError(pclErreur, VMERROR_MEMORY, "no memory for the encoded text");
                return 0;
            }
            return 1;
        }
        if ((nFonction == FONCTIONVM_UTC_VERS_LOCALE || nFonction == FONCTIONVM_LOCALE_VERS_UTC) &&
            nNbParametre == 1) {
            CDateTime dt, dtResultat;
            if (!KV_bSucces(tabParametres[0].nGetDateTime(&dt))) {
                KVHostVM::SetError(pclErreur, VMERROR_BAD_PARAMETERS,
                                   "time conversion (" + std::to_string(nFonction) +
                                       ") takes a date-time");
                return 0;
            }
            bool bOk = nFonction == FONCTIONVM_UTC_VERS_LOCALE
                           ? KVHost::bUtcToLocal(dt, dtResultat, pclErreur)
                           : KVHost::bLocalToUtc(dt, dtResultat, pclErreur);
            if (!bOk)
                return 0;
            // The funnel reads the answer back as the host's digit text of a date-time.
            wchar_t sz[18];
            dtResultat.ToString(sz);
            if (pclRecepteur)
                (void)pclRecepteur->__nSetString(sz);
            return 1;
        }
#endif
        KVHostVM::SetError(pclErreur, VMERROR_FUNCTION_UNAVAILABLE,
                           "host function " + std::to_string(nFonction) +
                               " is not available in this host");
        return 0;
    });
}

IInterfaceObjetBase* CHostVM::piGetService(int nService, CXError* pclErreur) {
    return KVHost::Guard(
        pclErreur, static_cast<IInterfaceObjetBase*>(nullptr), [&]() -> IInterfaceObjetBase* {
            if (nService == SERVICEVM_COMPOSANTE)
                return &gclComponentObject;
            KVHostVM::SetError(pclErreur, VMERROR_NO_SERVICE,
                               "the VM has no service " + std::to_string(nService));
            return nullptr;
        });
}

IAuthentification* CHostVM::piGetAuthentification(CXError* pclErreur) {
    return KVHost::Guard(
        pclErreur, static_cast<IAuthentification*>(nullptr), [&]() -> IAuthentification* {
            if (m_fnLogin)
                return m_fnLogin(pclErreur);
            KVHostVM::SetError(pclErreur, VMERROR_NO_SERVICE, "this host has no login dialogue");
            return nullptr;
        });
}

IKLTableau* CHostVM::pclAlloueTableau(int nTypeElement, int, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IKLTableau*>(nullptr), [&]() -> IKLTableau* {
        if (nTypeElement < 0 || nTypeElement > 0xFFFF) {
            KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE,
                               "no array of type " + std::to_string(nTypeElement));
            return nullptr;
        }
        return CHostArray::s_pclNew(static_cast<uint16_t>(nTypeElement));
    });
}

bool CHostVM::s_bReadValue(const void* pValeur, int nType, CHostValue& clOut) {
    clOut = CHostValue();
    if (!pValeur)
        return false;
    auto Lit = [pValeur](auto& x) { std::memcpy(&x, pValeur, sizeof(x)); };
    switch (nType) {
    case KVTYPE_KLBOOL: {
        int32_t n;
        Lit(n);
        clOut = CHostValue::s_Boolean(n != 0);
        return true;
    }
    case KVTYPE_KLI4: {
        int32_t n;
        Lit(n);
        clOut = CHostValue::s_Integer(n);
        return true;
    }
    case KVTYPE_KLI8: {
        int64_t n;
        Lit(n);
        clOut = CHostValue::s_Integer(n);
        return true;
    }
    case KVTYPE_KLR4: {
        float r;
        Lit(r);
        clOut = CHostValue::s_Real(r);
        return true;
    }
    case KVTYPE_KLR8: {
        double r;
        Lit(r);
        clOut = CHostValue::s_Real(r);
        return true;
    }
    case KVTYPE_KLCARA: {
        char c;
        Lit(c);
        // The character 0 is no character: the empty text.
        clOut = CHostValue::s_String(c ? std::string(1, c) : std::string());
        return true;
    }
    case KVTYPE_KLDSTRW: {
        const auto& s = *static_cast<const CXYString<wchar_t>*>(pValeur);
        clOut = CHostValue::s_String(KVUtf8::VersUtf8(s.sv()));
        return true;
    }
    case KVTYPE_KLDSTRA: {
        const auto& s = *static_cast<const CXYString<char>*>(pValeur);
        clOut = CHostValue::s_String(std::string(s.sv()));
        return true;
    }
    case KVTYPE_TEXT: {
        const wchar_t* psz;
        Lit(psz);
        clOut = CHostValue::s_String(psz ? KVUtf8::VersUtf8(psz) : std::string());
        return true;
    }
    case KVTYPE_KLDATETIME: {
        CDateTime dt;
        Lit(dt);
        clOut = CHostValue::s_DateTime(dt);
        return true;
    }
    case KVTYPE_KLBIN: {
        const auto& clBin = *static_cast<const CKLBIN*>(pValeur);
        clOut = CHostValue::s_String(std::string(clBin.sv()));
        return true;
    }
    case KVTYPE_KLMEMOIMG:
        return CHostValue::s_bFromImage(*static_cast<const CKLMemoImage*>(pValeur), clOut);
    case KVTYPE_ANY:
        return CHostValue::s_bFromAny(*static_cast<const CAny*>(pValeur), clOut);
    case KVTYPE_KLDINO: {
        IObjetBase* pi;
        Lit(pi);
        clOut = CHostValue::s_Object(pi);
        return true;
    }
    case KVTYPE_ARRAY: {
        IKLTableau* pi;
        Lit(pi);
        return CHostValue::s_bFromArray(pi, clOut);
    }
    default:
        return false;
    }
}

void CHostVM::_Return(CCallContext* pclCtx, const void* pValeur, int nType) {
    // An array comes with a reference for the VM, which it takes over in every case.
    CRef<IKLTableau> clTableau;
    if (nType == KVTYPE_ARRAY && pValeur) {
        IKLTableau* pi;
        std::memcpy(&pi, pValeur, sizeof(pi));
        clTableau = CRef<IKLTableau>::Adopt(pi);
    }
    if (!pclCtx)
        return;
    pclCtx->m_bReturned = true;
    pclCtx->m_nReturnType = nType;
    try {
        pclCtx->m_bUnreadable = !s_bReadValue(pValeur, nType, pclCtx->m_clResult);
    } catch (...) {
        // No memory to take the value: the call shows it as not held rather than let the
        // exception reach the component.
        pclCtx->m_clResult = CHostValue();
        pclCtx->m_bUnreadable = true;
        pclCtx->m_bNoMemory = true;
    }
}

int CHostVM::bRetourneValeur(CCtxInfo* pclCtx, const void* pValeur, int nType) {
    auto* pclAppel = static_cast<CCallContext*>(pclCtx);
    bool bNotre = pclAppel && pclAppel->bOurs();
    _Return(bNotre ? pclAppel : nullptr, pValeur, nType);
    return bNotre;
}

int CHostVM::nBeginCall(CCallContext* pclCtx) {
    int n = m_nNextCall++;
    m_mapCalls[n] = pclCtx;
    return n;
}

void CHostVM::EndCall(int nAppel) {
    m_mapCalls.erase(nAppel);
}

int CHostVM::bRetourneValeurAppel(int nAppel, const void* pValeur, int nType) {
    auto it = m_mapCalls.find(nAppel);
    CCallContext* pcl = it == m_mapCalls.end() ? nullptr : it->second;
    _Return(pcl, pValeur, nType);
    return pcl != nullptr;
}
