#include "HostValue.h"

#include "Any.h"
#include "HostArray.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "MemoImage.h"
#include "Utf8.h"
#include "VMErrors.h"
#include "XYString.h"

#include <climits>
#include <cstdio>
#include <fstream>
#include <iterator>

CHostValue CHostValue::s_Boolean(bool b) {
    CHostValue cl;
    cl.m_eKind = KIND_BOOLEAN;
    cl.m_b = b;
    return cl;
}
CHostValue CHostValue::s_Integer(int64_t n) {
    CHostValue cl;
    cl.m_eKind = KIND_INTEGER;
    cl.m_n = n;
    return cl;
}
CHostValue CHostValue::s_Real(double r) {
    CHostValue cl;
    cl.m_eKind = KIND_REAL;
    cl.m_r = r;
    return cl;
}
CHostValue CHostValue::s_String(std::string s) {
    CHostValue cl;
    cl.m_eKind = KIND_STRING;
    cl.m_s = std::move(s);
    return cl;
}
CHostValue CHostValue::s_DateTime(const CDateTime& dt) {
    CHostValue cl;
    cl.m_eKind = KIND_DATETIME;
    cl.m_dt = dt;
    return cl;
}
CHostValue CHostValue::s_Object(IObjetBase* pi) {
    CHostValue cl;
    if (!pi)
        return cl;
    cl.m_eKind = KIND_OBJECT;
    cl.m_clObjet = CRef<IObjetBase>::Retain(pi);
    return cl;
}
CHostValue CHostValue::s_Array(std::vector<CHostValue> tab) {
    CHostValue cl;
    cl.m_eKind = KIND_ARRAY;
    cl.m_tab = std::move(tab);
    return cl;
}

const char* CHostValue::pszKindName() const {
    switch (m_eKind) {
    case KIND_NIL:
        return "nil";
    case KIND_BOOLEAN:
        return "boolean";
    case KIND_INTEGER:
    case KIND_REAL:
        return "number";
    case KIND_STRING:
        return "string";
    case KIND_DATETIME:
        return "date";
    case KIND_OBJECT:
        return "object";
    case KIND_ARRAY:
        return "table";
    }
    return "?";
}

namespace {

// The value read by one of CAny's converting readers, then made a host value.
template <class T, class F>
bool s_bRead(const CAny& clAny, int (CAny::*pfnLit)(T*) const, F fnValeur, CHostValue& clOut) {
    T x{};
    if (!KV_bSucces((clAny.*pfnLit)(&x)))
        return false;
    clOut = fnValeur(x);
    return true;
}

// A text or a byte block of the value, filled into a block of its own form, as a host string:
// wide texts as UTF-8, narrow texts and bytes as they are.
int s_nFill(const CAny& clAny, CXYString<wchar_t>& s) {
    return clAny.__nFillString(s);
}
int s_nFill(const CAny& clAny, CXYString<char>& s) {
    return clAny.__nFillString(s);
}
int s_nFill(const CAny& clAny, CKLBIN& clBin) {
    return clAny.nFillBinary(clBin);
}
std::string s_sBytes(std::wstring_view sv) {
    return KVUtf8::VersUtf8(sv);
}
std::string s_sBytes(std::string_view sv) {
    return std::string(sv);
}
template <class TBloc> bool s_bReadBlock(const CAny& clAny, CHostValue& clOut) {
    TBloc cl;
    if (!KV_bSucces(s_nFill(clAny, cl)))
        return false;
    clOut = CHostValue::s_String(s_sBytes(cl.sv()));
    return true;
}

bool s_bReadObject(const CAny& clAny, CHostValue& clOut) {
    IInterfaceObjetBase* pi = clAny.piGetObjet();
    clOut = CHostValue::s_Object(pi ? static_cast<IObjetBase*>(pi->vpiGetObjetBase()) : nullptr);
    return true;
}

} // namespace

bool CHostValue::s_bFromArray(IKLTableau* piTableau, CHostValue& clOut) {
    std::vector<CHostValue> tab;
    int n = piTableau ? piTableau->vnGetNbElement() : 0;
    for (int i = 0; i < n; ++i) {
        CAny clElement;
        CHostValue cl;
        if (!piTableau->vbGetElement(i, clElement, nullptr) || !s_bFromAny(clElement, cl))
            return false;
        tab.push_back(std::move(cl));
    }
    clOut = s_Array(std::move(tab));
    return true;
}

bool CHostValue::s_bFromAny(const CAny& clAny, CHostValue& clOut) {
    clOut = CHostValue();
    if (clAny.bEstTableau())
        return s_bFromArray(static_cast<IKLTableau*>(clAny.piGetObjet()), clOut);
    switch (clAny.nGetType()) {
    case KVTYPE_NONE:
        return true;
    case KVTYPE_KLBOOL:
        return s_bRead(clAny, &CAny::nGetBool, s_Boolean, clOut);
    case KVTYPE_KLUI1:
    case KVTYPE_KLUI2:
    case KVTYPE_KLUI4:
    case KVTYPE_KLUI8:
    case KVTYPE_KLI1:
    case KVTYPE_KLI2:
    case KVTYPE_KLI4:
    case KVTYPE_KLI8:
    case KVTYPE_KLUIX:
        return s_bRead(clAny, &CAny::nGetINT_64, s_Integer, clOut);
    case KVTYPE_KLCY:
    case KVTYPE_KLR4:
    case KVTYPE_KLR8:
        return s_bRead(clAny, &CAny::nGetREAL, s_Real, clOut);
    case KVTYPE_KLDSTRW:
    case KVTYPE_KLDATEW:
    case KVTYPE_KLTIMEW:
    case KVTYPE_KLCARW:
    case KVTYPE_KLPSTRW:
    case KVTYPE_KLDSTRW_148:
    case KVTYPE_KLDSTRW_149:
        return s_bReadBlock<CXYString<wchar_t>>(clAny, clOut);
    case KVTYPE_KLCARA:
    case KVTYPE_KLPSTRA:
    case KVTYPE_KLDSTRA:
    case KVTYPE_KLDATEA:
    case KVTYPE_KLTIMEA:
        return s_bReadBlock<CXYString<char>>(clAny, clOut);
    case KVTYPE_KLDATETIME:
        return s_bRead(clAny, &CAny::nGetDateTime, s_DateTime, clOut);
    case KVTYPE_KLDUREE:
        return s_bRead(clAny, &CAny::nGetDuree, s_Integer, clOut);
    case KVTYPE_KLBIN:
    case KVTYPE_KLBUFFER:
        return s_bReadBlock<CKLBIN>(clAny, clOut);
    case KVTYPE_KLOBJET_BASE:
    case KVTYPE_KLDINO:
    case KVTYPE_KLOBJET_BASE_135:
    case KVTYPE_KLOBJET_BASE_136:
    case KVTYPE_KLOBJET_BASE_141:
    case KVTYPE_KLOBJET_BASE_142:
    case KVTYPE_KLOBJET_BASE_143:
        return s_bReadObject(clAny, clOut);
    default:
        return false; // fonts, carriers, images inside a value: nothing a caller of this host can hold
    }
}

bool CHostValue::s_bFromImage(const CKLMemoImage& clImage, CHostValue& clOut) {
    if (clImage.bEnMemoire()) {
        clOut = s_String(std::string(clImage.pclGetBinDataEx()->sv()));
        return true;
    }
    const std::string sChemin = KVUtf8::VersUtf8(clImage.pszGetChemin());
    if (sChemin.empty()) {
        clOut = s_String({});
        return true;
    }
    std::ifstream in(sChemin, std::ios::binary);
    if (!in)
        return false;
    std::string s((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        return false;
    clOut = s_String(std::move(s));
    return true;
}

bool CHostValue::s_bImageBytes(std::string_view sv) {
    using namespace std::string_view_literals; // the signatures hold NUL bytes
    static constexpr std::string_view tabSignatures[] = {
        "\x89PNG\r\n\x1a\n"sv, "\xff\xd8\xff"sv, "GIF87a"sv, "GIF89a"sv, "II*\0"sv, "MM\0*"sv,
    };
    for (std::string_view svSignature : tabSignatures)
        if (sv.starts_with(svSignature))
            return true;
    // A BMP's reserved words are zero, which no path holds.
    if (sv.size() >= 14 && sv.starts_with("BM") && sv.substr(6, 4) == "\0\0\0\0"sv)
        return true;
    return sv.size() >= 12 && sv.starts_with("RIFF") && sv.substr(8, 4) == "WEBP";
}

namespace {

// The element type an array of these values takes: one kind throughout, or texts for none.
bool s_bElementType(const std::vector<CHostValue>& tab, uint16_t& nType) {
    nType = KVTYPE_KLDSTRW;
    bool bPremier = true;
    for (const CHostValue& cl : tab) {
        uint16_t n = 0;
        switch (cl.eKind()) {
        case CHostValue::KIND_NIL:
            continue;
        case CHostValue::KIND_BOOLEAN:
            n = KVTYPE_KLBOOL;
            break;
        case CHostValue::KIND_INTEGER:
            n = KVTYPE_KLI8;
            break;
        case CHostValue::KIND_REAL:
            n = KVTYPE_KLR8;
            break;
        case CHostValue::KIND_STRING:
            n = KVTYPE_KLDSTRW;
            break;
        case CHostValue::KIND_DATETIME:
            n = KVTYPE_KLDATETIME;
            break;
        case CHostValue::KIND_OBJECT:
            n = KVTYPE_KLDINO;
            break;
        case CHostValue::KIND_ARRAY:
            return false;
        }
        if (bPremier) {
            nType = n;
            bPremier = false;
        } else if (n != nType) {
            if ((n == KVTYPE_KLI8 && nType == KVTYPE_KLR8) ||
                (n == KVTYPE_KLR8 && nType == KVTYPE_KLI8))
                nType = KVTYPE_KLR8; // integers and reals mix as reals
            else
                return false;
        }
    }
    return true;
}

} // namespace

bool CHostValue::bToAny(CAny& clAny, CXError* pclErreur) const {
    switch (m_eKind) {
    case KIND_NIL:
        clAny.Vide();
        return true;
    case KIND_BOOLEAN:
        clAny.SetBool(m_b);
        return true;
    case KIND_INTEGER:
        if (m_n >= INT32_MIN && m_n <= INT32_MAX)
            clAny.SetInt(static_cast<int>(m_n));
        else
            clAny.SetINT_64(m_n);
        return true;
    case KIND_REAL:
        clAny.SetREAL(m_r);
        return true;
    case KIND_STRING: {
        std::wstring s = KVUtf8::VersWide(m_s);
        if (KV_bSucces(clAny.__nSetString(s.c_str(), static_cast<int>(s.size()))))
            return true;
        KVHostVM::SetError(pclErreur, VMERROR_MEMORY, "no memory for a text value");
        return false;
    }
    case KIND_DATETIME:
        clAny.SetDateTime(m_dt);
        return true;
    case KIND_OBJECT:
        return KV_bSucces(clAny.SetObjet(m_clObjet.pGet(), KVTYPE_KLDINO));
    case KIND_ARRAY: {
        uint16_t nType = KVTYPE_KLDSTRW;
        if (!s_bElementType(m_tab, nType)) {
            KVHostVM::SetError(pclErreur, VMERROR_ARRAY_TYPE,
                               "an array holds values of one kind (or numbers of both kinds)");
            return false;
        }
        CRef<CHostArray> clTableau = CRef<CHostArray>::Adopt(CHostArray::s_pclNew(nType));
        for (const CHostValue& cl : m_tab) {
            CAny clElement;
            if (!cl.bToAny(clElement, pclErreur) || !clTableau->bAppend(clElement, pclErreur))
                return false;
        }
        return KV_bSucces(clAny.SetTableau(clTableau.pGet(), nType));
    }
    }
    return false;
}

bool CHostValue::s_bParseDate(std::string_view sv, CDateTime& dtOut) {
    size_t nPos = 0;
    auto Nombre = [&sv, &nPos](size_t nMin, size_t nMax, int& n) {
        size_t nDebut = nPos;
        n = 0;
        while (nPos < sv.size() && nPos - nDebut < nMax && sv[nPos] >= '0' && sv[nPos] <= '9')
            n = n * 10 + (sv[nPos++] - '0');
        return nPos - nDebut >= nMin;
    };
    auto Separateur = [&sv, &nPos](char c) {
        if (nPos >= sv.size() || sv[nPos] != c)
            return false;
        ++nPos;
        return true;
    };
    int nAnnee, nMois, nJour, nHeure = 0, nMinute = 0, nSeconde = 0, nMilli = 0;
    if (!Nombre(4, 4, nAnnee) || !Separateur('-') || !Nombre(2, 2, nMois) || !Separateur('-') ||
        !Nombre(2, 2, nJour))
        return false;
    if (nPos < sv.size()) {
        if (sv[nPos] != 'T' && sv[nPos] != ' ')
            return false;
        ++nPos;
        if (!Nombre(2, 2, nHeure) || !Separateur(':') || !Nombre(2, 2, nMinute))
            return false;
        if (Separateur(':')) {
            if (!Nombre(2, 2, nSeconde))
                return false;
            if (Separateur('.')) {
                size_t nDebut = nPos;
                if (!Nombre(1, 3, nMilli))
                    return false;
                for (size_t n = nPos - nDebut; n < 3; ++n)
                    nMilli *= 10;
            }
        }
        if (nPos != sv.size())
            return false;
    }
    CDateTime dt;
    if (nAnnee == 0 || nMois < 1 || nJour < 1 ||
        nJour > CDateTimeBase::s_nJoursDansMois(nAnnee, nMois) || !dt.bModifieAnnee(nAnnee) ||
        !dt.bModifieMois(nMois) || !dt.bModifieJour(nJour) || !dt.bModifieHeure(nHeure) ||
        !dt.bModifieMinute(nMinute) || !dt.bModifieSeconde(nSeconde) || !dt.bModifieMilli(nMilli))
        return false;
    dtOut = dt;
    return true;
}

std::string CHostValue::s_sFormatDate(const CDateTime& dt) {
    char sz[40];
    std::snprintf(sz, sizeof(sz), "%04d-%02d-%02dT%02d:%02d:%02d.%03d", dt.nGetAnnee(),
                  dt.nGetMois(), dt.nGetJour(), dt.nGetHeure(), dt.nGetMinute(), dt.nGetSeconde(),
                  dt.nGetMilli());
    return sz;
}
