#include "VMErrors.h"

#include "Utf8.h"
#include "XError.h"

namespace KVHostVM {

void SetError(CXError* pclErreur, eVMERROR eCode, std::string_view svMessage) {
    if (!pclErreur)
        return;
    pclErreur->SetUserErrorMessage(nullptr, eCode, KVUtf8::VersWide(svMessage).c_str());
    pclErreur->SetErrorLevel(ELEVEL_ERREUR);
}

} // namespace KVHostVM
