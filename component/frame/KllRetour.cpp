#include "KllRetour.h"

#include "VM.h"

namespace {

void Retourne(CCtxInfo* pclCtx, const void* pValeur, unsigned nType) {
    if (IVM* piVM = CCtxInfo::s_piGetVM(pclCtx))
        piVM->bRetourneValeur(pclCtx, pValeur, static_cast<int>(nType));
}

} // namespace

void KllRetourne(CCtxInfo* pclCtx, unsigned nType, int n) {
    if (nType == 1) {
        const int b = n != 0;
        Retourne(pclCtx, &b, 1);
    } else if (nType == 17) {
        const char c = static_cast<char>(n);
        Retourne(pclCtx, &c, 17);
    } else {
        Retourne(pclCtx, &n, 8);
    }
}

void KllRetourne(CCtxInfo* pclCtx, unsigned, bool b) {
    const int n = b;
    Retourne(pclCtx, &n, 1);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, int64_t n) {
    Retourne(pclCtx, &n, 9);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, double d) {
    Retourne(pclCtx, &d, 12);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const wchar_t* psz) {
    Retourne(pclCtx, &psz, 122);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CXYString<wchar_t>& s) {
    Retourne(pclCtx, &s, 16);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CXYString<char>& s) {
    Retourne(pclCtx, &s, 19);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CDateTime& dt) {
    Retourne(pclCtx, &dt, 26);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CKLBIN& bin) {
    Retourne(pclCtx, &bin, 28);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CAny& any) {
    Retourne(pclCtx, &any, 31);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, IObjetBase* piObjet) {
    Retourne(pclCtx, &piObjet, 111);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, IKLTableau* piTableau) {
    Retourne(pclCtx, &piTableau, 112);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned, const CKLMemoImage& clImage) {
    Retourne(pclCtx, &clImage, 30);
}
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, void* p) {
    Retourne(pclCtx, &p, nType);
}
