// CComponentTables: the component's vocabulary as the host reads it, through InfoComposante:
// the function, constant, type reference and class tables, and the names of the name block
// (its format is in docs/Vocabulary.md). Everything is checked as it is read: a record out of
// bounds or a block that does not parse is refused with a reason, never followed.
//
// Names are found regardless of case and accents (CNameKey). A function is one name: rows that
// register a name again (the same name index) share the first row's syntaxes.
#pragma once
#include "AnyTypes.h"
#include "Tables.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// One item of a signature: a type code and its qualifier (the type reference of an object).
struct STSignatureItem {
    uint16_t nCode;
    uint16_t nQualifier;
    // The code without its bit 15 (the starred forms: int*, text*, datetime*).
    uint16_t nBaseCode() const { return static_cast<uint16_t>(nCode & ~knKVTypeStarred); }
};

class CComponentTables {
public:
    using PFNInfo = uint64_t (*)(uint32_t nSelector, uint64_t nIndex);

    struct STSyntax {
        const STKLSyntaxe* pst = nullptr;
        unsigned nIndex = 0;
        unsigned nParameters = 0; // the served object included
        unsigned nKind = 0;       // eKLLGENRE
        bool bSigned = false;     // false: an empty item list, the types unknown
        STSignatureItem stResult{0, 0};
        std::vector<STSignatureItem> tabParameters;
        bool bHandled() const { return pst && pst->pfnMethode; }
    };
    struct STFunction {
        std::string sName;
        unsigned nNameIndex = 0;
        std::vector<const STKLFonction*> tabRows; // every row that bears the name
        std::vector<STSyntax> tabSyntaxes;        // those of the first row
    };
    struct STConstant {
        std::string sName;
        const STKLConstante* pst = nullptr;
    };
    struct STTypeRef {
        std::string sName;
        unsigned nNumber = 0;
        int nClass = -1; // the class of that number, -1 when the component has none
    };
    struct STProperty {
        std::string sName;
        const STKLPropriete* pst = nullptr;
        uint16_t nType() const { return static_cast<uint16_t>(pst->qwType & 0xFFFF); }
        unsigned nTypeRef() const { return static_cast<unsigned>((pst->qwType >> 16) & 0xFFFF); }
        bool bObject() const { return nType() == KVTYPE_KLDINO; }
        PFNKLLGet pfnGetter() const { return bObject() ? pst->pfnGetObjet : pst->pfnGet; }
        // A plain value that takes part in saving and rebuilding (option 0x202).
        bool bSaved() const { return (pst->qwOption & 0xFFFF) == 0x202; }
    };
    struct STAccessor {
        std::string sName;
        const STKLAccesseur* pst = nullptr;
        unsigned nTypeRef() const { return static_cast<unsigned>((pst->qwType >> 16) & 0xFFFF); }
    };
    struct STClass {
        std::string sName; // the script type
        const STKLOClasse* pst = nullptr;
        unsigned nNumber = 0;
        std::vector<STSyntax> tabConstructors;
        std::vector<STProperty> tabProperties;
        std::vector<STAccessor> tabAccessors;
        // Member keys: a property's index, or -1 - an accessor's index.
        std::unordered_map<std::string, int> mapMembers;
    };

    // Reads every table; false with the reason when one cannot be trusted.
    bool bRead(PFNInfo pfnInfo, std::string& sError);
    void Clear();

    unsigned nLibrary() const { return m_nLibrary; }
    const std::vector<STFunction>& tabFunctions() const { return m_tabFunctions; }
    const std::vector<STConstant>& tabConstants() const { return m_tabConstants; }
    const std::vector<STTypeRef>& tabTypeRefs() const { return m_tabTypeRefs; }
    const std::vector<STClass>& tabClasses() const { return m_tabClasses; }
    // Whether the names came from the name block (else they are made up from numbers).
    bool bNamed() const { return m_bNamed; }

    // Lookups by script name; -1 when none.
    int nFindFunction(std::string_view svName) const;
    int nFindClass(std::string_view svName) const;
    int nFindConstant(std::string_view svName) const;
    int nFindTypeRef(std::string_view svName) const;
    // A property's index (>= 0), or -1 - an accessor's index, or INT32_MIN when neither.
    int nFindMember(int nClass, std::string_view svName) const;
    // The class that a 1-based type reference index stands for; -1 when none.
    int nClassOfTypeRef(unsigned nTypeRef) const;

    // What a type is called in messages and descriptions: "int", "text", "gglAgenda"...
    std::string sSignatureTypeName(const STSignatureItem& st) const;
    std::string sPropertyTypeName(const STProperty& st) const;

private:
    bool _bReadFunctions(PFNInfo pfnInfo, std::string& sError);
    bool _bReadClasses(PFNInfo pfnInfo, std::string& sError);
    bool _bReadSyntax(const STKLSyntaxe& st, unsigned nIndex, STSyntax& stOut,
                      std::string& sError) const;
    bool _bReadNames(const unsigned char* pby, size_t nSize);
    void _Index();

    unsigned m_nLibrary = 0;
    bool m_bNamed = false;
    std::vector<STFunction> m_tabFunctions;
    std::vector<STConstant> m_tabConstants;
    std::vector<STTypeRef> m_tabTypeRefs;
    std::vector<STClass> m_tabClasses;
    std::unordered_map<std::string, int> m_mapFunctions;
    std::unordered_map<std::string, int> m_mapClasses;
    std::unordered_map<std::string, int> m_mapConstants;
    std::unordered_map<std::string, int> m_mapTypeRefs;
};
