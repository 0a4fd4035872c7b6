// The type codes by name, from the rows of AnyTypes.def: the codes of CAny values and those that
// only signatures and returned values carry.
#pragma once
#include <cstdint>

enum eKVTYPE : uint16_t {
    KVTYPE_NONE = 0, // the empty value
#define KV_ANY_TYPE(nCode, NOM, GENRE, T) KVTYPE_##NOM = nCode,
#define KV_ANY_ALIAS(nCode, NOM) KVTYPE_##NOM##_##nCode = nCode,
#define KV_ANY_SIGNATURE(nCode, NOM) KVTYPE_##NOM = nCode,
#include "AnyTypes.def"
};

// Bit 15 of a signature code: a qualifier kept as it stands (int*, text*, datetime*).
inline constexpr uint16_t knKVTypeStarred = 0x8000;
