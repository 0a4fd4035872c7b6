// The XML and image conversions of CComposanteGGL. They live with the XML objects because
// they need them; the class itself stands in frame/.
#include "frame/ComposanteGGL.h"

#include "connection/HTTPRequete.h"
#include "frame/ModuleInfo.h"
#include "frame/ObjetComposante.h"
#include "xmlobject/ContenuXMLSortie.h"
#include "xmlobject/XmlObject.h"
#include "xmlobject/XmlObjectListe.h"

#include "Any.h"
#include "ImageService.h"
#include "MemoImage.h"
#include "VM.h"
#include "Ref.h"
#include "Utf8.h"
#include "XMLService.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

// The namespaces written on the root of every entry; the prefixes are part of the contract,
// because description rows match on them.
constexpr struct {
    const char* pszAttribut;
    const char* pszURI;
} gtabNamespaces[] = {
    {"xmlns", "http://www.w3.org/2005/Atom"},
    {"xmlns:gd", "http://schemas.google.com/g/2005"},
    {"xmlns:gCal", "http://schemas.google.com/gCal/2005"},
    {"xmlns:openSearch", "http://a9.com/-/spec/opensearchrss/1.0/"},
    {"xmlns:gContact", "http://schemas.google.com/contact/2008"},
    {"xmlns:exif", "http://schemas.google.com/photos/exif/2007"},
    {"xmlns:gphoto", "http://schemas.google.com/photos/2007"},
    {"xmlns:media", "http://search.yahoo.com/mrss/"},
};

// The image's MIME type, as the host's image service tells it from the bytes or the file.
void MimeDe(CKLMemoImage* pclImage, const CKLBIN& clOctets, CXYString<char>& czMime) {
    auto clMain = CComposanteGGL::s_piGetIMainIMG();
    if (!clMain)
        return;
    CXError clErreur;
    auto clFabrique = CRef<IImageFactory>::Adopt(clMain->vpiGetImageFactory(&clErreur));
    if (!clFabrique)
        return;
    // ".jpg" is only a hint for bytes that do not tell their kind.
    auto clImage = CRef<IImage>::Adopt(
        pclImage->bEnMemoire()
            ? clFabrique->vpiCreeImage(clOctets.pGetDonnees(), clOctets.nGetTaille(), L".jpg", &clErreur)
            : clFabrique->vpiChargeImage(pclImage->pszGetChemin(), &clErreur));
    if (!clImage || !clErreur.bEstPropre())
        return;
    CTString sMime = CHTTPRequete::s_pszGetMIME(clImage->veGetTypeImage());
    KVUtf8::nVersUtf8(sMime.sv(), czMime);
}

} // namespace

void CComposanteGGL::s_AddNamespaceAttributes(INoeudXML* piNoeud) {
    if (!piNoeud)
        return;
    for (const auto& st : gtabNamespaces)
        piNoeud->bSetAttributUTF8(st.pszAttribut, st.pszURI);
}

void CComposanteGGL::s_GetChaineXml(INoeudXML* piNoeud, CXYString<char>& czSortie, CXError* pclErreur) {
    czSortie.Vide();
    if (!piNoeud)
        return;
    auto clDocument = s_piGetXMLDoc(nullptr);
    if (!clDocument)
        return;
    clDocument->SetEncodage(L"UTF-8");
    if (!clDocument->bImporteRacine(piNoeud, pclErreur))
        return;
    CContenuXMLSortie<CXYString<char>> clSortie(czSortie);
    clDocument->bEcrit(clSortie, FORMATXML_SANS_DECLARATION, pclErreur);
}

CXYString<char> CComposanteGGL::GglVersXML(CCtxInfo*, CXError* pclErreur, const CAny* pclValeur) {
    auto Refuse = [pclErreur]() {
        if (pclErreur)
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_INVALID_PARAMETER, 1);
        return CXYString<char>();
    };
    if (!pclValeur || pclValeur->bEstTableau() || pclValeur->nGetType() != KVTYPE_KLDINO)
        return Refuse();
    IInterfaceObjetBase* pi = pclValeur->piGetObjet();
    IInterfaceObjetBase* piBase = pi ? pi->vpiGetObjetBase() : nullptr;
    CObjetComposanteBase* pclObjet =
        piBase ? CObjetComposanteBase::s_pclDepuisObjetBase(static_cast<IObjetBase*>(piBase)) : nullptr;
    CXmlObject* pclXml = pclObjet ? pclObjet->vpclGetXmlObjectScript() : nullptr;
    // Only an object read from a feed has an XML form.
    if (!pclXml || !pclXml->piGetNoeud())
        return Refuse();
    auto clNoeud = CRef<INoeudXML>::Retain(pclXml->piGetNoeud());
    CXYString<char> czXml;
    s_GetChaineXml(clNoeud.pGet(), czXml, pclErreur);
    return czXml;
}

int CComposanteGGL::s_bMEMOIMG2BIN(CKLMemoImage* pclImage, CKLBIN& clSortie, CXError* pclErreur,
                                   CXYString<char>* pczMime) {
    if (!pclImage)
        return 0;
    if (pclImage->bEnMemoire()) {
        clSortie = *pclImage->pclGetBinDataEx();
    } else {
        const wchar_t* pszChemin = pclImage->pszGetChemin();
        if (!pszChemin || !*pszChemin)
            return 1;
        const std::string sChemin = KVUtf8::VersUtf8(pszChemin);
        std::unique_ptr<FILE, int (*)(FILE*)> clFichier(std::fopen(sChemin.c_str(), "rb"), &std::fclose);
        if (!clFichier) {
            if (pclErreur)
                pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_NOT_FOUND, pszChemin);
            return 0;
        }
        struct stat stInfo {};
        if (fstat(fileno(clFichier.get()), &stInfo) != 0) {
            if (pclErreur)
                pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_FILE_SIZE, pszChemin);
            return 0;
        }
        std::unique_ptr<unsigned char, void (*)(void*)> clBloc(
            static_cast<unsigned char*>(std::malloc(stInfo.st_size > 0 ? stInfo.st_size : 1)), &std::free);
        size_t nLu = clBloc ? std::fread(clBloc.get(), 1, static_cast<size_t>(stInfo.st_size), clFichier.get()) : 0;
        clSortie = CKLBIN(clBloc.get(), nLu);
    }
    if (pczMime)
        MimeDe(pclImage, clSortie, *pczMime);
    return 1;
}

void CComposanteGGL::s_Liste2ChaineRC(CXmlObjectListe* pclListe, CXYString<wchar_t>& sSortie) {
    sSortie.Vide();
    if (!pclListe)
        return;
    for (int i = 0; i < pclListe->nGetNbElement(); ++i) {
        CXError clErreur;
        CXYString<wchar_t> sValeur;
        if (!pclListe->pclGetElement(i)->vbGet(sValeur, clErreur))
            continue;
        // On the index, not on what was written: an element 0 with no value leaves a leading
        // separator.
        if (i != 0)
            sSortie.nConcatene(std::wstring_view(L"\r\n"));
        sSortie.nConcatene(sValeur.sv());
    }
}

void CComposanteGGL::s_ChaineRC2Liste(const CXYString<wchar_t>& sTexte, CXmlObjectListe* pclListe,
                                      PFNXMLCREATION pfnCreation, eTypePropXML eType) {
    if (sTexte.bVide() || !pclListe || !pfnCreation)
        return;
    std::wstring_view sv = sTexte.sv();
    for (;;) {
        size_t n = sv.find(L"\r\n");
        CXmlObject* pcl = pfnCreation(nullptr, eType, nullptr, nullptr);
        if (pcl) {
            CXError clErreur;
            pcl->vbSet(CXYString<wchar_t>(sv.substr(0, n)).pszGet(), clErreur);
            pclListe->Ajoute(pcl);
        }
        if (n == std::wstring_view::npos)
            break;
        sv.remove_prefix(n + 2);
    }
}

// The script function: it answers through the call record, and its error is the library's.
void GglVersXML(STKLAppel* pstAppel, CComposanteGGL* pclLibrairie, CAny* pclValeur) {
    CXYString<char> czXml = CComposanteGGL::GglVersXML(
        nullptr, pclLibrairie ? pclLibrairie->pclGetError() : nullptr, pclValeur);
    if (pstAppel && pstAppel->piVM)
        pstAppel->piVM->bRetourneValeurAppel(pstAppel->nAppel, &czXml, KVTYPE_KLDSTRA);
}

#define KLL_LIBRE_GglVersXML KLL_OUI
#include "frame/KllMethodStubs.h"
