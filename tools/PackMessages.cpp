// PackMessages: turns component/frame/Messages.def into the component's message block.
//
//     PackMessages OUTPUT.cpp
//
// Each text is packed with the keyless base-40 packing that CDataCompressor::nDeCompress reads,
// and laid out as the block records that bGetResAnsi60 walks. Every packed text is unpacked
// again by the decoder below and compared with its source before anything is written, so a
// packing fault stops the build instead of reaching a user. The output is only rewritten when
// its content changes, which keeps incremental builds quiet.
#include "DataCompressor.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct STMessage {
    unsigned nNumero;
    std::string_view sTexte;
};

constexpr STMessage gtabMessages[] = {
#define KV_MESSAGE(nNumero, pszTexte) {nNumero, pszTexte},
#include "Messages.def"
#undef KV_MESSAGE
};

constexpr unsigned knNumeroDebut = 0x0101;
constexpr unsigned knNumeroFin = 0xFFFF;
constexpr std::string_view ksMarqueDebut = "KORVEX RES BLOC UTF16 START ";
constexpr std::string_view ksMarqueFin = "KORVEX RES BLOC UTF16 STOP";
constexpr unsigned knEnteteRecord = 7;
// Room of the lookup's offset table: the two marks and the messages.
constexpr size_t knMaxRecord = 91;

// Symbols of the packing: 0-3 shift, 4-7 lock, 8 and up a character; in charset 3, 38 and 39
// escape raw bytes.
constexpr int knLock = 4;
constexpr int knPremierCaractere = CDataCompressor::knPremierCaractere;
constexpr int knEchappeUn = CDataCompressor::knEchappementOctet;
constexpr int knEchappePlusieurs = CDataCompressor::knEchappementSuite;
constexpr int knCharsetBrut = CDataCompressor::knCharsetEchappement;

// A charset's reachable bytes; the tables are the reader's own, so both sides agree.
std::string_view svCharset(int nCs) {
    const STCharset& stCs = CDataCompressor::ms_tabCharset[nCs];
    return {reinterpret_cast<const char*>(stCs.pbyCaractere), static_cast<size_t>(stCs.nLongueur)};
}

// For each charset, the index of each byte, or -1.
struct CIndexCharset {
    std::array<std::array<int, 256>, 4> tab{};
    CIndexCharset() {
        for (int nCs = 0; nCs < 4; nCs++) {
            tab[nCs].fill(-1);
            const std::string_view sCs = svCharset(nCs);
            for (size_t i = 0; i < sCs.size(); i++) {
                tab[nCs][static_cast<unsigned char>(sCs[i])] = static_cast<int>(i);
            }
        }
    }
    bool bDans(int nCs, unsigned char by) const { return tab[nCs][by] >= 0; }
    // Multibyte UTF-8 goes through the escapes as a whole, even where a single byte happens to
    // sit in a charset: one escape for the run costs less than breaking it up.
    bool bBrut(unsigned char by) const {
        return by >= 0x80 || (!bDans(0, by) && !bDans(1, by) && !bDans(2, by) && !bDans(3, by));
    }
};
const CIndexCharset gclIndex;

class CPacker {
public:
    std::vector<unsigned char> Pack(std::string_view sTexte) {
        m_tabSortie.clear();
        m_tabSymbole.clear();
        m_nLock = 0;
        const auto* p = reinterpret_cast<const unsigned char*>(sTexte.data());
        const size_t n = sTexte.size();
        size_t i = 0;
        while (i < n) {
            if (gclIndex.bBrut(p[i])) {
                size_t j = i;
                while (j < n && j - i < 255 && gclIndex.bBrut(p[j])) j++;
                __Echappe(p + i, j - i);
                i = j;
                continue;
            }
            const unsigned char by = p[i];
            if (gclIndex.bDans(m_nLock, by)) {
                __Caractere(m_nLock, by);
                i++;
                continue;
            }
            // The charset that covers the longest run of bytes that the lock does not cover:
            // a run of two or more pays for a lock, a single byte takes a shift.
            int nMeilleur = -1;
            size_t nMeilleureSuite = 0;
            for (int nCs = 0; nCs < 4; nCs++) {
                size_t nSuite = 0;
                while (i + nSuite < n && !gclIndex.bBrut(p[i + nSuite]) &&
                       gclIndex.bDans(nCs, p[i + nSuite]) && !gclIndex.bDans(m_nLock, p[i + nSuite]))
                    nSuite++;
                if (nSuite > nMeilleureSuite) {
                    nMeilleur = nCs;
                    nMeilleureSuite = nSuite;
                }
            }
            if (nMeilleureSuite >= 2) {
                __Symbole(knLock + nMeilleur);
                m_nLock = nMeilleur;
            } else {
                __Symbole(nMeilleur);
            }
            __Caractere(nMeilleur, by);
            i++;
        }
        // A lone symbol stands as one byte; two are completed by a lock that changes nothing.
        if (m_tabSymbole.size() == 1) {
            m_tabSortie.push_back(static_cast<unsigned char>(m_tabSymbole[0] + 1));
        } else if (m_tabSymbole.size() == 2) {
            __Symbole(knLock + m_nLock);
        }
        return m_tabSortie;
    }

private:
    void __Symbole(int nSymbole) {
        m_tabSymbole.push_back(nSymbole);
        if (m_tabSymbole.size() == 3) {
            const int v = m_tabSymbole[0] * 1600 + m_tabSymbole[1] * 40 + m_tabSymbole[2];
            m_tabSortie.push_back(static_cast<unsigned char>(v / 255 + 1));
            m_tabSortie.push_back(static_cast<unsigned char>(v % 255 + 1));
            m_tabSymbole.clear();
        }
    }
    void __Caractere(int nCs, unsigned char by) { __Symbole(knPremierCaractere + gclIndex.tab[nCs][by]); }
    // Escapes are taken under a lock, never a shift, so that no reader has to guess whether an
    // escape ends a pending shift.
    void __Echappe(const unsigned char* p, size_t n) {
        if (m_nLock != knCharsetBrut) {
            __Symbole(knLock + knCharsetBrut);
            m_nLock = knCharsetBrut;
        }
        // The reader drops the rest of the pair after an escape.
        __Symbole(n == 1 ? knEchappeUn : knEchappePlusieurs);
        while (!m_tabSymbole.empty()) __Symbole(0);
        if (n > 1) m_tabSortie.push_back(static_cast<unsigned char>(n));
        m_tabSortie.insert(m_tabSortie.end(), p, p + n);
    }

    std::vector<unsigned char> m_tabSortie;
    std::vector<int> m_tabSymbole;
    int m_nLock = 0;
};

// The reader, as the component runs it, kept apart from the packer so that the round trip
// checks one against the other. Answers false on a malformed text.
bool bDecode(const std::vector<unsigned char>& tabIn, std::string& sSortie) {
    sSortie.clear();
    int nCourant = 0, nShift = -1;
    size_t i = 0;
    const size_t n = tabIn.size();
    auto Traite = [&](int s, bool& bEchappe) -> bool {
        if (s < 4) {
            nShift = s;
            return true;
        }
        if (s < 8) {
            nCourant = s - 4;
            return true;
        }
        const int nEffectif = nShift >= 0 ? nShift : nCourant;
        const std::string_view sCs = svCharset(nEffectif);
        if (nEffectif == knCharsetBrut && s >= knEchappeUn) {
            size_t nCopie = 1;
            if (s >= knEchappePlusieurs) {
                if (i >= n) return false;
                nCopie = tabIn[i++];
            }
            if (i + nCopie > n) return false;
            sSortie.append(reinterpret_cast<const char*>(tabIn.data() + i), nCopie);
            i += nCopie;
            bEchappe = true;
            return true;
        }
        if (static_cast<size_t>(s - knPremierCaractere) >= sCs.size()) return false;
        sSortie.push_back(sCs[s - knPremierCaractere]);
        nShift = -1;
        return true;
    };
    while (i < n) {
        bool bEchappe = false;
        if (i + 1 == n) {
            const int s = tabIn[i++] - 1;
            if (s < 0 || !Traite(s, bEchappe)) return false;
            break;
        }
        const int b1 = tabIn[i], b2 = tabIn[i + 1];
        if (b1 == 0 || b2 == 0) return false;
        i += 2;
        const int v = (b1 - 1) * 255 + (b2 - 1);
        const int tabS[3] = {v / 1600, (v % 1600) / 40, v % 40};
        for (int s : tabS) {
            if (!Traite(s, bEchappe)) return false;
            if (bEchappe) break;
        }
    }
    return true;
}

void AjouteMot(std::vector<unsigned char>& tab, unsigned n) {
    tab.push_back(static_cast<unsigned char>(n & 0xFF));
    tab.push_back(static_cast<unsigned char>(n >> 8));
}

bool bAjouteRecord(std::vector<unsigned char>& tabBloc, unsigned nNumero, unsigned char byFlags,
                   const std::vector<unsigned char>& tabTexte) {
    size_t nTotal = knEnteteRecord + tabTexte.size();
    nTotal += nTotal & 1;
    if (nTotal > 0xFFFF) {
        std::fprintf(stderr, "PackMessages: message %u is too long\n", nNumero);
        return false;
    }
    AjouteMot(tabBloc, static_cast<unsigned>(nTotal));
    AjouteMot(tabBloc, nNumero);
    tabBloc.push_back(byFlags);
    AjouteMot(tabBloc, static_cast<unsigned>(tabTexte.size()));
    tabBloc.insert(tabBloc.end(), tabTexte.begin(), tabTexte.end());
    if ((knEnteteRecord + tabTexte.size()) & 1) tabBloc.push_back(0);
    return true;
}

std::vector<unsigned char> Marque(std::string_view s) { return {s.begin(), s.end()}; }

bool bConstruitBloc(std::vector<unsigned char>& tabBloc) {
    static_assert(std::size(gtabMessages) + 2 <= knMaxRecord, "the lookup's offset table is full");
    std::vector<unsigned char> tabDebut = Marque(ksMarqueDebut);
    tabDebut.push_back(1);
    if (!bAjouteRecord(tabBloc, knNumeroDebut, 0, tabDebut)) return false;

    unsigned nPrecedent = knNumeroDebut;
    CPacker clPacker;
    for (const STMessage& stMessage : gtabMessages) {
        // The lookup runs a binary search that skips the first record and must never reach the
        // last: numbers strictly between the two marks, strictly ascending.
        if (stMessage.nNumero <= nPrecedent || stMessage.nNumero >= knNumeroFin) {
            std::fprintf(stderr, "PackMessages: message %u is out of order or out of range\n",
                         stMessage.nNumero);
            return false;
        }
        nPrecedent = stMessage.nNumero;
        if (stMessage.sTexte.empty() || stMessage.sTexte.find('\0') != std::string_view::npos) {
            std::fprintf(stderr, "PackMessages: message %u is empty or holds a null\n",
                         stMessage.nNumero);
            return false;
        }
        const std::vector<unsigned char> tabPacke = clPacker.Pack(stMessage.sTexte);
        std::string sRelu;
        if (!bDecode(tabPacke, sRelu) || sRelu != stMessage.sTexte) {
            std::fprintf(stderr, "PackMessages: message %u does not survive its packing\n",
                         stMessage.nNumero);
            return false;
        }
        // Usage value 0, UTF-8 text (bit 6 clear).
        if (!bAjouteRecord(tabBloc, stMessage.nNumero, 0, tabPacke)) return false;
    }
    if (!bAjouteRecord(tabBloc, knNumeroFin, 0, Marque(ksMarqueFin))) return false;
    AjouteMot(tabBloc, 0);
    return true;
}

std::string GenereSource(const std::vector<unsigned char>& tabBloc) {
    std::ostringstream os;
    os << "// Generated by tools/PackMessages from component/frame/Messages.def, do not edit.\n"
          "// The component's message block: "
       << std::size(gtabMessages) << " packed messages between two marks.\n"
       << "#include \"frame/ResourceBlock.h\"\n\n"
          "alignas(2) const unsigned char _pbyBufferRes60[] = {";
    for (size_t i = 0; i < tabBloc.size(); i++) {
        os << (i % 16 == 0 ? "\n    " : " ") << static_cast<unsigned>(tabBloc[i]) << ',';
    }
    os << "\n};\n"
       << "const size_t _nTailleBufferRes60 = sizeof(_pbyBufferRes60);\n";
    return os.str();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: PackMessages OUTPUT.cpp\n");
        return 2;
    }
    std::vector<unsigned char> tabBloc;
    if (!bConstruitBloc(tabBloc)) return 1;
    const std::string sSource = GenereSource(tabBloc);

    std::ifstream fAncien(argv[1], std::ios::binary);
    if (fAncien) {
        const std::string sAncien((std::istreambuf_iterator<char>(fAncien)), std::istreambuf_iterator<char>());
        if (sAncien == sSource) return 0;
    }
    fAncien.close();
    std::ofstream f(argv[1], std::ios::binary | std::ios::trunc);
    f << sSource;
    f.close();
    if (!f) {
        std::fprintf(stderr, "PackMessages: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
