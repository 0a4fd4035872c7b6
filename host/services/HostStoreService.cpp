#include "HostStoreService.h"

#include "HostBarrier.h"
#include "DataServiceErrors.h"
#include "Utf8.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int knBusyTimeoutMs = 5000;

// Makes every missing directory of the path, mode 0700; false with errno set when one cannot
// be made.
bool s_bMakeDirectories(const std::string& sDirectory) {
    if (sDirectory.empty())
        return true;
    struct stat st {};
    if (stat(sDirectory.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode))
            return true;
        errno = ENOTDIR;
        return false;
    }
    size_t nSlash = sDirectory.find_last_of('/');
    if (nSlash != std::string::npos && nSlash > 0 &&
        !s_bMakeDirectories(sDirectory.substr(0, nSlash)))
        return false;
    return mkdir(sDirectory.c_str(), 0700) == 0 || errno == EEXIST;
}

std::wstring s_sSystemError(int nErrno) {
    return KVUtf8::VersWide(std::strerror(nErrno));
}

// Ends a statement's run and frees its bindings whatever happened.
class CStatementReset {
public:
    explicit CStatementReset(sqlite3_stmt* pStatement) : m_pStatement(pStatement) {}
    ~CStatementReset() {
        sqlite3_reset(m_pStatement);
        sqlite3_clear_bindings(m_pStatement);
    }
    CStatementReset(const CStatementReset&) = delete;
    CStatementReset& operator=(const CStatementReset&) = delete;

private:
    sqlite3_stmt* m_pStatement;
};

} // namespace

CHostStoreService::CHostStoreService(std::string sPath) : m_sPath(std::move(sPath)) {
    if (m_sPath.empty())
        m_sPath = s_sDefaultPath([](const char* pszName) { return std::getenv(pszName); });
}

CHostStoreService::~CHostStoreService() {
    Close();
}

std::string
CHostStoreService::s_sDefaultPath(const std::function<const char*(const char*)>& fnGet) {
    auto value = [&](const char* pszName) {
        const char* psz = fnGet(pszName);
        return std::string(psz ? psz : "");
    };
    std::string s = value("KVGGL_STORE");
    if (!s.empty())
        return s;
    // XDG directories are absolute paths; anything else is to be ignored.
    s = value("XDG_DATA_HOME");
    if (!s.empty() && s[0] == '/')
        return s + "/kvggl/store.db";
    s = value("HOME");
    if (!s.empty())
        return s + "/.local/share/kvggl/store.db";
    return {};
}

std::wstring CHostStoreService::sLastError() const {
    return m_pDatabase ? KVUtf8::VersWide(sqlite3_errmsg(m_pDatabase)) : std::wstring();
}

void CHostStoreService::Close() {
    sqlite3_finalize(m_pWrite);
    sqlite3_finalize(m_pRead);
    m_pWrite = m_pRead = nullptr;
    if (m_pDatabase)
        sqlite3_close(m_pDatabase);
    m_pDatabase = nullptr;
}

bool CHostStoreService::bOpen(CXError* pclErreur) {
    if (m_pDatabase)
        return true;
    std::wstring sPath = KVUtf8::VersWide(m_sPath);
    if (m_sPath.empty()) {
        KVDataService::Fail(pclErreur, DATASERVICE_STORE_OPEN,
                            L"The store has no place: set KVGGL_STORE, XDG_DATA_HOME or HOME.");
        return false;
    }
    size_t nSlash = m_sPath.find_last_of('/');
    if (nSlash != std::string::npos && nSlash > 0 &&
        !s_bMakeDirectories(m_sPath.substr(0, nSlash))) {
        KVDataService::Fail(pclErreur, DATASERVICE_STORE_OPEN,
                            L"The directory of the store \"" + sPath + L"\" cannot be created: " +
                                s_sSystemError(errno) + L".");
        return false;
    }
    // Made here rather than by the library, so that it is private from its first byte; the
    // journal files the library makes beside it take the same mode. Never through a symbolic
    // link, whose target would take that mode; a store the user may only read is opened so.
    bool bReadOnly = false;
    int nFile = open(m_sPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (nFile < 0 && (errno == EACCES || errno == EROFS)) {
        nFile = open(m_sPath.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        bReadOnly = nFile >= 0;
    }
    if (nFile < 0 || (!bReadOnly && fchmod(nFile, 0600) != 0)) {
        int nErrno = errno;
        if (nFile >= 0)
            close(nFile);
        KVDataService::Fail(pclErreur, DATASERVICE_STORE_OPEN,
                            L"The store \"" + sPath + L"\" cannot be opened: " +
                                (nErrno == ELOOP ? std::wstring(L"it is a symbolic link")
                                                 : s_sSystemError(nErrno)) +
                                L".");
        return false;
    }
    close(nFile);
    int nResult = sqlite3_open_v2(m_sPath.c_str(), &m_pDatabase,
                                  (bReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) |
                                      SQLITE_OPEN_FULLMUTEX | SQLITE_OPEN_NOFOLLOW,
                                  nullptr);
    const char* pszSetup = "PRAGMA journal_mode=WAL;"
                           "PRAGMA synchronous=FULL;"
                           "CREATE TABLE IF NOT EXISTS entries("
                           " section TEXT NOT NULL, key TEXT NOT NULL, value TEXT NOT NULL,"
                           " PRIMARY KEY(section, key)) WITHOUT ROWID;";
    if (nResult == SQLITE_OK)
        nResult = sqlite3_busy_timeout(m_pDatabase, knBusyTimeoutMs);
    // A read-only store is read as it stands: its journal mode and table are the writer's.
    if (nResult == SQLITE_OK && !bReadOnly)
        nResult = sqlite3_exec(m_pDatabase, pszSetup, nullptr, nullptr, nullptr);
    if (nResult == SQLITE_OK)
        nResult = sqlite3_prepare_v2(m_pDatabase,
                                     "INSERT INTO entries(section, key, value) VALUES(?1, ?2, ?3)"
                                     " ON CONFLICT(section, key) DO UPDATE SET value = ?3",
                                     -1, &m_pWrite, nullptr);
    if (nResult == SQLITE_OK)
        nResult = sqlite3_prepare_v2(m_pDatabase,
                                     "SELECT value FROM entries WHERE section = ?1 AND key = ?2",
                                     -1, &m_pRead, nullptr);
    if (nResult != SQLITE_OK) {
        std::wstring sCause = m_pDatabase ? sLastError() : L"out of memory";
        Close();
        KVDataService::Fail(pclErreur, DATASERVICE_STORE_OPEN,
                            L"The store \"" + sPath + L"\" cannot be opened: " + sCause + L".",
                            L"SQLite result " + std::to_wstring(nResult));
        return false;
    }
    return true;
}

void CHostStoreService::vEcrit(const wchar_t* pszSection, const wchar_t* pszCle,
                               const wchar_t* pszValeur, CXError* pclErreur) {
    KVHost::Guard(pclErreur, [&] {
        if (!pszSection || !pszCle) {
            KVDataService::Fail(pclErreur, DATASERVICE_STORE_ARGUMENT,
                                L"A value of the store is written under a section and a key.");
            return;
        }
        std::string sSection = KVUtf8::VersUtf8(pszSection);
        std::string sKey = KVUtf8::VersUtf8(pszCle);
        std::string sValue = KVUtf8::VersUtf8(pszValeur ? pszValeur : L"");
        std::lock_guard<std::mutex> clLock(m_mutex);
        if (!bOpen(pclErreur))
            return;
        CStatementReset clReset(m_pWrite);
        int nResult = sqlite3_bind_text(m_pWrite, 1, sSection.data(),
                                        static_cast<int>(sSection.size()), SQLITE_STATIC);
        if (nResult == SQLITE_OK)
            nResult = sqlite3_bind_text(m_pWrite, 2, sKey.data(), static_cast<int>(sKey.size()),
                                        SQLITE_STATIC);
        if (nResult == SQLITE_OK)
            nResult = sqlite3_bind_text(m_pWrite, 3, sValue.data(), static_cast<int>(sValue.size()),
                                        SQLITE_STATIC);
        if (nResult == SQLITE_OK)
            nResult = sqlite3_step(m_pWrite);
        if (nResult != SQLITE_DONE)
            KVDataService::Fail(pclErreur, DATASERVICE_STORE_ACCESS,
                                L"The value \"" + std::wstring(pszSection) + L"/" +
                                    std::wstring(pszCle) + L"\" cannot be written to the store \"" +
                                    KVUtf8::VersWide(m_sPath) + L"\": " + sLastError() + L".",
                                L"SQLite result " + std::to_wstring(nResult));
    });
}

int CHostStoreService::vbLit(const wchar_t* pszSection, const wchar_t* pszCle,
                             const wchar_t* pszDefaut, wchar_t** ppszValeur, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, 0, [&]() -> int {
        if (!ppszValeur) {
            KVDataService::Fail(pclErreur, DATASERVICE_STORE_ARGUMENT,
                                L"A value of the store is read into a text.");
            return 0;
        }
        *ppszValeur = nullptr;
        if (!pszSection || !pszCle) {
            KVDataService::Fail(pclErreur, DATASERVICE_STORE_ARGUMENT,
                                L"A value of the store is read under a section and a key.");
            return 0;
        }
        std::string sSection = KVUtf8::VersUtf8(pszSection);
        std::string sKey = KVUtf8::VersUtf8(pszCle);
        std::wstring sValue;
        {
            std::lock_guard<std::mutex> clLock(m_mutex);
            if (!bOpen(pclErreur))
                return 0;
            CStatementReset clReset(m_pRead);
            int nResult = sqlite3_bind_text(m_pRead, 1, sSection.data(),
                                            static_cast<int>(sSection.size()), SQLITE_STATIC);
            if (nResult == SQLITE_OK)
                nResult = sqlite3_bind_text(m_pRead, 2, sKey.data(), static_cast<int>(sKey.size()),
                                            SQLITE_STATIC);
            if (nResult == SQLITE_OK)
                nResult = sqlite3_step(m_pRead);
            if (nResult == SQLITE_ROW) {
                const unsigned char* p = sqlite3_column_text(m_pRead, 0);
                int nBytes = sqlite3_column_bytes(m_pRead, 0);
                sValue = KVUtf8::VersWide(
                    std::string_view(reinterpret_cast<const char*>(p), p ? nBytes : 0));
            } else if (nResult == SQLITE_DONE) {
                sValue = pszDefaut ? pszDefaut : L"";
            } else {
                KVDataService::Fail(pclErreur, DATASERVICE_STORE_ACCESS,
                                    L"The value \"" + std::wstring(pszSection) + L"/" +
                                        std::wstring(pszCle) +
                                        L"\" cannot be read from the store \"" +
                                        KVUtf8::VersWide(m_sPath) + L"\": " + sLastError() + L".",
                                    L"SQLite result " + std::to_wstring(nResult));
                return 0;
            }
        }
        wchar_t* pszCopy = new (std::nothrow) wchar_t[sValue.size() + 1];
        if (!pszCopy) {
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return 0;
        }
        std::memcpy(pszCopy, sValue.c_str(), (sValue.size() + 1) * sizeof(wchar_t));
        *ppszValeur = pszCopy;
        return 1;
    });
}

void CHostStoreService::vLibere(wchar_t* pszTexte) {
    delete[] pszTexte;
}
