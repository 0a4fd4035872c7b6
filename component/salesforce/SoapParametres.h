// CSoapParametres: the body of one SOAP call under construction, one element per Ajoute, in the
// order of the calls. Values go in as they stand, unescaped: a value holding '<' or '&' changes
// the envelope, which the server then judges.
#pragma once
#include <string>

#include "XYString.h"

class CDateTime;
class CXmlObjectMulti;

class CSoapParametres {
public:
    void Ajoute(const wchar_t* pszNom, const wchar_t* pszValeur);
    void Ajoute(const wchar_t* pszNom, const CXYString<wchar_t>& sValeur) {
        Ajoute(pszNom, sValeur.pszGet());
    }
    void Ajoute(const wchar_t* pszNom, int nValeur);
    void Ajoute(const wchar_t* pszNom, long nValeur);
    // The date alone, unpadded: "2026-3-5".
    void Ajoute(const wchar_t* pszNom, const CDateTime& clDate);
    // "2026-03-05T08:00:00", no zone and no fraction.
    void AjouteDateHeure(const wchar_t* pszNom, const CDateTime& clDate);
    // The object written as XML under that name; an object that cannot be written is left out.
    void Ajoute(const wchar_t* pszNom, CXmlObjectMulti* pclObjet);

    const wchar_t* pszGet() const { return m_sCorps.c_str(); }
    bool bEstVide() const { return m_sCorps.empty(); }

private:
    void _Ajoute(const wchar_t* pszNom, const std::wstring& sValeur);
    std::wstring m_sCorps;
};
