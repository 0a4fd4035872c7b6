// CGoogleEvenement, script type "gglEvénement": one event of a calendar, with its participants
// and places. It writes itself as the JSON body of a Calendar write and reads itself back from
// the replies. An all-day event holds dates with no zone, and its end goes out one day after
// the last day, as the service counts it; a timed event holds local time and the numeric
// offset of the process's zone.
#pragma once
#include "connection/DinoGglBase.h"
#include "foundation/DateTimeRFC3339.h"

#include "Arrays.h"
#include "DateTime.h"

#include <cstdint>

class CAuthor;
class CWhere;
class CWho;
class ITableauJSON;
enum HTTPMethod : int;

class CGoogleEvenement : public CCDinoGglBase {
public:
    static ITypeDescription* ms_piType;

    CGoogleEvenement();
    static CGoogleEvenement* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CGoogleEvenement; }
    void CopieObjet(CCtxInfo*, CXError*, CGoogleEvenement* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { __RAZ(); }

    // ---- properties
    const CXYString<wchar_t>& GetTitre(CCtxInfo*, CXError*) const { return m_sTitre; }
    void SetTitre(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sTitre = s, _MarqueEcriture(); }
    const CXYString<wchar_t>& GetContenu(CCtxInfo*, CXError*) const { return m_sContenu; }
    void SetContenu(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sContenu = s, _MarqueEcriture(); }
    const CXYString<wchar_t>& GetIdentifiant(CCtxInfo*, CXError*) const { return m_sIdentifiant; }
    void ForceIdentifiant(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sIdentifiant = s; }
    int GetJourneeEntiere(CCtxInfo*, CXError*) const { return m_bJourneeEntiere; }
    void SetJourneeEntiere(CCtxInfo*, CXError*, int b);
    // Local time for a timed event; an all-day date as it stands.
    CDateTime GetDateDebut(CCtxInfo* pclCtx, CXError* pclErreur) const;
    void SetDateDebut(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate);
    CDateTime GetDateFin(CCtxInfo* pclCtx, CXError* pclErreur) const;
    void SetDateFin(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate);
    CDateTime GetDateMiseAJour(CCtxInfo*, CXError*) const { return m_dtMiseAJour; }
    void ForceDateMiseAJour(CCtxInfo*, CXError*, const CDateTime& clDate);
    CDateTime GetDatePublication(CCtxInfo*, CXError*) const { return {}; }
    IObjetBase* GetAuteur(CCtxInfo*, CXError*);
    void* AccesseurParticipant(CCtxInfo*, CXError*);
    void* AccesseurLieu(CCtxInfo*, CXError*);

    // ---- the calendar's side
    const CXYString<wchar_t>& sGetIdentifiant() const { return m_sIdentifiant; }
    const CXYString<wchar_t>& sGetIdAgenda() const { return m_sIdAgenda; }
    void SetIdAgenda(const CXYString<wchar_t>& s) { m_sIdAgenda = s; }
    const CXArray<CWho*>& tabGetParticipants() const { return m_tabParticipants; }

    // The body of a write, to the character of the service's old templates.
    CXYString<wchar_t> __czToJSON() const;
    // POST (create) or PATCH (change) in the event's calendar; nothing without a calendar.
    void __GglAjouteModif(CGoogleConnexion& clConnexion, HTTPMethod eMethode, CCtxInfo* pclCtx,
                          CXError* pclErreur);
    // DELETE; then the event is one to create again, with no id.
    void __GglSupprime(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx, CXError* pclErreur);
    eEtatObjet veCommitGLL(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                           CXError* pclErreur) override;

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    ~CGoogleEvenement() override;
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;
    void _vSetTableauFromJSON(std::wstring_view svChemin, ITableauJSON& clTableau) override;

private:
    void __RAZ();
    // The author object, when there is one, given the author fields.
    void __MajAuteur();
    void __VideLieux();
    void __VideParticipants();
    // The new value of a date property, with its zone and its date-only flag; false when it
    // writes the same text as the old one.
    bool __bNouvelleDate(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate,
                         bool bFin, CDateTimeRFC3339& clAncienne);
    CDateTime __GetDate(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTimeRFC3339& clDate) const;
    static CDateTimeRFC3339 __GetDate_RFC3339FromCAny(CAny& clValeur);

    CXYString<wchar_t> m_sIdAgenda;
    int32_t m_bJourneeEntiere = 0;
    int32_t m_bFinDecalee = 0; // the end was moved one day on when the event became all-day
    CXYString<wchar_t> m_sIdentifiant;
    CXYString<wchar_t> m_sTitre;
    CXYString<wchar_t> m_sContenu;
    CDateTimeRFC3339 m_dtMiseAJour;
    CDateTimeRFC3339 m_dtDebut;
    CDateTimeRFC3339 m_dtFin;
    CXYString<wchar_t> m_sAuteurNom;   // "creator.displayName"
    CXYString<wchar_t> m_sAuteurEmail; // "creator.email"
    CAuthor* m_pclAuteur = nullptr;    // made at the first read; then one reference
    CXArray<CWhere*> m_tabLieux;
    CXArray<CWho*> m_tabParticipants;
};
