// The JSON service on arbitrary bytes: a text that parses must walk to its end under a visitor
// that descends everywhere, and again under one that walks each object itself, reading every
// value and every element by index; one that does not parse must say why.
#include "HostJSONService.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

class CFuzzVisitor final : public IVisiteurJSON {
public:
    explicit CFuzzVisitor(bool bSelfWalk) : m_bSelfWalk(bSelfWalk) {}
    size_t nNodes = 0;

    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        ++nNodes;
        switch (clValue.nGetType()) {
        case 0:
        case 1:
        case 9:
        case 12:
            break;
        case 16:
            if (!clValue.pclGetIntern()->nGetPCWSTR())
                std::abort();
            break;
        default:
            std::abort(); // no other type is promised
        }
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteObjet(IObjetJSON& clObject) override {
        ++nNodes;
        if (clObject.vnGetNbMembre() < 0)
            std::abort();
        if (!m_bSelfWalk)
            return VISITE_DESCEND;
        clObject.vAccepte(*this);
        return VISITE_SUIVANT;
    }
    eVISITEJSON veVisiteMembre(const CNomStandard& clName, IElementJSON& clValue) override {
        if (clName.pszGet()[clName.nLongueur()] != L'\0')
            std::abort();
        CAny clLeaf;
        bool bLeaf = clValue.vbGetValeur(clLeaf) != 0;
        if (bLeaf != (clValue.veGetGenre() != GENRE_JSON_OBJET &&
                      clValue.veGetGenre() != GENRE_JSON_TABLEAU))
            std::abort();
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteTableau(ITableauJSON& clArray) override {
        ++nNodes;
        int n = clArray.vnGetNbElement();
        for (int i = 0; i <= n; ++i) {
            CRef<IElementJSON> clElement = CRef<IElementJSON>::Adopt(clArray.vpiGetElement(i));
            if (static_cast<bool>(clElement) != (i < n))
                std::abort();
        }
        return VISITE_DESCEND;
    }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return VISITE_DESCEND; }

private:
    bool m_bSelfWalk;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
    static CHostJSONService* s_pclService = new CHostJSONService(1u << 20);
    CXError clError;
    CRef<IElementJSON> clRoot = CRef<IElementJSON>::Adopt(
        s_pclService->vpiAnalyse(reinterpret_cast<const char*>(pData), nSize, &clError));
    if (!clRoot) {
        if (clError.bEstPropre() || !*clError.pszGetUserMessage())
            std::abort();
        return 0;
    }
    CFuzzVisitor clDescending(false);
    clRoot->vAccepte(clDescending);
    CFuzzVisitor clSelfWalking(true);
    clRoot->vAccepte(clSelfWalking);
    if (clDescending.nNodes != clSelfWalking.nNodes)
        std::abort(); // both walks see every node
    return 0;
}
