#include "ResourceBlock.h"

#include <cstdlib>
#include <mutex>

namespace {

unsigned s_nMot(const unsigned char* p) { return p[0] | (static_cast<unsigned>(p[1]) << 8); }

} // namespace

CResAnsi60::STRessourceBloc CResAnsi60::m_stRessource = {
    _pbyBufferRes60, 0, &CResAnsi60::nCompareRes, {}, {0}, 0};

int CResAnsi60::nCompareRes(const void* pCle, const void* pElement) {
    const unsigned nCle = *static_cast<const unsigned*>(pCle);
    const unsigned nNumero =
        s_nMot(m_stRessource.pbyBloc + *static_cast<const uint32_t*>(pElement) + knOffsetNumero);
    return nCle < nNumero ? -1 : nCle > nNumero ? 1 : 0;
}

void CResAnsi60::s_Construit() {
    // Two threads at first use would build the same table; the lock only keeps that from
    // being a data race.
    static std::mutex s_mutex;
    std::lock_guard<std::mutex> verrou(s_mutex);
    STRessourceBloc& st = m_stRessource;
    if (st.bConstruit.load(std::memory_order_relaxed)) return;
    st.nTailleBloc = _nTailleBufferRes60;
    int nNb = 0;
    size_t nOffset = 0;
    // A record must hold its header and its text and stay inside the block; the walk stops at
    // the zero length word, or at the first record that does not.
    while (nNb < knMaxRecord && nOffset + 2 <= st.nTailleBloc) {
        const size_t nLongueur = s_nMot(st.pbyBloc + nOffset);
        if (nLongueur < knOffsetTexte || nLongueur > st.nTailleBloc - nOffset) break;
        if (knOffsetTexte + s_nMot(st.pbyBloc + nOffset + knOffsetTaille) > nLongueur) break;
        st.tabOffset[nNb++] = static_cast<uint32_t>(nOffset);
        nOffset += nLongueur;
    }
    st.nNbRecord = nNb;
    st.bConstruit.store(1, std::memory_order_release);
}

int bGetResAnsi60(STRessourceModule& stRessource) {
    CResAnsi60::STRessourceBloc& st = CResAnsi60::m_stRessource;
    if (!st.bConstruit.load(std::memory_order_acquire)) CResAnsi60::s_Construit();

    const unsigned nCle = stRessource.nNumero;
    if (nCle >= CResAnsi60::knNumeroFin) return 0;
    // The first record is the start mark; the last, when it is the stop mark, stays out too.
    int nFin = st.nNbRecord;
    if (nFin > 1 &&
        s_nMot(st.pbyBloc + st.tabOffset[nFin - 1] + CResAnsi60::knOffsetNumero) ==
            CResAnsi60::knNumeroFin)
        nFin--;
    if (nFin <= 1) return 0;
    const auto* pOffset = static_cast<const uint32_t*>(
        std::bsearch(&nCle, st.tabOffset + 1, static_cast<size_t>(nFin - 1), sizeof(uint32_t),
                     st.pfnCompare));
    if (!pOffset) return 0;

    const unsigned char* pRecord = st.pbyBloc + *pOffset;
    const unsigned nFlags = pRecord[CResAnsi60::knOffsetFlags];
    stRessource.pbyTexte = pRecord + CResAnsi60::knOffsetTexte;
    stRessource.nTaille = s_nMot(pRecord + CResAnsi60::knOffsetTaille);
    stRessource.nUtilisation = static_cast<int32_t>(nFlags & CResAnsi60::knMasqueUtilisation);
    stRessource.nEncodage = (nFlags & CResAnsi60::knFlagUtf16) ? 2 : 1;
    return 1;
}
