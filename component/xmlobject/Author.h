// CAuthor, script type "gglAuteur": who made an entry, a name and an e-mail address. Read from
// the services' answers; scripts only read it.
#pragma once
#include "frame/ObjetComposante.h"

#include "XYString.h"

class CCtxInfo;
class CXError;

class CAuthor : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    static CAuthor* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CAuthor; }
    void CopieObjet(CCtxInfo*, CXError*, CAuthor* pclSource) {
        if (pclSource && pclSource != this) m_sNom = pclSource->m_sNom, m_sEmail = pclSource->m_sEmail;
    }
    void RAZObjet(CCtxInfo*, CXError*) { m_sNom.Vide(), m_sEmail.Vide(); }

    const CXYString<wchar_t>& GetNom(CCtxInfo*, CXError*) const { return m_sNom; }
    void ForceNom(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sNom = s; }
    const CXYString<wchar_t>& GetEmail(CCtxInfo*, CXError*) const { return m_sEmail; }
    void ForceEmail(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sEmail = s; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    ~CAuthor() override = default;

private:
    CXYString<wchar_t> m_sNom;
    CXYString<wchar_t> m_sEmail;
};
