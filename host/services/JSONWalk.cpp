#include "JSONWalk.h"

#include "CountedBlock.h"
#include "JSONArray.h"
#include "JSONElement.h"
#include "JSONObject.h"
#include "KVResult.h"
#include "XYString.h"

#include <cstring>

struct CJSONWalk::STLevel {
    CRef<CJSONElement> clElement;
    CRef<CJSONObject> clObject;
    CRef<CJSONArray> clArray;
    CAny clText;  // texts only, so that its block serves text after text
    CAny clValue; // the other leaves
    std::vector<wchar_t> tabName;

    // A handle on that node: the level's own when nobody else holds it, else a new one.
    template <class T>
    static T& s_rHandle(CRef<T>& clHandle, CJSONDocument& rDocument, uint32_t nIndex) {
        if (clHandle && clHandle->bFree())
            clHandle->Repoint(&rDocument, nIndex);
        else
            clHandle = CRef<T>::Adopt(new T(&rDocument, nIndex));
        return *clHandle;
    }
};

// Takes a level for the length of a scope.
class CJSONWalk::CLevelScope {
public:
    explicit CLevelScope(CJSONWalk& rWalk) : m_rWalk(rWalk), m_rLevel(rWalk.rEnter()) {}
    ~CLevelScope() { m_rWalk.Leave(); }
    CLevelScope(const CLevelScope&) = delete;
    CLevelScope& operator=(const CLevelScope&) = delete;
    STLevel& operator*() const { return m_rLevel; }
    STLevel* operator->() const { return &m_rLevel; }

private:
    CJSONWalk& m_rWalk;
    STLevel& m_rLevel;
};

CJSONWalk::CJSONWalk() = default;
CJSONWalk::~CJSONWalk() = default;

CJSONWalk& CJSONWalk::s_rCurrent() {
    thread_local CJSONWalk s_clWalk;
    return s_clWalk;
}

CJSONWalk::STLevel& CJSONWalk::rGrow() {
    m_tabLevels.push_back(std::make_unique<STLevel>());
    return *m_tabLevels[m_nLevels++];
}

void CJSONWalk::Leave() {
    if (--m_nLevels > 0)
        return;
    // The outermost walk ended: the handles let their documents go; the buffers stay for the
    // next walk, unless one grew past the common run of texts.
    constexpr size_t knKeepMax = 64 * 1024;
    for (auto& pLevel : m_tabLevels) {
        pLevel->clElement.Reset();
        pLevel->clObject.Reset();
        pLevel->clArray.Reset();
        if (pLevel->clText.pclGetIntern()->nGetDataSize() > knKeepMax * sizeof(wchar_t))
            pLevel->clText.Vide();
        if (pLevel->tabName.capacity() > knKeepMax)
            std::vector<wchar_t>().swap(pLevel->tabName);
    }
}

bool CJSONWalk::bVisitNode(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                           IVisiteurJSON& clVisiteur) {
    eVISITEJSON eAnswer;
    switch (rDocument.nType(nIndex)) {
    case CJSONDocument::knObject:
        eAnswer = clVisiteur.veVisiteObjet(STLevel::s_rHandle(rLevel.clObject, rDocument, nIndex));
        if (eAnswer == VISITE_DESCEND)
            return bWalkObject(rDocument, nIndex, clVisiteur);
        break;
    case CJSONDocument::knArray:
        eAnswer = clVisiteur.veVisiteTableau(STLevel::s_rHandle(rLevel.clArray, rDocument, nIndex));
        if (eAnswer == VISITE_DESCEND)
            return bWalkArray(rDocument, nIndex, clVisiteur);
        break;
    case CJSONDocument::knString:
        s_SetText(rLevel.clText, rDocument.svString(nIndex));
        eAnswer = clVisiteur.veVisiteValeur(rLevel.clText);
        break;
    default:
        (void)s_bValue(rDocument, nIndex, rLevel.clValue);
        eAnswer = clVisiteur.veVisiteValeur(rLevel.clValue);
        break;
    }
    return eAnswer != VISITE_ARRET;
}

bool CJSONWalk::bVisit(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    return bVisitNode(*clLevel, rDocument, nIndex, clVisiteur);
}

bool CJSONWalk::bWalkObject(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    std::vector<wchar_t>& tabName = clLevel->tabName;
    uint32_t nEnd = rDocument.nEnd(nIndex);
    for (uint32_t i = nIndex + 1; i < nEnd;) {
        uint32_t nValue = i + 1; // a key is one word
        std::string_view sKey = rDocument.svString(i);
        if (tabName.size() <= sKey.size())
            tabName.resize(sKey.size() + 1);
        size_t nLength = s_nDecode(sKey, tabName.data());
        tabName[nLength] = L'\0';
        eVISITEJSON eAnswer =
            clVisiteur.veVisiteMembre(CNomStandard(tabName.data(), nLength),
                                      STLevel::s_rHandle(clLevel->clElement, rDocument, nValue));
        if (eAnswer == VISITE_ARRET)
            return false;
        // The value goes on this level: the member's handle is the only thing the visitor
        // was shown here.
        if (eAnswer == VISITE_DESCEND && !bVisitNode(*clLevel, rDocument, nValue, clVisiteur))
            return false;
        i = rDocument.nNext(nValue);
    }
    return true;
}

bool CJSONWalk::bWalkArray(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    uint32_t nEnd = rDocument.nEnd(nIndex);
    for (uint32_t i = nIndex + 1; i < nEnd; i = rDocument.nNext(i)) {
        eVISITEJSON eAnswer =
            clVisiteur.veVisiteElement(STLevel::s_rHandle(clLevel->clElement, rDocument, i));
        if (eAnswer == VISITE_ARRET)
            return false;
        if (eAnswer == VISITE_DESCEND && !bVisitNode(*clLevel, rDocument, i, clVisiteur))
            return false;
    }
    return true;
}

void CJSONWalk::s_SetText(CAny& clValue, std::string_view sUtf8) {
    // A text never has more characters than bytes.
    size_t nRoom = sUtf8.size() * sizeof(wchar_t);
    wchar_t* pBlock = nullptr;
    if (clValue.nGetType() == 16)
        std::memcpy(&pBlock, clValue.pGetValeur(), sizeof pBlock); // the value's counted block
    if (pBlock && KVBloc::nRef(pBlock) == 1 && KVBloc::nCapacite(pBlock) >= nRoom) {
        size_t nLength = s_nDecode(sUtf8, pBlock);
        KVBloc::pEntete(pBlock)->nTaille = static_cast<uint32_t>(nLength * sizeof(wchar_t));
        pBlock[nLength] = L'\0';
        return;
    }
    CXYString<wchar_t> sText;
    if (!KV_bSucces(sText.nReserve(sUtf8.size()))) {
        // No room for the text: the visitor still sees a text, empty, never garbage.
        clValue.SetString(CXYString<wchar_t>());
        return;
    }
    if (wchar_t* pBuffer = sText.pGetTampon())
        sText.FixeLongueur(s_nDecode(sUtf8, pBuffer));
    clValue.SetString(sText);
}

bool CJSONWalk::s_bValue(const CJSONDocument& rDocument, uint32_t nIndex, CAny& clValue) {
    switch (rDocument.nType(nIndex)) {
    case CJSONDocument::knString:
        s_SetText(clValue, rDocument.svString(nIndex));
        return true;
    case CJSONDocument::knInt64:
        clValue.SetINT_64(rDocument.nInt64(nIndex));
        return true;
    case CJSONDocument::knUint64:
        // Past the signed range: only a real holds it.
        clValue.SetREAL(static_cast<double>(rDocument.nUint64(nIndex)));
        return true;
    case CJSONDocument::knDouble:
        clValue.SetREAL(rDocument.rDouble(nIndex));
        return true;
    case CJSONDocument::knTrue:
    case CJSONDocument::knFalse:
        clValue.SetBool(rDocument.nType(nIndex) == CJSONDocument::knTrue);
        return true;
    case CJSONDocument::knNull:
        clValue.Vide();
        return true;
    default:
        return false;
    }
}
