// CHostJSONService: the host's "ContenuJSON", IContenuJSON over simdjson. Parses UTF-8 text into
// a document shared by the node handles it gives; the walk is CJSONWalk's.
#pragma once
#include "Counted.h"
#include "JSONService.h"
#include "XError.h"

#include <cstddef>

class CHostJSONService final : public CCounted<IContenuJSON> {
public:
    // Texts past this many bytes are refused before parsing; a host option.
    static constexpr size_t knDefaultMaxSize = 256u << 20;

    explicit CHostJSONService(size_t nMaxSize = knDefaultMaxSize);
    ~CHostJSONService() override;

    IElementJSON* vpiAnalyse(const char* pText, size_t nSize, CXError* pclErreur) override;

private:
    size_t m_nMaxSize;
};
