// What one row of a .def becomes in the binary tables of abi/Tables.h. Frame/Tables.cpp builds
// the component's tables with these; a test builds the rows of a class of its own the same
// way. The handlers named must be declared before use (weakly, in Tables.cpp).
#pragma once
#include <Tables.h> // the records of abi/, not frame/Tables.h

#include "frame/Kll.h"

// The signature of constructors and of the syntaxes that have none: no item, the end mark.
inline constexpr unsigned char gbyKllSignatureVide[1] = {0};

// Parameters of a signature: its items less the result.
constexpr uint64_t nKllNbParametre(unsigned long nTailleSignature) {
    return (nTailleSignature - 1) / 4 - 1;
}

// KLL_PROPERTY(C, P, T, A): the getter in the slot of plain values or in that of objects; the
// setter and the forced setter only where the access has them.
#define KLL_ROW_PROPERTY(C, P, T, A, nId, nHash, qwFlags)                                          \
    STKLPropriete {                                                                                \
        (nId), (nHash), 0, (qwFlags) | KLL_COMPAT_##A, KLL_TYPE_##T,                               \
            KLL_OBJ_##T ? nullptr : &KLL_##C##_G_##P, KLL_OBJ_##T ? &KLL_##C##_G_##P : nullptr,    \
            KLL_IF_SETTER_##A(&KLL_##C##_S_##P, nullptr),                                          \
            KLL_IF_FORCED_##A(&KLL_##C##_FS_##P, nullptr), KLL_OPTION_PROPRIETE(T, A)              \
    }

// KLL_ACCESSOR(C, N, TR, M).
#define KLL_ROW_ACCESSOR(C, N, TR, M, nId, nHash, qwFlags)                                         \
    STKLAccesseur {                                                                                \
        (nId), (nHash), 0, (qwFlags) | KLL_COMPAT_##M, KLL_TYPE_OBJECT(TR), &KLL_##C##_A_##N,      \
            KLL_OPTION_ACCESSEUR(M)                                                                \
    }

// KLL_CONSTRUCTOR(C, k).
#define KLL_ROW_CONSTRUCTOR(C, k)                                                                  \
    STKLSyntaxe {                                                                                  \
        {.pfnConstructeur = &KLL_##C##_C_##k}, 0, gbyKllSignatureVide, KLL_OPT_CONSTRUCTEUR        \
    }

// KLL_CLASS(C, Number, "type", F), with its tables; a class without properties or accessors
// has a null table.
#define KLL_ROW_CLASS(C, F, nId, pszType, pstConstructeur, nNbConstructeur, pstPropriete,          \
                      nNbPropriete, pstAccesseur, nNbAccesseur)                                    \
    STKLOClasse {                                                                                  \
        (nId), {0, 0}, (pszType), KLL_CF_##F, 2, &KLL_##C##_C, &KLL_##C##_T, 0, (pstConstructeur), \
            (nNbConstructeur), {}, (nNbPropriete), (nNbPropriete) ? (pstPropriete) : nullptr, {},  \
            (nNbAccesseur), (nNbAccesseur) ? (pstAccesseur) : nullptr, &KLL_##C##_GOG, {},         \
            &KLL_##C##_RAZ, {}                                                                     \
    }
