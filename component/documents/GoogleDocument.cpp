#include "documents/GoogleDocument.h"

#include "frame/FctEntonnoir.h"
#include "xmlobject/Author.h"

#include "Any.h"
#include "KVResult.h"
#include "VM.h"

ITypeDescription* CGoogleDocument::ms_piType = nullptr;

void CGoogleDocument::CopieObjet(CCtxInfo*, CXError*, CGoogleDocument* pclSource) {
    if (!pclSource || pclSource == this)
        return;
    m_sTitre = pclSource->m_sTitre;
    m_sIdentifiant = pclSource->m_sIdentifiant;
    m_dtMiseAJour = pclSource->m_dtMiseAJour;
    m_bSuivi = pclSource->m_bSuivi;
    m_sTypeMIME = pclSource->m_sTypeMIME;
    m_sURLTelechargement = pclSource->m_sURLTelechargement;
}

void CGoogleDocument::RAZObjet(CCtxInfo*, CXError*) {
    m_sTitre.Vide();
    m_sIdentifiant.Vide();
    m_dtMiseAJour = CDateTimeRFC3339();
    m_bSuivi = 0;
    m_sTypeMIME.Vide();
    m_sURLTelechargement.Vide();
    m_eEtatObjet = ETAT_NEUF;
}

IObjetBase* CGoogleDocument::GetAuteur(CCtxInfo* pclCtx, CXError* pclErreur) const {
    return CAuthor::s_pclCreeObjet(pclCtx, pclErreur)->piGetObjetBase();
}

CDateTime CGoogleDocument::GetDateMiseAJour(CCtxInfo* pclCtx, CXError* pclErreur) const {
    CDateTime cl;
    if (!m_dtMiseAJour.bEstRenseignee() || m_dtMiseAJour.nVersDate_UTC(cl) != 0)
        return {};
    FctEntonnoir::bDateHeureUTCVersLocale(CCtxInfo::s_piGetVM(pclCtx), pclErreur, &cl);
    return cl;
}

// The inverse of the read: the local time given goes back to UTC, the zone kept at zero.
void CGoogleDocument::ForceDateMiseAJour(CCtxInfo* pclCtx, CXError* pclErreur,
                                         const CDateTime& clDate) {
    CDateTime clUTC = clDate;
    if (clUTC.bEstRenseignee())
        FctEntonnoir::bDateHeureLocaleVersUTC(CCtxInfo::s_piGetVM(pclCtx), pclErreur, &clUTC);
    m_dtMiseAJour = CDateTimeRFC3339();
    static_cast<CDateTime&>(m_dtMiseAJour) = clUTC;
}

void CGoogleDocument::_vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) {
    m_eEtatObjet = ETAT_SYNCHRONISE;
    if (svChemin == L"title") {
        s_CopieTexte(clValeur, m_sTitre);
    } else if (svChemin == L"id") {
        s_CopieTexte(clValeur, m_sIdentifiant);
    } else if (svChemin == L"modifiedDate") {
        CXYString<wchar_t> sTexte;
        s_CopieTexte(clValeur, sTexte);
        if (m_dtMiseAJour.nVersDate_RFC3339(sTexte.pszGet()) != 0)
            m_dtMiseAJour = CDateTimeRFC3339();
    } else if (svChemin == L"labels.starred") {
        bool b = false;
        m_bSuivi = KV_bSucces(clValeur.nGetBool(&b)) && b ? 1 : 0;
    } else if (svChemin == L"mimeType") {
        s_CopieTexte(clValeur, m_sTypeMIME);
    } else if (svChemin == L"downloadUrl") {
        s_CopieTexte(clValeur, m_sURLTelechargement);
    }
}

#include "frame/KllStubs.h"
#include "documents/GoogleDocument.def"
