#include "XError.h"

#include "Resources.h"
#include "Tables.h"
#include "Utf8.h"

#include <netdb.h>
#include <search.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <string>
#include <utility>

// A variadic form hands its arguments to its va_list form.
#define KV_VARIADIQUE(FonctionList, Dernier, ...)                                                  \
    {                                                                                              \
        va_list args;                                                                              \
        va_start(args, Dernier);                                                                   \
        FonctionList(__VA_ARGS__, args);                                                           \
        va_end(args);                                                                              \
    }

namespace {

const wchar_t kszCRLF[] = L"\r\n";

// The row formats of the dump, in the order of eERRORINFOTYPE.
const char* const kapszFormatInfo[EIT_NB] = {
    "EIT_HELPFILE : <%s>",        "EIT_USERNAME : <%s>",
    "EIT_DSTFILE : <%s>",         "EIT_SRCFILE : <%s>",
    "EIT_PATHKVD : <%s>",         "EIT_LOGICALTABLENAME : <%s>",
    "EIT_ITEMNAME : <%s>",        "EIT_PATHFIC : <%s>",
    "EIT_PATHNDX : <%s>",         "EIT_PATHMMO : <%s>",
    "EIT_LINKNAME : <%s>",        "EIT_RECNUM : <%s>",
    "EIT_HLOCKTIME : <%s>",       "EIT_BASEMESSAGE : <%s>",
    "EIT_NATIVEMESSAGE : <%s>",   "EIT_ADOMESSAGE : <%s>",
    "EIT_BASECODE : <%s>",        "EIT_NATIVECODE : <%s>",
    "EIT_ADOCODE : <%s>",         "EIT_ODBCCODE : <%s>",
    "EIT_ODBCDESCRIPTION : <%s>", "EIT_DATAACCESS : <%s>",
    "EIT_INFOCLIENT : <%s>",      "EIT_INFOSERVEUR : <%s>",
    "EIT_PILEKL : <%s>",          "EIT_PILEC : <%s>",
    "EIT_COMPOSANT : <%s>",       "EIT_DATEHEURE : <%s>",
    "EIT_LOCKINFO : <%s>",        "EIT_CORRIGE_ETAT : <%s>",
    "EIT_INFOCS : <%s>",          "EIT_SERVEURCS : <%s>",
    "EIT_XINFO : <%s>",           "EIT_TYPE_KVFILE : <%s>",
    "EIT_IDCODE : <%s>",          "EIT_HCNXID : <%s>",
    "EIT_POSITION_ERREUR : <%s>", "EIT_EXCEPTION_CLASS_NAME : <%s>",
    "EIT_EXCEPTIONDOTNET : <%s>", "EIT_EXCEPTIONJAVA : <%s>",
    "EIT_CODEHTTP : <%s>",
};

int s_nCompareCode(const void* pCle, const void* pLigne) {
    return *static_cast<const unsigned*>(pCle) ==
                   static_cast<const STErrorDef*>(pLigne)->nCodeUtilisateur
               ? 0
               : 1;
}

const STErrorDef* s_pstChercheCode(const _stMyModuleInfo* pstModInfo, unsigned nCode) {
    if (!pstModInfo || !pstModInfo->pstErrorDef)
        return nullptr;
    size_t nNb = static_cast<size_t>(pstModInfo->nNbErrorDef);
    return static_cast<const STErrorDef*>(
        lfind(&nCode, pstModInfo->pstErrorDef, &nNb, sizeof(STErrorDef), s_nCompareCode));
}

// vswprintf into a string, growing the room until the text fits; false when it never does.
bool s_bVPrintf(std::wstring& sOut, const wchar_t* pszFormat, va_list args) {
    if (!pszFormat)
        return false;
    size_t nTaille = 256;
    while (nTaille <= (1u << 20)) {
        sOut.resize(nTaille);
        va_list copie;
        va_copy(copie, args);
        int n = std::vswprintf(sOut.data(), nTaille, pszFormat, copie);
        va_end(copie);
        if (n >= 0 && static_cast<size_t>(n) < nTaille) {
            sOut.resize(static_cast<size_t>(n));
            return true;
        }
        nTaille *= 4;
    }
    sOut.clear();
    return false;
}

std::string s_sPrintfAnsi(const char* pszFormat, ...) {
    va_list args, copie;
    va_start(args, pszFormat);
    va_copy(copie, args);
    int n = std::vsnprintf(nullptr, 0, pszFormat, copie);
    va_end(copie);
    std::string s;
    if (n > 0) {
        s.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(s.data(), s.size(), pszFormat, args);
        s.resize(static_cast<size_t>(n));
    }
    va_end(args);
    return s;
}

std::string s_sUtf8(const wchar_t* psz) {
    return KVUtf8::VersUtf8(psz ? psz : L"");
}

// strerror_r has two forms, by the C library's mood; both end here.
[[maybe_unused]] const char* s_pszTexteErreur(int nRes, const char* pszBuffer) {
    return nRes == 0 ? pszBuffer : "";
}
[[maybe_unused]] const char* s_pszTexteErreur(const char* psz, const char*) {
    return psz ? psz : "";
}

} // namespace

// ---- CKVUnknown

unsigned long CKVUnknown::dwRelease() {
    int32_t n = --m_nRef;
    if (n == 0)
        delete this;
    return n > 0 ? static_cast<unsigned long>(n) : 0;
}

// ---- CXError

void (*CXError::ms_pfnNoMemory)(CXError*) = nullptr;

CXError::CXError(const _stMyModuleInfo* pstModInfo) {
    InitModInfo(pstModInfo);
}

CXError::~CXError() {
    RAZ();
}

wchar_t* CXError::__vpszAllocString(wchar_t** ppsz, const wchar_t* psz) {
    if (!psz)
        psz = L"";
    size_t n = std::wcslen(psz);
    auto* pszNouveau = static_cast<wchar_t*>(std::malloc((n + 1) * sizeof(wchar_t)));
    if (pszNouveau)
        std::wmemcpy(pszNouveau, psz, n + 1);
    *ppsz = pszNouveau;
    return pszNouveau;
}

wchar_t* CXError::__vpszReallocString(wchar_t** ppsz, const wchar_t* psz) {
    wchar_t* pszNouveau = nullptr;
    if (!__vpszAllocString(&pszNouveau, psz))
        return nullptr;
    __vDeleteString(ppsz);
    *ppsz = pszNouveau;
    return pszNouveau;
}

wchar_t* CXError::__vpszReallocString(wchar_t** ppsz, unsigned long nLongueur) {
    size_t nAvant = *ppsz ? std::wcslen(*ppsz) : 0;
    auto* pszNouveau = static_cast<wchar_t*>(
        std::realloc(*ppsz, (static_cast<size_t>(nLongueur) + 1) * sizeof(wchar_t)));
    if (!pszNouveau)
        return nullptr;
    pszNouveau[nAvant < nLongueur ? nAvant : nLongueur] = L'\0';
    *ppsz = pszNouveau;
    return pszNouveau;
}

wchar_t* CXError::__vpszConcatString(wchar_t** ppsz, const wchar_t* psz) {
    if (!*ppsz)
        return __vpszAllocString(ppsz, psz);
    if (!psz || !*psz)
        return *ppsz;
    size_t nAvant = std::wcslen(*ppsz), nAjout = std::wcslen(psz);
    if (!__vpszReallocString(ppsz, static_cast<unsigned long>(nAvant + nAjout)))
        return nullptr;
    std::wmemcpy(*ppsz + nAvant, psz, nAjout + 1);
    return *ppsz;
}

void CXError::__vDeleteString(wchar_t** ppsz) {
    std::free(*ppsz);
    *ppsz = nullptr;
}

void CXError::__AddSubError(const CXError* pclSource, int bLight, int bSansMessage) {
    if (!pclSource)
        return;
    if (!m_ptabSubError) {
        m_ptabSubError = new (std::nothrow) CTTableau<CXError*>;
        if (!m_ptabSubError)
            return SetErrorNoMemory();
    }
    auto* pclCause = new (std::nothrow) CXError(pclSource->m_pstModInfo);
    if (!pclCause)
        return SetErrorNoMemory();
    if (bLight) {
        pclCause->_CopieBase(pclSource, !bSansMessage);
    } else {
        pclCause->vCopy(pclSource);
        if (bSansMessage)
            pclCause->__vDeleteString(&pclCause->m_pszUserMessage);
    }
    if (!m_ptabSubError->bAjoute(pclCause)) {
        pclCause->dwRelease();
        SetErrorNoMemory();
    }
}

void CXError::__DeleteAllSubError() {
    s_LibereCauses(std::exchange(m_ptabSubError, nullptr));
}

void CXError::s_LibereCauses(CTTableau<CXError*>* ptabCause) {
    if (!ptabCause)
        return;
    for (CXError* pclCause : *ptabCause)
        pclCause->dwRelease();
    delete ptabCause;
}

void CXError::vCopy(const CXError* pclSource) {
    if (pclSource == this)
        return;
    // The source may be one of our own causes: they are let go only once it has been read.
    CTTableau<CXError*>* ptabAncien = std::exchange(m_ptabSubError, nullptr);
    RAZ();
    if (pclSource)
        _CopieTout(pclSource);
    s_LibereCauses(ptabAncien);
}

void CXError::_CopieTout(const CXError* pclSource) {
    _CopieBase(pclSource, true);
    for (unsigned nId : pclSource->m_tabMessageId)
        m_tabMessageId.bAjoute(nId);
    for (const _stERRORINFO& st : pclSource->m_tabInfo)
        AddInfo(st.eType, st.pszValeur);
    m_nSystemErrorCode = pclSource->m_nSystemErrorCode;
    if (pclSource->m_pszSystemMessage)
        __vpszReallocString(&m_pszSystemMessage, pclSource->m_pszSystemMessage);
    if (pclSource->m_pszSystemFunction)
        __vpszReallocString(&m_pszSystemFunction, pclSource->m_pszSystemFunction);
    SetContexteVM(pclSource->m_pszLibelleVM, pclSource->m_pszObjetVM, pclSource->m_nLigneVM,
                  pclSource->m_nThreadVM);
    for (int i = 0; i < pclSource->nGetNbSubError(); ++i)
        __AddSubError(pclSource->pclGetSubError(i), 0, 0);
}

void CXError::_CopieBase(const CXError* pclSource, bool bMessageUtilisateur) {
    m_eErrorLevel = pclSource->m_eErrorLevel;
    m_nUserErrorCode = pclSource->m_nUserErrorCode;
    m_pstModInfo = pclSource->m_pstModInfo;
    m_pszModuleName = pclSource->m_pszModuleName;
    m_pszModuleVersion = pclSource->m_pszModuleVersion;
    m_nSyntaxe = pclSource->m_nSyntaxe;
    m_dwDetail = pclSource->m_dwDetail;
    if (bMessageUtilisateur && pclSource->m_pszUserMessage)
        __vpszReallocString(&m_pszUserMessage, pclSource->m_pszUserMessage);
    if (pclSource->m_pszDebugMessage)
        __vpszReallocString(&m_pszDebugMessage, pclSource->m_pszDebugMessage);
}

void CXError::InitModInfo(const _stMyModuleInfo* pstModInfo) {
    if (!pstModInfo)
        return;
    m_pstModInfo = pstModInfo;
    m_pszModuleName = pstModInfo->pszNomModule;
    m_pszModuleVersion = pstModInfo->pszVersionModule;
}

void CXError::_Joint(wchar_t** ppszMessage, const wchar_t* pszTexte, bool bDevant) {
    if (!pszTexte || !*pszTexte)
        return;
    bool bOk;
    if (!*ppszMessage || !**ppszMessage) {
        bOk = __vpszReallocString(ppszMessage, pszTexte) != nullptr;
    } else if (!bDevant) {
        bOk = __vpszConcatString(ppszMessage, kszCRLF) && __vpszConcatString(ppszMessage, pszTexte);
    } else {
        wchar_t* pszNouveau = nullptr;
        bOk = __vpszAllocString(&pszNouveau, pszTexte) &&
              __vpszConcatString(&pszNouveau, kszCRLF) &&
              __vpszConcatString(&pszNouveau, *ppszMessage);
        if (bOk) {
            __vDeleteString(ppszMessage);
            *ppszMessage = pszNouveau;
        } else if (pszNouveau) {
            __vDeleteString(&pszNouveau);
        }
    }
    if (!bOk)
        SetErrorNoMemory();
}

void CXError::_AjouteRessource(const _stMyModuleInfo* pstModInfo, unsigned nRessource, va_list args,
                               bool bUtilisateur, bool bDevant) {
    if (bUtilisateur) {
        InitModInfo(pstModInfo);
        m_tabMessageId.bAjoute(nRessource);
    }
    CTString clTexte;
    va_list copie;
    va_copy(copie, args);
    errno = 0;
    int bCharge = DLLRES_bFormatMessageList(pstModInfo, nRessource, &clTexte, copie);
    int nErrno = errno;
    va_end(copie);
    if (!bCharge) {
        AddDebugMessagePrintf(L"##(CXError)-Ressource <%u> non chargée##", nRessource);
    } else if (clTexte.bEstVide()) {
        AddDebugMessagePrintf(L"##(CXError)-Ressource <%u> vide. LastError = <%u>##", nRessource,
                              static_cast<unsigned>(nErrno));
    } else {
        _Joint(bUtilisateur ? &m_pszUserMessage : &m_pszDebugMessage, clTexte.pszGet(), bDevant);
    }
}

void CXError::SetUserError(const _stMyModuleInfo* pstModInfo, unsigned nCode, ...)
    KV_VARIADIQUE(SetUserErrorList, nCode, pstModInfo, nCode)

        void CXError::SetUserErrorList(const _stMyModuleInfo* pstModInfo, unsigned nCode,
                                       va_list args) {
    RAZ();
    ChangeUserErrorList(pstModInfo, nCode, args);
}

void CXError::ChangeUserError(const _stMyModuleInfo* pstModInfo, unsigned nCode, ...)
    KV_VARIADIQUE(ChangeUserErrorList, nCode, pstModInfo, nCode)

        void CXError::ChangeUserErrorList(const _stMyModuleInfo* pstModInfo, unsigned nCode,
                                          va_list args) {
    InitModInfo(pstModInfo);
    const STErrorDef* pstLigne = s_pstChercheCode(pstModInfo, nCode);
    if (!pstLigne) {
        m_eErrorLevel = ELEVEL_GRAVE;
        AddDebugMessagePrintf(
            L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <%u>##",
            nCode);
        return;
    }
    m_nUserErrorCode = nCode;
    _AjouteRessource(pstModInfo, pstLigne->nRessource, args, true, true);
    m_dwDetail = pstLigne->dwDetail;
    m_eErrorLevel = static_cast<eERRORLEVEL>(pstLigne->nSeverite);
}

void CXError::SetUserErrorMessage(const _stMyModuleInfo* pstModInfo, unsigned nCode,
                                  const wchar_t* pszTexte) {
    RAZ();
    InitModInfo(pstModInfo);
    m_nUserErrorCode = nCode;
    const STErrorDef* pstLigne = s_pstChercheCode(pstModInfo, nCode);
    m_eErrorLevel = pstLigne ? static_cast<eERRORLEVEL>(pstLigne->nSeverite) : ELEVEL_GRAVE;
    if (pstLigne)
        m_dwDetail = pstLigne->dwDetail;
    _Joint(&m_pszUserMessage, pszTexte, false);
}

void CXError::AddUserMessage(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...)
    KV_VARIADIQUE(AddUserMessageList, nRessource, pstModInfo, nRessource)

        void CXError::AddUserMessageList(const _stMyModuleInfo* pstModInfo, unsigned nRessource,
                                         va_list args) {
    _AjouteRessource(pstModInfo, nRessource, args, true, false);
}

void CXError::AddUserMessageFirst(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...)
    KV_VARIADIQUE(AddUserMessageFirstList, nRessource, pstModInfo, nRessource)

        void CXError::AddUserMessageFirstList(const _stMyModuleInfo* pstModInfo,
                                              unsigned nRessource, va_list args) {
    _AjouteRessource(pstModInfo, nRessource, args, true, true);
}

void CXError::AddUserMessage(const wchar_t* pszTexte) {
    if (!pszTexte)
        return;
    CTString clTexte;
    DLLRES_dwFormatMessage(pszTexte, &clTexte, nullptr);
    _Joint(&m_pszUserMessage, clTexte.pszGet(), false);
}

void CXError::AddUserMessageNoFormat(const wchar_t* pszTexte) {
    _Joint(&m_pszUserMessage, pszTexte, false);
}

void CXError::AddDebugMessagePrintf(const wchar_t* pszFormat, ...)
    KV_VARIADIQUE(AddDebugMessagePrintfList, pszFormat, pszFormat)

        void CXError::AddDebugMessagePrintfList(const wchar_t* pszFormat, va_list args) {
    std::wstring s;
    try {
        if (s_bVPrintf(s, pszFormat, args))
            _Joint(&m_pszDebugMessage, s.c_str(), false);
    } catch (const std::bad_alloc&) {
        SetErrorNoMemory();
    }
}

void CXError::AddDebugMessageNoFormat(const wchar_t* pszTexte) {
    _Joint(&m_pszDebugMessage, pszTexte, false);
}

void CXError::AddDebugMessage(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...)
    KV_VARIADIQUE(AddDebugMessageList, nRessource, pstModInfo, nRessource)

        void CXError::AddDebugMessageList(const _stMyModuleInfo* pstModInfo, unsigned nRessource,
                                          va_list args) {
    _AjouteRessource(pstModInfo, nRessource, args, false, false);
}

void CXError::AddDebugMessageFirst(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...)
    KV_VARIADIQUE(AddDebugMessageFirstList, nRessource, pstModInfo, nRessource)

        void CXError::AddDebugMessageFirstList(const _stMyModuleInfo* pstModInfo,
                                               unsigned nRessource, va_list args) {
    _AjouteRessource(pstModInfo, nRessource, args, false, true);
}

void CXError::SetSystemError(unsigned nCode, const wchar_t* pszFonction) {
    m_nSystemErrorCode = nCode;
    if (pszFonction)
        __vpszReallocString(&m_pszSystemFunction, pszFonction);
    else
        __vDeleteString(&m_pszSystemFunction);
    char szBuffer[256] = {};
    const char* psz =
        s_pszTexteErreur(strerror_r(static_cast<int>(nCode), szBuffer, sizeof(szBuffer)), szBuffer);
    try {
        __vpszReallocString(&m_pszSystemMessage, KVUtf8::VersWide(psz).c_str());
    } catch (const std::bad_alloc&) {
        SetErrorNoMemory();
    }
}

void CXError::SetSystemErrorMessage(const wchar_t* pszTexte) {
    if (pszTexte)
        __vpszReallocString(&m_pszSystemMessage, pszTexte);
    else
        __vDeleteString(&m_pszSystemMessage);
}

void CXError::SetSystemErrorParam(unsigned nCode, const wchar_t* pszFonction,
                                  const wchar_t* pszParam) {
    SetSystemError(nCode, pszFonction);
    if (!pszParam)
        return;
    if (!__vpszConcatString(&m_pszSystemMessage, L" <") ||
        !__vpszConcatString(&m_pszSystemMessage, pszParam) ||
        !__vpszConcatString(&m_pszSystemMessage, L">"))
        SetErrorNoMemory();
}

void CXError::SetSystemErrorMessagePrintf(const wchar_t* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    try {
        std::wstring s;
        if (s_bVPrintf(s, pszFormat, args))
            __vpszReallocString(&m_pszSystemMessage, s.c_str());
    } catch (const std::bad_alloc&) {
        SetErrorNoMemory();
    }
    va_end(args);
}

void CXError::SetSystemErrorForGetHostBy(int nCode, const wchar_t* pszFonction) {
    m_nSystemErrorCode = static_cast<unsigned>(nCode);
    if (pszFonction)
        __vpszReallocString(&m_pszSystemFunction, pszFonction);
    else
        __vDeleteString(&m_pszSystemFunction);
    const char* psz = hstrerror(nCode);
    try {
        __vpszReallocString(&m_pszSystemMessage, KVUtf8::VersWide(psz ? psz : "").c_str());
    } catch (const std::bad_alloc&) {
        SetErrorNoMemory();
    }
}

void CXError::AddInfo(eERRORINFOTYPE eType, const void* pValeur) {
    if (eType < 0 || eType >= EIT_NB)
        return;
    const auto* pszValeur = static_cast<const wchar_t*>(pValeur);
    int i = nNumInfo(eType);
    if (i >= 0) {
        if (!__vpszReallocString(&m_tabInfo[static_cast<size_t>(i)].pszValeur, pszValeur))
            SetErrorNoMemory();
        return;
    }
    _stERRORINFO st{eType, nullptr};
    if (!__vpszAllocString(&st.pszValeur, pszValeur))
        return SetErrorNoMemory();
    if (!m_tabInfo.bAjoute(st)) {
        __vDeleteString(&st.pszValeur);
        SetErrorNoMemory();
    }
}

void CXError::DeleteInfo(eERRORINFOTYPE eType) {
    int i = nNumInfo(eType);
    if (i < 0)
        return;
    __vDeleteString(&m_tabInfo[static_cast<size_t>(i)].pszValeur);
    m_tabInfo.bSupprimeA(static_cast<size_t>(i));
}

bool CXError::bGetInfo(eERRORINFOTYPE eType, CTString* pclOut) const {
    int i = nNumInfo(eType);
    if (pclOut)
        *pclOut = i >= 0 ? m_tabInfo[static_cast<size_t>(i)].pszValeur : L"";
    return i >= 0;
}

const wchar_t* CXError::GetInfo(eERRORINFOTYPE eType) const {
    int i = nNumInfo(eType);
    return i >= 0 ? m_tabInfo[static_cast<size_t>(i)].pszValeur : L"";
}

int CXError::nNumInfo(eERRORINFOTYPE eType) const {
    for (size_t i = 0; i < m_tabInfo.nGetNbElement(); ++i)
        if (m_tabInfo[i].eType == eType)
            return static_cast<int>(i);
    return -1;
}

void CXError::DumpInfo(CTString* pclOut) const {
    if (!pclOut)
        return;
    pclOut->Vide();
    try {
        _Dump(*pclOut, L"");
    } catch (const std::bad_alloc&) {
        pclOut->Vide();
    }
}

void CXError::_Dump(CTString& clOut, const wchar_t* pszChemin) const {
    std::string s =
        s_sPrintfAnsi("IE%s=%u.%u\r\nModule=<%s>\r\nVersion=<%s>", s_sUtf8(pszChemin).c_str(),
                      m_nUserErrorCode, static_cast<unsigned>(m_eErrorLevel),
                      s_sUtf8(m_pszModuleName).c_str(), s_sUtf8(m_pszModuleVersion).c_str());
    for (const _stERRORINFO& st : m_tabInfo) {
        s += "\r\n";
        s += s_sPrintfAnsi(kapszFormatInfo[st.eType], s_sUtf8(st.pszValeur).c_str());
    }
    clOut += KVUtf8::VersWide(s);
    for (int i = 0; i < nGetNbSubError(); ++i) {
        std::wstring sChemin = pszChemin;
        if (!sChemin.empty())
            sChemin += L'.';
        sChemin += std::to_wstring(i + 1);
        clOut += kszCRLF;
        pclGetSubError(i)->_Dump(clOut, sChemin.c_str());
    }
}

CXError* CXError::pclGetSubError(int i) const {
    if (i < 0 || i >= nGetNbSubError())
        return nullptr;
    return (*m_ptabSubError)[static_cast<size_t>(i)];
}

int CXError::nGetNbSubError() const {
    return m_ptabSubError ? static_cast<int>(m_ptabSubError->nGetNbElement()) : 0;
}

void CXError::LightCopy(CXError* pclSource) {
    if (pclSource == this)
        return;
    CTTableau<CXError*>* ptabAncien = std::exchange(m_ptabSubError, nullptr);
    RAZ();
    if (pclSource)
        _CopieBase(pclSource, true);
    s_LibereCauses(ptabAncien);
}

void CXError::RAZ() {
    m_eErrorLevel = ELEVEL_PROPRE;
    m_nUserErrorCode = 0;
    m_nSyntaxe = 0;
    m_dwDetail = 0;
    __vDeleteString(&m_pszUserMessage);
    __vDeleteString(&m_pszDebugMessage);
    __vDeleteString(&m_pszSystemMessage);
    __vDeleteString(&m_pszSystemFunction);
    __vDeleteString(&m_pszLibelleVM);
    __vDeleteString(&m_pszObjetVM);
    m_nSystemErrorCode = 0;
    m_nLigneVM = 0;
    m_nThreadVM = 0;
    m_tabMessageId.Vide();
    for (_stERRORINFO& st : m_tabInfo)
        __vDeleteString(&st.pszValeur);
    m_tabInfo.Vide();
    __DeleteAllSubError();
}

void CXError::SetContexteVM(const wchar_t* pszLibelle, const wchar_t* pszObjet, uint16_t nLigne,
                            uint16_t nThread) {
    if (pszLibelle)
        __vpszReallocString(&m_pszLibelleVM, pszLibelle);
    else
        __vDeleteString(&m_pszLibelleVM);
    if (pszObjet)
        __vpszReallocString(&m_pszObjetVM, pszObjet);
    else
        __vDeleteString(&m_pszObjetVM);
    m_nLigneVM = nLigne;
    m_nThreadVM = nThread;
}

void CXError::SetErrorNoMemory() {
    m_nUserErrorCode = 100;
    m_eErrorLevel = ELEVEL_GRAVE;
    __vpszReallocString(&m_pszUserMessage, L"<No Memory>");
    if (ms_pfnNoMemory)
        ms_pfnNoMemory(this);
}

unsigned CXError::nGetRessourceIdFromUserErrorCode(const _stMyModuleInfo* pstModInfo,
                                                   unsigned nCode) {
    const STErrorDef* pstLigne = s_pstChercheCode(pstModInfo, nCode);
    return pstLigne ? pstLigne->nRessource : 0;
}
