// CKLANYArray: a growing array of host values, as a list of script arguments is handed on
// inside the component (the login of a connection takes its service numbers this way).
#pragma once
#include "Any.h"

#include <cstddef>
#include <vector>

class CKLANYArray {
public:
    // The two figures are the initial size and the growth step of the host's form; a vector
    // needs neither, and the array starts empty whatever they say.
    explicit CKLANYArray(int /*nTaille*/ = 0, int /*nPas*/ = 0) {}

    // A copy of the value at the end.
    bool bAjoute(const CAny& clValeur) {
        m_tab.push_back(clValeur);
        return true;
    }
    // Element i, or null out of range.
    CAny* pclAccesElement(int i) {
        return i >= 0 && static_cast<size_t>(i) < m_tab.size() ? &m_tab[static_cast<size_t>(i)]
                                                               : nullptr;
    }
    const CAny* pclAccesElement(int i) const {
        return i >= 0 && static_cast<size_t>(i) < m_tab.size() ? &m_tab[static_cast<size_t>(i)]
                                                               : nullptr;
    }
    int nGetNbElement() const { return static_cast<int>(m_tab.size()); }
    void Vide() { m_tab.clear(); }

private:
    std::vector<CAny> m_tab;
};
