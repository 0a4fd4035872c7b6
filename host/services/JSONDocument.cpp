#include "JSONDocument.h"

#include "DataServiceErrors.h"
#include "Ref.h"
#include "Utf8.h"

#include <simdjson.h>

#include <algorithm>
#include <string>

static_assert(simdjson::SIMDJSON_VERSION_MAJOR >= 1,
              "the tape layout read here is that of simdjson 1 on");

namespace {

// One parser per thread: it keeps its working buffers between documents, and a document owns
// its own tape, so the parser is free again as soon as a parse ends.
simdjson::dom::parser& s_rParser() {
    thread_local simdjson::dom::parser s_clParser;
    return s_clParser;
}

} // namespace

CJSONDocument::CJSONDocument() : m_pDocument(std::make_unique<simdjson::dom::document>()) {}
CJSONDocument::~CJSONDocument() = default;

CJSONDocument* CJSONDocument::s_pclParse(const char* pText, size_t nSize, size_t nMaxSize,
                                         CXError* pclErreur) {
    if (!pText && nSize > 0) {
        KVDataService::Fail(pclErreur, DATASERVICE_JSON_SYNTAX, L"No JSON text was given.");
        return nullptr;
    }
    if (nSize > nMaxSize || nSize > simdjson::SIMDJSON_MAXSIZE_BYTES) {
        KVDataService::Fail(
            pclErreur, DATASERVICE_JSON_TOO_LARGE,
            L"The JSON text is " + std::to_wstring(nSize) +
                L" bytes long, more than the limit of " +
                std::to_wstring(std::min<size_t>(nMaxSize, simdjson::SIMDJSON_MAXSIZE_BYTES)) +
                L" bytes.");
        return nullptr;
    }
    CRef<CJSONDocument> clDocument = CRef<CJSONDocument>::Adopt(new (std::nothrow) CJSONDocument());
    if (!clDocument) {
        if (pclErreur)
            pclErreur->SetErrorNoMemory();
        return nullptr;
    }
    simdjson::dom::parser& rParser = s_rParser();
    // The parser's capacity follows the largest document; a parser left huge by one big reply
    // gives its memory back before a small one.
    if (rParser.capacity() > (64u << 20) && nSize < rParser.capacity() / 4) {
        // On failure the parse below asks for what it needs again.
        simdjson::error_code eShrink = rParser.allocate(nSize < 4096 ? 4096 : nSize);
        (void)eShrink;
    }
    auto clResult = rParser.parse_into_document(
        *clDocument->m_pDocument, reinterpret_cast<const uint8_t*>(pText ? pText : ""), nSize,
        true);
    if (clResult.error()) {
        simdjson::error_code eCode = clResult.error();
        if (eCode == simdjson::MEMALLOC) {
            // A parser whose buffers were cut short by memory fails every later document:
            // the next one starts from a fresh parser.
            rParser = simdjson::dom::parser();
            if (pclErreur)
                pclErreur->SetErrorNoMemory();
            return nullptr;
        }
        KVDataService::Fail(
            pclErreur,
            eCode == simdjson::CAPACITY ? DATASERVICE_JSON_TOO_LARGE : DATASERVICE_JSON_SYNTAX,
            L"The text is not valid JSON: " + KVUtf8::VersWide(simdjson::error_message(eCode)),
            L"simdjson error " + std::to_wstring(static_cast<int>(eCode)));
        return nullptr;
    }
    clDocument->m_pTape = clDocument->m_pDocument->tape.get();
    clDocument->m_pStrings = clDocument->m_pDocument->string_buf.get();
    return clDocument.pDetach();
}

uint32_t CJSONDocument::nCount(uint32_t i) const {
    uint32_t nStored = static_cast<uint32_t>((m_pTape[i] >> 32) & knCountSaturated);
    if (nStored < knCountSaturated)
        return nStored;
    bool bObject = nType(i) == knObject;
    uint32_t nContainerEnd = nEnd(i);
    uint32_t n = 0;
    for (uint32_t j = i + 1; j < nContainerEnd; ++n) {
        if (bObject)
            ++j; // the key
        j = nNext(j);
    }
    return n;
}
