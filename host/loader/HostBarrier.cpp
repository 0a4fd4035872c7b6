#include "HostBarrier.h"

#include "XError.h"

#include <cwchar>
#include <exception>
#include <new>

namespace KVHost {

void SetCaughtError(CXError* pclError) noexcept {
    if (!pclError)
        return;
    // The text goes through a fixed buffer: the message must not need the memory that ran out.
    wchar_t szMessage[256] = L"The host failed inside a callback";
    try {
        throw;
    } catch (const std::bad_alloc&) {
        pclError->SetErrorNoMemory();
        return;
    } catch (const std::exception& e) {
        // A text the C locale cannot convert leaves the sentence without it.
        if (std::swprintf(szMessage, sizeof szMessage / sizeof *szMessage,
                          L"The host failed inside a callback: %s", e.what()) < 0)
            std::wcscpy(szMessage, L"The host failed inside a callback");
    } catch (...) {
    }
    pclError->SetUserErrorMessage(nullptr, knHostInternalError, szMessage);
    pclError->SetErrorLevel(ELEVEL_ERREUR);
}

} // namespace KVHost
