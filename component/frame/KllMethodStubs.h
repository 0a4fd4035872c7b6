// The method stubs of one class (or the stub of one free function), generated from the syntax
// rows of frame/Functions.def. The class's source names itself and includes this header once:
//
//     #include "connection/GoogleConnexion.h"
//     #define KLL_METHODES_CGoogleConnexion_GglRequete KLL_OUI   // every syntax of it
//     #define KLL_METHODES_CGoogleConnexion_GglEcrit_0 KLL_OUI   // syntax 0 alone
//     #include "frame/KllMethodStubs.h"
//
// and a free function the same way with KLL_LIBRE_<Function>. A function served for several
// kinds of object (GglEcrit, GglSupprime) names its syntaxes one by one, each in the source of
// the objects it writes. Each row named becomes the stub the tables name,
// KLL_<Class>_M_<Function>_S<k>: its argument tokens choose the
// readers, its result token the type code handed to the VM, and the call goes to the member of
// the function's name,
//
//     KLL_SYNTAX(CGoogleConnexion, GglRequete, 0, BUFFER, OBJ(gglConnexion), INT, TEXT)
//     -> KllRetourne(ctx, 19, object->GglRequete(ctx, error, KllArgEntier(pp, 0),
//                                                KllArgTexte(pp, 1)))
//
// so a shorter syntax is an overload of the member that says its defaults, and a row naming a
// member that does not exist, or with arguments of the wrong types, does not compile. A row
// without a signature (KLL_SYNTAX_UNFILLED) lists its argument tokens after its count and
// returns nothing. Objects arrive as the native class of their type reference.
//
// Free functions are called as Function(STKLAppel*, CComposanteGGL*, arguments...) and answer
// through the call record themselves; the stub returns 0.
#pragma once
#include "frame/KllStubs.h"

struct STKLAppel;
class CComposanteGGL;

// ---- Which rows this source serves: the names above set to KLL_OUI -------------------------

#define KLL_OUI ~, 1
#define KLL_PP_SECOND(a, b, ...) b
#define KLL_PP_EST_OUI(...) KLL_PP_SECOND(__VA_ARGS__, 0, 0)
#define KLL_PP_CAT(a, b) KLL_PP_CAT_(a, b)
#define KLL_PP_CAT_(a, b) a##b
#define KLL_PP_OU(a, b) KLL_PP_CAT(KLL_PP_OU_, KLL_PP_CAT(a, b))
#define KLL_PP_OU_00 0
#define KLL_PP_OU_01 1
#define KLL_PP_OU_10 1
#define KLL_PP_OU_11 1
#define KLL_PP_SI_1(m) m
#define KLL_PP_SI_0(m) KLL_PP_AVALE
#define KLL_PP_AVALE(...)
// KLL_PP_SI(c)(MACRO)(args): MACRO(args) when c is 1, nothing when it is 0.
#define KLL_PP_SI(c) KLL_PP_CAT(KLL_PP_SI_, c)

// ---- Objects: the native class of a type reference, through its class number --------------

template <unsigned nNumero> struct KllClasseNumero; // defined for the classes of the component
#include "frame/KllRowUndef.inc"                      // the class rows make no stubs here
#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    class C;                                                                                       \
    template <> struct KllClasseNumero<nNumero> {                                                  \
        using T = C;                                                                               \
    };
#include "frame/Classes.def"

#define KLL_TYPEREF(Token, nNumero, pszNom) inline constexpr unsigned knKllClasseDe_##Token = nNumero;
#include "frame/TypeRefs.def"
#undef KLL_TYPEREF

// ---- Readers by signature token (the pointer bit of a code changes nothing in the slot) -----

inline bool KllArgBooleen(unsigned char** pp, int i) {
    return KllArgEntier(pp, i) != 0;
}
inline CXYString<char> KllArgTampon(unsigned char** pp, int i) {
    return *reinterpret_cast<const CXYString<char>*>(pp[i]);
}

#define KLL_LIT_BOOLEAN KllArgBooleen
#define KLL_LIT_INT KllArgEntier
#define KLL_LIT_INT_P KllArgEntier
#define KLL_LIT_BUFFER KllArgTampon
#define KLL_LIT_STRING KllArgChaine
#define KLL_LIT_TEXT KllArgTexte
#define KLL_LIT_TEXT_P KllArgTexte
#define KLL_LIT_DATETIME KllArgDateHeure
#define KLL_LIT_DATETIME_P KllArgDateHeure
#define KLL_LIT_BINARY KllArgBinaire
#define KLL_LIT_IMAGE KllArgPointeur
#define KLL_LIT_ANY KllArgAny
#define KLL_LIT_STRINGARRAY KllArgTableauChaine
#define KLL_LIT_STRINGORBUFFER KllArgManipAUB
#define KLL_LIT_ARRAY KllArgTableau
#define KLL_LIT_OBJ(tr) KllArgObjet<KllClasseNumero<knKllClasseDe_##tr>::T>

// The type code of a result token, as the VM receives it.
#define KLL_RESULTAT_BOOLEAN 1
#define KLL_RESULTAT_INT 8
#define KLL_RESULTAT_BUFFER 19
#define KLL_RESULTAT_STRING 130
#define KLL_RESULTAT_TEXT 122
#define KLL_RESULTAT_DATETIME 26
#define KLL_RESULTAT_BINARY 28
#define KLL_RESULTAT_IMAGE 30
#define KLL_RESULTAT_ANY 31
#define KLL_RESULTAT_STRINGARRAY 58
#define KLL_RESULTAT_ARRAY 112
#define KLL_RESULTAT_OBJ(tr) 111

// ", reader(ppArguments, i)" for each token, i counting from 0 (eight arguments at most).
#define KLL_LU(i, t) , KLL_LIT_##t(ppArguments, i)
#define KLL_LUS_1(a) KLL_LU(0, a)
#define KLL_LUS_2(a, b) KLL_LUS_1(a) KLL_LU(1, b)
#define KLL_LUS_3(a, b, c) KLL_LUS_2(a, b) KLL_LU(2, c)
#define KLL_LUS_4(a, b, c, d) KLL_LUS_3(a, b, c) KLL_LU(3, d)
#define KLL_LUS_5(a, b, c, d, e) KLL_LUS_4(a, b, c, d) KLL_LU(4, e)
#define KLL_LUS_6(a, b, c, d, e, f) KLL_LUS_5(a, b, c, d, e) KLL_LU(5, f)
#define KLL_LUS_7(a, b, c, d, e, f, g) KLL_LUS_6(a, b, c, d, e, f) KLL_LU(6, g)
#define KLL_LUS_8(a, b, c, d, e, f, g, h) KLL_LUS_7(a, b, c, d, e, f, g) KLL_LU(7, h)
#define KLL_LUS_CHOIX(_1, _2, _3, _4, _5, _6, _7, _8, N, ...) KLL_LUS_##N
#define KLL_LUS(...)                                                                               \
    __VA_OPT__(KLL_LUS_CHOIX(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1, 0)(__VA_ARGS__))

// ---- The stubs -----------------------------------------------------------------------------

#define KLL_STUB_METHODE(C, F, k, R, Objet, ...)                                                   \
    extern "C" void KLL_##C##_M_##F##_S##k(void* pObjet,                                           \
                                           [[maybe_unused]] unsigned char** ppArguments,           \
                                           CCtxInfo* pclCtx, CXError* pclErreur) {                 \
        KllSousBarriere(pclErreur, [&] {                                                           \
            KllRetourne(pclCtx, KLL_RESULTAT_##R,                                                  \
                        KLL_OBJET(C)->F(pclCtx, pclErreur KLL_LUS(__VA_ARGS__)));                  \
        });                                                                                        \
    }

#define KLL_STUB_SANS_RESULTAT(C, F, k, n, Objet, ...)                                             \
    static_assert(n == 1 __VA_OPT__(+KLL_PP_COMPTE(__VA_ARGS__)),                               \
                  #F ": the argument tokens do not match the count");                              \
    extern "C" void KLL_##C##_M_##F##_S##k(void* pObjet,                                           \
                                           [[maybe_unused]] unsigned char** ppArguments,           \
                                           CCtxInfo* pclCtx, CXError* pclErreur) {                 \
        KllSousBarriere(pclErreur,                                                                 \
                        [&] { KLL_OBJET(C)->F(pclCtx, pclErreur KLL_LUS(__VA_ARGS__)); });         \
    }
#define KLL_PP_COMPTE(...) KLL_PP_NIEME(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define KLL_PP_NIEME(_1, _2, _3, _4, _5, _6, _7, _8, N, ...) N

#define KLL_STUB_LIBRE(F, k, R, ...)                                                               \
    extern "C" int KLL_##F##_##k(STKLAppel* pstAppel, void* pclLibrairie,                          \
                                 [[maybe_unused]] unsigned char** ppArguments) {                   \
        KllSousBarriere(nullptr, [&] {                                                             \
            F(pstAppel, static_cast<CComposanteGGL*>(pclLibrairie) KLL_LUS(__VA_ARGS__));          \
        });                                                                                        \
        return 0;                                                                                  \
    }

#define KLL_SERT(C, F, k)                                                                          \
    KLL_PP_OU(KLL_PP_EST_OUI(KLL_METHODES_##C##_##F), KLL_PP_EST_OUI(KLL_METHODES_##C##_##F##_##k))
#define KLL_SYNTAX(C, F, k, R, ...)                                                                \
    KLL_PP_SI(KLL_SERT(C, F, k))(KLL_STUB_METHODE)(C, F, k, R, __VA_ARGS__)
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...)                                                       \
    KLL_PP_SI(KLL_SERT(C, F, k))(KLL_STUB_SANS_RESULTAT)(C, F, k, n, __VA_ARGS__)
#define KLL_SYNTAX_FREE(F, k, R, ...)                                                              \
    KLL_PP_SI(KLL_PP_EST_OUI(KLL_LIBRE_##F))(KLL_STUB_LIBRE)(F, k, R, __VA_ARGS__)
#include "frame/Functions.def"
