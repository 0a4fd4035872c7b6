// The calendar's script functions, members of CGoogleConnexion: the list of calendars, one
// calendar found by name, its events between two dates, and the writes of GglEcrit and
// GglSupprime. Only the first page of any reply is read: 250 calendars, 2500 events.
#include "calendar/DatesAgenda.h"
#include "calendar/GoogleAgenda.h"
#include "calendar/GoogleEvenement.h"
#include "connection/GoogleConnexion.h"
#include "connection/GoogleEndpoints.h"
#include "connection/HTTPRequete.h"
#include "connection/HTTPResponse.h"
#include "connection/VisitJSONInstancieTableau.h"
#include "foundation/LooseCompare.h"
#include "frame/ComposanteGGL.h"
#include "frame/FctEntonnoir.h"
#include "frame/ModuleInfo.h"
#include "frame/XErrorModule60.h"

#include "Any.h"
#include "JSONService.h"
#include "Ref.h"
#include "VM.h"
#include "XError.h"

#include <string>

namespace {

constexpr wchar_t s_szFullCalendars[] = L"/calendar/v3/users/me/calendarList";
constexpr wchar_t s_szStartMin[] = L"timeMin";
constexpr wchar_t s_szStartMax[] = L"timeMax";
constexpr wchar_t s_szSingleEvents[] = L"singleEvents";
constexpr wchar_t s_szFullTextQuery[] = L"q";
constexpr wchar_t s_szOrderBy[] = L"orderBy";
constexpr wchar_t s_szMaxResults_Calendar[] = L"maxResults";

using CVisiteAgendas = CVisitJSONInstancieTableau<CGoogleAgenda>;
using CVisiteEvenements = CVisitJSONInstancieTableau<CGoogleEvenement>;

std::wstring s_sAPI(std::wstring_view svChemin) {
    std::wstring s = gszGoogleAPI;
    s += svChemin;
    return s;
}

// The events path of a calendar id, as it is given.
std::wstring s_sCheminEvenements(std::wstring_view svId) {
    std::wstring s = s_sAPI(L"/calendar/v3/calendars/");
    s += svId;
    s += L"/events";
    return s;
}

// A date argument counts only when complete; the time of day is not looked at.
CDateTime* s_pDate(CDateTime& dt) { return dt.bEstRenseignee() ? &dt : nullptr; }

// A bound in UTC with a zero offset: "2012-05-01T08:00:00.000Z".
void s_AjouteBorne(CHTTPRequete& clRequete, const wchar_t* pszNom, const CDateTime& dt) {
    CDateTimeRFC3339 cl;
    static_cast<CDateTime&>(cl) = dt;
    clRequete.AjouteParametre(pszNom, DatesAgenda::sTexte(cl).pszGet());
}

// Both sides without the blanks around them, then character by character ignoring case and
// accents.
bool s_bMemeNom(const CXYString<wchar_t>& sNom, std::wstring_view svCherche) {
    auto Coupe = [](std::wstring_view sv) {
        while (!sv.empty() && sv.front() == L' ') sv.remove_prefix(1);
        while (!sv.empty() && sv.back() == L' ') sv.remove_suffix(1);
        return sv;
    };
    const std::wstring_view a = Coupe(sNom.sv()), b = Coupe(svCherche);
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (STR_nCompareCharSoupleW(a[i], b[i]) != 0) return false;
    return true;
}

// Runs a prepared events request and hands the events to the calendar, which drops those it
// had. Another status than 200 leaves the calendar as it was.
bool s_bRemplitAgenda(CGoogleConnexion& clConnexion, CHTTPRequete& clRequete,
                      CGoogleAgenda* pclAgenda, CCtxInfo* pclCtx, CXError* pclErreur) {
    CHTTPResponse clReponse =
        clConnexion.clExecuteRequeteCOM(CCtxInfo::s_piGetVM(pclCtx), clRequete, HTTPGET, pclErreur);
    if (!pclErreur->bEstPropre()) return false;
    auto clRacine = CGoogleConnexion::s_piParseJSONResponse(clReponse, pclErreur, HTTPOK);
    if (!clRacine) return pclErreur->bEstPropre();
    CVisiteEvenements clVisiteur(pclErreur, pclCtx);
    clRacine->vAccepte(clVisiteur);
    pclAgenda->DonneTableauEvenements(clVisiteur.tabGet());
    return pclErreur->bEstPropre();
}

bool s_bGoogleRemplitAgenda(CGoogleConnexion& clConnexion, CCtxInfo* pclCtx, CXError* pclErreur,
                            CGoogleAgenda* pclAgenda, CDateTime* pDebut, CDateTime* pFin,
                            const wchar_t* pszTexte) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!clConnexion.__bCheckAndLogService(SERVICEGOOGLE_AGENDA, piVM, pclErreur)) return false;
    if (!pclAgenda) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 2);
        return false;
    }
    // The host encodes what a URI may not hold; "#" and "@" it keeps, and a calendar id has
    // both.
    CXYString<wchar_t> sId;
    FctEntonnoir::bUrlEncode(piVM, pclErreur, pclAgenda->sGetIdentifiant(), &sId);
    std::wstring sIdEncode;
    for (wchar_t c : sId.sv()) {
        if (c == L'#')
            sIdEncode += L"%23";
        else if (c == L'@')
            sIdEncode += L"%40";
        else
            sIdEncode += c;
    }
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, s_sCheminEvenements(sIdEncode).c_str(),
                           HTTPCT_FORMULAIRE);
    clRequete.AjouteParametre(s_szSingleEvents, L"true");
    clRequete.AjouteParametre(s_szOrderBy, L"startTime");
    clRequete.AjouteParametre(s_szMaxResults_Calendar, L"2500");
    if (!pDebut && !pFin) {
        // No bound at all: the events ahead.
        s_AjouteBorne(clRequete, s_szStartMin, DatesAgenda::dtMaintenantUTC());
    }
    if (pDebut) {
        FctEntonnoir::bDateHeureLocaleVersUTC(piVM, pclErreur, pDebut);
        s_AjouteBorne(clRequete, s_szStartMin, *pDebut);
    }
    if (pFin) {
        FctEntonnoir::bDateHeureLocaleVersUTC(piVM, pclErreur, pFin);
        s_AjouteBorne(clRequete, s_szStartMax, *pFin);
    }
    if (pszTexte && *pszTexte) clRequete.AjouteParametre(s_szFullTextQuery, pszTexte);
    return s_bRemplitAgenda(clConnexion, clRequete, pclAgenda, pclCtx, pclErreur);
}

} // namespace

// ---- the list ----------------------------------------------------------------------------

IKLTableau* CGoogleConnexion::GglListeAgenda(CCtxInfo* pclCtx, CXError* pclErreur, int nOption) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    if (!__bCheckAndLogService(SERVICEGOOGLE_AGENDA, piVM, pclErreur))
        return CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, CGoogleAgenda::ms_piType)
            .pDetach();
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, s_sAPI(s_szFullCalendars).c_str(),
                           HTTPCT_FORMULAIRE);
    if (nOption == 1) clRequete.AjouteParametre(L"minAccessRole", L"owner");
    clRequete.AjouteParametre(L"maxResults", 250);
    CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, HTTPGET, pclErreur);
    if (!pclErreur->bEstPropre()) return nullptr;
    auto clRacine = s_piParseJSONResponse(clReponse, pclErreur, HTTPOK);
    if (!clRacine) return nullptr;
    CVisiteAgendas clVisiteur(pclErreur, pclCtx);
    clRacine->vAccepte(clVisiteur);

    auto clTableau =
        CComposanteGGL::s_pclAlloueTableauVMVide(piVM, pclErreur, CGoogleAgenda::ms_piType);
    CXArray<CGoogleAgenda*>& tab = clVisiteur.tabGet();
    if (!clTableau || !clTableau->vbRedimensionne(static_cast<int>(tab.nGetNbElement()), pclErreur))
        return nullptr;
    for (size_t i = 0; i < tab.nGetNbElement(); ++i) {
        CAny clValeur;
        clValeur.SetObjet(tab[i]->piGetObjetBase(), KVTYPE_KLDINO);
        if (!clTableau->vbSetElement(static_cast<int>(i), clValeur, pclErreur)) return nullptr;
    }
    return clTableau.pDetach();
}

// ---- one calendar ------------------------------------------------------------------------

IObjetBase* CGoogleConnexion::GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                                CXYString<wchar_t> sNom, CDateTime dtDebut,
                                                CDateTime dtFin, CXYString<wchar_t> sTexte) {
    IVM* piVM = CCtxInfo::s_piGetVM(pclCtx);
    CRef<CGoogleAgenda> clChoisi;
    {
        // No service check here: the request's own road logs in when it must.
        CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, s_sAPI(s_szFullCalendars).c_str(),
                               HTTPCT_FORMULAIRE);
        CHTTPResponse clReponse = clExecuteRequeteCOM(piVM, clRequete, HTTPGET, pclErreur);
        CRef<IElementJSON> clRacine;
        if (pclErreur->bEstPropre())
            clRacine = s_piParseJSONResponse(clReponse, pclErreur, HTTPOK);
        CVisiteAgendas clVisiteur(pclErreur, pclCtx);
        if (clRacine) clRacine->vAccepte(clVisiteur);
        const CXArray<CGoogleAgenda*>& tab = clVisiteur.tabGet();
        if (sNom.bVide() && tab.nGetNbElement() > 0) {
            clChoisi = CRef<CGoogleAgenda>::Retain(tab[0]);
        } else {
            // The title first, then the id, calendar by calendar: the first match wins.
            for (CGoogleAgenda* p : tab) {
                if (s_bMemeNom(p->sGetTitre(), sNom.sv()) ||
                    s_bMemeNom(p->sGetIdentifiant(), sNom.sv())) {
                    clChoisi = CRef<CGoogleAgenda>::Retain(p);
                    break;
                }
            }
        }
    }
    if (!clChoisi) {
        // The error the exchange left, else 600012 with the name; the script gets an empty
        // calendar either way.
        if (pclErreur->bEstPropre())
            pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_CALENDAR_NOT_FOUND, sNom.pszGet());
        clChoisi = CRef<CGoogleAgenda>::Retain(CGoogleAgenda::s_pclCreeObjet(pclCtx, pclErreur));
        clChoisi->vNotifieErreurInstance(piVM, pclErreur, 0);
    } else if (!s_bGoogleRemplitAgenda(*this, pclCtx, pclErreur, clChoisi.pGet(), s_pDate(dtDebut),
                                       s_pDate(dtFin), sTexte.pszGet())) {
        clChoisi->vNotifieErreurInstance(piVM, pclErreur, 0);
    }
    return clChoisi.pDetach()->piCede();
}

IObjetBase* CGoogleConnexion::GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur) {
    return GglRecupereAgenda(pclCtx, pclErreur, {}, {}, {}, {});
}
IObjetBase* CGoogleConnexion::GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                                CXYString<wchar_t> sNom) {
    return GglRecupereAgenda(pclCtx, pclErreur, std::move(sNom), {}, {}, {});
}
IObjetBase* CGoogleConnexion::GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                                CXYString<wchar_t> sNom, CDateTime dtDebut) {
    return GglRecupereAgenda(pclCtx, pclErreur, std::move(sNom), dtDebut, {}, {});
}
IObjetBase* CGoogleConnexion::GglRecupereAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                                CXYString<wchar_t> sNom, CDateTime dtDebut,
                                                CDateTime dtFin) {
    return GglRecupereAgenda(pclCtx, pclErreur, std::move(sNom), dtDebut, dtFin, {});
}

// ---- filling -----------------------------------------------------------------------------

bool CGoogleConnexion::GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                        CGoogleAgenda* pclAgenda, CDateTime dtDebut,
                                        CDateTime dtFin, const wchar_t* pszTexte) {
    return s_bGoogleRemplitAgenda(*this, pclCtx, pclErreur, pclAgenda, s_pDate(dtDebut),
                                  s_pDate(dtFin), pszTexte);
}
bool CGoogleConnexion::GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                        CGoogleAgenda* pclAgenda) {
    return GglRemplitAgenda(pclCtx, pclErreur, pclAgenda, {}, {}, nullptr);
}
bool CGoogleConnexion::GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                        CGoogleAgenda* pclAgenda, CDateTime dtDebut) {
    return GglRemplitAgenda(pclCtx, pclErreur, pclAgenda, dtDebut, {}, nullptr);
}
bool CGoogleConnexion::GglRemplitAgenda(CCtxInfo* pclCtx, CXError* pclErreur,
                                        CGoogleAgenda* pclAgenda, CDateTime dtDebut,
                                        CDateTime dtFin) {
    return GglRemplitAgenda(pclCtx, pclErreur, pclAgenda, dtDebut, dtFin, nullptr);
}

bool CGoogleConnexion::GglRemplitAgendaParRequete(CCtxInfo* pclCtx, CXError* pclErreur,
                                                  CGoogleAgenda* pclAgenda,
                                                  const wchar_t* pszRequete) {
    if (!__bCheckAndLogService(SERVICEGOOGLE_AGENDA, CCtxInfo::s_piGetVM(pclCtx), pclErreur))
        return false;
    if (!pclAgenda) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 2);
        return false;
    }
    // The id as it stands and the script's query as it stands: nothing added, nothing encoded.
    std::wstring sURL = s_sCheminEvenements(pclAgenda->sGetIdentifiant().sv());
    sURL += L'?';
    sURL += pszRequete ? pszRequete : L"";
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, sURL.c_str(), HTTPCT_ATOM);
    return s_bRemplitAgenda(*this, clRequete, pclAgenda, pclCtx, pclErreur);
}

// ---- writes ------------------------------------------------------------------------------

bool CGoogleConnexion::GglEcrit(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda) {
    if (!__bCheckAndLogService(SERVICEGOOGLE_AGENDA, CCtxInfo::s_piGetVM(pclCtx), pclErreur))
        return false;
    if (!pclAgenda) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 2);
        return false;
    }
    pclAgenda->veCommitGLL(*this, pclCtx, pclErreur);
    return pclErreur->bEstPropre();
}

bool CGoogleConnexion::GglSupprime(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleAgenda* pclAgenda) {
    if (!__bCheckAndLogService(SERVICEGOOGLE_AGENDA, CCtxInfo::s_piGetVM(pclCtx), pclErreur))
        return false;
    // The host never passes a null object for this syntax; a direct caller gets the same answer
    // as GglEcrit's.
    if (!pclAgenda) {
        pclErreur->SetUserError(&gstMyModuleInfo60, KVERR_OBJECT_EXPECTED, 2);
        return false;
    }
    pclAgenda->m_eEtatObjet = ETAT_A_SUPPRIMER;
    pclAgenda->veCommitGLL(*this, pclCtx, pclErreur);
    return pclErreur->bEstPropre();
}
