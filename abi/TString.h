// CTString and CTStringAnsi: plain owned wide and narrow strings of the foundation.
#pragma once
#include <string>
#include <string_view>

template <class T> class CTStringT {
public:
    CTStringT() = default;
    CTStringT(const T* psz) : m_s(psz ? psz : s_pszVide()) {} // NOLINT: implicit from text
    CTStringT(const T* p, size_t n) : m_s(p, n) {}
    CTStringT(std::basic_string_view<T> sv) : m_s(sv) {}

    const T* pszGet() const { return m_s.c_str(); }
    size_t nGetLongueur() const { return m_s.size(); }
    bool bEstVide() const { return m_s.empty(); }
    std::basic_string_view<T> sv() const { return m_s; }
    std::basic_string<T>& s() { return m_s; }
    const std::basic_string<T>& s() const { return m_s; }

    CTStringT& operator=(const T* psz) {
        m_s = psz ? psz : s_pszVide();
        return *this;
    }
    CTStringT& operator=(std::basic_string_view<T> sv) {
        m_s = sv;
        return *this;
    }
    CTStringT& operator+=(std::basic_string_view<T> sv) {
        m_s += sv;
        return *this;
    }
    void Vide() { m_s.clear(); }

    // Field n (0-based) of the text cut at `sSeparateur`; false, and `out` emptied, when the
    // text has fewer fields.
    bool bExtraitChaine(size_t n, std::basic_string_view<T> sSeparateur, CTStringT& out) const {
        size_t nDebut = 0;
        for (size_t i = 0; i < n; ++i) {
            size_t nPos = m_s.find(sSeparateur, nDebut);
            if (nPos == std::basic_string<T>::npos || sSeparateur.empty()) {
                out.Vide();
                return false;
            }
            nDebut = nPos + sSeparateur.size();
        }
        size_t nFin = sSeparateur.empty() ? std::basic_string<T>::npos
                                          : m_s.find(sSeparateur, nDebut);
        out.m_s = m_s.substr(nDebut, nFin == std::basic_string<T>::npos ? nFin : nFin - nDebut);
        return true;
    }

    friend bool operator==(const CTStringT& a, const CTStringT& b) { return a.m_s == b.m_s; }
    friend bool operator==(const CTStringT& a, const T* b) { return a.sv() == b; }

private:
    static const T* s_pszVide() {
        static const T sz[1] = {};
        return sz;
    }
    std::basic_string<T> m_s;
};

using CTString = CTStringT<wchar_t>;
using CTStringAnsi = CTStringT<char>;
