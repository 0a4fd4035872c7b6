// CArgumentBlock: the arguments of one stub call, each in the form its type code requires, and
// the array of pointers the stub reads (slot i points at argument i):
//
//   1 boolean, 8 int       a 32-bit integer          9 int64        a 64-bit integer
//   11, 12 real            a float, a double         17 char        one byte
//   16, 130 string         a CXYString<wchar_t>      122, 131 text  a const wchar_t* (nil: null)
//   19 buffer              a CXYString<char>         26 datetime    a CDateTime (nil: absent)
//   28 binary              a CKLBIN                  31 any         a CAny*
//   58 stringarray         a CXYStringArray<wchar_t>*               80 stringorbuffer  an
//                          STManipAUB over the wide text (type 16, size in bytes)
//   111 object             the native object, cast to the class of the type reference (nil:
//                          null)
//   112 array              an IKLTableau* of the elements (nil: null)
// Bit 15 of a code (int*, text*, datetime*) changes nothing here. The values live as long as
// the block.
#pragma once
#include "HostValue.h"
#include "ComponentTables.h"

#include <memory>
#include <string>
#include <vector>

class ITypeDescription;

class CArgumentBlock {
public:
    CArgumentBlock();
    CArgumentBlock(const CArgumentBlock&) = delete;
    CArgumentBlock& operator=(const CArgumentBlock&) = delete;
    ~CArgumentBlock();

    // Adds the value in the form of the item; piClass is the class of an object item (null
    // for any class). False with what was wrong ("number has no integer representation") when
    // the value cannot take that form.
    bool bAdd(const STSignatureItem& stItem, const CHostValue& clValeur, ITypeDescription* piClass,
              std::string& sWhy);
    unsigned char** ppArguments();
    size_t nCount() const { return m_tabSlots.size(); }

private:
    struct STSlot;
    STSlot& _NewSlot();
    std::vector<std::unique_ptr<STSlot>> m_tabSlots;
    std::vector<unsigned char*> m_tabPointers;
};
