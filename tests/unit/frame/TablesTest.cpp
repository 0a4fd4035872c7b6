// The vocabulary tables against a transcription of their contents, kept here in the notation of
// the design's own tables and parsed by the test: functions and syntaxes, constants, type
// references, classes with their properties and accessors, identifiers, hashes, and the name
// block read back.
#include "frame/Tables.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// ---- Every handler the rows name, weakly, so that each slot can be told from its neighbour.
// A class that defines its stubs in the component wins over these; the comparisons below go
// through the same names and hold either way.
int gnSondeTables = 0; // each probe writes its own number, so that no two are alike
#define KLL_SONDE extern "C" __attribute__((weak))
#define KLL_CORPS                                                                                  \
    { gnSondeTables = __COUNTER__; }
#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_SONDE void KLL_##C##_C(void*, void*, CCtxInfo*, CXError*)                                  \
        KLL_CORPS KLL_SONDE void KLL_##C##_T(ITypeDescription*)                                    \
            KLL_CORPS KLL_SONDE void* KLL_##C##_GOG(CCtxInfo*, CXError*) {                         \
        gnSondeTables = __COUNTER__;                                                               \
        return nullptr;                                                                            \
    }                                                                                              \
    KLL_SONDE void KLL_##C##_RAZ(void*, CCtxInfo*, CXError*) KLL_CORPS
#define KLL_CONSTRUCTOR(C, k)                                                                      \
    KLL_SONDE void* KLL_##C##_C_##k(unsigned char**, CCtxInfo*, CXError*) {                        \
        gnSondeTables = __COUNTER__;                                                               \
        return nullptr;                                                                            \
    }
#define KLL_PROPERTY(C, P, T, A)                                                                   \
    KLL_SONDE void KLL_##C##_G_##P(void*, CCtxInfo*, CXError*) KLL_CORPS KLL_IF_SETTER_##A(        \
        KLL_SONDE void KLL_##C##_S_##P(void*, unsigned char**, CCtxInfo*, CXError*) KLL_CORPS, )   \
        KLL_IF_FORCED_##A(KLL_SONDE void KLL_##C##_FS_##P(void*, unsigned char**, CCtxInfo*,       \
                                                          CXError*) KLL_CORPS, )
#define KLL_ACCESSOR(C, N, TR, M)                                                                  \
    KLL_SONDE void* KLL_##C##_A_##N(void*, CCtxInfo*, CXError*) {                                  \
        gnSondeTables = __COUNTER__;                                                               \
        return nullptr;                                                                            \
    }
#include "frame/Classes.def"
#define KLL_SYNTAX(C, F, k, R, ...)                                                                \
    KLL_SONDE void KLL_##C##_M_##F##_S##k(void*, unsigned char**, CCtxInfo*, CXError*) KLL_CORPS
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...)                                                            \
    KLL_SONDE void KLL_##C##_M_##F##_S##k(void*, unsigned char**, CCtxInfo*, CXError*) KLL_CORPS
#define KLL_SYNTAX_FREE(F, k, R, ...)                                                              \
    KLL_SONDE int KLL_##F##_##k(STKLAppel*, void*, unsigned char**) {                              \
        gnSondeTables = __COUNTER__;                                                               \
        return 0;                                                                                  \
    }
#include "frame/Functions.def"

namespace {

// The same handlers, by name.
struct STSondeClasse {
    std::string_view svClasse;
    PFNKLLCopie pfnCopie;
    PFNKLLType pfnType;
    PFNKLLObjetGlobal pfnObjetGlobal;
    PFNKLLRAZ pfnRAZ;
};
const STSondeClasse gtabSondeClasse[] = {
#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    {#C, &KLL_##C##_C, &KLL_##C##_T, &KLL_##C##_GOG, &KLL_##C##_RAZ},
#include "frame/Classes.def"
};
struct STSonde {
    std::string_view svClasse, svNom;
    void* p; // the handler
};
std::vector<STSonde> TabSonde(char cGenre) {
    std::vector<STSonde> tab;
#define KLL_SONDE_NOM(cG, C, N, pfn)                                                               \
    if (cGenre == cG)                                                                              \
        tab.push_back({#C, #N, reinterpret_cast<void*>(pfn)});
#define KLL_CONSTRUCTOR(C, k) KLL_SONDE_NOM('c', C, k, &KLL_##C##_C_##k)
#define KLL_PROPERTY(C, P, T, A)                                                                   \
    KLL_SONDE_NOM('g', C, P, &KLL_##C##_G_##P)                                                     \
    KLL_IF_SETTER_##A(KLL_SONDE_NOM('s', C, P, &KLL_##C##_S_##P), )                                \
        KLL_IF_FORCED_##A(KLL_SONDE_NOM('f', C, P, &KLL_##C##_FS_##P), )
#define KLL_ACCESSOR(C, N, TR, M) KLL_SONDE_NOM('a', C, N, &KLL_##C##_A_##N)
#include "frame/Classes.def"
#define KLL_SYNTAX(C, F, k, R, ...) KLL_SONDE_NOM('m', F, k, &KLL_##C##_M_##F##_S##k)
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...) KLL_SONDE_NOM('m', F, k, &KLL_##C##_M_##F##_S##k)
#define KLL_SYNTAX_FREE(F, k, R, ...) KLL_SONDE_NOM('m', F, k, &KLL_##F##_##k)
#include "frame/Functions.def"
#undef KLL_SONDE_NOM
    return tab;
}
void* pSonde(char cGenre, std::string_view svClasse, std::string_view svNom) {
    static std::map<char, std::vector<STSonde>> s_map;
    auto it = s_map.find(cGenre);
    if (it == s_map.end())
        it = s_map.emplace(cGenre, TabSonde(cGenre)).first;
    for (const STSonde& st : it->second)
        if (st.svClasse == svClasse && st.svNom == svNom)
            return st.p;
    return nullptr;
}

// ---- The transcription ------------------------------------------------------------------

// Functions with handlers: number, name, syntaxes, served by, signatures.
constexpr std::string_view ksFonctions = R"TXT(
| 1 | `GglListeAgenda` | 2 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, int) |
| 2 | `GglConnecte` | 2 | `CGoogleConnexion` | 0: boolean (gglConnexion); 1: boolean (gglConnexion, int) |
| 3 | `GglRemplitAgenda` | 4 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglAgenda); 1: boolean (gglConnexion, gglAgenda, datetime*); 2: boolean (gglConnexion, gglAgenda, datetime*, datetime*); 3: boolean (gglConnexion, gglAgenda, datetime*, datetime*, text) |
| 4 | `GglListeContact` | 4 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, string); 2: array (gglConnexion, string, int); 3: array (gglConnexion, string, int, int) |
| 5 | `GglRequete` | 4 | `CGoogleConnexion` | 0: buffer (gglConnexion, int, text); 1: buffer (gglConnexion, int, text, int); 2: buffer (gglConnexion, int, text, text); 3: buffer (gglConnexion, int, text, text, int) |
| 6 | `GglListeContactParRequete` | 1 | `CGoogleConnexion` | 0: array (gglConnexion, text) |
| 7 | `GglRemplitAgendaParRequete` | 1 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglAgenda, text) |
| 8 | `GglListeDocument` | 5 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, int); 2: array (gglConnexion, int, text); 3: array (gglConnexion, int, text, text); 4: array (gglConnexion, text) |
| 9 | `GglEnvoieDocument` | 2 | `CGoogleConnexion` | 0: boolean (gglConnexion, stringorbuffer); 1: boolean (gglConnexion, stringorbuffer, string, string) |
| 10 | `GglListeAlbum` | 2 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, int) |
| 11 | `GglRemplitAlbum` | 1 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglAlbum, int) |
| 17 | `GglEcrit` | 11 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglAgenda); 1: boolean (gglConnexion, gglContact); 2: boolean (gglAdWConnexion, gglAdWCampagne) no handler; 3: boolean (gglConnexion, gglGroupeContact); 4: boolean (gglAdWConnexion, array) no handler; 5: boolean (gglAdWConnexion, gglAdWInfoCompte) no handler; 6: boolean (gglAdWConnexion, string, gglAdWGroupeAnnonce) no handler; 7: boolean (gglAdWConnexion, gglAdWGroupeAnnonce) no handler; 8: boolean (gglAdWConnexion, string, array) no handler; 9: boolean (gglConnexion, gglAlbum); 10: boolean (gglConnexion, gglPhoto) |
| 18 | `GglSupprime` | 7 | `CGoogleConnexion` | 0: boolean (gglAdWConnexion, string, stringarray) no handler; 1: boolean (gglConnexion, gglAgenda); 2: boolean (gglConnexion, gglContact); 3: boolean (gglConnexion, gglGroupeContact); 4: boolean (gglConnexion, gglDocument); 5: boolean (gglConnexion, gglAlbum); 6: boolean (gglConnexion, gglPhoto) |
| 19 | `GglListeTag` | 4 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, int); 2: array (gglConnexion, int, text*); 3: array (gglConnexion, int, text*, text*) |
| 21 | `GglRecupereAgenda` | 5 | `CGoogleConnexion` | 0: gglAgenda (gglConnexion); 1: gglAgenda (gglConnexion, string); 2: gglAgenda (gglConnexion, string, datetime*); 3: gglAgenda (gglConnexion, string, datetime*, datetime*); 4: gglAgenda (gglConnexion, string, datetime*, datetime*, string) |
| 24 | `GglListeGroupeContact` | 2 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, gglContact) |
| 25 | `SFConnecte` | 1 | `CSFConnexion` | 0: boolean (sfConnexion) |
| 26 | `SFListeProduit` | 1 | `CSFConnexion` | 0: array (sfConnexion) |
| 27 | `SFDeconnecte` | 3 | `CSFConnexion` | 0: boolean (sfConnexion); 1: boolean (sfConnexion, stringarray); 2: boolean (sfConnexion, stringarray, array) |
| 73 | `GglRecupereAlbum` | 2 | `CGoogleConnexion` | 0: gglAlbum (gglConnexion, string); 1: gglAlbum (gglConnexion, string, int) |
| 74 | `GglRemplitPhoto` | 1 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglPhoto, int) |
| 75 | `GglRequete` | 4 | `CGoogleConnexion` | 0: buffer (gglConnexion, int, text); 1: buffer (gglConnexion, int, text, int); 2: buffer (gglConnexion, int, text, text); 3: buffer (gglConnexion, int, text, text, int) |
| 76 | `GglListeContactParRequete` | 1 | `CGoogleConnexion` | 0: array (gglConnexion, text) |
| 77 | `GglRemplitAgendaParRequete` | 1 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglAgenda, text) |
| 78 | `GglListePhoto` | 5 | `CGoogleConnexion` | 0: array (gglConnexion, text*); 1: array (gglConnexion, text*, int*); 2: array (gglConnexion, string); 3: array (gglConnexion, string, text*); 4: array (gglConnexion, string, text*, int*) |
| 79 | `GglListeCommentaire` | 4 | `CGoogleConnexion` | 0: array (gglConnexion); 1: array (gglConnexion, int); 2: array (gglConnexion, text*, text*); 3: array (gglConnexion, text*, text*, int) |
| 80 | `SFExecuteRequete` | 2 | `CSFConnexion` | 0: sfRésultatExécuteRequête (sfConnexion, text); 1: sfRésultatExécuteRequête (sfConnexion, text, boolean) |
| 81 | `SFAjoute` | 1 | `CSFConnexion` | 0: array (sfConnexion, array) |
| 82 | `SFSupprime` | 1 | `CSFConnexion` | 0: array (sfConnexion, stringarray) |
| 83 | `SFVideCorbeille` | 1 | `CSFConnexion` | 0: array (sfConnexion, stringarray) |
| 84 | `SFRechercheSupprime` | 1 | `CSFConnexion` | 0: sfRésultatRechercheSupprimé (sfConnexion, text, datetime*, datetime*) |
| 85 | `SFModifie` | 2 | `CSFConnexion` | 0: array (sfConnexion, array); 1: array (sfConnexion, array, int, text) |
| 86 | `SFRechercheModifie` | 1 | `CSFConnexion` | 0: sfRésultatRechercheModifié (sfConnexion, text, datetime*, datetime*) |
| 87 | `SFAvanceRequete` | 1 | `CSFConnexion` | 0: sfRésultatExécuteRequête (sfConnexion, string) |
| 88 | `SFConvertitPiste` | 1 | `CSFConnexion` | 0: array (sfConnexion, array) |
| 89 | `SFFusionne` | 1 | `CSFConnexion` | 0: array (sfConnexion, array) |
| 90 | `SFExecuteTraitement` | 1 | `CSFConnexion` | 0: array (sfConnexion, array) |
| 91 | `SFLit` | 1 | `CSFConnexion` | 0: array (sfConnexion, text, text, stringarray) |
| 92 | `SFRestaure` | 1 | `CSFConnexion` | 0: array (sfConnexion, stringarray) |
| 93 | `SFRecherche` | 1 | `CSFConnexion` | 0: sfRésultatRecherche (sfConnexion, text) |
| 94 | `GglVersXML` | 1 | `CComposanteGGL` | 0: buffer (any) |
| 95 | `GglRecupereDocument` | 1 | `CGoogleConnexion` | 0: boolean (gglConnexion, gglDocument, string) |
| 96 | `GglDeconnecte` | 2 | `CGoogleConnexion` | 0: unfilled; 1: unfilled |
| 97 | `FBOuvreSession` | 1 | `CFacebookSession` | 0: boolean (fbSession) |
| 98 | `FBFermeSession` | 1 | `CFacebookSession` | 0: unfilled |
| 99 | `FBRecupereInformationUtilisateur` | 1 | `CFacebookSession` | 0: any (fbSession, text) |
| 100 | `FBRequete` | 3 | `CFacebookSession` | 0: binary (fbSession, text); 1: binary (fbSession, text, int); 2: binary (fbSession, text, int, binary) |
| 101 | `FBEtatSession` | 1 | `CFacebookSession` | 0: int (fbSession) |
| 102 | `AuthIdentifie` | 1 | `CComposanteGGL` | 0: AuthToken (OAuth2Paramètres) |
)TXT";

// The functions without handler, which take the numbers the table above leaves free, in order.
constexpr std::string_view ksAdWords =
    "`GglAdWRecupereCampagne`, `GglAdWListeStatistiqueCampagne`, `GglAdWEstDiffusionOptimisee`, "
    "`GglAdWListeEligibiliteOptimConversion`, `GglAdWModifieDiffusionOptimisee`, "
    "`GglRecupereCarte`, `GglAdWListeCampagne`, `GglAdresseVersCoordonnees`, "
    "`GglAdWRecupereAnnonce`, `GglAdWListeEntreprise`, `GglAdWListeAnnonceActive`, "
    "`GglAdWListeAnnonce`, `GglAdWListeVideo`, `GglAdWListeStatistiqueAnnonce`, "
    "`GglAdWRecupereInfoCompte`, `GglAdWListeInfoCompteClient`, `GglAdWListeCompteClient`, "
    "`GglAdWListeAlerteMCC`, `GglAdWVerifieCritere`, `GglAdWListeCritere`, "
    "`GglAdWListeCritereExclu`, `GglAdWListeStatistiqueCritere`, "
    "`GglAdWEcritCritereExcluCampagne`, `GglAdWVerifieAnnonce`, "
    "`GglAdWRecupereNbUniteGratuiteMoisCourant`, `GglAdWRecupereCoutMethode`, "
    "`GglAdWRecupereNbOperation`, `GglAdWRecupereNbUnite`, `GglAdWRecupereNbUniteParClient`, "
    "`GglAdWRecupereNbUnitePourMethode`, `GglAdWRecupereNbUniteDispoMoisCourant`, "
    "`GglAdWRecupereMotCleDepuisSite`, `GglAdWRecupereVariationMotCle`, `GglAdWSupprimeRapport`, "
    "`GglAdWListeRequeteRapport`, `GglAdWRecupereURLRapportGZip`, `GglAdWRecupereURLRapport`, "
    "`GglAdWRecupereStatutRequeteRapport`, `GglAdWPlanifieRequeteRapport`, "
    "`GglAdWValideRequeteRapport`, `GglAdWListeSiteParCategorie`, `GglAdWListeSiteParDemographie`, "
    "`GglAdWListeSiteParURL`, `GglAdWListeSiteParSujet`, `GglAdWVerifieTraficMotCle`, "
    "`GglAdWEstimeGroupeAnnonce`, `GglAdWEstimeCampagne`, `GglAdWEstimeMotCle`, "
    "`GglAdWListeGroupeActif`, `GglAdWRecupereGroupeAnnonce`, `GglAdWListeGroupeAnnonce`, "
    "`GglAdWListeStatistiqueGroupe`, `GglAdWRemplaceCritereExclu`.";

constexpr std::string_view ksTypeRefs =
    "1 gglConnexion, 2 gglAgenda, 3 gglAlbum, 4 gglAdWConnexion, 5 gglAdWCampagne, 6 gglContact, 7 "
    "gglGroupeContact, 8 gglAdWInfoCompte, 9 gglAdWGroupeAnnonce, 10 gglPhoto, 11 gglDocument, 12 "
    "gglParamètreCarte, 13 gglCoordonnée, 14 sfConnexion, 15 gglAdWGéoCiblage, 16 "
    "gglAdWGroupeMotCléSite, 17 gglAdWCollectionVariationsMotClé, 18 gglAdWRequêteRapportDéfini, "
    "19 gglAdWCiblageGéoLangue, 20 gglAdWCiblageDémographique, 21 sfRésultatExécuteRequête, 22 "
    "sfRésultatRechercheSupprimé, 23 sfRésultatRechercheModifié, 24 sfRésultatRecherche, 25 "
    "fbSession, 26 OAuth2Paramètres, 27 AuthToken, 28 gglAuteur, 29 gglEvénement, 30 gglPersonne, "
    "31 gglLieu, 32 gglMessagerieInstantanée, 33 gglTéléphone, 34 gglAdressePostale, 35 gglEmail, "
    "36 gglSociété, 37 gglGroupeMédia, 38 gglTag, 39 gglTagEXIF, 40 gglCommentaire, 41 gglChemin, "
    "42 gglMarqueur, 43 sfInfoSession, 44 gglContenuMédia, 45 gglVignette, 46 sfInfoUtilisateur, "
    "47 sfErreur, 48 sfEnregistrementSupprimé, 49 sfObjet.";

constexpr std::string_view ksClasses = R"TXT(
- `CGoogleConnexion`, script type "gglConnexion", number 0. `Email` text rw; `MotDePasse` text rw!; `NomApplication` text rw!; `ClientID` text rw; `ClientSecret` text rw; `RefreshTokens` string rf!
- `CGoogleAgenda`, script type "gglAgenda", number 1. `Titre` string rw; `DatePublication` datetime r!; `DateMiseAJour` datetime r!; `Auteur` gglAuteur r!; `Description` string rw; `Identifiant` string rf; `FuseauHoraire` string rf. Collections: `Evenement` of gglEvénement
- `CGoogleEvenement`, script type "gglEvénement", number 2. `Titre` string rw; `DateDebut` datetime rw; `DateFin` datetime rw; `Contenu` string rw; `DatePublication` datetime r!; `DateMiseAJour` datetime rf; `Auteur` gglAuteur r; `Identifiant` string rf; `JourneeEntiere` boolean rw. Collections: `Participant` of gglPersonne; `Lieu` of gglLieu
- `CWho`, script type "gglPersonne", number 3. `Email` string rw; `Libelle` string rw
- `CWhere`, script type "gglLieu", number 4. `Libelle` string rw; `Description` string rw
- `CGoogleContact`, script type "gglContact", number 5. `Nom` string rw; `Notes` string rw; `Groupe` array rw; `Identifiant` string rf; `DateModification` datetime rf. Collections: `MessagerieInstantanee` of gglMessagerieInstantanée; `Telephone` of gglTéléphone; `Adresse` of gglAdressePostale; `Email` of gglEmail; `Organisation` of gglSociété; `Telephone_compat` of gglTéléphone!; `Organisation_compat` of gglSociété!
- `CGoogleDocument`, script type "gglDocument", number 6. `Auteur` gglAuteur r!; `Suivi` boolean rf; `Titre` string rf; `DateMiseAJour` datetime rf; `Identifiant` string rf; `TypeMIME` string rf
- `CGoogleChemin`, script type "gglChemin", number 7. `Couleur` int rw; `Opacite` int rw; `Epaisseur` int rw. Collections: `Point` of gglCoordonnée
- `CGglAlbum`, script type "gglAlbum", number 8. `DateMiseAJour` datetime rf; `Auteur` gglAuteur r; `Titre` string rw; `Resume` string rw; `Image` image r; `Identifiant` string rf; `NbPhotos` int rf; `NbPhotosRestant` int rf; `EspaceUtilise` int64 rf; `CommentairesActives` boolean rw; `Timestamp` int64 rw; `Acces` string rw; `Localisation` string rw; `Media` gglGroupeMédia r. Collections: `Photo` of gglPhoto; `Tag` of gglTag
- `CGglPhoto`, script type "gglPhoto", number 9. `DateMiseAJour` datetime rf; `IdentifiantPhoto` string rf; `Titre` string rw; `Resume` string rw; `Image` image rw; `Hauteur` int rf; `Largeur` int rf; `Acces` string rw; `Checksum` string rf; `CommentairesActives` boolean rw; `NbCommentaires` int rf; `TagsEXIF` gglTagEXIF r; `Media` gglGroupeMédia r; `IdentifiantAlbum` string rf; `Taille` int rf; `Timestamp` int64 rf. Collections: `Tag` of gglTag; `Commentaire` of gglCommentaire
- `CGooglePoint`, script type "gglCoordonnée", number 11. `Latitude` real rw; `Longitude` real rw
- `CGoogleMarqueur`, script type "gglMarqueur", number 12. `Latitude` real rw; `Longitude` real rw; `Taille` text rw; `Couleur` int rw; `Lettre` 17 rw
- `CGoogleParametre`, script type "gglParamètreCarte", number 13. `Format` text rw; `Chemin` gglChemin r; `Cadre` boolean rw!; `Langue` text rw; `Zone` gglCoordonnée r; `Mobile` boolean rw; `Echelle` int rw. Collections: `Marqueur` of gglMarqueur
- `CIM`, script type "gglMessagerieInstantanée", number 22. `Adresse` string rw; `Libelle` string rw; `Principal` boolean rw; `Type` int rw; `Messagerie` int rw
- `CEmail`, script type "gglEmail", number 23. `Adresse` string rw; `Libelle` string rw; `Principal` boolean rw; `Type` int rw
- `COrganization`, script type "gglSociété", number 24. `Nom` string rw; `Libelle` string rw; `Principal` boolean rw; `Titre` string rw; `Type` int rw
- `CPhoneNumber`, script type "gglTéléphone", number 25. `Libelle` string rw; `Principal` boolean rw; `Numero` string rw; `Type` int rw
- `CPostalAddress`, script type "gglAdressePostale", number 26. `Libelle` string rw; `Principal` boolean rw; `Valeur` string rw; `Type` int rw
- `CGglGroupeContact`, script type "gglGroupeContact", number 27. `Nom` string rw; `Identifiant` string rf; `DateMiseAJour` datetime rf
- `CSFConnexion`, script type "sfConnexion", number 28. `Login` text rw; `Password` text rw; `InfoSession` sfInfoSession r; `BacASable` boolean rw; `URLServeur` text rw
- `CSFProduit`, script type "sfProduit", number 29. no properties
- `CAuthor`, script type "gglAuteur", number 51. `Nom` string rf; `Email` string rf
- `CGglCommentaire`, script type "gglCommentaire", number 74. `Texte` string rw; `Auteur` gglAuteur r
- `CGglExifTags`, script type "gglTagEXIF", number 75. `Distance` real rw; `Exposition` real rw; `Flash` boolean rw; `DistanceFocale` real rw; `Ouverture` real rw; `IdentifiantImageUnique` string rw!; `ISO` int64 rw; `Constructeur` string rw; `Modele` string rw; `Timestamp` int64 rw; `IdImageUnique` string rw
- `CGglMediaContent`, script type "gglContenuMédia", number 76. `URL` string rf; `TypeMIME` string rf; `Hauteur` int rf; `Largeur` int rf
- `CGglMediaGroup`, script type "gglGroupeMédia", number 77. `MotCles` string rw; `Credit` string rw; `ContenuMedia` gglContenuMédia r. Collections: `Miniature` of gglVignette
- `CGglMediaThumbnail`, script type "gglVignette", number 78. `URL` string rf; `Hauteur` int rf; `Largeur` int rf; `Image` image rf
- `CGglTag`, script type "gglTag", number 79. `Texte` string rw; `Auteur` gglAuteur r
- `CSFLoginResult`, script type "sfInfoSession", number 80. `URLServeurMetadonnees` string rf; `MotDePasseExpire` boolean rf; `BacASable` boolean rf; `URLServeur` string rf; `IdSession` string rf; `IdUtilisateur` string rf; `InfoUtilisateur` sfInfoUtilisateur r
- `CSFGetUserInfoResult`, script type "sfInfoUtilisateur", number 81. `accessibilityMode` boolean rf; `currencySymbol` string rf; `orgDefaultCurrencyIsoCode` string rf; `organizationId` string rf; `organizationMultiCurrency` boolean rf; `organizationName` string rf; `profileId` string rf; `roleId` string rf; `userDefaultCurrencyIsoCode` string rf; `userEmail` string rf; `userFullName` string rf; `userId` string rf; `userLanguage` string rf; `userLocale` string rf; `userName` string rf; `userTimeZone` string rf; `userType` string rf; `userUiSkin` string rf; `userLocale_compat` string r!
- `CSFObject`, script type "sfObjet", number 82. `FieldsToNull` string rw; `ID` string rw; `Type` string rw. Collections: `Valeur` of ?
- `CSFError`, script type "sfErreur", number 83. `fields` string rf; `message` string rf; `statusCode` string rf
- `CSFDeleteResult`, script type "sfRésultatSupprime", number 84. `id` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CSFEmptyRecycleBinResult`, script type "sfRésultatVideCorbeille", number 85. `id` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CSFDeletedRecord`, script type "sfEnregistrementSupprimé", number 86. `deletedDate` datetime rf; `id` string rf
- `CSFGetDeletedResult`, script type "sfRésultatRechercheSupprimé", number 87. `earliestDateAvailable` datetime rf; `latestDateCovered` datetime rf. Collections: `deletedRecords` of sfEnregistrementSupprimé
- `CSFUpsertResult`, script type "sfRésultatSauvegarde", number 88. `created` boolean rf; `id` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CSFGetUpdatedResult`, script type "sfRésultatRechercheModifié", number 89. `ids` string rf; `latestDateCovered` datetime rf
- `CSFQueryResult`, script type "sfRésultatExécuteRequête", number 90. `done` boolean rf; `queryLocator` string rf; `size` int rf. Collections: `sObjects` of sfObjet
- `CSFInvalidateSessionsResult`, script type "sfRésultatDéconnecte", number 91. `success` boolean rf. Collections: `errors` of sfErreur
- `CSFLeadConvert`, script type "sfConversionPiste", number 92. `accountId` string rw; `contactId` string rw; `convertedStatus` string rw; `doNotCreateOpportunity` boolean rw; `leadId` string rw; `opportunityName` string rw; `overwriteLeadSource` boolean rw; `ownerId` string rw; `sendNotificationEmail` boolean rw
- `CSFLeadConvertResult`, script type "sfRésultatConvertitPiste", number 93. `accountId` string rf; `contactId` string rf; `leadId` string rf; `opportunityId` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CSFMergeResult`, script type "sfRésultatFusionne", number 94. `id` string rf; `mergedRecordIds` string rf; `success` boolean rf; `updatedRelatedIds` string rf. Collections: `errors` of sfErreur
- `CSFMergeRequest`, script type "sfRequêteFusionne", number 95. `masterRecord` sfObjet r; `recordToMergeIds` string rw
- `CSFProcessResult`, script type "sfRésultatExécuteTraitement", number 96. `actorIds` string rf; `entityId` string rf; `instanceId` string rf; `instanceStatus` string rf; `newWorkitemIds` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CSFProcessSubmitRequest`, script type "sfRequêteTraitementSoumission", number 97. `objectId` string rw; `comments` string rw; `nextApproverIds` string rw
- `CSFProcessWorkitemRequest`, script type "sfRequêteTraitementTâche", number 98. `action` string rw; `workitemId` string rw; `comments` string rw; `nextApproverIds` string rw
- `CSFSearchResult`, script type "sfRésultatRecherche", number 99. no properties. Collections: `searchRecords` of sfObjet
- `CSFUndeleteResult`, script type "sfRésultatRestaure", number 100. `id` string rf; `success` boolean rf. Collections: `errors` of sfErreur
- `CFacebookSession`, script type "fbSession", number 101. `AppID` text rw; `AppSecret` text rw; `Email` text rw; `Permission` array rw; `PageID` text rw
- `COAuth2ParametresDINO`, script type "OAuth2Paramètres", number 102. `ClientID` string rw; `ClientSecret` string rw; `URLAuth` string rw; `URLToken` string rw; `Scope` string rw; `ParametresSupplementaires` string rw; `URLRedirection` string rw
- `CAuthTokenDINO`, script type "AuthToken", number 103, 2 constructor syntaxes. `Valide` boolean r; `Valeur` string rw; `ReponseServeur` binary r; `__Serialisation__` binary rf!
)TXT";

constexpr std::string_view ksConstantesTexte =
    R"TXT(`gglGIF` = "gif" (117); `gglJPG` = "jpg" (118); `gglJPGBaseline` = "jpg-baseline" (119); `gglPNG8` = "png8" (120); `gglPNG32` = "png32" (121); `gglPetit` = "small" (122); `gglMoyen` = "mid" (123); `gglGrand` = "" (124); `gglMini` = "tiny" (126); `gglPlan` = "roadmap" (128); `gglPeripheriqueMobile` = "mobile" (129); `gglSatellite` = "satellite" (130); `gglTerrain` = "terrain" (131); `gglHybride` = "hybrid" (132); `gglLundi` = "Monday" (133); `gglMardi` = "Tuesday" (134); `gglMercredi` = "Wednesday" (135); `gglJeudi` = "Thursday" (136); `gglVendredi` = "Friday" (137); `gglSamedi` = "Saturday" (138); `gglDimanche` = "Sunday" (139); `gglActif` = "Active" (140); `gglEnAttente` = "Pending" (141); `gglTermine` = "Ended" (142); `gglEnPause` = "Paused" (143); `gglSuspendu` = "Suspended" (144); `gglEnService` = "Enabled" (161); `gglEfface` = "Deleted" (162); `gglDesactive` = "Disabled" (163); `gglPublic` = "public" (170); `gglPrive` = "private" (171); `gglDesapprouve` = "Disapproved" (173); `fbInfoProfil` = "public_profile" (174); `fbInfoAmis` = "user_friends" (175); `fbEmail` = "email" (176); `fbNom` = "name" (180); `fbImage` = "picture" (181); `fbIdentifiant` = "id" (182).)TXT";
constexpr std::string_view ksConstantesEntier =
    "104 = 1; 105 = 0; 106 = 1; 107 = 2; 108 = 1; 109 = 2; 110 = 4; 111 = 8; 112 = 1; 113 = 2; 114 "
    "= 4; 115 = 8; 116 = 8; 125 = 4; 127 = -1; 145 = 1; 146 = 2; 147 = 3; 148 = 4; 149 = 5; 150 = "
    "6; 151 = 7; 152 = 8; 153 = 9; 154 = 10; 155 = 11; 156 = 12; 157 = 13; 158 = 14; 159 = 15; 160 "
    "= 16; 164 = 16; 165 = 1; 166 = 2; 167 = 4; 168 = 8; 169 = 16; 172 = 1; 177 = 1; 178 = 2; 179 "
    "= 3.";

// ---- Reading it -------------------------------------------------------------------------

std::vector<std::string_view> Coupe(std::string_view sv, std::string_view svSep) {
    std::vector<std::string_view> tab;
    while (true) {
        const size_t n = sv.find(svSep);
        tab.push_back(sv.substr(0, n));
        if (n == std::string_view::npos)
            break;
        sv.remove_prefix(n + svSep.size());
    }
    return tab;
}
// Blanks around, and the full stop that ends a list.
std::string_view Nettoie(std::string_view sv) {
    while (!sv.empty() && (sv.front() == ' ' || sv.front() == '\n'))
        sv.remove_prefix(1);
    while (!sv.empty() && (sv.back() == ' ' || sv.back() == '.' || sv.back() == '\n'))
        sv.remove_suffix(1);
    return sv;
}
// A name as the lists quote it.
std::string_view Nom(std::string_view sv) {
    sv = Nettoie(sv);
    if (sv.size() >= 2 && sv.front() == '`' && sv.back() == '`')
        sv = sv.substr(1, sv.size() - 2);
    return sv;
}
std::string_view Entre(std::string_view sv, char cDebut, char cFin) {
    const size_t n = sv.find(cDebut);
    const size_t m = sv.find(cFin, n + 1);
    return sv.substr(n + 1, m - n - 1);
}
unsigned nEntier(std::string_view sv) {
    return static_cast<unsigned>(std::stoul(std::string(sv)));
}

std::vector<std::string> TabTypeRef() {
    std::vector<std::string> tab;
    for (std::string_view sv : Coupe(Nettoie(ksTypeRefs), ", "))
        tab.emplace_back(sv.substr(sv.find(' ') + 1));
    return tab;
}
unsigned nIndiceTypeRef(std::string_view svNom) {
    const std::vector<std::string> tab = TabTypeRef();
    for (size_t i = 0; i < tab.size(); ++i)
        if (tab[i] == svNom)
            return static_cast<unsigned>(i + 1);
    ADD_FAILURE() << "no type reference " << svNom;
    return 0;
}

// A signature item as the table stores it: code, then qualifier, 16 bits each.
uint32_t nItem(std::string_view svType) {
    static const std::map<std::string_view, uint32_t> s_map = {
        {"boolean", 1},        {"int", 8},
        {"int*", 0x8008},      {"buffer", 19},
        {"string", 130},       {"text", 122},
        {"text*", 0x807A},     {"datetime", 26},
        {"datetime*", 0x801A}, {"binary", 28},
        {"any", 31},           {"array", 112},
        {"stringarray", 58},   {"stringorbuffer", 80}};
    auto it = s_map.find(svType);
    return it != s_map.end() ? it->second : 111u | (nIndiceTypeRef(svType) << 16);
}

struct STSyntaxe {
    bool bVide = false, bSansHandler = false;
    std::vector<uint32_t> tabItem; // result, then parameters
};
struct STFonction {
    unsigned nNumero;
    std::string sNom, sServeur;
    std::vector<STSyntaxe> tabSyntaxe;
};
std::vector<STFonction> TabFonction() {
    std::vector<STFonction> tab;
    for (std::string_view svLigne : Coupe(Nettoie(ksFonctions), "\n")) {
        const std::vector<std::string_view> tabCol = Coupe(svLigne, " | ");
        STFonction st{nEntier(Nettoie(tabCol[0].substr(1))),
                      std::string(Nom(tabCol[1])),
                      std::string(Nom(tabCol[3])),
                      {}};
        for (std::string_view svSyn :
             Coupe(Nettoie(tabCol[4].substr(0, tabCol[4].find(" |"))), "; ")) {
            STSyntaxe stSyn;
            svSyn = svSyn.substr(svSyn.find(": ") + 2);
            if (svSyn == "unfilled") {
                stSyn.bVide = true;
            } else {
                stSyn.bSansHandler = svSyn.ends_with(" no handler");
                stSyn.tabItem.push_back(nItem(svSyn.substr(0, svSyn.find(' '))));
                for (std::string_view svParam : Coupe(Entre(svSyn, '(', ')'), ", "))
                    stSyn.tabItem.push_back(nItem(svParam));
            }
            st.tabSyntaxe.push_back(stSyn);
        }
        EXPECT_EQ(st.tabSyntaxe.size(), nEntier(Nettoie(tabCol[2]))) << st.sNom;
        tab.push_back(st);
    }
    return tab;
}

struct STMembre {
    std::string sNom, sType, sAcces;
    bool bCompat;
};
struct STClasse {
    std::string sClasse, sType;
    unsigned nNumero, nNbConstructeur;
    std::vector<STMembre> tabPropriete, tabAccesseur;
};
std::vector<STClasse> TabClasse() {
    std::vector<STClasse> tab;
    for (std::string_view svLigne : Coupe(Nettoie(ksClasses), "\n")) {
        STClasse st;
        st.sClasse = Entre(svLigne, '`', '`');
        st.sType = Entre(svLigne, '"', '"');
        const size_t nNumero = svLigne.find("number ") + 7;
        st.nNumero =
            nEntier(svLigne.substr(nNumero, svLigne.find_first_of(".,", nNumero) - nNumero));
        st.nNbConstructeur =
            svLigne.find("2 constructor syntaxes") != std::string_view::npos ? 2 : 1;
        std::string_view svReste = svLigne.substr(svLigne.find(". ", nNumero) + 2);
        std::string_view svCollections;
        if (const size_t n = svReste.find("Collections: "); n != std::string_view::npos) {
            svCollections = svReste.substr(n + 13);
            svReste = svReste.substr(0, n);
        }
        if (Nettoie(svReste) != "no properties") {
            for (std::string_view sv : Coupe(Nettoie(svReste), "; ")) {
                const std::vector<std::string_view> tabMot = Coupe(Nettoie(sv), " ");
                std::string sAcces(tabMot[2]);
                const bool bCompat = sAcces.ends_with('!');
                if (bCompat)
                    sAcces.pop_back();
                st.tabPropriete.push_back(
                    {std::string(Nom(tabMot[0])), std::string(tabMot[1]), sAcces, bCompat});
            }
        }
        if (!svCollections.empty()) {
            for (std::string_view sv : Coupe(Nettoie(svCollections), "; ")) {
                std::string sType(sv.substr(sv.find(" of ") + 4));
                const bool bCompat = sType.ends_with('!');
                if (bCompat)
                    sType.pop_back();
                st.tabAccesseur.push_back({std::string(Entre(sv, '`', '`')), sType, "", bCompat});
            }
        }
        tab.push_back(st);
    }
    return tab;
}

// djb2 of the name in capitals; the names here have no accents.
uint64_t nHash(std::string_view sv) {
    uint32_t h = 5381;
    for (char c : sv)
        h = h * 33 + static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    return h;
}

// What the host expects of a type string: the name's UTF-8 bytes each taken as a Latin-1
// character and encoded again.
std::string sTexteType(unsigned nNumero, std::string_view svNom) {
    std::string s = "+:060:" + std::to_string(nNumero) + ":GGL:";
    for (char c : svNom) {
        const auto by = static_cast<unsigned char>(c);
        if (by < 0x80) {
            s += c;
        } else {
            s += static_cast<char>(0xC0 | (by >> 6));
            s += static_cast<char>(0x80 | (by & 0x3F));
        }
    }
    return s;
}

uint64_t qwFlagsClasse(std::string_view svClasse) {
    if (svClasse == "CGoogleChemin" || svClasse == "CGooglePoint" ||
        svClasse == "CGoogleMarqueur" || svClasse == "CGoogleParametre")
        return 0x8069202410;
    if (svClasse == "CSFProduit")
        return 0x81E9200011;
    if (svClasse.starts_with("CSF"))
        return 0x81E9200010;
    if (svClasse == "CFacebookSession")
        return 0x8069200290;
    if (svClasse == "COAuth2ParametresDINO" || svClasse == "CAuthTokenDINO")
        return 0x806B200010;
    return 0x81EB202410;
}

uint64_t qwFlagsFonction(const STFonction& st) {
    static const std::map<std::string_view, uint64_t> s_map = {
        {"GglConnecte", 0xC1C323A400},         {"GglDeconnecte", 0x81C323A400},
        {"GglRecupereDocument", 0x81C322A600}, {"GglVersXML", 0x81C322A481},
        {"SFListeProduit", 0x81C1228401},      {"AuthIdentifie", 0x81C323A000}};
    if (st.nNumero >= 75 && st.nNumero <= 77)
        return 0x81C3A2A401;
    if (auto it = s_map.find(st.sNom); it != s_map.end())
        return it->second;
    if (st.sServeur == "CSFConnexion")
        return 0x81C1228400;
    if (st.sServeur == "CFacebookSession")
        return 0x81C123A200;
    return 0x81C322A400;
}

uint32_t nMot(const unsigned char* pby) {
    return pby[0] | pby[1] << 8 | pby[2] << 16 | static_cast<uint32_t>(pby[3]) << 24;
}
std::vector<uint32_t> TabItem(const unsigned char* pby) {
    std::vector<uint32_t> tab;
    for (; *pby; pby += 4)
        tab.push_back(nMot(pby));
    return tab;
}

// ---- The name block, read back ----------------------------------------------------------

struct STBlocNom {
    std::vector<std::string> tabFonction, tabConstante, tabTypeRef, tabClasse, tabMembre;
    size_t nFin = 0;
};
STBlocNom stLitBlocNom() {
    const unsigned char* pby = gbyBlocNom_60;
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(pby), 4), "NOMS");
    const auto n16 = [&](size_t i) { return static_cast<size_t>(pby[i] | pby[i + 1] << 8); };
    EXPECT_EQ(n16(4), 1u);
    STBlocNom st;
    size_t nPos = 18;
    const auto Lit = [&](std::vector<std::string>& tab, size_t nNb) {
        for (size_t i = 0; i < nNb && nPos < knKllTailleBlocNom; ++i) {
            tab.emplace_back(reinterpret_cast<const char*>(pby + nPos));
            nPos += tab.back().size() + 1;
        }
    };
    Lit(st.tabFonction, n16(6));
    Lit(st.tabConstante, n16(8));
    Lit(st.tabTypeRef, n16(10));
    Lit(st.tabClasse, n16(12));
    Lit(st.tabMembre, n16(14) + n16(16));
    st.nFin = nPos;
    return st;
}

// ---- The tests --------------------------------------------------------------------------

TEST(TablesFonctions, LesFonctionsServiesSuiventLeurTranscription) {
    const std::vector<STFonction> tab = TabFonction();
    ASSERT_EQ(tab.size(), 49u);
    const STBlocNom stNoms = stLitBlocNom();
    for (const STFonction& st : tab) {
        SCOPED_TRACE(st.sNom + " " + std::to_string(st.nNumero));
        const STKLFonction& stRow = __gstTabFonction_60[st.nNumero - 1];
        EXPECT_EQ(stRow.nNumero, st.nNumero);
        EXPECT_EQ(stRow.qwZero8 | stRow.qwZero16 | stRow.dwZero36, 0u);
        EXPECT_EQ(stRow.qwFlags, qwFlagsFonction(st));
        EXPECT_EQ(stRow.nGetNbSyntaxe(), st.tabSyntaxe.size());
        EXPECT_EQ(stRow.nGetLibrairie(), 60u);
        const unsigned nIndice =
            st.nNumero >= 75 && st.nNumero <= 77 ? st.nNumero - 71 : st.nNumero - 1;
        EXPECT_EQ(stRow.nGetIndiceNom(), nIndice);
        ASSERT_LT(nIndice, stNoms.tabFonction.size());
        EXPECT_EQ(stNoms.tabFonction[nIndice], st.sNom);
        const bool bLibre = st.sServeur == "CComposanteGGL";
        for (size_t k = 0; k < st.tabSyntaxe.size(); ++k) {
            SCOPED_TRACE("syntax " + std::to_string(k));
            const STSyntaxe& stSyn = st.tabSyntaxe[k];
            const STKLSyntaxe& stSynRow = stRow.pstSyntaxe[k];
            EXPECT_EQ(TabItem(stSynRow.pbySignature), stSyn.tabItem);
            EXPECT_EQ(stSynRow.qwZero, 0u);
            EXPECT_EQ(stSynRow.nGetGenre(), bLibre ? 0u : 1u);
            EXPECT_EQ(stSynRow.qwOption >> 16, 0u);
            if (!stSyn.bVide) {
                EXPECT_EQ(stSynRow.nGetNbParametre(), stSyn.tabItem.size() - 1);
            }
            void* pHandler = reinterpret_cast<void*>(stSynRow.pfnMethode);
            if (stSyn.bSansHandler) {
                EXPECT_EQ(pHandler, nullptr);
            } else {
                EXPECT_NE(pHandler, nullptr);
                EXPECT_EQ(pHandler, pSonde('m', st.sNom, std::to_string(k)));
            }
        }
    }
}

TEST(TablesFonctions, LesSyntaxesSansSignatureLisentLeursParametres) {
    // GglDeconnecte: the connection, then the bits; FBFermeSession: the session alone.
    EXPECT_EQ(__gstTabFonction_60[95].pstSyntaxe[0].nGetNbParametre(), 1u);
    EXPECT_EQ(__gstTabFonction_60[95].pstSyntaxe[1].nGetNbParametre(), 2u);
    EXPECT_EQ(__gstTabFonction_60[97].pstSyntaxe[0].nGetNbParametre(), 1u);
}

TEST(TablesFonctions, LesSecondesInscriptionsPartagentLesSyntaxes) {
    for (unsigned n : {75u, 76u, 77u}) {
        const STKLFonction& stSeconde = __gstTabFonction_60[n - 1];
        const STKLFonction& stPremiere = __gstTabFonction_60[n - 71];
        EXPECT_EQ(stSeconde.pstSyntaxe, stPremiere.pstSyntaxe) << n;
        EXPECT_EQ(stSeconde.dwDescripteur, stPremiere.dwDescripteur) << n;
        EXPECT_NE(stSeconde.qwFlags, stPremiere.qwFlags) << n;
    }
}

TEST(TablesFonctions, LesFonctionsSansHandlerPrennentLesNumerosLibres) {
    std::vector<bool> tabPris(103, false);
    for (const STFonction& st : TabFonction())
        tabPris[st.nNumero] = true;
    const std::vector<std::string_view> tabNom = Coupe(Nettoie(ksAdWords), ", ");
    ASSERT_EQ(tabNom.size(), 53u);
    const STBlocNom stNoms = stLitBlocNom();
    unsigned n = 0;
    for (std::string_view svNom : tabNom) {
        do
            ++n;
        while (tabPris[n]);
        SCOPED_TRACE(std::string(Nom(svNom)));
        const STKLFonction& stRow = __gstTabFonction_60[n - 1];
        EXPECT_EQ(stRow.nNumero, n);
        EXPECT_EQ(stNoms.tabFonction[stRow.nGetIndiceNom()], Nom(svNom));
        EXPECT_EQ(stRow.nGetIndiceNom(), n - 1);
        EXPECT_EQ(stRow.qwFlags, Nom(svNom) == "GglRecupereCarte" ? 0x81C122A400 : 0x81C322A482);
        const unsigned nNbSyntaxe = Nom(svNom) == "GglRecupereCarte"            ? 8
                                    : Nom(svNom) == "GglAdresseVersCoordonnees" ? 2
                                                                                : 1;
        ASSERT_EQ(stRow.nGetNbSyntaxe(), nNbSyntaxe);
        // The two map functions are served by the connection; the AdWords ones by nothing.
        const bool bCarte = nNbSyntaxe > 1;
        for (unsigned k = 0; k < nNbSyntaxe; ++k) {
            const STKLSyntaxe& stSyn = stRow.pstSyntaxe[k];
            EXPECT_EQ(stSyn.pfnMethode != nullptr, bCarte);
            const std::vector<uint32_t> tabItem = TabItem(stSyn.pbySignature);
            ASSERT_GE(tabItem.size(), 2u);
            EXPECT_EQ(stSyn.nGetNbParametre(), tabItem.size() - 1);
            // Served by their first parameter, a connection.
            EXPECT_EQ(stSyn.nGetGenre(), 1u);
            EXPECT_TRUE(tabItem[1] == nItem("gglAdWConnexion") ||
                        tabItem[1] == nItem("gglConnexion"));
        }
    }
    EXPECT_EQ(n, 72u);
}

TEST(TablesFonctions, LeMotDescripteurCompteLesSyntaxes) {
    unsigned nMethode = 0, nLibre = 0;
    for (uint32_t i = 0; i < knKllNbFonction; ++i) {
        const STKLFonction& st = __gstTabFonction_60[i];
        EXPECT_EQ(st.nNumero, i + 1);
        if (i >= 74 && i <= 76)
            continue; // the shared tables are counted once
        for (unsigned k = 0; k < st.nGetNbSyntaxe(); ++k) {
            if (!st.pstSyntaxe[k].pfnMethode)
                continue;
            (st.pstSyntaxe[k].nGetGenre() == 0 ? nLibre : nMethode)++;
        }
    }
    EXPECT_EQ(knKllNbFonction, 102u);
    EXPECT_EQ(nMethode, 103u) << "93, and the ten syntaxes of the two map functions";
    EXPECT_EQ(nLibre, 2u);
}

TEST(TablesConstantes, SuiventLeurTranscription) {
    ASSERT_EQ(knKllNbConstante, 79u);
    std::map<unsigned, std::pair<std::string, std::wstring>> mapTexte;
    for (std::string_view sv : Coupe(Nettoie(ksConstantesTexte), "; ")) {
        const std::string sValeur(Entre(sv, '"', '"'));
        mapTexte[nEntier(Entre(sv, '(', ')'))] = {std::string(Entre(sv, '`', '`')),
                                                  std::wstring(sValeur.begin(), sValeur.end())};
    }
    std::map<unsigned, int> mapEntier;
    for (std::string_view sv : Coupe(Nettoie(ksConstantesEntier), "; "))
        mapEntier[nEntier(sv.substr(0, sv.find(' ')))] =
            std::stoi(std::string(sv.substr(sv.find("= ") + 2)));
    EXPECT_EQ(mapTexte.size() + mapEntier.size(), 79u);

    const STBlocNom stNoms = stLitBlocNom();
    ASSERT_EQ(stNoms.tabConstante.size(), 79u);
    for (uint32_t i = 0; i < knKllNbConstante; ++i) {
        const STKLConstante& st = __gstTabConstante_60[i];
        SCOPED_TRACE(st.nNumero);
        EXPECT_EQ(st.nNumero, 104 + i) << "constants are their own identifiers, 104 to 182";
        EXPECT_EQ(st.qwZero, 0u);
        EXPECT_EQ(st.qwCodeNom, nHash(stNoms.tabConstante[i]));
        if (auto it = mapTexte.find(static_cast<unsigned>(st.nNumero)); it != mapTexte.end()) {
            EXPECT_EQ(st.qwType, 0x7A3Cu);
            EXPECT_EQ(std::wstring(st.pszValeur), it->second.second);
            EXPECT_EQ(stNoms.tabConstante[i], it->second.first);
        } else {
            ASSERT_TRUE(mapEntier.contains(static_cast<unsigned>(st.nNumero)));
            EXPECT_EQ(st.qwType, 0x83Cu);
            EXPECT_EQ(st.nValeur, mapEntier[static_cast<unsigned>(st.nNumero)]);
            EXPECT_FALSE(stNoms.tabConstante[i].empty());
        }
    }
}

TEST(TablesTypeRefs, DoubleEncodageEtNumerosDesClasses) {
    const std::vector<std::string> tab = TabTypeRef();
    ASSERT_EQ(tab.size(), 49u);
    ASSERT_EQ(knKllNbTypeRef, 49u);
    std::map<std::string, unsigned> mapNumero;
    for (const STClasse& st : TabClasse())
        mapNumero[st.sType] = st.nNumero;
    const STBlocNom stNoms = stLitBlocNom();
    std::vector<unsigned> tabNumero;
    for (size_t i = 0; i < tab.size(); ++i) {
        SCOPED_TRACE(tab[i]);
        const std::string_view sv = __gstTabTypeRef_60[i];
        const size_t nFin = sv.find(":GGL:");
        ASSERT_NE(nFin, std::string_view::npos);
        const unsigned nNumero = nEntier(sv.substr(6, nFin - 6));
        EXPECT_EQ(sv, sTexteType(nNumero, tab[i]));
        if (mapNumero.contains(tab[i])) {
            EXPECT_EQ(nNumero, mapNumero[tab[i]]);
        }
        tabNumero.push_back(nNumero);
        EXPECT_EQ(stNoms.tabTypeRef[i], tab[i]);
    }
    // The types without a class take numbers no class has, each its own.
    for (size_t i = 0; i < tab.size(); ++i)
        for (size_t j = i + 1; j < tab.size(); ++j)
            EXPECT_NE(tabNumero[i], tabNumero[j]);
    EXPECT_EQ(std::string_view(__gstTabTypeRef_60[28]), "+:060:2:GGL:gglEv\xC3\x83\xC2\xA9nement");
}

TEST(TablesClasses, ChaqueClasseSuitSaTranscription) {
    const std::vector<STClasse> tab = TabClasse();
    ASSERT_EQ(tab.size(), 52u);
    ASSERT_EQ(knKllNbClasse, 52u);
    const STBlocNom stNoms = stLitBlocNom();
    size_t nMembre = 0;
    for (size_t i = 0; i < tab.size(); ++i) {
        const STClasse& st = tab[i];
        SCOPED_TRACE(st.sClasse);
        const STKLOClasse& stRec = *__gpstTabClasse_60[i];
        const uint64_t qwFlags = qwFlagsClasse(st.sClasse);
        EXPECT_EQ(std::string_view(stRec.pszType), sTexteType(st.nNumero, st.sType));
        EXPECT_EQ(stNoms.tabClasse[i], st.sType);
        EXPECT_EQ(stRec.qwFlags, qwFlags);
        EXPECT_EQ(stRec.qwDeux, 2u);
        const STSondeClasse& stSonde = gtabSondeClasse[i];
        ASSERT_EQ(stSonde.svClasse, st.sClasse);
        EXPECT_EQ(stRec.pfnCopie, stSonde.pfnCopie);
        EXPECT_EQ(stRec.pfnType, stSonde.pfnType);
        EXPECT_EQ(stRec.pfnObjetGlobal, stSonde.pfnObjetGlobal);
        EXPECT_EQ(stRec.pfnRAZ, stSonde.pfnRAZ);
        uint64_t qwAutres = stRec.qwZero8[0] | stRec.qwZero8[1] | stRec.qwZero64;
        for (uint64_t qw : stRec.qwZero88)
            qwAutres |= qw;
        for (uint64_t qw : stRec.qwZero152)
            qwAutres |= qw;
        for (uint64_t qw : stRec.qwZero208)
            qwAutres |= qw;
        for (uint64_t qw : stRec.qwZero240)
            qwAutres |= qw;
        EXPECT_EQ(qwAutres, 0u);

        ASSERT_EQ(stRec.nNbConstructeur, st.nNbConstructeur);
        for (size_t k = 0; k < st.nNbConstructeur; ++k) {
            const STKLSyntaxe& stC = stRec.pstConstructeur[k];
            EXPECT_EQ(reinterpret_cast<void*>(stC.pfnConstructeur),
                      pSonde('c', st.sClasse, std::to_string(k)));
            EXPECT_EQ(stC.qwOption, 0x200u);
            EXPECT_EQ(stC.pbySignature[0], 0);
        }

        ASSERT_EQ(stRec.nNbPropriete, st.tabPropriete.size());
        if (st.tabPropriete.empty()) {
            EXPECT_EQ(stRec.pstPropriete, nullptr);
        }
        for (size_t p = 0; p < st.tabPropriete.size(); ++p) {
            const STMembre& stM = st.tabPropriete[p];
            const STKLPropriete& stRow = stRec.pstPropriete[p];
            SCOPED_TRACE(stM.sNom);
            std::string sScript = stM.sNom;
            if (st.sClasse == "CGglAlbum" && stM.sNom == "Resume")
                sScript = "Description";
            if (st.sClasse == "CGglAlbum" && stM.sNom == "Localisation")
                sScript = "Lieu";
            EXPECT_EQ(stNoms.tabMembre[nMembre++], sScript);
            EXPECT_EQ(stRow.qwHash, nHash(sScript));
            EXPECT_EQ(stRow.qwZero, 0u);
            EXPECT_EQ(stRow.qwFlags, qwFlags | (stM.bCompat ? 1 : 0));
            static const std::map<std::string, uint64_t> s_mapType = {
                {"text", 122},  {"string", 16}, {"datetime", 26}, {"boolean", 1},
                {"int", 8},     {"int64", 9},   {"real", 12},     {"image", 30},
                {"array", 112}, {"binary", 28}, {"17", 17}};
            const bool bObjet = !s_mapType.contains(stM.sType);
            EXPECT_EQ(stRow.qwType,
                      bObjet ? 111 | (nIndiceTypeRef(stM.sType) << 16) : s_mapType.at(stM.sType));
            void* pGet = pSonde('g', st.sClasse, stM.sNom);
            ASSERT_NE(pGet, nullptr);
            EXPECT_EQ(reinterpret_cast<void*>(stRow.pfnGet), bObjet ? nullptr : pGet);
            EXPECT_EQ(reinterpret_cast<void*>(stRow.pfnGetObjet), bObjet ? pGet : nullptr);
            const bool bSet = stM.sAcces == "rw", bForce = stM.sAcces == "rf";
            EXPECT_EQ(reinterpret_cast<void*>(stRow.pfnSet),
                      bSet ? pSonde('s', st.sClasse, stM.sNom) : nullptr);
            EXPECT_EQ(reinterpret_cast<void*>(stRow.pfnSetForce),
                      bForce ? pSonde('f', st.sClasse, stM.sNom) : nullptr);
            EXPECT_EQ(stRow.pfnSet != nullptr, bSet);
            EXPECT_EQ(stRow.pfnSetForce != nullptr, bForce);
            const uint64_t qwOption =
                bObjet ? (bSet ? 0x602 : 0x402) : (bSet || bForce ? 0x202 : 0x2);
            EXPECT_EQ(stRow.qwOption, qwOption);
        }

        ASSERT_EQ(stRec.nNbAccesseur, st.tabAccesseur.size());
        if (st.tabAccesseur.empty()) {
            EXPECT_EQ(stRec.pstAccesseur, nullptr);
        }
        for (size_t a = 0; a < st.tabAccesseur.size(); ++a) {
            const STMembre& stM = st.tabAccesseur[a];
            const STKLAccesseur& stRow = stRec.pstAccesseur[a];
            SCOPED_TRACE(stM.sNom);
            EXPECT_EQ(stNoms.tabMembre[nMembre++], stM.sNom);
            EXPECT_EQ(stRow.qwHash, nHash(stM.sNom));
            EXPECT_EQ(stRow.qwZero, 0u);
            EXPECT_EQ(stRow.qwFlags, qwFlags | (stM.bCompat ? 1 : 0));
            EXPECT_EQ(stRow.qwType, 111 | (stM.sType == "?" ? 0 : nIndiceTypeRef(stM.sType) << 16));
            EXPECT_EQ(reinterpret_cast<void*>(stRow.pfnAccesseur),
                      pSonde('a', st.sClasse, stM.sNom));
            EXPECT_NE(stRow.pfnAccesseur, nullptr);
            EXPECT_EQ(stRow.qwOption, stM.bCompat ? 0x204u : 0x20204u);
        }
    }
    EXPECT_EQ(nMembre, stNoms.tabMembre.size());
}

TEST(TablesClasses, LesIdentifiantsSeSuivent) {
    uint64_t nId = __gstTabConstante_60[knKllNbConstante - 1].nNumero;
    EXPECT_EQ(nId, 182u);
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        EXPECT_EQ(st.nIdentifiant, ++nId) << i;
        for (uint64_t p = 0; p < st.nNbPropriete; ++p)
            EXPECT_EQ(st.pstPropriete[p].nIdentifiant, ++nId);
        for (uint64_t a = 0; a < st.nNbAccesseur; ++a)
            EXPECT_EQ(st.pstAccesseur[a].nIdentifiant, ++nId);
    }
    EXPECT_EQ(__gpstTabClasse_60[0]->nIdentifiant, 183u);
    EXPECT_EQ(nId, 182u + 52 + 242 + 29);
}

TEST(TablesClasses, LesComptesDesHandlers) {
    unsigned nGet = 0, nSet = 0, nForce = 0, nAccesseur = 0, nConstructeur = 0, nPropriete = 0;
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        for (uint64_t p = 0; p < st.nNbPropriete; ++p) {
            const STKLPropriete& stP = st.pstPropriete[p];
            ++nPropriete;
            nGet += (stP.pfnGet != nullptr) + (stP.pfnGetObjet != nullptr);
            nSet += stP.pfnSet != nullptr;
            nForce += stP.pfnSetForce != nullptr;
        }
        for (uint64_t a = 0; a < st.nNbAccesseur; ++a)
            nAccesseur += st.pstAccesseur[a].pfnAccesseur != nullptr;
        for (uint64_t c = 0; c < st.nNbConstructeur; ++c)
            nConstructeur += st.pstConstructeur[c].pfnConstructeur != nullptr;
    }
    EXPECT_EQ(nPropriete, 242u);
    EXPECT_EQ(nGet, 242u);
    EXPECT_EQ(nSet, 120u);
    EXPECT_EQ(nForce, 100u);
    EXPECT_EQ(nAccesseur, 29u);
    EXPECT_EQ(nConstructeur, 53u);
}

TEST(TablesClasses, SansProprieteLaTableEstNulle) {
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        const std::string_view sv = st.pszType;
        if (sv.ends_with(":sfProduit") || sv.ends_with(":sfR\xC3\x83\xC2\xA9sultatRecherche")) {
            EXPECT_EQ(st.nNbPropriete, 0u) << sv;
            EXPECT_EQ(st.pstPropriete, nullptr) << sv;
        }
    }
}

TEST(TablesClasses, HashesDesNomsConnus) {
    struct STCas {
        unsigned nClasse;
        const char* pszMembre;
        uint64_t qwHash;
    };
    // Class position, member, hash as the design gives them.
    const STCas tabCas[] = {
        {0, "Email", 0x0D0AF24D}, {0, "MotDePasse", 0xFE150EFA}, {2, "DateDebut", 0xC7E6FB37}};
    const std::vector<STClasse> tab = TabClasse();
    for (const STCas& c : tabCas) {
        const STClasse& st = tab[c.nClasse];
        for (size_t p = 0; p < st.tabPropriete.size(); ++p)
            if (st.tabPropriete[p].sNom == c.pszMembre) {
                EXPECT_EQ(__gpstTabClasse_60[c.nClasse]->pstPropriete[p].qwHash, c.qwHash)
                    << c.pszMembre;
            }
    }
    EXPECT_EQ(__gpstTabClasse_60[1]->pstAccesseur[0].qwHash, 0x3035486Cu) << "Evenement";
}

TEST(TablesBlocNom, SeRelitEtTientDansSaTaille) {
    EXPECT_EQ(knKllTailleBlocNom, 16101u);
    const STBlocNom st = stLitBlocNom();
    EXPECT_EQ(st.tabFonction.size(), 102u);
    EXPECT_EQ(st.tabTypeRef.size(), 49u);
    EXPECT_EQ(st.tabClasse.size(), 52u);
    EXPECT_EQ(st.tabMembre.size(), 242u + 29u);
    ASSERT_LE(st.nFin, knKllTailleBlocNom);
    for (size_t i = st.nFin; i < knKllTailleBlocNom; ++i)
        ASSERT_EQ(gbyBlocNom_60[i], 0) << i;
    // Every row's name stands at its name index; indices no row uses stay empty.
    std::vector<bool> tabUtilise(st.tabFonction.size(), false);
    for (uint32_t i = 0; i < knKllNbFonction; ++i) {
        const unsigned n = __gstTabFonction_60[i].nGetIndiceNom();
        ASSERT_LT(n, st.tabFonction.size());
        EXPECT_FALSE(st.tabFonction[n].empty()) << i;
        tabUtilise[n] = true;
    }
    for (size_t n = 0; n < tabUtilise.size(); ++n)
        if (!tabUtilise[n]) {
            EXPECT_TRUE(st.tabFonction[n].empty()) << n;
        }
}

} // namespace
