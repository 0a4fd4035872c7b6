// CSyntaxChooser: picks the syntax of a function from the arguments, as the host does from the
// signatures: the syntaxes with as many parameters as there are arguments, then those whose
// every parameter can take its argument, then the one whose arguments fit best (exact kinds
// before conversions: an integer picks "int" over "text"), the first one on a tie.
//
// What can take what:
//   boolean             a boolean
//   int, int64          an integer, or a real with no fraction (converted)
//   real                a number
//   text, string        a string; a number (converted); nil for text (a null text)
//   char                a string of at most one byte
//   buffer, binary,     a string
//   stringorbuffer
//   datetime            a date, a string "YYYY-MM-DDTHH:MM:SS[.mmm]", nil (an absent date)
//   any                 anything (converted)
//   stringarray, array  a table (array), nil
//   object              an object of the type reference's class; nil unless it is the object
//                       the function is served by
// When none fits, the message says so in Lua's idiom, naming the first argument that no
// syntax could take: "bad argument #2 to 'GglRequete' (number expected, got table)".
#pragma once
#include "ComponentTables.h"
#include "HostValue.h"

#include <functional>
#include <string>
#include <vector>

class CSyntaxChooser {
public:
    // The class index of an object, -1 for an object the host does not know.
    using FNClassOf = std::function<int(IObjetBase*)>;

    CSyntaxChooser(const CComponentTables& clTables, FNClassOf fnClassOf)
        : m_clTables(clTables), m_fnClassOf(std::move(fnClassOf)) {}

    // -1 refused, 1 taken by conversion, 2 taken as it is. bServed: the object a method is
    // served by, which cannot be nil.
    int nScore(const STSignatureItem& stItem, const CHostValue& clValeur, bool bServed) const;
    // What an item expects, as a script developer names it: "number", "string", "gglAgenda"...
    std::string sExpected(const STSignatureItem& stItem) const;
    // What a value is, likewise; an object by its class.
    std::string sGot(const CHostValue& clValeur) const;
    // Why an item cannot take a value: "number expected, got table", or for a value of the
    // right kind, what is wrong with it ("number has no integer representation").
    std::string sWhyNot(const STSignatureItem& stItem, const CHostValue& clValeur) const;

    // One candidate: a syntax's parameter items, and whether its first one is served.
    struct STCandidate {
        std::vector<STSignatureItem> tabItems;
        bool bMethod = false;
    };
    // The index of the syntax chosen, or -1 with the message in sMessage.
    int nChoose(const std::string& sFunction, const std::vector<STCandidate>& tabCandidates,
                const std::vector<CHostValue>& tabArguments, std::string& sMessage) const;

private:
    const CComponentTables& m_clTables;
    FNClassOf m_fnClassOf;
};
