// CHTTPHeaders: the header set of one request (IEntetesHTTP), made by the HTTP service and
// filled by the component. Headers keep the order added; a name added twice goes out twice.
#pragma once
#include "HTTPService.h"

#include <atomic>
#include <deque>
#include <string>

class CHTTPHeaders final : public IEntetesHTTP {
public:
    // The count starts at 1, the creator's reference.
    CHTTPHeaders() = default;

    void vAddRef() override;
    void vRelease() override;

    // A null name adds nothing; a null value is the empty value.
    void vAjoute(const wchar_t* pszNom, const wchar_t* pszValeur) override;
    int vnGetNbEntete() override;
    // The texts live as long as the set; "" past the end.
    const wchar_t* vpszGetNom(int nIndice) override;
    const wchar_t* vpszGetValeur(int nIndice) override;

private:
    ~CHTTPHeaders() = default;

    std::atomic<int> m_nRef{1};
    // A deque keeps earlier texts where they are when more are added.
    std::deque<std::wstring> m_tabNames;
    std::deque<std::wstring> m_tabValues;
};
