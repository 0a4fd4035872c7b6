// Message resources: the lookup record that a module's resource function fills, and the
// loading and formatting functions DLLRES_* over a module's info record.
//
// Lookup of a text: the host's loader gpfnLoadStringKVM first, when it has been set (a positive
// answer is final); then the module's own resource function (pfnGetRessource of its info
// record), whose packed text CDataCompressor unpacks.
//
// Message format, as the texts of the block are written:
//   %1 .. %9       the n-th variable argument, a const wchar_t* (null prints as nothing)
//   %n!conv!       the n-th argument through one printf conversion: flags, width and
//                  precision as printf has them, then the conversion, for example %1!u!,
//                  %2!d!, %3!08x!, %1!ld!, %2!.2f!, %1!p!, %1!c! (a wide character);
//                  %1!s! is a wide text, %1!S! a narrow UTF-8 text
//   %%             a percent sign
// Anything else after a percent sign stands as written. Arguments are read in index order, once
// the format has told each one's type; an index that the format skips below the highest one
// used is read as a pointer, and no argument above the highest index used is ever read.
// An argument that one placeholder reads as one type prints as written where another
// placeholder asks for a different type.
//
// A text may hold several forms (singular, plural...) separated by line feed, section sign,
// line feed; the forms are numbered from 0.
#pragma once
#include "TString.h"
#include "XYString.h"

#include <cstdarg>
#include <cstdint>

struct _stMyModuleInfo;

struct STRessourceModule {
    uint32_t nNumero;
    uint32_t nZero;
    const unsigned char* pbyTexte; // the packed text
    uint32_t nTaille;              // its packed length
    uint32_t nEncodage;            // 1 UTF-8, 2 UTF-16
    int32_t nUtilisation;          // -1 until found
};

// The host's string loader: the length written, 0 or less when it has no such string.
using PFNLoadStringKVM = long (*)(unsigned nNumero, wchar_t* pszBuffer, int nCapacite);
// A component's command entry point, as DLLRES_bForceInitRessource calls it.
using PFNCommandeComposante = uint64_t (*)(uint64_t nCommande, uint64_t nArgument);
// The exported resource lookup of a module: the data of the row of that number and type, and
// its size through pnTaille when given; null when no row matches.
using PFNLoadResourceModule = const void* (*)(const _stMyModuleInfo* pstModule, unsigned nNumero,
                                              const wchar_t* pszType, uint32_t* pnTaille);

// The separator of the forms of a text.
inline constexpr const wchar_t* kszSeparateurForme = L"\n\u00A7\n";

extern int gbInitialise;
extern PFNLoadStringKVM gpfnLoadStringKVM;

// The length of the text, cut to nCapacite - 1 with a final null; 0 when it is missing.
int DLLRES_nLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero, wchar_t* pszBuffer,
                       int nCapacite);
// 1 when the text was found (it may be empty), else 0 and `pclOut` emptied.
int DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut);
int DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned nNumero,
                       CXYString<wchar_t>* pclOut);

// Load, then format with the variable arguments; 1 when the text was found.
int DLLRES_bFormatMessage(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut,
                          ...);
int DLLRES_bFormatMessageList(const _stMyModuleInfo* pstModule, unsigned nNumero, CTString* pclOut,
                              va_list args);
// The same into a buffer: the length written, cut to nCapacite - 1; 0 when missing.
int DLLRES_nFormatMessage(const _stMyModuleInfo* pstModule, unsigned nNumero, wchar_t* pszBuffer,
                          int nCapacite, ...);
int DLLRES_nFormatMessageList(const _stMyModuleInfo* pstModule, unsigned nNumero,
                              wchar_t* pszBuffer, int nCapacite, va_list args);
// Form n (from 0) of the text, formatted; 0 when the text or that form is missing.
int DLLRES_bFormatMessageSingulierPluriel(const _stMyModuleInfo* pstModule, int n, unsigned nNumero,
                                          CTString* pclOut, ...);
int DLLRES_bFormatMessageSingulierPlurielList(const _stMyModuleInfo* pstModule, int n,
                                              unsigned nNumero, CTString* pclOut, va_list args);
int __bLoadStringSingulierPluriel(const _stMyModuleInfo* pstModule, int n, unsigned nNumero,
                                  CTString* pclOut);
// Formats a text already held; with a null `pArguments` no argument is read and placeholders
// print nothing. The length of the result.
unsigned long DLLRES_dwFormatMessage(const wchar_t* pszFormat, CTString* pclOut,
                                     va_list* pArguments);

// The usage value of the record, -1 when it is missing.
int DLLRES_nGetUtilisation(const _stMyModuleInfo* pstModule, unsigned nNumero);

// Through the host's loader only: 0 when it is not set or has no such string.
long KVM_nLoadString(unsigned nNumero, wchar_t* pszBuffer, int nCapacite);
int KVM_bLoadString(unsigned nNumero, CTString* pclOut);

// Asks the module loaded as `hInstance` for one of its embedded resources, through its exported
// DLLRES_pLoadResourceModule; null when it has none or the module does not export it.
const void* DLLRES_pLoadResource(const _stMyModuleInfo* pstModule, void* hInstance,
                                 unsigned nNumero, const wchar_t* pszType, uint32_t* pnTaille);
// Has a component build its resource table now, by a load through its command 3. The record
// is 24 bytes: 32-bit size (24), 32-bit string number (0 here), wide buffer (null), 32-bit
// capacity (0), 32-bit result.
int DLLRES_bForceInitRessource(PFNCommandeComposante pfnCommande);
int DLLRES_bInit(void* hInstance, int nOption);
void DLLRES_Term();
// Texts never come from a separate resource library here.
int DLLRES_bUtiliseDLLRes();
