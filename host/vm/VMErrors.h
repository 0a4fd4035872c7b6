// The codes of the errors that the host's VM writes (host/vm): the host's own range, next to
// those of the services (HostErrors.h, 7010xx to 7030xx). Append-only.
#pragma once
#include <string_view>

class CXError;

enum eVMERROR : unsigned {
    VMERROR_FUNCTION_UNAVAILABLE = 704001, // a host function the VM does not offer
    VMERROR_BAD_PARAMETERS = 704002,       // a host function called with what it cannot take
    VMERROR_ARRAY_INDEX = 704003,          // an array index out of range
    VMERROR_ARRAY_TYPE = 704004,           // a value an array cannot hold
    VMERROR_NO_SERVICE = 704005,           // a service of the VM it does not have
    VMERROR_MEMORY = 704006,               // the allocator refused
};

namespace KVHostVM {
// Code, English message, level 2.
void SetError(CXError* pclErreur, eVMERROR eCode, std::string_view svMessage);
} // namespace KVHostVM
