// CGoogleAgenda, script type "gglAgenda": one calendar of the user, with its events. Writes are
// deferred: properties only mark the calendar, and GglEcrit sends what the mark calls for,
// the calendar first and then each of its events.
#pragma once
#include "connection/DinoGglBase.h"

#include "Arrays.h"
#include "DateTime.h"

class CGoogleEvenement;
enum HTTPMethod : int;

class CGoogleAgenda : public CCDinoGglBase {
public:
    static ITypeDescription* ms_piType;

    static CGoogleAgenda* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CGoogleAgenda; }
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { _vRAZ(); }

    // ---- properties
    const CXYString<wchar_t>& GetTitre(CCtxInfo*, CXError*) const { return m_sTitre; }
    void SetTitre(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sTitre = s, _MarqueEcriture(); }
    const CXYString<wchar_t>& GetDescription(CCtxInfo*, CXError*) const { return m_sDescription; }
    void SetDescription(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) {
        m_sDescription = s, _MarqueEcriture();
    }
    const CXYString<wchar_t>& GetIdentifiant(CCtxInfo*, CXError*) const { return m_sIdentifiant; }
    void ForceIdentifiant(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sIdentifiant = s; }
    const CXYString<wchar_t>& GetFuseauHoraire(CCtxInfo*, CXError*) const { return m_sFuseauHoraire; }
    void ForceFuseauHoraire(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sFuseauHoraire = s; }
    // Kept for old scripts; a calendar carries none of them.
    CDateTime GetDatePublication(CCtxInfo*, CXError*) const { return {}; }
    CDateTime GetDateMiseAJour(CCtxInfo*, CXError*) const { return {}; }
    IObjetBase* GetAuteur(CCtxInfo* pclCtx, CXError* pclErreur) const;
    // The events the script sees: those not waiting for deletion.
    void* AccesseurEvenement(CCtxInfo*, CXError*);

    const CXYString<wchar_t>& sGetTitre() const { return m_sTitre; }
    const CXYString<wchar_t>& sGetIdentifiant() const { return m_sIdentifiant; }
    size_t nGetNbEvenement() const { return m_tabEvenements.nGetNbElement(); }

    // ---- writes
    CXYString<wchar_t> __czToJSON() const;
    void __GglAjouteModif(CGoogleConnexion& clConnexion, HTTPMethod eMethode, CCtxInfo* pclCtx,
                          CXError* pclErreur);
    // DELETE; the calendar is then one to create again, with no id, whatever the answer.
    void __GglSupprime(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx, CXError* pclErreur);
    // Every event's commit, in order; those deleted on the server leave the calendar. An
    // error on one event does not stop the others.
    void __CommitGGL_TousEvt(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx, CXError* pclErreur);
    void __PropageIdAgendaTousEvenements();
    eEtatObjet veCommitGLL(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                           CXError* pclErreur) override;

    // Takes the events over, replacing those the calendar had; tab is left empty.
    void DonneTableauEvenements(CXArray<CGoogleEvenement*>& tab);

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    ~CGoogleAgenda() override;
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;

private:
    void _vRAZ();
    void __VideEvenements();

    CXYString<wchar_t> m_sTitre;
    CXYString<wchar_t> m_sIdentifiant;
    CXYString<wchar_t> m_sDescription;
    CXYString<wchar_t> m_sFuseauHoraire;
    CXArray<CGoogleEvenement*> m_tabEvenements; // one reference on each
};
