// CWho, script type "gglPersonne": a participant of an event. It travels only inside its
// event: a changed participant makes the whole event go out as a PATCH.
#pragma once
#include "connection/DinoGglBase.h"

class CWho : public CCDinoGglBase {
public:
    static ITypeDescription* ms_piType;

    static CWho* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CWho; }
    void CopieObjet(CCtxInfo*, CXError*, CWho* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { m_sIdentifiant.Vide(), m_sEmail.Vide(), m_sLibelle.Vide(); }

    const CXYString<wchar_t>& GetEmail(CCtxInfo*, CXError*) const { return m_sEmail; }
    void SetEmail(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sEmail = s, _MarqueEcriture(); }
    const CXYString<wchar_t>& GetLibelle(CCtxInfo*, CXError*) const { return m_sLibelle; }
    void SetLibelle(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sLibelle = s, _MarqueEcriture(); }

    // {"id":"…", "email":"…", "displayName":"…"}, as the event's body carries it.
    CXYString<wchar_t> czToJSON() const;

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    ~CWho() override = default;
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;

private:
    CXYString<wchar_t> m_sIdentifiant;
    CXYString<wchar_t> m_sEmail;
    CXYString<wchar_t> m_sLibelle;
};
