// What the component's tests share of a host, beside the VM of VMEnregistreur.h: a login
// dialogue that answers a canned browser return, an HTTP double that records every request
// record it is handed and answers canned replies, and the registry that hands that double and
// the host's real JSON and XML services out.
#pragma once
#include "VMEnregistreur.h"

#include "HTTPService.h"
#include "HostJSONService.h"
#include "HostXMLService.h"
#include "LibShop.h"
#include "Ref.h"
#include "Utf8.h"
#include "frame/InformationDLL.h"

#include <cwchar>
#include <deque>

// The login dialogue: it records the login address and the function name it is given, and
// answers the raw head of the browser's return that the test sets.
class CAuthentificationEssai final : public IAuthentification {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    void vGetURLRedirection(int bParNavigateur, CXYString<wchar_t>& sRedirection) override {
        m_tabParNavigateur.push_back(bParNavigateur);
        sRedirection = CXYString<wchar_t>(m_sRedirection.c_str());
    }
    eAUTHENTIFICATION veAuthentifie(const wchar_t* pszURLLogin, IVM* piVM,
                                    const wchar_t* pszNomFonction, CXYString<wchar_t>& sReponse,
                                    CXError* pclErreur) override {
        m_tabURL.emplace_back(pszURLLogin ? pszURLLogin : L"(null)");
        m_tabFonction.emplace_back(pszNomFonction ? pszNomFonction : L"(null)");
        m_piVM = piVM;
        if (m_eResultat != AUTHENTIFICATION_OK) {
            if (pclErreur)
                pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, knErreurDialogue, L"dialogue");
            return m_eResultat;
        }
        sReponse = CXYString<wchar_t>(m_sReponse.c_str());
        return AUTHENTIFICATION_OK;
    }

    static constexpr unsigned knErreurDialogue = 600002;
    int m_nRef = 0;
    std::wstring m_sRedirection = L"http://127.0.0.1:4567/";
    std::wstring m_sReponse; // the raw head of the browser's return
    eAUTHENTIFICATION m_eResultat = AUTHENTIFICATION_OK;
    std::vector<std::wstring> m_tabURL;
    std::vector<std::wstring> m_tabFonction;
    std::vector<int> m_tabParNavigateur;
    IVM* m_piVM = nullptr;
};

using Entetes = std::vector<std::pair<std::wstring, std::wstring>>;

// A header set on the heap, freed at its last release, so that the sanitizer sees a leak or a
// release too many.
class CEntetesEssai final : public IEntetesHTTP {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override {
        if (--m_nRef == 0)
            delete this;
    }
    void vAjoute(const wchar_t* pszNom, const wchar_t* pszValeur) override {
        m_tab.emplace_back(pszNom, pszValeur);
    }
    int vnGetNbEntete() override { return static_cast<int>(m_tab.size()); }
    const wchar_t* vpszGetNom(int i) override {
        return i >= 0 && i < vnGetNbEntete() ? m_tab[static_cast<size_t>(i)].first.c_str() : L"";
    }
    const wchar_t* vpszGetValeur(int i) override {
        return i >= 0 && i < vnGetNbEntete() ? m_tab[static_cast<size_t>(i)].second.c_str() : L"";
    }
    Entetes m_tab;

private:
    ~CEntetesEssai() = default;
    int m_nRef = 1;
};

// One request record as the service received it.
struct STRequeteVue {
    int32_t nVersion;
    std::wstring sURL;
    std::string sCorps;
    std::wstring sType;
    int32_t nMethode;
    int32_t nOption;
    bool bEntetes;
    Entetes tabEntetes;
    IVM* piVM; // the VM tied by vSetVM before the exchange

    std::wstring sEntete(const wchar_t* pszNom) const {
        for (const auto& [sNom, sValeur] : tabEntetes)
            if (sNom == pszNom)
                return sValeur;
        return L"(absent)";
    }
};

// One canned answer.
struct STReponse {
    std::wstring sEntete;
    std::string sCorps;
    bool bTransport = true; // false: vbExecute fails with a cause
};

inline STReponse Reponse(int nStatut, std::string sCorps = {}, std::wstring sAutres = {}) {
    return {L"HTTP/1.1 " + std::to_wstring(nStatut) + L" X\r\n" + sAutres +
                L"Content-Type: application/json\r\n\r\n",
            std::move(sCorps), true};
}

class CHTTPEssai final : public IHTTP {
public:
    static constexpr unsigned knErreurTransport = 600008;

    CHTTPEssai() : m_clErreur(&gstMyModuleInfo60) {}

    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    CXError* vpiGetErreur() override { return &m_clErreur; }
    int vbDonneResultat(CAny& clValeur, int nGenre) override {
        if (!m_bReponse || m_bDonneResultatEchoue) {
            m_clErreur.SetUserErrorMessage(&gstMyModuleInfo60, knErreurTransport, L"transport");
            return 0;
        }
        switch (nGenre) {
        case RESULTAT_HTTP_ENTETE:
            clValeur.__nSetString(m_stCourante.sEntete.c_str());
            return 1;
        case RESULTAT_HTTP_MESSAGE:
            clValeur.SetBinary(m_stCourante.sCorps.data(), m_stCourante.sCorps.size());
            return 1;
        case RESULTAT_HTTP_CODE: { // the number after the first blank of the status line
            const size_t nBlanc = m_stCourante.sEntete.find(L' ');
            clValeur.SetInt(nBlanc == std::wstring::npos
                                ? 0
                                : static_cast<int>(std::wcstol(
                                      m_stCourante.sEntete.c_str() + nBlanc + 1, nullptr, 10)));
            return 1;
        }
        default:
            return 0;
        }
    }
    void vSetVM(IVM* piVM, int nOption) override { m_piVM = nOption == 0 ? piVM : nullptr; }
    IEntetesHTTP* vpiCreeEntetes() override {
        ++m_nEntetesCrees;
        return new CEntetesEssai;
    }
    int vbExecute(CParametresHTTPRequete& cl, int nOption) override {
        // The reserved fields stay at their starting values, whatever the request.
        EXPECT_TRUE(cl.m_sReserve1.bVide() && cl.m_sReserve2.bVide() && cl.m_sReserve3.bVide());
        EXPECT_TRUE(cl.m_nReserve == 0 && cl.m_piReserve == nullptr);
        STRequeteVue st{cl.m_nVersion,     std::wstring(cl.m_sURL.pszGet()),
                        std::string(cl.m_clCorps.sv()), std::wstring(cl.m_sTypeContenu.pszGet()),
                        cl.m_nMethode,     cl.m_nOption,
                        cl.m_piEntetes != nullptr, {},
                        std::exchange(m_piVM, nullptr)};
        if (cl.m_piEntetes)
            st.tabEntetes = static_cast<CEntetesEssai*>(cl.m_piEntetes)->m_tab;
        m_tabVues.push_back(std::move(st));
        m_bReponse = false;
        if (nOption != 0 || m_tabReponses.empty()) {
            m_clErreur.SetUserErrorMessage(&gstMyModuleInfo60, knErreurTransport, L"transport");
            return 0;
        }
        m_stCourante = m_tabReponses.front();
        m_tabReponses.pop_front();
        if (!m_stCourante.bTransport) {
            m_clErreur.SetUserErrorMessage(&gstMyModuleInfo60, knErreurTransport, L"transport");
            return 0;
        }
        m_clErreur.RAZ();
        m_bReponse = true;
        return 1;
    }
    int vbSoapExecute(const wchar_t*, const STManipAUB&, const wchar_t*) override { return 0; }
    int vbSoapAjouteEntete(const wchar_t*, const CAny&, const wchar_t*, int) override { return 0; }
    int vbSoapDonneResultat(CAny&, eSOAPResultat, int) override { return 0; }
    int vbSoapErreur(eSOAPErreur, CXYString<wchar_t>&) override { return 0; }

    int m_nRef = 0;
    int m_nEntetesCrees = 0;
    bool m_bDonneResultatEchoue = false;
    std::deque<STReponse> m_tabReponses;
    std::vector<STRequeteVue> m_tabVues;

private:
    CXError m_clErreur;
    STReponse m_stCourante;
    bool m_bReponse = false;
    IVM* m_piVM = nullptr;
};

// The host's JSON service, which also keeps the texts it was given.
class CJSONEssai final : public IContenuJSON {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    IElementJSON* vpiAnalyse(const char* p, size_t n, CXError* pclErreur) override {
        m_tabRecu.emplace_back(p, n);
        return m_clHote->vpiAnalyse(p, n, pclErreur);
    }
    int m_nRef = 0;
    std::vector<std::string> m_tabRecu; // the UTF-8 texts it was given

private:
    CRef<CHostJSONService> m_clHote = CRef<CHostJSONService>::Adopt(new CHostJSONService());
};

// Hands out the HTTP double (or nothing when m_bSansHTTP), the JSON service and the XML
// service, and notes every name asked for. A test that lets the component take a shared
// service gives it back with CComposanteGGL::TermCompo.
class CLibShopEssai final : public ILibShop {
public:
    IInterfaceObjetBase* piGetInterface(int, int, const wchar_t* psz, CXError*) override {
        m_tabDemandes.emplace_back(psz);
        if (std::wcscmp(psz, gszServiceJSON) != 0)
            return nullptr;
        m_clJSON.vAddRef();
        return &m_clJSON;
    }
    IInterfaceObjetBase* piGetInterfaceVM(IInterfaceObjetBase*, int, int, int, const wchar_t*,
                                          CXError*) override {
        return nullptr;
    }
    IInterfaceObjetBase* piGetInterfaceCompat(int, int, int, int, const wchar_t* psz, int,
                                              CXError*) override {
        m_tabDemandes.emplace_back(psz);
        if (!m_bSansHTTP && std::wcscmp(psz, gszServiceHTTP) == 0) {
            m_clHTTP.vAddRef();
            return &m_clHTTP;
        }
        if (std::wcscmp(psz, gszServiceXML) == 0) {
            m_clXML->vAddRef();
            return m_clXML.pGet();
        }
        return nullptr;
    }
    int nNbDemandes(const wchar_t* psz) const {
        return static_cast<int>(std::count(m_tabDemandes.begin(), m_tabDemandes.end(), psz));
    }

    CHTTPEssai m_clHTTP;
    CJSONEssai m_clJSON;
    CRef<CHostXMLService> m_clXML = CRef<CHostXMLService>::Adopt(new CHostXMLService());
    std::vector<std::wstring> m_tabDemandes;
    bool m_bSansHTTP = false;
};

// The tree of a text, by the host's JSON service; null when the text is not JSON.
inline CRef<IElementJSON> clArbreEssai(const wchar_t* psz) {
    const std::string s = KVUtf8::VersUtf8(psz);
    CHostJSONService clService;
    CXError clErreur(&gstMyModuleInfo60);
    return CRef<IElementJSON>::Adopt(clService.vpiAnalyse(s.data(), s.size(), &clErreur));
}

// Names for the printed cases: stable from one run to the next and plain enough for CTest.
inline std::string Nom(const wchar_t* psz) {
    if (!psz)
        return "null";
    if (!*psz)
        return "vide";
    std::string s;
    for (const wchar_t* p = psz; *p; ++p) {
        const bool bGarde = (*p >= L'a' && *p <= L'z') || (*p >= L'A' && *p <= L'Z') ||
                            (*p >= L'0' && *p <= L'9');
        s += bGarde ? static_cast<char>(*p) : '_';
    }
    return s;
}
