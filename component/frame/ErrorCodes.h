// The component's user error codes by name, from the rows of ErrorDefs.def: the numbers are
// script-visible and never change, the names are for the code that raises them.
#pragma once

enum eKVERROR : unsigned {
#define KV_ERROR_DEF(Nom, nCode, nRessource, nSeverite) KVERR_##Nom = nCode,
#include "ErrorDefs.def"
};

// The rows of the error table.
inline constexpr unsigned knNbErrorDef60 = 0
#define KV_ERROR_DEF(Nom, nCode, nRessource, nSeverite) +1
#include "ErrorDefs.def"
    ;
