#include "calendar/GoogleAgenda.h"

#include "calendar/GoogleEvenement.h"
#include "connection/GoogleConnexion.h"
#include "connection/HTTPRequete.h"
#include "frame/EnumerateurDinoGgl.h"
#include "frame/XErrorModule60.h"
#include "xmlobject/Author.h"

#include "Any.h"
#include "VM.h"
#include "XError.h"

#include <string>
#include <utility>

using namespace std::string_view_literals;

ITypeDescription* CGoogleAgenda::ms_piType = nullptr;

CGoogleAgenda::~CGoogleAgenda() { __VideEvenements(); }

void CGoogleAgenda::__VideEvenements() {
    for (CGoogleEvenement* p : m_tabEvenements) p->vRelease();
    m_tabEvenements.Vide();
}

void CGoogleAgenda::_vRAZ() {
    m_sTitre.Vide(), m_sIdentifiant.Vide(), m_sDescription.Vide(), m_sFuseauHoraire.Vide();
    __VideEvenements();
}

void CGoogleAgenda::CopieObjet(CCtxInfo*, CXError*, CGoogleAgenda* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_eEtatObjet = pclSource->m_eEtatObjet;
    m_sTitre = pclSource->m_sTitre;
    m_sIdentifiant = pclSource->m_sIdentifiant;
    m_sDescription = pclSource->m_sDescription;
    m_sFuseauHoraire = pclSource->m_sFuseauHoraire;
    for (CGoogleEvenement* p : pclSource->m_tabEvenements) p->vAddRef();
    __VideEvenements();
    for (CGoogleEvenement* p : pclSource->m_tabEvenements) m_tabEvenements.Ajoute(p);
}

IObjetBase* CGoogleAgenda::GetAuteur(CCtxInfo* pclCtx, CXError* pclErreur) const {
    return CAuthor::s_pclCreeObjet(pclCtx, pclErreur)->piGetObjetBase();
}

void* CGoogleAgenda::AccesseurEvenement(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(
        new CTEnumerateurDinoGgl<CGoogleAgenda, CGoogleEvenement>(this, &m_tabEvenements));
}

void CGoogleAgenda::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    m_eEtatObjet = ETAT_SYNCHRONISE;
    const std::wstring_view sv = svChemin;
    if (sv == L"summary"sv)
        s_CopieTexte(clValeur, m_sTitre);
    else if (sv == L"id"sv)
        s_CopieTexte(clValeur, m_sIdentifiant);
    else if (sv == L"description"sv)
        s_CopieTexte(clValeur, m_sDescription);
    else if (sv == L"timeZone"sv)
        s_CopieTexte(clValeur, m_sFuseauHoraire);
}

void CGoogleAgenda::DonneTableauEvenements(CXArray<CGoogleEvenement*>& tab) {
    __VideEvenements();
    std::swap(m_tabEvenements, tab);
    __PropageIdAgendaTousEvenements();
}

void CGoogleAgenda::__PropageIdAgendaTousEvenements() {
    for (CGoogleEvenement* p : m_tabEvenements) p->SetIdAgenda(m_sIdentifiant);
}

CXYString<wchar_t> CGoogleAgenda::__czToJSON() const {
    // The spacing is the old writer's, no blank after the summary's comma included.
    std::wstring s = L"{\"kind\": \"calendar#calendar\", \"id\": \"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sIdentifiant).sv();
    s += L"\", \"summary\": \"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sTitre).sv();
    s += L"\",\"description\": \"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sDescription).sv();
    s += L"\", \"timeZone\": \"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sFuseauHoraire).sv();
    s += L"\"}";
    return CXYString<wchar_t>(std::wstring_view(s));
}

void CGoogleAgenda::__GglAjouteModif(CGoogleConnexion& clConnexion, HTTPMethod eMethode,
                                     CCtxInfo* pclCtx, CXError* pclErreur) {
    // A change names the calendar in the path, its id as it stands.
    std::wstring sChemin = L"/calendar/v3/calendars";
    if (eMethode == HTTPPATCH) {
        sChemin += L'/';
        sChemin += m_sIdentifiant.sv();
    }
    const eEtatObjet eAvant = m_eEtatObjet;
    _EcritJSON(clConnexion, eMethode, sChemin, __czToJSON(), pclCtx, pclErreur);
    // A creation has just given the calendar its id.
    if (m_eEtatObjet != eAvant) __PropageIdAgendaTousEvenements();
}

void CGoogleAgenda::__GglSupprime(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                  CXError* pclErreur) {
    if (m_sIdentifiant.bVide()) return;
    // The answer is not read: a refusal goes unnoticed, and the calendar is ready to be
    // written anew in any case.
    _Supprime(clConnexion, std::wstring(L"/calendar/v3/calendars/") + std::wstring(m_sIdentifiant.sv()),
              pclCtx, pclErreur);
    m_sIdentifiant.Vide();
}

void CGoogleAgenda::__CommitGGL_TousEvt(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                        CXError* pclErreur) {
    size_t nNb = m_tabEvenements.nGetNbElement();
    for (size_t i = 0; i < nNb;) {
        CGoogleEvenement* p = m_tabEvenements[i];
        if (p->sGetIdAgenda().pszGet() != m_sIdentifiant.pszGet()) p->SetIdAgenda(m_sIdentifiant);
        // Each event with an error of its own, so that one refusal does not keep the others
        // from going; the first refusal is the caller's.
        _CXErrorModule60 clErreurEvt;
        const eEtatObjet eEtat = p->veCommitGLL(clConnexion, pclCtx, &clErreurEvt);
        if (!clErreurEvt.bEstPropre() && pclErreur->bEstPropre()) pclErreur->vCopy(&clErreurEvt);
        if (eEtat == ETAT_A_SUPPRIMER) {
            m_tabEvenements.bSupprime(i);
            p->vRelease();
            --nNb;
        } else {
            ++i;
        }
    }
}

eEtatObjet CGoogleAgenda::veCommitGLL(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                      CXError* pclErreur) {
    const eEtatObjet eEtat = m_eEtatObjet;
    switch (eEtat) {
    case ETAT_MODIFIE:
        __GglAjouteModif(clConnexion, HTTPPATCH, pclCtx, pclErreur);
        break;
    case ETAT_A_CREER:
        __GglAjouteModif(clConnexion, HTTPPOST, pclCtx, pclErreur);
        break;
    case ETAT_A_SUPPRIMER:
        __GglSupprime(clConnexion, pclCtx, pclErreur);
        return eEtat;
    case ETAT_SYNCHRONISE:
    case ETAT_NEUF:
        break;
    default:
        return eEtat; // an attached empty calendar, or a state past the table
    }
    // The events go even when the calendar's own write failed.
    __CommitGGL_TousEvt(clConnexion, pclCtx, pclErreur);
    return eEtat;
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "calendar/GoogleAgenda.def"
