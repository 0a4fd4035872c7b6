// CGoogleDocument, script type "gglDocument": a Drive file as a listing gives it. Read-only to
// scripts: every setter is a forced write, for the host's rebuild; the change state plays no
// part. The download address is kept for GglRecupereDocument and shown to nobody.
#pragma once
#include "connection/DinoGglBase.h"
#include "foundation/DateTimeRFC3339.h"

#include "DateTime.h"
#include "XYString.h"

#include <cstdint>
#include <string_view>

class CAny;
class CCtxInfo;
class CXError;

class CGoogleDocument : public CCDinoGglBase {
public:
    static ITypeDescription* ms_piType;

    static CGoogleDocument* s_pclCreeObjet(CCtxInfo*, CXError*) { return new CGoogleDocument; }
    void CopieObjet(CCtxInfo*, CXError*, CGoogleDocument* pclSource);
    void RAZObjet(CCtxInfo*, CXError*);

    // ---- properties
    // A new empty author at each read: a listing says nothing of who made the file.
    IObjetBase* GetAuteur(CCtxInfo* pclCtx, CXError* pclErreur) const;
    bool GetSuivi(CCtxInfo*, CXError*) const { return m_bSuivi != 0; }
    void ForceSuivi(CCtxInfo*, CXError*, int b) { m_bSuivi = b ? 1 : 0; }
    const CXYString<wchar_t>& GetTitre(CCtxInfo*, CXError*) const { return m_sTitre; }
    void ForceTitre(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sTitre = s; }
    // Local time; an empty date stays empty.
    CDateTime GetDateMiseAJour(CCtxInfo* pclCtx, CXError* pclErreur) const;
    void ForceDateMiseAJour(CCtxInfo* pclCtx, CXError* pclErreur, const CDateTime& clDate);
    const CXYString<wchar_t>& GetIdentifiant(CCtxInfo*, CXError*) const { return m_sIdentifiant; }
    void ForceIdentifiant(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sIdentifiant = s; }
    const CXYString<wchar_t>& GetTypeMIME(CCtxInfo*, CXError*) const { return m_sTypeMIME; }
    void ForceTypeMIME(CCtxInfo*, CXError*, const CXYString<wchar_t>& s) { m_sTypeMIME = s; }

    const CXYString<wchar_t>& sGetIdentifiant() const { return m_sIdentifiant; }
    const CXYString<wchar_t>& sGetURLTelechargement() const { return m_sURLTelechargement; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

protected:
    void _vSetProprieteFromJSON(std::wstring_view svChemin, CAny& clValeur) override;

private:
    CXYString<wchar_t> m_sTitre;
    CXYString<wchar_t> m_sIdentifiant;
    CDateTimeRFC3339 m_dtMiseAJour;
    int32_t m_bSuivi = 0;
    CXYString<wchar_t> m_sTypeMIME;
    CXYString<wchar_t> m_sURLTelechargement;
};
