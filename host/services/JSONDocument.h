// CJSONDocument: one parsed JSON text, shared by every node handle made over it. simdjson's DOM
// leaves the parse on a tape of 64-bit words (its documented layout: a type letter in the top
// byte, a payload below; containers carry the index past their end and their count); the
// handles walk that tape by index, so a node is a document and a number, and the walk reads
// words in order without building a tree of its own. Only this class's source sees simdjson.
#pragma once
#include "Counted.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

class CXError;
namespace simdjson::dom {
class document;
}

class CJSONDocument final : public CCounted<> {
public:
    // Letters of the tape words.
    static constexpr unsigned char knRoot = 'r';
    static constexpr unsigned char knObject = '{';
    static constexpr unsigned char knObjectEnd = '}';
    static constexpr unsigned char knArray = '[';
    static constexpr unsigned char knArrayEnd = ']';
    static constexpr unsigned char knString = '"';
    static constexpr unsigned char knInt64 = 'l';
    static constexpr unsigned char knUint64 = 'u';
    static constexpr unsigned char knDouble = 'd';
    static constexpr unsigned char knTrue = 't';
    static constexpr unsigned char knFalse = 'f';
    static constexpr unsigned char knNull = 'n';
    // The index of the root value.
    static constexpr uint32_t knRootIndex = 1;

    // The document of nSize bytes of UTF-8 text, count 1; null with the cause in the error
    // when the text is not JSON, nests deeper than the parser allows, or passes nMaxSize.
    static CJSONDocument* s_pclParse(const char* pText, size_t nSize, size_t nMaxSize,
                                     CXError* pclErreur);

    unsigned char nType(uint32_t i) const { return static_cast<unsigned char>(m_pTape[i] >> 56); }
    // The index of the node after the one at i, its contents skipped.
    uint32_t nNext(uint32_t i) const {
        switch (nType(i)) {
        case knObject:
        case knArray:
            return static_cast<uint32_t>(m_pTape[i]);
        case knInt64:
        case knUint64:
        case knDouble:
            return i + 2;
        default:
            return i + 1;
        }
    }
    // Members of an object, elements of an array; counted on the tape beyond the stored limit.
    uint32_t nCount(uint32_t i) const;
    // The index of the closing word of the container at i.
    uint32_t nEnd(uint32_t i) const { return static_cast<uint32_t>(m_pTape[i]) - 1; }
    // A string node's bytes, UTF-8, checked by the parser.
    std::string_view svString(uint32_t i) const {
        const uint8_t* p = m_pStrings + (m_pTape[i] & knValueMask);
        uint32_t nLength;
        std::memcpy(&nLength, p, sizeof(nLength));
        return {reinterpret_cast<const char*>(p + sizeof(nLength)), nLength};
    }
    int64_t nInt64(uint32_t i) const { return s_Read<int64_t>(m_pTape + i + 1); }
    uint64_t nUint64(uint32_t i) const { return s_Read<uint64_t>(m_pTape + i + 1); }
    double rDouble(uint32_t i) const { return s_Read<double>(m_pTape + i + 1); }

private:
    static constexpr uint64_t knValueMask = 0x00FFFFFFFFFFFFFFull;
    static constexpr uint32_t knCountSaturated = 0xFFFFFF;

    CJSONDocument();
    ~CJSONDocument() override;
    template <class T> static T s_Read(const uint64_t* p) {
        T x;
        std::memcpy(&x, p, sizeof(x));
        return x;
    }

    std::unique_ptr<simdjson::dom::document> m_pDocument;
    const uint64_t* m_pTape = nullptr;
    const uint8_t* m_pStrings = nullptr;
};
