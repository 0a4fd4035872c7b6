// The vocabulary tables against what must hold of them whatever their rows: identifiers without
// a gap, every row's hash that of its name in the name block, the name block read back whole,
// the type strings encoded as the host reads them, and as many rows of each kind as the .def
// files declare.
#include "frame/Tables.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

// Rows of each kind as the class .defs declare them.
struct STComptes {
    unsigned nClasse = 0, nConstructeur = 0, nPropriete = 0, nEcrite = 0, nAccesseur = 0;
};
constexpr STComptes s_stComptesDef() {
    STComptes st;
#define KLL_CLASS(C, nNumero, pszType, F) ++st.nClasse;
#define KLL_CONSTRUCTOR(C, k) ++st.nConstructeur;
#define KLL_PROPERTY(C, P, T, A)                                                                   \
    ++st.nPropriete;                                                                               \
    st.nEcrite += KLL_OBJ_##T ? KLL_HAS_SETTER_##A : KLL_HAS_SETTER_##A || KLL_HAS_FORCED_##A;
#define KLL_ACCESSOR(C, N, TR, M) ++st.nAccesseur;
#include "frame/Classes.def"
    return st;
}

// The name block: a header of counts, then the names, each ending with a zero.
struct STBlocNom {
    std::vector<std::string> tabFonction, tabConstante, tabTypeRef, tabClasse, tabMembre;
    size_t nFin = 0;
};
STBlocNom stLitBlocNom() {
    const unsigned char* pby = gbyBlocNom_60;
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(pby), 4), "NOMS");
    const auto n16 = [&](size_t i) { return static_cast<size_t>(pby[i] | pby[i + 1] << 8); };
    STBlocNom st;
    size_t nPos = 18;
    const auto Lit = [&](std::vector<std::string>& tab, size_t nNb) {
        for (size_t i = 0; i < nNb && nPos < knKllTailleBlocNom; ++i) {
            tab.emplace_back(reinterpret_cast<const char*>(pby + nPos));
            nPos += tab.back().size() + 1;
        }
    };
    Lit(st.tabFonction, n16(6));
    Lit(st.tabConstante, n16(8));
    Lit(st.tabTypeRef, n16(10));
    Lit(st.tabClasse, n16(12));
    Lit(st.tabMembre, n16(14) + n16(16));
    st.nFin = nPos;
    return st;
}

// The host reads a type string's name as Latin-1 bytes of UTF-8: each byte above 0x7F is
// encoded again. Undoes that, for the name after "+:060:<number>:GGL:".
std::string sNomDuType(std::string_view sv) {
    const size_t nDebut = sv.find(":GGL:");
    EXPECT_TRUE(sv.starts_with("+:060:") && nDebut != std::string_view::npos) << sv;
    std::string s;
    for (size_t i = nDebut + 5; i < sv.size(); ++i) {
        const auto by = static_cast<unsigned char>(sv[i]);
        if (by < 0x80 || i + 1 == sv.size()) {
            s += sv[i];
        } else {
            EXPECT_TRUE(by == 0xC2 || by == 0xC3) << sv;
            s += static_cast<char>(((by & 0x03) << 6) | (sv[++i] & 0x3F));
        }
    }
    return s;
}

TEST(Tables, LesCompteParGenreSuiventLesDefinitionsEtLeBlocDeNoms) {
    constexpr STComptes stDef = s_stComptesDef();
    STComptes st;
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& stClasse = *__gpstTabClasse_60[i];
        ++st.nClasse;
        st.nConstructeur += static_cast<unsigned>(stClasse.nNbConstructeur);
        st.nPropriete += static_cast<unsigned>(stClasse.nNbPropriete);
        st.nAccesseur += static_cast<unsigned>(stClasse.nNbAccesseur);
        EXPECT_EQ(stClasse.nNbPropriete == 0, stClasse.pstPropriete == nullptr) << i;
        EXPECT_EQ(stClasse.nNbAccesseur == 0, stClasse.pstAccesseur == nullptr) << i;
        for (uint64_t p = 0; p < stClasse.nNbPropriete; ++p)
            st.nEcrite += (stClasse.pstPropriete[p].qwOption & 0x200) != 0;
    }
    EXPECT_EQ(st.nClasse, stDef.nClasse);
    EXPECT_EQ(st.nConstructeur, stDef.nConstructeur);
    EXPECT_EQ(st.nPropriete, stDef.nPropriete);
    EXPECT_EQ(st.nEcrite, stDef.nEcrite);
    EXPECT_EQ(st.nAccesseur, stDef.nAccesseur);

    const STBlocNom stNoms = stLitBlocNom();
    EXPECT_EQ(stNoms.tabConstante.size(), knKllNbConstante);
    EXPECT_EQ(stNoms.tabTypeRef.size(), knKllNbTypeRef);
    EXPECT_EQ(stNoms.tabClasse.size(), knKllNbClasse);
    EXPECT_EQ(stNoms.tabMembre.size(), stDef.nPropriete + stDef.nAccesseur);
    // The block fits its declared size, zeros after the last name.
    ASSERT_LE(stNoms.nFin, knKllTailleBlocNom);
    for (size_t i = stNoms.nFin; i < knKllTailleBlocNom; ++i)
        ASSERT_EQ(gbyBlocNom_60[i], 0) << i;
}

TEST(Tables, LesIdentifiantsSeSuiventSansTrou) {
    for (uint32_t i = 0; i < knKllNbFonction; ++i)
        EXPECT_EQ(__gstTabFonction_60[i].nNumero, i + 1);
    uint64_t nId = __gstTabConstante_60[0].nNumero;
    for (uint32_t i = 1; i < knKllNbConstante; ++i)
        EXPECT_EQ(__gstTabConstante_60[i].nNumero, ++nId);
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        EXPECT_EQ(st.nIdentifiant, ++nId) << i;
        for (uint64_t p = 0; p < st.nNbPropriete; ++p)
            EXPECT_EQ(st.pstPropriete[p].nIdentifiant, ++nId);
        for (uint64_t a = 0; a < st.nNbAccesseur; ++a)
            EXPECT_EQ(st.pstAccesseur[a].nIdentifiant, ++nId);
    }
}

// Each row's name is found in the block at its place, and its hash is that name's.
TEST(Tables, ChaqueLigneATrouveSonNomEtSonHash) {
    const STBlocNom stNoms = stLitBlocNom();
    std::vector<bool> tabUtilise(stNoms.tabFonction.size(), false);
    for (uint32_t i = 0; i < knKllNbFonction; ++i) {
        const STKLFonction& st = __gstTabFonction_60[i];
        ASSERT_LT(st.nGetIndiceNom(), stNoms.tabFonction.size());
        EXPECT_FALSE(stNoms.tabFonction[st.nGetIndiceNom()].empty()) << i;
        EXPECT_EQ(st.nGetLibrairie(), knKllLibrairie);
        tabUtilise[st.nGetIndiceNom()] = true;
    }
    for (size_t n = 0; n < tabUtilise.size(); ++n)
        EXPECT_TRUE(tabUtilise[n] || stNoms.tabFonction[n].empty()) << n;
    for (uint32_t i = 0; i < knKllNbConstante; ++i)
        EXPECT_EQ(__gstTabConstante_60[i].qwCodeNom, nKllHashNom(stNoms.tabConstante[i].c_str()))
            << stNoms.tabConstante[i];
    for (uint32_t i = 0; i < knKllNbTypeRef; ++i)
        EXPECT_EQ(sNomDuType(__gstTabTypeRef_60[i]), stNoms.tabTypeRef[i]);
    size_t nMembre = 0;
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        EXPECT_EQ(sNomDuType(st.pszType), stNoms.tabClasse[i]);
        for (uint64_t p = 0; p < st.nNbPropriete; ++p, ++nMembre)
            EXPECT_EQ(st.pstPropriete[p].qwHash, nKllHashNom(stNoms.tabMembre[nMembre].c_str()))
                << stNoms.tabMembre[nMembre];
        for (uint64_t a = 0; a < st.nNbAccesseur; ++a, ++nMembre)
            EXPECT_EQ(st.pstAccesseur[a].qwHash, nKllHashNom(stNoms.tabMembre[nMembre].c_str()))
                << stNoms.tabMembre[nMembre];
    }
    // A name with an accent, as the host must read it back.
    EXPECT_EQ(std::string_view(__gstTabTypeRef_60[28]), "+:060:2:GGL:gglEv\xC3\x83\xC2\xA9nement");
}

// What the host relies on when it reads or writes a member: the getter in the slot its type
// calls for, and a setter only where the option bits announce one. A class whose source has
// not landed yet has empty slots; the handler check of the built library covers those.
TEST(Tables, LesMembresAnnoncentLeursHandlers) {
    for (uint32_t i = 0; i < knKllNbClasse; ++i) {
        const STKLOClasse& st = *__gpstTabClasse_60[i];
        SCOPED_TRACE(st.pszType);
        EXPECT_EQ(st.qwDeux, 2u);
        for (uint64_t p = 0; p < st.nNbPropriete; ++p) {
            const STKLPropriete& stP = st.pstPropriete[p];
            const bool bObjet = (stP.qwType & 0xFFFF) == 111;
            EXPECT_EQ(stP.pfnGet, bObjet ? nullptr : stP.pfnGet) << p;
            EXPECT_EQ(stP.pfnGetObjet, bObjet ? stP.pfnGetObjet : nullptr) << p;
            EXPECT_FALSE(stP.pfnSet && stP.pfnSetForce) << p;
            if (stP.pfnSet || (stP.pfnSetForce && !bObjet)) {
                EXPECT_NE(stP.qwOption & 0x200, 0u) << p;
            }
            EXPECT_EQ(stP.qwFlags & ~1ull, st.qwFlags) << p;
        }
        for (uint64_t a = 0; a < st.nNbAccesseur; ++a)
            EXPECT_EQ(st.pstAccesseur[a].qwType & 0xFFFF, 111u);
    }
}

TEST(Tables, LesSyntaxesCompteLeursParametres) {
    for (uint32_t i = 0; i < knKllNbFonction; ++i) {
        const STKLFonction& st = __gstTabFonction_60[i];
        for (unsigned k = 0; k < st.nGetNbSyntaxe(); ++k) {
            const STKLSyntaxe& stSyn = st.pstSyntaxe[k];
            unsigned nItem = 0;
            for (const unsigned char* pby = stSyn.pbySignature; *pby; pby += 4)
                ++nItem;
            // A syntax without signature reads its parameters from the count alone.
            if (nItem) {
                EXPECT_EQ(stSyn.nGetNbParametre() + 1, nItem) << i + 1 << " syntax " << k;
            }
        }
    }
}

} // namespace
