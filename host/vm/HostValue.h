// CHostValue: a script value as the host's callers hold it, independent of any one script
// language: nothing, a boolean, an integer, a real, a string of bytes (UTF-8 for texts), a
// date-time, an object of the component, or an array of values. The VM turns it into the form
// each type code of a signature requires, and turns what the component returns back into it.
#pragma once
#include "DateTime.h"
#include "ObjectInterfaces.h"
#include "Ref.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class CAny;
class CKLMemoImage;
class CXError;

class CHostValue {
public:
    enum eKIND : int {
        KIND_NIL,
        KIND_BOOLEAN,
        KIND_INTEGER,
        KIND_REAL,
        KIND_STRING,
        KIND_DATETIME,
        KIND_OBJECT,
        KIND_ARRAY,
    };

    CHostValue() = default;
    static CHostValue s_Boolean(bool b);
    static CHostValue s_Integer(int64_t n);
    static CHostValue s_Real(double r);
    static CHostValue s_String(std::string s);
    static CHostValue s_DateTime(const CDateTime& dt);
    // Takes a reference of its own; a null object is nil.
    static CHostValue s_Object(IObjetBase* pi);
    static CHostValue s_Array(std::vector<CHostValue> tab);

    eKIND eKind() const { return m_eKind; }
    bool bNil() const { return m_eKind == KIND_NIL; }
    bool bGetBoolean() const { return m_b; }
    int64_t nGetInteger() const { return m_n; }
    double rGetReal() const { return m_r; }
    // A number of either kind, as a real.
    double rGetNumber() const { return m_eKind == KIND_INTEGER ? static_cast<double>(m_n) : m_r; }
    const std::string& sGetString() const { return m_s; }
    const CDateTime& dtGetDateTime() const { return m_dt; }
    IObjetBase* piGetObject() const { return m_clObjet.pGet(); }
    const std::vector<CHostValue>& tabGetArray() const { return m_tab; }

    // The kind as a script developer names it: "nil", "boolean", "number", "string", "date",
    // "object", "table" for an array.
    const char* pszKindName() const;

    // The value a CAny holds; false for what the host does not carry (a font, a carrier...).
    // Wide texts become UTF-8, narrow texts and bytes stay as they are, arrays are read
    // element by element.
    static bool s_bFromAny(const CAny& clAny, CHostValue& clOut);
    // The elements of a script array, each as s_bFromAny reads it; a null array is empty.
    static bool s_bFromArray(IKLTableau* piTableau, CHostValue& clOut);
    // An image as its bytes: those it holds, or those of its file (false when the file cannot
    // be read); an image with neither is the empty string.
    static bool s_bFromImage(const CKLMemoImage& clImage, CHostValue& clOut);
    // How a string stands for an image: bytes that begin as an image of a known kind (PNG,
    // JPEG, GIF, BMP, TIFF, WebP) are the image itself; any other text is the path of its file.
    static bool s_bImageBytes(std::string_view sv);

    // Into a CAny: texts as wide strings (16), arrays as host arrays of the elements.
    bool bToAny(CAny& clAny, CXError* pclErreur) const;

    // Dates as text: "YYYY-MM-DD", then optionally "THH:MM", ":SS" and ".mmm" (a space may
    // stand for the T). A date that does not exist (31 April) is refused.
    static bool s_bParseDate(std::string_view sv, CDateTime& dt);
    // "YYYY-MM-DDTHH:MM:SS.mmm".
    static std::string s_sFormatDate(const CDateTime& dt);

private:
    eKIND m_eKind = KIND_NIL;
    bool m_b = false;
    int64_t m_n = 0;
    double m_r = 0;
    std::string m_s;
    CDateTime m_dt;
    CRef<IObjetBase> m_clObjet;
    std::vector<CHostValue> m_tab;
};
