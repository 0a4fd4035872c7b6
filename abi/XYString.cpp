#include "XYString.h"

#include "KVResult.h"

#include <atomic>
#include <cstring>
#include <cwchar>

namespace {
template <class T> size_t nLongueurC(const T* p) {
    if (!p) return 0;
    if constexpr (sizeof(T) == 1) return std::strlen(p);
    else return std::wcslen(p);
}
} // namespace

template <class T> const T* CXYString<T>::s_pszVide() noexcept {
    static const T szVide[1] = {};
    return szVide;
}

template <class T> CXYString<T>::CXYString(const T* psz) : CXYString(psz, nLongueurC(psz)) {}

template <class T> CXYString<T>::CXYString(const T* p, size_t nLongueur) {
    // A failed allocation leaves the empty string, the only state a constructor can report.
    (void)nAffecte(p, nLongueur);
}

template <class T> int CXYString<T>::nAffecte(const T* psz) {
    return nAffecte(psz, nLongueurC(psz));
}

template <class T> int CXYString<T>::nAffecte(const T* p, size_t nLongueur) {
    if (nLongueur == 0 || !p) {
        Vide();
        return KV_OK;
    }
    if (nLongueur >= KVBloc::knTailleMax / sizeof(T)) return KV_ERR_TROP_LONG;
    size_t nOctets = nLongueur * sizeof(T);
    // A block nobody shares and that has the room takes the text in place (the source may lie
    // inside it), unless it is large and the text short: a short text must not keep a large
    // block alive.
    constexpr size_t knGardeLibre = 1024;
    if (m_p && KVBloc::nRef(m_p) == 1 && KVBloc::nCapacite(m_p) >= nOctets &&
        (KVBloc::nCapacite(m_p) <= knGardeLibre || KVBloc::nCapacite(m_p) / 4 <= nOctets)) {
        // Whatever the last other owner did with the block happened before it let go.
        std::atomic_thread_fence(std::memory_order_acquire);
        std::memmove(m_p, p, nOctets);
        KVBloc::FixeTaille(m_p, nOctets, sizeof(T));
        return KV_OK;
    }
    void* pNouveau = KVBloc::pAlloue(nOctets, sizeof(T));
    if (!pNouveau) return KV_ERR_MEMOIRE;
    std::memcpy(pNouveau, p, nOctets);
    KVBloc::FixeTaille(pNouveau, nOctets, sizeof(T));
    KVBloc::Release(m_p);
    m_p = static_cast<T*>(pNouveau);
    return KV_OK;
}

template <class T> int CXYString<T>::nConcatene(const T* p, size_t nLongueur) {
    if (nLongueur == 0) return KV_OK;
    if (!p) return KV_ERR_PARAMETRE;
    size_t nAvant = this->nLongueur();
    if (nLongueur >= KVBloc::knTailleMax / sizeof(T) - nAvant) return KV_ERR_TROP_LONG;
    size_t nApres = nAvant + nLongueur;
    // A source inside this very string must outlive a reallocation of it.
    CXYString clGarde;
    if (m_p && p >= m_p && p <= m_p + nCapacite()) clGarde = *this;
    void* pBloc = m_p;
    int nRes = KVBloc::nPrepare(pBloc, nApres * sizeof(T), nAvant * sizeof(T), sizeof(T));
    if (!KV_bSucces(nRes)) return nRes;
    m_p = static_cast<T*>(pBloc);
    std::memmove(m_p + nAvant, p, nLongueur * sizeof(T));
    KVBloc::FixeTaille(m_p, nApres * sizeof(T), sizeof(T));
    return KV_OK;
}

template <class T> int CXYString<T>::nReserve(size_t nLongueur) {
    if (nLongueur >= KVBloc::knTailleMax / sizeof(T)) return KV_ERR_TROP_LONG;
    if (nLongueur == 0 && !m_p) return KV_OK;
    void* pBloc = m_p;
    int nRes = KVBloc::nPrepare(pBloc, nLongueur * sizeof(T), nTailleOctets(), sizeof(T));
    if (KV_bSucces(nRes)) m_p = static_cast<T*>(pBloc);
    return nRes;
}

template <class T> int CXYString<T>::nUnshare() {
    if (!m_p || KVBloc::nRef(m_p) == 1) return KV_OK;
    return nReserve(nLongueur());
}

template <class T> void CXYString<T>::FixeLongueur(size_t nLongueur) {
    if (!m_p) return;
    if (nLongueur > nCapacite()) nLongueur = nCapacite();
    KVBloc::FixeTaille(m_p, nLongueur * sizeof(T), sizeof(T));
}

template class CXYString<wchar_t>;
template class CXYString<char>;
