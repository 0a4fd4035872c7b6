// CHTTPRequete: the description of one REST or feed call before it leaves the component: URL,
// query or form parameters, extra headers, body chunks and content type. It touches no
// network; the connection turns it into the host's request record. Also the verbs, the
// content types with their MIME texts, and the map from file extensions to those types.
#pragma once
#include "ServicesGoogle.h"

#include "foundation/ListeDeBuffer.h"
#include "foundation/SimpleBuffer.h"

#include "Arrays.h"
#include "HTTPService.h"
#include "ImageService.h"
#include "TString.h"
#include "XYString.h"

#include <cstddef>

class CXError;
class IVM;

// The verb, a plain number that reaches the host unchanged. 0, 5 and anything above 6 are not
// verbs: the connection sends nothing for them.
enum HTTPMethod : int {
    HTTPGET = METHODE_HTTP_GET,
    HTTPPOST = METHODE_HTTP_POST,
    HTTPPUT = METHODE_HTTP_PUT,
    HTTPDELETE = METHODE_HTTP_DELETE,
    HTTPPATCH = METHODE_HTTP_PATCH,
};

// The rows of CHTTPRequete::s_szTabMIMEType. Append-only: file types and callers keep these
// numbers.
enum eHTTPCONTENTTYPE : int {
    HTTPCT_GOOGLE_INCONNU = 0, // also what an unknown extension maps to
    HTTPCT_FORMULAIRE = 1,
    HTTPCT_ATOM = 2,
    HTTPCT_MULTIPART_FORMULAIRE = 3,
    HTTPCT_TEXTE = 4,
    HTTPCT_CSV = 5,
    HTTPCT_TSV = 6,
    HTTPCT_HTML = 7,
    HTTPCT_WORD = 8,
    HTTPCT_ODS = 9,
    HTTPCT_ODT = 10,
    HTTPCT_RTF = 11,
    HTTPCT_SXW = 12,
    HTTPCT_EXCEL = 13,
    HTTPCT_POWERPOINT = 14,
    HTTPCT_GIF = 15,
    HTTPCT_PNG = 16,
    HTTPCT_JPEG = 17,
    HTTPCT_MULTIPART_RELATED = 18, // with the fixed boundary that multipart bodies use
    HTTPCT_BMP = 19,
    HTTPCT_PDF = 20,
    HTTPCT_JSON = 21,
    HTTPCT_DOCX = 22,
    HTTPCT_XLSX = 23,
    HTTPCT_PPTX = 24,
    HTTPCT_ODP = 25,
    HTTPCT_NB = 26,
};

// The boundary of HTTPCT_MULTIPART_RELATED, which multipart bodies must write.
inline constexpr wchar_t gszFrontiereMultipart[] = L"vbhsik745z6d_84eo0pmlk__987";

// One row of the extension map: the extension with its dot, in capitals.
struct STMIME {
    const wchar_t* pszExtension;
    eHTTPCONTENTTYPE eType;
};

class CHTTPRequete {
public:
    static constexpr size_t knNbExtension = 24;
    // The MIME text of each content type, then a null end mark.
    static const wchar_t* const s_szTabMIMEType[HTTPCT_NB + 1];
    static const STMIME s_stTabMIME[knNbExtension];

    CHTTPRequete(eSERVICESGOOGLE eService, const wchar_t* pszURL, eHTTPCONTENTTYPE eType);
    // Deep: a redirected request is sent again with all it held, body chunks included.
    CHTTPRequete(CHTTPRequete& clSource);
    CHTTPRequete& operator=(const CHTTPRequete&) = delete;
    virtual ~CHTTPRequete();

    void SetURL(const wchar_t* pszURL);
    const wchar_t* pszGetURL() const { return m_sURL.pszGet(); }
    eSERVICESGOOGLE eGetService() const { return m_eService; }

    // A null or empty text clears the type.
    void SetContentType(const wchar_t* pszType);
    // Never null: "" when there is none.
    const wchar_t* pszGetContentType() const { return m_sContentType.pszGet(); }

    // Each parameter is kept as its finished "name=value" text.
    void AjouteParametre(const wchar_t* pszNom, const wchar_t* pszValeur);
    void AjouteParametre(const wchar_t* pszNom, int nValeur);
    size_t nGetNbParametre() const { return m_tabParametres.nGetNbElement(); }

    void AjouteHeader(const wchar_t* pszNom, const wchar_t* pszValeur);
    size_t nGetNbHeader() const { return m_tabNomsHeader.nGetNbElement(); }
    // Adds every header in order; nothing at all when the two arrays disagree, which only a
    // failed append can cause.
    void RemplitEntetesHTTP(IEntetesHTTP* piEntetes) const;

    // Copies the bytes into a new chunk.
    void AjouteDonnees(const unsigned char* pDonnees, unsigned long nTaille);
    unsigned long nGetTailleDonnees() const;
    // The chunks joined, in a buffer that the next call or the destruction invalidates.
    unsigned char* pGetDonnees(unsigned long* pnTaille);
    // False once a piece of the body could not be kept (memory ran out): the body is not whole
    // and pGetDonnees gives nothing.
    bool bDonneesIntactes() const { return !m_bDonneesPerdues; }

    // The parameters joined by "&", each one URL-encoded by the host when bEncode is set.
    CXYString<wchar_t> csGetParametres(int bEncode, IVM* piVM, CXError* pclErreur) const;

    // A direct look-up, unchecked: eType must be a row of the table.
    static const wchar_t* s_pszGetMIMEType(eHTTPCONTENTTYPE eType) {
        return s_szTabMIMEType[eType];
    }
    // The type of an extension such as ".jpg", case ignored; 0 when unknown.
    static eHTTPCONTENTTYPE s_eGetContentType(const wchar_t* pszExtension);
    // The MIME text of an image kind, "" for kinds without one; the caller owns the copy.
    static CTString s_pszGetMIME(IImageFactory::TYPEIMAGE eType);

private:
    CXYStringArray<wchar_t> m_tabParametres;
    CXYStringArray<wchar_t> m_tabNomsHeader;
    CXYStringArray<wchar_t> m_tabValeursHeader; // parallel to the names
    CListeDeBuffer m_clDonnees;
    CTString m_sURL;
    CXYString<wchar_t> m_sContentType; // the MIME text itself
    eSERVICESGOOGLE m_eService;
    CSimpleBuffer m_clAssemblage; // what pGetDonnees gives out
    bool m_bDonneesPerdues = false;

    void _AjouteMorceau(const unsigned char* pDonnees, size_t nTaille);
};
