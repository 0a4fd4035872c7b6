// The host's side of the exception barrier: no C++ exception leaves a host callback for the
// component, nor any entry the component calls. Each body that may throw runs through
// KVHost::Guard, which turns what the standard library throws into a failure result: out of
// memory is the error with no memory, anything else HOSTERROR_INTERNAL with the exception's
// text, and the callback answers its failure value.
#pragma once
#include <utility>

class CXError;

namespace KVHost {

// A C++ exception stopped a host callback (the host's own range, apart from the services').
constexpr unsigned knHostInternalError = 700001;

// Writes the exception being handled into the error (when there is one). Call it only from a
// catch block.
void SetCaughtError(CXError* pclError) noexcept;

template <class R, class F> R Guard(CXError* pclError, R rFail, F&& f) noexcept {
    try {
        return std::forward<F>(f)();
    } catch (...) {
        SetCaughtError(pclError);
    }
    return rFail;
}

template <class F> void Guard(CXError* pclError, F&& f) noexcept {
    try {
        std::forward<F>(f)();
    } catch (...) {
        SetCaughtError(pclError);
    }
}

} // namespace KVHost
