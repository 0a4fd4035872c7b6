// What the unit tests of the script classes share: a VM that records what the stubs return,
// type descriptions to hand the classes, and the class rows of the component's tables found
// by class number and script name, so that the stubs are called exactly as the host calls them.
#pragma once
#include "frame/Kll.h"
#include "frame/Tables.h"

#include "ObjectInterfaces.h"
#include "VM.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// One bRetourneValeur: the context, the type and the value's bytes; the text of 16 and 122.
struct STRetourVM {
    CCtxInfo* pclCtx;
    int nType;
    std::vector<unsigned char> tabOctets;
    std::wstring sTexte;

    template <class T> T Valeur() const {
        T x{};
        std::memcpy(&x, tabOctets.data(), std::min(sizeof(T), tabOctets.size()));
        return x;
    }
};

class CVMEnregistreur final : public IVM {
public:
    std::vector<STRetourVM> m_tabRetour;

    int bRetourneValeur(CCtxInfo* pclCtx, const void* pValeur, int nType) override {
        STRetourVM st{pclCtx, nType, {}, {}};
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
        }
        m_tabRetour.push_back(st);
        return 1;
    }
    intptr_t nInfoVM(int, int) override { return 0; }
    int bEmpileAny(CAny*) override { return 0; }
    int bAppelleFonctionVM(int, int, int, int, CXError*) override { return 0; }
    IInterfaceObjetBase* piGetService(int, CXError*) override { return nullptr; }
    int bRetourneValeurAppel(int, const void*, int) override { return 0; }
    int bEmpileDateHeure(const CDateTime*) override { return 0; }
    IKLTableau* pclAlloueTableau(int, int, CXError*) override { return nullptr; }
    int bEmpileChaineA(const char*, int) override { return 0; }
    IAuthentification* piGetAuthentification(CXError*) override { return nullptr; }
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
