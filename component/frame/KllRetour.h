// How a stub hands its result to the VM of its call: one overload per form of value, each
// calling IVM::bRetourneValeur with the address of the value and its type code. A context
// without a VM (or no context) receives nothing: the value is dropped.
//
// nType is the type code of the row or signature that the stub serves. It decides only where
// one C++ form stands for several script types: an int is a boolean (1, sent as 0 or 1), a
// character (17) or an integer (8, any other code); a bare pointer goes with nType as it is.
// Every other form has its own code, whatever nType says.
#pragma once
#include <cstdint>

class CAny;
class CCtxInfo;
class CDateTime;
class CKLBIN;
class CKLMemoImage;
class IKLTableau;
class IObjetBase;
template <class T> class CXYString;

void KllRetourne(CCtxInfo* pclCtx, unsigned nType, int n);
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, bool b);                      // 1
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, int64_t n);                   // 9
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, double d);                    // 12
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const wchar_t* psz);          // 122
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CXYString<wchar_t>& s); // 16
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CXYString<char>& s);    // 19
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CDateTime& dt);         // 26
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CKLBIN& bin);           // 28
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CAny& any);             // 31
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, IObjetBase* piObjet);         // 111
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, IKLTableau* piTableau);       // 112
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, const CKLMemoImage& clImage); // 30
// Any other pointer (a carrier, a font), under the row's own code.
void KllRetourne(CCtxInfo* pclCtx, unsigned nType, void* p);
