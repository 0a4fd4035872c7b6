// The numbered calls between host and component: the commands of both Execution entries, the
// selectors of the host's information command and of InfoComposante, the commands of
// CommandeComposante, and the records some of them point to. Both sides name them from here.
// The numbers are the host's: never renumber.
#pragma once
#include <cstddef>
#include <cstdint>

// The host's Execution entry and the component's share one shape.
using PFNExecution = uint64_t (*)(uint32_t nCode, uint64_t nArgument);

// Commands of the component's Execution, sent by the host.
enum eEXECUTION : uint32_t {
    EXECUTION_INITIALISE = 3985, // the argument is an STInitExecution (Tables.h)
    EXECUTION_TERMINE = 4875,
    EXECUTION_INFO_LOCALE = 4878,
    EXECUTION_CHANGE_LANGUE = 4879,
    EXECUTION_INITIALISE_TYPE = 4963, // the argument is a CXError*
    EXECUTION_DUMP_MEMOIRE = 5238,
    EXECUTION_DESACTIVE = 5684,
    EXECUTION_REACTIVE = 5864,
};

// Commands of the host's Execution, sent by the component.
enum eCOMMANDEHOTE : uint32_t {
    HOTE_DECHARGE_DLL = 3052,
    HOTE_INFO = 3053,           // the argument is an eINFOHOTE selector
    HOTE_REMPLIT_PILE_C = 3184, // the argument is an STPileC
    HOTE_DEBUT_THREAD = 3645,
    HOTE_FIN_THREAD = 3795,
};

// Selectors of HOTE_INFO.
enum eINFOHOTE : uint32_t {
    INFO_CODE_PRODUIT_EXECUTION = 1,
    INFO_LANGUE_INTERNE = 2,
    INFO_NOM_PRODUIT = 3,
    INFO_OPTIONS = 4,
    INFO_CODE_PRODUIT_REEL = 5,
    INFO_RUNTIME_GERE = 6,
    INFO_LIBSHOP = 7,
    INFO_VERSION_ACTIVE = 8,
    INFO_GLOBAL_FACTORY = 9,
    INFO_COLLECTEUR_TOPO = 10,
    INFO_MODE_SMARTPHONE = 11,
    INFO_INFO_LOCALE = 12,
    INFO_ALLOCATEUR_CHAINE = 13,
    INFO_MULTITHREAD = 14,
    INFO_INFORMATION_COMPOSANTE = 15,
    INFO_THREAD_PRINCIPAL = 17,
};

// Selectors of InfoComposante: the words and tables of the component descriptor
// (STKLComposante, Tables.h). The texts take an index as second argument.
enum eSELECTEUR : uint32_t {
    SELECTEUR_NIVEAU = 0, // the information level of the protocol
    SELECTEUR_LIBRAIRIE = 1,
    SELECTEUR_CHIFFRE1 = 2,
    SELECTEUR_CHIFFRE2 = 3,
    SELECTEUR_AIDE = 4,
    SELECTEUR_RESERVE64 = 13,
    SELECTEUR_NB_RESERVE64 = 14,
    SELECTEUR_CONSTANTES = 23,
    SELECTEUR_NB_CONSTANTES = 24,
    SELECTEUR_RESERVE48 = 25,
    SELECTEUR_NB_RESERVE48 = 26,
    SELECTEUR_CLASSES = 29,
    SELECTEUR_NB_CLASSES = 30,
    SELECTEUR_TYPEREFS = 31,
    SELECTEUR_NB_TYPEREFS = 32,
    SELECTEUR_FONCTIONS = 33,
    SELECTEUR_NB_FONCTIONS = 34,
    SELECTEUR_RESERVE56 = 35,
    SELECTEUR_NB_RESERVE56 = 36,
    SELECTEUR_RESERVE72 = 37,
    SELECTEUR_NB_RESERVE72 = 38,
    SELECTEUR_DESCRIPTION = 39,
    SELECTEUR_BLOC_NOM = 40,
    SELECTEUR_TAILLE_BLOC_NOM = 41,
    SELECTEUR_FORMAT = 44,
    SELECTEUR_DESCRIPTEUR = 45,
};

// Commands of CommandeComposante.
enum eCOMMANDECOMPOSANTE : uint64_t {
    COMMANDE_CHARGEUR_CHAINE = 2, // the argument is the host's PFNLoadStringKVM, or 0
    COMMANDE_CHARGE_CHAINE = 3,   // the argument is an STChargeChaine
    COMMANDE_UTILISATION = 4,     // the argument is a message number
};

// The record of COMMANDE_CHARGE_CHAINE: load message nNumero into the buffer. The answer,
// the length written or 0, is also left in nResultat.
struct STChargeChaine {
    uint32_t nTaille; // the record's size; not read by the component
    uint32_t nNumero;
    wchar_t* pszTampon;
    uint32_t nCapacite; // in characters, the terminator included
    int32_t nResultat;
};
static_assert(sizeof(STChargeChaine) == 24);
static_assert(offsetof(STChargeChaine, nNumero) == 4 && offsetof(STChargeChaine, pszTampon) == 8);
static_assert(offsetof(STChargeChaine, nCapacite) == 16 &&
              offsetof(STChargeChaine, nResultat) == 20);

// The record of HOTE_REMPLIT_PILE_C: describe the C call stack into the buffer.
struct STPileC {
    uint32_t nNumero;
    wchar_t* pszTampon;
    uint32_t nTaille; // in characters
    uint32_t nOption;
};
static_assert(sizeof(STPileC) == 24);
static_assert(offsetof(STPileC, pszTampon) == 8 && offsetof(STPileC, nTaille) == 16 &&
              offsetof(STPileC, nOption) == 20);
