// The binary records that the host reads from the component: module info, component
// descriptor, function, syntax, constant, class, property and accessor rows. Offsets and widths
// are binding; every one is checked below.
#pragma once
#include <cstddef>
#include <cstdint>

class CXError;
class CCtxInfo;
class ITypeDescription;
struct STKLAppel;
struct STRessourceModule;

// Handler shapes, one per kind of row.
using PFNKLLType = void (*)(ITypeDescription* piType);
using PFNKLLObjetGlobal = void* (*)(CCtxInfo* pclCtx, CXError* pclErreur);
using PFNKLLCopie = void (*)(void* pObjet, void* pSource, CCtxInfo* pclCtx, CXError* pclErreur);
using PFNKLLRAZ = void (*)(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur);
using PFNKLLGet = void (*)(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur);
using PFNKLLSet = void (*)(void* pObjet, unsigned char** ppArguments, CCtxInfo* pclCtx,
                           CXError* pclErreur);
using PFNKLLAccesseur = void* (*)(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur);
using PFNKLLMethode = void (*)(void* pObjet, unsigned char** ppArguments, CCtxInfo* pclCtx,
                               CXError* pclErreur);
using PFNKLLConstructeur = void* (*)(unsigned char** ppArguments, CCtxInfo* pclCtx,
                                     CXError* pclErreur);
// Free functions receive the library object; the host knows it only as a pointer.
using PFNKLLLibre = int (*)(STKLAppel* pstAppel, void* pclLibrairie, unsigned char** ppArguments);

// Kind of call, the second byte of a syntax row's option word.
enum eKLLGENRE : uint8_t { KLL_GENRE_LIBRE = 0, KLL_GENRE_METHODE = 1, KLL_GENRE_CONSTRUCTEUR = 2 };

struct STKLSyntaxe {
    union {
        PFNKLLMethode pfnMethode;
        PFNKLLLibre pfnLibre;
        PFNKLLConstructeur pfnConstructeur;
    };
    uint64_t qwZero;
    const unsigned char* pbySignature; // 4-byte items (16-bit code, 16-bit qualifier), then 0
    uint64_t qwOption;                 // low byte: parameter count; next byte: eKLLGENRE

    unsigned nGetNbParametre() const { return static_cast<unsigned>(qwOption & 0xFF); }
    unsigned nGetGenre() const { return static_cast<unsigned>((qwOption >> 8) & 0xFF); }
};
static_assert(sizeof(STKLSyntaxe) == 32);
static_assert(offsetof(STKLSyntaxe, pbySignature) == 16 && offsetof(STKLSyntaxe, qwOption) == 24);

struct STKLFonction {
    uint64_t nNumero; // 1 to 102
    uint64_t qwZero8;
    uint64_t qwZero16;
    uint64_t qwFlags;
    uint32_t dwDescripteur; // bits 24-31 syntaxes, 16-23 library, 0-15 name index
    uint32_t dwZero36;
    const STKLSyntaxe* pstSyntaxe;

    unsigned nGetNbSyntaxe() const { return dwDescripteur >> 24; }
    unsigned nGetLibrairie() const { return (dwDescripteur >> 16) & 0xFF; }
    unsigned nGetIndiceNom() const { return dwDescripteur & 0xFFFF; }
};
static_assert(sizeof(STKLFonction) == 48);
static_assert(offsetof(STKLFonction, qwFlags) == 24 && offsetof(STKLFonction, dwDescripteur) == 32);
static_assert(offsetof(STKLFonction, dwZero36) == 36 && offsetof(STKLFonction, pstSyntaxe) == 40);

struct STKLConstante {
    uint64_t nNumero;
    uint64_t qwCodeNom;
    uint64_t qwZero;
    uint64_t qwFlags;
    union {
        int64_t nValeur;
        const wchar_t* pszValeur;
    };
    uint64_t qwType; // type code * 256 + library number

    unsigned nGetTypeCode() const { return static_cast<unsigned>(qwType >> 8); }
};
static_assert(sizeof(STKLConstante) == 48);
static_assert(offsetof(STKLConstante, qwFlags) == 24 && offsetof(STKLConstante, nValeur) == 32);
static_assert(offsetof(STKLConstante, qwType) == 40);

struct STKLPropriete {
    uint64_t nIdentifiant;
    uint64_t qwHash; // djb2 of the script name, upper case, accents removed
    uint64_t qwZero;
    uint64_t qwFlags;
    uint64_t qwType; // low 16 bits a type code; for an object the next 16 the type reference
    PFNKLLGet pfnGet;
    PFNKLLGet pfnGetObjet;
    PFNKLLSet pfnSet;
    PFNKLLSet pfnSetForce;
    uint64_t qwOption;
};
static_assert(sizeof(STKLPropriete) == 80);
static_assert(offsetof(STKLPropriete, qwHash) == 8 && offsetof(STKLPropriete, qwFlags) == 24);
static_assert(offsetof(STKLPropriete, qwType) == 32 && offsetof(STKLPropriete, pfnGet) == 40);
static_assert(offsetof(STKLPropriete, pfnGetObjet) == 48 && offsetof(STKLPropriete, pfnSet) == 56);
static_assert(offsetof(STKLPropriete, pfnSetForce) == 64 && offsetof(STKLPropriete, qwOption) == 72);

struct STKLAccesseur {
    uint64_t nIdentifiant;
    uint64_t qwHash;
    uint64_t qwZero;
    uint64_t qwFlags;
    uint64_t qwType; // object code 111 and the type reference index
    PFNKLLAccesseur pfnAccesseur;
    uint64_t qwOption;
};
static_assert(sizeof(STKLAccesseur) == 56);
static_assert(offsetof(STKLAccesseur, qwType) == 32 && offsetof(STKLAccesseur, pfnAccesseur) == 40);
static_assert(offsetof(STKLAccesseur, qwOption) == 48);

struct STKLOClasse {
    uint64_t nIdentifiant;
    uint64_t qwZero8[2];
    const char* pszType; // "+:060:<number>:GGL:<name>"
    uint64_t qwFlags;
    uint64_t qwDeux; // 2
    PFNKLLCopie pfnCopie;
    PFNKLLType pfnType;
    uint64_t qwZero64;
    const STKLSyntaxe* pstConstructeur;
    uint64_t nNbConstructeur;
    uint64_t qwZero88[6];
    uint64_t nNbPropriete;
    const STKLPropriete* pstPropriete;
    uint64_t qwZero152[4];
    uint64_t nNbAccesseur;
    const STKLAccesseur* pstAccesseur;
    PFNKLLObjetGlobal pfnObjetGlobal;
    uint64_t qwZero208[3];
    PFNKLLRAZ pfnRAZ;
    uint64_t qwZero240[2];
};
static_assert(sizeof(STKLOClasse) == 256);
static_assert(offsetof(STKLOClasse, pszType) == 24 && offsetof(STKLOClasse, qwFlags) == 32);
static_assert(offsetof(STKLOClasse, qwDeux) == 40 && offsetof(STKLOClasse, pfnCopie) == 48);
static_assert(offsetof(STKLOClasse, pfnType) == 56 && offsetof(STKLOClasse, pstConstructeur) == 72);
static_assert(offsetof(STKLOClasse, nNbConstructeur) == 80);
static_assert(offsetof(STKLOClasse, nNbPropriete) == 136);
static_assert(offsetof(STKLOClasse, pstPropriete) == 144);
static_assert(offsetof(STKLOClasse, nNbAccesseur) == 184);
static_assert(offsetof(STKLOClasse, pstAccesseur) == 192);
static_assert(offsetof(STKLOClasse, pfnObjetGlobal) == 200 && offsetof(STKLOClasse, pfnRAZ) == 232);

// Row of the error table: four 32-bit words.
struct STErrorDef {
    uint32_t nCodeUtilisateur;
    uint32_t nRessource;
    uint32_t dwDetail;
    uint32_t nSeverite; // the error level the row sets, 2 or 3
};
static_assert(sizeof(STErrorDef) == 16);

// Row of the embedded resource table.
struct STKVResource {
    uint32_t nNumero;
    const wchar_t* pszType;
    const void* pDonnees;
    uint32_t nTaille;
};
static_assert(sizeof(STKVResource) == 32 && offsetof(STKVResource, pszType) == 8);
static_assert(offsetof(STKVResource, pDonnees) == 16 && offsetof(STKVResource, nTaille) == 24);

using PFNGetRessource = int (*)(STRessourceModule& stRessource);

struct _stMyModuleInfo {
    const STErrorDef* pstErrorDef;
    uint64_t nNbErrorDef;
    uint64_t nNumeroModule;
    const wchar_t* pszNomModule;
    const wchar_t* pszVersionModule;
    PFNGetRessource pfnGetRessource;
    int (*pfnInitLibrairie)(void* hInstance);
    void (*pfnTermLibrairie)();
    uint64_t qwReserve; // 1
    void* (*pfnQueryProxy)(int n);
    void* pInutilise;
    uint64_t (*pfnInfoComposante)(uint32_t nSelecteur, uint64_t nIndice);
    uint64_t (*pfnExecution)(uint32_t nCode, uint64_t nArgument);
    const STKVResource* pstRessource;
    uint32_t nNbRessource;
};
static_assert(offsetof(_stMyModuleInfo, nNbErrorDef) == 8);
static_assert(offsetof(_stMyModuleInfo, nNumeroModule) == 16);
static_assert(offsetof(_stMyModuleInfo, pszNomModule) == 24);
static_assert(offsetof(_stMyModuleInfo, pszVersionModule) == 32);
static_assert(offsetof(_stMyModuleInfo, pfnGetRessource) == 40);
static_assert(offsetof(_stMyModuleInfo, pfnInitLibrairie) == 48);
static_assert(offsetof(_stMyModuleInfo, pfnTermLibrairie) == 56);
static_assert(offsetof(_stMyModuleInfo, qwReserve) == 64);
static_assert(offsetof(_stMyModuleInfo, pfnQueryProxy) == 72);
static_assert(offsetof(_stMyModuleInfo, pInutilise) == 80);
static_assert(offsetof(_stMyModuleInfo, pfnInfoComposante) == 88);
static_assert(offsetof(_stMyModuleInfo, pfnExecution) == 96);
static_assert(offsetof(_stMyModuleInfo, pstRessource) == 104);
static_assert(offsetof(_stMyModuleInfo, nNbRessource) == 112);

// The component descriptor, 176 bytes, read by the host selector by selector.
struct STKLComposante {
    uint64_t nTailleRecord; // 176
    STKLComposante* pstSuivant;
    const wchar_t* const* ppszDescription;
    const wchar_t* const* ppszAide;
    const STKLFonction* pstFonction;
    const STKLConstante* pstConstante;
    const void* pTableReserve48;
    const void* pTableReserve56;
    const void* pTableReserve64;
    const void* pTableReserve72;
    const char* const* ppszTypeRef;
    const STKLOClasse* const* ppstClasse;
    const unsigned char* pbyBlocNom;
    const void* pInutilise104;
    void* (*pfnFactory)();
    uint32_t nLibrairie;   // 60
    uint32_t nFormat;      // 2
    uint32_t nChiffre1;    // 635
    uint32_t nChiffre2;    // 427
    uint32_t nNbFonction;  // 102
    uint32_t nNbConstante; // 79
    uint32_t nNbReserve48;
    uint32_t nNbReserve56;
    uint32_t nNbReserve64;
    uint32_t nNbReserve72;
    uint32_t nNbTypeRef;   // 49
    uint32_t nNbClasse;    // 52
    uint32_t nTailleBlocNom;
    uint32_t nReserve172;
};
static_assert(sizeof(STKLComposante) == 176);
static_assert(offsetof(STKLComposante, ppszDescription) == 16);
static_assert(offsetof(STKLComposante, ppszAide) == 24);
static_assert(offsetof(STKLComposante, pstFonction) == 32);
static_assert(offsetof(STKLComposante, pstConstante) == 40);
static_assert(offsetof(STKLComposante, pTableReserve48) == 48);
static_assert(offsetof(STKLComposante, pTableReserve72) == 72);
static_assert(offsetof(STKLComposante, ppszTypeRef) == 80);
static_assert(offsetof(STKLComposante, ppstClasse) == 88);
static_assert(offsetof(STKLComposante, pbyBlocNom) == 96);
static_assert(offsetof(STKLComposante, pfnFactory) == 112);
static_assert(offsetof(STKLComposante, nLibrairie) == 120);
static_assert(offsetof(STKLComposante, nFormat) == 124);
static_assert(offsetof(STKLComposante, nChiffre1) == 128);
static_assert(offsetof(STKLComposante, nChiffre2) == 132);
static_assert(offsetof(STKLComposante, nNbFonction) == 136);
static_assert(offsetof(STKLComposante, nNbConstante) == 140);
static_assert(offsetof(STKLComposante, nNbReserve48) == 144);
static_assert(offsetof(STKLComposante, nNbReserve72) == 156);
static_assert(offsetof(STKLComposante, nNbTypeRef) == 160);
static_assert(offsetof(STKLComposante, nNbClasse) == 164);
static_assert(offsetof(STKLComposante, nTailleBlocNom) == 168);
static_assert(offsetof(STKLComposante, nReserve172) == 172);

// The init record of EXECUTION_INITIALISE.
class ILibShop;
struct STInitExecution {
    uint64_t nTaille; // the ILibShop* is read only when this exceeds 15
    void* hInstanceVM;
    uint32_t nUtilisation1;
    uint32_t nUtilisation2;
    ILibShop* piLibShop;
};
static_assert(sizeof(STInitExecution) == 32 && offsetof(STInitExecution, piLibShop) == 24);
static_assert(offsetof(STInitExecution, nUtilisation1) == 16 &&
              offsetof(STInitExecution, nUtilisation2) == 20);
