// A small JSON service for the tests: it parses text into a tree of counted nodes that walk
// their visitors by the rules of JSONService.h, and a registry (ILibShop) that hands it out, so
// that the component reaches it exactly as it reaches the host's.
#pragma once
#include "frame/ModuleInfo.h"

#include "Any.h"
#include "JSONService.h"
#include "LibShop.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <cwchar>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct STNoeudEssai {
    eGENREJSON eGenre = GENRE_JSON_NUL;
    CAny clValeur;
    std::vector<std::pair<std::wstring, std::shared_ptr<STNoeudEssai>>> tabMembre;
    std::vector<std::shared_ptr<STNoeudEssai>> tabElement;
};

// One element of the tree; its object and array sides live inside it and count on it.
class CElementEssai final : public IElementJSON {
public:
    explicit CElementEssai(std::shared_ptr<STNoeudEssai> pst)
        : m_pst(std::move(pst)), m_clObjet(this), m_clTableau(this) {}

    void vAddRef() override { ++m_nRef; }
    void vRelease() override {
        if (--m_nRef == 0) delete this;
    }
    eGENREJSON veGetGenre() override { return m_pst->eGenre; }
    int vbGetValeur(CAny& clValeur) override {
        if (m_pst->eGenre == GENRE_JSON_OBJET || m_pst->eGenre == GENRE_JSON_TABLEAU) return 0;
        clValeur = m_pst->clValeur;
        return 1;
    }
    IObjetJSON* vpiGetIObjetJSON() override {
        return m_pst->eGenre == GENRE_JSON_OBJET ? &m_clObjet : nullptr;
    }
    ITableauJSON* vpiGetITableauJSON() override {
        return m_pst->eGenre == GENRE_JSON_TABLEAU ? &m_clTableau : nullptr;
    }
    void vAccepte(IVisiteurJSON& v) override {
        if (m_pst->eGenre == GENRE_JSON_OBJET) {
            if (v.veVisiteObjet(m_clObjet) == VISITE_DESCEND) m_clObjet.vAccepte(v);
        } else if (m_pst->eGenre == GENRE_JSON_TABLEAU) {
            if (v.veVisiteTableau(m_clTableau) == VISITE_DESCEND) m_clTableau.vAccepte(v);
        } else {
            CAny clValeur = m_pst->clValeur;
            v.veVisiteValeur(clValeur);
        }
    }

private:
    ~CElementEssai() = default;

    class CObjet final : public IObjetJSON {
    public:
        explicit CObjet(CElementEssai* pcl) : m_pcl(pcl) {}
        void vAddRef() override { m_pcl->vAddRef(); }
        void vRelease() override { m_pcl->vRelease(); }
        int vnGetNbMembre() override { return static_cast<int>(m_pcl->m_pst->tabMembre.size()); }
        void vAccepte(IVisiteurJSON& v) override {
            for (auto& [sNom, pst] : m_pcl->m_pst->tabMembre) {
                auto cl = CRef<CElementEssai>::Retain(new CElementEssai(pst));
                const eVISITEJSON e = v.veVisiteMembre(CNomStandard(sNom.c_str(), sNom.size()), *cl);
                if (e == VISITE_ARRET) return;
                if (e == VISITE_DESCEND) cl->vAccepte(v);
            }
        }

    private:
        CElementEssai* m_pcl;
    };
    class CTableau final : public ITableauJSON {
    public:
        explicit CTableau(CElementEssai* pcl) : m_pcl(pcl) {}
        void vAddRef() override { m_pcl->vAddRef(); }
        void vRelease() override { m_pcl->vRelease(); }
        int vnGetNbElement() override { return static_cast<int>(m_pcl->m_pst->tabElement.size()); }
        IElementJSON* vpiGetElement(int i) override {
            if (i < 0 || i >= vnGetNbElement()) return nullptr;
            return CRef<CElementEssai>::Retain(new CElementEssai(m_pcl->m_pst->tabElement[i]))
                .pDetach();
        }
        void vAccepte(IVisiteurJSON& v) override {
            for (auto& pst : m_pcl->m_pst->tabElement) {
                auto cl = CRef<CElementEssai>::Retain(new CElementEssai(pst));
                const eVISITEJSON e = v.veVisiteElement(*cl);
                if (e == VISITE_ARRET) return;
                if (e == VISITE_DESCEND) cl->vAccepte(v);
            }
        }

    private:
        CElementEssai* m_pcl;
    };

    std::shared_ptr<STNoeudEssai> m_pst;
    CObjet m_clObjet;
    CTableau m_clTableau;
    int m_nRef = 0;
};

// Objects, arrays, strings (with the common escapes), numbers, true, false, null.
class CAnalyseurEssai {
public:
    explicit CAnalyseurEssai(std::wstring s) : m_s(std::move(s)) {}

    std::shared_ptr<STNoeudEssai> pstAnalyse() {
        auto pst = pstValeur();
        Blancs();
        return pst && m_i == m_s.size() ? pst : nullptr;
    }

private:
    void Blancs() {
        while (m_i < m_s.size() && std::wcschr(L" \t\r\n", m_s[m_i]) && m_s[m_i]) ++m_i;
    }
    bool bLit(wchar_t c) {
        Blancs();
        if (m_i < m_s.size() && m_s[m_i] == c) return ++m_i, true;
        return false;
    }
    bool bChaine(std::wstring& s) {
        if (!bLit(L'"')) return false;
        while (m_i < m_s.size() && m_s[m_i] != L'"') {
            wchar_t c = m_s[m_i++];
            if (c == L'\\' && m_i < m_s.size()) {
                c = m_s[m_i++];
                if (c == L'n') c = L'\n';
                if (c == L't') c = L'\t';
            }
            s += c;
        }
        return bLit(L'"');
    }
    std::shared_ptr<STNoeudEssai> pstValeur() {
        auto pst = std::make_shared<STNoeudEssai>();
        Blancs();
        if (m_i >= m_s.size()) return nullptr;
        const wchar_t c = m_s[m_i];
        if (c == L'{') {
            ++m_i;
            pst->eGenre = GENRE_JSON_OBJET;
            if (bLit(L'}')) return pst;
            do {
                std::wstring sNom;
                if (!bChaine(sNom) || !bLit(L':')) return nullptr;
                auto pstMembre = pstValeur();
                if (!pstMembre) return nullptr;
                pst->tabMembre.emplace_back(sNom, pstMembre);
            } while (bLit(L','));
            return bLit(L'}') ? pst : nullptr;
        }
        if (c == L'[') {
            ++m_i;
            pst->eGenre = GENRE_JSON_TABLEAU;
            if (bLit(L']')) return pst;
            do {
                auto pstElement = pstValeur();
                if (!pstElement) return nullptr;
                pst->tabElement.push_back(pstElement);
            } while (bLit(L','));
            return bLit(L']') ? pst : nullptr;
        }
        if (c == L'"') {
            std::wstring s;
            if (!bChaine(s)) return nullptr;
            pst->eGenre = GENRE_JSON_CHAINE;
            pst->clValeur.__nSetString(s.c_str(), static_cast<int>(s.size()));
            return pst;
        }
        static constexpr std::pair<const wchar_t*, int> tabMot[] = {
            {L"true", 1}, {L"false", 0}, {L"null", -1}};
        for (const auto& [pszMot, nValeur] : tabMot) {
            const size_t n = std::wcslen(pszMot);
            if (m_s.compare(m_i, n, pszMot) == 0) {
                m_i += n;
                pst->eGenre = nValeur < 0 ? GENRE_JSON_NUL : GENRE_JSON_BOOLEEN;
                if (nValeur >= 0) pst->clValeur.SetBool(nValeur != 0);
                return pst;
            }
        }
        size_t nFin = m_i;
        bool bEntier = true;
        while (nFin < m_s.size() && std::wcschr(L"+-0123456789.eE", m_s[nFin]) && m_s[nFin]) {
            bEntier &= std::wcschr(L".eE", m_s[nFin]) == nullptr;
            ++nFin;
        }
        if (nFin == m_i) return nullptr;
        const std::wstring sNombre = m_s.substr(m_i, nFin - m_i);
        m_i = nFin;
        pst->eGenre = GENRE_JSON_NOMBRE;
        if (bEntier)
            pst->clValeur.SetINT_64(std::wcstol(sNombre.c_str(), nullptr, 10));
        else
            pst->clValeur.SetREAL(std::wcstod(sNombre.c_str(), nullptr));
        return pst;
    }

    std::wstring m_s;
    size_t m_i = 0;
};

class CContenuJSONEssai final : public IContenuJSON {
public:
    void vAddRef() override { ++m_nRef; }
    void vRelease() override { --m_nRef; }
    IElementJSON* vpiAnalyse(const char* p, size_t n, CXError* pclErreur) override {
        m_tabRecu.emplace_back(p, n);
        auto pst = CAnalyseurEssai(KVUtf8::VersWide({p, n})).pstAnalyse();
        if (!pst) {
            if (pclErreur) pclErreur->SetUserError(&gstMyModuleInfo60, 600003);
            return nullptr;
        }
        return CRef<CElementEssai>::Retain(new CElementEssai(pst)).pDetach();
    }

    int m_nRef = 0;
    std::vector<std::string> m_tabRecu; // the UTF-8 texts it was given
};

class CLibShopEssai final : public ILibShop {
public:
    IInterfaceObjetBase* piGetInterface(int, int, const wchar_t* psz, CXError*) override {
        if (std::wcscmp(psz, gszServiceJSON) != 0) return nullptr;
        m_clJSON.vAddRef();
        return &m_clJSON;
    }
    IInterfaceObjetBase* piGetInterfaceVM(IInterfaceObjetBase*, int, int, int, const wchar_t*,
                                          CXError*) override {
        return nullptr;
    }
    IInterfaceObjetBase* piGetInterfaceCompat(int, int, int, int, const wchar_t*, int,
                                              CXError*) override {
        return nullptr;
    }

    CContenuJSONEssai m_clJSON;
};

// The tree of a text, parsed on the spot; null when the text is not JSON.
inline CRef<IElementJSON> clArbreEssai(const wchar_t* psz) {
    auto pst = CAnalyseurEssai(psz).pstAnalyse();
    if (!pst) return {};
    return CRef<IElementJSON>::Retain(new CElementEssai(pst));
}
