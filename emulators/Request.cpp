#include "Request.h"

#include "Text.h"

const std::string* STRequest::pHeader(std::string_view svName) const {
    for (const auto& [sName, sValue] : tabHeaders)
        if (CText::s_bIEquals(sName, svName))
            return &sValue;
    return nullptr;
}
