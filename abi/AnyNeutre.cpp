// The conversions of values: narrow text in its code page, numbers, currency, durations and
// dates read from text and written to it, and the neutral form converted to each kind of target.
#include "AnyNeutre.h"

#include "ManipAUB.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace KVAny {

// Beyond any target of a conversion; digits past it only mark an overflow.
constexpr KVEntier knLectureMax = KVEntier(1) << 100;

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

// ---- reading text --------------------------------------------------------------------------

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

} // namespace KVAny
