// CWhere, script type "gglLieu": a place of an event. Only its Description travels, as the
// event's "location"; its Libelle stays on this side, although writing it marks the place.
#pragma once
#include "connection/DinoGglBase.h"

class CWhere : public CCDinoGglBase {
public:
    static ITypeDescription* ms_piType;

    static CWhere* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CWhere; }
    void CopieObjet(CCtxInfo*, CXError*, CWhere* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { m_sLibelle.Vide(), m_sDescription.Vide(); }

    const CXYString<wchar_t>& GetLibelle(CCtxInfo*, CXError*) const { return m_sLibelle; }
    void SetLibelle(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sLibelle = s, _MarqueEcriture(); }
    const CXYString<wchar_t>& GetDescription(CCtxInfo*, CXError*) const { return m_sDescription; }
    void SetDescription(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) {
        m_sDescription = s, _MarqueEcriture();
    }
    const CXYString<wchar_t>& sGetDescription() const { return m_sDescription; }
    void ForceDescription(const CXYString<wchar_t>& s) { m_sDescription = s; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    ~CWhere() override = default;
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;

private:
    CXYString<wchar_t> m_sLibelle;
    CXYString<wchar_t> m_sDescription;
};
