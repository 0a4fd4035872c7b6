// CGoogleConnexion, script type "gglConnexion": the application's OAuth client data and one
// token pair per Google service. It logs in, silently from a refresh token or through the
// host's login dialogue, and carries every Google service call: the services build a request
// with their service number and send it through the road of CConnexionOAuthBase.
//
// Scripts name services by bits (1 calendar, 2 contacts, 4 static maps, 8 documents, 16
// Picasa); inside, a service is its eSERVICESGOOGLE value, the index of its token pair.
#pragma once
#include "connection/ConnexionOAuthBase.h"
#include "connection/OAuthToken.h"
#include "connection/ServicesGoogle.h"
#include "frame/ObjetComposante.h"

#include "Arrays.h"
#include "ManipAUB.h"
#include "MemoImage.h"
#include "Ref.h"
#include "XYString.h"

#include <cstdint>

class CCtxInfo;
class CDateTime;
class CGoogleAgenda;
class CGoogleContact;
class CGglGroupeContact;
class CGoogleDocument;
class CGoogleParametre;
class CGooglePoint;
class CKLANYArray;
class IKLTableau;
class CXError;
class CXmlObjectMulti;
class IDocumentXML;
class IElementJSON;
class IVM;
struct STOAuth2TokenBase;

// A service and its text key, as RefreshTokens writes it.
struct STIdServiceGoogle {
    eSERVICESGOOGLE eService;
    const wchar_t* pszCle;
};

class CGoogleConnexion : public CObjetComposante, public CConnexionOAuthBase {
public:
    static ITypeDescription* ms_piType;
    // Every service in index order, row 0 "none" included.
    static const STIdServiceGoogle s_stTabIdServices[SERVICEGOOGLE_NB];

    CGoogleConnexion();

    static CGoogleConnexion* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    // The client data and the token pairs.
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleConnexion* pclSource);
    // Back to a new connection: no client data, empty tokens.
    void RAZObjet(CCtxInfo* pclCtx, CXError* pclErreur);

    // ---- properties
    using CConnexionOAuthBase::SetClientID;
    using CConnexionOAuthBase::SetClientSecret;
    using CConnexionOAuthBase::SetEmail;
    const wchar_t* GetEmail(CCtxInfo*, CXError*) const { return pszGetEmail(); }
    void SetEmail(CCtxInfo*, CXError*, const wchar_t* psz) { SetEmail(psz); }
    // Kept for old scripts: a password and an application name are no longer used. Reading
    // gives the empty text, writing drops the value.
    const wchar_t* GetMotDePasse(CCtxInfo*, CXError*) const { return L""; }
    void SetMotDePasse(CCtxInfo*, CXError*, const wchar_t*) {}
    const wchar_t* GetNomApplication(CCtxInfo*, CXError*) const { return L""; }
    void SetNomApplication(CCtxInfo*, CXError*, const wchar_t*) {}
    const wchar_t* GetClientID(CCtxInfo*, CXError*) const { return pszGetClientID(); }
    void SetClientID(CCtxInfo*, CXError*, const wchar_t* psz) { SetClientID(psz); }
    const wchar_t* GetClientSecret(CCtxInfo*, CXError*) const { return pszGetClientSecret(); }
    void SetClientSecret(CCtxInfo*, CXError*, const wchar_t* psz) { SetClientSecret(psz); }
    // {"none":"<refresh token>","calendar":"...",...}: the refresh token of every service, in
    // index order, the texts as they stand.
    CXYString<wchar_t> GetRefreshTokens(CCtxInfo*, CXError*) const;
    // The host's rebuild: the refresh tokens of a text that GetRefreshTokens wrote. Services the
    // text does not name keep theirs; access tokens are left alone. An empty text changes
    // nothing; a text that is not JSON leaves the cause in the error.
    void ForceRefreshTokens(CCtxInfo*, CXError* pclErreur, const CXYString<wchar_t>& sJSON);

    // ---- script functions
    // Logs in to the calendar alone / to the services of nBits. True when no error stands; a
    // failure that reported nothing gets 600001 with the service's last error.
    bool GglConnecte(CCtxInfo* pclCtx, CXError* pclErreur);
    bool GglConnecte(CCtxInfo* pclCtx, CXError* pclErreur, int nBits);
    // Forgets every token / the tokens of the services of nBits, static maps included.
    void GglDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur);
    void GglDeconnecte(CCtxInfo* pclCtx, CXError* pclErreur, int nBits);
    // A raw call to one service (one bit) with its token, logging in first when it has none:
    // the body of a 200 or 201 answer, else "" with the error. nMethode 1 GET, 2 POST, 4 PUT,
    // 8 DELETE; any other gives "" and no error.
    CXYString<char> GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                               const wchar_t* pszURL, int nMethode);
    CXYString<char> GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                               const wchar_t* pszURL, const wchar_t* pszCorps, int nMethode);
    // Without a method, a GET.
    CXYString<char> GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                               const wchar_t* pszURL) {
        return GglRequete(pclCtx, pclErreur, nBit, pszURL, knGglRequeteGET);
    }
    CXYString<char> GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                               const wchar_t* pszURL, const wchar_t* pszCorps) {
        return GglRequete(pclCtx, pclErreur, nBit, pszURL, pszCorps, knGglRequeteGET);
    }
    static constexpr int knGglRequeteGET = 1;

    // ---- documents (documents/F_DocumentsList.cpp)
    // The Drive files of the types of the mask (1 text documents, 4 presentations, 2
    // spreadsheets, 8 starred only), in the folders of that name, matching the script's own
    // query text; the first page of the reply. An empty array when no folder has that name.
    IKLTableau* GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur, int nType,
                                 const wchar_t* pszDossier, const wchar_t* pszRequete);
    IKLTableau* GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur) {
        return GglListeDocument(pclCtx, pclErreur, 0, nullptr, nullptr);
    }
    IKLTableau* GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur, int nType) {
        return GglListeDocument(pclCtx, pclErreur, nType, nullptr, nullptr);
    }
    IKLTableau* GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur, int nType,
                                 const wchar_t* pszDossier) {
        return GglListeDocument(pclCtx, pclErreur, nType, pszDossier, nullptr);
    }
    IKLTableau* GglListeDocument(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszRequete) {
        return GglListeDocument(pclCtx, pclErreur, 0, L"", pszRequete);
    }
    // Sends a disk file whole, in one resumable session (its start, then one PUT); the two
    // texts of the longer form are taken and not used.
    bool GglEnvoieDocument(CCtxInfo* pclCtx, CXError* pclErreur, STManipAUB stFichier,
                           CXYString<wchar_t> sInutile1, CXYString<wchar_t> sInutile2);
    bool GglEnvoieDocument(CCtxInfo* pclCtx, CXError* pclErreur, STManipAUB stFichier) {
        return GglEnvoieDocument(pclCtx, pclErreur, stFichier, {}, {});
    }
    // Writes a listed document's bytes to a file, its directories made as needed.
    bool GglRecupereDocument(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleDocument* pclDocument,
                             CXYString<wchar_t> sFichier);
    bool GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleDocument* pclDocument);

    // ---- calendar (calendar/F_Agenda.cpp)
    // The user's calendars, at most 250; nOption 1 keeps those the user owns.
    IKLTableau* GglListeAgenda(CCtxInfo* pclCtx, CXError* pclErreur, int nOption);
    IKLTableau* GglListeAgenda(CCtxInfo* pclCtx, CXError* pclErreur) {
        return GglListeAgenda(pclCtx, pclErreur, 0);
    }
    // The calendar of that title or id (case, accents and blanks around not counting; the
    // first calendar for no name), filled with its events; an empty calendar and 600012 when
    // none matches. Dates that are not complete count as absent.
    IObjetBase* GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sNom,
                                  CDateTime dtDebut, CDateTime dtFin, CXYString<wchar_t> sTexte);
    IObjetBase* GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur);
    IObjetBase* GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sNom);
    IObjetBase* GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sNom,
                                  CDateTime dtDebut);
    IObjetBase* GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sNom,
                                  CDateTime dtDebut, CDateTime dtFin);
    // The calendar's events from dtDebut (the present moment when neither bound is given) to
    // dtFin, matching pszTexte, at most 2500; they replace those it had.
    bool GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda,
                          CDateTime dtDebut, CDateTime dtFin, const wchar_t* pszTexte);
    bool GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda);
    bool GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda,
                          CDateTime dtDebut);
    bool GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda,
                          CDateTime dtDebut, CDateTime dtFin);
    // The same with the script's own query text, sent as it stands.
    bool GglRemplitAgendaParRequete(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda,
                                    const wchar_t* pszRequete);
    // Sends what the calendar's and its events' marks call for / deletes the calendar.
    bool GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda);
    bool GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda);
    // ---- contacts (contacts/F_Contacts.cpp)
    // The contacts of the feed from nDebut (1 the first) to nMax of them (0: all), of the
    // group sGroupe when one is given: a URL beginning "http://" as it stands, anything else a
    // group's title, looked up first (600032 when none has it). 600006 on a start below 1
    // (argument 3) or a negative count (argument 4).
    IKLTableau* GglListeContact(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sGroupe,
                                int nDebut, int nMax);
    IKLTableau* GglListeContact(CCtxInfo* pclCtx, CXError* pclErreur) {
        return GglListeContact(pclCtx, pclErreur, CXYString<wchar_t>(), 1, 0);
    }
    IKLTableau* GglListeContact(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sGroupe) {
        return GglListeContact(pclCtx, pclErreur, sGroupe, 1, 0);
    }
    IKLTableau* GglListeContact(CCtxInfo* pclCtx, CXError* pclErreur, CXYString<wchar_t> sGroupe,
                                int nDebut) {
        return GglListeContact(pclCtx, pclErreur, sGroupe, nDebut, 0);
    }
    // The contacts for the script's own query string, sent as it stands.
    IKLTableau* GglListeContactParRequete(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszRequete);
    // Every group / the groups of the contact, index for index with its memberships.
    IKLTableau* GglListeGroupeContact(CCtxInfo* pclCtx, CXError* pclErreur);
    IKLTableau* GglListeGroupeContact(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleContact* pclContact);
    // Sends what the entry's queue holds; a contact is sent on every save / deletes the entry.
    bool GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleContact* pclContact);
    bool GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGglGroupeContact* pclGroupe);
    bool GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleContact* pclContact);
    bool GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGglGroupeContact* pclGroupe);
    // ---- static maps (defined in maps/StaticMaps.cpp)
    // The map image centred on a point or an address, nLargeur x nHauteur pixels, at a zoom,
    // with the options, markers and path of the parameters; or framed by the markers and path
    // of the parameters alone. An empty image with the cause in the error when the sizes or
    // the zoom are out of range, the parameters frame nothing, or the service refuses.
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, CGooglePoint* pclCentre,
                                  int nLargeur, int nHauteur, int nZoom,
                                  CGoogleParametre* pclParametres);
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszAdresse,
                                  int nLargeur, int nHauteur, int nZoom,
                                  CGoogleParametre* pclParametres);
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, int nLargeur,
                                  int nHauteur, int nZoom, CGoogleParametre* pclParametres);
    // Without a zoom, the zoom of a town's streets; without parameters, none.
    static constexpr int knZoomCarteDefaut = 14;
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, CGooglePoint* pclCentre,
                                  int nLargeur, int nHauteur, int nZoom) {
        return GglRecupereCarte(pclCtx, pclErreur, pclCentre, nLargeur, nHauteur, nZoom, nullptr);
    }
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, CGooglePoint* pclCentre,
                                  int nLargeur, int nHauteur) {
        return GglRecupereCarte(pclCtx, pclErreur, pclCentre, nLargeur, nHauteur,
                                knZoomCarteDefaut);
    }
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszAdresse,
                                  int nLargeur, int nHauteur, int nZoom) {
        return GglRecupereCarte(pclCtx, pclErreur, pszAdresse, nLargeur, nHauteur, nZoom, nullptr);
    }
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, const wchar_t* pszAdresse,
                                  int nLargeur, int nHauteur) {
        return GglRecupereCarte(pclCtx, pclErreur, pszAdresse, nLargeur, nHauteur,
                                knZoomCarteDefaut);
    }
    // Framed by the parameters: no zoom unless one is given.
    static constexpr int knZoomCarteAucun = -1;
    CKLMemoImage GglRecupereCarte(CCtxInfo* pclCtx, CXError* pclErreur, int nLargeur,
                                  int nHauteur, CGoogleParametre* pclParametres) {
        return GglRecupereCarte(pclCtx, pclErreur, nLargeur, nHauteur, knZoomCarteAucun,
                                pclParametres);
    }
    // The location of the first result for the address, looked for within a region (a
    // country code such as "fr") when one is given; a new gglCoordonnée, or null with the
    // cause in the error.
    IObjetBase* GglAdresseVersCoordonnees(CCtxInfo* pclCtx, CXError* pclErreur,
                                          const wchar_t* pszAdresse, const wchar_t* pszRegion);
    IObjetBase* GglAdresseVersCoordonnees(CCtxInfo* pclCtx, CXError* pclErreur,
                                          const wchar_t* pszAdresse) {
        return GglAdresseVersCoordonnees(pclCtx, pclErreur, pszAdresse, nullptr);
    }

    // ---- for the services
    // The first step of every service call: a token is there, or a login brings one.
    bool __bCheckAndLogService(eSERVICESGOOGLE eService, IVM* piVM, CXError* pclErreur);
    // The body of an answer whose status is eAttendu, parsed; null with 600003 when it does
    // not parse, or with 600005 and the status when the status is another.
    static CRef<IDocumentXML> s_piParseXMLResponse(CHTTPResponse& clReponse, CXError* pclErreur,
                                                   eHTTPCODE eAttendu);
    static CRef<IElementJSON> s_piParseJSONResponse(CHTTPResponse& clReponse, CXError* pclErreur,
                                                    eHTTPCODE eAttendu);
    // ---- entries of the XML feeds (updates/GoogleConnexionXml.cpp)
    // The entry's "link" list replaced by the one of its current version, read from its
    // "self" link: a change elsewhere gave the entry a new version, and the old "edit" link
    // would be refused. No "self" link: nothing happens.
    void UpdateVersionXmlObjectMulti(IVM* piVM, CXError* pclErreur, CXmlObjectMulti* pclObjet);
    // The deletion of an entry: its pending operations dropped, its deletion queued and sent.
    // A new entry, or one that queues no deletion of its own, gets 600028 and keeps its queue.
    bool _bGglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CXmlObjectMulti* pclObjet);

    // A text made fit for a hand-built JSON string value.
    static CXYString<wchar_t> s_czEscapeJSON(const CXYString<wchar_t>& sTexte);

    // ---- login
    // The argument array holds one service number (1 to 5); anything else fails.
    int vbLogin(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) override;
    int vbLogout(IVM* piVM, const CKLANYArray& tabParametres, CXError* pclErreur) override;
    // The access token of the request's service, "" when it has none; always true.
    int vbGetAccessToken(CHTTPRequete& clRequete, CXYString<wchar_t>& sToken) override;
    // Silently when every service asked holds one same refresh token and the server takes it;
    // otherwise the tokens of those services are dropped and the user is asked.
    bool bLoginMultiple(int nBits, IVM* piVM, CXError* pclErreur);
    // Empties the tokens of the services of nBits; the static maps entry (bit 4) stays.
    bool bLogoutMultiple(int nBits, IVM* piVM, CXError* pclErreur);
    // Stores the access and refresh token of the answer for each service of nBits.
    void SetTokensConnexion(const STOAuth2TokenBase& stToken, int nBits);
    // The scopes of the services of nBits, joined by "%20".
    CXYString<wchar_t> czGetScopes(int nBits) const;

    // Script bit of a service, 0 for none; service of a single bit, 0 for any other number.
    static int __nGetServiceKL(eSERVICESGOOGLE eService);
    static eSERVICESGOOGLE __eGetServiceFromKL(int nBit);

    // One pair per eSERVICESGOOGLE value.
    CXArray<COAuthToken>& tabGetToken() { return m_tabToken; }
    const CXArray<COAuthToken>& tabGetToken() const { return m_tabToken; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    void __RAZToken();
    // The refresh-token grant at the accounts endpoint. Reports nothing: any failure sends the
    // login on to the dialogue.
    bool __bRequestAccessFromRefreshToken(int nBits, const CXYString<wchar_t>& sRefreshToken,
                                          IVM* piVM);
    // GglRequete, with or without a body.
    CXYString<char> __GglRequete(CCtxInfo* pclCtx, CXError* pclErreur, int nBit,
                                 const wchar_t* pszURL, bool bAvecCorps, const wchar_t* pszCorps,
                                 int nMethode);
    // Empties the pair of the service.
    void __VideToken(eSERVICESGOOGLE eService);

    CXArray<COAuthToken> m_tabToken;
    [[maybe_unused]] int16_t m_nVersion = 1; // the form of the connection; always 1
};
