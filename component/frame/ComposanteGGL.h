// CComposanteGGL: the library object the host makes, and the static services through which
// every connector reaches the host's HTTP, JSON, XML and image services.
#pragma once
#include "KLLibrary.h"
#include "Ref.h"
#include "TString.h"
#include "XYString.h"

#include <cstdint>

class IHTTP;
class IGestionnaireXML;
class IContenuJSON;
class IElementJSON;
class IDocumentXML;
class IMainIMG;
class ITypeDescription;
class IKLTableau;
class IInterfGGLCnx;
class IVM;
class INoeudXML;
class CAny;
class CCtxInfo;
class CKLBIN;
class CKLMemoImage;
class CXmlObject;
class CXmlObjectListe;
class CXmlObjectMulti;
enum eTypePropXML : int32_t;
using PFNXMLCREATION = CXmlObject* (*)(INoeudXML*, eTypePropXML, CXmlObjectMulti*, const char*);
class CAuthTokenDINO;
class COAuth2ParametresDINO;

class CComposanteGGL : public CKLLibrary {
public:
    CComposanteGGL() = default;
    ~CComposanteGGL() override;

    // Takes the host's HTTP service, or refuses the component with 600033.
    int bFinInit() override;
    // Gives back the HTTP service and the shared XML and JSON services.
    void TermCompo() override;
    void* pGetVariableAdresse(int) override { return nullptr; }

    IHTTP* piGetHTTP() const { return m_clHTTP.pGet(); }

    // A new reference to the host's HTTP service; 600033 when the host has none and the error
    // held nothing before.
    static CRef<IHTTP> s_piQueryIHTTP(CXError* pclErreur);
    // The host's parse of UTF-8 JSON text; null when the service is missing or the text is not
    // JSON (the cause in the error).
    static CRef<IElementJSON> s_piGetJSON(const char* pszTexte, CXError* pclErreur);
    // The host's image service, or null.
    static CRef<IMainIMG> s_piGetIMainIMG();
    // A new document: empty for a null or empty text, else the text parsed; null when the
    // host has no XML service or the text does not parse.
    static CRef<IDocumentXML> s_piGetXMLDoc(const wchar_t* pszTexte);
    // The same, with what the service said when it could not make or parse the document.
    static CRef<IDocumentXML> s_piGetXMLDoc(const wchar_t* pszTexte, CXError& clCause);
    // An empty host array for elements of the given type; null, and the array released, on
    // failure.
    static CRef<IKLTableau> s_pclAlloueTableauVMVide(IVM* piVM, CXError* pclErreur,
                                                     ITypeDescription* piType);
    static void s_CWString2CTString(const CXYString<wchar_t>& sSource, CTString& sCible);
    // The interactive authorisation: the host's login dialogue runs on the provider's login
    // address, and the browser's return goes to the provider's side for the token exchange.
    // bParNavigateur: 1 when the dialogue must run in the browser. nFonction: the row of the
    // asking script function in the function table, whose name the dialogue shows. Only the
    // desktop kind of runtime has a dialogue; any other gets 600055.
    // The kind of runtime, as the host reports it, that has a login dialogue.
    static constexpr int knProduitAvecDialogue = 1;
    static bool s_bAuthIdentifie(IInterfGGLCnx& clInterface, IVM* piVM, int bParNavigateur,
                                 int nFonction, CXError& clErreur);

    // A clean-up of a layer above the frame, run once by TermCompo (eight at most).
    static void s_AjouteFinDeComposante(void (*pfnFin)());
    // ---- XML and image conversions (xmlobject/ComposanteGGLXml.cpp)
    // The namespace attributes of the root of every entry the component writes.
    static void s_AddNamespaceAttributes(INoeudXML* piNoeud);
    // The UTF-8 text of the node and what is under it, with no declaration; "" for a null node.
    static void s_GetChaineXml(INoeudXML* piNoeud, CXYString<char>& czSortie, CXError* pclErreur);
    // The script function: the XML text of an object read from a feed. Any other value, or an
    // object that was never read, is 600048 on argument 1 and gives "".
    static CXYString<char> GglVersXML(CCtxInfo* pclCtx, CXError* pclErreur, const CAny* pclValeur);
    // An image as bytes, and its MIME type when pczMime is given; 0 on failure (600008 for a
    // file that cannot be opened, 600045 for one whose size cannot be read).
    static int s_bMEMOIMG2BIN(CKLMemoImage* pclImage, CKLBIN& clSortie, CXError* pclErreur,
                              CXYString<char>* pczMime);
    // The values of the elements joined by CR LF. The separator goes before every element but
    // the first by index, so an element 0 that gives no value still leaves a leading one.
    static void s_Liste2ChaineRC(CXmlObjectListe* pclListe, CXYString<wchar_t>& sSortie);
    // The text cut at each CR LF, one new element per piece, the piece after the last CR LF
    // included.
    static void s_ChaineRC2Liste(const CXYString<wchar_t>& sTexte, CXmlObjectListe* pclListe,
                                 PFNXMLCREATION pfnCreation, eTypePropXML eType);
    // AuthIdentifie: the token of the provider that the parameters describe, through the
    // login dialogue. Always an object (count 0), without a token when none was obtained.
    static CAuthTokenDINO* AuthIdentifie(IVM* piVM, COAuth2ParametresDINO* pclParametres,
                                         CXError& clErreur);

    // Shared by every library object; ended by TermCompo of any, taken again at next use.
    static IGestionnaireXML* ms_piGestionXML;
    static IContenuJSON* ms_piContenuJSON;

private:
    CRef<IHTTP> m_clHTTP;
};

CRef<IDocumentXML> piGetXMLDoc(const wchar_t* pszTexte);

// The library factory of the component descriptor: a new library object, owned by the caller.
extern "C" void* __KLL_COMPOSANTE_FACTORY_60();
