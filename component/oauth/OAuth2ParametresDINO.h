// COAuth2ParametresDINO, script type "OAuth2Paramètres": the description of an OAuth 2
// provider that a script fills and hands to AuthIdentifie.
#pragma once
#include "oauth/OAuth2Parametres.h"

#include "Ref.h"

class CCtxInfo;
class CXError;

class COAuth2ParametresDINO final : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    COAuth2ParametresDINO()
        : m_clParametres(CRef<COAuth2Parametres>::Retain(new COAuth2Parametres)) {}

    static COAuth2ParametresDINO* s_pclCreeObjet(CCtxInfo*, CXError*) {
        return new COAuth2ParametresDINO;
    }
    void CopieObjet(CCtxInfo*, CXError*, COAuth2ParametresDINO* pclSource);
    void RAZObjet(CCtxInfo*, CXError*);

#define KV_OAUTH2_PROPRIETE(Champ, Propriete)                                                      \
    CXYString<wchar_t> Get##Propriete(CCtxInfo*, CXError*) const {                                 \
        return m_clParametres->vczGet##Champ();                                                    \
    }                                                                                              \
    void Set##Propriete(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) {                        \
        m_clParametres->vSet##Champ(s);                                                            \
    }
    KV_OAUTH2_CHAMPS(KV_OAUTH2_PROPRIETE)
#undef KV_OAUTH2_PROPRIETE

    // The texts as they stand now; later changes by the script do not reach a token made
    // from them.
    const IOAuth2Parametres& clGetParametres() const {
        return *m_clParametres.pGet();
    }

    ITypeDescription* vpiGetTypeReel() override {
        return ms_piType;
    }
    void* vpGetObjetC() override {
        return this;
    }

private:
    ~COAuth2ParametresDINO() override = default;

    CRef<COAuth2Parametres> m_clParametres;
};
