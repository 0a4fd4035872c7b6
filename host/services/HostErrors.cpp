#include "HostErrors.h"

#include "Utf8.h"
#include "XError.h"

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

} // namespace KVHost
