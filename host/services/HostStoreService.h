// CHostStoreService: the host's "Persistance", IPersistance over SQLite: named texts by section
// and key in one file that outlives the process. The file is the path given (a host option),
// else KVGGL_STORE, else $XDG_DATA_HOME/kvggl/store.db, else ~/.local/share/kvggl/store.db.
// It is made with mode 0600 in a directory made with mode 0700, since it holds the tokens of
// saved connections, and kept in WAL mode, written through on every commit. The file opens on
// first use, so that a store that cannot open is reported to the call that needed it.
#pragma once
#include "Counted.h"
#include "StoreService.h"
#include "XError.h"

#include <functional>
#include <mutex>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

class CHostStoreService final : public CCounted<IPersistance> {
public:
    // sPath empty: the default place.
    explicit CHostStoreService(std::string sPath = {});
    ~CHostStoreService() override;

    // The default place from a reader of variables (getenv in the host); empty when neither
    // KVGGL_STORE, XDG_DATA_HOME nor HOME tells.
    static std::string s_sDefaultPath(const std::function<const char*(const char*)>& fnGet);

    void vEcrit(const wchar_t* pszSection, const wchar_t* pszCle, const wchar_t* pszValeur,
                CXError* pclErreur) override;
    int vbLit(const wchar_t* pszSection, const wchar_t* pszCle, const wchar_t* pszDefaut,
              wchar_t** ppszValeur, CXError* pclErreur) override;
    void vLibere(wchar_t* pszTexte) override;

    const std::string& sGetPath() const { return m_sPath; }

private:
    // Opens the file when it is not open yet; under the lock.
    bool bOpen(CXError* pclErreur);
    void Close();
    // The library's last message on the connection, for the error.
    std::wstring sLastError() const;

    std::mutex m_mutex;
    std::string m_sPath;
    sqlite3* m_pDatabase = nullptr;
    sqlite3_stmt* m_pWrite = nullptr;
    sqlite3_stmt* m_pRead = nullptr;
};
