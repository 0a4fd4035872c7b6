// CGoogleChemin, script type "gglChemin": a path drawn on a static map, and the collection of
// its points (accessor Point), at most 100.
#pragma once
#include "frame/ObjetComposante.h"
#include "maps/CollectionCarte.h"
#include "maps/GooglePoint.h"

#include "TString.h"

#include <cstdint>

class CCtxInfo;
class CXError;

class CGoogleChemin : public CObjetComposante, public CTCollectionCarte<CGooglePoint> {
public:
    static ITypeDescription* ms_piType;
    static constexpr size_t knMaxPoint = 100;

    CGoogleChemin() : CTCollectionCarte<CGooglePoint>(knMaxPoint) { __InitRAZ(); }

    static CGoogleChemin* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    // The settings and new copies of the source's points.
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleChemin* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { RAZ(); }
    // The defaults, and no point.
    void RAZ() { __InitRAZ(); }

    // "color:0x<RRGGBB><AA>|weight:<thickness>" then "|<point>" for each point; valid until
    // the next call. An opacity above 100 is brought back to 100 on the way.
    operator const wchar_t*();

    int GetCouleur(CCtxInfo*, CXError*) const { return m_nCouleur; }
    void SetCouleur(CCtxInfo*, CXError*, int n) { m_nCouleur = n; }
    int GetOpacite(CCtxInfo*, CXError*) const { return m_nOpacite; }
    void SetOpacite(CCtxInfo*, CXError*, int n) { m_nOpacite = n; }
    int GetEpaisseur(CCtxInfo*, CXError*) const { return m_nEpaisseur; }
    void SetEpaisseur(CCtxInfo*, CXError*, int n) { m_nEpaisseur = n; }
    // The path is its own collection; the host holds it by the collection side.
    void* AccesseurPoint(CCtxInfo*, CXError*) { return static_cast<IObjetCollection*>(this); }

    // One count for the object and its collection side.
    void vAddRef() override { CObjetComposante::vAddRef(); }
    void vRelease() override { CObjetComposante::vRelease(); }
    IObjetBase* vpiGetObjetBase() override { return this; }
    IObjetCollection* vpiGetIObjetCollection() override { return this; }
    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    void __InitRAZ();

    int32_t m_nCouleur;
    int32_t m_nOpacite; // per cent
    int32_t m_nEpaisseur;
    CTString m_sTexte;
};
