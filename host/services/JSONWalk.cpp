#include "JSONWalk.h"

#include "AnyTypes.h"
#include "CountedBlock.h"
#include "JSONArray.h"
#include "JSONElement.h"
#include "JSONObject.h"
#include "KVResult.h"
#include "XYString.h"

#include <atomic>
#include <cstring>

// The leaf values of one level, and the handles it shows. A value for each kind of leaf, so
// that a value keeps its type from one leaf to the next and is set without changing it.
struct CJSONWalk::STLevel {
    CRef<CJSONElement> clElement;
    CRef<CJSONObject> clObject;
    CRef<CJSONArray> clArray;
    CAny clText; // its block serves text after text
    CAny clBoolean;
    CAny clInteger;
    CAny clReal;
    CAny clNull;
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
    // Room for a name of nBytes bytes of UTF-8 and its terminator.
    wchar_t* pNameRoom(size_t nBytes) {
        if (tabName.size() <= nBytes)
            tabName.resize(nBytes + 1);
        return tabName.data();
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

inline void CJSONWalk::s_PutText(CAny& clValue, std::string_view sUtf8) {
    // A text never has more characters than bytes.
    wchar_t* pBlock = nullptr;
    if (clValue.nGetType() == KVTYPE_KLDSTRW)
        std::memcpy(&pBlock, clValue.pGetValeur(), sizeof pBlock); // the value's counted block
    if (pBlock && KVBloc::nRef(pBlock) == 1 &&
        KVBloc::nCapacite(pBlock) >= sUtf8.size() * sizeof(wchar_t)) {
        // Whatever the last other owner did with the block happened before it let go.
        std::atomic_thread_fence(std::memory_order_acquire);
        size_t nLength = s_nDecode(sUtf8, pBlock);
        KVBloc::pEntete(pBlock)->nTaille = static_cast<uint32_t>(nLength * sizeof(wchar_t));
        pBlock[nLength] = L'\0';
        return;
    }
    s_SetTextNew(clValue, sUtf8);
}

// Inline in the loops of the containers: most nodes of a reply are leaves, shown with no call
// but the visitor's.
inline bool CJSONWalk::bVisitNode(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                                  IVisiteurJSON& clVisiteur) {
    CAny* pclValue;
    switch (rDocument.nType(nIndex)) {
    case CJSONDocument::knString:
        s_PutText(rLevel.clText, rDocument.svString(nIndex));
        pclValue = &rLevel.clText;
        break;
    case CJSONDocument::knTrue:
    case CJSONDocument::knFalse:
        rLevel.clBoolean.SetBool(rDocument.nType(nIndex) == CJSONDocument::knTrue);
        pclValue = &rLevel.clBoolean;
        break;
    case CJSONDocument::knInt64:
        rLevel.clInteger.SetINT_64(rDocument.nInt64(nIndex));
        pclValue = &rLevel.clInteger;
        break;
    case CJSONDocument::knUint64:
        // Past the signed range: only a real holds it.
        rLevel.clReal.SetREAL(static_cast<double>(rDocument.nUint64(nIndex)));
        pclValue = &rLevel.clReal;
        break;
    case CJSONDocument::knDouble:
        rLevel.clReal.SetREAL(rDocument.rDouble(nIndex));
        pclValue = &rLevel.clReal;
        break;
    case CJSONDocument::knNull:
        rLevel.clNull.Vide();
        pclValue = &rLevel.clNull;
        break;
    default:
        return bVisitContainer(rLevel, rDocument, nIndex, clVisiteur);
    }
    return clVisiteur.veVisiteValeur(*pclValue) != VISITE_ARRET;
}

bool CJSONWalk::bVisitContainer(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                                IVisiteurJSON& clVisiteur) {
    eVISITEJSON eAnswer;
    if (rDocument.nType(nIndex) == CJSONDocument::knObject) {
        eAnswer = clVisiteur.veVisiteObjet(STLevel::s_rHandle(rLevel.clObject, rDocument, nIndex));
        if (eAnswer == VISITE_DESCEND)
            return bWalkObject(rDocument, nIndex, clVisiteur);
    } else {
        eAnswer = clVisiteur.veVisiteTableau(STLevel::s_rHandle(rLevel.clArray, rDocument, nIndex));
        if (eAnswer == VISITE_DESCEND)
            return bWalkArray(rDocument, nIndex, clVisiteur);
    }
    return eAnswer != VISITE_ARRET;
}

bool CJSONWalk::bVisit(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    return bVisitNode(*clLevel, rDocument, nIndex, clVisiteur);
}

bool CJSONWalk::bWalkObject(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    STLevel& rLevel = *clLevel;
    uint32_t nEnd = rDocument.nEnd(nIndex);
    for (uint32_t i = nIndex + 1; i < nEnd;) {
        uint32_t nValue = i + 1; // a key is one word
        std::string_view sKey = rDocument.svString(i);
        wchar_t* pName = rLevel.pNameRoom(sKey.size());
        size_t nLength = s_nDecode(sKey, pName);
        pName[nLength] = L'\0';
        eVISITEJSON eAnswer = clVisiteur.veVisiteMembre(
            CNomStandard(pName, nLength), STLevel::s_rHandle(rLevel.clElement, rDocument, nValue));
        if (eAnswer == VISITE_ARRET)
            return false;
        // The value goes on this level: the member's handle is the only thing the visitor
        // was shown here.
        if (eAnswer == VISITE_DESCEND && !bVisitNode(rLevel, rDocument, nValue, clVisiteur))
            return false;
        i = rDocument.nNext(nValue);
    }
    return true;
}

bool CJSONWalk::bWalkArray(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur) {
    CLevelScope clLevel(*this);
    STLevel& rLevel = *clLevel;
    uint32_t nEnd = rDocument.nEnd(nIndex);
    for (uint32_t i = nIndex + 1; i < nEnd; i = rDocument.nNext(i)) {
        eVISITEJSON eAnswer =
            clVisiteur.veVisiteElement(STLevel::s_rHandle(rLevel.clElement, rDocument, i));
        if (eAnswer == VISITE_ARRET)
            return false;
        if (eAnswer == VISITE_DESCEND && !bVisitNode(rLevel, rDocument, i, clVisiteur))
            return false;
    }
    return true;
}

void CJSONWalk::s_SetText(CAny& clValue, std::string_view sUtf8) {
    s_PutText(clValue, sUtf8);
}

void CJSONWalk::s_SetTextNew(CAny& clValue, std::string_view sUtf8) {
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

size_t CJSONWalk::s_nDecodeMixed(const unsigned char* p, const unsigned char* pEnd, wchar_t* pOut) {
    wchar_t* pStart = pOut;
    while (p < pEnd) {
#ifdef KVGGL_JSON_DECODE_SSE2
        // Runs of ASCII between the other characters, sixteen bytes at a time.
        while (pEnd - p >= 16) {
            __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            if (_mm_movemask_epi8(v))
                break;
            s_Widen16(v, pOut);
            p += 16;
            pOut += 16;
        }
#endif
        while (p < pEnd && *p < 0x80)
            *pOut++ = static_cast<wchar_t>(*p++);
        if (p >= pEnd)
            break;
        unsigned c = *p;
        if (c < 0xE0) {
            *pOut++ = static_cast<wchar_t>(((c & 0x1F) << 6) | (p[1] & 0x3F));
            p += 2;
        } else if (c < 0xF0) {
            *pOut++ =
                static_cast<wchar_t>(((c & 0x0F) << 12) | ((p[1] & 0x3F) << 6) | (p[2] & 0x3F));
            p += 3;
        } else {
            *pOut++ = static_cast<wchar_t>(((c & 0x07) << 18) | ((p[1] & 0x3F) << 12) |
                                           ((p[2] & 0x3F) << 6) | (p[3] & 0x3F));
            p += 4;
        }
    }
    return static_cast<size_t>(pOut - pStart);
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
