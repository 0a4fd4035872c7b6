#include "Resources.h"

#include "DataCompressor.h"
#include "Execution.h"
#include "KVResult.h"
#include "Tables.h"
#include "Utf8.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>
#include <string_view>
#include <vector>

int gbInitialise = 0;
PFNLoadStringKVM gpfnLoadStringKVM = nullptr;

namespace {

constexpr int knIndiceMax = 9;
constexpr size_t knConversionMax = 16; // the longest conversion between the two marks

enum eTYPEARGUMENT {
    TA_AUCUN, // not named by the format: read as a pointer to reach the next ones
    TA_TEXTE,
    TA_TEXTE_UTF8,
    TA_INT,
    TA_UINT,
    TA_LONG,
    TA_ULONG,
    TA_LLONG,
    TA_ULLONG,
    TA_DOUBLE,
    TA_POINTEUR,
    TA_CARACTERE,
};

struct STArgument {
    eTYPEARGUMENT eType = TA_AUCUN;
    union {
        const wchar_t* psz;
        const char* pszUtf8;
        int n;
        unsigned u;
        long l;
        unsigned long ul;
        long long ll;
        unsigned long long ull;
        double d;
        const void* p;
        wint_t c;
    };
    STArgument() : p(nullptr) {}
};

// One placeholder at a percent sign.
struct STPlaceholder {
    int nIndice = 0; // 1..9
    size_t nFin = 0; // position after it
    eTYPEARGUMENT eType = TA_TEXTE;
    std::wstring sPrintf; // the printf format of a conversion, empty for a plain %n
};

// The conversion "flags width .precision length letter" between the two marks, as a printf
// format for one value of the type it reads; false when it is not one we take.
bool s_bLitConversion(std::wstring_view sConv, STPlaceholder& st) {
    size_t i = 0;
    while (i < sConv.size() && std::wstring_view(L"-+ #0'").find(sConv[i]) != sConv.npos)
        ++i;
    while (i < sConv.size() && sConv[i] >= L'0' && sConv[i] <= L'9')
        ++i;
    if (i < sConv.size() && sConv[i] == L'.') {
        ++i;
        while (i < sConv.size() && sConv[i] >= L'0' && sConv[i] <= L'9')
            ++i;
    }
    std::wstring_view sDebut = sConv.substr(0, i);
    size_t nDebutLongueur = i;
    while (i < sConv.size() && std::wstring_view(L"hlqjzt").find(sConv[i]) != sConv.npos)
        ++i;
    if (i + 1 != sConv.size())
        return false;
    std::wstring_view sLongueur = sConv.substr(nDebutLongueur, i - nDebutLongueur);
    wchar_t cConv = sConv[i];

    int nLong = 0; // 0 int, 1 long, 2 long long
    if (sLongueur == L"l" || sLongueur == L"z" || sLongueur == L"t")
        nLong = 1;
    else if (sLongueur == L"ll" || sLongueur == L"q" || sLongueur == L"j")
        nLong = 2;
    else if (!sLongueur.empty() && sLongueur != L"h" && sLongueur != L"hh")
        return false;

    std::wstring sPrintf = L"%";
    sPrintf += sDebut;
    switch (cConv) {
    case L'd':
    case L'i':
        st.eType = nLong == 0 ? TA_INT : nLong == 1 ? TA_LONG : TA_LLONG;
        sPrintf += nLong == 0 ? L"" : nLong == 1 ? L"l" : L"ll";
        sPrintf += cConv;
        break;
    case L'u':
    case L'o':
    case L'x':
    case L'X':
        st.eType = nLong == 0 ? TA_UINT : nLong == 1 ? TA_ULONG : TA_ULLONG;
        sPrintf += nLong == 0 ? L"" : nLong == 1 ? L"l" : L"ll";
        sPrintf += cConv;
        break;
    case L'f':
    case L'F':
    case L'e':
    case L'E':
    case L'g':
    case L'G':
    case L'a':
    case L'A':
        st.eType = TA_DOUBLE;
        sPrintf += cConv;
        break;
    case L's':
    case L'S':
        st.eType = cConv == L's' ? TA_TEXTE : TA_TEXTE_UTF8;
        sPrintf += L"ls";
        break;
    case L'c':
        st.eType = TA_CARACTERE;
        sPrintf += L"lc";
        break;
    case L'p':
        st.eType = TA_POINTEUR;
        sPrintf += L"p";
        break;
    default:
        return false;
    }
    st.sPrintf = std::move(sPrintf);
    return true;
}

// Reads the placeholder whose percent sign stands at nPos; false when there is none.
bool s_bLitPlaceholder(std::wstring_view sFormat, size_t nPos, STPlaceholder& st) {
    if (nPos + 1 >= sFormat.size())
        return false;
    wchar_t c = sFormat[nPos + 1];
    if (c < L'1' || c > L'9')
        return false;
    st = STPlaceholder();
    st.nIndice = c - L'0';
    st.nFin = nPos + 2;
    if (st.nFin < sFormat.size() && sFormat[st.nFin] == L'!') {
        size_t nFerme = sFormat.find(L'!', st.nFin + 1);
        if (nFerme != sFormat.npos && nFerme - st.nFin - 1 <= knConversionMax &&
            s_bLitConversion(sFormat.substr(st.nFin + 1, nFerme - st.nFin - 1), st)) {
            st.nFin = nFerme + 1;
        } else {
            st = STPlaceholder(); // a malformed conversion stands as written
            return false;
        }
    }
    return true;
}

void s_LitArgument(STArgument& a, va_list& args) {
    switch (a.eType) {
    case TA_TEXTE:
        a.psz = va_arg(args, const wchar_t*);
        break;
    case TA_TEXTE_UTF8:
        a.pszUtf8 = va_arg(args, const char*);
        break;
    case TA_INT:
        a.n = va_arg(args, int);
        break;
    case TA_UINT:
        a.u = va_arg(args, unsigned);
        break;
    case TA_LONG:
        a.l = va_arg(args, long);
        break;
    case TA_ULONG:
        a.ul = va_arg(args, unsigned long);
        break;
    case TA_LLONG:
        a.ll = va_arg(args, long long);
        break;
    case TA_ULLONG:
        a.ull = va_arg(args, unsigned long long);
        break;
    case TA_DOUBLE:
        a.d = va_arg(args, double);
        break;
    case TA_CARACTERE:
        a.c = va_arg(args, wint_t);
        break;
    case TA_POINTEUR:
    case TA_AUCUN:
        a.p = va_arg(args, const void*);
        break;
    }
}

template <class V> void s_Printf(std::wstring& sOut, const std::wstring& sPrintf, V v) {
    std::vector<wchar_t> tab(64);
    for (;;) {
        int n = std::swprintf(tab.data(), tab.size(), sPrintf.c_str(), v);
        if (n >= 0 && static_cast<size_t>(n) < tab.size()) {
            sOut.append(tab.data(), static_cast<size_t>(n));
            return;
        }
        if (tab.size() >= 65536)
            return; // a width no message needs
        tab.resize(tab.size() * 2);
    }
}

void s_Ecrit(std::wstring& sOut, const STPlaceholder& st, const STArgument& a) {
    if (st.sPrintf.empty()) { // plain %n: a wide text
        if (a.psz)
            sOut += a.psz;
        return;
    }
    switch (st.eType) {
    case TA_TEXTE:
        s_Printf(sOut, st.sPrintf, a.psz ? a.psz : L"");
        break;
    case TA_TEXTE_UTF8: {
        std::wstring sWide = KVUtf8::VersWide(a.pszUtf8 ? a.pszUtf8 : "");
        s_Printf(sOut, st.sPrintf, sWide.c_str());
        break;
    }
    case TA_INT:
        s_Printf(sOut, st.sPrintf, a.n);
        break;
    case TA_UINT:
        s_Printf(sOut, st.sPrintf, a.u);
        break;
    case TA_LONG:
        s_Printf(sOut, st.sPrintf, a.l);
        break;
    case TA_ULONG:
        s_Printf(sOut, st.sPrintf, a.ul);
        break;
    case TA_LLONG:
        s_Printf(sOut, st.sPrintf, a.ll);
        break;
    case TA_ULLONG:
        s_Printf(sOut, st.sPrintf, a.ull);
        break;
    case TA_DOUBLE:
        s_Printf(sOut, st.sPrintf, a.d);
        break;
    case TA_CARACTERE:
        s_Printf(sOut, st.sPrintf, a.c);
        break;
    case TA_POINTEUR:
        s_Printf(sOut, st.sPrintf, a.p);
        break;
    case TA_AUCUN:
        break;
    }
}

// Both passes over the format: the types of the arguments, then the text.
std::wstring s_sFormate(std::wstring_view sFormat, va_list* pArguments) {
    STArgument tabArgument[knIndiceMax + 1];
    int nIndiceMax = 0;
    STPlaceholder st;
    for (size_t i = 0; i < sFormat.size(); ++i) {
        if (sFormat[i] != L'%')
            continue;
        if (i + 1 < sFormat.size() && sFormat[i + 1] == L'%') {
            ++i;
            continue;
        }
        if (!s_bLitPlaceholder(sFormat, i, st))
            continue;
        STArgument& a = tabArgument[st.nIndice];
        if (a.eType == TA_AUCUN)
            a.eType = st.eType; // the first use tells the type
        nIndiceMax = std::max(nIndiceMax, st.nIndice);
        i = st.nFin - 1;
    }
    if (pArguments) {
        for (int n = 1; n <= nIndiceMax; ++n)
            s_LitArgument(tabArgument[n], *pArguments);
    }

    std::wstring sOut;
    sOut.reserve(sFormat.size());
    size_t i = 0;
    while (i < sFormat.size()) {
        size_t nPourcent = sFormat.find(L'%', i);
        if (nPourcent == sFormat.npos) {
            sOut.append(sFormat.substr(i));
            break;
        }
        sOut.append(sFormat.substr(i, nPourcent - i));
        if (nPourcent + 1 < sFormat.size() && sFormat[nPourcent + 1] == L'%') {
            sOut += L'%';
            i = nPourcent + 2;
        } else if (s_bLitPlaceholder(sFormat, nPourcent, st)) {
            const STArgument& a = tabArgument[st.nIndice];
            if (!pArguments) {
                // no argument was given: the placeholder prints as nothing
            } else if (a.eType == st.eType) {
                s_Ecrit(sOut, st, a);
            } else {
                sOut.append(sFormat.substr(nPourcent, st.nFin - nPourcent));
            }
            i = st.nFin;
        } else {
            sOut += L'%';
            i = nPourcent + 1;
        }
    }
    return sOut;
}

// The whole text through the host's loader; false when it has none.
bool s_bChargeKVM(unsigned nNumero, std::wstring& sOut) {
    if (!gpfnLoadStringKVM)
        return false;
    std::vector<wchar_t> tab(512);
    for (;;) {
        tab[0] = L'\0';
        long n = gpfnLoadStringKVM(nNumero, tab.data(), static_cast<int>(tab.size()));
        if (n <= 0)
            return false;
        // A text that fills the buffer may have been cut: ask again with more room.
        if (static_cast<size_t>(n) >= tab.size() - 1 && tab.size() < (1u << 20)) {
            tab.resize(tab.size() * 4);
            continue;
        }
        sOut.assign(tab.data(), std::min(static_cast<size_t>(n), tab.size() - 1));
        return true;
    }
}

bool s_bTrouve(const _stMyModuleInfo* pstModule, unsigned nNumero, STRessourceModule& st) {
    st = STRessourceModule{nNumero, 0, nullptr, 0, 0, -1};
    return pstModule && pstModule->pfnGetRessource && pstModule->pfnGetRessource(st);
}

// The whole text, from the host's loader or the module; false when missing.
bool s_bChargeTexte(const _stMyModuleInfo* pstModule, unsigned nNumero, std::wstring& sOut) {
    sOut.clear();
    if (s_bChargeKVM(nNumero, sOut))
        return true;
    STRessourceModule st;
    if (!s_bTrouve(pstModule, nNumero, st))
        return false;
    wchar_t* psz = CDataCompressor::s_pszDeCompress(st);
    if (!psz)
        return false;
    sOut = psz;
    std::free(psz);
    return true;
}

int s_nCopie(const std::wstring& s, wchar_t* pszBuffer, int nCapacite) {
    if (!pszBuffer || nCapacite <= 0)
        return 0;
    size_t n = std::min(s.size(), static_cast<size_t>(nCapacite - 1));
    std::wmemcpy(pszBuffer, s.data(), n);
    pszBuffer[n] = L'\0';
    return static_cast<int>(n);
}

// Load, pick the form, format: the common path of the formatting functions.
bool s_bFormate(const _stMyModuleInfo* pstModule, int nForme, unsigned nNumero, va_list args,
                std::wstring& sOut) {
    std::wstring sTexte;
    if (!s_bChargeTexte(pstModule, nNumero, sTexte))
        return false;
    if (nForme >= 0) {
        CTString clTexte(sTexte), clForme;
        if (!clTexte.bExtraitChaine(static_cast<size_t>(nForme), kszSeparateurForme, clForme))
            return false;
        sTexte = std::move(clForme.s());
    }
    va_list copie;
    va_copy(copie, args);
    sOut = s_sFormate(sTexte, &copie);
    va_end(copie);
    return true;
}

} // namespace

int DLLRES_nLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero, wchar_t* pszBuffer,
                       int nCapacite) {
    if (!pszBuffer || nCapacite <= 0)
        return 0;
    pszBuffer[0] = L'\0';
    if (gpfnLoadStringKVM) {
        long n = gpfnLoadStringKVM(nNumero, pszBuffer, nCapacite);
        if (n > 0) {
            n = std::min(n, static_cast<long>(nCapacite - 1));
            pszBuffer[n] = L'\0';
            return static_cast<int>(n);
        }
        pszBuffer[0] = L'\0';
    }
    STRessourceModule st;
    if (!s_bTrouve(pstModule, nNumero, st))
        return 0;
    int nLongueur = nCapacite;
    int nRes = CDataCompressor::s_nDeCompress(pszBuffer, &nLongueur, st);
    if (nRes == CDataCompressor::DC_OK)
        return nLongueur;
    if (nRes == CDataCompressor::DC_TRONQUE)
        return nCapacite - 1;
    pszBuffer[0] = L'\0';
    return 0;
}

int DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut) {
    if (!pclOut)
        return 0;
    try {
        return s_bChargeTexte(pstModule, nNumero, pclOut->s()) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        pclOut->Vide();
        return 0;
    }
}

int DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero,
                       CXYString<wchar_t>* pclOut) {
    if (!pclOut)
        return 0;
    try {
        std::wstring s;
        bool bTrouve = s_bChargeTexte(pstModule, nNumero, s);
        if (!bTrouve) {
            pclOut->Vide();
            return 0;
        }
        return KV_bSucces(pclOut->nAffecte(s.data(), s.size())) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        pclOut->Vide();
        return 0;
    }
}

int DLLRES_bFormatMessage(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut,
                          ...) {
    va_list args;
    va_start(args, pclOut);
    int bRes = DLLRES_bFormatMessageList(pstModule, nNumero, pclOut, args);
    va_end(args);
    return bRes;
}

int DLLRES_bFormatMessageList(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut,
                              va_list args) {
    return DLLRES_bFormatMessageSingulierPlurielList(pstModule, -1, nNumero, pclOut, args);
}

int DLLRES_nFormatMessage(const _stMyModuleInfo* pstModule, unsigned nNumero, wchar_t* pszBuffer,
                          int nCapacite, ...) {
    va_list args;
    va_start(args, nCapacite);
    int n = DLLRES_nFormatMessageList(pstModule, nNumero, pszBuffer, nCapacite, args);
    va_end(args);
    return n;
}

int DLLRES_nFormatMessageList(const _stMyModuleInfo* pstModule, unsigned nNumero,
                              wchar_t* pszBuffer, int nCapacite, va_list args) {
    if (!pszBuffer || nCapacite <= 0)
        return 0;
    pszBuffer[0] = L'\0';
    try {
        std::wstring s;
        if (!s_bFormate(pstModule, -1, nNumero, args, s))
            return 0;
        return s_nCopie(s, pszBuffer, nCapacite);
    } catch (const std::bad_alloc&) {
        pszBuffer[0] = L'\0';
        return 0;
    }
}

int DLLRES_bFormatMessageSingulierPluriel(const _stMyModuleInfo* pstModule, int n, unsigned nNumero,
                                          CTString* pclOut, ...) {
    va_list args;
    va_start(args, pclOut);
    int bRes = DLLRES_bFormatMessageSingulierPlurielList(pstModule, n, nNumero, pclOut, args);
    va_end(args);
    return bRes;
}

int DLLRES_bFormatMessageSingulierPlurielList(const _stMyModuleInfo* pstModule, int n,
                                              unsigned nNumero, CTString* pclOut, va_list args) {
    if (!pclOut)
        return 0;
    try {
        if (s_bFormate(pstModule, n, nNumero, args, pclOut->s()))
            return 1;
    } catch (const std::bad_alloc&) {
    }
    pclOut->Vide();
    return 0;
}

int __bLoadStringSingulierPluriel(const _stMyModuleInfo* pstModule, int n, unsigned nNumero,
                                  CTString* pclOut) {
    if (!pclOut || n < 0)
        return 0;
    try {
        CTString clTexte;
        if (s_bChargeTexte(pstModule, nNumero, clTexte.s()) &&
            clTexte.bExtraitChaine(static_cast<size_t>(n), kszSeparateurForme, *pclOut))
            return 1;
    } catch (const std::bad_alloc&) {
    }
    pclOut->Vide();
    return 0;
}

unsigned long DLLRES_dwFormatMessage(const wchar_t* pszFormat, CTString* pclOut,
                                     va_list* pArguments) {
    if (!pclOut)
        return 0;
    try {
        pclOut->s() = s_sFormate(pszFormat ? pszFormat : L"", pArguments);
        return pclOut->nGetLongueur();
    } catch (const std::bad_alloc&) {
        pclOut->Vide();
        return 0;
    }
}

int DLLRES_nGetUtilisation(const _stMyModuleInfo* pstModule, unsigned nNumero) {
    STRessourceModule st;
    return s_bTrouve(pstModule, nNumero, st) ? st.nUtilisation : -1;
}

long KVM_nLoadString(unsigned nNumero, wchar_t* pszBuffer, int nCapacite) {
    if (!gpfnLoadStringKVM || !pszBuffer || nCapacite <= 0)
        return 0;
    long n = gpfnLoadStringKVM(nNumero, pszBuffer, nCapacite);
    if (n <= 0) {
        pszBuffer[0] = L'\0';
        return 0;
    }
    n = std::min(n, static_cast<long>(nCapacite - 1));
    pszBuffer[n] = L'\0';
    return n;
}

int KVM_bLoadString(unsigned nNumero, CTString* pclOut) {
    if (!pclOut)
        return 0;
    try {
        if (s_bChargeKVM(nNumero, pclOut->s()))
            return 1;
    } catch (const std::bad_alloc&) {
    }
    pclOut->Vide();
    return 0;
}

const void* DLLRES_pLoadResource(const _stMyModuleInfo* pstModule, void* hInstance,
                                 unsigned nNumero, const wchar_t* pszType, uint32_t* pnTaille) {
    if (pnTaille)
        *pnTaille = 0;
    // A null handle would mean "every loaded module" to dlsym; the caller names one module.
    if (!hInstance)
        return nullptr;
    void* pSymbole = dlsym(hInstance, "DLLRES_pLoadResourceModule");
    if (!pSymbole)
        return nullptr;
    auto pfn = reinterpret_cast<PFNLoadResourceModule>(pSymbole);
    return pfn(pstModule, nNumero, pszType, pnTaille);
}

int DLLRES_bForceInitRessource(PFNCommandeComposante pfnCommande) {
    if (!pfnCommande)
        return 0;
    STChargeChaine st{sizeof(STChargeChaine), 0, nullptr, 0, 0};
    pfnCommande(COMMANDE_CHARGE_CHAINE, reinterpret_cast<uintptr_t>(&st));
    return 1;
}

int DLLRES_bInit(void* /*hInstance*/, int /*nOption*/) {
    gbInitialise = 1;
    return 1;
}

void DLLRES_Term() {
    gbInitialise = 0;
}

int DLLRES_bUtiliseDLLRes() {
    return 0;
}
