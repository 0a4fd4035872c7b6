// Stand-ins for the host in the connection tests: a VM that runs the standard-library
// functions the funnels call (URL encoding with the host's character set, the time shifts)
// and records what stubs return to it, a login dialogue that answers a canned browser return,
// an HTTP service that records every request record it is handed and answers canned replies,
// and the registry that hands that service and a JSON service out.
#pragma once
#include "JSONEssai.h"

#include "Any.h"
#include "DateTime.h"
#include "HTTPService.h"
#include "LibShop.h"
#include "LoginService.h"
#include "Utf8.h"
#include "VM.h"
#include "XError.h"
#include "XYString.h"
#include "frame/InformationDLL.h"
#include "frame/ModuleInfo.h"

#include <cstring>
#include <cwchar>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fauxhote {

// The character set that the host keeps as it is; any other byte becomes %XX.
inline std::string UrlEncode(std::string_view sv) {
    static constexpr std::string_view ksGarde = "-._~:/?[]@!$&'()*,;=";
    static constexpr char kszHex[] = "0123456789ABCDEF";
    std::string s;
    for (unsigned char c : sv) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
            ksGarde.find(static_cast<char>(c)) != std::string_view::npos) {
            s += static_cast<char>(c);
        } else {
            s += '%';
            s += kszHex[c >> 4];
            s += kszHex[c & 15];
        }
    }
    return s;
}

// The login dialogue: it records the login address and the function name it is given, and
// answers the raw head of the browser's return that the test sets.
class CFauxAuthentification final : public IAuthentification {
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

// One value a stub handed back: its type, the int of 1 and 8, the bytes of 19.
struct STRetourStub {
    int nType;
    int n;
    std::string s;
};

class CFauxVM final : public IVM {
public:
    // Shift that 334 adds and 335 takes away, in milliseconds.
    static constexpr long knDecalage = 2 * 3600 * 1000L;

    int bEmpileChaineA(const char* psz, int nLongueur) override {
        m_tabChaines.emplace_back(psz, nLongueur ? static_cast<size_t>(nLongueur) : std::strlen(psz));
        ++m_nEmpile;
        return 1;
    }
    int bEmpileDateHeure(const CDateTime* pcl) override {
        m_tabDates.push_back(*pcl);
        ++m_nEmpile;
        return 1;
    }
    int bEmpileAny(CAny* pcl) override {
        m_pclRecepteur = pcl;
        return 1;
    }
    int bAppelleFonctionVM(int nComposante, int nFonction, int nOption, int nNb,
                           CXError* pclErreur) override {
        m_tabAppels.push_back(nFonction);
        CAny* pclRecepteur = std::exchange(m_pclRecepteur, nullptr);
        std::vector<std::string> tabChaines = std::exchange(m_tabChaines, {});
        std::vector<CDateTime> tabDates = std::exchange(m_tabDates, {});
        const int nEmpile = std::exchange(m_nEmpile, 0);
        if (nComposante != 8 || nOption != 0 || nNb != 1 || nEmpile != 1 || !pclRecepteur)
            return 0;
        if (m_bEchoue) {
            if (pclErreur)
                pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, 600003, L"encode");
            return 0;
        }
        if (nFonction == FONCTIONVM_URL_ENCODE && tabChaines.size() == 1) {
            m_tabEncodes.push_back(tabChaines[0]);
            if (m_bResultatVide)
                pclRecepteur->SetStringA("");
            else
                pclRecepteur->SetStringA(UrlEncode(tabChaines[0]).c_str());
            return 1;
        }
        if ((nFonction == FONCTIONVM_UTC_VERS_LOCALE || nFonction == FONCTIONVM_LOCALE_VERS_UTC) &&
            tabDates.size() == 1) {
            CDateTime cl = tabDates[0];
            if (!cl.bDecaleMilli(nFonction == FONCTIONVM_UTC_VERS_LOCALE ? knDecalage : -knDecalage))
                return 0;
            wchar_t sz[18];
            cl.ToString(sz);
            pclRecepteur->__nSetString(sz);
            return 1;
        }
        return 0;
    }
    int nNbAppels(int nFonction) const {
        int n = 0;
        for (int x : m_tabAppels)
            n += x == nFonction;
        return n;
    }

    intptr_t nInfoVM(int, int) override { return 0; }
    IInterfaceObjetBase* piGetService(int, CXError*) override { return nullptr; }
    int bRetourneValeurAppel(int, const void*, int) override { return 0; }
    int bRetourneValeur(CCtxInfo*, const void* pValeur, int nType) override {
        STRetourStub st{nType, 0, {}};
        if (nType == 1 || nType == 8)
            std::memcpy(&st.n, pValeur, sizeof(int));
        else if (nType == 19)
            st.s = std::string(static_cast<const CXYString<char>*>(pValeur)->sv());
        m_tabRetours.push_back(std::move(st));
        return 1;
    }
    IKLTableau* pclAlloueTableau(int, int, CXError*) override { return nullptr; }
    // The dialogue when the test gives one, a new reference as the host gives it.
    IAuthentification* piGetAuthentification(CXError* pclErreur) override {
        ++m_nDemandesLogin;
        if (!m_piAuthentification) {
            if (pclErreur)
                pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, 600002, L"no login");
            return nullptr;
        }
        m_piAuthentification->vAddRef();
        return m_piAuthentification;
    }

    IAuthentification* m_piAuthentification = nullptr;
    int m_nDemandesLogin = 0;
    std::vector<STRetourStub> m_tabRetours;
    bool m_bEchoue = false;       // the host function fails, its cause in the error
    bool m_bResultatVide = false; // the encoder answers an empty text
    std::vector<int> m_tabAppels;
    std::vector<std::string> m_tabEncodes; // what reached the encoder

private:
    CAny* m_pclRecepteur = nullptr;
    std::vector<std::string> m_tabChaines;
    std::vector<CDateTime> m_tabDates;
    int m_nEmpile = 0;
};

// A header set on the heap, freed at its last release, so that the sanitizer sees a leak or a
// release too many.
class CFauxEntetes final : public IEntetesHTTP {
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
    std::vector<std::pair<std::wstring, std::wstring>> m_tab;

private:
    ~CFauxEntetes() = default;
    int m_nRef = 1;
};

using Entetes = std::vector<std::pair<std::wstring, std::wstring>>;

// One request record as the service received it.
struct STRequeteVue {
    int32_t nVersion;
    std::wstring sURL;
    std::wstring sReserve1;
    std::string sCorps;
    std::wstring sType;
    std::wstring sReserve2;
    std::wstring sReserve3;
    int32_t nMethode;
    int32_t nOption;
    bool bEntetes;
    Entetes tabEntetes;
    int32_t nReserve;
    IInterfaceObjetBase* piReserve;
    IVM* piVM; // the VM tied by vSetVM before the exchange
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

class CFauxHTTP final : public IHTTP {
public:
    static constexpr unsigned knErreurTransport = 600008;

    CFauxHTTP() : m_clErreur(&gstMyModuleInfo60) {}

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
    void vSetVM(IVM* piVM, int nOption) override {
        m_piVM = nOption == 0 ? piVM : nullptr;
    }
    IEntetesHTTP* vpiCreeEntetes() override {
        ++m_nEntetesCrees;
        return new CFauxEntetes;
    }
    int vbExecute(CParametresHTTPRequete& cl, int nOption) override {
        STRequeteVue st{cl.m_nVersion,
                        cl.m_sURL.pszGet(),
                        cl.m_sReserve1.pszGet(),
                        std::string(cl.m_clCorps.sv()),
                        cl.m_sTypeContenu.pszGet(),
                        cl.m_sReserve2.pszGet(),
                        cl.m_sReserve3.pszGet(),
                        cl.m_nMethode,
                        cl.m_nOption,
                        cl.m_piEntetes != nullptr,
                        {},
                        cl.m_nReserve,
                        cl.m_piReserve,
                        std::exchange(m_piVM, nullptr)};
        if (cl.m_piEntetes)
            st.tabEntetes = static_cast<CFauxEntetes*>(cl.m_piEntetes)->m_tab;
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

// Hands out the HTTP service, or nothing when m_bSansHTTP, and the JSON service. A test that
// lets the component take the JSON service gives it back with CComposanteGGL::TermCompo.
class CFauxLibShop final : public ILibShop {
public:
    IInterfaceObjetBase* piGetInterface(int, int, const wchar_t* psz, CXError*) override {
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
        ++m_nDemandes;
        if (m_bSansHTTP || std::wcscmp(psz, gszServiceHTTP) != 0)
            return nullptr;
        m_clHTTP.vAddRef();
        return &m_clHTTP;
    }
    CFauxHTTP m_clHTTP;
    CContenuJSONEssai m_clJSON;
    int m_nDemandes = 0;
    bool m_bSansHTTP = false;
};

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

} // namespace fauxhote
