// CJSONWalk: the walk of a parsed JSON text under a visitor, in document order, with the three
// answers of eVISITEJSON. One walker per thread serves every vAccepte on that thread, nested
// ones included (a visitor commonly has the object it was shown accept it in turn): each level
// of the walk has its own handles and values, so nothing a visitor is looking at changes under
// it, and what a level hands out is reused for the next node when the visitor kept no
// reference to it. A stop ends the walk of the vAccepte call it happened in.
#pragma once
#include "Any.h"
#include "JSONDocument.h"
#include "JSONService.h"
#include "Ref.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string_view>
#include <vector>
#if defined(__SSE2__) && WCHAR_MAX > 0xFFFF
#include <emmintrin.h>
#define KVGGL_JSON_DECODE_SSE2 1
#endif

class CJSONElement;
class CJSONObject;
class CJSONArray;

class CJSONWalk {
public:
    CJSONWalk(const CJSONWalk&) = delete;
    CJSONWalk& operator=(const CJSONWalk&) = delete;

    // The calling thread's walker.
    static CJSONWalk& s_rCurrent();

    // The node itself: a value, an object or an array shown to the visitor, then, on
    // VISITE_DESCEND, its contents. False when the visitor stopped the walk.
    bool bVisit(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur);
    bool bWalkObject(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur);
    bool bWalkArray(CJSONDocument& rDocument, uint32_t nIndex, IVisiteurJSON& clVisiteur);

    // The value of a leaf as the visitor receives it: text 16, integer 9, other numbers 12,
    // booleans 1, null empty. False for an object or an array.
    static bool s_bValue(const CJSONDocument& rDocument, uint32_t nIndex, CAny& clValue);
    // UTF-8 checked by the parser into a text value. When the value already holds a text that
    // nobody else shares and that has the room, the characters are written over it in place.
    static void s_SetText(CAny& clValue, std::string_view sUtf8);
    // Decodes UTF-8 checked by the parser; pOut has room for sUtf8.size() characters, and
    // nothing is written past them. The number of characters written.
    static size_t s_nDecode(std::string_view sUtf8, wchar_t* pOut);

private:
    struct STLevel;
    class CLevelScope;

    CJSONWalk();
    ~CJSONWalk();
    STLevel& rEnter() {
        return m_nLevels < m_tabLevels.size() ? *m_tabLevels[m_nLevels++] : rGrow();
    }
    STLevel& rGrow();
    void Leave();
    // bVisit with the handles and values of a level already taken: leaves there, containers
    // by bVisitContainer.
    bool bVisitNode(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                    IVisiteurJSON& clVisiteur);
    bool bVisitContainer(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                         IVisiteurJSON& clVisiteur);
    // s_SetText, inline for the walk's loops, and its road when the value's block cannot take
    // the text: a new block.
    static void s_PutText(CAny& clValue, std::string_view sUtf8);
    static void s_SetTextNew(CAny& clValue, std::string_view sUtf8);
    // The general decoder, from the first byte that is not ASCII or that the short cases of
    // s_nDecode leave to it.
    static size_t s_nDecodeMixed(const unsigned char* p, const unsigned char* pEnd, wchar_t* pOut);
#ifdef KVGGL_JSON_DECODE_SSE2
    // ASCII bytes widened to characters: sixteen, the low eight, the low four of v.
    static void s_Widen16(__m128i v, wchar_t* pOut);
    static void s_Widen8(__m128i v, wchar_t* pOut);
    static void s_Widen4(__m128i v, wchar_t* pOut);
#endif

    std::vector<std::unique_ptr<STLevel>> m_tabLevels;
    size_t m_nLevels = 0; // levels in use
};

#ifdef KVGGL_JSON_DECODE_SSE2
inline void CJSONWalk::s_Widen16(__m128i v, wchar_t* pOut) {
    const __m128i vZero = _mm_setzero_si128();
    __m128i vLow = _mm_unpacklo_epi8(v, vZero);
    __m128i vHigh = _mm_unpackhi_epi8(v, vZero);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut), _mm_unpacklo_epi16(vLow, vZero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 4), _mm_unpackhi_epi16(vLow, vZero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 8), _mm_unpacklo_epi16(vHigh, vZero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 12), _mm_unpackhi_epi16(vHigh, vZero));
}
inline void CJSONWalk::s_Widen8(__m128i v, wchar_t* pOut) {
    const __m128i vZero = _mm_setzero_si128();
    __m128i vLow = _mm_unpacklo_epi8(v, vZero);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut), _mm_unpacklo_epi16(vLow, vZero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 4), _mm_unpackhi_epi16(vLow, vZero));
}
inline void CJSONWalk::s_Widen4(__m128i v, wchar_t* pOut) {
    const __m128i vZero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut),
                     _mm_unpacklo_epi16(_mm_unpacklo_epi8(v, vZero), vZero));
}
#endif

// Inline, since the walk decodes two texts per member, most of them short and ASCII. ASCII
// texts of four bytes or more are read in two overlapping pieces (the first and the last four,
// eight or sixteen bytes), written as two overlapping runs of characters: no byte is read
// outside the text, no character written outside the room, and a byte read twice gives the
// same character twice. Anything else goes to the general decoder.
inline size_t CJSONWalk::s_nDecode(std::string_view sUtf8, wchar_t* pOut) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(sUtf8.data());
    const size_t n = sUtf8.size();
#ifdef KVGGL_JSON_DECODE_SSE2
    if (n >= 16) {
        size_t i = 0;
        do {
            __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            if (_mm_movemask_epi8(v))
                return i + s_nDecodeMixed(p + i, p + n, pOut + i);
            s_Widen16(v, pOut + i);
            i += 16;
        } while (n - i >= 16);
        if (i < n) {
            // Bytes before i are ASCII: a sequence that is not starts at i or after.
            __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n - 16));
            if (_mm_movemask_epi8(v))
                return i + s_nDecodeMixed(p + i, p + n, pOut + i);
            s_Widen16(v, pOut + n - 16);
        }
        return n;
    }
    if (n >= 8) {
        __m128i vHead = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        __m128i vTail = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 8));
        if (!_mm_movemask_epi8(_mm_or_si128(vHead, vTail))) {
            s_Widen8(vHead, pOut);
            s_Widen8(vTail, pOut + n - 8);
            return n;
        }
    } else if (n >= 4) {
        uint32_t nHead, nTail;
        std::memcpy(&nHead, p, sizeof nHead);
        std::memcpy(&nTail, p + n - 4, sizeof nTail);
        if (!((nHead | nTail) & 0x80808080u)) {
            s_Widen4(_mm_cvtsi32_si128(static_cast<int>(nHead)), pOut);
            s_Widen4(_mm_cvtsi32_si128(static_cast<int>(nTail)), pOut + n - 4);
            return n;
        }
    } else {
        size_t i = 0;
        for (; i < n && p[i] < 0x80; ++i)
            pOut[i] = static_cast<wchar_t>(p[i]);
        if (i == n)
            return n;
    }
#endif
    return s_nDecodeMixed(p, p + n, pOut);
}
