#include "GoogleApis.h"

#include <cstdint>

#include "GoogleAccounts.h"
#include "JsonValue.h"
#include "Response.h"

std::unique_ptr<IService> CGoogleApis::s_pCreate(CEmulator&) {
    return std::make_unique<CGoogleApis>();
}

void CGoogleApis::vHandle(const STRequest&, STResponse& res) {
    s_WriteNotFound(res);
}

void CGoogleApis::s_WriteNotFound(STResponse& res) {
    CGoogleAccounts::s_WriteError(res, 404, "NOT_FOUND", "Not Found", "notFound", {});
}

void CGoogleApis::s_WriteInvalidParameter(STResponse& res, std::string_view svName) {
    CJsonValue item = CJsonValue::s_Object();
    item.Set("message", CJsonValue::s_String("Invalid Value"));
    item.Set("domain", CJsonValue::s_String("global"));
    item.Set("reason", CJsonValue::s_String("invalid"));
    item.Set("location", CJsonValue::s_String(std::string(svName)));
    item.Set("locationType", CJsonValue::s_String("parameter"));
    CJsonValue error = CJsonValue::s_Object();
    error.Set("code", CJsonValue::s_Int(400));
    error.Set("message", CJsonValue::s_String("Invalid Value"));
    error.Set("errors", CJsonValue::s_Array().Push(std::move(item)));
    error.Set("status", CJsonValue::s_String("INVALID_ARGUMENT"));
    res.SetJson(400, CJsonValue::s_Object().Set("error", std::move(error)));
}

std::string CGoogleApis::s_sEtag(std::string_view svContent) {
    // FNV-1a: stable everywhere, unlike std::hash.
    uint64_t n = 14695981039346656037ULL;
    for (unsigned char c : svContent) {
        n ^= c;
        n *= 1099511628211ULL;
    }
    // Sixteen digits, the length of the microsecond stamps Google's tags carry.
    return "\"" + std::to_string(1000000000000000ULL + n % 9000000000000000ULL) + "\"";
}
