// The saved byte form read back from arbitrary bytes, as a script's saved token text may be:
// the texts in every reading mode, the blocks, the main header and the OAuth parameters. A read
// either fails with the position where it was, or moves it forward within the bytes.
#include "foundation/KVBuffer.h"
#include "oauth/OAuth2Parametres.h"

#include "Ref.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void Verifie(bool b) {
    if (!b)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pby, size_t nTaille) {
    for (int nMode = 0; nMode <= 3; ++nMode) {
        CKVBuffer cl;
        cl.Set(pby, nTaille);
        cl.Seek(0, BUFFER_SEEK_DEBUT);
        for (;;) {
            const size_t nAvant = cl.nGetPosition();
            CTString s;
            if (!cl.bReadString(s, static_cast<EModeTString>(nMode), nCODEPAGE_1252)) {
                Verifie(cl.nGetPosition() == nAvant);
                break;
            }
            Verifie(cl.nGetPosition() > nAvant && cl.nGetPosition() <= nTaille);
        }
    }

    CKVBufferMark clMarque;
    clMarque.Set(pby, nTaille);
    unsigned a = 0, b = 0;
    if (clMarque.nReadEntetePrincipale(1, 1, &a, &b) != 0)
        clMarque.Seek(0, BUFFER_SEEK_DEBUT);
    unsigned nLongueur = 0;
    const size_t nFin = CKVBufferMark::s_dwReadBeginMark(clMarque, &nLongueur);
    (void)clMarque.bSeekString(MODETSTRING_DEFAUT);
    CKVBufferMark::s_ReadEndMark(clMarque, nFin);
    Verifie(clMarque.nGetPosition() <= nTaille);

    CKVBuffer clParametres;
    clParametres.Set(pby, nTaille);
    clParametres.Seek(0, BUFFER_SEEK_DEBUT);
    auto cl = CRef<COAuth2Parametres>::Retain(new COAuth2Parametres);
    while (clParametres.nReste() && cl->vFromBuffer(clParametres)) {
    }
    return 0;
}
