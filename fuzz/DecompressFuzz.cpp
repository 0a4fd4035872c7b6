// The unpacking of message texts on arbitrary bytes: whatever the input, it must stay inside
// its output, end it with a zero byte and answer one of its result words.
#include "DataCompressor.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void Essaie(const uint8_t* pbyIn, size_t nTaille, int nSortie) {
    // Exactly the room given, so that the address sanitizer sees any write past it.
    std::vector<unsigned char> tab(static_cast<size_t>(nSortie));
    int nLongueur = -1;
    const int nRes = CDataCompressor::nDeCompress(tab.data(), nSortie, pbyIn,
                                                  static_cast<int>(nTaille), &nLongueur);
    switch (nRes) {
    case CDataCompressor::DC_OK:
    case CDataCompressor::DC_TRONQUE:
    case CDataCompressor::DC_ERR_OCTET_NUL:
    case CDataCompressor::DC_ERR_ECHAPPEMENT:
        break;
    default:
        std::abort();
    }
    if (nLongueur < 0) std::abort();
    if (nRes == CDataCompressor::DC_OK && nLongueur > nSortie - 1) std::abort();
    if (nRes == CDataCompressor::DC_TRONQUE && nLongueur <= nSortie - 1) std::abort();
    if (tab[static_cast<size_t>(nLongueur < nSortie - 1 ? nLongueur : nSortie - 1)] != 0)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pbyData, size_t nTaille) {
    if (nTaille > 1 << 16) return 0;
    // A small room that most inputs overrun, and one that no input can.
    Essaie(pbyData, nTaille, 8);
    Essaie(pbyData, nTaille, static_cast<int>(nTaille * 3 / 2 + 2 + 255));
    return 0;
}
