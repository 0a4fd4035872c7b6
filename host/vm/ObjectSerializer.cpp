#include "ObjectSerializer.h"

#include "AnyTypes.h"
#include "Host.h"
#include "NameKey.h"
#include "Utf8.h"

#include <simdjson.h>

#include <new>

#include <climits>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

constexpr char kszBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

void CObjectSerializer::s_QuoteJSON(std::string& s, std::string_view sv) {
    s += '"';
    for (unsigned char c : sv) {
        switch (c) {
        case '"':
            s += "\\\"";
            break;
        case '\\':
            s += "\\\\";
            break;
        case '\n':
            s += "\\n";
            break;
        case '\r':
            s += "\\r";
            break;
        case '\t':
            s += "\\t";
            break;
        default:
            if (c < 0x20) {
                char sz[8];
                std::snprintf(sz, sizeof(sz), "\\u%04x", c);
                s += sz;
            } else {
                s += static_cast<char>(c);
            }
        }
    }
    s += '"';
}

namespace {

constexpr auto s_Quote = CObjectSerializer::s_QuoteJSON;

// Whether the text is UTF-8, which JSON requires of its strings.
bool s_bUtf8(std::string_view sv) {
    return simdjson::validate_utf8(sv.data(), sv.size());
}

// A value of the property's type, as JSON; false for what is not saved.
bool s_bWriteValue(std::string& s, const CHostValue& cl, uint16_t nType) {
    switch (cl.eKind()) {
    case CHostValue::KIND_NIL:
        s += "null";
        return true;
    case CHostValue::KIND_BOOLEAN:
        s += cl.bGetBoolean() ? "true" : "false";
        return true;
    case CHostValue::KIND_INTEGER:
        s += std::to_string(cl.nGetInteger());
        return true;
    case CHostValue::KIND_REAL: {
        if (!std::isfinite(cl.rGetReal())) {
            s += "null";
            return true;
        }
        char sz[40];
        std::snprintf(sz, sizeof(sz), "%.17g", cl.rGetReal());
        s += sz;
        return true;
    }
    case CHostValue::KIND_STRING:
        if (nType == KVTYPE_KLBIN)
            s_Quote(s, CObjectSerializer::s_sBase64(cl.sGetString()));
        else if (!s_bUtf8(cl.sGetString())) // texts come from wide strings: never, but safe
            s_Quote(s, KVUtf8::VersUtf8(KVUtf8::VersWide(cl.sGetString())));
        else
            s_Quote(s, cl.sGetString());
        return true;
    case CHostValue::KIND_DATETIME:
        if (!cl.dtGetDateTime().bEstRenseignee())
            s += "null";
        else
            s_Quote(s, CHostValue::s_sFormatDate(cl.dtGetDateTime()));
        return true;
    case CHostValue::KIND_ARRAY: {
        s += '[';
        bool bPremier = true;
        for (const CHostValue& clE : cl.tabGetArray()) {
            if (clE.eKind() == CHostValue::KIND_OBJECT || clE.eKind() == CHostValue::KIND_ARRAY)
                continue;
            if (!bPremier)
                s += ',';
            bPremier = false;
            s_bWriteValue(s, clE, 0);
        }
        s += ']';
        return true;
    }
    case CHostValue::KIND_OBJECT:
        return false;
    }
    return false;
}

class CSaver {
public:
    CSaver(CHost& clHost, STHostOutcome& st, bool bSecrets)
        : m_clHost(clHost), m_st(st), m_bSecrets(bSecrets) {}

    bool bObject(std::string& s, IObjetBase* piObjet, int nDepth) {
        if (nDepth > CObjectSerializer::knMaxDepth)
            return m_st.bRefuse("the object is nested more than " +
                                std::to_string(CObjectSerializer::knMaxDepth) + " levels deep");
        int nClasse = m_clHost.nClassOf(piObjet);
        if (nClasse < 0)
            return m_st.bRefuse("not an object of the component");
        const auto& stC = m_clHost.clTables().tabClasses()[static_cast<size_t>(nClasse)];
        s += "{\"type\":";
        s_Quote(s, stC.sName);
        std::string sProprietes, sObjets, sCollections;
        for (size_t p = 0; p < stC.tabProperties.size(); ++p) {
            const auto& stP = stC.tabProperties[p];
            bool bObjet = stP.bObject();
            if ((!bObjet && !stP.bSaved()) || stP.nType() == 30 || !stP.pfnGetter() ||
                (!m_bSecrets && CObjectSerializer::s_bSecret(stC.sName, stP.sName)))
                continue;
            STHostOutcome st;
            if (!m_clHost.bGet(piObjet, static_cast<int>(p), st))
                return m_st.bRefuse(st.sRefusal);
            if (st.bError)
                return bError(st);
            std::string& sCible = bObjet ? sObjets : sProprietes;
            std::string sValeur;
            if (bObjet) {
                if (st.clValue.eKind() != CHostValue::KIND_OBJECT)
                    continue;
                if (!bObject(sValeur, st.clValue.piGetObject(), nDepth + 1))
                    return false;
            } else if (!s_bWriteValue(sValeur, st.clValue, stP.nType())) {
                continue;
            }
            if (!sCible.empty())
                sCible += ',';
            s_Quote(sCible, stP.sName);
            sCible += ':';
            sCible += sValeur;
        }
        for (size_t a = 0; a < stC.tabAccessors.size(); ++a) {
            const auto& stA = stC.tabAccessors[a];
            if (!stA.pst->pfnAccesseur)
                continue;
            CRef<IObjetCollection> clCollection;
            STHostOutcome st;
            if (!m_clHost.bCollection(piObjet, static_cast<int>(a), clCollection, st))
                return m_st.bRefuse(st.sRefusal);
            if (st.bError)
                return bError(st);
            if (!m_clHost.bCount(clCollection.pGet(), st))
                return m_st.bRefuse(st.sRefusal);
            if (st.bError)
                return bError(st);
            int n = static_cast<int>(st.clValue.nGetInteger());
            std::string sElements;
            for (int i = 0; i < n; ++i) {
                if (!m_clHost.bElement(clCollection.pGet(), i, st))
                    return m_st.bRefuse(st.sRefusal);
                if (st.bError)
                    return bError(st);
                if (st.clValue.eKind() != CHostValue::KIND_OBJECT)
                    continue;
                if (!sElements.empty())
                    sElements += ',';
                if (!bObject(sElements, st.clValue.piGetObject(), nDepth + 1))
                    return false;
            }
            if (!sCollections.empty())
                sCollections += ',';
            s_Quote(sCollections, stA.sName);
            sCollections += ":[" + sElements + "]";
        }
        s += ",\"properties\":{" + sProprietes + "}";
        if (!sObjets.empty())
            s += ",\"objects\":{" + sObjets + "}";
        if (!sCollections.empty())
            s += ",\"collections\":{" + sCollections + "}";
        s += '}';
        return true;
    }

private:
    // A component error ends the save; the outcome carries it.
    bool bError(const STHostOutcome& st) {
        m_st = st;
        m_st.clValue = CHostValue();
        return true;
    }
    CHost& m_clHost;
    STHostOutcome& m_st;
    bool m_bSecrets;
};

class CRebuilder {
public:
    CRebuilder(CHost& clHost, STHostOutcome& st) : m_clHost(clHost), m_st(st) {}

    // A new object of the class the element names (or nClasse), rebuilt.
    bool bNew(simdjson::dom::element el, int nClasse, CHostValue& clOut, int nDepth) {
        std::string_view svType;
        if (el["type"].get(svType) == simdjson::SUCCESS) {
            int n = m_clHost.clTables().nFindClass(svType);
            if (n < 0)
                return m_st.bRefuse("the saved object is of an unknown type '" +
                                    std::string(svType) + "'");
            nClasse = n;
        }
        if (nClasse < 0)
            return m_st.bRefuse("the saved object does not say its type");
        STHostOutcome st;
        if (!m_clHost.bNew(nClasse, {}, st))
            return m_st.bRefuse(st.sRefusal);
        if (st.bError)
            return bError(st);
        clOut = std::move(st.clValue);
        return bInto(el, clOut.piGetObject(), nDepth);
    }

    // The saved values written into an existing object.
    bool bInto(simdjson::dom::element el, IObjetBase* piObjet, int nDepth) {
        if (nDepth > CObjectSerializer::knMaxDepth)
            return m_st.bRefuse("the saved object is nested too deep");
        simdjson::dom::object obj;
        if (el.get(obj) != simdjson::SUCCESS)
            return m_st.bRefuse("a saved object is not an object");
        int nClasse = m_clHost.nClassOf(piObjet);
        const auto& stC = m_clHost.clTables().tabClasses()[static_cast<size_t>(nClasse)];
        simdjson::dom::object objP;
        if (obj["properties"].get(objP) == simdjson::SUCCESS) {
            for (auto [svNom, elValeur] : objP) {
                int p = m_clHost.clTables().nFindMember(nClasse, svNom);
                if (p < 0)
                    continue; // saved by another version: nothing to write it to
                const auto& stP = stC.tabProperties[static_cast<size_t>(p)];
                CHostValue clValeur;
                if (!bValue(elValeur, stP.nType(), clValeur))
                    return false;
                STHostOutcome st;
                // What the new object already holds is not written again: a default that its
                // setter would refuse (an empty format) stays as it is.
                if (m_clHost.bGet(piObjet, p, st) && !st.bError && bSame(st.clValue, clValeur))
                    continue;
                if (!m_clHost.bSet(piObjet, p, clValeur, st, true))
                    return m_st.bRefuse(st.sRefusal);
                if (st.bError)
                    return bError(st);
            }
        }
        simdjson::dom::object objO;
        if (obj["objects"].get(objO) == simdjson::SUCCESS) {
            for (auto [svNom, elObjet] : objO) {
                int p = m_clHost.clTables().nFindMember(nClasse, svNom);
                if (p < 0)
                    continue;
                const auto& stP = stC.tabProperties[static_cast<size_t>(p)];
                if (!stP.bObject())
                    continue;
                STHostOutcome st;
                if (stP.pst->pfnSet) {
                    CHostValue clNouveau;
                    int nClasseP = m_clHost.clTables().nClassOfTypeRef(stP.nTypeRef());
                    if (!bNew(elObjet, nClasseP, clNouveau, nDepth + 1))
                        return false;
                    if (m_st.bError)
                        return true;
                    if (!m_clHost.bSet(piObjet, p, clNouveau, st))
                        return m_st.bRefuse(st.sRefusal);
                    if (st.bError)
                        return bError(st);
                    continue;
                }
                if (!m_clHost.bGet(piObjet, p, st))
                    return m_st.bRefuse(st.sRefusal);
                if (st.bError)
                    return bError(st);
                if (st.clValue.eKind() != CHostValue::KIND_OBJECT)
                    continue;
                if (!bInto(elObjet, st.clValue.piGetObject(), nDepth + 1))
                    return false;
                if (m_st.bError)
                    return true;
            }
        }
        simdjson::dom::object objC;
        if (obj["collections"].get(objC) == simdjson::SUCCESS) {
            for (auto [svNom, elListe] : objC) {
                int a = m_clHost.clTables().nFindMember(nClasse, svNom);
                simdjson::dom::array arr;
                if (a >= 0 || a == INT32_MIN || elListe.get(arr) != simdjson::SUCCESS)
                    continue;
                a = -1 - a;
                const auto& stA = stC.tabAccessors[static_cast<size_t>(a)];
                int nClasseE = m_clHost.clTables().nClassOfTypeRef(stA.nTypeRef());
                CRef<IObjetCollection> clCollection;
                STHostOutcome st;
                if (!m_clHost.bCollection(piObjet, a, clCollection, st))
                    return m_st.bRefuse(st.sRefusal);
                if (st.bError)
                    return bError(st);
                if (!m_clHost.bCount(clCollection.pGet(), st))
                    return m_st.bRefuse(st.sRefusal);
                if (st.clValue.nGetInteger() > 0) {
                    if (!m_clHost.bClear(clCollection.pGet(), st))
                        return m_st.bRefuse(st.sRefusal);
                    if (st.bError)
                        return bError(st);
                }
                for (simdjson::dom::element elE : arr) {
                    CHostValue clElement;
                    if (!bNew(elE, nClasseE, clElement, nDepth + 1))
                        return false;
                    if (m_st.bError)
                        return true;
                    if (!m_clHost.bAdd(clCollection.pGet(), clElement, st))
                        return m_st.bRefuse(st.sRefusal);
                    if (st.bError)
                        return bError(st);
                }
            }
        }
        return true;
    }

private:
    static bool bSame(const CHostValue& a, const CHostValue& b) {
        if (a.eKind() == CHostValue::KIND_NIL || b.eKind() == CHostValue::KIND_NIL)
            return a.eKind() == b.eKind();
        switch (b.eKind()) {
        case CHostValue::KIND_BOOLEAN:
            return a.eKind() == b.eKind() && a.bGetBoolean() == b.bGetBoolean();
        case CHostValue::KIND_INTEGER:
        case CHostValue::KIND_REAL:
            return (a.eKind() == CHostValue::KIND_INTEGER || a.eKind() == CHostValue::KIND_REAL) &&
                   a.rGetNumber() == b.rGetNumber();
        case CHostValue::KIND_STRING:
            return a.eKind() == b.eKind() && a.sGetString() == b.sGetString();
        default:
            return false;
        }
    }
    bool bValue(simdjson::dom::element el, uint16_t nType, CHostValue& cl) {
        std::string_view sv;
        bool b;
        int64_t n;
        uint64_t u;
        double r;
        simdjson::dom::array arr;
        if (el.is_null()) {
            cl = CHostValue();
        } else if (el.get(b) == simdjson::SUCCESS) {
            cl = CHostValue::s_Boolean(b);
        } else if (el.get(n) == simdjson::SUCCESS) {
            cl = CHostValue::s_Integer(n);
        } else if (el.get(u) == simdjson::SUCCESS) {
            cl = CHostValue::s_Real(static_cast<double>(u));
        } else if (el.get(r) == simdjson::SUCCESS) {
            cl = CHostValue::s_Real(r);
        } else if (el.get(sv) == simdjson::SUCCESS) {
            std::string s(sv);
            if (nType == KVTYPE_KLBIN && !CObjectSerializer::s_bFromBase64(sv, s))
                return m_st.bRefuse("a saved binary value is not base64");
            cl = CHostValue::s_String(std::move(s));
        } else if (el.get(arr) == simdjson::SUCCESS) {
            std::vector<CHostValue> tab;
            for (simdjson::dom::element elE : arr) {
                CHostValue clE;
                if (!bValue(elE, 0, clE))
                    return false;
                tab.push_back(std::move(clE));
            }
            cl = CHostValue::s_Array(std::move(tab));
        } else {
            return m_st.bRefuse("a saved value is of a kind no property has");
        }
        return true;
    }
    bool bError(const STHostOutcome& st) {
        m_st = st;
        m_st.clValue = CHostValue();
        return true;
    }
    CHost& m_clHost;
    STHostOutcome& m_st;
};

} // namespace

bool CObjectSerializer::s_bSecret(std::string_view svType, std::string_view svProperty) {
    std::string s = CNameKey::s_sKey(svProperty);
    auto fnEnds = [&s](std::string_view sv) {
        return s.size() >= sv.size() && s.compare(s.size() - sv.size(), sv.size(), sv) == 0;
    };
    // A token object's value is the token, and its saved form holds it too.
    if (CNameKey::s_sKey(svType) == "authtoken")
        return s == "valeur" || s == "__serialisation__";
    return fnEnds("secret") || fnEnds("token") || fnEnds("tokens") || fnEnds("password") ||
           fnEnds("motdepasse") || s == "idsession";
}

bool CObjectSerializer::bSave(IObjetBase* piObjet, STHostOutcome& st, bool bSecrets) {
    st = {};
    std::string s;
    if (!CSaver(m_clHost, st, bSecrets).bObject(s, piObjet, 0))
        return false;
    if (!st.bError)
        st.clValue = CHostValue::s_String(std::move(s));
    return true;
}

bool CObjectSerializer::bRebuild(std::string_view svType, std::string_view svSaved,
                                 STHostOutcome& st) {
    st = {};
    simdjson::dom::parser clParser;
    simdjson::dom::element el;
    std::string_view svSauve;
    // The parser copies the text into a padded block of its own, and says when it has no
    // memory for it (a padded_string made here would not).
    simdjson::error_code eCode = clParser.parse(svSaved.data(), svSaved.size(), true).get(el);
    if (eCode == simdjson::MEMALLOC)
        throw std::bad_alloc(); // the binding's barrier reports it
    if (eCode != simdjson::SUCCESS || !el.is_object())
        return st.bRefuse("the saved text is not a saved object");
    if (el["type"].get(svSauve) != simdjson::SUCCESS)
        return st.bRefuse("the saved object does not say its type");
    if (!svType.empty() && CNameKey::s_sKey(svType) != CNameKey::s_sKey(svSauve))
        return st.bRefuse("the saved object is a " + std::string(svSauve) + ", not a " +
                          std::string(svType));
    CHostValue clObjet;
    if (!CRebuilder(m_clHost, st).bNew(el, -1, clObjet, 0))
        return false;
    if (!st.bError)
        st.clValue = std::move(clObjet);
    return true;
}

std::string CObjectSerializer::s_sBase64(std::string_view sv) {
    std::string s;
    s.reserve((sv.size() + 2) / 3 * 4);
    for (size_t i = 0; i < sv.size(); i += 3) {
        uint32_t n = static_cast<unsigned char>(sv[i]) << 16;
        if (i + 1 < sv.size())
            n |= static_cast<unsigned char>(sv[i + 1]) << 8;
        if (i + 2 < sv.size())
            n |= static_cast<unsigned char>(sv[i + 2]);
        s += kszBase64[(n >> 18) & 63];
        s += kszBase64[(n >> 12) & 63];
        s += i + 1 < sv.size() ? kszBase64[(n >> 6) & 63] : '=';
        s += i + 2 < sv.size() ? kszBase64[n & 63] : '=';
    }
    return s;
}

bool CObjectSerializer::s_bFromBase64(std::string_view sv, std::string& sOut) {
    sOut.clear();
    uint32_t n = 0;
    int nBits = 0;
    size_t nFin = sv.size();
    while (nFin > 0 && sv[nFin - 1] == '=')
        --nFin;
    if (sv.size() % 4 != 0 || sv.size() - nFin > 2)
        return false;
    for (size_t i = 0; i < nFin; ++i) {
        const char* p = std::char_traits<char>::find(kszBase64, 64, sv[i]);
        if (!p)
            return false;
        n = (n << 6) | static_cast<uint32_t>(p - kszBase64);
        nBits += 6;
        if (nBits >= 8) {
            nBits -= 8;
            sOut += static_cast<char>((n >> nBits) & 0xFF);
        }
    }
    return true;
}
