#include "KllRetour.h"

#include "AnyTypes.h"
#include "VM.h"

namespace {

void Retourne(CCtxInfo* pclCtx, const void* pValeur, unsigned nType) {
    if (IVM* piVM = CCtxInfo::s_piGetVM(pclCtx))
        piVM->bRetourneValeur(pclCtx, pValeur, static_cast<int>(nType));
}

} // namespace

void KllRetourne(CCtxInfo* pclCtx, unsigned nType, int n) {
    if (nType == KVTYPE_KLBOOL) {
        const int b = n != 0;
        Retourne(pclCtx, &b, KVTYPE_KLBOOL);
    } else if (nType == KVTYPE_KLCARA) {
        const char c = static_cast<char>(n);
        Retourne(pclCtx, &c, KVTYPE_KLCARA);
    } else {
        Retourne(pclCtx, &n, KVTYPE_KLI4);
    }
}

void KllRetourne(CCtxInfo* pclCtx, unsigned, bool b) {
    const int n = b;
    Retourne(pclCtx, &n, KVTYPE_KLBOOL);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, int64_t n) {
    Retourne(pclCtx, &n, KVTYPE_KLI8);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, double d) {
    Retourne(pclCtx, &d, KVTYPE_KLR8);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const wchar_t* psz) {
    Retourne(pclCtx, &psz, KVTYPE_TEXT);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CXYString<wchar_t>& s) {
    Retourne(pclCtx, &s, KVTYPE_KLDSTRW);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CXYString<char>& s) {
    Retourne(pclCtx, &s, KVTYPE_KLDSTRA);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CDateTime& dt) {
    Retourne(pclCtx, &dt, KVTYPE_KLDATETIME);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CKLBIN& bin) {
    Retourne(pclCtx, &bin, KVTYPE_KLBIN);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CAny& any) {
    Retourne(pclCtx, &any, KVTYPE_ANY);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, IObjetBase* piObjet) {
    Retourne(pclCtx, &piObjet, KVTYPE_KLDINO);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, IKLTableau* piTableau) {
    Retourne(pclCtx, &piTableau, KVTYPE_ARRAY);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CKLMemoImage& clImage) {
    Retourne(pclCtx, &clImage, 30);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, void* p) {
    Retourne(pclCtx, &p, nType);
}
