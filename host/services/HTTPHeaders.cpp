#include "HTTPHeaders.h"

#include "HostBarrier.h"

void CHTTPHeaders::vAjoute(const wchar_t* pszNom, const wchar_t* pszValeur) {
    KVHost::Guard(nullptr, [&] {
        if (!pszNom)
            return;
        m_tabNames.emplace_back(pszNom);
        m_tabValues.emplace_back(pszValeur ? pszValeur : L"");
    });
}

int CHTTPHeaders::vnGetNbEntete() {
    return static_cast<int>(m_tabNames.size());
}

const wchar_t* CHTTPHeaders::vpszGetNom(int nIndice) {
    if (nIndice < 0 || static_cast<size_t>(nIndice) >= m_tabNames.size())
        return L"";
    return m_tabNames[static_cast<size_t>(nIndice)].c_str();
}

const wchar_t* CHTTPHeaders::vpszGetValeur(int nIndice) {
    if (nIndice < 0 || static_cast<size_t>(nIndice) >= m_tabValues.size())
        return L"";
    return m_tabValues[static_cast<size_t>(nIndice)].c_str();
}
