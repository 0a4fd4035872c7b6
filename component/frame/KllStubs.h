// The stubs of a class, generated from its .def. A class's own source defines all of them,
// with the names the tables expect, by including this header just before its .def:
//
//     #include "frame/KllStubs.h"          // the rows of the next .def become stubs
//     #include "calendar/GoogleAgenda.def"
//
// What the class C offers, row by row (frame/Kll.h documents the rows):
//   KLL_CLASS        static ITypeDescription* ms_piType;
//                    CopieObjet(CCtxInfo*, CXError*, C* pSource): the copy into this object
//                    RAZObjet(CCtxInfo*, CXError*): back to a new object's state
//   KLL_CONSTRUCTOR  k = 0: static C* s_pclCreeObjet(CCtxInfo*, CXError*);
//                    k > 0: static C* s_pclCreeObjet(CCtxInfo*, CXError*, unsigned char**
//                    ppArguments) the stub hands the host the object's IObjetBase side, null
//                    staying null
//   KLL_PROPERTY     Get<P>(CCtxInfo*, CXError*), returning a form that KllRetourne takes (an
//                    object property returns its IObjetBase*); RW rows Set<P>, RF rows
//                    Force<P>, each (CCtxInfo*, CXError*, value) with the value in the form
//                    that KLL_ARG_<Type> reads
//   KLL_ACCESSOR     Accesseur<N>(CCtxInfo*, CXError*), returning the collection interface
// The global object handler returns null: no class has one.
//
// Method stubs come from the syntax rows of frame/Functions.def: frame/KllMethodStubs.h
// documents how a class's source asks for them.
//
// Every stub runs its body through the exception barrier (frame/KllBarriere.h): nothing thrown
// reaches the host.
//
// No include guard on the last part: each inclusion sets the row macros again, after the
// previous .def #undef'd them.
#ifndef KVGGL_FRAME_KLLSTUBS_H
#define KVGGL_FRAME_KLLSTUBS_H

#include "DateTime.h"
#include "KLBIN.h"
#include "ManipAUB.h"
#include "ObjectInterfaces.h"
#include "XYString.h"
#include "frame/Kll.h"
#include "frame/KllBarriere.h"
#include "frame/KllRetour.h"

#include <cstdint>
#include <cstring>

class CAny;
class CCtxInfo;
class CXError;
template <class T> class CXYStringArray;

// ---- Reading the arguments: slot i points at the value in its type's form --------------

namespace KllDetail {
template <class T> T Lit(unsigned char** ppArguments, int i) {
    T x;
    std::memcpy(&x, ppArguments[i], sizeof(T));
    return x;
}
} // namespace KllDetail

inline int KllArgEntier(unsigned char** pp, int i) {
    return KllDetail::Lit<int32_t>(pp, i);
}
inline int64_t KllArgEntier64(unsigned char** pp, int i) {
    return KllDetail::Lit<int64_t>(pp, i);
}
inline double KllArgReel(unsigned char** pp, int i) {
    return KllDetail::Lit<double>(pp, i);
}
inline char KllArgCaractere(unsigned char** pp, int i) {
    return KllDetail::Lit<char>(pp, i);
}
// Text (122, 131): may be null.
inline const wchar_t* KllArgTexte(unsigned char** pp, int i) {
    return KllDetail::Lit<const wchar_t*>(pp, i);
}
// Text where the callee wants no null: a null one reads as the empty text.
inline const wchar_t* KllArgTexteNonNul(unsigned char** pp, int i) {
    const wchar_t* psz = KllArgTexte(pp, i);
    return psz ? psz : L"";
}
// A counted string (16, 130): a reference of its own for the call.
inline CXYString<wchar_t> KllArgChaine(unsigned char** pp, int i) {
    return *reinterpret_cast<const CXYString<wchar_t>*>(pp[i]);
}
inline CKLBIN KllArgBinaire(unsigned char** pp, int i) {
    return *reinterpret_cast<const CKLBIN*>(pp[i]);
}
inline STManipAUB KllArgManipAUB(unsigned char** pp, int i) {
    return KllDetail::Lit<STManipAUB>(pp, i);
}
inline CDateTime KllArgDateHeure(unsigned char** pp, int i) {
    return KllDetail::Lit<CDateTime>(pp, i);
}
inline CXYStringArray<wchar_t>* KllArgTableauChaine(unsigned char** pp, int i) {
    return KllDetail::Lit<CXYStringArray<wchar_t>*>(pp, i);
}
inline CAny* KllArgAny(unsigned char** pp, int i) {
    return KllDetail::Lit<CAny*>(pp, i);
}
inline IKLTableau* KllArgTableau(unsigned char** pp, int i) {
    return KllDetail::Lit<IKLTableau*>(pp, i);
}
// An object (111), an image (30): the native pointer as the host gives it.
inline void* KllArgPointeur(unsigned char** pp, int i) {
    return KllDetail::Lit<void*>(pp, i);
}
template <class T> T* KllArgObjet(unsigned char** pp, int i) {
    return static_cast<T*>(KllArgPointeur(pp, i));
}

// The reader of a property's value, by type token.
#define KLL_ARG_TEXT KllArgTexte
#define KLL_ARG_STRING KllArgChaine
#define KLL_ARG_BOOLEAN KllArgEntier
#define KLL_ARG_INT KllArgEntier
#define KLL_ARG_INT64 KllArgEntier64
#define KLL_ARG_REAL KllArgReel
#define KLL_ARG_DATETIME KllArgDateHeure
#define KLL_ARG_BINARY KllArgBinaire
#define KLL_ARG_IMAGE KllArgPointeur
#define KLL_ARG_ARRAY KllArgTableau
#define KLL_ARG_CHAR KllArgCaractere
#define KLL_ARG_OBJECT(tr) KllArgPointeur

// The IObjetBase side of a new object; a null stays null.
template <class C> IObjetBase* KllObjetBase(C* pclObjet) {
    return pclObjet;
}

// ---- The stubs ---------------------------------------------------------------------------

#define KLL_OBJET(C) static_cast<C*>(pObjet)

#define KLL_STUB_CLASS(C)                                                                          \
    extern "C" void KLL_##C##_T(ITypeDescription* piType) {                                        \
        C::ms_piType = piType;                                                                     \
    }                                                                                              \
    extern "C" void* KLL_##C##_GOG(CCtxInfo*, CXError*) {                                          \
        return nullptr;                                                                            \
    }                                                                                              \
    extern "C" void KLL_##C##_C(void* pObjet, void* pSource, CCtxInfo* pclCtx,                     \
                                CXError* pclErreur) {                                              \
        KllSousBarriere(pclErreur, [&] {                                                           \
            KLL_OBJET(C)->CopieObjet(pclCtx, pclErreur, static_cast<C*>(pSource));                 \
        });                                                                                        \
    }                                                                                              \
    extern "C" void KLL_##C##_RAZ(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur) {            \
        KllSousBarriere(pclErreur, [&] { KLL_OBJET(C)->RAZObjet(pclCtx, pclErreur); });            \
    }

#define KLL_STUB_CREE_0(C) C::s_pclCreeObjet(pclCtx, pclErreur)
#define KLL_STUB_CREE_1(C) C::s_pclCreeObjet(pclCtx, pclErreur, ppArguments)
#define KLL_STUB_CREE_2(C) C::s_pclCreeObjet(pclCtx, pclErreur, ppArguments)
#define KLL_STUB_CREE_3(C) C::s_pclCreeObjet(pclCtx, pclErreur, ppArguments)
#define KLL_STUB_CONSTRUCTOR(C, k)                                                                 \
    extern "C" void* KLL_##C##_C_##k([[maybe_unused]] unsigned char** ppArguments,                 \
                                     CCtxInfo* pclCtx, CXError* pclErreur) {                       \
        return KllSousBarriere(pclErreur, static_cast<IObjetBase*>(nullptr),                       \
                               [&] { return KllObjetBase(KLL_STUB_CREE_##k(C)); });                \
    }

// One writer: _S_ calls Set<P>, _FS_ calls Force<P>.
#define KLL_STUB_WRITER(C, P, T, Suffixe, Methode)                                                 \
    extern "C" void KLL_##C##_##Suffixe##_##P(void* pObjet, unsigned char** ppArguments,           \
                                              CCtxInfo* pclCtx, CXError* pclErreur) {              \
        KllSousBarriere(pclErreur, [&] {                                                           \
            KLL_OBJET(C)->Methode##P(pclCtx, pclErreur, KLL_ARG_##T(ppArguments, 0));              \
        });                                                                                        \
    }
#define KLL_STUB_WRITERS_RW(C, P, T) KLL_STUB_WRITER(C, P, T, S, Set)
#define KLL_STUB_WRITERS_RW_COMPAT(C, P, T) KLL_STUB_WRITER(C, P, T, S, Set)
#define KLL_STUB_WRITERS_R(C, P, T)
#define KLL_STUB_WRITERS_R_COMPAT(C, P, T)
#define KLL_STUB_WRITERS_RF(C, P, T) KLL_STUB_WRITER(C, P, T, FS, Force)
#define KLL_STUB_WRITERS_RF_COMPAT(C, P, T) KLL_STUB_WRITER(C, P, T, FS, Force)

#define KLL_STUB_PROPERTY(C, P, T, A)                                                              \
    extern "C" void KLL_##C##_G_##P(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur) {          \
        KllSousBarriere(pclErreur, [&] {                                                           \
            KllRetourne(pclCtx, KLL_TYPE_##T & 0xFFFF, KLL_OBJET(C)->Get##P(pclCtx, pclErreur));   \
        });                                                                                        \
    }                                                                                              \
    KLL_STUB_WRITERS_##A(C, P, T)

#define KLL_STUB_ACCESSOR(C, N)                                                                    \
    extern "C" void* KLL_##C##_A_##N(void* pObjet, CCtxInfo* pclCtx, CXError* pclErreur) {         \
        return KllSousBarriere(pclErreur, static_cast<void*>(nullptr), [&]() -> void* {            \
            return KLL_OBJET(C)->Accesseur##N(pclCtx, pclErreur);                                  \
        });                                                                                        \
    }

#endif // KVGGL_FRAME_KLLSTUBS_H

// The rows of the .def that follows become stubs.
#define KLL_CLASS(C, nNumero, pszType, F) KLL_STUB_CLASS(C)
#define KLL_CONSTRUCTOR(C, k) KLL_STUB_CONSTRUCTOR(C, k)
#define KLL_PROPERTY(C, P, T, A) KLL_STUB_PROPERTY(C, P, T, A)
#define KLL_ACCESSOR(C, N, TR, M) KLL_STUB_ACCESSOR(C, N)
