// STManipAUB: a value that may be text or bytes, as a "string or buffer" parameter arrives.
// Two 64-bit words and a 16-bit type: the address of the first byte, the size in bytes, and
// the type code of what is held (16 wide text, 19 narrow text, 28 bytes).
#pragma once
#include "AnyTypes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

struct STManipAUB {
    uint64_t qwAdresse;
    uint64_t qwTaille;
    uint16_t nType;

    const void* pGetDonnees() const { return reinterpret_cast<const void*>(qwAdresse); }
    size_t nGetTaille() const { return static_cast<size_t>(qwTaille); }
    bool bEstTexteUnicode() const { return nType == KVTYPE_KLDSTRW; }
    std::string_view svOctets() const {
        return {static_cast<const char*>(pGetDonnees()), nGetTaille()};
    }
};
static_assert(sizeof(STManipAUB) == 24 && offsetof(STManipAUB, nType) == 16);

// Options of a conversion; a null pointer stands for the defaults.
struct STOCAW {
    uint32_t nTaille;
    uint32_t dwOptions;
};
