#include "HostOutcome.h"

#include "Utf8.h"
#include "XError.h"

void STHostOutcome::TakeError(const CXError& clErreur) {
    if (clErreur.bEstPropre())
        return;
    bError = true;
    nCode = clErreur.nGetUserErrorCode();
    nLevel = clErreur.nGetErrorLevel();
    sMessage = KVUtf8::VersUtf8(clErreur.pszGetUserMessage());
    sDebug = KVUtf8::VersUtf8(clErreur.pszGetDebugMessage());
}

bool STHostOutcome::bRefuse(std::string s) {
    sRefusal = std::move(s);
    return false;
}
