#include "KLBIN.h"

#include "KVResult.h"
#include "Utf8.h"

#include <cstring>
#include <string>

namespace {
// Byte blocks keep one zero byte after the data, so that text in them reads as C text.
constexpr size_t knTerminal = 1;
}

int CKLBIN::nAssign(const void* p, size_t n, unsigned /*dwFlags*/) {
    if (n == 0) {
        KVBloc::Release(std::exchange(m_p, nullptr));
        return KV_OK;
    }
    if (!p) return KV_ERR_PARAMETRE;
    if (n >= KVBloc::knTailleMax) return KV_ERR_TROP_LONG;
    void* pNouveau = KVBloc::pAlloue(n, knTerminal);
    if (!pNouveau) return KV_ERR_MEMOIRE;
    std::memcpy(pNouveau, p, n);
    KVBloc::FixeTaille(pNouveau, n, knTerminal);
    KVBloc::Release(m_p);
    m_p = static_cast<unsigned char*>(pNouveau);
    return KV_OK;
}

int CKLBIN::nConcat(const void* p, size_t n) {
    if (n == 0) return KV_OK;
    if (!p) return KV_ERR_PARAMETRE;
    size_t nAvant = nGetTaille();
    if (n >= KVBloc::knTailleMax - nAvant) return KV_ERR_TROP_LONG;
    CKLBIN clGarde; // a source inside this block must outlive its reallocation
    auto* pOctets = static_cast<const unsigned char*>(p);
    if (m_p && pOctets >= m_p && pOctets <= m_p + KVBloc::nCapacite(m_p)) clGarde = *this;
    void* pBloc = m_p;
    int nRes = KVBloc::nPrepare(pBloc, nAvant + n, nAvant, knTerminal);
    if (!KV_bSucces(nRes)) return nRes;
    m_p = static_cast<unsigned char*>(pBloc);
    std::memmove(m_p + nAvant, p, n);
    KVBloc::FixeTaille(m_p, nAvant + n, knTerminal);
    return KV_OK;
}

long CKLBIN::nPos(const void* pMotif, size_t nMotif, size_t nDepart) const {
    std::string_view svSoi = sv();
    if (nDepart > svSoi.size() || (nMotif && !pMotif)) return knAbsent;
    size_t nTrouve = svSoi.find(std::string_view(static_cast<const char*>(pMotif), nMotif), nDepart);
    return nTrouve == std::string_view::npos ? knAbsent : static_cast<long>(nTrouve);
}

int CKLBIN::nCompare(const CKLBIN& o) const {
    int n = sv().compare(o.sv());
    return n < 0 ? -1 : (n > 0 ? 1 : 0);
}

bool CKLBIN::bCommencePar(const void* p, size_t n) const {
    return n <= nGetTaille() && (n == 0 || std::memcmp(m_p, p, n) == 0);
}

bool CKLBIN::bTerminePar(const void* p, size_t n) const {
    return n <= nGetTaille() && (n == 0 || std::memcmp(m_p + nGetTaille() - n, p, n) == 0);
}

int CKLBIN::nMilieu(size_t nDebut, size_t nLongueur, CKLBIN& out) const {
    if (nDebut >= nGetTaille()) return out.nAssign(nullptr, 0);
    size_t nReste = nGetTaille() - nDebut;
    return out.nAssign(m_p + nDebut, nLongueur < nReste ? nLongueur : nReste);
}

void CKLBIN::Tronque(size_t nTaille) {
    if (nTaille >= nGetTaille()) return;
    if (nTaille == 0) {
        KVBloc::Release(std::exchange(m_p, nullptr));
        return;
    }
    void* pBloc = m_p;
    if (!KV_bSucces(KVBloc::nPrepare(pBloc, nTaille, nTaille, knTerminal))) return;
    m_p = static_cast<unsigned char*>(pBloc);
    KVBloc::FixeTaille(m_p, nTaille, knTerminal);
}

long CKLBIN::Remplace(const void* pAncien, size_t nAncien, const void* pNouveau, size_t nNouveau) {
    if (nAncien == 0 || !pAncien || (nNouveau && !pNouveau)) return 0;
    std::string_view svAncien(static_cast<const char*>(pAncien), nAncien);
    std::string_view svNouveau(static_cast<const char*>(pNouveau), nNouveau);
    std::string sResultat;
    long nCompte = 0;
    size_t nPosition = 0;
    std::string_view svSoi = sv();
    for (size_t nTrouve; (nTrouve = svSoi.find(svAncien, nPosition)) != std::string_view::npos;
         nPosition = nTrouve + nAncien, ++nCompte) {
        sResultat.append(svSoi.substr(nPosition, nTrouve - nPosition)).append(svNouveau);
    }
    if (nCompte == 0) return 0;
    sResultat.append(svSoi.substr(nPosition));
    return KV_bSucces(nAssign(sResultat.data(), sResultat.size())) ? nCompte : -1;
}

int CKLBIN::nRepete(const CKLBIN& source, size_t nFois) {
    size_t nUnite = source.nGetTaille();
    if (nUnite && nFois >= KVBloc::knTailleMax / nUnite) return KV_ERR_TROP_LONG;
    std::string s;
    s.reserve(nUnite * nFois);
    for (size_t i = 0; i < nFois; ++i) s.append(source.sv());
    return nAssign(s.data(), s.size());
}

int CKLBIN::nAffecteToUNICODE(CXYString<wchar_t>& out) const {
    return KVUtf8::nVersWide(sv(), out);
}

int CKLBIN::nAffecteToANSI(CXYString<char>& out) const {
    return out.nAffecte(reinterpret_cast<const char*>(m_p), nGetTaille());
}

int CKLBIN::nAffecteANSIToANSI(CXYString<char>& out) const {
    std::string_view s = sv();
    return out.nAffecte(s.data(), s.substr(0, s.find('\0')).size());
}
