// Message resources: the lookup record that a module's resource function fills, and the
// loading and formatting functions DLLRES_* over a module's info record.
#pragma once
#include <cstdint>

struct STRessourceModule {
    uint32_t nNumero;
    uint32_t nZero;
    const unsigned char* pbyTexte; // the packed text
    uint32_t nTaille;              // its packed length
    uint32_t nEncodage;            // 1 UTF-8, 2 UTF-16
    int32_t nUtilisation;          // -1 until found
};
