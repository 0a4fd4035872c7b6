// The exception barrier of the C boundary. Nothing thrown inside the component may reach the
// host: every stub and entry point runs its body through KllSousBarriere, which turns what the
// standard library may throw into an error of the call. Out of memory is the error with no
// memory; anything else is an internal error that carries the exception's text.
#pragma once
#include <exception>
#include <new>

class CXError;

// Level 3 and the text between debug marks, so that a report shows where it came from.
void KllErreurInterne(CXError* pclErreur, const char* pszQuoi) noexcept;
void KllErreurMemoire(CXError* pclErreur) noexcept;

template <class F> void KllSousBarriere(CXError* pclErreur, F&& f) noexcept {
    try {
        f();
    } catch (const std::bad_alloc&) {
        KllErreurMemoire(pclErreur);
    } catch (const std::exception& e) {
        KllErreurInterne(pclErreur, e.what());
    } catch (...) {
        KllErreurInterne(pclErreur, nullptr);
    }
}

// The same for a body that answers a value: on an exception the answer is vEchec.
template <class R, class F> R KllSousBarriere(CXError* pclErreur, R vEchec, F&& f) noexcept {
    R vResultat = vEchec;
    KllSousBarriere(pclErreur, [&] { vResultat = f(); });
    return vResultat;
}
