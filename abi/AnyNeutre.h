// The neutral form of a value and the conversions between it and text and numbers, shared by
// the four parts of CAny: the conversions (AnyNeutre.cpp), the default implementation object
// (AnyIntern.cpp), the storage classes of AnyTypes.def (AnyTypes.cpp) and CAny itself (Any.cpp).
// Internal to abi/: no other code includes it.
#pragma once
#include "Any.h"
#include "DateTime.h"
#include "KVResult.h"
#include "Utf8.h"

#include <cstring>
#include <cwchar>
#include <exception>
#include <string>
#include <string_view>

// Wide enough for every integer a value can hold (80-bit currency included) with room to
// detect overflow before it happens.
__extension__ typedef __int128 KVEntier;
__extension__ typedef unsigned __int128 KVNaturel;

enum eKVGENRE {
    KV_GENRE_AUCUN,
    KV_GENRE_ENTIER,    // nEntier; booleans are 0 or 1
    KV_GENRE_REEL,      // rReel
    KV_GENRE_MONNAIE,   // nEntier, in millionths
    KV_GENRE_TEXTE,     // sOctets, UTF-8
    KV_GENRE_BINAIRE,   // sOctets, bytes (read as UTF-8 where text is wanted)
    KV_GENRE_DATEHEURE, // clDate
    KV_GENRE_DUREE,     // nEntier, in milliseconds
};

// A value in a form independent of its storage: every conversion reads the source into this
// and writes the target from it.
struct STAnyNeutre {
    eKVGENRE nGenre = KV_GENRE_AUCUN;
    KVEntier nEntier = 0;
    int nLargeur = 0; // bits of a stored integer, for bit fields; 0 otherwise
    double rReel = 0;
    bool bReelSimple = false; // a 32-bit real: its text is the shortest for that precision
    std::string sOctets;
    CDateTime clDate;
};

namespace KVAny {

inline constexpr unsigned knCPUtf8 = 65001;
inline constexpr unsigned knCPLatin1 = 28591;
inline constexpr KVEntier knMillion = 1000000;
inline constexpr KVEntier knMonnaieMax = (KVEntier(1) << 79) - 1;
inline constexpr KVEntier knMonnaieMin = -(KVEntier(1) << 79);

template <class T> T tLit(const unsigned char* p) {
    T v;
    std::memcpy(&v, p, sizeof(T));
    return v;
}
template <class T> void Ecrit(unsigned char* p, const T& v) {
    std::memcpy(p, &v, sizeof(T));
}

template <class T> const T* s_pszVide() {
    static const T sz[1] = {};
    return sz;
}

template <class F> int s_nProtege(F f) noexcept {
    try {
        return f();
    } catch (const std::exception&) { // bad_alloc, length_error: memory either way
        return KV_ERR_MEMOIRE;
    }
}

template <class T> size_t s_nLongueurC(const T* psz) {
    if constexpr (sizeof(T) == 1)
        return std::strlen(psz);
    else
        return std::wcslen(psz);
}

// ---- code pages of narrow text

enum eLECTURE { LU_OK, LU_INVALIDE, LU_DEPASSE };

bool s_bCodePageValide(unsigned nCP);
int s_nCodePage(const STOCAW* pst, unsigned& nCP);
std::string s_sDepuisNarrow(std::string_view s, unsigned nCP);
std::string s_sVersNarrow(std::string_view sUtf8, unsigned nCP);
template <class T> std::string s_sVersUtf8(const T* p, size_t n, unsigned nCP) {
    if constexpr (sizeof(T) == 1)
        return s_sDepuisNarrow({p, n}, nCP);
    else
        return KVUtf8::VersUtf8({p, n});
}

// ---- reading and writing text

std::string_view s_svSansBlancs(std::string_view s);
bool s_bChiffres(std::string_view s);
eLECTURE s_nLitEntier(std::string_view s, KVEntier& n);
eLECTURE s_nLitReel(std::string_view s, double& r);
int s_nDepuisLecture(eLECTURE n);
bool s_bEgalSansCasse(std::string_view s, std::string_view sMot);
bool s_bFormeHeure(std::string_view s);
std::string s_sDecimal(KVEntier n);
std::string s_sReel(double r, bool bSimple);
std::string s_sMonnaie(KVEntier n);
std::string s_sDuree(KVEntier nMilli);
int s_nLitDuree(std::string_view s, KVEntier& nMilli);
bool s_bTextuel(const STAnyNeutre& st);
int s_nReelVersEntier(double r, KVEntier& n);
int s_nVersEntier(const STAnyNeutre& st, KVEntier& n);
int s_nVersReel(const STAnyNeutre& st, double& r);
int s_nVersBooleen(const STAnyNeutre& st, bool& b);
int s_nVersTexte(const STAnyNeutre& st, std::string& s);
int s_nVersOctets(const STAnyNeutre& st, std::string& s);
int s_nVersMonnaie(const STAnyNeutre& st, KVEntier& n);
int s_nVersDuree(const STAnyNeutre& st, KVEntier& n);
int s_nVersDateHeure(const STAnyNeutre& st, CDateTime& cl);
int s_nVersTexteDate(const STAnyNeutre& st, std::string& s);
int s_nVersTexteHeure(const STAnyNeutre& st, std::string& s);

// ---- the storage classes (AnyTypes.cpp)

// Builds in pSlot the implementation object of the code.
CAny_Intern* s_pclConstruit(void* pSlot, uint16_t nCode);
// Whether the code has a row of its own in AnyTypes.def.
bool s_bConnu(unsigned nCode);

// ---- access to the value area

inline int s_nCopie(void* pBuffer, size_t nTaille, const void* pSource, size_t nSource) {
    if (nSource == 0)
        return KV_OK;
    if (!pBuffer || nTaille < nSource)
        return KV_ERR_PARAMETRE;
    std::memcpy(pBuffer, pSource, nSource);
    return KV_OK;
}

} // namespace KVAny
