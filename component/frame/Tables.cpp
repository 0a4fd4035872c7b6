// The vocabulary tables of the component, expanded from the .def files: functions and their
// syntaxes, constants, type references, classes with their properties, accessors and
// constructors. All of it is constant data, initialised before any code runs; identifiers,
// counts, hashes and type strings are computed here at compile time, never written by hand.
//
// Handlers are named by the rows and declared weak here: a class defines its stubs in its own
// source (frame/KllStubs.h), and until it does, the host finds a null pointer in the slot.
#include "Tables.h"

#include "frame/KLLExport.h"
#include "frame/KllRows.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

#define KLL_INTERNE extern "C" __attribute__((visibility("hidden")))
#define KLL_FAIBLE extern "C" __attribute__((weak, visibility("hidden")))

namespace {

// ---- Handlers, declared weak ------------------------------------------------------------

using FKLLType = std::remove_pointer_t<PFNKLLType>;
using FKLLObjetGlobal = std::remove_pointer_t<PFNKLLObjetGlobal>;
using FKLLCopie = std::remove_pointer_t<PFNKLLCopie>;
using FKLLRAZ = std::remove_pointer_t<PFNKLLRAZ>;
using FKLLGet = std::remove_pointer_t<PFNKLLGet>;
using FKLLSet = std::remove_pointer_t<PFNKLLSet>;
using FKLLAccesseur = std::remove_pointer_t<PFNKLLAccesseur>;
using FKLLMethode = std::remove_pointer_t<PFNKLLMethode>;
using FKLLConstructeur = std::remove_pointer_t<PFNKLLConstructeur>;
using FKLLLibre = std::remove_pointer_t<PFNKLLLibre>;

} // namespace

#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_FAIBLE FKLLCopie KLL_##C##_C;                                                              \
    KLL_FAIBLE FKLLType KLL_##C##_T;                                                               \
    KLL_FAIBLE FKLLObjetGlobal KLL_##C##_GOG;                                                      \
    KLL_FAIBLE FKLLRAZ KLL_##C##_RAZ;
#define KLL_CONSTRUCTOR(C, k) KLL_FAIBLE FKLLConstructeur KLL_##C##_C_##k;
#define KLL_PROPERTY(C, P, T, A)                                                                   \
    KLL_FAIBLE FKLLGet KLL_##C##_G_##P;                                                            \
    KLL_IF_SETTER_##A(KLL_FAIBLE FKLLSet KLL_##C##_S_##P;, )                                       \
        KLL_IF_FORCED_##A(KLL_FAIBLE FKLLSet KLL_##C##_FS_##P;, )
#define KLL_ACCESSOR(C, N, TR, M) KLL_FAIBLE FKLLAccesseur KLL_##C##_A_##N;
#include "frame/Classes.def"

#define KLL_SYNTAX(C, F, k, R, ...) KLL_FAIBLE FKLLMethode KLL_##C##_M_##F##_S##k;
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...) KLL_FAIBLE FKLLMethode KLL_##C##_M_##F##_S##k;
#define KLL_SYNTAX_FREE(F, k, R, ...) KLL_FAIBLE FKLLLibre KLL_##F##_##k;
#include "frame/Functions.def"

namespace {

// ---- Type strings -----------------------------------------------------------------------

// "+:060:<number>:GGL:<name>". The host expects the name's UTF-8 bytes encoded once more as
// UTF-8, each byte above 0x7F taken for a Latin-1 character: é (C3 A9) becomes C3 83 C2 A9.
constexpr size_t nLongueurTypeRef(unsigned nNumero, const char* pszNom) {
    size_t n = std::string_view("+:060::GGL:").size() + 1;
    do {
        ++n;
        nNumero /= 10;
    } while (nNumero);
    for (; *pszNom; ++pszNom)
        n += static_cast<unsigned char>(*pszNom) >= 0x80 ? 2 : 1;
    return n;
}

template <size_t N> struct STTexteType { char sz[N]; };

template <size_t N> constexpr STTexteType<N> stTexteTypeRef(unsigned nNumero, const char* pszNom) {
    STTexteType<N> st{};
    size_t i = 0;
    const auto Ajoute = [&](std::string_view sv) {
        for (char c : sv)
            st.sz[i++] = c;
    };
    Ajoute("+:");
    const char szLibrairie[] = {char('0' + knKllLibrairie / 100),
                                char('0' + knKllLibrairie / 10 % 10),
                                char('0' + knKllLibrairie % 10)};
    Ajoute({szLibrairie, 3});
    Ajoute(":");
    char szChiffres[10] = {};
    size_t nChiffres = 0;
    do {
        szChiffres[nChiffres++] = static_cast<char>('0' + nNumero % 10);
        nNumero /= 10;
    } while (nNumero);
    while (nChiffres)
        st.sz[i++] = szChiffres[--nChiffres];
    Ajoute(":GGL:");
    for (; *pszNom; ++pszNom) {
        const auto by = static_cast<unsigned char>(*pszNom);
        if (by < 0x80) {
            st.sz[i++] = static_cast<char>(by);
        } else {
            st.sz[i++] = static_cast<char>(0xC0 | (by >> 6));
            st.sz[i++] = static_cast<char>(0x80 | (by & 0x3F));
        }
    }
    st.sz[i] = 0;
    return st;
}
#define KLL_TEXTE_TYPE(nNumero, pszNom)                                                            \
    stTexteTypeRef<nLongueurTypeRef(nNumero, pszNom)>(nNumero, pszNom)

static_assert(std::string_view(KLL_TEXTE_TYPE(2, "gglEvénement").sz) ==
              "+:060:2:GGL:gglEv\xC3\x83\xC2\xA9nement");

// A row's token is its script name without accents: what the other rows name must be what
// the host reads.
constexpr bool bTokenDuNom(std::string_view svToken, const char* pszNom) {
    size_t i = 0;
    for (const char* p = pszNom; *p; ++p, ++i) {
        if (i >= svToken.size())
            return false;
        const auto by = static_cast<unsigned char>(*p);
        if (by == 0xC3 && p[1]) {
            const char cBase = cKllLettreDeBase(static_cast<unsigned char>(0xC0 + (p[1] & 0x3F)));
            const char cToken = svToken[i];
            if (!cBase || (cToken & ~0x20) != cBase)
                return false;
            ++p;
        } else if (svToken[i] != *p) {
            return false;
        }
    }
    return i == svToken.size();
}

// ---- Type references --------------------------------------------------------------------

#define KLL_TYPEREF(Token, nNumero, pszNom)                                                        \
    constexpr auto gstTypeRef_##Token = KLL_TEXTE_TYPE(nNumero, pszNom);                           \
    static_assert(bTokenDuNom(#Token, pszNom), "the token of " pszNom " is its unaccented name");
#include "frame/TypeRefs.def"

struct STNomNumero {
    std::string_view svNom;
    unsigned nNumero;
};
constexpr STNomNumero gtabTypeRefNumero[] = {
#define KLL_TYPEREF(Token, nNumero, pszNom) {pszNom, nNumero},
#include "frame/TypeRefs.def"
};

// ---- Constants --------------------------------------------------------------------------

constexpr uint64_t gtabNumeroConstante[] = {
#define KLL_CONSTANT_INT(nNumero, Nom, nValeur) nNumero,
#define KLL_CONSTANT_TEXT(nNumero, Nom, pszValeur) nNumero,
#include "frame/Constants.def"
};
constexpr bool bSuiteSansTrou(const uint64_t* p, size_t n) {
    for (size_t i = 1; i < n; ++i)
        if (p[i] != p[0] + i)
            return false;
    return true;
}
static_assert(bSuiteSansTrou(gtabNumeroConstante, std::size(gtabNumeroConstante)),
              "constants run in number order without a gap");
constexpr uint64_t knDerniereConstante = gtabNumeroConstante[std::size(gtabNumeroConstante) - 1];

// ---- Classes: flags, counts, identifiers, type strings ----------------------------------

#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    constexpr uint64_t kqwFlags_##C = KLL_CF_##F;                                                  \
    constexpr auto gstType_##C = KLL_TEXTE_TYPE(nNumero, pszType);
#include "frame/Classes.def"

#define KLL_CLASS(C, nNumero, pszType, F) constexpr unsigned knNbPropriete_##C = 0
#define KLL_PROPERTY(C, P, T, A) +1
#define KLL_CLASS_END(C) ;
#include "frame/Classes.def"

#define KLL_CLASS(C, nNumero, pszType, F) constexpr unsigned knNbAccesseur_##C = 0
#define KLL_ACCESSOR(C, N, TR, M) +1
#define KLL_CLASS_END(C) ;
#include "frame/Classes.def"

// Identifiers continue the constants' numbers: each class, then its properties, then its
// accessors, in table order.
enum eKLLIDENTIFIANT : uint64_t {
    KLL_ID_AVANT_CLASSES = knDerniereConstante,
#define KLL_CLASS(C, nNumero, pszType, F) KLL_ID_##C,
#define KLL_PROPERTY(C, P, T, A) KLL_ID_##C##_P_##P,
#define KLL_ACCESSOR(C, N, TR, M) KLL_ID_##C##_A_##N,
#include "frame/Classes.def"
    KLL_ID_FIN
};

// A class that is also a type reference has one number in both places.
constexpr bool bMemeNumeroQueTypeRef(std::string_view svNom, unsigned nNumero) {
    for (const STNomNumero& st : gtabTypeRefNumero)
        if (st.svNom == svNom)
            return st.nNumero == nNumero;
    return true;
}
#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    static_assert(bMemeNumeroQueTypeRef(pszType, nNumero),                                         \
                  #C ": number differs from its type reference");
#include "frame/Classes.def"

// ---- Functions: syntax order, counts, signatures ----------------------------------------

constexpr bool bIndicesEnOrdre(const unsigned* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (p[i] != i)
            return false;
    return true;
}
#define KLL_FUNCTION(nNumero, F, Famille)                                                          \
    constexpr unsigned knNumero_##F = nNumero;                                                     \
    constexpr unsigned gtabSyntaxe_##F[] = {
#define KLL_SYNTAX(C, F, k, R, ...) k,
#define KLL_SYNTAX_FREE(F, k, R, ...) k,
#define KLL_SYNTAX_NONE(F, k, R, ...) k,
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...) k,
#define KLL_FUNCTION_END(F)                                                                        \
    }                                                                                              \
    ;                                                                                              \
    static_assert(bIndicesEnOrdre(gtabSyntaxe_##F, std::size(gtabSyntaxe_##F)),                    \
                  #F ": syntaxes numbered 0, 1, ... in order");
#include "frame/Functions.def"

constexpr uint64_t gtabNumeroFonction[] = {
#define KLL_FUNCTION(nNumero, F, Famille) nNumero,
#define KLL_FUNCTION_AGAIN(nNumero, F, Famille) nNumero,
#include "frame/Functions.def"
};
static_assert(gtabNumeroFonction[0] == 1 &&
                  bSuiteSansTrou(gtabNumeroFonction, std::size(gtabNumeroFonction)),
              "functions run from 1 in number order without a gap");

// Signature items of the parameters, one token at a time (eight at most).
#define KLL_SIG_ITEM(t) KLL_SIG_##t,
#define KLL_SIGS_1(a) KLL_SIG_ITEM(a)
#define KLL_SIGS_2(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_1(__VA_ARGS__)
#define KLL_SIGS_3(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_2(__VA_ARGS__)
#define KLL_SIGS_4(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_3(__VA_ARGS__)
#define KLL_SIGS_5(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_4(__VA_ARGS__)
#define KLL_SIGS_6(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_5(__VA_ARGS__)
#define KLL_SIGS_7(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_6(__VA_ARGS__)
#define KLL_SIGS_8(a, ...) KLL_SIG_ITEM(a) KLL_SIGS_7(__VA_ARGS__)
#define KLL_SIGS_CHOIX(_1, _2, _3, _4, _5, _6, _7, _8, N, ...) KLL_SIGS_##N
#define KLL_SIGS(...) KLL_SIGS_CHOIX(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1, 0)(__VA_ARGS__)

#define KLL_SIGNATURE(F, k, R, ...)                                                                \
    constexpr unsigned char gbySignature_##F##_##k[] = {KLL_SIG_##R, KLL_SIGS(__VA_ARGS__) 0};
#define KLL_SYNTAX(C, F, k, R, ...) KLL_SIGNATURE(F, k, R, __VA_ARGS__)
#define KLL_SYNTAX_FREE(F, k, R, ...) KLL_SIGNATURE(F, k, R, __VA_ARGS__)
#define KLL_SYNTAX_NONE(F, k, R, ...) KLL_SIGNATURE(F, k, R, __VA_ARGS__)
#include "frame/Functions.def"
#undef KLL_SIGNATURE

} // namespace

// ---- The tables -------------------------------------------------------------------------

#define KLL_NB_PARAM(F, k) nKllNbParametre(sizeof(gbySignature_##F##_##k))
#define KLL_FUNCTION(nNumero, F, Famille) KLL_INTERNE constinit const STKLSyntaxe gst##F##60 [] = {
#define KLL_SYNTAX(C, F, k, R, ...)                                                                \
    {{.pfnMethode = &KLL_##C##_M_##F##_S##k},                                                      \
     0,                                                                                            \
     gbySignature_##F##_##k,                                                                       \
     KLL_OPT_METHODE | KLL_NB_PARAM(F, k)},
#define KLL_SYNTAX_FREE(F, k, R, ...)                                                              \
    {{.pfnLibre = &KLL_##F##_##k}, 0, gbySignature_##F##_##k, KLL_OPT_LIBRE | KLL_NB_PARAM(F, k)},
#define KLL_SYNTAX_NONE(F, k, R, ...)                                                              \
    {{.pfnMethode = nullptr}, 0, gbySignature_##F##_##k, KLL_OPT_METHODE | KLL_NB_PARAM(F, k)},
#define KLL_SYNTAX_UNFILLED(C, F, k, n, ...)                                                            \
    {{.pfnMethode = &KLL_##C##_M_##F##_S##k}, 0, gbyKllSignatureVide, KLL_OPT_METHODE | (n)},
#define KLL_FUNCTION_END(F)                                                                        \
    }                                                                                              \
    ;
#include "frame/Functions.def"

// Descriptor word: syntaxes, library, name index. A second registration keeps the name
// index and the syntax table of the first.
#define KLL_ROW_FUNCTION(nNumero, F, Famille)                                                      \
    {nNumero,                                                                                      \
     0,                                                                                            \
     0,                                                                                            \
     KLL_FF_##Famille,                                                                             \
     static_cast<uint32_t>((std::size(gtabSyntaxe_##F) << 24) | (knKllLibrairie << 16) |           \
                           (knNumero_##F - 1)),                                                    \
     0,                                                                                            \
     gst##F##60},
KLL_EXPORT constinit const STKLFonction __gstTabFonction_60[] = {
#define KLL_FUNCTION(nNumero, F, Famille) KLL_ROW_FUNCTION(nNumero, F, Famille)
#define KLL_FUNCTION_AGAIN(nNumero, F, Famille) KLL_ROW_FUNCTION(nNumero, F, Famille)
#include "frame/Functions.def"
};
static_assert(std::size(__gstTabFonction_60) == knKllNbFonction);

// Constants: the name code is the hash of the name, as for properties.
#define KLL_TYPE_CONSTANTE(nCode) ((nCode)*256u + knKllLibrairie)
KLL_EXPORT constinit const STKLConstante __gstTabConstante_60[] = {
#define KLL_CONSTANT_INT(nNumero, Nom, n)                                                          \
    {nNumero, nKllHashNom(#Nom), 0, 0, {.nValeur = n}, KLL_TYPE_CONSTANTE(KLL_TYPE_INT)},
#define KLL_CONSTANT_TEXT(nNumero, Nom, psz)                                                       \
    {nNumero, nKllHashNom(#Nom), 0, 0, {.pszValeur = L##psz}, KLL_TYPE_CONSTANTE(KLL_TYPE_TEXT)},
#include "frame/Constants.def"
};
static_assert(std::size(__gstTabConstante_60) == knKllNbConstante);

KLL_EXPORT constinit const char* const __gstTabTypeRef_60[] = {
#define KLL_TYPEREF(Token, nNumero, pszNom) gstTypeRef_##Token.sz,
#include "frame/TypeRefs.def"
};
static_assert(std::size(__gstTabTypeRef_60) == knKllNbTypeRef);

// Per class: constructors, properties, accessors, then the record. Property and accessor
// tables may be empty, hence std::array; a record never points at an empty one.
#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_INTERNE constinit const STKLSyntaxe gstTabSyntaxeConstructeurClasse##C##60 [] = {
#define KLL_CONSTRUCTOR(C, k) KLL_ROW_CONSTRUCTOR(C, k),
#define KLL_CLASS_END(C)                                                                           \
    }                                                                                              \
    ;
#include "frame/Classes.def"

#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_INTERNE constinit const std::array<STKLPropriete, knNbPropriete_##C>                       \
        gstTabProprieteClasse##C##60 = {{
#define KLL_PROPERTY(C, P, T, A)                                                                   \
    KLL_ROW_PROPERTY(C, P, T, A, KLL_ID_##C##_P_##P, nKllHashNom(#P), kqwFlags_##C),
#define KLL_PROPERTY_AS(C, P, T, A, pszNom)                                                        \
    KLL_ROW_PROPERTY(C, P, T, A, KLL_ID_##C##_P_##P, nKllHashNom(pszNom), kqwFlags_##C),
#define KLL_CLASS_END(C)                                                                           \
    }                                                                                              \
    }                                                                                              \
    ;
#include "frame/Classes.def"

#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_INTERNE constinit const std::array<STKLAccesseur, knNbAccesseur_##C>                       \
        gstTabEClasseerateurClasse##C##60 = {{
#define KLL_ACCESSOR(C, N, TR, M)                                                                  \
    KLL_ROW_ACCESSOR(C, N, TR, M, KLL_ID_##C##_A_##N, nKllHashNom(#N), kqwFlags_##C),
#define KLL_CLASS_END(C)                                                                           \
    }                                                                                              \
    }                                                                                              \
    ;
#include "frame/Classes.def"

#define KLL_CLASS(C, nNumero, pszType, F)                                                          \
    KLL_INTERNE constinit const STKLOClasse KLL_##C = KLL_ROW_CLASS(                               \
        C, F, KLL_ID_##C, gstType_##C.sz, gstTabSyntaxeConstructeurClasse##C##60,                  \
        std::size(gstTabSyntaxeConstructeurClasse##C##60), (gstTabProprieteClasse##C##60).data(),  \
        knNbPropriete_##C, (gstTabEClasseerateurClasse##C##60).data(), knNbAccesseur_##C);
#include "frame/Classes.def"

KLL_EXPORT constinit const STKLOClasse* const __gpstTabClasse_60[] = {
#define KLL_CLASS(C, nNumero, pszType, F) &KLL_##C,
#include "frame/Classes.def"
};
static_assert(std::size(__gpstTabClasse_60) == knKllNbClasse);
