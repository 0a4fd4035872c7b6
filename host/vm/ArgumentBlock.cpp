#include "ArgumentBlock.h"

#include "Any.h"
#include "Arrays.h"
#include "KLBIN.h"
#include "KVResult.h"
#include "ManipAUB.h"
#include "MemoImage.h"
#include "Utf8.h"
#include "XError.h"
#include "XYString.h"

#include <climits>
#include <cmath>
#include <cstring>

// One argument: the value in its form, and the storage it points into.
struct CArgumentBlock::STSlot {
    alignas(16) unsigned char abyValeur[32] = {};
    std::wstring sTexte;
    CXYString<wchar_t> sChaine;
    CXYString<char> sTampon;
    CKLBIN clBinaire;
    CAny clAny;
    CXYStringArray<wchar_t> tabChaines;
    CKLMemoImage clImage;

    template <class T> void Pose(const T& x) {
        static_assert(sizeof(T) <= sizeof(abyValeur));
        std::memcpy(abyValeur, &x, sizeof(T));
    }
};

CArgumentBlock::CArgumentBlock() = default;
CArgumentBlock::~CArgumentBlock() = default;

CArgumentBlock::STSlot& CArgumentBlock::_NewSlot() {
    m_tabSlots.push_back(std::make_unique<STSlot>());
    return *m_tabSlots.back();
}

unsigned char** CArgumentBlock::ppArguments() {
    m_tabPointers.clear();
    for (auto& p : m_tabSlots)
        m_tabPointers.push_back(p->abyValeur);
    return m_tabPointers.empty() ? nullptr : m_tabPointers.data();
}

namespace {

// A number as an integer of 32 bits, when it is one.
bool s_bEntier32(const CHostValue& cl, int32_t& n, std::string& sWhy) {
    double r;
    if (cl.eKind() == CHostValue::KIND_INTEGER) {
        if (cl.nGetInteger() < INT32_MIN || cl.nGetInteger() > INT32_MAX) {
            sWhy = "number out of the range of a 32-bit integer";
            return false;
        }
        n = static_cast<int32_t>(cl.nGetInteger());
        return true;
    }
    if (cl.eKind() != CHostValue::KIND_REAL) {
        sWhy = "number expected";
        return false;
    }
    r = cl.rGetReal();
    if (r != std::floor(r) || r < INT32_MIN || r > INT32_MAX) {
        sWhy = "number has no integer representation";
        return false;
    }
    n = static_cast<int32_t>(r);
    return true;
}

// A value as text: strings as they are, numbers written out. A text stops at its first NUL on
// the component's side: one holding NUL is refused rather than sent cut short (bytes go whole
// as a binary value).
bool s_bTexte(const CHostValue& cl, std::string& s, std::string& sWhy) {
    switch (cl.eKind()) {
    case CHostValue::KIND_STRING:
        if (cl.sGetString().find('\0') != std::string::npos) {
            sWhy = "text holds a NUL byte";
            return false;
        }
        s = cl.sGetString();
        return true;
    case CHostValue::KIND_INTEGER:
        s = std::to_string(cl.nGetInteger());
        return true;
    case CHostValue::KIND_REAL: {
        char sz[40];
        std::snprintf(sz, sizeof(sz), "%.17g", cl.rGetReal());
        s = sz;
        return true;
    }
    default:
        sWhy = "string expected";
        return false;
    }
}

} // namespace

bool CArgumentBlock::bAdd(const STSignatureItem& stItem, const CHostValue& cl,
                          ITypeDescription* piClass, std::string& sWhy) {
    STSlot& st = _NewSlot();
    const auto eKind = cl.eKind();
    std::string s;
    switch (stItem.nBaseCode()) {
    case KVTYPE_KLBOOL:
        if (eKind == CHostValue::KIND_BOOLEAN) {
            st.Pose<int32_t>(cl.bGetBoolean() ? 1 : 0);
            return true;
        }
        sWhy = "boolean expected";
        return false;
    case KVTYPE_KLI4: {
        int32_t n = 0;
        if (!s_bEntier32(cl, n, sWhy))
            return false;
        st.Pose(n);
        return true;
    }
    case KVTYPE_KLI8:
        if (eKind == CHostValue::KIND_INTEGER) {
            st.Pose<int64_t>(cl.nGetInteger());
            return true;
        }
        if (eKind == CHostValue::KIND_REAL && cl.rGetReal() == std::floor(cl.rGetReal()) &&
            std::fabs(cl.rGetReal()) < 9.2e18) {
            st.Pose<int64_t>(static_cast<int64_t>(cl.rGetReal()));
            return true;
        }
        sWhy = "number has no integer representation";
        return false;
    case KVTYPE_KLR4:
    case KVTYPE_KLR8:
        if (eKind != CHostValue::KIND_INTEGER && eKind != CHostValue::KIND_REAL) {
            sWhy = "number expected";
            return false;
        }
        if (stItem.nBaseCode() == KVTYPE_KLR4)
            st.Pose<float>(static_cast<float>(cl.rGetNumber()));
        else
            st.Pose<double>(cl.rGetNumber());
        return true;
    case KVTYPE_KLCARA:
        if (eKind != CHostValue::KIND_STRING || cl.sGetString().size() > 1) {
            sWhy = "one character expected";
            return false;
        }
        st.Pose<char>(cl.sGetString().empty() ? '\0' : cl.sGetString()[0]);
        return true;
    case KVTYPE_KLDSTRW:
    case KVTYPE_STRING:
        if (!s_bTexte(cl, s, sWhy))
            return false;
        if (!KV_bSucces(KVUtf8::nVersWide(s, st.sChaine))) {
            sWhy = "string too long";
            return false;
        }
        st.Pose(st.sChaine.pGetBrut());
        return true;
    case KVTYPE_TEXT:
    case KVTYPE_TEXT2:
        if (eKind == CHostValue::KIND_NIL) {
            st.Pose<const wchar_t*>(nullptr);
            return true;
        }
        if (!s_bTexte(cl, s, sWhy))
            return false;
        st.sTexte = KVUtf8::VersWide(s);
        st.Pose<const wchar_t*>(st.sTexte.c_str());
        return true;
    case KVTYPE_KLDSTRA:
        if (eKind != CHostValue::KIND_STRING ||
            !KV_bSucces(st.sTampon.nAffecte(cl.sGetString().data(), cl.sGetString().size()))) {
            sWhy = "string expected";
            return false;
        }
        st.Pose(st.sTampon.pGetBrut());
        return true;
    case KVTYPE_KLDATETIME: {
        CDateTime dt;
        if (eKind == CHostValue::KIND_DATETIME) {
            dt = cl.dtGetDateTime();
        } else if (eKind == CHostValue::KIND_STRING) {
            if (!CHostValue::s_bParseDate(cl.sGetString(), dt)) {
                sWhy = "date expected as YYYY-MM-DDTHH:MM:SS[.mmm]";
                return false;
            }
        } else if (eKind != CHostValue::KIND_NIL) {
            sWhy = "date expected";
            return false;
        }
        st.Pose(dt);
        return true;
    }
    case KVTYPE_KLBIN:
        if (eKind != CHostValue::KIND_STRING ||
            !KV_bSucces(st.clBinaire.nAssign(cl.sGetString().data(), cl.sGetString().size()))) {
            sWhy = "string expected";
            return false;
        }
        st.Pose(st.clBinaire.pGetBrut());
        return true;
    case KVTYPE_KLMEMOIMG:
        // An image: its bytes, or the path of its file; nil for no image.
        if (eKind == CHostValue::KIND_NIL) {
            st.Pose<void*>(nullptr);
            return true;
        }
        if (eKind != CHostValue::KIND_STRING) {
            sWhy = "string expected (the image's bytes or its file)";
            return false;
        }
        if (CHostValue::s_bImageBytes(cl.sGetString())) {
            CKLBIN clOctets;
            if (!KV_bSucces(clOctets.nAssign(cl.sGetString().data(), cl.sGetString().size()))) {
                sWhy = "no memory for the image";
                return false;
            }
            st.clImage = CKLMemoImage::s_Octets(std::move(clOctets));
        } else {
            st.clImage = CKLMemoImage::s_Fichier(KVUtf8::VersWide(cl.sGetString()));
        }
        st.Pose<CKLMemoImage*>(&st.clImage);
        return true;
    case KVTYPE_ANY: {
        CXError clErreur;
        if (!cl.bToAny(st.clAny, &clErreur)) {
            sWhy = KVUtf8::VersUtf8(clErreur.pszGetUserMessage());
            return false;
        }
        st.Pose<CAny*>(&st.clAny);
        return true;
    }
    case KVTYPE_STRINGARRAY:
        if (eKind != CHostValue::KIND_ARRAY && eKind != CHostValue::KIND_NIL) {
            sWhy = "table of strings expected";
            return false;
        }
        for (const CHostValue& clElement : cl.tabGetArray()) {
            CXYString<wchar_t> sElement;
            if (!s_bTexte(clElement, s, sWhy) || !KV_bSucces(KVUtf8::nVersWide(s, sElement))) {
                if (sWhy.empty() || sWhy == "string expected")
                    sWhy = "table of strings expected";
                return false;
            }
            st.tabChaines.Ajoute(std::move(sElement));
        }
        st.Pose<CXYStringArray<wchar_t>*>(&st.tabChaines);
        return true;
    case KVTYPE_STRINGORBUFFER: {
        if (!s_bTexte(cl, s, sWhy))
            return false;
        st.sTexte = KVUtf8::VersWide(s);
        STManipAUB stAUB{reinterpret_cast<uint64_t>(st.sTexte.c_str()),
                         st.sTexte.size() * sizeof(wchar_t), KVTYPE_KLDSTRW};
        st.Pose(stAUB);
        return true;
    }
    case KVTYPE_KLDINO: {
        if (eKind == CHostValue::KIND_NIL) {
            st.Pose<void*>(nullptr);
            return true;
        }
        IObjetComposante* pi =
            eKind == CHostValue::KIND_OBJECT ? cl.piGetObject()->vpiGetIObjetComposante() : nullptr;
        void* p = nullptr;
        if (!pi) {
            sWhy = "object expected";
            return false;
        }
        if (!piClass)
            piClass = pi->vpiGetTypeReel();
        CXError clErreur;
        if (!pi->vbGetObjetC(p, piClass, 0, &clErreur) || !p) {
            sWhy = "object of another type";
            return false;
        }
        st.Pose(p);
        return true;
    }
    case KVTYPE_ARRAY: {
        if (eKind == CHostValue::KIND_NIL) {
            st.Pose<void*>(nullptr);
            return true;
        }
        CXError clErreur;
        if (eKind != CHostValue::KIND_ARRAY || !cl.bToAny(st.clAny, &clErreur)) {
            sWhy = eKind != CHostValue::KIND_ARRAY ? "table expected"
                                                   : KVUtf8::VersUtf8(clErreur.pszGetUserMessage());
            return false;
        }
        st.Pose(static_cast<IKLTableau*>(st.clAny.piGetObjet()));
        return true;
    }
    default:
        sWhy = "a value of type " + std::to_string(stItem.nCode) + ", which this host cannot give";
        return false;
    }
}
