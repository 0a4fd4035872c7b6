// CHTTPHeaders: the header set of one request (IEntetesHTTP), made by the HTTP service and
// filled by the component. Headers keep the order added; a name added twice goes out twice.
#pragma once
#include "Counted.h"
#include "HTTPService.h"

#include <deque>
#include <string>

class CHTTPHeaders final : public CCounted<IEntetesHTTP> {
public:
    // The count starts at 1, the creator's reference.
    CHTTPHeaders() = default;

    // A null name adds nothing; a null value is the empty value.
    void vAjoute(const wchar_t* pszNom, const wchar_t* pszValeur) override;
    int vnGetNbEntete() override;
    // The texts live as long as the set; "" past the end.
    const wchar_t* vpszGetNom(int nIndice) override;
    const wchar_t* vpszGetValeur(int nIndice) override;

private:
    ~CHTTPHeaders() override = default;

    // A deque keeps earlier texts where they are when more are added.
    std::deque<std::wstring> m_tabNames;
    std::deque<std::wstring> m_tabValues;
};
