// CGooglePoint, script type "gglCoordonnée": a latitude and a longitude, as a point of a path or
// the zone of the map parameters.
#pragma once
#include "frame/ObjetComposante.h"

#include "TString.h"

#include <cstdint>
#include <string>

class CCtxInfo;
class CXError;

class CGooglePoint : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    CGooglePoint() { __InitRAZ(); }
    // Public: the map parameters hold their zone by value.
    ~CGooglePoint() override = default;

    static CGooglePoint* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGooglePoint* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { RAZ(); }
    void RAZ() { __InitRAZ(); }

    // "latitude,longitude", six decimals each; valid until the next call.
    operator const wchar_t*();

    double GetLatitude(CCtxInfo*, CXError*) const { return m_dLatitude; }
    void SetLatitude(CCtxInfo*, CXError*, double dLatitude);
    double GetLongitude(CCtxInfo*, CXError*) const { return m_dLongitude; }
    void SetLongitude(CCtxInfo*, CXError*, double dLongitude);

    double dGetLatitude() const { return m_dLatitude; }
    double dGetLongitude() const { return m_dLongitude; }
    // Whether a coordinate was written since the point was made or reset.
    bool bEstRenseigne() const { return m_bRenseigne != 0; }

    // A point that lives inside another object counts on its owner: a script that holds the
    // point keeps the owner alive, and the point is never deleted on its own.
    void SetProprietaire(IObjetBase* piProprietaire) { m_piProprietaire = piProprietaire; }
    void vAddRef() override;
    void vRelease() override;

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

    // Appends a number as the C library's "%f" writes it in the C locale: the query needs a
    // dot, whatever the process locale says.
    static void s_AjouteReel(std::wstring& s, double d);

private:
    void __InitRAZ();

    double m_dLatitude;
    double m_dLongitude;
    CTString m_sTexte;
    int32_t m_bRenseigne;
    IObjetBase* m_piProprietaire = nullptr;
};
