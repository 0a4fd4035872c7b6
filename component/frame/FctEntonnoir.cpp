#include "FctEntonnoir.h"

#include "Any.h"
#include "DateTime.h"
#include "KVResult.h"
#include "Utf8.h"
#include "VM.h"

#include <string>

namespace {

// Runs function nFonction of the standard library on the one parameter stacked before it, the
// result into clRecepteur.
int s_bAppelle(IVM* piVM, int nFonction, CAny& clRecepteur, CXError* pclErreur) {
    if (!piVM->bEmpileAny(&clRecepteur))
        return 0;
    return piVM->bAppelleFonctionVM(FONCTIONVM_COMPOSANTE, nFonction, 0, 1, pclErreur);
}

int s_bConvertitDate(IVM* piVM, CXError* pclErreur, CDateTime* pclDateHeure, int nFonction) {
    if (!piVM || !pclDateHeure)
        return 0;
    if (!piVM->bEmpileDateHeure(pclDateHeure))
        return 0;
    CAny clRecepteur;
    if (!s_bAppelle(piVM, nFonction, clRecepteur, pclErreur))
        return 0;
    // The host answers the date-time as its digit text.
    const wchar_t* pszTexte = nullptr;
    if (!KV_bSucces(clRecepteur.__nCastToString(&pszTexte)) || !pszTexte)
        return 0;
    return pclDateHeure->FromString<wchar_t>(pszTexte) ? 1 : 0;
}

} // namespace

namespace FctEntonnoir {

int bUrlEncode(IVM* piVM, CXError* pclErreur, const CXYString<wchar_t>& sTexte,
               CXYString<wchar_t>* psOut) {
    if (!piVM || sTexte.bVide())
        return 0;
    const std::string sUtf8 = KVUtf8::VersUtf8(sTexte.sv());
    if (!piVM->bEmpileChaineA(sUtf8.c_str(), 0))
        return 0;
    CAny clRecepteur;
    const int bResultat = s_bAppelle(piVM, FONCTIONVM_URL_ENCODE, clRecepteur, pclErreur);
    if (!bResultat)
        return 0;
    CXYString<wchar_t> sEncode;
    if (clRecepteur.nGetType() != KVTYPE_NONE && !KV_bSucces(clRecepteur.__nFillString(sEncode)))
        return 0;
    if (psOut) {
        if (sEncode.bVide())
            psOut->Vide();
        else
            *psOut = sEncode;
    }
    return bResultat;
}

int bDateHeureUTCVersLocale(IVM* piVM, CXError* pclErreur, CDateTime* pclDateHeure) {
    return s_bConvertitDate(piVM, pclErreur, pclDateHeure, FONCTIONVM_UTC_VERS_LOCALE);
}

int bDateHeureLocaleVersUTC(IVM* piVM, CXError* pclErreur, CDateTime* pclDateHeure) {
    return s_bConvertitDate(piVM, pclErreur, pclDateHeure, FONCTIONVM_LOCALE_VERS_UTC);
}

} // namespace FctEntonnoir
