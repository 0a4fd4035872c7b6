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

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>
#ifdef __SSE2__
#include <emmintrin.h>
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
    // Decodes UTF-8 checked by the parser; pOut has room for sUtf8.size() characters. The
    // number of characters written.
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
    // bVisit with the handles and values of a level already taken.
    bool bVisitNode(STLevel& rLevel, CJSONDocument& rDocument, uint32_t nIndex,
                    IVisiteurJSON& clVisiteur);

    std::vector<std::unique_ptr<STLevel>> m_tabLevels;
    size_t m_nLevels = 0; // levels in use
};

// Inline, since the walk decodes two texts per member, most of them short.
inline size_t CJSONWalk::s_nDecode(std::string_view sUtf8, wchar_t* pOut) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(sUtf8.data());
    const unsigned char* pEnd = p + sUtf8.size();
    wchar_t* pStart = pOut;
    while (p < pEnd) {
#ifdef __SSE2__
        // Runs of ASCII, most of any reply, sixteen bytes at a time. Never more characters
        // than bytes are written, so the room the caller gives suffices.
        const __m128i vZero = _mm_setzero_si128();
        while (pEnd - p >= 16) {
            __m128i vBytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            if (_mm_movemask_epi8(vBytes))
                break;
            __m128i vLow = _mm_unpacklo_epi8(vBytes, vZero);
            __m128i vHigh = _mm_unpackhi_epi8(vBytes, vZero);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut), _mm_unpacklo_epi16(vLow, vZero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 4), _mm_unpackhi_epi16(vLow, vZero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 8),
                             _mm_unpacklo_epi16(vHigh, vZero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 12),
                             _mm_unpackhi_epi16(vHigh, vZero));
            p += 16;
            pOut += 16;
        }
        // The last bytes of a run: the eight that end the text, decoded again over what was
        // already written when they are all ASCII, since each of them then stands for one
        // character just before.
        size_t nLeft = static_cast<size_t>(pEnd - p);
        if (nLeft > 0 && nLeft < 16 && sUtf8.size() >= 8) {
            const unsigned char* pLast = nLeft >= 8 ? p : pEnd - 8;
            __m128i vBytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pLast));
            if (!(_mm_movemask_epi8(vBytes) & 0xFF)) {
                wchar_t* pAt = pOut - (p - pLast);
                __m128i vLow = _mm_unpacklo_epi8(vBytes, vZero);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pAt), _mm_unpacklo_epi16(vLow, vZero));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pAt + 4),
                                 _mm_unpackhi_epi16(vLow, vZero));
                pOut = pAt + 8;
                p = pLast + 8;
            }
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
