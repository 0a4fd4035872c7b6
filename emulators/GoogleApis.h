// CGoogleApis: www.googleapis.com itself. Each API under that host is a service of its own,
// mounted on its path prefix in the service table (/calendar/v3/, later /drive/v3/ ...), so the
// longest prefix routes a request to its API; this service takes the paths that none of them
// claims. It also holds what the APIs of the host share: Google's JSON errors for a missing
// resource and a refused parameter, and entity tags.
#pragma once
#include <memory>
#include <string>
#include <string_view>

#include "Service.h"

class CEmulator;

class CGoogleApis : public IService {
public:
    static constexpr const char* ms_pszHost = "www.googleapis.com";

    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override {}
    void vHandle(const STRequest& req, STResponse& res) override;

    // 404 {"error": {"code": 404, "message": "Not Found", "errors": [...], "status": "NOT_FOUND"}}:
    // an unknown path, a method the path does not take, or a resource that does not exist.
    static void s_WriteNotFound(STResponse& res);
    // 400 "Invalid Value" for a query parameter the API refuses; the error item names it.
    static void s_WriteInvalidParameter(STResponse& res, std::string_view svName);
    // An entity tag as Google writes it, a quoted number ("\"1651839200839000\""), derived from
    // the content so that the same data keeps the same tag across resets and runs.
    static std::string s_sEtag(std::string_view svContent);
};
