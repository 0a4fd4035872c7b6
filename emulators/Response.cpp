#include "Response.h"

#include "JsonValue.h"
#include "Text.h"

void STResponse::SetJson(int nNewStatus, const CJsonValue& v) {
    SetBody(nNewStatus, "application/json; charset=utf-8", v.sSerialize());
}

void STResponse::SetBody(int nNewStatus, std::string_view svContentType, std::string sNewBody) {
    nStatus = nNewStatus;
    sContentType = svContentType;
    sBody = std::move(sNewBody);
}

void STResponse::SetRedirect(std::string sLocation) {
    nStatus = 302;
    sContentType.clear();
    sBody.clear();
    AddHeader("Location", std::move(sLocation));
}

void STResponse::AddHeader(std::string sName, std::string sValue) {
    tabHeaders.emplace_back(std::move(sName), std::move(sValue));
}

const std::string* STResponse::pHeader(std::string_view svName) const {
    for (const auto& [sName, sValue] : tabHeaders)
        if (CText::s_bIEquals(sName, svName))
            return &sValue;
    return nullptr;
}
