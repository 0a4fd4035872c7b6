// STHostOutcome: what one operation of the host through the component's tables gave back.
// Either the host refused it before anything ran (sRefusal says why, in the words a script
// developer reads: "bad argument #2 to 'GglRequete' (number expected, got table)"), or it
// ran: the value the component returned, and the error it left, if any.
#pragma once
#include "HostValue.h"

#include <string>

class CXError;

struct STHostOutcome {
    CHostValue clValue;
    bool bError = false; // the component left an error
    unsigned nCode = 0;
    int nLevel = 1;
    std::string sMessage; // the user message, UTF-8
    std::string sDebug;   // the debug message, between its ## marks
    std::string sRefusal; // set when the host refused: then nothing ran

    // Takes the error when it is not clean.
    void TakeError(const CXError& clErreur);
    // The refusal, with false, for the caller's return.
    bool bRefuse(std::string s);
};
