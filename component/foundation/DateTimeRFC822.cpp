#include "foundation/DateTimeRFC822.h"

#include <cwchar>
#include <cwctype>

const wchar_t* const CDateTimeRFC822::ms_tabRFC822_Mois[12] = {
    L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun", L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};

const CDateTimeRFC822::STZone CDateTimeRFC822::ms_tabRFC822_ZoneOffset[40] = {
    {L"UT", 0},    {L"GMT", 0},   {L"A", -1},    {L"B", -2},     {L"C", -3},  {L"D", -4},
    {L"E", -5},    {L"F", -6},    {L"G", -7},    {L"H", -8},     {L"J", -9},  {L"K", -10},
    {L"L", -11},   {L"M", -12},   {L"N", 1},     {L"O", 2},      {L"P", 3},   {L"Q", 4},
    {L"R", 5},     {L"S", 6},     {L"T", 7},     {L"U", 8},      {L"V", 9},   {L"W", 10},
    {L"X", 11},    {L"Y", 12},    {L"Z", 0},     {L"EST", -5},   {L"EDT", -4}, {L"CST", -6},
    {L"CDT", -5},  {L"MST", -7},  {L"MDT", -6},  {L"PST", -8},   {L"PDT", -7}, {L"CET", 1},
    {L"CEST", 2},  {L"MET", 1},   {L"MEST", 2},  {L"MEDST", 2},
};

int CDateTimeRFC822::nVersDate_RFC822(const wchar_t* pszTexte) {
    InitDate();
    if (!pszTexte)
        return 110;
    if (const wchar_t* pszVirgule = std::wcschr(pszTexte, L','))
        pszTexte = pszVirgule + 1;
    while (std::iswspace(static_cast<wint_t>(*pszTexte)))
        ++pszTexte;
    int nJour = 0, nAnnee = 0, nHeure = 0, nMinute = 0, nSeconde = 0;
    wchar_t szMois[5] = {}, szZone[7] = {};
    int n = std::swscanf(pszTexte, L"%d %4ls %d %2d:%2d:%2d %6ls", &nJour, szMois, &nAnnee, &nHeure,
                         &nMinute, &nSeconde, szZone);
    if (n < 7) {
        nSeconde = 0;
        szZone[0] = 0;
        n = std::swscanf(pszTexte, L"%d %4ls %d %2d:%2d %6ls", &nJour, szMois, &nAnnee, &nHeure,
                         &nMinute, szZone);
        if (n < 6)
            return 110;
    }
    // An unknown month ends the search on its last row.
    int nMois = 0;
    while (nMois < 11 && std::wcscmp(szMois, ms_tabRFC822_Mois[nMois]) != 0)
        ++nMois;
    bModifieAnnee(nAnnee);
    bModifieMois(nMois + 1);
    bModifieJour(nJour);
    bModifieHeure(nHeure);
    bModifieMinute(nMinute);
    bModifieSeconde(nSeconde);
    long nDecalage = 0;
    if (szZone[0] == L'+' || szZone[0] == L'-') {
        int nChiffres[4] = {};
        for (int i = 0; i < 4; ++i)
            nChiffres[i] = std::iswdigit(static_cast<wint_t>(szZone[i + 1])) ? szZone[i + 1] - L'0' : 0;
        nDecalage = ((nChiffres[0] * 10 + nChiffres[1]) * 60L + nChiffres[2] * 10 + nChiffres[3]) *
                    60000L * (szZone[0] == L'-' ? -1 : 1);
    } else {
        for (const STZone& st : ms_tabRFC822_ZoneOffset)
            if (std::wcscmp(szZone, st.pszNom) == 0) {
                nDecalage = st.nHeures * 3600000L;
                break;
            }
    }
    if (nDecalage)
        bDecaleMilli(nDecalage);
    return 0;
}

int CDateTimeRFC822::nVersChaine_RFC822(CTString& sSortie) const {
    int nMois = nGetMois() < 1 ? 1 : nGetMois() > 12 ? 12 : nGetMois();
    wchar_t sz[64];
    std::swprintf(sz, 64, L"%d %ls %04d %02d:%02d:%02d Z", nGetJour(), ms_tabRFC822_Mois[nMois - 1],
                  nGetAnnee(), nGetHeure(), nGetMinute(), nGetSeconde());
    sSortie = sz;
    return 0;
}
