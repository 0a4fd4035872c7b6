#include "xmlobject/XmlObjectSimpleConv.h"

#include "foundation/LooseCompare.h"

#include "KVResult.h"

#include <cstdarg>
#include <cwchar>
#include <string_view>

namespace {

bool bEcrit(CXYString<wchar_t>& s, const wchar_t* pszFormat, ...) {
    wchar_t sz[512];
    va_list args;
    va_start(args, pszFormat);
    int n = std::vswprintf(sz, 512, pszFormat, args);
    va_end(args);
    return n >= 0 && s.nAffecte(sz, static_cast<size_t>(n)) == KV_OK;
}

} // namespace

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, CXYString<wchar_t>& s) {
    if (!psz)
        return false;
    return s.nAffecte(psz) == KV_OK;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, int& n) {
    // "true" and "false" in any case and with spaces around; anything else by the number path,
    // where text that is no number gives 0.
    if (STR_bEgalSoupleSansEspaces(psz ? psz : L"", L"true"))
        n = 1;
    else if (STR_bEgalSoupleSansEspaces(psz ? psz : L"", L"false"))
        n = 0;
    else
        n = static_cast<int>(psz ? std::wcstol(psz, nullptr, 10) : 0);
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, long& n) {
    n = psz ? static_cast<long>(std::wcstoll(psz, nullptr, 10)) : 0;
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, double& d) {
    d = psz ? std::wcstod(psz, nullptr) : 0.0;
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, CDateTimeRFC3339& cl) {
    CDateTimeRFC3339 clLu;
    if (clLu.nVersDate_RFC3339(psz, 0) != 0)
        return false;
    cl = clLu;
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, CDateTimeRFC822& cl) {
    CDateTimeRFC822 clLu;
    if (clLu.nVersDate_RFC822(psz) != 0)
        return false;
    cl = clLu;
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, CDureeMinutes& cl) {
    cl.nMilli = static_cast<int64_t>((psz ? std::wcstod(psz, nullptr) : 0.0) * 60000.0);
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertToType(const wchar_t* psz, CBooleenLiteral& cl) {
    cl.bValeur = psz && (std::wcscmp(psz, L"1") == 0 || std::wcscmp(psz, L"true") == 0);
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CXYString<wchar_t>& sValeur,
                                              CXYString<wchar_t>& s, CXError&) {
    s = sValeur;
    return true;
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const int& n, CXYString<wchar_t>& s, CXError&) {
    return bEcrit(s, L"%d", n);
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const long& n, CXYString<wchar_t>& s, CXError&) {
    return bEcrit(s, L"%lld", static_cast<long long>(n));
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const double& d, CXYString<wchar_t>& s, CXError&) {
    return bEcrit(s, L"%f", d);
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CDateTimeRFC3339& cl, CXYString<wchar_t>& s,
                                              CXError&) {
    return cl.nVersChaine_RFC3339(s) == 0;
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CDateJourRFC3339& cl, CXYString<wchar_t>& s,
                                              CXError&) {
    return bEcrit(s, L"%d-%d-%d", cl.nGetAnnee(), cl.nGetMois(), cl.nGetJour());
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CDateTimeRFC822& cl, CXYString<wchar_t>& s,
                                              CXError&) {
    CTString sTexte;
    if (cl.nVersChaine_RFC822(sTexte) != 0)
        return false;
    return s.nAffecte(sTexte.pszGet()) == KV_OK;
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CDureeMinutes& cl, CXYString<wchar_t>& s,
                                              CXError&) {
    return bEcrit(s, L"%d", static_cast<int>(static_cast<double>(cl.nMilli) / 60000.0));
}

bool CXmlObjectSimpleConv::s_bConvertFromType(const CBooleenLiteral& cl, CXYString<wchar_t>& s,
                                              CXError&) {
    return s.nAffecte(cl.bValeur ? L"true" : L"false") == KV_OK;
}
