// CAny: the variant host value that carries script values across the boundary.
//
// Layout, binding for the host (checked below):
//   0   the implementation object: a CAny_* class made of its vtable pointer only, constructed
//       in place and replaced whenever the type changes (the leading word)
//   8   the pointer to that object, through which the host calls it
//   16  the 16-bit type code (AnyTypes.def); bit 8 marks an array
//   24  the value area, 16 bytes: numbers in place, counted blocks and objects as one pointer
//
// Counted parts of a value (strings, byte blocks, objects) are shared by copies: a copy adds a
// reference, clearing drops one. Every operation that can fail answers a result word
// (KVResult.h) and leaves the value as it was.
//
// Conversion options (STOCAW, null for the defaults): the low 16 bits of dwOptions name the
// code page of narrow text, 0 or 65001 for UTF-8, 28591 for Latin-1. Narrow text is UTF-8
// otherwise.
#pragma once
#include "AnyTypes.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

class CAny;
class CKLBIN;
class CDateTime;
class IInterfaceObjetBase;
struct STManipAUB;
struct STOCAW;
struct STAnyNeutre;
template <class T> class CXYString;

// Values of the fixed-size kinds.
struct STKLPoint {
    int32_t nX;
    int32_t nY;
};
struct STKLRectangle {
    int32_t nGauche;
    int32_t nHaut;
    int32_t nDroite;
    int32_t nBas;
};
// Currency: a little-endian two's complement integer of 80 bits counting millionths.
struct STKLMonnaie {
    unsigned char aby[10];
};

// What a value area holds. Values of the same counted kind (strings of one width, byte blocks,
// objects, arrays) change code by sharing their block; any other change converts.
enum eKVSTOCKAGE : int {
    KV_STOCKAGE_AUCUN,    // a value in place, or text that must match a form
    KV_STOCKAGE_CHAINEW,  // a counted wide string
    KV_STOCKAGE_CHAINEA,  // a counted narrow string
    KV_STOCKAGE_BINAIRE,  // a counted byte block
    KV_STOCKAGE_OBJET,    // a counted object reference
    KV_STOCKAGE_TABLEAU,  // a counted array reference
    KV_STOCKAGE_POINTEUR, // a host pointer kept as it is, whose meaning depends on the code
};

// The implementation object of a CAny. It has no state: its operations find the owning CAny
// by the offset of the slot it lives in, and work on that value's area and code.
//
// Operations, in the host's slot order:
//   destructor pair      the object is destroyed when the type changes; it never touches the
//                        value, whose references vLibere drops first
//   Duplique(dest)       makes dest a copy of the owner: same code, same value, counted parts
//                        shared
//   nGetSize, nGetAdr    the value as the host copies it: the size and address of the value
//                        area in use (4 for KLI4, 10 for currency, 8 for one pointer)
//   nFillBuffer          copies those bytes; a buffer too small is refused
//   nGetDataSize/Adr     what the value designates: a text with its terminator, the bytes of a
//                        block, the object pointed to (size 0, unknown); in-place values are
//                        their own data
//   nFillDataBuffer      copies the data whole; a buffer too small is refused
//   SetValue(p)          sets from the image of a value area: counted pointers are shared,
//                        numbers copied
//   SetValue(p, n)       sets from n bytes of data: text (n a multiple of the character size),
//                        bytes, or a number of exactly its size; objects and arrays refuse it
//   nGetPCASTR/PCWSTR    the text when the value is narrow / wide text (a character counts as
//                        a one-character text), else null
//   nGetSTRLEN           the length in characters of that text, else 0
//   bIsPositive          numbers and durations: not negative; other values: true
//   nGetUtilDataSize     the meaningful bytes of the data: a text without its terminator
//   nFillUtilDataBuffer  copies them, cut to the room given (KV_TRONQUE)
//   nIncremente/Decr.    one unit up or down for numbers, currency and durations (1 ms);
//                        overflow is refused
//   SetValueFromANSI/UNICODE
//                        reads a text and converts it into the type; the code-page forms name
//                        the encoding of narrow text, the sized forms take a length in
//                        characters
//   SetValueOption(p, n, options)
//                        the low 16 bits of options give the type code of the n bytes at p
//                        (0: this type); the data is converted into this type
class CAny_Intern {
public:
    CAny_Intern() = default;
    CAny_Intern(const CAny_Intern&) = delete;
    CAny_Intern& operator=(const CAny_Intern&) = delete;
    virtual ~CAny_Intern() = default;

    virtual void Duplique(CAny* pclCible) const;
    virtual size_t nGetSize() const;
    virtual const void* nGetAdr() const;
    virtual int nFillBuffer(void* pBuffer, size_t nTaille) const;
    virtual size_t nGetDataSize() const;
    virtual const void* nGetDataAdr() const;
    virtual int nFillDataBuffer(void* pBuffer, size_t nTaille) const;
    virtual int SetValue(const void* pValeur);
    virtual int SetValue(const void* pDonnees, unsigned long nTaille);
    virtual const char* nGetPCASTR() const;
    virtual const wchar_t* nGetPCWSTR() const;
    virtual size_t nGetSTRLEN() const;
    virtual bool bIsPositive() const;
    virtual size_t nGetUtilDataSize() const;
    virtual int nFillUtilDataBuffer(void* pBuffer, size_t nTaille) const;
    virtual int nIncremente();
    virtual int nDecremente();
    virtual int SetValueFromANSI(const char* psz);
    virtual int SetValueFromUNICODE(const wchar_t* psz);
    virtual int SetValueFromANSI(const char* psz, unsigned nCodePage);
    virtual int SetValueFromUNICODE(const wchar_t* psz, unsigned nCodePage);
    virtual int SetValueFromANSI(const char* p, size_t nLongueur, unsigned nCodePage);
    virtual int SetValueFromUNICODE(const wchar_t* p, size_t nLongueur, unsigned nCodePage);
    virtual int SetValueOption(const void* pDonnees, unsigned long nTaille, unsigned nOptions);

    // Ours, after the host's slots.
    virtual const char* vpszNomClasse() const { return "CAny_Intern"; }
    virtual eKVSTOCKAGE vnGetStockage() const;
    // Drops the references of the value and zeroes the area.
    virtual void vLibere();
    // Makes the counted block of the value its own.
    virtual int vnUnshare() { return 0; }
    // Adds one reference to each counted part, after the area was copied from another value.
    virtual void vRetient();
    // The type's default in a zeroed area.
    virtual int vnInitDefaut() { return 0; }
    // The value in neutral form, and a neutral value converted into this type (the value
    // unchanged on failure). Narrow text is read and written in nCodePage.
    virtual int vnLit(STAnyNeutre& stNeutre, unsigned nCodePage) const;
    virtual int vnEcrit(const STAnyNeutre& stNeutre, unsigned nCodePage);

protected:
    CAny& rAny() const;
    unsigned char* pbyValeur() const;
    uint16_t nType() const;
};

class CAny {
public:
    static constexpr uint16_t knTableau = 0x100;
    static constexpr uint16_t knTypeMax = 151;
    static constexpr size_t knTailleValeur = 16;

    CAny() noexcept;
    CAny(const CAny& o) noexcept;
    CAny(CAny&& o) noexcept;
    CAny& operator=(const CAny& o) noexcept;
    CAny& operator=(CAny&& o) noexcept;
    ~CAny();
    void swap(CAny& o) noexcept;

    uint16_t nGetType() const { return m_nType; }
    bool bEstTableau() const { return (m_nType & knTableau) != 0; }
    // The element type of an array, the type itself otherwise.
    uint16_t nGetTypeScalaire() const { return static_cast<uint16_t>(m_nType & ~knTableau); }
    CAny_Intern* pclGetIntern() const { return m_pclImpl; }
    const void* pGetValeur() const { return m_abyValeur; }

    // The code a value of code nCode ends with: 15 folds into 9, an unknown code gives 0.
    static uint16_t s_nTypeEffectif(uint16_t nCode);

    // Changes the type. With bGardeValeur 0 the value becomes the type's default; otherwise it
    // is converted, and cleared to the default when it cannot be: the result word tells which.
    int __SetType(uint16_t nCode, int bGardeValeur);
    void Vide() { (void)__SetType(KVTYPE_NONE, 0); }

    // Setters. Those that allocate answer a result word and leave the value as it was on
    // failure.
    void SetBool(bool b);
    void SetInt(int n);
    void SetINT_64(long n);
    void SetUINT_64(unsigned long n);
    void SetREAL(double r);
    // Type 16 from nLongueur characters (-1: up to the terminator).
    int __nSetString(const wchar_t* psz, int nLongueur = -1, const STOCAW* pstOptions = nullptr);
    void SetString(const CXYString<wchar_t>& s);
    // Type 19.
    int SetStringA(const char* psz, int nLongueur = -1);
    void SetStringA(const CXYString<char>& s);
    int SetBinary(const void* p, size_t nTaille);
    void SetBinary(const CKLBIN& clBin);
    void SetDateTime(const CDateTime& clDate);
    void SetDuree(long nMilli);
    // Types 110 and 18: the text is pointed to, not owned.
    void SetPSTRX(const wchar_t* psz);
    void SetPSTRA(const char* psz);
    // A counted object (83, 108 and its aliases, 111): one reference added.
    int SetObjet(IInterfaceObjetBase* pi, uint16_t nType = KVTYPE_KLOBJET_BASE);
    // An array of elements of nTypeElement: one reference added.
    int SetTableau(IInterfaceObjetBase* pi, uint16_t nTypeElement);
    // Image, carrier, font (30, 50, 65): the host's pointer, kept as it is.
    int SetPointeur(uint16_t nType, void* p);
    void SetPoint(const STKLPoint& st);
    void SetRectangle(const STKLRectangle& st);

    // Readers: the value converted, the output untouched on failure.
    int nGetINT(int* pn) const;
    int nGetINT_64(long* pn) const;
    // Integers give their bits zero-extended from their width; other values their integer
    // reading, negatives in two's complement.
    int nGetBitField_64(unsigned long& n) const;
    int nGetREAL(double* pr) const;
    int nGetBool(bool* pb) const;
    int nGetDateTime(CDateTime* pclDate) const;
    int nGetDuree(long* pnMilli) const;
    // The object or array pointed to, borrowed; null for other values.
    IInterfaceObjetBase* piGetObjet() const;

    // The value as text or bytes: wide texts give type 16, narrow texts 19, byte blocks 28;
    // any other value is first converted in place to type 16.
    int nGetManipAUB(STManipAUB* pst);
    // Converts in place. nFlags is kept for the host's form of the call; none changes it.
    int __nCastTo(uint16_t nType, const STOCAW* pstOptions = nullptr, unsigned nFlags = 0);
    // A pointer to the value as wide / narrow text, converting in place to 16 / 19 if needed.
    // The pointer lives as long as the value is not changed.
    int __nCastToString(const wchar_t** ppsz, const STOCAW* pstOptions = nullptr);
    int __nCastToString(const char** ppsz, const STOCAW* pstOptions = nullptr);
    // The value as text / bytes into a counted string or block, the value unchanged; a value
    // of the same form is shared, not copied.
    int __nFillString(CXYString<wchar_t>& s, const STOCAW* pstOptions = nullptr) const;
    int __nFillString(CXYString<char>& s, const STOCAW* pstOptions = nullptr) const;
    int nFillBinary(CKLBIN& clBin) const;
    // Makes the counted text or bytes of this value its own.
    int nUnshare();
    // A block of 8 bytes holding a duration (signed milliseconds) / a CDateTime becomes that
    // value.
    int nCastFrom_BIN_DUREE_To_DUREE();
    int nCastFrom_BIN_DATEHEURE_To_DATEHEURE();

private:
    friend class CAny_Intern;
    // Replaces the implementation object by the class of nCode; the value area is not touched.
    void Installe(uint16_t nCode) noexcept;
    // Converts clSource into this value's type, keeping the type; unchanged on failure.
    int nAffecteConverti(const CAny& clSource, unsigned nCodePage);
    int nLit(STAnyNeutre& st, unsigned nCodePage) const;
    // Releases the value and makes it type nCode (already effective) with its default.
    int nReinitialise(uint16_t nCode);
    // Text into a value of the text type nCode (16 wide, 19 narrow); unchanged on failure.
    template <class T> int _nAffecteTexte(uint16_t nCode, const T* p, size_t n);

    alignas(8) unsigned char m_abyImpl[8];
    CAny_Intern* m_pclImpl;
    uint16_t m_nType;
    alignas(8) unsigned char m_abyValeur[knTailleValeur];

    static void s_Verifie() {
        static_assert(std::is_standard_layout_v<CAny>);
        static_assert(offsetof(CAny, m_abyImpl) == 0, "the implementation slot leads");
        static_assert(offsetof(CAny, m_pclImpl) == 8);
        static_assert(offsetof(CAny, m_nType) == 16);
        static_assert(offsetof(CAny, m_abyValeur) == 24);
        static_assert(sizeof(CAny) == 40);
        static_assert(sizeof(CAny_Intern) == sizeof(m_abyImpl),
                      "a vtable pointer and nothing else");
    }
};

inline void swap(CAny& a, CAny& b) noexcept {
    a.swap(b);
}
