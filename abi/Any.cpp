#include "Any.h"

#include "DateTime.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "ManipAUB.h"
#include "ObjectInterfaces.h"
#include "Utf8.h"
#include "XYString.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

// Wide enough for every integer a value can hold (80-bit currency included) with room to
// detect overflow before it happens.
__extension__ typedef __int128 KVEntier;
__extension__ typedef unsigned __int128 KVNaturel;

namespace {

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

} // namespace

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

namespace {

constexpr unsigned knCPUtf8 = 65001;
constexpr unsigned knCPLatin1 = 28591;
constexpr KVEntier knMillion = 1000000;
constexpr KVEntier knMonnaieMax = (KVEntier(1) << 79) - 1;
constexpr KVEntier knMonnaieMin = -(KVEntier(1) << 79);
// Beyond any target of a conversion; digits past it only mark an overflow.
constexpr KVEntier knLectureMax = KVEntier(1) << 100;

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

// ---- code pages of narrow text -------------------------------------------------------------

bool s_bCodePageValide(unsigned nCP) {
    return nCP == 0 || nCP == knCPUtf8 || nCP == knCPLatin1;
}

int s_nCodePage(const STOCAW* pst, unsigned& nCP) {
    nCP = pst ? (pst->dwOptions & 0xFFFFu) : 0;
    return s_bCodePageValide(nCP) ? KV_OK : KV_ERR_PARAMETRE;
}

std::string s_sDepuisNarrow(std::string_view s, unsigned nCP) {
    if (nCP != knCPLatin1)
        return std::string(s);
    std::string r;
    r.reserve(s.size());
    for (unsigned char c : s) {
        if (c < 0x80) {
            r += static_cast<char>(c);
        } else {
            r += static_cast<char>(0xC0 | (c >> 6));
            r += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return r;
}

// Characters that Latin-1 cannot hold become '?', as a narrow host string would show them.
std::string s_sVersNarrow(std::string_view sUtf8, unsigned nCP) {
    if (nCP != knCPLatin1)
        return std::string(sUtf8);
    std::wstring w = KVUtf8::VersWide(sUtf8);
    std::string r;
    r.reserve(w.size());
    for (wchar_t c : w)
        r += static_cast<uint32_t>(c) <= 0xFF ? static_cast<char>(c) : '?';
    return r;
}

template <class T> std::string s_sVersUtf8(const T* p, size_t n, unsigned nCP) {
    if constexpr (sizeof(T) == 1)
        return s_sDepuisNarrow({p, n}, nCP);
    else
        return KVUtf8::VersUtf8({p, n});
}

// ---- reading text --------------------------------------------------------------------------

enum eLECTURE { LU_OK, LU_INVALIDE, LU_DEPASSE };

std::string_view s_svSansBlancs(std::string_view s) {
    auto bBlanc = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!s.empty() && bBlanc(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && bBlanc(s.back()))
        s.remove_suffix(1);
    return s;
}

bool s_bChiffres(std::string_view s) {
    for (char c : s)
        if (c < '0' || c > '9')
            return false;
    return !s.empty();
}

// Optional sign, then decimal digits only.
eLECTURE s_nLitEntier(std::string_view s, KVEntier& n) {
    bool bNegatif = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        bNegatif = s[0] == '-';
        s.remove_prefix(1);
    }
    if (!s_bChiffres(s))
        return LU_INVALIDE;
    KVEntier v = 0;
    bool bDepasse = false;
    for (char c : s) {
        if (v >= knLectureMax)
            bDepasse = true;
        else
            v = v * 10 + (c - '0');
    }
    if (bDepasse)
        return LU_DEPASSE;
    n = bNegatif ? -v : v;
    return LU_OK;
}

// A finite real in decimal or exponent form.
eLECTURE s_nLitReel(std::string_view s, double& r) {
    if (!s.empty() && s[0] == '+')
        s.remove_prefix(1);
    if (s.empty() || s[0] == '+')
        return LU_INVALIDE;
    double v = 0;
    auto [pFin, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec == std::errc::result_out_of_range)
        return LU_DEPASSE;
    if (ec != std::errc() || pFin != s.data() + s.size())
        return LU_INVALIDE;
    if (!std::isfinite(v))
        return LU_INVALIDE; // "inf" and "nan" are words, not numbers here
    r = v;
    return LU_OK;
}

int s_nDepuisLecture(eLECTURE n) {
    return n == LU_OK ? KV_OK : n == LU_DEPASSE ? KV_ERR_DEPASSEMENT : KV_ERR_CONVERSION;
}

bool s_bEgalSansCasse(std::string_view s, std::string_view sMot) {
    if (s.size() != sMot.size())
        return false;
    for (size_t i = 0; i < s.size(); ++i) {
        char c = s[i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != sMot[i])
            return false;
    }
    return true;
}

// "HHMM", "HHMMSS" or "HHMMSSmmm".
bool s_bFormeHeure(std::string_view s) {
    if ((s.size() != 4 && s.size() != 6 && s.size() != 9) || !s_bChiffres(s))
        return false;
    auto nDeux = [&](size_t i) { return (s[i] - '0') * 10 + (s[i + 1] - '0'); };
    return nDeux(0) <= 23 && nDeux(2) <= 59 && (s.size() == 4 || nDeux(4) <= 59);
}

// ---- writing text --------------------------------------------------------------------------

std::string s_sDecimal(KVEntier n) {
    char sz[48];
    char* p = sz + sizeof sz;
    KVNaturel u = n < 0 ? -static_cast<KVNaturel>(n) : static_cast<KVNaturel>(n);
    do {
        *--p = static_cast<char>('0' + static_cast<int>(u % 10));
        u /= 10;
    } while (u);
    if (n < 0)
        *--p = '-';
    return std::string(p, static_cast<size_t>(sz + sizeof sz - p));
}

std::string s_sReel(double r, bool bSimple) {
    char sz[64];
    auto res = bSimple ? std::to_chars(sz, sz + sizeof sz, static_cast<float>(r))
                       : std::to_chars(sz, sz + sizeof sz, r);
    return std::string(sz, res.ptr);
}

// Millionths as a decimal, the fraction without trailing zeros.
std::string s_sMonnaie(KVEntier n) {
    KVEntier nAbs = n < 0 ? -n : n;
    std::string s = (n < 0 ? "-" : "") + s_sDecimal(nAbs / knMillion);
    auto nFraction = static_cast<int>(nAbs % knMillion);
    if (nFraction) {
        char sz[8];
        for (int i = 5; i >= 0; --i, nFraction /= 10)
            sz[i] = static_cast<char>('0' + nFraction % 10);
        int nFin = 6;
        while (sz[nFin - 1] == '0')
            --nFin;
        s += '.';
        s.append(sz, static_cast<size_t>(nFin));
    }
    return s;
}

// Durations read and write as days, then hours, minutes, seconds (two digits each) and
// thousandths (three), a sign in front when negative.
std::string s_sDuree(KVEntier nMilli) {
    KVEntier n = nMilli < 0 ? -nMilli : nMilli;
    auto nPart = [&](KVEntier nDiv, KVEntier nMod) { return static_cast<int>(n / nDiv % nMod); };
    char sz[16];
    std::snprintf(sz, sizeof sz, "%02d%02d%02d%03d", nPart(3600000, 24), nPart(60000, 60),
                  nPart(1000, 60), nPart(1, 1000));
    return (nMilli < 0 ? "-" : "") + s_sDecimal(n / 86400000) + sz;
}

int s_nLitDuree(std::string_view s, KVEntier& nMilli) {
    s = s_svSansBlancs(s);
    bool bNegatif = !s.empty() && s[0] == '-';
    if (bNegatif)
        s.remove_prefix(1);
    if (!s_bChiffres(s))
        return KV_ERR_CONVERSION;
    if (s.size() > 30)
        return KV_ERR_DEPASSEMENT;
    std::string sPlein = std::string(s.size() < 9 ? 9 - s.size() : 0, '0') + std::string(s);
    size_t nJours = sPlein.size() - 9;
    auto nLit = [&](size_t i, size_t n) {
        KVEntier v = 0;
        for (size_t k = 0; k < n; ++k)
            v = v * 10 + (sPlein[i + k] - '0');
        return v;
    };
    KVEntier nH = nLit(nJours, 2), nM = nLit(nJours + 2, 2), nS = nLit(nJours + 4, 2);
    if (nH > 23 || nM > 59 || nS > 59)
        return KV_ERR_CONVERSION;
    KVEntier v =
        nLit(0, nJours) * 86400000 + nH * 3600000 + nM * 60000 + nS * 1000 + nLit(nJours + 6, 3);
    nMilli = bNegatif ? -v : v;
    return KV_OK;
}

// ---- neutral form to targets ---------------------------------------------------------------

bool s_bTextuel(const STAnyNeutre& st) {
    return st.nGenre == KV_GENRE_TEXTE || st.nGenre == KV_GENRE_BINAIRE;
}

int s_nReelVersEntier(double r, KVEntier& n) {
    if (!std::isfinite(r))
        return KV_ERR_CONVERSION;
    r = std::trunc(r);
    if (std::fabs(r) >= 1e30)
        return KV_ERR_DEPASSEMENT;
    n = static_cast<KVEntier>(r);
    return KV_OK;
}

// Integers take reals toward zero; text reads as an integer, or as a real when it is one.
int s_nVersEntier(const STAnyNeutre& st, KVEntier& n) {
    switch (st.nGenre) {
    case KV_GENRE_ENTIER:
    case KV_GENRE_DUREE:
        n = st.nEntier;
        return KV_OK;
    case KV_GENRE_MONNAIE:
        n = st.nEntier / knMillion;
        return KV_OK;
    case KV_GENRE_REEL:
        return s_nReelVersEntier(st.rReel, n);
    case KV_GENRE_TEXTE:
    case KV_GENRE_BINAIRE: {
        std::string_view s = s_svSansBlancs(st.sOctets);
        eLECTURE nLu = s_nLitEntier(s, n);
        if (nLu != LU_INVALIDE)
            return s_nDepuisLecture(nLu);
        double r;
        nLu = s_nLitReel(s, r);
        return nLu == LU_OK ? s_nReelVersEntier(r, n) : s_nDepuisLecture(nLu);
    }
    default:
        return KV_ERR_CONVERSION;
    }
}

int s_nVersReel(const STAnyNeutre& st, double& r) {
    switch (st.nGenre) {
    case KV_GENRE_ENTIER:
    case KV_GENRE_DUREE:
        r = static_cast<double>(st.nEntier);
        return KV_OK;
    case KV_GENRE_MONNAIE:
        r = static_cast<double>(st.nEntier) / 1e6;
        return KV_OK;
    case KV_GENRE_REEL:
        r = st.rReel;
        return KV_OK;
    case KV_GENRE_TEXTE:
    case KV_GENRE_BINAIRE:
        return s_nDepuisLecture(s_nLitReel(s_svSansBlancs(st.sOctets), r));
    default:
        return KV_ERR_CONVERSION;
    }
}

// Text: "true"/"false" in any case, empty as false, else a number, true when not zero.
int s_nVersBooleen(const STAnyNeutre& st, bool& b) {
    if (s_bTextuel(st)) {
        std::string_view s = s_svSansBlancs(st.sOctets);
        if (s.empty() || s_bEgalSansCasse(s, "false") || s_bEgalSansCasse(s, "true")) {
            b = !s.empty() && s[0] != 'f' && s[0] != 'F';
            return KV_OK;
        }
    }
    if (st.nGenre == KV_GENRE_REEL) {
        b = st.rReel != 0;
        return KV_OK;
    }
    KVEntier n;
    int nRes = s_nVersEntier(st, n);
    if (nRes == KV_ERR_CONVERSION && s_bTextuel(st)) {
        double r;
        nRes = s_nDepuisLecture(s_nLitReel(s_svSansBlancs(st.sOctets), r));
        if (KV_bSucces(nRes))
            b = r != 0;
        return nRes;
    }
    if (nRes == KV_ERR_DEPASSEMENT && s_bTextuel(st))
        nRes = KV_OK, n = 1; // huge, not zero
    if (KV_bSucces(nRes))
        b = n != 0;
    return nRes;
}

int s_nVersTexte(const STAnyNeutre& st, std::string& s) {
    switch (st.nGenre) {
    case KV_GENRE_ENTIER:
        s = s_sDecimal(st.nEntier);
        return KV_OK;
    case KV_GENRE_REEL:
        s = s_sReel(st.rReel, st.bReelSimple);
        return KV_OK;
    case KV_GENRE_MONNAIE:
        s = s_sMonnaie(st.nEntier);
        return KV_OK;
    case KV_GENRE_TEXTE:
    case KV_GENRE_BINAIRE:
        s = st.sOctets;
        return KV_OK;
    case KV_GENRE_DATEHEURE: {
        char sz[18];
        st.clDate.ToString(sz);
        s = sz;
        return KV_OK;
    }
    case KV_GENRE_DUREE:
        s = s_sDuree(st.nEntier);
        return KV_OK;
    default:
        return KV_ERR_CONVERSION;
    }
}

int s_nVersOctets(const STAnyNeutre& st, std::string& s) {
    return s_nVersTexte(st, s);
}

// Millionths; text with more than six decimals is cut, not rounded.
int s_nVersMonnaie(const STAnyNeutre& st, KVEntier& n) {
    switch (st.nGenre) {
    case KV_GENRE_MONNAIE:
        n = st.nEntier;
        return KV_OK;
    case KV_GENRE_ENTIER:
    case KV_GENRE_DUREE:
        n = st.nEntier * knMillion;
        return KV_OK;
    case KV_GENRE_REEL: {
        if (!std::isfinite(st.rReel))
            return KV_ERR_CONVERSION;
        double r = std::round(st.rReel * 1e6);
        if (std::fabs(r) >= 1e30)
            return KV_ERR_DEPASSEMENT;
        n = static_cast<KVEntier>(r);
        return KV_OK;
    }
    case KV_GENRE_TEXTE:
    case KV_GENRE_BINAIRE: {
        std::string_view s = s_svSansBlancs(st.sOctets);
        size_t nPoint = s.find('.');
        std::string_view sEntier = s.substr(0, nPoint);
        std::string_view sFraction = nPoint == s.npos ? std::string_view() : s.substr(nPoint + 1);
        KVEntier nPartie;
        bool bDecimal = !sEntier.empty() && sEntier.back() >= '0' && sEntier.back() <= '9' &&
                        (nPoint == s.npos || s_bChiffres(sFraction));
        eLECTURE nLu = bDecimal ? s_nLitEntier(sEntier, nPartie) : LU_INVALIDE;
        if (nLu == LU_OK) {
            KVEntier nFraction = 0;
            for (size_t i = 0; i < 6; ++i)
                nFraction = nFraction * 10 + (i < sFraction.size() ? sFraction[i] - '0' : 0);
            bool bNegatif = sEntier[0] == '-';
            n = nPartie * knMillion + (bNegatif ? -nFraction : nFraction);
            return KV_OK;
        }
        if (nLu == LU_DEPASSE)
            return KV_ERR_DEPASSEMENT;
        STAnyNeutre stReel;
        stReel.nGenre = KV_GENRE_REEL;
        int nRes = s_nDepuisLecture(s_nLitReel(s, stReel.rReel));
        return KV_bSucces(nRes) ? s_nVersMonnaie(stReel, n) : nRes;
    }
    default:
        return KV_ERR_CONVERSION;
    }
}

int s_nVersDuree(const STAnyNeutre& st, KVEntier& n) {
    if (s_bTextuel(st))
        return s_nLitDuree(st.sOctets, n);
    return s_nVersEntier(st, n);
}

// Empty text is the empty date; otherwise the host's date-time text, or a time text alone.
int s_nVersDateHeure(const STAnyNeutre& st, CDateTime& cl) {
    if (st.nGenre == KV_GENRE_DATEHEURE) {
        cl = st.clDate;
        return KV_OK;
    }
    std::string s;
    int nRes = s_nVersTexte(st, s);
    if (!KV_bSucces(nRes))
        return nRes;
    CDateTime clLu;
    if (!s.empty() && !clLu.FromString(s.c_str())) {
        if (!s_bFormeHeure(s))
            return KV_ERR_CONVERSION;
        std::string sComplet = "00000000" + s + std::string(9 - s.size(), '0');
        if (!clLu.FromString(sComplet.c_str()))
            return KV_ERR_CONVERSION;
    }
    cl = clLu;
    return KV_OK;
}

// "YYYYMMDD", or empty for a date that is not given.
int s_nVersTexteDate(const STAnyNeutre& st, std::string& s) {
    char sz[18];
    if (st.nGenre == KV_GENRE_DATEHEURE) {
        st.clDate.ToString(sz);
        s = st.clDate.bEstRenseignee() ? std::string(sz, 8) : std::string();
        return KV_OK;
    }
    std::string sTexte;
    int nRes = s_nVersTexte(st, sTexte);
    if (!KV_bSucces(nRes))
        return nRes;
    CDateTime cl;
    if (!sTexte.empty() && !cl.FromString(sTexte.c_str()))
        return KV_ERR_CONVERSION;
    s = sTexte.substr(0, 8);
    return KV_OK;
}

// "HHMM", "HHMMSS" or "HHMMSSmmm"; a date-time gives its time of day.
int s_nVersTexteHeure(const STAnyNeutre& st, std::string& s) {
    char sz[18];
    if (st.nGenre == KV_GENRE_DATEHEURE) {
        st.clDate.ToString(sz);
        s.assign(sz + 8, 9);
        return KV_OK;
    }
    std::string sTexte;
    int nRes = s_nVersTexte(st, sTexte);
    if (!KV_bSucces(nRes))
        return nRes;
    CDateTime cl;
    if (sTexte.empty() || s_bFormeHeure(sTexte)) {
        s = sTexte;
        return KV_OK;
    }
    if (sTexte.size() > 8 && cl.FromString(sTexte.c_str())) {
        cl.ToString(sz);
        s.assign(sz + 8, 9);
        return KV_OK;
    }
    return KV_ERR_CONVERSION;
}

// ---- access to the value area --------------------------------------------------------------

int s_nCopie(void* pBuffer, size_t nTaille, const void* pSource, size_t nSource) {
    if (nSource == 0)
        return KV_OK;
    if (!pBuffer || nTaille < nSource)
        return KV_ERR_PARAMETRE;
    std::memcpy(pBuffer, pSource, nSource);
    return KV_OK;
}

} // namespace

// ---- CAny_Intern: no known type, or an array ------------------------------------------------

CAny& CAny_Intern::rAny() const {
    auto* pby = reinterpret_cast<unsigned char*>(const_cast<CAny_Intern*>(this));
    return *reinterpret_cast<CAny*>(pby - offsetof(CAny, m_abyImpl));
}
unsigned char* CAny_Intern::pbyValeur() const {
    return rAny().m_abyValeur;
}
uint16_t CAny_Intern::nType() const {
    return rAny().m_nType;
}

void CAny_Intern::Duplique(CAny* pclCible) const {
    CAny& clSource = rAny();
    if (!pclCible || pclCible == &clSource)
        return;
    pclCible->m_pclImpl->vLibere();
    std::memcpy(pclCible->m_abyValeur, clSource.m_abyValeur, CAny::knTailleValeur);
    pclCible->m_nType = clSource.m_nType;
    pclCible->Installe(clSource.m_nType);
    pclCible->m_pclImpl->vRetient();
}

size_t CAny_Intern::nGetSize() const {
    return vnGetStockage() == KV_STOCKAGE_TABLEAU ? sizeof(void*) : 0;
}
const void* CAny_Intern::nGetAdr() const {
    return nGetSize() ? pbyValeur() : nullptr;
}
int CAny_Intern::nFillBuffer(void* pBuffer, size_t nTaille) const {
    return s_nCopie(pBuffer, nTaille, nGetAdr(), nGetSize());
}
size_t CAny_Intern::nGetDataSize() const {
    return vnGetStockage() == KV_STOCKAGE_TABLEAU ? 0 : nGetSize();
}
const void* CAny_Intern::nGetDataAdr() const {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU)
        return tLit<void*>(pbyValeur());
    return nGetAdr();
}
int CAny_Intern::nFillDataBuffer(void* pBuffer, size_t nTaille) const {
    return s_nCopie(pBuffer, nTaille, nGetDataAdr(), nGetDataSize());
}
int CAny_Intern::SetValue(const void* pValeur) {
    if (vnGetStockage() != KV_STOCKAGE_TABLEAU)
        return KV_ERR_TYPE;
    if (!pValeur)
        return KV_ERR_PARAMETRE;
    auto* pi = tLit<IInterfaceObjetBase*>(static_cast<const unsigned char*>(pValeur));
    if (pi)
        pi->vAddRef();
    vLibere();
    Ecrit(pbyValeur(), pi);
    return KV_OK;
}
// An array has no data form that could be trusted to hold a reference.
int CAny_Intern::SetValue(const void*, unsigned long) {
    return KV_ERR_TYPE;
}
const char* CAny_Intern::nGetPCASTR() const {
    return nullptr;
}
const wchar_t* CAny_Intern::nGetPCWSTR() const {
    return nullptr;
}
size_t CAny_Intern::nGetSTRLEN() const {
    return 0;
}
bool CAny_Intern::bIsPositive() const {
    return true;
}
size_t CAny_Intern::nGetUtilDataSize() const {
    return nGetDataSize();
}
int CAny_Intern::nFillUtilDataBuffer(void* pBuffer, size_t nTaille) const {
    size_t nUtile = nGetUtilDataSize();
    if (nUtile == 0)
        return KV_OK;
    if (!pBuffer)
        return KV_ERR_PARAMETRE;
    std::memcpy(pBuffer, nGetDataAdr(), nTaille < nUtile ? nTaille : nUtile);
    return nTaille < nUtile ? KV_TRONQUE : KV_OK;
}
int CAny_Intern::nIncremente() {
    return KV_ERR_TYPE;
}
int CAny_Intern::nDecremente() {
    return KV_ERR_TYPE;
}

int CAny_Intern::SetValueFromANSI(const char* psz) {
    return SetValueFromANSI(psz, 0u);
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* psz) {
    return SetValueFromUNICODE(psz, 0u);
}
int CAny_Intern::SetValueFromANSI(const char* psz, unsigned nCodePage) {
    if (!psz)
        return KV_ERR_PARAMETRE;
    return SetValueFromANSI(psz, std::strlen(psz), nCodePage);
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* psz, unsigned nCodePage) {
    if (!psz)
        return KV_ERR_PARAMETRE;
    return SetValueFromUNICODE(psz, std::wcslen(psz), nCodePage);
}
int CAny_Intern::SetValueFromANSI(const char* p, size_t nLongueur, unsigned nCodePage) {
    if ((!p && nLongueur) || !s_bCodePageValide(nCodePage))
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sDepuisNarrow({p, nLongueur}, nCodePage);
        return vnEcrit(st, nCodePage);
    });
}
int CAny_Intern::SetValueFromUNICODE(const wchar_t* p, size_t nLongueur, unsigned nCodePage) {
    if ((!p && nLongueur) || !s_bCodePageValide(nCodePage))
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = KVUtf8::VersUtf8({p, nLongueur});
        return vnEcrit(st, nCodePage);
    });
}
int CAny_Intern::SetValueOption(const void* pDonnees, unsigned long nTaille, unsigned nOptions) {
    auto nTypeDonnees = static_cast<uint16_t>(nOptions & 0xFFFFu);
    if (nTypeDonnees == 0 || nTypeDonnees == nType())
        return SetValue(pDonnees, nTaille);
    CAny clDonnees;
    (void)clDonnees.__SetType(nTypeDonnees, 0);
    if (clDonnees.nGetType() == 0)
        return KV_ERR_TYPE;
    int nRes = clDonnees.m_pclImpl->SetValue(pDonnees, nTaille);
    if (!KV_bSucces(nRes))
        return nRes;
    // May replace this very object: nothing of it is used after.
    return rAny().nAffecteConverti(clDonnees, 0);
}

eKVSTOCKAGE CAny_Intern::vnGetStockage() const {
    return (nType() & CAny::knTableau) ? KV_STOCKAGE_TABLEAU : KV_STOCKAGE_AUCUN;
}
void CAny_Intern::vLibere() {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU) {
        if (auto* pi = tLit<IInterfaceObjetBase*>(pbyValeur()))
            pi->vRelease();
    }
    std::memset(pbyValeur(), 0, CAny::knTailleValeur);
}
void CAny_Intern::vRetient() {
    if (vnGetStockage() == KV_STOCKAGE_TABLEAU) {
        if (auto* pi = tLit<IInterfaceObjetBase*>(pbyValeur()))
            pi->vAddRef();
    }
}
int CAny_Intern::vnLit(STAnyNeutre&, unsigned) const {
    return KV_ERR_CONVERSION;
}
int CAny_Intern::vnEcrit(const STAnyNeutre&, unsigned) {
    return KV_ERR_CONVERSION;
}

// ---- the storage templates, one per kind of row in AnyTypes.def ------------------------------

namespace {

// Values held in place, of a plain C type, set from their image or from data of their size.
template <class T> class CAny_TEnPlace : public CAny_Intern {
public:
    size_t nGetSize() const override { return sizeof(T); }
    const void* nGetAdr() const override { return pbyValeur(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        std::memcpy(pbyValeur(), pValeur, sizeof(T));
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        return nTaille == sizeof(T) ? SetValue(pDonnees) : KV_ERR_PARAMETRE;
    }

protected:
    T tValeur() const { return tLit<T>(pbyValeur()); }
    void Fixe(const T& v) { Ecrit(pbyValeur(), v); }
};

template <class T> class CAny_TNombre : public CAny_TEnPlace<T> {
public:
    bool bIsPositive() const override {
        if constexpr (std::is_unsigned_v<T>)
            return true;
        else
            return this->tValeur() >= 0;
    }
    int nIncremente() override { return nAjoute(1); }
    int nDecremente() override { return nAjoute(-1); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        if constexpr (std::is_integral_v<T>) {
            st.nGenre = KV_GENRE_ENTIER;
            st.nEntier = this->tValeur();
            st.nLargeur = 8 * sizeof(T);
        } else {
            st.nGenre = KV_GENRE_REEL;
            st.rReel = this->tValeur();
            st.bReelSimple = sizeof(T) == sizeof(float);
        }
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        if constexpr (std::is_integral_v<T>) {
            KVEntier n;
            int nRes = s_nVersEntier(st, n);
            if (KV_bSucces(nRes))
                nRes = nFixeEntier(n);
            return nRes;
        } else {
            double r;
            int nRes = s_nVersReel(st, r);
            if (!KV_bSucces(nRes))
                return nRes;
            if (sizeof(T) == sizeof(float) && std::isfinite(r) &&
                std::fabs(r) > std::numeric_limits<float>::max())
                return KV_ERR_DEPASSEMENT;
            this->Fixe(static_cast<T>(r));
            return KV_OK;
        }
    }

private:
    int nFixeEntier(KVEntier n) {
        if (n < static_cast<KVEntier>(std::numeric_limits<T>::min()) ||
            n > static_cast<KVEntier>(std::numeric_limits<T>::max()))
            return KV_ERR_DEPASSEMENT;
        this->Fixe(static_cast<T>(n));
        return KV_OK;
    }
    int nAjoute(int nPas) {
        if constexpr (std::is_integral_v<T>) {
            return nFixeEntier(KVEntier(this->tValeur()) + nPas);
        } else {
            this->Fixe(static_cast<T>(this->tValeur() + static_cast<T>(nPas)));
            return KV_OK;
        }
    }
};

template <class T> class CAny_TBooleen : public CAny_TEnPlace<T> {
public:
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_ENTIER;
        st.nEntier = this->tValeur() != 0;
        st.nLargeur = 8 * sizeof(T);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        bool b;
        int nRes = s_nVersBooleen(st, b);
        if (KV_bSucces(nRes))
            this->Fixe(b ? 1 : 0);
        return nRes;
    }
};

template <class T> class CAny_TMonnaie : public CAny_TEnPlace<T> {
    static_assert(sizeof(T) == 10);

public:
    bool bIsPositive() const override { return nLit() >= 0; }
    int nIncremente() override { return nFixe(nLit() + knMillion); }
    int nDecremente() override { return nFixe(nLit() - knMillion); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_MONNAIE;
        st.nEntier = nLit();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        KVEntier n;
        int nRes = s_nVersMonnaie(st, n);
        return KV_bSucces(nRes) ? nFixe(n) : nRes;
    }

private:
    KVEntier nLit() const {
        const unsigned char* p = this->pbyValeur();
        KVNaturel u = 0;
        for (int i = 9; i >= 0; --i)
            u = (u << 8) | p[i];
        if (p[9] & 0x80)
            u |= ~KVNaturel(0) << 80; // sign extension of the 80 bits
        return static_cast<KVEntier>(u);
    }
    int nFixe(KVEntier n) {
        if (n < knMonnaieMin || n > knMonnaieMax)
            return KV_ERR_DEPASSEMENT;
        auto u = static_cast<KVNaturel>(n);
        for (int i = 0; i < 10; ++i, u >>= 8)
            this->pbyValeur()[i] = static_cast<unsigned char>(u);
        return KV_OK;
    }
};

// One character in place; the zeroed rest of the area terminates it as a text.
template <class T> class CAny_TCaractere : public CAny_TEnPlace<T> {
public:
    const char* nGetPCASTR() const override {
        if constexpr (sizeof(T) == 1)
            return reinterpret_cast<const char*>(this->pbyValeur());
        return nullptr;
    }
    const wchar_t* nGetPCWSTR() const override {
        if constexpr (sizeof(T) != 1)
            return reinterpret_cast<const wchar_t*>(this->pbyValeur());
        return nullptr;
    }
    size_t nGetSTRLEN() const override { return this->tValeur() ? 1 : 0; }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        T c = this->tValeur();
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(&c, c ? 1 : 0, nCodePage);
        return KV_OK;
    }
    // A text of one character, or empty for the zero character.
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = s_nVersTexte(st, s);
        if (!KV_bSucces(nRes))
            return nRes;
        T c = 0;
        if constexpr (sizeof(T) == 1) {
            std::string sN = s_sVersNarrow(s, nCodePage);
            if (sN.size() > 1)
                return KV_ERR_CONVERSION;
            if (!sN.empty())
                c = sN[0];
        } else {
            std::wstring w = KVUtf8::VersWide(s);
            if (w.size() > 1)
                return KV_ERR_CONVERSION;
            if (!w.empty())
                c = w[0];
        }
        this->Fixe(c);
        return KV_OK;
    }
};

// A counted string (CXYString<T>) held as its raw pointer.
template <class T> class CAny_TChaine : public CAny_Intern {
public:
    size_t nGetSize() const override { return sizeof(T*); }
    const void* nGetAdr() const override { return pbyValeur(); }
    size_t nGetDataSize() const override { return (nLongueur() + 1) * sizeof(T); }
    const void* nGetDataAdr() const override { return pszTexte(); }
    size_t nGetUtilDataSize() const override { return nLongueur() * sizeof(T); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        T* p = tLit<T*>(static_cast<const unsigned char*>(pValeur));
        KVBloc::AddRef(p);
        Remplace(p);
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        if (nTaille % sizeof(T) || (!pDonnees && nTaille))
            return KV_ERR_PARAMETRE;
        CXYString<T> s;
        int nRes = s.nAffecte(static_cast<const T*>(pDonnees), nTaille / sizeof(T));
        if (KV_bSucces(nRes))
            Remplace(s.pDetach());
        return nRes;
    }
    const char* nGetPCASTR() const override {
        if constexpr (sizeof(T) == 1)
            return pszTexte();
        return nullptr;
    }
    const wchar_t* nGetPCWSTR() const override {
        if constexpr (sizeof(T) != 1)
            return pszTexte();
        return nullptr;
    }
    size_t nGetSTRLEN() const override { return nLongueur(); }
    eKVSTOCKAGE vnGetStockage() const override {
        return sizeof(T) == 1 ? KV_STOCKAGE_CHAINEA : KV_STOCKAGE_CHAINEW;
    }
    void vLibere() override {
        KVBloc::Release(p());
        std::memset(pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override { KVBloc::AddRef(p()); }
    int vnUnshare() override {
        auto s = CXYString<T>::Adopt(p()); // the value's own reference, handed back below
        int nRes = s.nUnshare();
        Ecrit(pbyValeur(), s.pDetach());
        return nRes;
    }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(pszTexte(), nLongueur(), nCodePage);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = s_nVersTexte(st, s);
        return KV_bSucces(nRes) ? nAffecteUtf8(s, nCodePage) : nRes;
    }

protected:
    T* p() const { return tLit<T*>(pbyValeur()); }
    const T* pszTexte() const { return p() ? p() : s_pszVide<T>(); }
    size_t nLongueur() const { return KVBloc::nTaille(p()) / sizeof(T); }
    void Remplace(T* pNouveau) {
        KVBloc::Release(p());
        Ecrit(pbyValeur(), pNouveau);
    }
    int nAffecteUtf8(std::string_view sUtf8, unsigned nCodePage) {
        CXYString<T> s;
        int nRes;
        if constexpr (sizeof(T) == 1) {
            std::string sN = s_sVersNarrow(sUtf8, nCodePage);
            nRes = s.nAffecte(sN.data(), sN.size());
        } else {
            nRes = KVUtf8::nVersWide(sUtf8, s);
        }
        if (KV_bSucces(nRes))
            Remplace(s.pDetach());
        return nRes;
    }
};

// A date or a time as text: a counted string whose content must keep its form.
template <class T, bool bHeure> class CAny_TTexteForme : public CAny_TChaine<T> {
public:
    int SetValue(const void* pValeur) override { return CAny_TChaine<T>::SetValue(pValeur); }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        if (nTaille % sizeof(T) || (!pDonnees && nTaille))
            return KV_ERR_PARAMETRE;
        return s_nProtege([&]() -> int {
            STAnyNeutre st;
            st.nGenre = KV_GENRE_TEXTE;
            st.sOctets = s_sVersUtf8(static_cast<const T*>(pDonnees), nTaille / sizeof(T), 0);
            return vnEcrit(st, 0);
        });
    }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_AUCUN; }
    int vnInitDefaut() override {
        return s_nProtege([&]() -> int {
            const wchar_t* psz = bHeure ? CDateTimeBase::ms_pcszValeurInitTime
                                        : CDateTimeBase::ms_pcszValeurInitDate;
            return this->nAffecteUtf8(KVUtf8::VersUtf8(psz), 0);
        });
    }
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = bHeure ? s_nVersTexteHeure(st, s) : s_nVersTexteDate(st, s);
        return KV_bSucces(nRes) ? this->nAffecteUtf8(s, nCodePage) : nRes;
    }
};
template <class T> using CAny_TTexteDate = CAny_TTexteForme<T, false>;
template <class T> using CAny_TTexteHeure = CAny_TTexteForme<T, true>;

// A text pointed to and not owned: it can be read, never produced by a conversion.
template <class T> class CAny_TPTexte : public CAny_TEnPlace<const T*> {
public:
    size_t nGetDataSize() const override { return (nGetSTRLEN() + 1) * sizeof(T); }
    const void* nGetDataAdr() const override { return pszTexte(); }
    size_t nGetUtilDataSize() const override { return nGetSTRLEN() * sizeof(T); }
    // The data form keeps the address of the text given.
    int SetValue(const void* pValeur) override {
        return CAny_TEnPlace<const T*>::SetValue(pValeur);
    }
    int SetValue(const void* pDonnees, unsigned long) override {
        this->Fixe(static_cast<const T*>(pDonnees));
        return KV_OK;
    }
    const char* nGetPCASTR() const override {
        if constexpr (sizeof(T) == 1)
            return pszTexte();
        return nullptr;
    }
    const wchar_t* nGetPCWSTR() const override {
        if constexpr (sizeof(T) != 1)
            return pszTexte();
        return nullptr;
    }
    size_t nGetSTRLEN() const override { return s_nLongueurC(pszTexte()); }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_POINTEUR; }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(pszTexte(), nGetSTRLEN(), nCodePage);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre&, unsigned) override { return KV_ERR_TYPE; }

private:
    const T* pszTexte() const { return this->tValeur() ? this->tValeur() : s_pszVide<T>(); }
};

template <class T> class CAny_TDateHeure : public CAny_TEnPlace<T> {
public:
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_DATEHEURE;
        st.clDate = this->tValeur();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        T cl;
        int nRes = s_nVersDateHeure(st, cl);
        if (KV_bSucces(nRes))
            this->Fixe(cl);
        return nRes;
    }
};

// Signed milliseconds.
template <class T> class CAny_TDuree : public CAny_TEnPlace<T> {
public:
    bool bIsPositive() const override { return this->tValeur() >= 0; }
    int nIncremente() override { return nFixe(KVEntier(this->tValeur()) + 1); }
    int nDecremente() override { return nFixe(KVEntier(this->tValeur()) - 1); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_DUREE;
        st.nEntier = this->tValeur();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        KVEntier n;
        int nRes = s_nVersDuree(st, n);
        return KV_bSucces(nRes) ? nFixe(n) : nRes;
    }

private:
    int nFixe(KVEntier n) {
        if (n < std::numeric_limits<T>::min() || n > std::numeric_limits<T>::max())
            return KV_ERR_DEPASSEMENT;
        this->Fixe(static_cast<T>(n));
        return KV_OK;
    }
};

// A counted byte block (CKLBIN) held as its raw pointer.
template <class T> class CAny_TBinaire : public CAny_Intern {
    static_assert(sizeof(T) == sizeof(unsigned char*));

public:
    size_t nGetSize() const override { return sizeof(unsigned char*); }
    const void* nGetAdr() const override { return pbyValeur(); }
    size_t nGetDataSize() const override { return KVBloc::nTaille(p()); }
    const void* nGetDataAdr() const override { return p() ? p() : s_pszVide<unsigned char>(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        auto* pNouveau = tLit<unsigned char*>(static_cast<const unsigned char*>(pValeur));
        KVBloc::AddRef(pNouveau);
        Remplace(pNouveau);
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        CKLBIN cl;
        int nRes = cl.nAssign(pDonnees, nTaille, 0);
        if (KV_bSucces(nRes))
            Remplace(cl.pDetach());
        return nRes;
    }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_BINAIRE; }
    void vLibere() override {
        KVBloc::Release(p());
        std::memset(pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override { KVBloc::AddRef(p()); }
    int vnUnshare() override {
        if (KVBloc::nRef(p()) <= 1)
            return KV_OK;
        CKLBIN cl;
        int nRes = cl.nAssign(p(), KVBloc::nTaille(p()), 0);
        if (KV_bSucces(nRes))
            Remplace(cl.pDetach());
        return nRes;
    }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_BINAIRE;
        st.sOctets.assign(static_cast<const char*>(nGetDataAdr()), nGetDataSize());
        return KV_OK;
    }
    // Text becomes its UTF-8 bytes; other values the bytes of their text.
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        std::string s;
        int nRes = s_nVersOctets(st, s);
        return KV_bSucces(nRes) ? SetValue(s.data(), s.size()) : nRes;
    }

private:
    unsigned char* p() const { return tLit<unsigned char*>(pbyValeur()); }
    void Remplace(unsigned char* pNouveau) {
        KVBloc::Release(p());
        Ecrit(pbyValeur(), pNouveau);
    }
};

// A pointer of the host (image, carrier, font), kept and copied as it is.
template <class T> class CAny_TOpaque : public CAny_TEnPlace<T> {
public:
    size_t nGetDataSize() const override { return 0; }
    const void* nGetDataAdr() const override { return this->tValeur(); }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_POINTEUR; }
};

// A counted object: a reference added on copy, dropped on clear.
template <class T> class CAny_TObjet : public CAny_TEnPlace<T*> {
public:
    size_t nGetDataSize() const override { return 0; }
    const void* nGetDataAdr() const override { return this->tValeur(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        T* pi = tLit<T*>(static_cast<const unsigned char*>(pValeur));
        if (pi)
            pi->vAddRef();
        vLibere();
        this->Fixe(pi);
        return KV_OK;
    }
    // Bytes never become a reference: only the image form sets an object.
    int SetValue(const void*, unsigned long) override { return KV_ERR_TYPE; }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_OBJET; }
    void vLibere() override {
        if (T* pi = this->tValeur())
            pi->vRelease();
        std::memset(this->pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override {
        if (T* pi = this->tValeur())
            pi->vAddRef();
    }
};

// A plain block of fixed size (point, rectangle): copied, never converted.
template <class T> class CAny_TBloc : public CAny_TEnPlace<T> {};

#define KV_ANY_TYPE(nCode, NOM, GENRE, T)                                                          \
    class CAny_##NOM final : public CAny_T##GENRE<T> {                                             \
    public:                                                                                        \
        const char* vpszNomClasse() const override { return "CAny_" #NOM; }                        \
    };                                                                                             \
    static_assert(sizeof(CAny_##NOM) == sizeof(CAny_Intern), "a vtable pointer and nothing else");
#include "AnyTypes.def"

CAny_Intern* s_pclConstruit(void* pSlot, uint16_t nCode) {
    if (nCode & CAny::knTableau)
        return new (pSlot) CAny_Intern;
    switch (nCode) {
#define KV_ANY_TYPE(nCode, NOM, GENRE, T)                                                          \
    case nCode:                                                                                    \
        return new (pSlot) CAny_##NOM;
#define KV_ANY_ALIAS(nCode, NOM)                                                                   \
    case nCode:                                                                                    \
        return new (pSlot) CAny_##NOM;
#include "AnyTypes.def"
    default:
        return new (pSlot) CAny_Intern;
    }
}

bool s_bConnu(unsigned nCode) {
    switch (nCode) {
#define KV_ANY_TYPE(nCode, NOM, GENRE, T) case nCode:
#define KV_ANY_ALIAS(nCode, NOM) case nCode:
#include "AnyTypes.def"
        return true;
    default:
        return false;
    }
}

} // namespace

// ---- CAny -----------------------------------------------------------------------------------

CAny::CAny() noexcept : m_pclImpl(nullptr), m_nType(0) {
    std::memset(m_abyValeur, 0, sizeof m_abyValeur);
    Installe(0);
}
CAny::CAny(const CAny& o) noexcept : CAny() {
    o.m_pclImpl->Duplique(this);
}
CAny::CAny(CAny&& o) noexcept : CAny() {
    swap(o);
}
CAny& CAny::operator=(const CAny& o) noexcept {
    CAny cl(o);
    swap(cl);
    return *this;
}
CAny& CAny::operator=(CAny&& o) noexcept {
    CAny cl(std::move(o));
    swap(cl);
    return *this;
}
CAny::~CAny() {
    m_pclImpl->vLibere();
    m_pclImpl->~CAny_Intern();
}

// The areas hold no pointer into themselves, so they move as bytes; each side then gets the
// implementation object of its new code.
void CAny::swap(CAny& o) noexcept {
    if (this == &o)
        return;
    unsigned char aby[knTailleValeur];
    std::memcpy(aby, m_abyValeur, knTailleValeur);
    std::memcpy(m_abyValeur, o.m_abyValeur, knTailleValeur);
    std::memcpy(o.m_abyValeur, aby, knTailleValeur);
    std::swap(m_nType, o.m_nType);
    Installe(m_nType);
    o.Installe(o.m_nType);
}

void CAny::Installe(uint16_t nCode) noexcept {
    if (m_pclImpl)
        m_pclImpl->~CAny_Intern();
    m_pclImpl = s_pclConstruit(m_abyImpl, nCode);
}

uint16_t CAny::s_nTypeEffectif(uint16_t nCode) {
    if (nCode > (knTableau | 0xFF))
        return 0;
    auto nScalaire = static_cast<uint16_t>(nCode & ~knTableau);
    switch (nScalaire) {
#define KV_ANY_REPLI(nCode, nCible)                                                                \
    case nCode:                                                                                    \
        nScalaire = nCible;                                                                        \
        break;
#include "AnyTypes.def"
    default:
        break;
    }
    if (!s_bConnu(nScalaire))
        return 0;
    return static_cast<uint16_t>(nScalaire | (nCode & knTableau));
}

int CAny::nReinitialise(uint16_t nCode) {
    m_pclImpl->vLibere();
    m_nType = nCode;
    Installe(nCode);
    return m_pclImpl->vnInitDefaut();
}

int CAny::__SetType(uint16_t nCode, int bGardeValeur) {
    uint16_t nCible = s_nTypeEffectif(nCode);
    if (nCible == m_nType)
        return KV_OK;
    int nRes = KV_OK;
    if (bGardeValeur) {
        CAny cl;
        (void)cl.nReinitialise(nCible);
        nRes = cl.nAffecteConverti(*this, 0);
        if (KV_bSucces(nRes)) {
            swap(cl);
            return nRes;
        }
    }
    int nDefaut = nReinitialise(nCible);
    return KV_bSucces(nRes) ? nDefaut : nRes;
}

int CAny::nLit(STAnyNeutre& st, unsigned nCodePage) const {
    return m_pclImpl->vnLit(st, nCodePage);
}

int CAny::nAffecteConverti(const CAny& clSource, unsigned nCodePage) {
    if (&clSource == this)
        return KV_OK;
    eKVSTOCKAGE nStockage = m_pclImpl->vnGetStockage();
    bool bPartage = nStockage != KV_STOCKAGE_AUCUN && nStockage != KV_STOCKAGE_POINTEUR;
    if (bPartage && nStockage == clSource.m_pclImpl->vnGetStockage()) {
        uint16_t nGarde = m_nType;
        clSource.m_pclImpl->Duplique(this);
        m_nType = nGarde;
        Installe(nGarde);
        return KV_OK;
    }
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        int nRes = clSource.nLit(st, nCodePage);
        return KV_bSucces(nRes) ? m_pclImpl->vnEcrit(st, nCodePage) : nRes;
    });
}

// ---- setters --------------------------------------------------------------------------------

// The numbers and booleans hold nothing counted and start from a zeroed area: a value already
// of the type keeps its implementation object, and only its area is cleared and written, as a
// reader walking leaf after leaf sets them again and again.
void CAny::SetBool(bool b) {
    if (m_nType == 1)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(1);
    Ecrit<int32_t>(m_abyValeur, b ? 1 : 0);
}
void CAny::SetInt(int n) {
    if (m_nType == 8)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(8);
    Ecrit<int32_t>(m_abyValeur, n);
}
void CAny::SetINT_64(long n) {
    if (m_nType == 9)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(9);
    Ecrit<int64_t>(m_abyValeur, n);
}
void CAny::SetUINT_64(unsigned long n) {
    if (m_nType == 5)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(5);
    Ecrit<uint64_t>(m_abyValeur, n);
}
void CAny::SetREAL(double r) {
    if (m_nType == 12)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(12);
    Ecrit(m_abyValeur, r);
}

template <class T> int CAny::_nAffecteTexte(uint16_t nCode, const T* p, size_t n) {
    if (m_nType == nCode) {
        // The value's own text takes the new one: in place when nobody shares its block and it
        // has the room, else a new block. Unchanged on failure.
        auto s = CXYString<T>::Adopt(tLit<T*>(m_abyValeur));
        int nRes = s.nAffecte(p, n);
        Ecrit(m_abyValeur, s.pDetach());
        return nRes;
    }
    CXYString<T> s;
    int nRes = s.nAffecte(p, n);
    if (!KV_bSucces(nRes))
        return nRes;
    (void)nReinitialise(nCode);
    Ecrit(m_abyValeur, s.pDetach());
    return KV_OK;
}

int CAny::__nSetString(const wchar_t* psz, int nLongueur, const STOCAW* pstOptions) {
    unsigned nCP;
    if (!KV_bSucces(s_nCodePage(pstOptions, nCP)) || nLongueur < -1 || (!psz && nLongueur > 0))
        return KV_ERR_PARAMETRE;
    size_t n = !psz ? 0 : nLongueur < 0 ? std::wcslen(psz) : static_cast<size_t>(nLongueur);
    return _nAffecteTexte<wchar_t>(16, psz, n);
}
void CAny::SetString(const CXYString<wchar_t>& s) {
    CXYString<wchar_t> clCopie(s);
    (void)nReinitialise(16);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
int CAny::SetStringA(const char* psz, int nLongueur) {
    if (nLongueur < -1 || (!psz && nLongueur > 0))
        return KV_ERR_PARAMETRE;
    size_t n = !psz ? 0 : nLongueur < 0 ? std::strlen(psz) : static_cast<size_t>(nLongueur);
    return _nAffecteTexte<char>(19, psz, n);
}
void CAny::SetStringA(const CXYString<char>& s) {
    CXYString<char> clCopie(s);
    (void)nReinitialise(19);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
int CAny::SetBinary(const void* p, size_t nTaille) {
    CKLBIN cl;
    int nRes = cl.nAssign(p, nTaille, 0);
    if (!KV_bSucces(nRes))
        return nRes;
    (void)nReinitialise(28);
    Ecrit(m_abyValeur, cl.pDetach());
    return KV_OK;
}
void CAny::SetBinary(const CKLBIN& clBin) {
    CKLBIN clCopie(clBin);
    (void)nReinitialise(28);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
void CAny::SetDateTime(const CDateTime& clDate) {
    CDateTime clCopie = clDate;
    (void)nReinitialise(26);
    Ecrit(m_abyValeur, clCopie);
}
void CAny::SetDuree(long nMilli) {
    (void)nReinitialise(27);
    Ecrit<int64_t>(m_abyValeur, nMilli);
}
void CAny::SetPSTRX(const wchar_t* psz) {
    (void)nReinitialise(110);
    Ecrit(m_abyValeur, psz);
}
void CAny::SetPSTRA(const char* psz) {
    (void)nReinitialise(18);
    Ecrit(m_abyValeur, psz);
}
int CAny::SetObjet(IInterfaceObjetBase* pi, uint16_t nType) {
    CAny cl;
    (void)cl.nReinitialise(s_nTypeEffectif(nType));
    if (cl.bEstTableau() || cl.m_pclImpl->vnGetStockage() != KV_STOCKAGE_OBJET)
        return KV_ERR_TYPE;
    int nRes = cl.m_pclImpl->SetValue(&pi);
    if (KV_bSucces(nRes))
        swap(cl);
    return nRes;
}
int CAny::SetTableau(IInterfaceObjetBase* pi, uint16_t nTypeElement) {
    if (nTypeElement & knTableau)
        return KV_ERR_TYPE;
    uint16_t nCible = s_nTypeEffectif(static_cast<uint16_t>(nTypeElement | knTableau));
    if (nCible == 0)
        return KV_ERR_TYPE;
    CAny cl;
    (void)cl.nReinitialise(nCible);
    int nRes = cl.m_pclImpl->SetValue(&pi);
    if (KV_bSucces(nRes))
        swap(cl);
    return nRes;
}
int CAny::SetPointeur(uint16_t nType, void* p) {
    uint16_t nCible = s_nTypeEffectif(nType);
    CAny cl;
    (void)cl.nReinitialise(nCible);
    if (cl.bEstTableau() || cl.m_pclImpl->vnGetStockage() != KV_STOCKAGE_POINTEUR ||
        cl.m_pclImpl->nGetPCASTR() || cl.m_pclImpl->nGetPCWSTR())
        return KV_ERR_TYPE;
    Ecrit(cl.m_abyValeur, p);
    swap(cl);
    return KV_OK;
}
void CAny::SetPoint(const STKLPoint& st) {
    STKLPoint stCopie = st;
    (void)nReinitialise(150);
    Ecrit(m_abyValeur, stCopie);
}
void CAny::SetRectangle(const STKLRectangle& st) {
    STKLRectangle stCopie = st;
    (void)nReinitialise(151);
    Ecrit(m_abyValeur, stCopie);
}

// ---- readers --------------------------------------------------------------------------------

namespace {
// An integer reading of the value, within the range of T.
template <class T>
int s_nLitBorne(const CAny& cl, T* pn, int (*pfnVers)(const STAnyNeutre&, KVEntier&)) {
    if (!pn)
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        KVEntier n = 0;
        int nRes = cl.pclGetIntern()->vnLit(st, 0);
        if (KV_bSucces(nRes))
            nRes = pfnVers(st, n);
        if (!KV_bSucces(nRes))
            return nRes;
        if (n < std::numeric_limits<T>::min() || n > std::numeric_limits<T>::max())
            return KV_ERR_DEPASSEMENT;
        *pn = static_cast<T>(n);
        return nRes;
    });
}
} // namespace

int CAny::nGetINT(int* pn) const {
    return s_nLitBorne(*this, pn, s_nVersEntier);
}
int CAny::nGetINT_64(long* pn) const {
    return s_nLitBorne(*this, pn, s_nVersEntier);
}
int CAny::nGetDuree(long* pnMilli) const {
    return s_nLitBorne(*this, pnMilli, s_nVersDuree);
}

int CAny::nGetBitField_64(unsigned long& nBits) const {
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        int nRes = nLit(st, 0);
        if (!KV_bSucces(nRes))
            return nRes;
        if (st.nGenre == KV_GENRE_ENTIER && st.nLargeur > 0) {
            KVNaturel nMasque = (KVNaturel(1) << st.nLargeur) - 1;
            nBits = static_cast<unsigned long>(static_cast<KVNaturel>(st.nEntier) & nMasque);
            return KV_OK;
        }
        KVEntier n;
        nRes = s_nVersEntier(st, n);
        if (!KV_bSucces(nRes))
            return nRes;
        if (n < std::numeric_limits<long>::min() || n > std::numeric_limits<unsigned long>::max())
            return KV_ERR_DEPASSEMENT;
        nBits = static_cast<unsigned long>(static_cast<KVNaturel>(n));
        return KV_OK;
    });
}

namespace {
// A reading of the value through one conversion of the neutral form.
template <class T> int s_nLitVers(const CAny& cl, T* p, int (*pfnVers)(const STAnyNeutre&, T&)) {
    if (!p)
        return KV_ERR_PARAMETRE;
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        int nRes = cl.pclGetIntern()->vnLit(st, 0);
        return KV_bSucces(nRes) ? pfnVers(st, *p) : nRes;
    });
}
} // namespace

int CAny::nGetREAL(double* pr) const { return s_nLitVers(*this, pr, s_nVersReel); }
int CAny::nGetBool(bool* pb) const { return s_nLitVers(*this, pb, s_nVersBooleen); }
int CAny::nGetDateTime(CDateTime* pclDate) const {
    return s_nLitVers(*this, pclDate, s_nVersDateHeure);
}

IInterfaceObjetBase* CAny::piGetObjet() const {
    eKVSTOCKAGE n = m_pclImpl->vnGetStockage();
    if (n != KV_STOCKAGE_OBJET && n != KV_STOCKAGE_TABLEAU)
        return nullptr;
    return tLit<IInterfaceObjetBase*>(m_abyValeur);
}

int CAny::nGetManipAUB(STManipAUB* pst) {
    if (!pst)
        return KV_ERR_PARAMETRE;
    if (m_pclImpl->vnGetStockage() == KV_STOCKAGE_BINAIRE) {
        *pst = {reinterpret_cast<uintptr_t>(m_pclImpl->nGetDataAdr()), m_pclImpl->nGetDataSize(),
                28};
        return KV_OK;
    }
    if (!m_pclImpl->nGetPCWSTR() && !m_pclImpl->nGetPCASTR()) {
        int nRes = __nCastTo(16);
        if (!KV_bSucces(nRes))
            return nRes;
    }
    if (const wchar_t* psz = m_pclImpl->nGetPCWSTR()) {
        *pst = {reinterpret_cast<uintptr_t>(psz), m_pclImpl->nGetSTRLEN() * sizeof(wchar_t), 16};
    } else {
        const char* pszA = m_pclImpl->nGetPCASTR();
        *pst = {reinterpret_cast<uintptr_t>(pszA), m_pclImpl->nGetSTRLEN(), 19};
    }
    return KV_OK;
}

int CAny::__nCastTo(uint16_t nType, const STOCAW* pstOptions, unsigned /*nFlags*/) {
    unsigned nCP;
    if (!KV_bSucces(s_nCodePage(pstOptions, nCP)))
        return KV_ERR_PARAMETRE;
    uint16_t nCible = s_nTypeEffectif(nType);
    if (nCible == 0)
        return KV_ERR_TYPE;
    if (nCible == m_nType)
        return KV_OK;
    CAny cl;
    (void)cl.nReinitialise(nCible);
    int nRes = cl.nAffecteConverti(*this, nCP);
    if (KV_bSucces(nRes))
        swap(cl);
    return nRes;
}

int CAny::__nCastToString(const wchar_t** ppsz, const STOCAW* pstOptions) {
    if (!ppsz)
        return KV_ERR_PARAMETRE;
    if (!m_pclImpl->nGetPCWSTR()) {
        int nRes = __nCastTo(16, pstOptions);
        if (!KV_bSucces(nRes))
            return nRes;
    }
    *ppsz = m_pclImpl->nGetPCWSTR();
    return KV_OK;
}

int CAny::__nCastToString(const char** ppsz, const STOCAW* pstOptions) {
    if (!ppsz)
        return KV_ERR_PARAMETRE;
    if (!m_pclImpl->nGetPCASTR()) {
        int nRes = __nCastTo(19, pstOptions);
        if (!KV_bSucces(nRes))
            return nRes;
    }
    *ppsz = m_pclImpl->nGetPCASTR();
    return KV_OK;
}

int CAny::__nFillString(CXYString<wchar_t>& s, const STOCAW* pstOptions) const {
    unsigned nCP;
    if (!KV_bSucces(s_nCodePage(pstOptions, nCP)))
        return KV_ERR_PARAMETRE;
    if (m_pclImpl->vnGetStockage() == KV_STOCKAGE_CHAINEW) {
        s = CXYString<wchar_t>::Retain(tLit<wchar_t*>(m_abyValeur));
        return KV_OK;
    }
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        std::string sUtf8;
        int nRes = nLit(st, nCP);
        if (KV_bSucces(nRes))
            nRes = s_nVersTexte(st, sUtf8);
        CXYString<wchar_t> sNouveau;
        if (KV_bSucces(nRes))
            nRes = KVUtf8::nVersWide(sUtf8, sNouveau);
        if (KV_bSucces(nRes))
            s = std::move(sNouveau);
        return nRes;
    });
}

int CAny::__nFillString(CXYString<char>& s, const STOCAW* pstOptions) const {
    unsigned nCP;
    if (!KV_bSucces(s_nCodePage(pstOptions, nCP)))
        return KV_ERR_PARAMETRE;
    if (m_pclImpl->vnGetStockage() == KV_STOCKAGE_CHAINEA) {
        s = CXYString<char>::Retain(tLit<char*>(m_abyValeur));
        return KV_OK;
    }
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        std::string sUtf8;
        int nRes = nLit(st, nCP);
        if (KV_bSucces(nRes))
            nRes = s_nVersTexte(st, sUtf8);
        if (!KV_bSucces(nRes))
            return nRes;
        std::string sNarrow = s_sVersNarrow(sUtf8, nCP);
        CXYString<char> sNouveau;
        nRes = sNouveau.nAffecte(sNarrow.data(), sNarrow.size());
        if (KV_bSucces(nRes))
            s = std::move(sNouveau);
        return nRes;
    });
}

int CAny::nFillBinary(CKLBIN& clBin) const {
    if (m_pclImpl->vnGetStockage() == KV_STOCKAGE_BINAIRE) {
        clBin = CKLBIN::Retain(tLit<unsigned char*>(m_abyValeur));
        return KV_OK;
    }
    return s_nProtege([&]() -> int {
        STAnyNeutre st;
        std::string s;
        int nRes = nLit(st, 0);
        if (KV_bSucces(nRes))
            nRes = s_nVersOctets(st, s);
        CKLBIN cl;
        if (KV_bSucces(nRes))
            nRes = cl.nAssign(s.data(), s.size(), 0);
        if (KV_bSucces(nRes))
            clBin = std::move(cl);
        return nRes;
    });
}

int CAny::nUnshare() {
    return m_pclImpl->vnUnshare();
}

int CAny::nCastFrom_BIN_DUREE_To_DUREE() {
    if (m_pclImpl->vnGetStockage() != KV_STOCKAGE_BINAIRE)
        return KV_ERR_TYPE;
    if (m_pclImpl->nGetDataSize() != sizeof(int64_t))
        return KV_ERR_CONVERSION;
    auto n = tLit<int64_t>(static_cast<const unsigned char*>(m_pclImpl->nGetDataAdr()));
    SetDuree(n);
    return KV_OK;
}

int CAny::nCastFrom_BIN_DATEHEURE_To_DATEHEURE() {
    if (m_pclImpl->vnGetStockage() != KV_STOCKAGE_BINAIRE)
        return KV_ERR_TYPE;
    if (m_pclImpl->nGetDataSize() != sizeof(CDateTime))
        return KV_ERR_CONVERSION;
    auto cl = tLit<CDateTime>(static_cast<const unsigned char*>(m_pclImpl->nGetDataAdr()));
    // The bytes come from outside: every part must lie in its range.
    if (cl.nGetMois() > 12 || cl.nGetJour() > 31 || cl.nGetAnnee() > 9999 ||
        cl.nGetMilliJour() >= CDateTimeBase::knMilliParJour)
        return KV_ERR_CONVERSION;
    SetDateTime(cl);
    return KV_OK;
}
