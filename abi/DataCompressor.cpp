#include "DataCompressor.h"

#include "Resources.h"
#include "Utf8.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>
#include <string_view>

namespace {

// The charsets as single Latin-1 bytes; the order is the symbol order and is binding.
const unsigned char kabyCharset0[] = "\t\n\r ,.ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const unsigned char kabyCharset1[] = " ,abcdefghijklmnopqrstuvwxyz\xE0\xE8\xE9\xEA";
const unsigned char kabyCharset2[] = " !\"%'(),.0123456789<>?Xcdfglpsux";
// The last two (thorn, y diaeresis) sit where symbols 38 and 39 mean escapes.
const unsigned char kabyCharset3[] =
    "#$&*+-/:;=@[\\]^_{|}~\xA0\xB0\xE2\xE7\xEB\xEE\xEF\xF4\xF9\xFB\xFE\xFF";
static_assert(sizeof(kabyCharset0) == 33 && sizeof(kabyCharset1) == 33);
static_assert(sizeof(kabyCharset2) == 33 && sizeof(kabyCharset3) == 33);

constexpr size_t knPile = 256;

// The unpacked bytes as wide text.
std::wstring s_sVersWide(const unsigned char* pby, size_t nTaille, uint32_t nEncodage) {
    if (nEncodage == 1)
        return KVUtf8::VersWide(std::string_view(reinterpret_cast<const char*>(pby), nTaille));
    std::wstring sTexte;
    sTexte.reserve(nTaille / 2);
    for (size_t i = 0; i + 1 < nTaille; i += 2) {
        char32_t c = static_cast<char32_t>(pby[i] | (pby[i + 1] << 8));
        if (c >= 0xD800 && c <= 0xDBFF && i + 3 < nTaille) {
            char32_t cBas = static_cast<char32_t>(pby[i + 2] | (pby[i + 3] << 8));
            if (cBas >= 0xDC00 && cBas <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (cBas - 0xDC00);
                i += 2;
            }
        }
        if (c >= 0xD800 && c <= 0xDFFF)
            c = 0xFFFD; // a lone half of a pair
        sTexte += static_cast<wchar_t>(c);
    }
    return sTexte;
}

// The whole text of a found resource; a result word of CDataCompressor.
int s_nTexte(STRessourceModule& stRessource, std::wstring& sOut) {
    if (stRessource.nEncodage != 1 && stRessource.nEncodage != 2)
        return CDataCompressor::DC_ERR_ENCODAGE;
    if (stRessource.nTaille > 0 && !stRessource.pbyTexte)
        return CDataCompressor::DC_ERR_ECHAPPEMENT;

    // Two bytes give at most three, and an escape gives fewer than it takes; 2 for the end.
    size_t nTravail = static_cast<size_t>(stRessource.nTaille) * 3 / 2 + 2;
    if (nTravail > 0x7FFFFFFF)
        return CDataCompressor::DC_ERR_MEMOIRE;
    unsigned char abyPile[knPile];
    unsigned char* pbyTravail =
        nTravail <= knPile ? abyPile : static_cast<unsigned char*>(std::malloc(nTravail));
    if (!pbyTravail)
        return CDataCompressor::DC_ERR_MEMOIRE;

    int nLongueur = 0;
    int nRes =
        CDataCompressor::nDeCompress(pbyTravail, static_cast<int>(nTravail), stRessource.pbyTexte,
                                     static_cast<int>(stRessource.nTaille), &nLongueur);
    if (nRes == CDataCompressor::DC_OK || nRes == CDataCompressor::DC_TRONQUE) {
        try {
            sOut = s_sVersWide(pbyTravail, std::min(static_cast<size_t>(nLongueur), nTravail - 1),
                               stRessource.nEncodage);
            nRes = CDataCompressor::DC_OK;
        } catch (const std::bad_alloc&) {
            nRes = CDataCompressor::DC_ERR_MEMOIRE;
        }
    }
    if (pbyTravail != abyPile)
        std::free(pbyTravail);
    return nRes;
}

} // namespace

const STCharset CDataCompressor::ms_tabCharset[4] = {
    {kabyCharset0, 32},
    {kabyCharset1, 32},
    {kabyCharset2, 32},
    {kabyCharset3, knEchappementOctet - knPremierCaractere},
};

int CDataCompressor::nDeCompress(unsigned char* pbyOut, int nOutSize, const unsigned char* pbyIn,
                                 int nInSize, int* pnLongueur) {
    int nCompte = 0;
    auto Emet = [&](unsigned char c) {
        if (nCompte < nOutSize - 1)
            pbyOut[nCompte] = c;
        ++nCompte;
    };
    auto Termine = [&](int nRes) {
        if (nOutSize > 0)
            pbyOut[std::min(nCompte, nOutSize - 1)] = 0;
        if (pnLongueur)
            *pnLongueur = nCompte;
        if (nRes == DC_OK && nCompte > nOutSize - 1)
            nRes = DC_TRONQUE;
        return nRes;
    };

    int nCharset = 0;
    int nShift = -1; // the charset of the next character alone, -1 when none is pending
    int i = 0;
    while (i < nInSize) {
        int tabSymbole[3];
        int nNbSymbole;
        if (nInSize - i >= 2) {
            int b1 = pbyIn[i], b2 = pbyIn[i + 1];
            if (b1 == 0 || b2 == 0)
                return Termine(DC_ERR_OCTET_NUL);
            int v = (b1 - 1) * 255 + (b2 - 1);
            tabSymbole[0] = v / 1600;
            tabSymbole[1] = (v % 1600) / 40;
            tabSymbole[2] = v % 40;
            nNbSymbole = 3;
            i += 2;
        } else {
            if (pbyIn[i] == 0)
                return Termine(DC_ERR_OCTET_NUL);
            tabSymbole[0] = pbyIn[i] - 1;
            nNbSymbole = 1;
            i += 1;
        }
        for (int k = 0; k < nNbSymbole; ++k) {
            int s = tabSymbole[k];
            if (s < 4) {
                nShift = s;
                continue;
            }
            if (s < knPremierCaractere) {
                nCharset = s - 4;
                continue;
            }
            int nEffectif = nShift >= 0 ? nShift : nCharset;
            nShift = -1;
            if (nEffectif == knCharsetEchappement && s >= knEchappementOctet) {
                if (i >= nInSize)
                    return Termine(DC_ERR_ECHAPPEMENT);
                if (s == knEchappementOctet) {
                    Emet(pbyIn[i]);
                    i += 1;
                } else {
                    int n = pbyIn[i];
                    if (n > nInSize - i - 1)
                        return Termine(DC_ERR_ECHAPPEMENT);
                    for (int j = 0; j < n; ++j)
                        Emet(pbyIn[i + 1 + j]);
                    i += 1 + n;
                }
                break; // the rest of the pair is dropped
            }
            // A symbol past the table (only 40, in the first place of a pair) gives nothing.
            if (s - knPremierCaractere < ms_tabCharset[nEffectif].nLongueur)
                Emet(ms_tabCharset[nEffectif].pbyCaractere[s - knPremierCaractere]);
        }
    }
    return Termine(DC_OK);
}

int CDataCompressor::s_nDeCompress(wchar_t* pszBuffer, int* pnCapacite,
                                   STRessourceModule& stRessource) {
    int nCapacite = pnCapacite ? *pnCapacite : 0;
    if (pnCapacite)
        *pnCapacite = 0;
    if (pszBuffer && nCapacite > 0)
        pszBuffer[0] = L'\0';
    std::wstring sTexte;
    int nRes = s_nTexte(stRessource, sTexte);
    if (nRes != DC_OK)
        return nRes;
    if (pnCapacite)
        *pnCapacite = static_cast<int>(sTexte.size());
    if (pszBuffer && nCapacite > 0) {
        size_t nCopie = std::min(sTexte.size(), static_cast<size_t>(nCapacite - 1));
        std::wmemcpy(pszBuffer, sTexte.data(), nCopie);
        pszBuffer[nCopie] = L'\0';
    }
    return sTexte.size() > static_cast<size_t>(std::max(nCapacite - 1, 0)) ? DC_TRONQUE : DC_OK;
}

wchar_t* CDataCompressor::s_pszDeCompress(STRessourceModule& stRessource) {
    std::wstring sTexte;
    if (s_nTexte(stRessource, sTexte) != DC_OK)
        return nullptr;
    auto* psz = static_cast<wchar_t*>(std::malloc((sTexte.size() + 1) * sizeof(wchar_t)));
    if (psz)
        std::wmemcpy(psz, sTexte.c_str(), sTexte.size() + 1);
    return psz;
}
