// The component's message block and its lookup. The block is generated at build time from
// Messages.def by tools/PackMessages; bGetResAnsi60 is the resource function that the module
// info record hands to the message loader.
#pragma once
#include "Resources.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// The packed records, from the generated source.
extern const unsigned char _pbyBufferRes60[];
extern const size_t _nTailleBufferRes60;

class CResAnsi60 {
public:
    // The two marks and the 89 messages.
    static constexpr int knMaxRecord = 91;
    static constexpr unsigned knNumeroDebut = 0x0101;
    static constexpr unsigned knNumeroFin = 0xFFFF;
    // Offsets in a record.
    static constexpr size_t knOffsetNumero = 2;
    static constexpr size_t knOffsetFlags = 4;
    static constexpr size_t knOffsetTaille = 5;
    static constexpr size_t knOffsetTexte = 7;
    // Flags: the usage value, and the UTF-16 mark (clear for UTF-8).
    static constexpr unsigned knMasqueUtilisation = 0x03;
    static constexpr unsigned knFlagUtf16 = 0x40;

    struct STRessourceBloc {
        const unsigned char* pbyBloc;
        size_t nTailleBloc;
        int (*pfnCompare)(const void* pCle, const void* pElement);
        uint32_t tabOffset[knMaxRecord];
        // Set once the table is whole; readers that see it set see the table.
        std::atomic<int> bConstruit;
        int nNbRecord;
    };
    static STRessourceBloc m_stRessource;

    // bsearch order: the key is an unsigned number, the element an offset in the block.
    static int nCompareRes(const void* pCle, const void* pElement);
    // Walks the block once and fills the offset table.
    static void s_Construit();
};

// Finds stRessource.nNumero among the messages: fills the text pointer, its packed length, the
// usage value and the encoding, and answers 1; answers 0 and leaves the record alone otherwise.
// The two marks are never found.
int bGetResAnsi60(STRessourceModule& stRessource);
