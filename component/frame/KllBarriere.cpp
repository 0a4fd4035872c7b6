#include "frame/KllBarriere.h"

#include "XError.h"

#include <cwchar>

void KllErreurMemoire(CXError* pclErreur) noexcept {
    if (pclErreur)
        pclErreur->SetErrorNoMemory();
}

void KllErreurInterne(CXError* pclErreur, const char* pszQuoi) noexcept {
    if (!pclErreur)
        return;
    // The text is copied into a fixed buffer first: no allocation on the way out of a failure
    // that may have been one.
    wchar_t szTexte[256];
    std::swprintf(szTexte, std::size(szTexte), L"##internal error: %s##",
                  pszQuoi && *pszQuoi ? pszQuoi : "unknown exception");
    pclErreur->SetErrorLevel(ELEVEL_GRAVE);
    pclErreur->AddDebugMessageNoFormat(szTexte);
}
