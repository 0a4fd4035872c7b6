#include "calendar/GoogleEvenement.h"

#include "calendar/DatesAgenda.h"
#include "calendar/Where.h"
#include "calendar/Who.h"
#include "connection/GoogleConnexion.h"
#include "connection/HTTPRequete.h"
#include "frame/EnumerateurDinoGgl.h"
#include "frame/FctEntonnoir.h"
#include "xmlobject/Author.h"

#include "Any.h"
#include "Ref.h"
#include "VM.h"
#include "XError.h"

#include <cwchar>
#include <string>

using namespace std::string_view_literals;

ITypeDescription* CGoogleEvenement::ms_piType = nullptr;

namespace {

constexpr int64_t knMilliJour = 86400000;

template <class T> void s_ViderTableau(CXArray<T*>& tab) {
    for (T* p : tab) p->vRelease();
    tab.Vide();
}

// The target's children replaced by copies of the source's, one reference on each.
template <class T>
void s_CopieEnfants(CXArray<T*>& tab, const CXArray<T*>& tabSource, CCtxInfo* pclCtx, CXError* pclErreur) {
    s_ViderTableau(tab);
    for (T* p : tabSource) {
        T* pcl = T::s_pclCreeObjet(pclCtx, pclErreur);
        pcl->vAddRef();
        pcl->CopieObjet(pclCtx, pclErreur, p);
        tab.Ajoute(pcl);
    }
}

// A date's year, month and day, "%04d-%02d-%02d".
std::wstring s_sJour(const CDateTime& cl) {
    wchar_t sz[32];
    std::swprintf(sz, 32, L"%04d-%02d-%02d", cl.nGetAnnee(), cl.nGetMois(), cl.nGetJour());
    return sz;
}

} // namespace

CGoogleEvenement::CGoogleEvenement() = default;

CGoogleEvenement::~CGoogleEvenement() {
    __VideLieux();
    __VideParticipants();
    if (m_pclAuteur) m_pclAuteur->vRelease();
}

void CGoogleEvenement::__VideLieux() { s_ViderTableau(m_tabLieux); }
void CGoogleEvenement::__VideParticipants() { s_ViderTableau(m_tabParticipants); }

void CGoogleEvenement::__RAZ() {
    m_sIdAgenda.Vide();
    m_bJourneeEntiere = m_bFinDecalee = 0;
    m_sIdentifiant.Vide(), m_sTitre.Vide(), m_sContenu.Vide();
    m_dtMiseAJour = m_dtDebut = m_dtFin = CDateTimeRFC3339();
    __VideLieux();
    __VideParticipants();
    m_sAuteurNom.Vide(), m_sAuteurEmail.Vide();
    __MajAuteur();
}

void CGoogleEvenement::CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleEvenement* pclSource) {
    if (!pclSource || pclSource == this) return;
    m_eEtatObjet = pclSource->m_eEtatObjet;
    m_sIdAgenda = pclSource->m_sIdAgenda;
    m_bJourneeEntiere = pclSource->m_bJourneeEntiere;
    m_bFinDecalee = pclSource->m_bFinDecalee;
    m_sIdentifiant = pclSource->m_sIdentifiant;
    m_sTitre = pclSource->m_sTitre;
    m_sContenu = pclSource->m_sContenu;
    m_dtMiseAJour = pclSource->m_dtMiseAJour;
    m_dtDebut = pclSource->m_dtDebut;
    m_dtFin = pclSource->m_dtFin;
    m_sAuteurNom = pclSource->m_sAuteurNom;
    m_sAuteurEmail = pclSource->m_sAuteurEmail;
    __MajAuteur();
    // The children are copied too, so that the two events never share one.
    s_CopieEnfants(m_tabLieux, pclSource->m_tabLieux, pclCtx, pclErreur);
    s_CopieEnfants(m_tabParticipants, pclSource->m_tabParticipants, pclCtx, pclErreur);
}

// ---- properties --------------------------------------------------------------------------

// The author object is made at its first read: a list of events rarely shows one, and it is
// the heaviest part of an event. It then follows the event's author fields.
IObjetBase* CGoogleEvenement::GetAuteur(CCtxInfo*, CXError*) {
    if (!m_pclAuteur) {
        // A script-made author starts with no reference: the event takes the first.
        m_pclAuteur = CAuthor::s_pclCreeObjet(nullptr, nullptr);
        m_pclAuteur->vAddRef();
        __MajAuteur();
    }
    return m_pclAuteur->piGetObjetBase();
}

void CGoogleEvenement::__MajAuteur() {
    if (!m_pclAuteur) return;
    m_pclAuteur->ForceNom(nullptr, nullptr, m_sAuteurNom);
    m_pclAuteur->ForceEmail(nullptr, nullptr, m_sAuteurEmail);
}

void* CGoogleEvenement::AccesseurParticipant(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(
        new CTEnumerateurDinoGgl<CGoogleEvenement, CWho>(this, &m_tabParticipants));
}

void* CGoogleEvenement::AccesseurLieu(CCtxInfo*, CXError*) {
    return static_cast<IObjetCollection*>(
        new CTEnumerateurDinoGgl<CGoogleEvenement, CWhere>(this, &m_tabLieux));
}

void CGoogleEvenement::ForceDateMiseAJour(CCtxInfo*, CXError*, const CDateTime& clDate) {
    static_cast<CDateTime&>(m_dtMiseAJour) = clDate;
}

void CGoogleEvenement::SetJourneeEntiere(CCtxInfo*, CXError*, int b) {
    const int32_t bNouveau = b ? 1 : 0;
    if (bNouveau == m_bJourneeEntiere) return;
    m_bJourneeEntiere = bNouveau;
    m_dtDebut.SetDateSeule(bNouveau);
    m_dtFin.SetDateSeule(bNouveau);
    // The service ends an all-day event on the day after its last; the flag remembers the
    // move so that turning back undoes it.
    if (bNouveau) {
        m_dtFin.bDecaleMilli(knMilliJour);
        m_bFinDecalee = 1;
    } else if (m_bFinDecalee) {
        m_dtFin.bDecaleMilli(-knMilliJour);
        m_bFinDecalee = 0;
    }
    _MarqueEcriture();
}

bool CGoogleEvenement::__bNouvelleDate(CCtxInfo* pclCtx, CXError* pclErreur,
                                       const CDateTime& clDate, bool bFin,
                                       CDateTimeRFC3339& clAncienne) {
    // A timed event keeps the local time with the zone's offset at that moment.
    CDateTime clUTC = clDate;
    if (!m_bJourneeEntiere && clDate.bEstRenseignee())
        FctEntonnoir::bDateHeureLocaleVersUTC(CCtxInfo::s_piGetVM(pclCtx), pclErreur, &clUTC);
    CDateTimeRFC3339 clNouvelle;
    static_cast<CDateTime&>(clNouvelle) = clDate;
    clNouvelle.SetDateSeule(m_bJourneeEntiere != 0);
    const int64_t nDecalage = clDate.bEstRenseignee() && clUTC.bEstRenseignee()
                                  ? DatesAgenda::nMilli(clDate) - DatesAgenda::nMilli(clUTC)
                                  : 0;
    clNouvelle.SetZone(static_cast<int>(nDecalage % knMilliJour / 3600000),
                       static_cast<int>(nDecalage % 3600000 / 60000));
    if (bFin && m_bJourneeEntiere) clNouvelle.bDecaleMilli(knMilliJour);
    if (DatesAgenda::sTexte(clNouvelle).sv() == DatesAgenda::sTexte(clAncienne).sv()) return false;
    clAncienne = clNouvelle;
    return true;
}

void CGoogleEvenement::SetDateDebut(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate) {
    if (__bNouvelleDate(pclCtx, pclErreur, clDate, false, m_dtDebut)) _MarqueEcriture();
}

void CGoogleEvenement::SetDateFin(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate) {
    if (__bNouvelleDate(pclCtx, pclErreur, clDate, true, m_dtFin)) _MarqueEcriture();
}

CDateTime CGoogleEvenement::__GetDate(CCtxInfo* pclCtx, CXError* pclErreur,
                                      const CDateTimeRFC3339& clDate) const {
    CDateTime cl = DatesAgenda::dtVersUTC(clDate);
    if (!cl.bEstRenseignee()) return {};
    if (!m_bJourneeEntiere)
        FctEntonnoir::bDateHeureUTCVersLocale(CCtxInfo::s_piGetVM(pclCtx), pclErreur, &cl);
    return cl;
}

CDateTime CGoogleEvenement::GetDateDebut(CCtxInfo* pclCtx, CXError* pclErreur) const {
    return __GetDate(pclCtx, pclErreur, m_dtDebut);
}

// An end read from the server shows as sent; one moved on by JourneeEntiere shows as set.
CDateTime CGoogleEvenement::GetDateFin(CCtxInfo* pclCtx, CXError* pclErreur) const {
    CDateTime cl = __GetDate(pclCtx, pclErreur, m_dtFin);
    if (m_bFinDecalee && cl.bEstRenseignee()) cl.bDecaleMilli(-knMilliJour);
    return cl;
}

// ---- JSON --------------------------------------------------------------------------------

CDateTimeRFC3339 CGoogleEvenement::__GetDate_RFC3339FromCAny(CAny& clValeur) {
    CDateTimeRFC3339 cl;
    // The text is read where it stands.
    const wchar_t* psz = s_bEstTexte(clValeur) ? clValeur.pclGetIntern()->nGetPCWSTR() : nullptr;
    // A text that does not read leaves the date empty, without an error.
    if (cl.nVersDate_RFC3339(psz ? psz : L"") != 0) cl = CDateTimeRFC3339();
    return cl;
}

void CGoogleEvenement::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    m_eEtatObjet = ETAT_SYNCHRONISE;
    const std::wstring_view sv = svChemin;
    if (sv == L"id"sv) {
        s_CopieTexte(clValeur, m_sIdentifiant);
    } else if (sv == L"summary"sv) {
        s_CopieTexte(clValeur, m_sTitre);
    } else if (sv == L"description"sv) {
        s_CopieTexte(clValeur, m_sContenu);
    } else if (sv == L"updated"sv) {
        m_dtMiseAJour = __GetDate_RFC3339FromCAny(clValeur);
    } else if (sv == L"start.date"sv || sv == L"start.dateTime"sv || sv == L"end.date"sv ||
               sv == L"end.dateTime"sv) {
        // Whichever of the four comes last decides whether the event is all-day.
        (sv[0] == L's' ? m_dtDebut : m_dtFin) = __GetDate_RFC3339FromCAny(clValeur);
        m_bJourneeEntiere = sv.ends_with(L".date"sv) ? 1 : 0;
    } else if (sv == L"location"sv) {
        __VideLieux();
        CWhere* pcl = CWhere::s_pclCreeObjet(nullptr, nullptr);
        pcl->vAddRef();
        CXYString<wchar_t> s;
        s_CopieTexte(clValeur, s);
        pcl->ForceDescription(s);
        pcl->m_eEtatObjet = ETAT_SYNCHRONISE;
        m_tabLieux.Ajoute(pcl);
    } else if (sv == L"creator.email"sv || sv == L"creator.displayName"sv) {
        s_CopieTexte(clValeur, sv == L"creator.email"sv ? m_sAuteurEmail : m_sAuteurNom);
        __MajAuteur();
    }
}

void CGoogleEvenement::_vSetTableauFromJSON(std::wstring_view svChemin, ITableauJSON& clTableau) {
    if (svChemin != L"attendees"sv) return;
    __VideParticipants();
    const int nNb = clTableau.vnGetNbElement();
    for (int i = 0; i < nNb; ++i) {
        auto clElement = CRef<IElementJSON>::Adopt(clTableau.vpiGetElement(i));
        CWho* pcl = CWho::s_pclCreeObjet(nullptr, nullptr);
        pcl->vAddRef();
        if (clElement) clElement->vAccepte(static_cast<CVisiteurJSONSetPropriete&>(*pcl));
        m_tabParticipants.Ajoute(pcl);
    }
}

CXYString<wchar_t> CGoogleEvenement::__czToJSON() const {
    // Only the first place travels, whatever its state.
    CXYString<wchar_t> sLieu;
    if (m_tabLieux.nGetNbElement() > 0) sLieu = m_tabLieux[0]->sGetDescription();

    std::wstring sDebut, sFin;
    if (m_bJourneeEntiere) {
        sDebut = s_sJour(m_dtDebut);
        sFin = m_dtFin.nGetAnnee() != 0 ? s_sJour(m_dtFin) : sDebut;
    } else {
        sDebut = DatesAgenda::sTexte(m_dtDebut).sv();
        sFin = DatesAgenda::sTexte(m_dtFin).sv();
    }

    std::wstring sParticipants;
    for (const CWho* p : m_tabParticipants) {
        if (p->m_eEtatObjet == ETAT_A_SUPPRIMER) continue;
        if (!sParticipants.empty()) sParticipants += L',';
        sParticipants += p->czToJSON().sv();
    }

    // The template keeps the unquoted keys "date:null" and "dateTime:null" of the old
    // writer: the service reads them.
    const wchar_t* pszCleDate = m_bJourneeEntiere ? L"date" : L"dateTime";
    const wchar_t* pszCleNulle = m_bJourneeEntiere ? L"dateTime" : L"date";
    std::wstring s = L"{\"kind\": \"calendar#event\", \"id\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sIdentifiant).sv();
    s += L"\", \"summary\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sTitre).sv();
    s += L"\", \"description\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(m_sContenu).sv();
    s += L"\", \"location\":\"";
    s += CGoogleConnexion::s_czEscapeJSON(sLieu).sv();
    s += L"\", \"attendees\":[";
    s += sParticipants;
    auto AjouteBorne = [&](const wchar_t* pszMembre, const std::wstring& sDate) {
        s += L'"';
        s += pszMembre;
        s += L"\":{\"";
        s += pszCleDate;
        s += L"\":\"";
        s += sDate;
        s += L"\", ";
        s += pszCleNulle;
        s += L":null}";
    };
    s += L"], ";
    AjouteBorne(L"start", sDebut);
    s += L", ";
    AjouteBorne(L"end", sFin);
    s += L'}';
    return CXYString<wchar_t>(std::wstring_view(s));
}

// ---- writes ------------------------------------------------------------------------------

void CGoogleEvenement::__GglAjouteModif(CGoogleConnexion& clConnexion, HTTPMethod eMethode,
                                        CCtxInfo* pclCtx, CXError* pclErreur) {
    // An event of no calendar is not written; the calendar's id goes as it stands.
    if (m_sIdAgenda.bVide()) return;
    std::wstring sChemin = L"/calendar/v3/calendars/";
    sChemin += m_sIdAgenda.sv();
    sChemin += L"/events";
    if (eMethode == HTTPPATCH) {
        sChemin += L'/';
        sChemin += m_sIdentifiant.sv();
    }
    _EcritJSON(clConnexion, eMethode, sChemin, __czToJSON(), pclCtx, pclErreur);
}

void CGoogleEvenement::__GglSupprime(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                     CXError* pclErreur) {
    if (m_sIdentifiant.bVide() || m_sIdAgenda.bVide()) return;
    std::wstring sChemin = L"/calendar/v3/calendars/";
    sChemin += m_sIdAgenda.sv();
    sChemin += L"/events/";
    sChemin += m_sIdentifiant.sv();
    // The status is not read: only a transport failure reaches the caller.
    _Supprime(clConnexion, sChemin, pclCtx, pclErreur);
    m_sIdentifiant.Vide();
}

eEtatObjet CGoogleEvenement::veCommitGLL(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx,
                                         CXError* pclErreur) {
    const eEtatObjet eEtat = m_eEtatObjet;
    if (eEtat == ETAT_SYNCHRONISE || eEtat == ETAT_NEUF) {
        // A changed child sends the whole event; children are never written on their own.
        auto bChange = [](const auto& tab) {
            for (const auto* p : tab)
                if (p->m_eEtatObjet == ETAT_MODIFIE || p->m_eEtatObjet == ETAT_A_CREER) return true;
            return false;
        };
        if (bChange(m_tabParticipants) || bChange(m_tabLieux)) {
            __GglAjouteModif(clConnexion, HTTPPATCH, pclCtx, pclErreur);
            return ETAT_MODIFIE;
        }
    }
    switch (eEtat) {
    case ETAT_A_CREER:
        __GglAjouteModif(clConnexion, HTTPPOST, pclCtx, pclErreur);
        break;
    case ETAT_A_SUPPRIMER:
        __GglSupprime(clConnexion, pclCtx, pclErreur);
        break;
    case ETAT_MODIFIE:
        __GglAjouteModif(clConnexion, HTTPPATCH, pclCtx, pclErreur);
        break;
    default:
        break;
    }
    return eEtat;
}

// The stubs that the rows of the class point at.
#include "frame/KllStubs.h"
#include "calendar/GoogleEvenement.def"
