#include "oauth/OAuth2Parametres.h"

#include "foundation/KVBuffer.h"

#include <array>

namespace {
constexpr uint32_t knVersionSauvee = 1;
constexpr size_t knNbChamps = 0
#define KV_OAUTH2_COMPTE(Champ, Propriete) +1
    KV_OAUTH2_CHAMPS(KV_OAUTH2_COMPTE)
#undef KV_OAUTH2_COMPTE
    ;
} // namespace

// The count starts afresh: the copy is a new object.
COAuth2Parametres::COAuth2Parametres(const COAuth2Parametres& o)
    : CImplInterfaceAddRefRelease<IOAuth2Parametres, CAddRefRelease>()
#define KV_OAUTH2_COPIE(Champ, Propriete) , m_s##Champ(o.m_s##Champ)
          KV_OAUTH2_CHAMPS(KV_OAUTH2_COPIE)
#undef KV_OAUTH2_COPIE
{
}

bool COAuth2Parametres::vToBuffer(CKVBuffer& clBuffer) const {
    bool b = clBuffer.Set32(knVersionSauvee);
    const size_t nMarque = CKVBufferMark::s_dwWriteBeginMark(clBuffer);
#define KV_OAUTH2_ECRIT(Champ, Propriete) b = b && clBuffer.SetString(m_s##Champ.pszGet());
    KV_OAUTH2_CHAMPS(KV_OAUTH2_ECRIT)
#undef KV_OAUTH2_ECRIT
    CKVBufferMark::s_WriteEndMark(clBuffer, nMarque);
    return b;
}

bool COAuth2Parametres::vFromBuffer(CKVBuffer& clBuffer) {
    uint32_t nVersion = 0;
    if (!clBuffer.bGet32(nVersion))
        return false;
    unsigned nLongueur = 0;
    const size_t nFin = CKVBufferMark::s_dwReadBeginMark(clBuffer, &nLongueur);
    if (nLongueur < 4 || nFin > clBuffer.nGetTaille())
        return false;
    bool bLu = true;
    if (nVersion == knVersionSauvee) {
        // All or nothing: the texts change only when the seven were read within the block.
        std::array<CXYString<wchar_t>, knNbChamps> tabLus;
        for (CXYString<wchar_t>& s : tabLus)
            bLu = bLu && clBuffer.bReadString(s, MODETSTRING_DEFAUT, nCODEPAGE_1252);
        bLu = bLu && clBuffer.nGetPosition() <= nFin;
        if (bLu) {
            size_t i = 0;
#define KV_OAUTH2_LIT(Champ, Propriete) m_s##Champ = tabLus[i++];
            KV_OAUTH2_CHAMPS(KV_OAUTH2_LIT)
#undef KV_OAUTH2_LIT
        }
    }
    CKVBufferMark::s_ReadEndMark(clBuffer, nFin);
    return bLu;
}
