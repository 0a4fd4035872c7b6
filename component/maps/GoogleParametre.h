// CGoogleParametre, script type "gglParamètreCarte": the options of a static map (format,
// language, scale...), its path, its markers and the zone to show, and their query text.
#pragma once
#include "frame/ObjetComposante.h"
#include "maps/GestionMarqueurs.h"
#include "maps/GoogleChemin.h"
#include "maps/GooglePoint.h"

#include "Ref.h"
#include "TString.h"

#include <cstdint>

class CCtxInfo;
class CXError;

class CGoogleParametre : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    CGoogleParametre();

    static CGoogleParametre* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    // The options, the zone, and new copies of the source's path and markers.
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleParametre* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { RAZ(); }
    // The defaults, with a new empty path and new empty markers: those a script still holds
    // are let go, not emptied.
    void RAZ() { __InitRAZ(); }

    // The query parameters, "format=...&hl=...&mobile=true&scale=...&path=...&markers=...",
    // each only when set, without a trailing "&"; valid until the next call.
    operator const wchar_t*();
    // With a zone set and both its half-spans above 0: in sResultat the corners
    // "south,west|north,east" of the zone around the centre, and true. Otherwise false.
    bool bGetZoneVisible(double dLatitude, double dLongitude, CTString& sResultat);

    const wchar_t* GetFormat(CCtxInfo*, CXError*) const { return m_sFormat.pszGet(); }
    // One of gglGIF, gglJPG, gglJPGBaseline, gglPNG8, gglPNG32, exactly; anything else is
    // refused with 600018 and the format stays.
    void SetFormat(CCtxInfo*, CXError* pclErreur, const wchar_t* pszFormat);
    IObjetBase* GetChemin(CCtxInfo*, CXError*) { return m_clChemin->piGetObjetBase(); }
    bool GetCadre(CCtxInfo*, CXError*) const { return m_bCadre != 0; }
    void SetCadre(CCtxInfo*, CXError*, int b) { m_bCadre = b != 0; }
    const wchar_t* GetLangue(CCtxInfo*, CXError*) const { return m_sLangue.pszGet(); }
    void SetLangue(CCtxInfo*, CXError*, const wchar_t* psz) { m_sLangue = psz; }
    IObjetBase* GetZone(CCtxInfo*, CXError*) { return m_clZone.piGetObjetBase(); }
    bool GetMobile(CCtxInfo*, CXError*) const { return m_bMobile != 0; }
    void SetMobile(CCtxInfo*, CXError*, int b) { m_bMobile = b != 0; }
    int GetEchelle(CCtxInfo*, CXError*) const { return m_nEchelle; }
    void SetEchelle(CCtxInfo*, CXError*, int n) { m_nEchelle = n; }
    void* AccesseurMarqueur(CCtxInfo*, CXError*) {
        return static_cast<IObjetCollection*>(m_clMarqueurs.pGet());
    }

    CGoogleChemin& clGetChemin() { return *m_clChemin; }
    CGestionMarqueurs& clGetMarqueurs() { return *m_clMarqueurs; }
    CGooglePoint& clGetZone() { return m_clZone; }

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    void __InitRAZ();

    CTString m_sFormat;
    CRef<CGoogleChemin> m_clChemin;
    int32_t m_bCadre;
    CTString m_sLangue;
    CGooglePoint m_clZone;
    CTString m_sTexte;
    int32_t m_bMobile;
    CRef<CGestionMarqueurs> m_clMarqueurs;
    int32_t m_nEchelle;
};
