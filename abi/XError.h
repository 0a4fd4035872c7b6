// CXError: the error object that every failing operation writes into. A connector sets a
// numeric user error; the text comes from the message resources of the module (Resources.h).
// Level 1 means clean; any other level means that an error stands.
//
// The strings of an error are plain heap wide strings made and freed through the virtual string
// operations, so that a subclass bound to one module allocates and frees with that module's
// allocator. A subclass that binds other allocators must call RAZ() in its own destructor: by
// the time the base destructor runs, the calls no longer reach the subclass.
#pragma once
#include "Arrays.h"
#include "TString.h"

#include <atomic>
#include <cstdarg>
#include <cstdint>

struct _stMyModuleInfo;

// The root of the component's counted objects. The count starts at the value the class gives,
// 1 unless told otherwise: the creator owns the first reference. It changes atomically.
class CKVUnknown {
public:
    CKVUnknown(const CKVUnknown&) = delete;
    CKVUnknown& operator=(const CKVUnknown&) = delete;
    virtual ~CKVUnknown() = default;
    // Drops one reference and deletes the object at zero; the count left.
    virtual unsigned long dwRelease();
    unsigned long dwAddRef() { return static_cast<unsigned long>(++m_nRef); }
    long nGetRef() const { return m_nRef.load(std::memory_order_relaxed); }

protected:
    explicit CKVUnknown(long nRefInitial = 1) : m_nRef(nRefInitial) {}

private:
    std::atomic<int32_t> m_nRef;
};

enum eERRORLEVEL : int {
    ELEVEL_PROPRE = 1,
    ELEVEL_ERREUR = 2,
    ELEVEL_GRAVE = 3,
};

// Kinds of the information rows; EIT_NB is their count.
enum eERRORINFOTYPE : int {
    EIT_HELPFILE,
    EIT_USERNAME,
    EIT_DSTFILE,
    EIT_SRCFILE,
    EIT_PATHKVD,
    EIT_LOGICALTABLENAME,
    EIT_ITEMNAME,
    EIT_PATHFIC,
    EIT_PATHNDX,
    EIT_PATHMMO,
    EIT_LINKNAME,
    EIT_RECNUM,
    EIT_HLOCKTIME,
    EIT_BASEMESSAGE,
    EIT_NATIVEMESSAGE,
    EIT_ADOMESSAGE,
    EIT_BASECODE,
    EIT_NATIVECODE,
    EIT_ADOCODE,
    EIT_ODBCCODE,
    EIT_ODBCDESCRIPTION,
    EIT_DATAACCESS,
    EIT_INFOCLIENT,
    EIT_INFOSERVEUR,
    EIT_PILEKL,
    EIT_PILEC,
    EIT_COMPOSANT,
    EIT_DATEHEURE,
    EIT_LOCKINFO,
    EIT_CORRIGE_ETAT,
    EIT_INFOCS,
    EIT_SERVEURCS,
    EIT_XINFO,
    EIT_TYPE_KVFILE,
    EIT_IDCODE,
    EIT_HCNXID,
    EIT_POSITION_ERREUR,
    EIT_EXCEPTION_CLASS_NAME,
    EIT_EXCEPTIONDOTNET,
    EIT_EXCEPTIONJAVA,
    EIT_CODEHTTP,
    EIT_NB
};

// One information row: its kind and its value, a heap wide string of the error.
struct _stERRORINFO {
    eERRORINFOTYPE eType;
    wchar_t* pszValeur;
};

class CXError : public CKVUnknown {
public:
    // Called by SetErrorNoMemory when set; the component hands the error to its global factory.
    static void (*ms_pfnNoMemory)(CXError* pclErreur);

    explicit CXError(const _stMyModuleInfo* pstModInfo = nullptr);
    ~CXError() override;

    // The string operations: each returns the new string, null when memory ran out (the old
    // string then kept, but for __vpszAllocString which starts from none).
    virtual wchar_t* __vpszAllocString(wchar_t** ppsz, const wchar_t* psz);
    virtual wchar_t* __vpszReallocString(wchar_t** ppsz, const wchar_t* psz);
    // Room for nLongueur characters and a terminator, the text kept as far as it fits.
    virtual wchar_t* __vpszReallocString(wchar_t** ppsz, unsigned long nLongueur);
    virtual wchar_t* __vpszConcatString(wchar_t** ppsz, const wchar_t* psz);
    virtual void __vDeleteString(wchar_t** ppsz);
    // Pushes a copy of `pclSource` on the cause stack: a light copy when bLight, without the
    // user message when bSansMessage.
    virtual void __AddSubError(const CXError* pclSource, int bLight, int bSansMessage);
    virtual void __DeleteAllSubError();
    virtual void vCopy(const CXError* pclSource);

    // ---- user error
    void SetUserError(const _stMyModuleInfo* pstModInfo, unsigned nCode, ...);
    void SetUserErrorList(const _stMyModuleInfo* pstModInfo, unsigned nCode, va_list args);
    void ChangeUserError(const _stMyModuleInfo* pstModInfo, unsigned nCode, ...);
    void ChangeUserErrorList(const _stMyModuleInfo* pstModInfo, unsigned nCode, va_list args);
    // The code with a ready message; the level from the code's row, 3 when it has none.
    void SetUserErrorMessage(const _stMyModuleInfo* pstModInfo, unsigned nCode,
                             const wchar_t* pszTexte);

    // ---- user message: resource texts are formatted with the variable arguments and joined
    // to the existing message with CR LF; none of these changes the level.
    void AddUserMessage(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...);
    void AddUserMessageList(const _stMyModuleInfo* pstModInfo, unsigned nRessource, va_list args);
    void AddUserMessageFirst(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...);
    void AddUserMessageFirstList(const _stMyModuleInfo* pstModInfo, unsigned nRessource,
                                 va_list args);
    // A text in the message format, with no argument: "%%" becomes "%".
    void AddUserMessage(const wchar_t* pszTexte);
    // A text taken as it stands.
    void AddUserMessageNoFormat(const wchar_t* pszTexte);

    // ---- debug message, joined the same way. The Printf forms go through vswprintf, where a
    // wide text is %ls.
    void AddDebugMessagePrintf(const wchar_t* pszFormat, ...);
    void AddDebugMessagePrintfList(const wchar_t* pszFormat, va_list args);
    void AddDebugMessageNoFormat(const wchar_t* pszTexte);
    void AddDebugMessage(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...);
    void AddDebugMessageList(const _stMyModuleInfo* pstModInfo, unsigned nRessource, va_list args);
    void AddDebugMessageFirst(const _stMyModuleInfo* pstModInfo, unsigned nRessource, ...);
    void AddDebugMessageFirstList(const _stMyModuleInfo* pstModInfo, unsigned nRessource,
                                  va_list args);

    // ---- system error: the details that go with a user error; the level is not changed.
    // The message is the C library's text of the code.
    void SetSystemError(unsigned nCode, const wchar_t* pszFonction);
    void SetSystemErrorMessage(const wchar_t* pszTexte);
    // As SetSystemError, the parameter (a file name...) added to the message in brackets.
    void SetSystemErrorParam(unsigned nCode, const wchar_t* pszFonction, const wchar_t* pszParam);
    void SetSystemErrorMessagePrintf(const wchar_t* pszFormat, ...);
    // A resolver failure (h_errno), with the resolver's text.
    void SetSystemErrorForGetHostBy(int nCode, const wchar_t* pszFonction);

    // ---- information rows: at most one of a kind; a new value replaces the old one
    void AddInfo(eERRORINFOTYPE eType, const void* pValeur); // pValeur: a wide text
    void DeleteInfo(eERRORINFOTYPE eType);
    bool bGetInfo(eERRORINFOTYPE eType, CTString* pclOut) const;
    // The value, "" when there is no row of that kind.
    const wchar_t* GetInfo(eERRORINFOTYPE eType) const;
    bool bHasInfo(eERRORINFOTYPE eType) const { return nNumInfo(eType) >= 0; }
    // The position of the row of that kind, -1 when none.
    int nNumInfo(eERRORINFOTYPE eType) const;
    int nGetNbInfo() const { return static_cast<int>(m_tabInfo.nGetNbElement()); }
    // "IE<path>=<user code>.<level>", module and version, the rows, then each cause with its
    // path: "1", "2"... under the error, "1.1" under the first cause.
    void DumpInfo(CTString* pclOut) const;

    // ---- causes
    void AddSubError(const CXError* pclSource) { __AddSubError(pclSource, 0, 0); }
    void AddSubErrorLight(const CXError* pclSource) { __AddSubError(pclSource, 1, 0); }
    void AddSubErrorNoUserMessage(const CXError* pclSource) { __AddSubError(pclSource, 0, 1); }
    void AddSubErrorLightNoUserMessage(const CXError* pclSource) { __AddSubError(pclSource, 1, 1); }
    void DeleteAllSubError() { __DeleteAllSubError(); }
    // Cause i, from 0 in the order pushed; null out of range.
    CXError* pclGetSubError(int i) const;
    int nGetNbSubError() const;

    // ---- whole state
    // Everything, causes included, deep.
    void Copy(const CXError* pclSource) { vCopy(pclSource); }
    // Level, code, module, syntax, detail and the user and debug messages; nothing else.
    void LightCopy(CXError* pclSource);
    void RAZ();

    void SetErrorLevel(eERRORLEVEL eNiveau) { m_eErrorLevel = eNiveau; }
    eERRORLEVEL nGetErrorLevel() const { return m_eErrorLevel; }
    bool bEstPropre() const { return m_eErrorLevel == ELEVEL_PROPRE; }
    unsigned nGetUserErrorCode() const { return m_nUserErrorCode; }
    const wchar_t* pszGetUserMessage() const { return m_pszUserMessage ? m_pszUserMessage : L""; }
    const wchar_t* pszGetDebugMessage() const {
        return m_pszDebugMessage ? m_pszDebugMessage : L"";
    }
    const wchar_t* pszGetSystemMessage() const {
        return m_pszSystemMessage ? m_pszSystemMessage : L"";
    }
    unsigned nGetSystemErrorCode() const { return m_nSystemErrorCode; }
    const wchar_t* pszGetSystemFunction() const {
        return m_pszSystemFunction ? m_pszSystemFunction : L"";
    }
    const _stMyModuleInfo* pstGetModuleInfo() const { return m_pstModInfo; }
    const wchar_t* pszGetModuleName() const { return m_pszModuleName ? m_pszModuleName : L""; }
    const wchar_t* pszGetModuleVersion() const {
        return m_pszModuleVersion ? m_pszModuleVersion : L"";
    }
    uint32_t dwGetDetail() const { return m_dwDetail; }
    void SetSyntaxe(uint8_t nSyntaxe) { m_nSyntaxe = nSyntaxe; }
    uint8_t nGetSyntaxe() const { return m_nSyntaxe; }
    const CTTableau<unsigned>& tabGetMessageId() const { return m_tabMessageId; }

    // Where the running script code stood when the error arose.
    void SetContexteVM(const wchar_t* pszLibelle, const wchar_t* pszObjet, uint16_t nLigne,
                       uint16_t nThread);
    const wchar_t* pszGetLibelleVM() const { return m_pszLibelleVM ? m_pszLibelleVM : L""; }
    const wchar_t* pszGetObjetVM() const { return m_pszObjetVM ? m_pszObjetVM : L""; }
    uint16_t nGetLigneVM() const { return m_nLigneVM; }
    uint16_t nGetThreadVM() const { return m_nThreadVM; }

    // Level 3, code 100 and "<No Memory>", then the hook.
    void SetErrorNoMemory();
    // The resource number of the row of that code, 0 when none.
    static unsigned nGetRessourceIdFromUserErrorCode(const _stMyModuleInfo* pstModInfo,
                                                     unsigned nCode);

protected:
    void InitModInfo(const _stMyModuleInfo* pstModInfo);
    // Appends (or puts first) a text to one of the messages, CR LF between.
    void _Joint(wchar_t** ppszMessage, const wchar_t* pszTexte, bool bDevant);
    // The resource text, formatted, joined to the user or the debug message.
    void _AjouteRessource(const _stMyModuleInfo* pstModInfo, unsigned nRessource, va_list args,
                          bool bUtilisateur, bool bDevant);
    void _CopieBase(const CXError* pclSource, bool bMessageUtilisateur);
    void _CopieTout(const CXError* pclSource);
    static void s_LibereCauses(CTTableau<CXError*>* ptabCause);
    void _Dump(CTString& clOut, const wchar_t* pszChemin) const;

private:
    eERRORLEVEL m_eErrorLevel = ELEVEL_PROPRE;
    unsigned m_nUserErrorCode = 0;
    const _stMyModuleInfo* m_pstModInfo = nullptr;
    wchar_t* m_pszUserMessage = nullptr;
    wchar_t* m_pszDebugMessage = nullptr;
    wchar_t* m_pszSystemMessage = nullptr;
    // Names from the module info, which outlives every error of its module.
    const wchar_t* m_pszModuleName = nullptr;
    const wchar_t* m_pszModuleVersion = nullptr;
    uint8_t m_nSyntaxe = 0;
    uint32_t m_dwDetail = 0;
    CTTableau<unsigned> m_tabMessageId;
    CTTableau<_stERRORINFO> m_tabInfo;
    unsigned m_nSystemErrorCode = 0;
    wchar_t* m_pszSystemFunction = nullptr;
    wchar_t* m_pszLibelleVM = nullptr;
    wchar_t* m_pszObjetVM = nullptr;
    uint16_t m_nLigneVM = 0;
    uint16_t m_nThreadVM = 0;
    CTTableau<CXError*>* m_ptabSubError = nullptr;
};
