// The component's vocabulary tables, built by frame/Tables.cpp from the .def files, and the
// name block packed by tools/PackNames. These are what the descriptor points at.
#pragma once
#include <Tables.h> // the records of abi/, not this file

#include "frame/Kll.h" // knKllNbTypeRef

#include <cstdint>

extern "C" {
extern const STKLFonction __gstTabFonction_60[];
extern const STKLConstante __gstTabConstante_60[];
extern const char* const __gstTabTypeRef_60[];
extern const STKLOClasse* const __gpstTabClasse_60[];
extern const unsigned char gbyBlocNom_60[];
}

// Row counts, counted from the .def files.
inline constexpr uint32_t knKllNbFonction = 0
#define KLL_FUNCTION(nNumero, Fonction, Famille) +1
#define KLL_FUNCTION_AGAIN(nNumero, Fonction, Famille) +1
#include "frame/Functions.def"
    ;
inline constexpr uint32_t knKllNbConstante = 0
#define KLL_CONSTANT_INT(nNumero, Nom, nValeur) +1
#define KLL_CONSTANT_TEXT(nNumero, Nom, pszValeur) +1
#include "frame/Constants.def"
    ;
inline constexpr uint32_t knKllNbClasse = 0
#define KLL_CLASS(Classe, nNumero, pszType, Famille) +1
#include "frame/Classes.def"
    ;

// The name block has a fixed size; tools/PackNames refuses names that would not fit.
inline constexpr uint32_t knKllTailleBlocNom = 16101;
