// CDataCompressor: the unpacking of message texts. A text is stored as base-40 symbols, three
// to a pair of bytes, over four small charsets; bytes outside them ride in escapes. The packer
// of the build tools uses the same charset tables, so that both sides agree by construction.
#pragma once
#include <cstddef>
#include <cstdint>

struct STRessourceModule;

// One charset: its bytes, in Latin-1, in symbol order (symbol 8 is index 0).
struct STCharset {
    const unsigned char* pbyCaractere;
    int nLongueur; // characters a symbol can reach
};

class CDataCompressor {
public:
    // Result words of the unpacking.
    enum : int {
        DC_OK = 0,
        DC_TRONQUE = 2,         // output cut at outSize - 1; the count went on
        DC_ERR_OCTET_NUL = 4,   // a zero byte where a symbol byte must stand
        DC_ERR_ECHAPPEMENT = 5, // an escape that runs past the input
        DC_ERR_ENCODAGE = 4,    // s_nDeCompress: an encoding other than 1 or 2
        DC_ERR_MEMOIRE = 100,   // s_nDeCompress: no work area
    };

    // Symbols: below 4 a one-character shift, 4 to 7 a lock, from 8 a character (index s - 8).
    static constexpr int knNbSymbole = 40;
    static constexpr int knPremierCaractere = 8;
    // In charset 3 these two stand for escapes, so its last table entries cannot be reached.
    static constexpr int knEchappementOctet = 38; // the byte after the pair, as it is
    static constexpr int knEchappementSuite = 39; // a count byte, then that many bytes
    static constexpr int knCharsetEchappement = 3;

    static const STCharset ms_tabCharset[4];

    // Unpacks `nInSize` bytes into `pbyOut`, writing at most nOutSize - 1 bytes and a final
    // zero byte (when nOutSize > 0). `pnLongueur`, when given, receives the whole unpacked
    // length, counted past the room when the output was cut. Result DC_OK, DC_TRONQUE,
    // DC_ERR_OCTET_NUL or DC_ERR_ECHAPPEMENT.
    static int nDeCompress(unsigned char* pbyOut, int nOutSize, const unsigned char* pbyIn,
                           int nInSize, int* pnLongueur = nullptr);

    // Unpacks the text of a found resource into a wide buffer. On entry *pnCapacite is the room
    // of `pszBuffer` in characters, terminator included; on return it holds the length of the
    // whole text. The text is cut to the room with a final null and the result is then
    // DC_TRONQUE; a failure of the unpacking or an unknown encoding leaves an empty text.
    static int s_nDeCompress(wchar_t* pszBuffer, int* pnCapacite, STRessourceModule& stRessource);
    // The whole text in a new buffer that the caller frees with free(); null on failure.
    static wchar_t* s_pszDeCompress(STRessourceModule& stRessource);
};
