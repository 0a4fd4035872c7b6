#include "ComponentTables.h"

#include "AnyTypes.h"
#include "Execution.h"
#include "NameKey.h"

#include <climits>
#include <cstring>

namespace {

// Far above any real table: a count beyond it is a damaged record.
constexpr uint64_t knMaxRows = 65535;

template <class T> const T* s_pPointer(uint64_t q) {
    return reinterpret_cast<const T*>(q);
}

// "+:060:<number>:GGL:<name>": the number, or false when the text has another form.
bool s_bTypeNumber(const char* psz, unsigned& nNumber, std::string* psNom = nullptr) {
    if (!psz)
        return false;
    std::string_view sv(psz, strnlen(psz, 1024));
    size_t n1 = sv.find(':');
    size_t n2 = n1 == sv.npos ? sv.npos : sv.find(':', n1 + 1);
    size_t n3 = n2 == sv.npos ? sv.npos : sv.find(':', n2 + 1);
    if (n3 == sv.npos || n3 == n2 + 1)
        return false;
    unsigned n = 0;
    for (char c : sv.substr(n2 + 1, n3 - n2 - 1)) {
        if (c < '0' || c > '9' || n > 100000)
            return false;
        n = n * 10 + static_cast<unsigned>(c - '0');
    }
    nNumber = n;
    if (psNom) {
        size_t n4 = sv.find(':', n3 + 1);
        // The name is UTF-8 encoded twice: one decoding gives its UTF-8 bytes.
        std::string_view svNom = n4 == sv.npos ? std::string_view{} : sv.substr(n4 + 1);
        psNom->clear();
        for (size_t i = 0; i < svNom.size(); ++i) {
            auto c = static_cast<unsigned char>(svNom[i]);
            if ((c == 0xC2 || c == 0xC3) && i + 1 < svNom.size()) {
                psNom->push_back(static_cast<char>(((c & 0x03) << 6) | (svNom[i + 1] & 0x3F)));
                ++i;
            } else {
                psNom->push_back(static_cast<char>(c));
            }
        }
    }
    return true;
}

// The names of the block, read in order with every bound checked.
class CNameReader {
public:
    CNameReader(const unsigned char* pby, size_t nSize) : m_pby(pby), m_nSize(nSize) {}
    bool bName(std::string& s) {
        if (m_nPos >= m_nSize)
            return false;
        auto* p =
            static_cast<const unsigned char*>(std::memchr(m_pby + m_nPos, 0, m_nSize - m_nPos));
        if (!p)
            return false;
        s.assign(reinterpret_cast<const char*>(m_pby + m_nPos), p - (m_pby + m_nPos));
        m_nPos = static_cast<size_t>(p - m_pby) + 1;
        return true;
    }
    bool bNames(size_t n, std::vector<std::string>& tab) {
        tab.resize(n);
        for (auto& s : tab)
            if (!bName(s))
                return false;
        return true;
    }
    uint16_t nWord(size_t nOffset) const {
        return static_cast<uint16_t>(m_pby[nOffset] | (m_pby[nOffset + 1] << 8));
    }
    void Seek(size_t n) { m_nPos = n; }

private:
    const unsigned char* m_pby;
    size_t m_nSize;
    size_t m_nPos = 0;
};

} // namespace

void CComponentTables::Clear() {
    *this = CComponentTables();
}

bool CComponentTables::bRead(PFNInfo pfnInfo, std::string& sError) {
    Clear();
    if (!pfnInfo) {
        sError = "the component has no InfoComposante entry";
        return false;
    }
    m_nLibrary = static_cast<unsigned>(pfnInfo(SELECTEUR_LIBRAIRIE, 0));
    if (!_bReadFunctions(pfnInfo, sError) || !_bReadClasses(pfnInfo, sError)) {
        Clear();
        return false;
    }
    m_bNamed = _bReadNames(s_pPointer<unsigned char>(pfnInfo(SELECTEUR_BLOC_NOM, 0)),
                           static_cast<size_t>(pfnInfo(SELECTEUR_TAILLE_BLOC_NOM, 0)));
    if (!m_bNamed) {
        // Without the block the vocabulary is still usable by made-up names.
        for (auto& st : m_tabFunctions)
            st.sName = "Function" + std::to_string(st.tabRows.front()->nNumero);
        for (auto& st : m_tabConstants)
            st.sName = "Constant" + std::to_string(st.pst->nNumero);
        for (auto& st : m_tabClasses) {
            for (auto& stP : st.tabProperties)
                stP.sName = "Property" + std::to_string(stP.pst->nIdentifiant);
            for (auto& stA : st.tabAccessors)
                stA.sName = "Collection" + std::to_string(stA.pst->nIdentifiant);
        }
    }
    _Index();
    return true;
}

bool CComponentTables::_bReadSyntax(const STKLSyntaxe& st, unsigned nIndex, STSyntax& stOut,
                                    std::string& sError) const {
    stOut.pst = &st;
    stOut.nIndex = nIndex;
    stOut.nParameters = st.nGetNbParametre();
    stOut.nKind = st.nGetGenre();
    const unsigned char* pby = st.pbySignature;
    stOut.bSigned = pby && pby[0] != 0;
    if (!stOut.bSigned)
        return true;
    auto Item = [pby](unsigned i) {
        const unsigned char* p = pby + 4 * i;
        return STSignatureItem{static_cast<uint16_t>(p[0] | (p[1] << 8)),
                               static_cast<uint16_t>(p[2] | (p[3] << 8))};
    };
    stOut.stResult = Item(0);
    for (unsigned i = 1; i <= stOut.nParameters; ++i) {
        STSignatureItem stItem = Item(i);
        if (stItem.nCode == 0) {
            sError = "a signature is shorter than its parameter count";
            return false;
        }
        stOut.tabParameters.push_back(stItem);
    }
    return true;
}

bool CComponentTables::_bReadFunctions(PFNInfo pfnInfo, std::string& sError) {
    auto* pstFonctions = s_pPointer<STKLFonction>(pfnInfo(SELECTEUR_FONCTIONS, 0));
    uint64_t nFonctions = pfnInfo(SELECTEUR_NB_FONCTIONS, 0);
    auto* pstConstantes = s_pPointer<STKLConstante>(pfnInfo(SELECTEUR_CONSTANTES, 0));
    uint64_t nConstantes = pfnInfo(SELECTEUR_NB_CONSTANTES, 0);
    if (nFonctions > knMaxRows || nConstantes > knMaxRows || (nFonctions && !pstFonctions) ||
        (nConstantes && !pstConstantes)) {
        sError = "the function or constant table is damaged";
        return false;
    }
    std::unordered_map<unsigned, size_t> mapParIndice;
    for (uint64_t i = 0; i < nFonctions; ++i) {
        const STKLFonction& st = pstFonctions[i];
        unsigned nIndice = st.nGetIndiceNom();
        auto it = mapParIndice.find(nIndice);
        if (it != mapParIndice.end()) {
            m_tabFunctions[it->second].tabRows.push_back(&st);
            continue;
        }
        if (st.nGetNbSyntaxe() && !st.pstSyntaxe) {
            sError = "function " + std::to_string(st.nNumero) + " has no syntax table";
            return false;
        }
        STFunction stF;
        stF.nNameIndex = nIndice;
        stF.tabRows.push_back(&st);
        for (unsigned k = 0; k < st.nGetNbSyntaxe(); ++k) {
            STSyntax stS;
            if (!_bReadSyntax(st.pstSyntaxe[k], k, stS, sError)) {
                sError += " (function " + std::to_string(st.nNumero) + ")";
                return false;
            }
            stF.tabSyntaxes.push_back(std::move(stS));
        }
        mapParIndice[nIndice] = m_tabFunctions.size();
        m_tabFunctions.push_back(std::move(stF));
    }
    for (uint64_t i = 0; i < nConstantes; ++i)
        m_tabConstants.push_back({{}, &pstConstantes[i]});
    return true;
}

bool CComponentTables::_bReadClasses(PFNInfo pfnInfo, std::string& sError) {
    auto* ppszTypes = s_pPointer<const char*>(pfnInfo(SELECTEUR_TYPEREFS, 0));
    uint64_t nTypes = pfnInfo(SELECTEUR_NB_TYPEREFS, 0);
    auto* ppstClasses = s_pPointer<const STKLOClasse*>(pfnInfo(SELECTEUR_CLASSES, 0));
    uint64_t nClasses = pfnInfo(SELECTEUR_NB_CLASSES, 0);
    if (nTypes > knMaxRows || nClasses > knMaxRows || (nTypes && !ppszTypes) ||
        (nClasses && !ppstClasses)) {
        sError = "the type reference or class table is damaged";
        return false;
    }
    for (uint64_t i = 0; i < nClasses; ++i) {
        const STKLOClasse* pst = ppstClasses[i];
        STClass st;
        st.pst = pst;
        if (!pst || !s_bTypeNumber(pst->pszType, st.nNumber, &st.sName) ||
            pst->nNbPropriete > knMaxRows || pst->nNbAccesseur > knMaxRows ||
            pst->nNbConstructeur > 255 || (pst->nNbPropriete && !pst->pstPropriete) ||
            (pst->nNbAccesseur && !pst->pstAccesseur) ||
            (pst->nNbConstructeur && !pst->pstConstructeur)) {
            sError = "class record " + std::to_string(i) + " is damaged";
            return false;
        }
        for (unsigned k = 0; k < pst->nNbConstructeur; ++k) {
            STSyntax stS;
            if (!_bReadSyntax(pst->pstConstructeur[k], k, stS, sError))
                return false;
            st.tabConstructors.push_back(std::move(stS));
        }
        for (uint64_t p = 0; p < pst->nNbPropriete; ++p)
            st.tabProperties.push_back({{}, &pst->pstPropriete[p]});
        for (uint64_t a = 0; a < pst->nNbAccesseur; ++a)
            st.tabAccessors.push_back({{}, &pst->pstAccesseur[a]});
        m_tabClasses.push_back(std::move(st));
    }
    for (uint64_t i = 0; i < nTypes; ++i) {
        STTypeRef st;
        if (!s_bTypeNumber(ppszTypes[i], st.nNumber, &st.sName)) {
            sError = "type reference " + std::to_string(i + 1) + " is damaged";
            return false;
        }
        for (size_t c = 0; c < m_tabClasses.size(); ++c)
            if (m_tabClasses[c].nNumber == st.nNumber)
                st.nClass = static_cast<int>(c);
        m_tabTypeRefs.push_back(std::move(st));
    }
    return true;
}

bool CComponentTables::_bReadNames(const unsigned char* pby, size_t nSize) {
    constexpr size_t knHeader = 18;
    if (!pby || nSize < knHeader || std::memcmp(pby, "NOMS", 4) != 0)
        return false;
    CNameReader clReader(pby, nSize);
    if (clReader.nWord(4) != 1)
        return false;
    size_t nNbProprietes = 0, nNbAccesseurs = 0;
    for (const STClass& st : m_tabClasses) {
        nNbProprietes += st.tabProperties.size();
        nNbAccesseurs += st.tabAccessors.size();
    }
    const size_t nSlots = clReader.nWord(6);
    if (clReader.nWord(8) != m_tabConstants.size() || clReader.nWord(10) != m_tabTypeRefs.size() ||
        clReader.nWord(12) != m_tabClasses.size() || clReader.nWord(14) != nNbProprietes ||
        clReader.nWord(16) != nNbAccesseurs)
        return false;
    clReader.Seek(knHeader);
    std::vector<std::string> tabFonctions, tabConstantes, tabTypes, tabClasses;
    if (!clReader.bNames(nSlots, tabFonctions) ||
        !clReader.bNames(m_tabConstants.size(), tabConstantes) ||
        !clReader.bNames(m_tabTypeRefs.size(), tabTypes) ||
        !clReader.bNames(m_tabClasses.size(), tabClasses))
        return false;
    std::vector<std::vector<std::string>> tabMembres;
    for (const STClass& st : m_tabClasses) {
        std::vector<std::string> tab;
        if (!clReader.bNames(st.tabProperties.size() + st.tabAccessors.size(), tab))
            return false;
        tabMembres.push_back(std::move(tab));
    }
    for (const STFunction& st : m_tabFunctions)
        if (st.nNameIndex >= nSlots || tabFonctions[st.nNameIndex].empty())
            return false;
    // Everything read: now the names take their places.
    for (STFunction& st : m_tabFunctions)
        st.sName = tabFonctions[st.nNameIndex];
    for (size_t i = 0; i < m_tabConstants.size(); ++i)
        m_tabConstants[i].sName = tabConstantes[i];
    for (size_t i = 0; i < m_tabTypeRefs.size(); ++i)
        m_tabTypeRefs[i].sName = tabTypes[i];
    for (size_t c = 0; c < m_tabClasses.size(); ++c) {
        STClass& st = m_tabClasses[c];
        st.sName = tabClasses[c];
        size_t n = 0;
        for (STProperty& stP : st.tabProperties)
            stP.sName = tabMembres[c][n++];
        for (STAccessor& stA : st.tabAccessors)
            stA.sName = tabMembres[c][n++];
    }
    return true;
}

void CComponentTables::_Index() {
    // The first of two names with one key wins, in table order.
    for (size_t i = 0; i < m_tabFunctions.size(); ++i)
        m_mapFunctions.emplace(CNameKey::s_sKey(m_tabFunctions[i].sName), static_cast<int>(i));
    for (size_t i = 0; i < m_tabClasses.size(); ++i) {
        STClass& st = m_tabClasses[i];
        m_mapClasses.emplace(CNameKey::s_sKey(st.sName), static_cast<int>(i));
        for (size_t p = 0; p < st.tabProperties.size(); ++p)
            st.mapMembers.emplace(CNameKey::s_sKey(st.tabProperties[p].sName), static_cast<int>(p));
        for (size_t a = 0; a < st.tabAccessors.size(); ++a)
            st.mapMembers.emplace(CNameKey::s_sKey(st.tabAccessors[a].sName),
                                  -1 - static_cast<int>(a));
    }
    for (size_t i = 0; i < m_tabConstants.size(); ++i)
        m_mapConstants.emplace(CNameKey::s_sKey(m_tabConstants[i].sName), static_cast<int>(i));
    for (size_t i = 0; i < m_tabTypeRefs.size(); ++i)
        m_mapTypeRefs.emplace(CNameKey::s_sKey(m_tabTypeRefs[i].sName), static_cast<int>(i));
}

namespace {
int s_nFind(const std::unordered_map<std::string, int>& map, std::string_view svName) {
    auto it = map.find(CNameKey::s_sKey(svName));
    return it == map.end() ? -1 : it->second;
}
} // namespace

int CComponentTables::nFindFunction(std::string_view svName) const {
    return s_nFind(m_mapFunctions, svName);
}
int CComponentTables::nFindClass(std::string_view svName) const {
    return s_nFind(m_mapClasses, svName);
}
int CComponentTables::nFindConstant(std::string_view svName) const {
    return s_nFind(m_mapConstants, svName);
}
int CComponentTables::nFindTypeRef(std::string_view svName) const {
    return s_nFind(m_mapTypeRefs, svName);
}

int CComponentTables::nFindMember(int nClass, std::string_view svName) const {
    if (nClass < 0 || static_cast<size_t>(nClass) >= m_tabClasses.size())
        return INT32_MIN;
    const auto& map = m_tabClasses[static_cast<size_t>(nClass)].mapMembers;
    auto it = map.find(CNameKey::s_sKey(svName));
    return it == map.end() ? INT32_MIN : it->second;
}

int CComponentTables::nClassOfTypeRef(unsigned nTypeRef) const {
    if (nTypeRef == 0 || nTypeRef > m_tabTypeRefs.size())
        return -1;
    return m_tabTypeRefs[nTypeRef - 1].nClass;
}

std::string CComponentTables::sSignatureTypeName(const STSignatureItem& st) const {
    switch (st.nCode) {
    case knKVTypeStarred | KVTYPE_KLI4:
        return "int*";
    case knKVTypeStarred | KVTYPE_TEXT:
        return "text*";
    case knKVTypeStarred | KVTYPE_KLDATETIME:
        return "datetime*";
    default:
        break;
    }
    switch (st.nBaseCode()) {
    case KVTYPE_KLBOOL:
        return "boolean";
    case KVTYPE_KLI4:
        return "int";
    case KVTYPE_KLI8:
        return "int64";
    case KVTYPE_KLR8:
        return "real";
    case KVTYPE_KLDSTRW:
    case KVTYPE_STRING:
        return "string";
    case KVTYPE_KLCARA:
        return "char";
    case KVTYPE_KLDSTRA:
        return "buffer";
    case KVTYPE_KLDATETIME:
        return "datetime";
    case KVTYPE_KLBIN:
        return "binary";
    case KVTYPE_KLMEMOIMG:
        return "image";
    case KVTYPE_ANY:
        return "any";
    case KVTYPE_STRINGARRAY:
        return "stringarray";
    case KVTYPE_STRINGORBUFFER:
        return "stringorbuffer";
    case KVTYPE_ARRAY:
        return "array";
    case KVTYPE_TEXT:
    case KVTYPE_TEXT2:
        return "text";
    case KVTYPE_KLDINO:
        if (st.nQualifier >= 1 && st.nQualifier <= m_tabTypeRefs.size())
            return m_tabTypeRefs[st.nQualifier - 1].sName;
        return "object";
    default:
        return "type" + std::to_string(st.nCode);
    }
}

std::string CComponentTables::sPropertyTypeName(const STProperty& st) const {
    return sSignatureTypeName({st.nType(), static_cast<uint16_t>(st.nTypeRef())});
}
