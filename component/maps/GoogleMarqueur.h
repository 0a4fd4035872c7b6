// CGoogleMarqueur, script type "gglMarqueur": a marker of a static map, with its size, its
// colour and an optional letter.
#pragma once
#include "frame/ObjetComposante.h"

#include "TString.h"

#include <cstdint>

class CCtxInfo;
class CXError;

class CGoogleMarqueur : public CObjetComposante {
public:
    static ITypeDescription* ms_piType;

    CGoogleMarqueur() { __InitRAZ(); }

    static CGoogleMarqueur* s_pclCreeObjet(CCtxInfo* pclCtx, CXError* pclErreur);
    void CopieObjet(CCtxInfo* pclCtx, CXError* pclErreur, CGoogleMarqueur* pclSource);
    void RAZObjet(CCtxInfo*, CXError*) { RAZ(); }
    void RAZ() { __InitRAZ(); }

    // The marker alone as a query group, "markers=<style>|<coordinates>"; valid until the next
    // call.
    operator const wchar_t*();
    // "latitude,longitude", six decimals each.
    const wchar_t* pszGetCoordonnees();
    // "size:<size>|color:<colour name>", then "|label:<letter>" for a letter or digit on a
    // marker large enough to show it.
    const wchar_t* pszGetStyle();

    double GetLatitude(CCtxInfo*, CXError*) const { return m_dLatitude; }
    void SetLatitude(CCtxInfo*, CXError*, double d) { m_dLatitude = d; }
    double GetLongitude(CCtxInfo*, CXError*) const { return m_dLongitude; }
    void SetLongitude(CCtxInfo*, CXError*, double d) { m_dLongitude = d; }
    const wchar_t* GetTaille(CCtxInfo*, CXError*) const { return m_sTaille.pszGet(); }
    // One of gglMini, gglPetit, gglMoyen, gglGrand, exactly; anything else is refused with
    // 600016 and the size stays.
    void SetTaille(CCtxInfo*, CXError* pclErreur, const wchar_t* pszTaille);
    int GetCouleur(CCtxInfo*, CXError*) const { return m_nCouleur; }
    // One of the named colours (red in the low byte); any other is kept with no name (the query
    // then names none) and reported with 600015.
    void SetCouleur(CCtxInfo*, CXError* pclErreur, int nCouleur);
    char GetLettre(CCtxInfo*, CXError*) const { return m_cLettre; }
    void SetLettre(CCtxInfo*, CXError*, char cLettre) { m_cLettre = cLettre; }

    // The name the query gives a colour, or null for a colour that has none.
    static const wchar_t* s_pszNomCouleur(int nCouleur);

    ITypeDescription* vpiGetTypeReel() override { return ms_piType; }
    void* vpGetObjetC() override { return this; }

private:
    void __InitRAZ();

    double m_dLatitude;
    double m_dLongitude;
    CTString m_sTaille;
    int32_t m_nCouleur;
    char m_cLettre;
    CTString m_sNomCouleur;
    CTString m_sStyle;
    CTString m_sCoordonnees;
    CTString m_sTexte;
};
