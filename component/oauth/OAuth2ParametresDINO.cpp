#include "oauth/OAuth2ParametresDINO.h"

ITypeDescription* COAuth2ParametresDINO::ms_piType = nullptr;

void COAuth2ParametresDINO::CopieObjet(CCtxInfo*, CXError*, COAuth2ParametresDINO* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    m_clParametres =
        CRef<COAuth2Parametres>::Retain(new COAuth2Parametres(*pclSource->m_clParametres.pGet()));
}

void COAuth2ParametresDINO::RAZObjet(CCtxInfo*, CXError*) {
    m_clParametres = CRef<COAuth2Parametres>::Retain(new COAuth2Parametres);
}

#include "frame/KllStubs.h"
#include "oauth/OAuth2ParametresDINO.def"
