#include "connection/GoogleConnexion.h"

#include "connection/VisitDeserialiseRefreshToken.h"
#include "frame/ComposanteGGL.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "JSONService.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <algorithm>
#include <string>

ITypeDescription* CGoogleConnexion::ms_piType = nullptr;

const STIdServiceGoogle CGoogleConnexion::s_stTabIdServices[SERVICEGOOGLE_NB] = {
    {SERVICEGOOGLE_AUCUN, L"none"},
    {SERVICEGOOGLE_AGENDA, L"calendar"},
    {SERVICEGOOGLE_CONTACT, L"contact"},
    {SERVICEGOOGLE_DOCUMENTS, L"documentlist"},
    {SERVICEGOOGLE_STATICMAPS, L"staticmaps"},
    {SERVICEGOOGLE_PICASA, L"picasa"},
};

CGoogleConnexion::CGoogleConnexion() {
    for (int i = 0; i < SERVICEGOOGLE_NB; ++i) m_tabToken.Ajoute(COAuthToken());
}

CGoogleConnexion* CGoogleConnexion::s_pclCreeObjet(CCtxInfo*, CXError*) {
    return new CGoogleConnexion;
}

void CGoogleConnexion::CopieObjet(CCtxInfo*, CXError*, CGoogleConnexion* pclSource) {
    if (!pclSource || pclSource == this) return;
    const size_t nNb = std::min(m_tabToken.nGetNbElement(), pclSource->m_tabToken.nGetNbElement());
    for (size_t i = 0; i < nNb; ++i) m_tabToken[i] = pclSource->m_tabToken[i];
    m_sEmail = pclSource->m_sEmail;
    m_sClientID = pclSource->m_sClientID;
    m_sClientSecret = pclSource->m_sClientSecret;
}

void CGoogleConnexion::RAZObjet(CCtxInfo*, CXError*) {
    __RAZToken();
    m_sEmail.Vide();
    m_sClientID.Vide();
    m_sClientSecret.Vide();
}

void CGoogleConnexion::__RAZToken() {
    for (COAuthToken& st : m_tabToken) st.Vide();
}

CXYString<wchar_t> CGoogleConnexion::GetRefreshTokens(CCtxInfo*, CXError*) const {
    std::wstring s = L"{";
    const size_t nNb = std::min<size_t>(m_tabToken.nGetNbElement(), SERVICEGOOGLE_NB);
    for (size_t i = 0; i < nNb; ++i) {
        if (i > 0) s += L',';
        s += L'"';
        s += s_stTabIdServices[i].pszCle;
        s += L"\":\"";
        s += m_tabToken[i].m_sRefreshToken.sv();
        s += L'"';
    }
    s += L'}';
    return CXYString<wchar_t>(std::wstring_view(s));
}

void CGoogleConnexion::ForceRefreshTokens(CCtxInfo*, CXError* pclErreur,
                                          const CXYString<wchar_t>& sJSON) {
    if (sJSON.bVide()) return;
    _CXErrorModule60 clErreurLocale;
    CXError* pcl = pclErreur ? pclErreur : &clErreurLocale;
    const std::string sUtf8 = KVUtf8::VersUtf8(sJSON.sv());
    auto clRacine = CRef<IElementJSON>::Adopt(CComposanteGGL::s_piGetJSON(sUtf8.c_str(), pcl));
    if (!clRacine) {
        // No JSON service says nothing by itself: the text must not vanish without a word.
        if (pcl->bEstPropre()) pcl->SetUserError(&gstMyModuleInfo60, 600048, 1);
        return;
    }
    CVisitDeserialiseRefreshToken clVisiteur(&m_tabToken);
    clRacine->vAccepte(clVisiteur);
}

// The stubs that the rows of the class point at. The script functions of the connection have
// stubs of their own, written out where those functions are.
#include "frame/KllStubs.h"
#include "connection/GoogleConnexion.def"
