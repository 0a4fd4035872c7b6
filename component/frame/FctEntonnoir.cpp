#include "FctEntonnoir.h"

#include "Any.h"
#include "DateTime.h"
#include "KVResult.h"
#include "Utf8.h"
#include "ManipAUB.h"
#include "VM.h"
#include "XError.h"

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

// ---- SOAP --------------------------------------------------------------------------------------

namespace {

// The envelope as the services expect it: the SOAP 1.1 envelope with the 1999 schema
// namespaces, and always a blank after the action, so that an action without attributes
// reads "<urn:query >".
constexpr wchar_t gszFormatSOAP[] =
    L"<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    L"xmlns:xsi=\"http://www.w3.org/1999/XMLSchema-instance\" "
    L"xmlns:xsd=\"http://www.w3.org/1999/XMLSchema\" %ls><SOAP-ENV:Header>%ls</SOAP-ENV:Header>"
    L"<SOAP-ENV:Body><%ls %ls>%ls</%ls></SOAP-ENV:Body></SOAP-ENV:Envelope>";

void s_CopieErreurHote(IHTTP* piHTTP, CXError* pclErreur) {
    CXError* pclHote = piHTTP->vpiGetErreur();
    if (pclHote && pclErreur)
        pclErreur->Copy(pclHote);
}

} // namespace

namespace FctEntonnoir {

int bSoapExecuteXML(IHTTP* piHTTP, CXError* pclErreur, const wchar_t* pszURL,
                    const wchar_t* pszEntete, const char* pszAction, const wchar_t* pszCorps,
                    const wchar_t* pszNamespace, const wchar_t* pszAttributs) {
    if (!piHTTP || !pszURL || !*pszURL || !pszAction || !*pszAction)
        return 0;
    const std::wstring sAction = KVUtf8::VersWide(pszAction);
    auto fnOu = [](const wchar_t* psz) { return psz ? psz : L""; };
    // The pieces are joined as they come: values are not escaped, the caller passes XML.
    std::wstring sEnveloppe;
    const wchar_t* apszChamps[] = {fnOu(pszNamespace), fnOu(pszEntete), sAction.c_str(),
                                   fnOu(pszAttributs), fnOu(pszCorps), sAction.c_str()};
    size_t nChamp = 0;
    for (const wchar_t* p = gszFormatSOAP; *p; ++p) {
        if (p[0] == L'%' && p[1] == L'l' && p[2] == L's') {
            sEnveloppe += apszChamps[nChamp++];
            p += 2;
        } else {
            sEnveloppe += *p;
        }
    }
    CAny clCorps;
    if (!KV_bSucces(clCorps.SetStringA(KVUtf8::VersUtf8(sEnveloppe).c_str())))
        return 0;
    STManipAUB stCorps;
    if (!KV_bSucces(clCorps.nGetManipAUB(&stCorps)))
        return 0;
    if (piHTTP->vbSoapExecute(pszURL, stCorps, L""))
        return 1;
    if (CXError* pclHote = piHTTP->vpiGetErreur(); pclHote && !pclHote->bEstPropre())
        s_CopieErreurHote(piHTTP, pclErreur);
    return 0;
}

int bSoapAjouteEntete(IHTTP* piHTTP, CXError* pclErreur, const wchar_t* pszNom, CAny& clValeur,
                      const wchar_t* pszNamespace, int bDoitComprendre) {
    if (!piHTTP)
        return 0;
    if (clValeur.nGetType() != 16 && !KV_bSucces(clValeur.__nCastTo(16, nullptr, 0)))
        return 0;
    if (piHTTP->vbSoapAjouteEntete(pszNom, clValeur, pszNamespace, bDoitComprendre))
        return 1;
    s_CopieErreurHote(piHTTP, pclErreur);
    return 0;
}

int bSoapDonneResultat(IHTTP* piHTTP, CXError* pclErreur, CAny& clValeur, eSOAPResultat eResultat,
                       int nOption) {
    if (!piHTTP)
        return 0;
    if (piHTTP->vbSoapDonneResultat(clValeur, eResultat, nOption))
        return 1;
    s_CopieErreurHote(piHTTP, pclErreur);
    return 0;
}

int bSoapErreur(IHTTP* piHTTP, CXError* pclErreur, eSOAPErreur eErreur, CTString& sTexte) {
    if (!piHTTP)
        return 0;
    CXYString<wchar_t> s;
    if (!piHTTP->vbSoapErreur(eErreur, s)) {
        s_CopieErreurHote(piHTTP, pclErreur);
        return 0;
    }
    sTexte = s.pszGet() ? s.pszGet() : L"";
    return 1;
}

} // namespace FctEntonnoir
