// CFaceBookConnexionGenerique: the connection behind a Facebook session. It holds the
// application's identity, the token in use, the permissions and an optional page; it gets a
// token through the host's login dialogue, trades it for a long-lived one and, for a page, for
// the page's own; and it keeps itself in the store of saved connections, under a key made of
// the application, the page and the permissions.
#pragma once
#include "connection/ConnexionOAuthBase.h"
#include "frame/InterfAuthentification.h"

#include "TString.h"
#include "XYString.h"

class CKLANYArray;

// The origins of the dialogue and of the Graph interface; each use appends its path.
inline constexpr wchar_t gszFacebookDialogue[] = L"https://www.facebook.com";
inline constexpr wchar_t gszFacebookGraph[] = L"https://graph.facebook.com";
// An element of the permission list that carries the page instead of a permission.
inline constexpr wchar_t gszMarqueurPageFB[] = L"__KV_FB_PAGE_ID__";

class CFaceBookConnexionGenerique final : public CConnexionOAuthBase {
public:
    CFaceBookConnexionGenerique() = default;

    int vbLogin(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) override;
    int vbLogout(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) override;
    int vbGetAccessToken(CHTTPRequete& clRequete, CXYString<wchar_t>& sToken) override;
    void vRAZOAuthData() override;
    void vCopieOAuthData(const CConnexionOAuthBase& clSource) override;
    // 1 connected, 2 not: a token held, or one found in the store under this key.
    int veGetEtatConnexion(IVM* piVM, const CKLANYArray& tabParametres,
                           CXError* pclErreur) override;
    // Client id, page id and permissions, nothing between them.
    CTString vcszGetCleHash() override;
    // "client id;token;permissions;page id"
    int vbSerialise(CXYString<wchar_t>& sTexte) override;
    int vbDeserialise(const wchar_t* pszTexte) override;
    CConnexionOAuthBase* vpclClone() override;
    void _SetLastError(const wchar_t* pszErreur) override { m_sDernierMessage = pszErreur; }

    // The permissions, comma after each but the last element of the list, and the page from
    // its marked element; an empty list leaves the page as it was.
    void _CalculePermissionsEtPageID(const CKLANYArray& tabListe);

    const wchar_t* pszGetDernierMessage() const { return m_sDernierMessage.pszGet(); }
    const CXYString<wchar_t>& sGetAccessToken() const { return m_sAccessToken; }
    void SetAccessToken(const CXYString<wchar_t>& s) { m_sAccessToken = s; }
    const wchar_t* pszGetPermissions() const { return m_sPermissions.pszGet(); }
    const wchar_t* pszGetPageID() const { return m_sPageID.pszGet(); }

    static CConnexionOAuthBase* s_pclNouvelle();

private:
    // The answer of a GET on the Graph interface through the host, outside the authorised
    // road: its status and body; false with the host's error.
    bool _bGetGraph(const std::wstring& sChemin, int& nStatut, CXYString<char>& sCorps,
                    CXError* pclErreur);
    bool _bGetLongTermToken(CXError* pclErreur);
    bool _bGetPageToken(IVM* piVM, CXError* pclErreur);

    friend class CInterfFBCnx;

    CTString m_sDernierMessage;
    CXYString<wchar_t> m_sAccessToken;
    CTString m_sPermissions;
    CTString m_sPageID;
};

// The Facebook side of the login driver.
class CInterfFBCnx final : public IInterfGGLCnx {
public:
    CInterfFBCnx(CXError* pclErreur, CFaceBookConnexionGenerique* pclConnexion)
        : m_pclErreur(pclErreur), m_pclConnexion(pclConnexion) {}

    const wchar_t* sGetClientID() const override { return m_pclConnexion->pszGetClientID(); }
    const wchar_t* sGetClientSecret() const override {
        return m_pclConnexion->pszGetClientSecret();
    }
    bool bGetParNavigateur() const override { return false; }
    const wchar_t* sGetURLLogin() const override;
    bool bProcessRedirectionHTTP(const wchar_t* pszReponse, const wchar_t* pszRedirection) override;
    const wchar_t* sGetURLRedirection() const override { return L""; }

private:
    CXError* m_pclErreur;
    CFaceBookConnexionGenerique* m_pclConnexion;
    mutable CXYString<wchar_t> m_sURL;
};
