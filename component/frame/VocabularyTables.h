// The vocabulary tables the host reads through InfoComposante, and their sizes.
#pragma once
#include "KLLExport.h"
#include "Tables.h"

#include <cstdint>

inline constexpr uint32_t knNbFonction60 = 102;
inline constexpr uint32_t knNbConstante60 = 79;
inline constexpr uint32_t knNbTypeRef60 = 49;
inline constexpr uint32_t knNbClasse60 = 52;
inline constexpr uint32_t knTailleBlocNom60 = 16101;

KLL_EXPORT const STKLFonction __gstTabFonction_60[knNbFonction60];
KLL_EXPORT const STKLConstante __gstTabConstante_60[knNbConstante60];
KLL_EXPORT const char* const __gstTabTypeRef_60[knNbTypeRef60];
KLL_EXPORT const STKLOClasse* const __gpstTabClasse_60[knNbClasse60];
KLL_EXPORT const unsigned char gbyBlocNom_60[knTailleBlocNom60];
