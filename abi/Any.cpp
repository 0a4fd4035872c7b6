// CAny: the value itself; its life, its type changes, its setters and readers. The value's
// kind of storage is the implementation object's (AnyTypes.cpp), the conversions go through
// the neutral form (AnyNeutre.cpp).
#include "Any.h"

#include "AnyNeutre.h"
#include "KLBIN.h"
#include "ManipAUB.h"
#include "ObjectInterfaces.h"
#include "XYString.h"

#include <cstring>
#include <limits>
#include <utility>

using namespace KVAny;

// ---- CAny -----------------------------------------------------------------------------------

CAny::CAny() noexcept : m_pclImpl(nullptr), m_nType(0) {
    std::memset(m_abyValeur, 0, sizeof m_abyValeur);
    Installe(KVTYPE_NONE);
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
    if (m_nType == KVTYPE_KLBOOL)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(KVTYPE_KLBOOL);
    Ecrit<int32_t>(m_abyValeur, b ? 1 : 0);
}
void CAny::SetInt(int n) {
    if (m_nType == KVTYPE_KLI4)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(KVTYPE_KLI4);
    Ecrit<int32_t>(m_abyValeur, n);
}
void CAny::SetINT_64(long n) {
    if (m_nType == KVTYPE_KLI8)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(KVTYPE_KLI8);
    Ecrit<int64_t>(m_abyValeur, n);
}
void CAny::SetUINT_64(unsigned long n) {
    if (m_nType == KVTYPE_KLUI8)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(KVTYPE_KLUI8);
    Ecrit<uint64_t>(m_abyValeur, n);
}
void CAny::SetREAL(double r) {
    if (m_nType == KVTYPE_KLR8)
        std::memset(m_abyValeur, 0, knTailleValeur);
    else
        (void)nReinitialise(KVTYPE_KLR8);
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
    return _nAffecteTexte<wchar_t>(KVTYPE_KLDSTRW, psz, n);
}
void CAny::SetString(const CXYString<wchar_t>& s) {
    CXYString<wchar_t> clCopie(s);
    (void)nReinitialise(KVTYPE_KLDSTRW);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
int CAny::SetStringA(const char* psz, int nLongueur) {
    if (nLongueur < -1 || (!psz && nLongueur > 0))
        return KV_ERR_PARAMETRE;
    size_t n = !psz ? 0 : nLongueur < 0 ? std::strlen(psz) : static_cast<size_t>(nLongueur);
    return _nAffecteTexte<char>(KVTYPE_KLDSTRA, psz, n);
}
void CAny::SetStringA(const CXYString<char>& s) {
    CXYString<char> clCopie(s);
    (void)nReinitialise(KVTYPE_KLDSTRA);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
int CAny::SetBinary(const void* p, size_t nTaille) {
    CKLBIN cl;
    int nRes = cl.nAssign(p, nTaille, 0);
    if (!KV_bSucces(nRes))
        return nRes;
    (void)nReinitialise(KVTYPE_KLBIN);
    Ecrit(m_abyValeur, cl.pDetach());
    return KV_OK;
}
void CAny::SetBinary(const CKLBIN& clBin) {
    CKLBIN clCopie(clBin);
    (void)nReinitialise(KVTYPE_KLBIN);
    Ecrit(m_abyValeur, clCopie.pDetach());
}
void CAny::SetDateTime(const CDateTime& clDate) {
    CDateTime clCopie = clDate;
    (void)nReinitialise(KVTYPE_KLDATETIME);
    Ecrit(m_abyValeur, clCopie);
}
void CAny::SetDuree(long nMilli) {
    (void)nReinitialise(KVTYPE_KLDUREE);
    Ecrit<int64_t>(m_abyValeur, nMilli);
}
void CAny::SetPSTRX(const wchar_t* psz) {
    (void)nReinitialise(KVTYPE_KLPSTRW);
    Ecrit(m_abyValeur, psz);
}
void CAny::SetPSTRA(const char* psz) {
    (void)nReinitialise(KVTYPE_KLPSTRA);
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
    (void)nReinitialise(KVTYPE_KLPOINT);
    Ecrit(m_abyValeur, stCopie);
}
void CAny::SetRectangle(const STKLRectangle& st) {
    STKLRectangle stCopie = st;
    (void)nReinitialise(KVTYPE_KLRECTANGLE);
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
                KVTYPE_KLBIN};
        return KV_OK;
    }
    if (!m_pclImpl->nGetPCWSTR() && !m_pclImpl->nGetPCASTR()) {
        int nRes = __nCastTo(KVTYPE_KLDSTRW);
        if (!KV_bSucces(nRes))
            return nRes;
    }
    if (const wchar_t* psz = m_pclImpl->nGetPCWSTR()) {
        *pst = {reinterpret_cast<uintptr_t>(psz), m_pclImpl->nGetSTRLEN() * sizeof(wchar_t), KVTYPE_KLDSTRW};
    } else {
        const char* pszA = m_pclImpl->nGetPCASTR();
        *pst = {reinterpret_cast<uintptr_t>(pszA), m_pclImpl->nGetSTRLEN(), KVTYPE_KLDSTRA};
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
        int nRes = __nCastTo(KVTYPE_KLDSTRW, pstOptions);
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
        int nRes = __nCastTo(KVTYPE_KLDSTRA, pstOptions);
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
