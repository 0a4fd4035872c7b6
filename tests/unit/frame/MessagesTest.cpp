// The packed message block against its source: every row of Messages.def is found and unpacks
// to its text, the marks stay hidden, and the texts are well formed for the formatter.
#include "DataCompressor.h"
#include "Resources.h"
#include "Utf8.h"
#include "frame/ResourceBlock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct STMessage {
    unsigned nNumero;
    std::string_view sTexte;
};

const STMessage gtabMessages[] = {
#define KV_MESSAGE(nNumero, pszTexte) {nNumero, pszTexte},
#include "frame/Messages.def"
#undef KV_MESSAGE
};

struct STErreur {
    unsigned nCode;
    unsigned nRessource;
};

const STErreur gtabErreurs[] = {
#define KV_ERROR_DEF(Nom, nCode, nRessource, nSeverite) {nCode, nRessource},
#include "frame/ErrorDefs.def"
#undef KV_ERROR_DEF
};

constexpr std::string_view ksSeparateurForme = "\n\xC2\xA7\n";

unsigned nMot(const unsigned char* p) { return p[0] | (static_cast<unsigned>(p[1]) << 8); }

STRessourceModule Cherche(unsigned nNumero) {
    STRessourceModule st{};
    st.nNumero = nNumero;
    st.nUtilisation = -1;
    return st;
}

std::string Deballe(const STRessourceModule& st) {
    std::vector<unsigned char> tab(st.nTaille * 3 / 2 + 2);
    int nLongueur = 0;
    const int nRes = CDataCompressor::nDeCompress(tab.data(), static_cast<int>(tab.size()),
                                                  st.pbyTexte, static_cast<int>(st.nTaille),
                                                  &nLongueur);
    EXPECT_EQ(nRes, CDataCompressor::DC_OK);
    return {reinterpret_cast<const char*>(tab.data()), static_cast<size_t>(nLongueur)};
}

TEST(Messages, ChaqueMessageSeRetrouveEtSeDeballeASonTexte) {
    ASSERT_EQ(std::size(gtabMessages), 89u);
    for (const STMessage& stMessage : gtabMessages) {
        SCOPED_TRACE(stMessage.nNumero);
        STRessourceModule st = Cherche(stMessage.nNumero);
        ASSERT_EQ(bGetResAnsi60(st), 1);
        EXPECT_EQ(st.nEncodage, 1u) << "texts are stored as UTF-8";
        EXPECT_EQ(st.nUtilisation, 0);
        ASSERT_GE(st.pbyTexte, _pbyBufferRes60);
        ASSERT_LE(st.pbyTexte + st.nTaille, _pbyBufferRes60 + _nTailleBufferRes60);
        EXPECT_EQ(nMot(st.pbyTexte - 7 + 2), stMessage.nNumero) << "pointer into its own record";
        EXPECT_EQ(Deballe(st), stMessage.sTexte);

        // The wide road that the loader takes, work area on the heap for the long ones.
        wchar_t* psz = CDataCompressor::s_pszDeCompress(st);
        ASSERT_NE(psz, nullptr);
        EXPECT_EQ(std::wstring(psz), KVUtf8::VersWide(stMessage.sTexte));
        std::free(psz);
    }
}

TEST(Messages, LesMarquesEtLesAbsentsNeSeTrouventPas) {
    const unsigned tabAbsent[] = {
        CResAnsi60::knNumeroDebut, CResAnsi60::knNumeroFin, 0, 1, 1054, 1056, 5866, 28309,
        0xFFFE,
        // Numbers compare on 16 bits in the block: a wider one must not land on 1055.
        0x10000 + 1055, 0xFFFFFFFF};
    for (unsigned nNumero : tabAbsent) {
        SCOPED_TRACE(nNumero);
        STRessourceModule st = Cherche(nNumero);
        EXPECT_EQ(bGetResAnsi60(st), 0);
        EXPECT_EQ(st.pbyTexte, nullptr) << "a miss leaves the record alone";
        EXPECT_EQ(st.nUtilisation, -1);
    }
}

TEST(Messages, LeBlocEstOrdonneEntreSesDeuxMarques) {
    STRessourceModule st = Cherche(gtabMessages[0].nNumero);
    ASSERT_EQ(bGetResAnsi60(st), 1);
    const CResAnsi60::STRessourceBloc& stBloc = CResAnsi60::m_stRessource;
    ASSERT_EQ(stBloc.nNbRecord, 91);
    const unsigned char* pby = _pbyBufferRes60;

    auto Texte = [&](int i) {
        const unsigned char* p = pby + stBloc.tabOffset[i];
        return std::string_view(reinterpret_cast<const char*>(p + 7), nMot(p + 5));
    };
    EXPECT_EQ(nMot(pby + stBloc.tabOffset[0] + 2), CResAnsi60::knNumeroDebut);
    EXPECT_EQ(Texte(0), std::string_view("KORVEX RES BLOC UTF16 START \x01"));
    EXPECT_EQ(nMot(pby + stBloc.tabOffset[90] + 2), CResAnsi60::knNumeroFin);
    EXPECT_EQ(Texte(90), "KORVEX RES BLOC UTF16 STOP");

    unsigned nPrecedent = 0;
    for (int i = 0; i < stBloc.nNbRecord; i++) {
        const unsigned char* p = pby + stBloc.tabOffset[i];
        const unsigned nLongueur = nMot(p);
        SCOPED_TRACE(nMot(p + 2));
        EXPECT_EQ(nLongueur % 2, 0u) << "records keep an even length";
        EXPECT_LE(7 + nMot(p + 5), nLongueur);
        EXPECT_LE(nLongueur - (7 + nMot(p + 5)), 1u) << "no more than one byte of padding";
        EXPECT_GT(nMot(p + 2), nPrecedent) << "the binary search needs ascending numbers";
        EXPECT_EQ(p[4] & 0x40, 0) << "UTF-8, not UTF-16";
        nPrecedent = nMot(p + 2);
        if (i + 1 < stBloc.nNbRecord) {
            EXPECT_EQ(stBloc.tabOffset[i + 1], stBloc.tabOffset[i] + nLongueur);
        }
    }
    const size_t nApres = stBloc.tabOffset[90] + nMot(pby + stBloc.tabOffset[90]);
    ASSERT_EQ(nApres + 2, _nTailleBufferRes60);
    EXPECT_EQ(nMot(pby + nApres), 0u) << "a zero length word ends the block";
}

TEST(Messages, ChaqueErreurDuTableauASonMessage) {
    std::set<unsigned> setNumeros;
    for (const STMessage& stMessage : gtabMessages) setNumeros.insert(stMessage.nNumero);
    for (const STErreur& stErreur : gtabErreurs) {
        EXPECT_TRUE(setNumeros.count(stErreur.nRessource))
            << "error " << stErreur.nCode << " shows message " << stErreur.nRessource;
    }
}

// A placeholder as the formatter reads it: its number and its form ("" for wide text).
struct STPlaceholder {
    int nNumero;
    std::string sForme;
};

// Reads the placeholders of one form in order; false on a '%' the formatter would not take.
bool bLitPlaceholders(std::string_view s, std::vector<STPlaceholder>& tab) {
    for (size_t i = 0; i < s.size(); i++) {
        if (s[i] != '%') continue;
        if (i + 1 >= s.size()) return false;
        if (s[i + 1] == '%') {
            i++;
            continue;
        }
        if (s[i + 1] < '1' || s[i + 1] > '9') return false;
        STPlaceholder st{s[i + 1] - '0', ""};
        i++;
        if (i + 1 < s.size() && s[i + 1] == '!') {
            const size_t nFin = s.find('!', i + 2);
            if (nFin == std::string_view::npos) return false;
            st.sForme = s.substr(i + 2, nFin - i - 2);
            if (st.sForme != "d" && st.sForme != "u" && st.sForme != "S") return false;
            i = nFin;
        }
        tab.push_back(st);
    }
    return true;
}

TEST(Messages, LesTextesSontPretsPourLeFormateur) {
    for (const STMessage& stMessage : gtabMessages) {
        SCOPED_TRACE(stMessage.nNumero);
        const std::string_view s = stMessage.sTexte;
        EXPECT_FALSE(s.empty());
        EXPECT_EQ(s.find("##"), std::string_view::npos) << "debug marks stay out of user texts";
        EXPECT_EQ(KVUtf8::VersWide(s).find(L'\uFFFD'), std::wstring::npos) << "valid UTF-8";

        std::vector<std::string_view> tabFormes;
        for (size_t nDebut = 0;;) {
            const size_t nSep = s.find(ksSeparateurForme, nDebut);
            tabFormes.push_back(s.substr(nDebut, nSep - nDebut));
            if (nSep == std::string_view::npos) break;
            nDebut = nSep + ksSeparateurForme.size();
        }
        std::set<int> setPremiereForme;
        for (size_t nForme = 0; nForme < tabFormes.size(); nForme++) {
            const std::string_view sForme = tabFormes[nForme];
            EXPECT_FALSE(sForme.empty());
            // Lines end with CR LF; a bare LF only ever belongs to a form separator.
            for (size_t i = sForme.find('\n'); i != std::string_view::npos;
                 i = sForme.find('\n', i + 1)) {
                EXPECT_TRUE(i > 0 && sForme[i - 1] == '\r') << "bare LF at " << i;
            }

            std::vector<STPlaceholder> tab;
            ASSERT_TRUE(bLitPlaceholders(sForme, tab)) << "a '%' that is not a placeholder";
            std::map<int, std::string> mapForme;
            int nProchain = 1;
            for (const STPlaceholder& st : tab) {
                auto [it, bNouveau] = mapForme.emplace(st.nNumero, st.sForme);
                if (bNouveau) {
                    EXPECT_EQ(st.nNumero, nProchain) << "placeholders appear first in ascending order";
                    nProchain++;
                } else {
                    EXPECT_EQ(it->second, st.sForme) << "one argument, one type: %" << st.nNumero;
                }
            }
            std::set<int> setForme;
            for (const auto& [n, sTypeForme] : mapForme) setForme.insert(n);
            if (nForme == 0) {
                setPremiereForme = setForme;
            } else {
                EXPECT_EQ(setForme, setPremiereForme) << "every form takes the same arguments";
            }
        }
    }
}

} // namespace
