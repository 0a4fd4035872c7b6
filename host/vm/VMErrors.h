// The codes of the errors that the host's VM writes (host/vm): the host's own range, next to
// those of the services (HostErrors.h, 7010xx to 7030xx). Append-only.
#pragma once
#include <string_view>

class CXError;

enum eVMERROR : unsigned {
    VMERROR_FUNCTION_UNAVAILABLE = 708001, // a host function the VM does not offer
    VMERROR_BAD_PARAMETERS = 708002,       // a host function called with what it cannot take
    VMERROR_ARRAY_INDEX = 708003,          // an array index out of range
    VMERROR_ARRAY_TYPE = 708004,           // a value an array cannot hold
    VMERROR_NO_SERVICE = 708005,           // a service of the VM it does not have
    VMERROR_MEMORY = 708006,               // the allocator refused
};

namespace KVHostVM {
// Code, English message, level 2.
void SetError(CXError* pclErreur, eVMERROR eCode, std::string_view svMessage);
} // namespace KVHostVM
