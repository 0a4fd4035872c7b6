// CSFObject: the generic Salesforce record. Its fields are not known when the component is
// built: every child of the reply that the table does not name becomes a text member under its
// own name, and a script makes a member by writing it. Members are read by name through
// IObjetValeur; all are text, as the reply wrote them.
#pragma once
#include "salesforce/SFResultats.h"

#include "ObjetValeur.h"

class CSFObject final : public CXmlObjectAutonomeRacineSalesforce,
                        public CObjetComposanteBase,
                        public IObjetValeur {
public:
    XML_OBJET_DECLARE(CSFObject)
    XML_SCRIPT_DECLARE(CSFObject)

    void vInit(CXError& clErreur) override;

    CXYString<wchar_t> GetType(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, "sf:type"); }
    void SetType(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexte(this, "sf:type", s); }
    CXYString<wchar_t> GetID(CCtxInfo*, CXError*) { return CXmlProprietesScript::s_sGetTexte(this, "sf:Id"); }
    void SetID(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexte(this, "sf:Id", s); }
    CXYString<wchar_t> GetFieldsToNull(CCtxInfo*, CXError*) { return s_sJoint(this, "sf:fieldsToNull"); }
    void SetFieldsToNull(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { s_SetJoint(this, "sf:fieldsToNull", s); }
    // The host's way to the dynamic members.
    void* AccesseurValeur(CCtxInfo*, CXError*) { return nullptr; }
    IObjetValeur* vpiGetIObjetValeur() override { return this; }

    // ---- IObjetValeur
    int vnGetVersionIObjetValeur() override { return 1; }
    eRESULTATOBJET veGetValeurPile(const CNomStandard&, INiveauPile*, unsigned, CCtxInfo*,
                                   CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veGetValeurAny(const CNomStandard& clNom, CAny* pclValeur, unsigned nOption,
                                  CCtxInfo* pclCtx, CXError* pclErreur) override;
    eRESULTATOBJET veSetValeurPile(const CNomStandard&, INiveauPile*, unsigned, CCtxInfo*,
                                   CXError*) override {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    eRESULTATOBJET veSetValeurAny(const CNomStandard& clNom, const CAny* pclValeur, unsigned nOption,
                                  CCtxInfo* pclCtx, CXError* pclErreur) override;
    eRESULTATOBJET vePossedeValeur(int& bPossede, CCtxInfo*, CXError*) override;
    eRESULTATOBJET veParcourtValeur(IVisiteurValeur* piVisiteur, CCtxInfo*, CXError*) override;

protected:
    CXmlObject* _vpclAjouteNouveau(const char* pszNom) override;
};
