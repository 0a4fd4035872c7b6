// The error object of this module. Its vtable, and so the string operations in it, are this
// module's: an error made here frees its texts here, whichever side releases it.
#pragma once
#include "XError.h"

class _CXErrorModule60 final : public CXError {
public:
    _CXErrorModule60();
};
