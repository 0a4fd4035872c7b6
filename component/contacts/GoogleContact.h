// CGoogleContact and CGglGroupeContact, script types "gglContact" and "gglGroupeContact": one
// entry of the contacts feed and one of the groups feed, root entries that queue their own
// additions and changes; GglEcrit runs the queue, GglSupprime deletes (contacts/F_Contacts.cpp).
//
// A contact's groups are XML members (one "gContact:groupMembershipInfo" each) and, for the
// script, a plain array of their URLs made on first read. A script may edit that array in
// place, unseen: the members are rebuilt from it before every save.
#pragma once
#include "updates/XmlObjectAutonome.h"
#include "xmlobject/XmlObjectScript.h"

#include "connection/ServicesGoogle.h"

#include "DateTime.h"

#include <cstdint>

class IKLTableau;
class IVM;

// The feeds, relative to the Google feeds origin.
inline constexpr wchar_t s_szContacts[] = L"/m8/feeds/contacts/default/full";
inline constexpr wchar_t s_szGroupesContacts[] = L"/m8/feeds/groups/default/full";

// What a contact and a group share: new while no "id", the service, the read-only members.
class CEntreeContacts : public CXmlObjectAutonomeRacine {
public:
    bool vbIsNouvelObjet() override { return !pclGetPropriete("id", 0); }
    int veGetService() override { return SERVICEGOOGLE_CONTACT; }
    // The post URL of the class, absolute.
    static const wchar_t* s_pszURLAjout(const wchar_t* pszChemin);

protected:
    using CXmlObjectAutonomeRacine::CXmlObjectAutonomeRacine;
    CXYString<wchar_t> _sTexte(const char* pszMembre) { return CXmlProprietesScript::s_sGetTexte(this, pszMembre); }
    void _SetTexte(const char* pszMembre, const CXYString<wchar_t>& s) { CXmlProprietesScript::s_SetTexte(this, pszMembre, s); }
    CDateTime _dtMiseAJour();
    // From inside the component: the "id" set, which makes the entry a saved one.
    void _ForceIdentifiant(const CXYString<wchar_t>& s);
    void _ForceMiseAJour(const CDateTime& dt);
};

class CGglGroupeContact final : public CEntreeContacts, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CGglGroupeContact)
    XML_SCRIPT_DECLARE(CGglGroupeContact)
    const wchar_t* vpszGetURLAjoutMoiMeme() override;

    CXYString<wchar_t> GetNom(CCtxInfo*, CXError*) { return _sTexte("title"); }
    void SetNom(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { _SetTexte("title", s); }
    CXYString<wchar_t> GetIdentifiant(CCtxInfo*, CXError*) { return _sTexte("id"); }
    void ForceIdentifiant(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { _ForceIdentifiant(s); }
    CDateTime GetDateMiseAJour(CCtxInfo*, CXError*) { return _dtMiseAJour(); }
    void ForceDateMiseAJour(CCtxInfo*, CXError*, const CDateTime& dt) { _ForceMiseAJour(dt); }
};

class CGoogleContact final : public CEntreeContacts, public CObjetComposanteBase {
public:
    XML_OBJET_DECLARE(CGoogleContact)
    XML_SCRIPT_DECLARE(CGoogleContact)
    const wchar_t* vpszGetURLAjoutMoiMeme() override;

    CXYString<wchar_t> GetNom(CCtxInfo*, CXError*) { return _sTexte("title"); }
    void SetNom(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { _SetTexte("title", s); }
    CXYString<wchar_t> GetNotes(CCtxInfo*, CXError*) { return _sTexte("content"); }
    void SetNotes(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { _SetTexte("content", s); }
    CXYString<wchar_t> GetIdentifiant(CCtxInfo*, CXError*) { return _sTexte("id"); }
    void ForceIdentifiant(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { _ForceIdentifiant(s); }
    CDateTime GetDateModification(CCtxInfo*, CXError*) { return _dtMiseAJour(); }
    void ForceDateModification(CCtxInfo*, CXError*, const CDateTime& dt) { _ForceMiseAJour(dt); }
    // The script's array of group URLs itself, not a copy; writing one copies it in and
    // queues nothing.
    IKLTableau* GetGroupe(CCtxInfo* pclCtx, CXError* pclErreur);
    void SetGroupe(CCtxInfo* pclCtx, CXError* pclErreur, IKLTableau* piTableau);

    void* AccesseurMessagerieInstantanee(CCtxInfo*, CXError*);
    void* AccesseurTelephone(CCtxInfo*, CXError*);
    void* AccesseurTelephone_compat(CCtxInfo* pclCtx, CXError* pclErreur) { return AccesseurTelephone(pclCtx, pclErreur); }
    void* AccesseurAdresse(CCtxInfo*, CXError*);
    void* AccesseurEmail(CCtxInfo*, CXError*);
    void* AccesseurOrganisation(CCtxInfo*, CXError*);
    void* AccesseurOrganisation_compat(CCtxInfo* pclCtx, CXError* pclErreur) { return AccesseurOrganisation(pclCtx, pclErreur); }

    // Before a save: the members rebuilt from the array, when there is one.
    bool vbPreAjout(CXError& clErreur) override;
    bool vbPreModif(CXError& clErreur) override { return vbPreAjout(clErreur); }
    // After a save: the array refreshed from the members the server sent back.
    void vPostAjout(CHTTPResponse& clReponse, CXError* pclErreur, CGoogleConnexion* pclConnexion,
                    IVM* piVM) override;
    void vPostModif(CHTTPResponse& clReponse, CXError* pclErreur, IVM* piVM) override;
    void _vRAZ(CCtxInfo* pclCtx, CXError* pclErreur) override;

protected:
    ~CGoogleContact() override;

private:
    void _InitTableaux(IVM* piVM, CXError* pclErreur);
    void _PropGroup2StrArray(IKLTableau* piTableau, IVM* piVM, CXError* pclErreur);
    void _StrArray2PropGroup(IKLTableau* piTableau, CXError* pclErreur);
    void _RafraichitTableau(IVM* piVM, CXError* pclErreur);

    IKLTableau* m_piTabGroupes = nullptr; // counted
    IVM* m_piVM = nullptr;                // the VM that made the array
    int32_t m_bTableauxInit = 0;
};
