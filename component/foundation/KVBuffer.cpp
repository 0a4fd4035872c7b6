#include "foundation/KVBuffer.h"

#include "Utf8.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

static_assert(std::endian::native == std::endian::little, "the saved form is little-endian");

namespace {

constexpr size_t knMarque = 4;
// Start mark, length, null and end mark: the marked form around its text.
constexpr size_t knEnveloppe = 13;

uint32_t s_nLit32(const unsigned char* p) {
    uint32_t n;
    std::memcpy(&n, p, sizeof n);
    return n;
}

// Code page 1252 where it differs from Latin-1; 0 where it has no character.
constexpr char16_t gtab1252[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                   0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

std::wstring s_sDepuisPageDeCode(std::string_view sv, unsigned nCodePage) {
    if (nCodePage == nCODEPAGE_UTF8)
        return KVUtf8::VersWide(sv);
    std::wstring s;
    s.reserve(sv.size());
    for (unsigned char c : sv) {
        const char16_t w = c >= 0x80 && c < 0xA0 ? gtab1252[c - 0x80] : c;
        s += static_cast<wchar_t>(w ? w : 0xFFFD);
    }
    return s;
}

// A filler into a standard string, which the other readers share.
class CRemplitChaine final : public IStringFiller {
public:
    bool vbRemplit(const wchar_t* psz, size_t n) override {
        m_s.assign(psz, n);
        return true;
    }
    std::wstring m_s;
};

} // namespace

CKVBuffer::CKVBuffer(size_t nTailleInitiale, size_t nCroissance)
    : m_nCroissance(nCroissance ? nCroissance : 256) {
    if (nTailleInitiale)
        (void)_bReserve(nTailleInitiale);
}

CKVBuffer::~CKVBuffer() {
    std::free(m_pby);
}

bool CKVBuffer::_bReserve(size_t nCapacite) {
    if (nCapacite <= m_nCapacite)
        return true;
    size_t nNouvelle = m_nCapacite + m_nCroissance;
    if (nNouvelle < m_nCapacite * 2)
        nNouvelle = m_nCapacite * 2;
    if (nNouvelle < nCapacite)
        nNouvelle = nCapacite;
    auto* pby = static_cast<unsigned char*>(std::realloc(m_pby, nNouvelle));
    if (!pby)
        return false;
    m_pby = pby;
    m_nCapacite = nNouvelle;
    return true;
}

bool CKVBuffer::Set(const void* p, size_t nTaille) {
    if (!nTaille)
        return true;
    if (nTaille > SIZE_MAX - m_nPosition || !_bReserve(m_nPosition + nTaille))
        return false;
    std::memmove(m_pby + m_nPosition, p, nTaille);
    m_nPosition += nTaille;
    if (m_nPosition > m_nUtilise)
        m_nUtilise = m_nPosition;
    return true;
}

size_t CKVBuffer::dwGet(void* p, size_t nTaille) {
    const size_t n = nTaille < nReste() ? nTaille : nReste();
    if (n)
        std::memcpy(p, m_pby + m_nPosition, n);
    m_nPosition += n;
    return n;
}

bool CKVBuffer::bGet32(uint32_t& n) {
    if (nReste() < sizeof n)
        return false;
    n = s_nLit32(m_pby + m_nPosition);
    m_nPosition += sizeof n;
    return true;
}

void CKVBuffer::Seek(long long nDecalage, eBUFFER_SEEK eOrigine) {
    long long nBase = 0;
    if (eOrigine == BUFFER_SEEK_COURANT)
        nBase = static_cast<long long>(m_nPosition);
    else if (eOrigine == BUFFER_SEEK_FIN)
        nBase = static_cast<long long>(m_nUtilise);
    long long n = nBase + nDecalage;
    if (n < 0)
        n = 0;
    m_nPosition =
        static_cast<unsigned long long>(n) > m_nUtilise ? m_nUtilise : static_cast<size_t>(n);
}

bool CKVBuffer::SetSize(size_t nTaille) {
    if (nTaille > m_nUtilise) {
        if (!_bReserve(nTaille))
            return false;
        std::memset(m_pby + m_nUtilise, 0, nTaille - m_nUtilise);
    }
    m_nUtilise = nTaille;
    if (m_nPosition > m_nUtilise)
        m_nPosition = m_nUtilise;
    return true;
}

bool CKVBuffer::Resize(size_t nCapacite) {
    if (nCapacite < m_nUtilise)
        nCapacite = m_nUtilise;
    if (nCapacite == 0) {
        ClearAll();
        return true;
    }
    auto* pby = static_cast<unsigned char*>(std::realloc(m_pby, nCapacite));
    if (!pby)
        return false;
    m_pby = pby;
    m_nCapacite = nCapacite;
    return true;
}

void CKVBuffer::ClearAll() {
    std::free(std::exchange(m_pby, nullptr));
    m_nCapacite = m_nUtilise = m_nPosition = m_nDebutCodage = 0;
}

unsigned char* CKVBuffer::GetOwnershipMemory(size_t* pnTaille) {
    if (pnTaille)
        *pnTaille = m_nUtilise;
    unsigned char* pby = std::exchange(m_pby, nullptr);
    m_nCapacite = m_nUtilise = m_nPosition = m_nDebutCodage = 0;
    return pby;
}

void CKVBuffer::GiveOwnershipMemory(unsigned char* pby, size_t nTaille) {
    ClearAll();
    m_pby = pby;
    m_nCapacite = m_nUtilise = pby ? nTaille : 0;
}

void CKVBuffer::Transfert(CKVBuffer& clCible) {
    if (&clCible == this)
        return;
    const size_t nPosition = m_nPosition, nDebutCodage = m_nDebutCodage;
    const size_t nCapacite = m_nCapacite;
    size_t nTaille = 0;
    unsigned char* pby = GetOwnershipMemory(&nTaille);
    clCible.GiveOwnershipMemory(pby, nTaille);
    clCible.m_nCapacite = pby ? nCapacite : 0;
    clCible.m_nPosition = nPosition;
    clCible.m_nDebutCodage = nDebutCodage;
    clCible.m_ePack = m_ePack;
    clCible.m_eCrypt = m_eCrypt;
    clCible.m_eModeTString = m_eModeTString;
}

// ---- Texts -------------------------------------------------------------------------------

bool CKVBuffer::SaveStringNewUtf8Mark(const wchar_t* psz, bool bZeroSiVide) {
    if (!psz || !*psz) {
        if (bZeroSiVide) {
            const unsigned char byZero = 0;
            return Set(&byZero, 1);
        }
        psz = L"";
    }
    const std::string sUtf8 = KVUtf8::VersUtf8(psz);
    if (sUtf8.size() > UINT32_MAX - knEnveloppe)
        return false;
    const auto nTotal = static_cast<uint32_t>(sUtf8.size() + knEnveloppe);
    // One growth for the whole form, so that a failure leaves nothing half written.
    if (!_bReserve(m_nPosition + nTotal))
        return false;
    Set32(nMARK_START_TSTRINGUTF8);
    Set32(nTotal);
    Set(sUtf8.c_str(), sUtf8.size() + 1);
    Set32(nMARK_END_TSTRINGUTF8);
    return true;
}

CKVBuffer& CKVBuffer::operator<<(const CTString& s) {
    (void)SaveStringNewUtf8Mark(s.pszGet(), false);
    return *this;
}

bool CKVBuffer::__bReadEnteteString(bool bZeroPermis, STTexteLu& st) const {
    const size_t nReste = this->nReste();
    const unsigned char* p = m_pby + m_nPosition;
    if (bZeroPermis && nReste >= 1 && p[0] == 0) {
        st = {m_nPosition, 0, 1, true};
        return true;
    }
    // With the zero byte allowed, an empty text never takes the marked form.
    const size_t nMinimum = knEnveloppe + (bZeroPermis ? 1 : 0);
    if (nReste < nMinimum || s_nLit32(p) != nMARK_START_TSTRINGUTF8)
        return false;
    const uint32_t nTotal = s_nLit32(p + knMarque);
    if (nTotal < nMinimum || nTotal > nReste ||
        s_nLit32(p + nTotal - knMarque) != nMARK_END_TSTRINGUTF8)
        return false;
    const size_t nTexte = nTotal - knEnveloppe;
    if (::strnlen(reinterpret_cast<const char*>(p + 2 * knMarque), nTexte + 1) != nTexte)
        return false;
    st = {m_nPosition + 2 * knMarque, nTexte, nTotal, true};
    return true;
}

bool CKVBuffer::_bLocaliseTexte(EModeTString eMode, STTexteLu& st) const {
    if (eMode != MODETSTRING_ANCIEN) {
        if (__bReadEnteteString(eMode != MODETSTRING_MARQUE_SEUL, st))
            return true;
        if (eMode == MODETSTRING_MARQUE || eMode == MODETSTRING_MARQUE_SEUL)
            return false;
    }
    const void* pNul = nReste() ? std::memchr(m_pby + m_nPosition, 0, nReste()) : nullptr;
    if (!pNul)
        return false;
    const size_t nTexte = static_cast<const unsigned char*>(pNul) - (m_pby + m_nPosition);
    st = {m_nPosition, nTexte, nTexte + 1, false};
    return true;
}

bool CKVBuffer::bReadString(IStringFiller& clCible, EModeTString eMode, unsigned nCodePage) {
    STTexteLu st;
    if (!_bLocaliseTexte(eMode, st))
        return false;
    const std::string_view sv(reinterpret_cast<const char*>(m_pby + st.nDebut), st.nLongueur);
    const std::wstring s = st.bUtf8 ? KVUtf8::VersWide(sv) : s_sDepuisPageDeCode(sv, nCodePage);
    if (!clCible.vbRemplit(s.c_str(), s.size()))
        return false;
    m_nPosition += st.nTotal;
    return true;
}

bool CKVBuffer::bReadString(CTString& s, EModeTString eMode, unsigned nCodePage) {
    CRemplitChaine cl;
    if (!bReadString(cl, eMode, nCodePage))
        return false;
    s = std::wstring_view(cl.m_s);
    return true;
}

bool CKVBuffer::bReadString(CXYString<wchar_t>& s, EModeTString eMode, unsigned nCodePage) {
    class CRemplitXY final : public IStringFiller {
    public:
        explicit CRemplitXY(CXYString<wchar_t>& s) : m_s(s) {}
        bool vbRemplit(const wchar_t* psz, size_t n) override {
            return n == 0 ? (m_s.Vide(), true) : m_s.nAffecte(psz, n) < 100;
        }
        CXYString<wchar_t>& m_s;
    } cl(s);
    return bReadString(cl, eMode, nCodePage);
}

int CKVBuffer::nReadString(wchar_t* psz, int nTaille, EModeTString eMode, unsigned nCodePage) {
    const size_t nPosition = m_nPosition;
    CRemplitChaine cl;
    if (!psz || nTaille <= 0 || !bReadString(cl, eMode, nCodePage))
        return -1;
    if (cl.m_s.size() + 1 > static_cast<size_t>(nTaille)) {
        m_nPosition = nPosition;
        return -1;
    }
    std::wmemcpy(psz, cl.m_s.c_str(), cl.m_s.size() + 1);
    return static_cast<int>(cl.m_s.size() + 1);
}

wchar_t* CKVBuffer::pszReadCreateString(EModeTString eMode, unsigned nCodePage) {
    const size_t nPosition = m_nPosition;
    CRemplitChaine cl;
    if (!bReadString(cl, eMode, nCodePage))
        return nullptr;
    auto* psz = static_cast<wchar_t*>(std::malloc((cl.m_s.size() + 1) * sizeof(wchar_t)));
    if (!psz) {
        m_nPosition = nPosition;
        return nullptr;
    }
    std::wmemcpy(psz, cl.m_s.c_str(), cl.m_s.size() + 1);
    return psz;
}

CKVBuffer& CKVBuffer::operator>>(CTString& s) {
    if (!bReadString(s, m_eModeTString, nCODEPAGE_1252))
        s.Vide();
    return *this;
}

bool CKVBuffer::bSeekString(EModeTString eMode) {
    STTexteLu st;
    if (!_bLocaliseTexte(eMode, st))
        return false;
    m_nPosition += st.nTotal;
    return true;
}

int CKVBuffer::nReadStringOldAnsi(char* psz, int nTaille) {
    STTexteLu st;
    if (!psz || nTaille <= 0 || !_bLocaliseTexte(MODETSTRING_ANCIEN, st) ||
        st.nTotal > static_cast<size_t>(nTaille))
        return -1;
    std::memcpy(psz, m_pby + st.nDebut, st.nTotal);
    m_nPosition += st.nTotal;
    return static_cast<int>(st.nTotal);
}

// ---- Blocks and the main header ------------------------------------------------------------

size_t CKVBufferMark::s_dwWriteBeginMark(CKVBuffer& clBuffer) {
    const size_t nPosition = clBuffer.nGetPosition();
    clBuffer.Set32(0);
    return nPosition;
}

uint32_t CKVBufferMark::s_WriteEndMark(CKVBuffer& clBuffer, size_t nPosition) {
    const size_t nFin = clBuffer.nGetTaille();
    if (nPosition > nFin)
        return 0;
    const auto nLongueur = static_cast<uint32_t>(nFin - nPosition);
    clBuffer.Seek(static_cast<long long>(nPosition), BUFFER_SEEK_DEBUT);
    clBuffer.Set32(nLongueur);
    clBuffer.Seek(0, BUFFER_SEEK_FIN);
    return nLongueur;
}

size_t CKVBufferMark::s_dwReadBeginMark(CKVBuffer& clBuffer, unsigned* pnLongueur) {
    const size_t nPosition = clBuffer.nGetPosition();
    uint32_t nLongueur = 0;
    if (!clBuffer.bGet32(nLongueur))
        nLongueur = 0;
    if (pnLongueur)
        *pnLongueur = nLongueur;
    return nPosition + nLongueur;
}

bool CKVBufferMark::WriteEntetePrincipale(uint32_t a, uint32_t b) {
    constexpr uint32_t knTailleEntete = 12;
    Seek(0, BUFFER_SEEK_DEBUT);
    if (!Set32(knTailleEntete) || !Set32(a) || !Set32(b))
        return false;
    m_nDebutCodage = knTailleEntete;
    return true;
}

int CKVBufferMark::nReadEntetePrincipale(uint32_t nAttenduA, uint32_t nAttenduB, unsigned* pa,
                                         unsigned* pb) {
    Seek(0, BUFFER_SEEK_DEBUT);
    uint32_t nTaille = 0, a = 0, b = 0;
    if (!bGet32(nTaille) || !bGet32(a) || !bGet32(b)) {
        Seek(0, BUFFER_SEEK_DEBUT);
        return 1;
    }
    if (pa)
        *pa = a;
    if (pb)
        *pb = b;
    if (nTaille < 12)
        return 2;
    if (a != nAttenduA)
        return 3;
    if (b != nAttenduB)
        return 4;
    m_nDebutCodage = nTaille;
    Seek(nTaille, BUFFER_SEEK_DEBUT);
    return 0;
}
