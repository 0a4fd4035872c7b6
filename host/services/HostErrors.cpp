#include "HostErrors.h"

#include "Utf8.h"
#include "XError.h"

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace KVHost {

void SetError(CXError& clError, eHOSTERROR eCode, std::string_view sMessage,
              std::string_view sDetail) {
    // Without a module record the level would be 3, a fault of the process; a refused
    // connection or a bad answer is an ordinary error of the call.
    clError.SetUserErrorMessage(nullptr, eCode, KVUtf8::VersWide(sMessage).c_str());
    clError.SetErrorLevel(ELEVEL_ERREUR);
    if (!sDetail.empty()) {
        std::string sDebug = "##";
        sDebug.append(sDetail).append("##");
        clError.AddDebugMessageNoFormat(KVUtf8::VersWide(sDebug).c_str());
    }
}

namespace {

struct STTransportFailure {
    eHOSTERROR eCode;
    std::string sMessage;
    std::chrono::steady_clock::time_point tWhen;
};
std::mutex gmutexFailures;
std::map<std::string, STTransportFailure, std::less<>> gmapFailures;
constexpr auto kRecent = std::chrono::minutes(1);

} // namespace

void NoteTransportFailure(std::string_view svHost, eHOSTERROR eCode, std::string_view svMessage) {
    std::lock_guard guard(gmutexFailures);
    gmapFailures.insert_or_assign(
        std::string(svHost),
        STTransportFailure{eCode, std::string(svMessage), std::chrono::steady_clock::now()});
}

void ClearTransportFailure(std::string_view svHost) {
    std::lock_guard guard(gmutexFailures);
    if (auto it = gmapFailures.find(svHost); it != gmapFailures.end())
        gmapFailures.erase(it);
}

bool bRecentTransportFailure(std::string_view svHost, eHOSTERROR& eCode, std::string& sMessage) {
    std::lock_guard guard(gmutexFailures);
    auto it = gmapFailures.find(svHost);
    if (it == gmapFailures.end() || std::chrono::steady_clock::now() - it->second.tWhen > kRecent)
        return false;
    eCode = it->second.eCode;
    sMessage = it->second.sMessage;
    return true;
}

} // namespace KVHost
