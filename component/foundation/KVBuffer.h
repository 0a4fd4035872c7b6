// CKVBuffer: a growing byte buffer with one read and write position, the form in which
// connections and tokens are saved. Integers go little-endian in their native width; texts go
// in the marked UTF-8 form below, which a reader can check end to end before it trusts it.
//
//   offset 0      start mark 0xF188CEFF
//   offset 4      T, the length of the whole form: UTF-8 length + 13
//   offset 8      the UTF-8 text and its final null
//   offset T - 4  end mark 0xE198EDFE
//
// An empty text may instead be written as one zero byte. Nothing here throws on bad input: a
// malformed form reads as a failure and leaves the position where it was.
#pragma once
#include "TString.h"
#include "XYString.h"

#include <cstddef>
#include <cstdint>

enum eBUFFER_SEEK { BUFFER_SEEK_DEBUT = 0, BUFFER_SEEK_COURANT = 1, BUFFER_SEEK_FIN = 2 };
// Packing and coding of the saved bytes: only the plain form is in use.
enum eBUFFER_PACKMETHOD { BUFFER_PACK_AUCUN = 0 };
enum eBUFFER_CRYPTMETHOD { BUFFER_CRYPT_AUCUN = 0 };

// How a text is read back.
enum EModeTString {
    MODETSTRING_DEFAUT = 0,     // marked form or a zero byte, else the old form
    MODETSTRING_MARQUE = 1,     // marked form or a zero byte, nothing else
    MODETSTRING_ANCIEN = 2,     // the old form: narrow text up to its null, no marks
    MODETSTRING_MARQUE_SEUL = 3 // marked form only
};

inline constexpr uint32_t nMARK_START_TSTRINGUTF8 = 0xF188CEFF;
inline constexpr uint32_t nMARK_END_TSTRINGUTF8 = 0xE198EDFE;
// Code pages of the old form.
inline constexpr unsigned nCODEPAGE_1252 = 1252;
inline constexpr unsigned nCODEPAGE_UTF8 = 65001;

// Receives a text read from the buffer.
class IStringFiller {
public:
    virtual bool vbRemplit(const wchar_t* psz, size_t nLongueur) = 0;

protected:
    ~IStringFiller() = default;
};

class CKVBuffer {
public:
    explicit CKVBuffer(size_t nTailleInitiale = 0, size_t nCroissance = 256);
    CKVBuffer(const CKVBuffer&) = delete;
    CKVBuffer& operator=(const CKVBuffer&) = delete;
    ~CKVBuffer();

    // Writes at the position, growing the buffer; false when memory runs out.
    bool Set(const void* p, size_t nTaille);
    bool Set32(uint32_t n) { return Set(&n, sizeof n); }
    // Reads up to nTaille bytes from the position; the count read.
    size_t dwGet(void* p, size_t nTaille);
    // False, and the position left alone, when four bytes do not remain.
    bool bGet32(uint32_t& n);
    // Moves the position, kept within the bytes in use.
    void Seek(long long nDecalage, eBUFFER_SEEK eOrigine);
    size_t nGetPosition() const { return m_nPosition; }
    size_t nGetTaille() const { return m_nUtilise; }
    size_t nReste() const { return m_nUtilise - m_nPosition; }
    const unsigned char* pGetDonnees() const { return m_pby; }

    // The bytes in use: cut, or grown with zeros.
    bool SetSize(size_t nTaille);
    // The memory held, never below the bytes in use.
    bool Resize(size_t nCapacite);
    void ClearAll();

    // The caller takes the memory (free() releases it); the buffer is left empty.
    unsigned char* GetOwnershipMemory(size_t* pnTaille);
    // The buffer takes memory from malloc() holding nTaille bytes, position at the start.
    void GiveOwnershipMemory(unsigned char* pby, size_t nTaille);
    // Hands everything over to clCible; this buffer is left empty.
    void Transfert(CKVBuffer& clCible);

    void SetModeDeserialTString(EModeTString e) { m_eModeTString = e; }
    EModeTString eGetModeDeserialTString() const { return m_eModeTString; }
    eBUFFER_PACKMETHOD eGetPackMethod() const { return m_ePack; }
    eBUFFER_CRYPTMETHOD eGetCryptMethod() const { return m_eCrypt; }

    // The marked form of the text (null counts as empty); with bZeroSiVide an empty text is
    // one zero byte.
    bool SaveStringNewUtf8Mark(const wchar_t* psz, bool bZeroSiVide);
    // What saved objects write: empty texts as one zero byte.
    bool SetString(const wchar_t* psz) { return SaveStringNewUtf8Mark(psz, true); }
    CKVBuffer& operator<<(const CTString& s);

    // The readers. nCodePage is that of the old form. nReadString writes the text with its
    // null into a buffer of nTaille characters and answers that count, or a negative value
    // (the position left alone) when the text cannot be read or does not fit.
    int nReadString(wchar_t* psz, int nTaille, EModeTString eMode, unsigned nCodePage);
    bool bReadString(CTString& s, EModeTString eMode, unsigned nCodePage);
    bool bReadString(CXYString<wchar_t>& s, EModeTString eMode, unsigned nCodePage);
    bool bReadString(IStringFiller& clCible, EModeTString eMode, unsigned nCodePage);
    // A text from malloc(), or null.
    wchar_t* pszReadCreateString(EModeTString eMode, unsigned nCodePage);
    // With the mode set by SetModeDeserialTString and code page 1252; a failure empties s.
    CKVBuffer& operator>>(CTString& s);
    // Passes over one text; false when there is none to pass.
    bool bSeekString(EModeTString eMode);
    // The old form into psz (nTaille bytes with the null); the count with the null, or -1.
    int nReadStringOldAnsi(char* psz, int nTaille);

protected:
    // Where the text at the position lies, checked whole; the position is not moved.
    struct STTexteLu {
        size_t nDebut = 0;    // first byte of the text
        size_t nLongueur = 0; // bytes of the text, null excluded
        size_t nTotal = 0;    // bytes the form takes
        bool bUtf8 = true;    // false: the old form, in the code page
    };
    bool __bReadEnteteString(bool bZeroPermis, STTexteLu& st) const;
    bool _bLocaliseTexte(EModeTString eMode, STTexteLu& st) const;
    bool _bReserve(size_t nCapacite);

    unsigned char* m_pby = nullptr;
    size_t m_nCapacite = 0;
    size_t m_nUtilise = 0;
    size_t m_nPosition = 0;
    size_t m_nCroissance;
    eBUFFER_PACKMETHOD m_ePack = BUFFER_PACK_AUCUN;
    eBUFFER_CRYPTMETHOD m_eCrypt = BUFFER_CRYPT_AUCUN;
    EModeTString m_eModeTString = MODETSTRING_DEFAUT;
    size_t m_nDebutCodage = 0; // where coding would start: after the main header
};

// Length-prefixed blocks, so that a reader skips what a later writer added, and the main
// header of a saved file.
class CKVBufferMark : public CKVBuffer {
public:
    using CKVBuffer::CKVBuffer;

    // Writes a 32-bit zero and answers its position, for s_WriteEndMark.
    static size_t s_dwWriteBeginMark(CKVBuffer& clBuffer);
    // Writes at nPosition the length from there to the end, its own four bytes included, and
    // goes back to the end; answers that length.
    static uint32_t s_WriteEndMark(CKVBuffer& clBuffer, size_t nPosition);
    // Reads a block's length and answers where the block ends. A short read is length 0, the
    // position put back.
    static size_t s_dwReadBeginMark(CKVBuffer& clBuffer, unsigned* pnLongueur);
    // Goes to the end of the block, past whatever of it was not read.
    static void s_ReadEndMark(CKVBuffer& clBuffer, size_t nFin) {
        clBuffer.Seek(static_cast<long long>(nFin), BUFFER_SEEK_DEBUT);
    }

    // At byte 0: the header size (12), a and b; coding would start after them.
    bool WriteEntetePrincipale(uint32_t a, uint32_t b);
    // 0 when the header holds the expected words, the position after it; 1 when it is cut
    // short, 2 when its size is below 12, 3 or 4 when a or b differs. *pa and *pb get what
    // was read.
    int nReadEntetePrincipale(uint32_t nAttenduA, uint32_t nAttenduB, unsigned* pa, unsigned* pb);
};
