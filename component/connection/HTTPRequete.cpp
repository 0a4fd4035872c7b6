#include "HTTPRequete.h"

#include "frame/FctEntonnoir.h"

#include "Utf8.h"

#include <cstring>
#include <cwchar>
#include <new>
#include <string>

const wchar_t* const CHTTPRequete::s_szTabMIMEType[HTTPCT_NB + 1] = {
    L"application/vnd.google-apps.unknown",
    L"application/x-www-form-urlencoded",
    L"application/atom+xml",
    L"multipart/form-data",
    L"text/plain",
    L"text/csv",
    L"text/tab-separated-values",
    L"text/html",
    L"application/msword",
    L"application/vnd.oasis.opendocument.spreadsheet",
    L"application/vnd.oasis.opendocument.text",
    L"application/rtf",
    L"application/vnd.sun.xml.writer",
    L"application/vnd.ms-excel",
    L"application/vnd.ms-powerpoint",
    L"image/gif",
    L"image/png",
    L"image/jpeg",
    L"multipart/related; boundary=\"vbhsik745z6d_84eo0pmlk__987\"",
    L"image/bmp",
    L"application/pdf",
    L"application/json",
    L"application/vnd.openxmlformats-officedocument.wordprocessingml.document",
    L"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet",
    L"application/vnd.openxmlformats-officedocument.presentationml.presentation",
    L"application/vnd.oasis.opendocument.presentation",
    nullptr,
};

// Order matters: the first match wins.
const STMIME CHTTPRequete::s_stTabMIME[knNbExtension] = {
    {L".CSV", HTTPCT_CSV},   {L".TSV", HTTPCT_TSV},         {L".TAB", HTTPCT_TSV},
    {L".HTML", HTTPCT_HTML}, {L".HTM", HTTPCT_HTML},        {L".DOC", HTTPCT_WORD},
    {L".ODS", HTTPCT_ODS},   {L".ODT", HTTPCT_ODT},         {L".RTF", HTTPCT_RTF},
    {L".SXW", HTTPCT_SXW},   {L".TXT", HTTPCT_TEXTE},       {L".XLS", HTTPCT_EXCEL},
    {L".PPT", HTTPCT_POWERPOINT}, {L".PPS", HTTPCT_POWERPOINT}, {L".GIF", HTTPCT_GIF},
    {L".PNG", HTTPCT_PNG},   {L".JPG", HTTPCT_JPEG},        {L".JPEG", HTTPCT_JPEG},
    {L".BMP", HTTPCT_BMP},   {L".PDF", HTTPCT_PDF},         {L".DOCX", HTTPCT_DOCX},
    {L".XLSX", HTTPCT_XLSX}, {L".PPTX", HTTPCT_PPTX},       {L".ODP", HTTPCT_ODP},
};

namespace {

const wchar_t* s_psz(const wchar_t* psz) { return psz ? psz : L""; }

// Every "&" of the text as "%26".
void s_RemplaceEt(CXYString<wchar_t>& s) {
    if (s.sv().find(L'&') == std::wstring_view::npos)
        return;
    std::wstring sResultat;
    sResultat.reserve(s.nLongueur() + 8);
    for (wchar_t c : s.sv()) {
        if (c == L'&')
            sResultat += L"%26";
        else
            sResultat += c;
    }
    s = CXYString<wchar_t>(std::wstring_view(sResultat));
}

} // namespace

CHTTPRequete::CHTTPRequete(eSERVICESGOOGLE eService, const wchar_t* pszURL,
                           eHTTPCONTENTTYPE eType)
    : m_sURL(pszURL), m_eService(eService) {
    // A type from outside the table leaves the request without one rather than read past it.
    if (eType >= 0 && eType < HTTPCT_NB)
        m_sContentType = CXYString<wchar_t>(s_pszGetMIMEType(eType));
}

CHTTPRequete::CHTTPRequete(CHTTPRequete& clSource)
    : m_tabParametres(clSource.m_tabParametres), m_tabNomsHeader(clSource.m_tabNomsHeader),
      m_tabValeursHeader(clSource.m_tabValeursHeader), m_sURL(clSource.m_sURL),
      m_sContentType(clSource.m_sContentType), m_eService(clSource.m_eService) {
    m_bDonneesPerdues = clSource.m_bDonneesPerdues;
    for (size_t i = 0; i < clSource.m_clDonnees.nGetNbElement(); ++i)
        _AjouteMorceau(clSource.m_clDonnees.pclGet(i)->pGetDonnees(),
                       clSource.m_clDonnees.pclGet(i)->nGetTaille());
}

// One more piece of the body. A piece that memory cannot hold is remembered as lost: the body
// is then no longer whole, and a sender refuses it rather than send what is left.
void CHTTPRequete::_AjouteMorceau(const unsigned char* pDonnees, size_t nTaille) {
    auto* pcl = new (std::nothrow) CSimpleBuffer;
    if (!pcl || !pcl->bAffecte(pDonnees, nTaille)) {
        delete pcl;
        m_bDonneesPerdues = true;
        return;
    }
    if (!m_clDonnees.bAjoute(pcl))
        m_bDonneesPerdues = true;
}

CHTTPRequete::~CHTTPRequete() = default;

void CHTTPRequete::SetURL(const wchar_t* pszURL) { m_sURL = pszURL; }

void CHTTPRequete::SetContentType(const wchar_t* pszType) {
    if (!pszType || !*pszType)
        m_sContentType.Vide();
    else
        m_sContentType = CXYString<wchar_t>(pszType);
}

void CHTTPRequete::AjouteParametre(const wchar_t* pszNom, const wchar_t* pszValeur) {
    std::wstring s = s_psz(pszNom);
    s += L'=';
    s += s_psz(pszValeur);
    m_tabParametres.Ajoute(CXYString<wchar_t>(std::wstring_view(s)));
}

void CHTTPRequete::AjouteParametre(const wchar_t* pszNom, int nValeur) {
    std::wstring s = s_psz(pszNom);
    s += L'=';
    s += std::to_wstring(nValeur);
    m_tabParametres.Ajoute(CXYString<wchar_t>(std::wstring_view(s)));
}

void CHTTPRequete::AjouteHeader(const wchar_t* pszNom, const wchar_t* pszValeur) {
    m_tabNomsHeader.Ajoute(CXYString<wchar_t>(pszNom));
    m_tabValeursHeader.Ajoute(CXYString<wchar_t>(pszValeur));
}

void CHTTPRequete::RemplitEntetesHTTP(IEntetesHTTP* piEntetes) const {
    if (!piEntetes || m_tabNomsHeader.nGetNbElement() != m_tabValeursHeader.nGetNbElement())
        return;
    for (size_t i = 0; i < m_tabNomsHeader.nGetNbElement(); ++i)
        piEntetes->vAjoute(m_tabNomsHeader[i].pszGet(), m_tabValeursHeader[i].pszGet());
}

void CHTTPRequete::AjouteDonnees(const unsigned char* pDonnees, unsigned long nTaille) {
    _AjouteMorceau(pDonnees, nTaille);
}

unsigned long CHTTPRequete::nGetTailleDonnees() const { return m_clDonnees.nGetTailleTotale(); }

unsigned char* CHTTPRequete::pGetDonnees(unsigned long* pnTaille) {
    const size_t nTotal = m_clDonnees.nGetTailleTotale();
    m_clAssemblage.bSetTaille(0);
    if (m_bDonneesPerdues || !m_clAssemblage.bSetTaille(nTotal)) {
        if (pnTaille)
            *pnTaille = 0;
        return nullptr;
    }
    size_t nPos = 0;
    for (size_t i = 0; i < m_clDonnees.nGetNbElement(); ++i) {
        const CSimpleBuffer* pcl = m_clDonnees.pclGet(i);
        if (pcl->nGetTaille())
            std::memcpy(m_clAssemblage.pGetDonnees() + nPos, pcl->pGetDonnees(), pcl->nGetTaille());
        nPos += pcl->nGetTaille();
    }
    if (pnTaille)
        *pnTaille = nTotal;
    return m_clAssemblage.pGetDonnees();
}

CXYString<wchar_t> CHTTPRequete::csGetParametres(int bEncode, IVM* piVM,
                                                 CXError* pclErreur) const {
    std::wstring sResultat;
    const size_t nNb = m_tabParametres.nGetNbElement();
    for (size_t i = 0; i < nNb; ++i) {
        if (bEncode) {
            // Name, "=" and value go to the encoder in one piece. It keeps "&", so a "&" left
            // inside a name or value would split the parameter: it is escaped here.
            CXYString<wchar_t> sEncode;
            FctEntonnoir::bUrlEncode(piVM, pclErreur, m_tabParametres[i], &sEncode);
            s_RemplaceEt(sEncode);
            sResultat += sEncode.sv();
        } else {
            sResultat += m_tabParametres[i].sv();
        }
        if (i + 1 < nNb)
            sResultat += L'&';
    }
    return CXYString<wchar_t>(std::wstring_view(sResultat));
}

eHTTPCONTENTTYPE CHTTPRequete::s_eGetContentType(const wchar_t* pszExtension) {
    if (!pszExtension || !*pszExtension)
        return HTTPCT_GOOGLE_INCONNU;
    for (const STMIME& st : s_stTabMIME) {
        if (wcscasecmp(pszExtension, st.pszExtension) == 0)
            return st.eType;
    }
    return HTTPCT_GOOGLE_INCONNU;
}

CTString CHTTPRequete::s_pszGetMIME(IImageFactory::TYPEIMAGE eType) {
    switch (eType) {
    case IImageFactory::TYPEIMAGE_BMP:
        return L"image/bmp";
    case IImageFactory::TYPEIMAGE_JPEG:
        return L"image/jpeg";
    case IImageFactory::TYPEIMAGE_GIF:
        return L"image/gif";
    case IImageFactory::TYPEIMAGE_PNG:
        return L"image/png";
    default:
        return L"";
    }
}
