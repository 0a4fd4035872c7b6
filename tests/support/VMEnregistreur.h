// What the component's tests share of a VM: it records what the stubs return, runs the
// functions of the host's library that the funnels call (the host's own code for URL encoding
// and the time shifts), and hands out the login dialogue a test gives it. Also: type
// descriptions to hand the classes, and the class rows of the component's tables found by class
// number and script name, so that the stubs are called exactly as the host calls them.
#pragma once
#include "frame/Kll.h"
#include "frame/ModuleInfo.h"
#include "frame/Tables.h"

#include "Any.h"
#include "DateTime.h"
#include "HostFunctions.h"
#include "LoginService.h"
#include "ObjectInterfaces.h"
#include "VM.h"
#include "XError.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// One bRetourneValeur: the context, the type and the value's bytes; the text of 16 and 122,
// the bytes of 19.
struct STRetourVM {
    CCtxInfo* pclCtx;
    int nType;
    std::vector<unsigned char> tabOctets;
    std::wstring sTexte;
    std::string sOctets;

    template <class T> T Valeur() const {
        T x{};
        std::memcpy(&x, tabOctets.data(), std::min(sizeof(T), tabOctets.size()));
        return x;
    }
};

class CVMEnregistreur final : public IVM {
public:
    std::vector<STRetourVM> m_tabRetour;
    IAuthentification* m_piAuthentification = nullptr; // handed out with a new reference
    int m_nDemandesLogin = 0;
    bool m_bEchoue = false;       // the host function fails, its cause in the error
    bool m_bResultatVide = false; // the encoder answers an empty text
    std::vector<int> m_tabAppels;
    std::vector<std::string> m_tabEncodes; // what reached the encoder

    int bRetourneValeur(CCtxInfo* pclCtx, const void* pValeur, int nType) override {
        STRetourVM st{pclCtx, nType, {}, {}, {}};
        size_t nTaille = sizeof(void*);
        if (nType == 1 || nType == 8) nTaille = 4;
        if (nType == 17) nTaille = 1;
        if (nType == 9 || nType == 12 || nType == 26) nTaille = 8;
        const auto* pby = static_cast<const unsigned char*>(pValeur);
        st.tabOctets.assign(pby, pby + nTaille);
        if (nType == 122) {
            const wchar_t* psz = *static_cast<const wchar_t* const*>(pValeur);
            st.sTexte = psz ? psz : L"(null)";
        } else if (nType == 16) {
            st.sTexte = static_cast<const CXYString<wchar_t>*>(pValeur)->pszGet();
        } else if (nType == 19) {
            st.sOctets = static_cast<const CXYString<char>*>(pValeur)->sv();
        }
        m_tabRetour.push_back(std::move(st));
        return 1;
    }

    // The funnels stack one argument and a receiver, then call component 8.
    int bEmpileChaineA(const char* psz, int nLongueur) override {
        m_tabChaines.emplace_back(psz, nLongueur ? static_cast<size_t>(nLongueur) : std::strlen(psz));
        return 1;
    }
    int bEmpileDateHeure(const CDateTime* pcl) override {
        m_tabDates.push_back(*pcl);
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
        const std::vector<std::string> tabChaines = std::exchange(m_tabChaines, {});
        const std::vector<CDateTime> tabDates = std::exchange(m_tabDates, {});
        if (nComposante != 8 || nOption != 0 || nNb != 1 || !pclRecepteur ||
            tabChaines.size() + tabDates.size() != 1)
            return 0;
        if (m_bEchoue) {
            if (pclErreur)
                pclErreur->SetUserErrorMessage(&gstMyModuleInfo60, 600003, L"encode");
            return 0;
        }
        if (nFonction == FONCTIONVM_URL_ENCODE && tabChaines.size() == 1) {
            m_tabEncodes.push_back(tabChaines[0]);
            pclRecepteur->SetStringA(m_bResultatVide ? ""
                                                     : KVHost::UrlEncode(tabChaines[0]).c_str());
            return 1;
        }
        if ((nFonction == FONCTIONVM_UTC_VERS_LOCALE || nFonction == FONCTIONVM_LOCALE_VERS_UTC) &&
            tabDates.size() == 1) {
            CDateTime cl;
            if (!(nFonction == FONCTIONVM_UTC_VERS_LOCALE
                      ? KVHost::bUtcToLocal(tabDates[0], cl, pclErreur)
                      : KVHost::bLocalToUtc(tabDates[0], cl, pclErreur)))
                return 0;
            wchar_t sz[18];
            cl.ToString(sz);
            pclRecepteur->__nSetString(sz);
            return 1;
        }
        return 0;
    }
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
    // The running procedure: its name, its label, line 42; each question noted.
    intptr_t nInfoVM(int nInfo, int nSousCode) override {
        m_tabInfos.push_back(nInfo * 100 + nSousCode);
        if (nSousCode == INFOTRAITEMENT_LIGNE)
            return 42;
        return reinterpret_cast<intptr_t>(nSousCode == INFOTRAITEMENT_LIBELLE ? L"libellé" : L"nom");
    }
    // The array a test gives, with a new reference, and what it was asked for.
    IKLTableau* pclAlloueTableau(int nType, int nDimension, CXError*) override {
        m_nTypeTableau = nType;
        m_nDimensionTableau = nDimension;
        if (m_piTableau)
            m_piTableau->vAddRef();
        return m_piTableau;
    }
    IInterfaceObjetBase* piGetService(int, CXError*) override { return nullptr; }
    int bRetourneValeurAppel(int, const void*, int) override { return 0; }

    std::vector<int> m_tabInfos;
    IKLTableau* m_piTableau = nullptr;
    int m_nTypeTableau = 0, m_nDimensionTableau = 0;

private:
    CAny* m_pclRecepteur = nullptr;
    std::vector<std::string> m_tabChaines;
    std::vector<CDateTime> m_tabDates;
};

// The process time zone for the life of the object, "UTC-2" (two hours east) by default: the
// VM's time shifts are the host's, which read TZ.
class CFuseauEssai {
public:
    explicit CFuseauEssai(const char* pszTZ = "UTC-2") {
        if (const char* psz = std::getenv("TZ"))
            m_oAvant = psz;
        setenv("TZ", pszTZ, 1);
        tzset();
    }
    ~CFuseauEssai() {
        if (m_oAvant)
            setenv("TZ", m_oAvant->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    CFuseauEssai(const CFuseauEssai&) = delete;
    CFuseauEssai& operator=(const CFuseauEssai&) = delete;

private:
    std::optional<std::string> m_oAvant;
};

// A class description as the host hands it to the type stub.
class CTypeEssai final : public ITypeDescription {
public:
    explicit CTypeEssai(const wchar_t* pszNom) : m_pszNom(pszNom) {}
    const wchar_t* vpszGetNom() override { return m_pszNom; }
    int vnGetIdentifiant() override { return 0; }

private:
    const wchar_t* m_pszNom;
};

// The class row whose type string is "+:060:<nNumero>:GGL:...".
inline const STKLOClasse& stClasseEssai(unsigned nNumero) {
    const std::string sPrefixe = "+:060:" + std::to_string(nNumero) + ":GGL:";
    for (uint32_t i = 0; i < knKllNbClasse; ++i)
        if (std::string_view(__gpstTabClasse_60[i]->pszType).starts_with(sPrefixe))
            return *__gpstTabClasse_60[i];
    ADD_FAILURE() << "no class " << nNumero;
    return *__gpstTabClasse_60[0];
}

inline const STKLPropriete& stProprieteEssai(const STKLOClasse& stClasse, const char* pszNom) {
    for (uint64_t i = 0; i < stClasse.nNbPropriete; ++i)
        if (stClasse.pstPropriete[i].qwHash == nKllHashNom(pszNom))
            return stClasse.pstPropriete[i];
    ADD_FAILURE() << "no property " << pszNom;
    return stClasse.pstPropriete[0];
}

inline const STKLAccesseur& stAccesseurEssai(const STKLOClasse& stClasse, const char* pszNom) {
    for (uint64_t i = 0; i < stClasse.nNbAccesseur; ++i)
        if (stClasse.pstAccesseur[i].qwHash == nKllHashNom(pszNom))
            return stClasse.pstAccesseur[i];
    ADD_FAILURE() << "no accessor " << pszNom;
    return stClasse.pstAccesseur[0];
}

// A writer called with one argument slot that points at the value.
template <class T>
void EcritEssai(PFNKLLSet pfn, void* pObjet, T valeur, CCtxInfo* pclCtx, CXError* pclErreur) {
    ASSERT_NE(pfn, nullptr);
    unsigned char* tabArguments[] = {reinterpret_cast<unsigned char*>(&valeur)};
    pfn(pObjet, tabArguments, pclCtx, pclErreur);
}
