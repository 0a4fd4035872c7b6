#include "SyntaxChooser.h"

#include "AnyTypes.h"
#include "ArgumentBlock.h"

#include <algorithm>
#include <cmath>
#include <set>

int CSyntaxChooser::nScore(const STSignatureItem& stItem, const CHostValue& cl,
                           bool bServed) const {
    using K = CHostValue;
    const auto e = cl.eKind();
    const bool bNombre = e == K::KIND_INTEGER || e == K::KIND_REAL;
    const bool bEntier =
        e == K::KIND_INTEGER || (e == K::KIND_REAL && cl.rGetReal() == std::floor(cl.rGetReal()));
    switch (stItem.nBaseCode()) {
    case KVTYPE_KLBOOL:
        return e == K::KIND_BOOLEAN ? 2 : -1;
    case KVTYPE_KLI4:
    case KVTYPE_KLI8:
        return e == K::KIND_INTEGER ? 2 : bEntier ? 1 : -1;
    case KVTYPE_KLR4:
    case KVTYPE_KLR8:
        return bNombre ? 2 : -1;
    case KVTYPE_KLDSTRW:
    case KVTYPE_STRING:
        return e == K::KIND_STRING ? 2 : bNombre ? 1 : -1;
    case KVTYPE_TEXT:
    case KVTYPE_TEXT2:
        return e == K::KIND_STRING ? 2 : (bNombre || e == K::KIND_NIL) ? 1 : -1;
    case KVTYPE_KLCARA:
        return e == K::KIND_STRING && cl.sGetString().size() <= 1 ? 2 : -1;
    case KVTYPE_KLDSTRA:
    case KVTYPE_KLBIN:
    case KVTYPE_STRINGORBUFFER:
        return e == K::KIND_STRING ? 2 : -1;
    case KVTYPE_KLMEMOIMG:
        return e == K::KIND_STRING ? 2 : e == K::KIND_NIL ? 1 : -1;
    case KVTYPE_KLDATETIME: {
        CDateTime dt;
        if (e == K::KIND_DATETIME)
            return 2;
        if (e == K::KIND_STRING)
            return CHostValue::s_bParseDate(cl.sGetString(), dt) ? 2 : -1;
        return e == K::KIND_NIL ? 1 : -1;
    }
    case KVTYPE_ANY:
        return 1;
    case KVTYPE_STRINGARRAY:
        if (e == K::KIND_NIL)
            return 1;
        if (e != K::KIND_ARRAY)
            return -1;
        for (const CHostValue& clE : cl.tabGetArray())
            if (clE.eKind() != K::KIND_STRING && clE.eKind() != K::KIND_INTEGER &&
                clE.eKind() != K::KIND_REAL)
                return -1;
        return 2;
    case KVTYPE_ARRAY:
        return e == K::KIND_ARRAY ? 2 : e == K::KIND_NIL ? 1 : -1;
    case KVTYPE_KLDINO: {
        if (e == K::KIND_NIL)
            return bServed ? -1 : 1;
        if (e != K::KIND_OBJECT)
            return -1;
        if (stItem.nQualifier == 0)
            return 2;
        int nClasse = m_clTables.nClassOfTypeRef(stItem.nQualifier);
        return nClasse >= 0 && m_fnClassOf(cl.piGetObject()) == nClasse ? 2 : -1;
    }
    default:
        return -1;
    }
}

std::string CSyntaxChooser::sExpected(const STSignatureItem& stItem) const {
    switch (stItem.nBaseCode()) {
    case KVTYPE_KLBOOL:
        return "boolean";
    case KVTYPE_KLI4:
    case KVTYPE_KLI8:
    case KVTYPE_KLR4:
    case KVTYPE_KLR8:
        return "number";
    case KVTYPE_KLDSTRW:
    case KVTYPE_STRING:
    case KVTYPE_TEXT:
    case KVTYPE_TEXT2:
    case KVTYPE_KLCARA:
    case KVTYPE_KLDSTRA:
    case KVTYPE_KLBIN:
    case KVTYPE_KLMEMOIMG:
    case KVTYPE_STRINGORBUFFER:
        return "string";
    case KVTYPE_KLDATETIME:
        return "date";
    case KVTYPE_ANY:
        return "value";
    case KVTYPE_STRINGARRAY:
    case KVTYPE_ARRAY:
        return "table";
    case KVTYPE_KLDINO:
        if (stItem.nQualifier == 0)
            return "object";
        return m_clTables.sSignatureTypeName(stItem);
    default:
        return m_clTables.sSignatureTypeName(stItem);
    }
}

std::string CSyntaxChooser::sGot(const CHostValue& cl) const {
    if (cl.eKind() == CHostValue::KIND_OBJECT) {
        int n = m_fnClassOf(cl.piGetObject());
        if (n >= 0)
            return m_clTables.tabClasses()[static_cast<size_t>(n)].sName;
    }
    return cl.pszKindName();
}

std::string CSyntaxChooser::sWhyNot(const STSignatureItem& stItem,
                                    const CHostValue& clValeur) const {
    std::string sAttendu = sExpected(stItem), sRecu = sGot(clValeur);
    if (sAttendu == sRecu) {
        CArgumentBlock clEssai;
        std::string sPourquoi;
        if (!clEssai.bAdd(stItem, clValeur, nullptr, sPourquoi))
            return sPourquoi;
    }
    return sAttendu + " expected, got " + sRecu;
}

int CSyntaxChooser::nChoose(const std::string& sFunction,
                            const std::vector<STCandidate>& tabCandidates,
                            const std::vector<CHostValue>& tabArguments,
                            std::string& sMessage) const {
    const size_t nArgs = tabArguments.size();
    int nMeilleur = -1, nMeilleurScore = -1;
    std::set<size_t> setNombres;
    // Per argument position, the syntaxes that took every argument before it.
    size_t nPlusLoin = 0;
    for (size_t k = 0; k < tabCandidates.size(); ++k) {
        const STCandidate& st = tabCandidates[k];
        setNombres.insert(st.tabItems.size());
        if (st.tabItems.size() != nArgs)
            continue;
        int nTotal = 0;
        size_t i = 0;
        for (; i < nArgs; ++i) {
            int n = nScore(st.tabItems[i], tabArguments[i], st.bMethod && i == 0);
            if (n < 0)
                break;
            nTotal += n;
        }
        nPlusLoin = std::max(nPlusLoin, i);
        if (i == nArgs && nTotal > nMeilleurScore) {
            nMeilleur = static_cast<int>(k);
            nMeilleurScore = nTotal;
        }
    }
    if (nMeilleur >= 0)
        return nMeilleur;

    if (setNombres.empty()) {
        sMessage = "'" + sFunction + "' has no syntax";
        return -1;
    }
    if (!setNombres.count(nArgs)) {
        std::string sAttendu;
        size_t nMin = *setNombres.begin(), nMax = *setNombres.rbegin();
        if (setNombres.size() == 1)
            sAttendu = std::to_string(nMin);
        else if (setNombres.size() == nMax - nMin + 1)
            sAttendu = std::to_string(nMin) + " to " + std::to_string(nMax);
        else
            for (size_t n : setNombres)
                sAttendu += (sAttendu.empty() ? "" : n == nMax ? " or " : ", ") + std::to_string(n);
        sMessage = "wrong number of arguments to '" + sFunction + "' (" + sAttendu +
                   " expected, got " + std::to_string(nArgs) + ")";
        return -1;
    }
    // The first argument that no syntax of that count could take, after those it took.
    std::vector<std::string> tabAttendus;
    for (const STCandidate& st : tabCandidates) {
        if (st.tabItems.size() != nArgs)
            continue;
        size_t i = 0;
        while (i < nArgs && nScore(st.tabItems[i], tabArguments[i], st.bMethod && i == 0) >= 0)
            ++i;
        if (i != nPlusLoin)
            continue;
        std::string s = sExpected(st.tabItems[i]);
        if (std::find(tabAttendus.begin(), tabAttendus.end(), s) == tabAttendus.end())
            tabAttendus.push_back(s);
    }
    std::string sAttendu;
    for (size_t n = 0; n < tabAttendus.size(); ++n)
        sAttendu += (n == 0 ? "" : n + 1 == tabAttendus.size() ? " or " : ", ") + tabAttendus[n];
    const CHostValue& clRecu = tabArguments[nPlusLoin];
    std::string sPourquoi = sAttendu + " expected, got " + sGot(clRecu);
    // One kind expected and that kind given: what is wrong is the value itself.
    if (tabAttendus.size() == 1 && tabAttendus[0] == sGot(clRecu)) {
        for (const STCandidate& st : tabCandidates)
            if (st.tabItems.size() == nArgs) {
                sPourquoi = sWhyNot(st.tabItems[nPlusLoin], clRecu);
                break;
            }
    }
    sMessage = "bad argument #" + std::to_string(nPlusLoin + 1) + " to '" + sFunction + "' (" +
               sPourquoi + ")";
    return -1;
}
