// The storage classes of values: one template per kind of row in AnyTypes.def, one class per
// row built on it, constructed in place by type code.
#include "AnyNeutre.h"

#include "KLBIN.h"
#include "ObjectInterfaces.h"
#include "XYString.h"

#include <cmath>
#include <limits>
#include <new>
#include <type_traits>

using namespace KVAny;

// ---- the storage templates, one per kind of row in AnyTypes.def ------------------------------

namespace {

// The text p when its characters are of type C, else null: a text answers only as what it is.
template <class C, class T> const C* s_pszSiLargeur(const T* p) {
    if constexpr (sizeof(T) == sizeof(C))
        return reinterpret_cast<const C*>(p);
    else
        return nullptr;
}

// Values held in place, of a plain C type, set from their image or from data of their size.
template <class T> class CAny_TEnPlace : public CAny_Intern {
public:
    size_t nGetSize() const override { return sizeof(T); }
    const void* nGetAdr() const override { return pbyValeur(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        std::memcpy(pbyValeur(), pValeur, sizeof(T));
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        return nTaille == sizeof(T) ? SetValue(pDonnees) : KV_ERR_PARAMETRE;
    }

protected:
    T tValeur() const { return tLit<T>(pbyValeur()); }
    void Fixe(const T& v) { Ecrit(pbyValeur(), v); }
};

template <class T> class CAny_TNombre : public CAny_TEnPlace<T> {
public:
    bool bIsPositive() const override {
        if constexpr (std::is_unsigned_v<T>)
            return true;
        else
            return this->tValeur() >= 0;
    }
    int nIncremente() override { return nAjoute(1); }
    int nDecremente() override { return nAjoute(-1); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        if constexpr (std::is_integral_v<T>) {
            st.nGenre = KV_GENRE_ENTIER;
            st.nEntier = this->tValeur();
            st.nLargeur = 8 * sizeof(T);
        } else {
            st.nGenre = KV_GENRE_REEL;
            st.rReel = this->tValeur();
            st.bReelSimple = sizeof(T) == sizeof(float);
        }
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        if constexpr (std::is_integral_v<T>) {
            KVEntier n;
            int nRes = s_nVersEntier(st, n);
            if (KV_bSucces(nRes))
                nRes = nFixeEntier(n);
            return nRes;
        } else {
            double r;
            int nRes = s_nVersReel(st, r);
            if (!KV_bSucces(nRes))
                return nRes;
            if (sizeof(T) == sizeof(float) && std::isfinite(r) &&
                std::fabs(r) > std::numeric_limits<float>::max())
                return KV_ERR_DEPASSEMENT;
            this->Fixe(static_cast<T>(r));
            return KV_OK;
        }
    }

private:
    int nFixeEntier(KVEntier n) {
        if (n < static_cast<KVEntier>(std::numeric_limits<T>::min()) ||
            n > static_cast<KVEntier>(std::numeric_limits<T>::max()))
            return KV_ERR_DEPASSEMENT;
        this->Fixe(static_cast<T>(n));
        return KV_OK;
    }
    int nAjoute(int nPas) {
        if constexpr (std::is_integral_v<T>) {
            return nFixeEntier(KVEntier(this->tValeur()) + nPas);
        } else {
            this->Fixe(static_cast<T>(this->tValeur() + static_cast<T>(nPas)));
            return KV_OK;
        }
    }
};

template <class T> class CAny_TBooleen : public CAny_TEnPlace<T> {
public:
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_ENTIER;
        st.nEntier = this->tValeur() != 0;
        st.nLargeur = 8 * sizeof(T);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        bool b;
        int nRes = s_nVersBooleen(st, b);
        if (KV_bSucces(nRes))
            this->Fixe(b ? 1 : 0);
        return nRes;
    }
};

template <class T> class CAny_TMonnaie : public CAny_TEnPlace<T> {
    static_assert(sizeof(T) == 10);

public:
    bool bIsPositive() const override { return nLit() >= 0; }
    int nIncremente() override { return nFixe(nLit() + knMillion); }
    int nDecremente() override { return nFixe(nLit() - knMillion); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_MONNAIE;
        st.nEntier = nLit();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        KVEntier n;
        int nRes = s_nVersMonnaie(st, n);
        return KV_bSucces(nRes) ? nFixe(n) : nRes;
    }

private:
    KVEntier nLit() const {
        const unsigned char* p = this->pbyValeur();
        KVNaturel u = 0;
        for (int i = 9; i >= 0; --i)
            u = (u << 8) | p[i];
        if (p[9] & 0x80)
            u |= ~KVNaturel(0) << 80; // sign extension of the 80 bits
        return static_cast<KVEntier>(u);
    }
    int nFixe(KVEntier n) {
        if (n < knMonnaieMin || n > knMonnaieMax)
            return KV_ERR_DEPASSEMENT;
        auto u = static_cast<KVNaturel>(n);
        for (int i = 0; i < 10; ++i, u >>= 8)
            this->pbyValeur()[i] = static_cast<unsigned char>(u);
        return KV_OK;
    }
};

// One character in place; the zeroed rest of the area terminates it as a text.
template <class T> class CAny_TCaractere : public CAny_TEnPlace<T> {
public:
    const char* nGetPCASTR() const override {
        return s_pszSiLargeur<char>(reinterpret_cast<const T*>(this->pbyValeur()));
    }
    const wchar_t* nGetPCWSTR() const override {
        return s_pszSiLargeur<wchar_t>(reinterpret_cast<const T*>(this->pbyValeur()));
    }
    size_t nGetSTRLEN() const override { return this->tValeur() ? 1 : 0; }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        T c = this->tValeur();
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(&c, c ? 1 : 0, nCodePage);
        return KV_OK;
    }
    // A text of one character, or empty for the zero character.
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = s_nVersTexte(st, s);
        if (!KV_bSucces(nRes))
            return nRes;
        T c = 0;
        if constexpr (sizeof(T) == 1) {
            std::string sN = s_sVersNarrow(s, nCodePage);
            if (sN.size() > 1)
                return KV_ERR_CONVERSION;
            if (!sN.empty())
                c = sN[0];
        } else {
            std::wstring w = KVUtf8::VersWide(s);
            if (w.size() > 1)
                return KV_ERR_CONVERSION;
            if (!w.empty())
                c = w[0];
        }
        this->Fixe(c);
        return KV_OK;
    }
};

// A counted string (CXYString<T>) held as its raw pointer.
template <class T> class CAny_TChaine : public CAny_Intern {
public:
    size_t nGetSize() const override { return sizeof(T*); }
    const void* nGetAdr() const override { return pbyValeur(); }
    size_t nGetDataSize() const override { return (nLongueur() + 1) * sizeof(T); }
    const void* nGetDataAdr() const override { return pszTexte(); }
    size_t nGetUtilDataSize() const override { return nLongueur() * sizeof(T); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        T* p = tLit<T*>(static_cast<const unsigned char*>(pValeur));
        KVBloc::AddRef(p);
        Remplace(p);
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        if (nTaille % sizeof(T) || (!pDonnees && nTaille))
            return KV_ERR_PARAMETRE;
        CXYString<T> s;
        int nRes = s.nAffecte(static_cast<const T*>(pDonnees), nTaille / sizeof(T));
        if (KV_bSucces(nRes))
            Remplace(s.pDetach());
        return nRes;
    }
    const char* nGetPCASTR() const override { return s_pszSiLargeur<char>(pszTexte()); }
    const wchar_t* nGetPCWSTR() const override { return s_pszSiLargeur<wchar_t>(pszTexte()); }
    size_t nGetSTRLEN() const override { return nLongueur(); }
    eKVSTOCKAGE vnGetStockage() const override {
        return sizeof(T) == 1 ? KV_STOCKAGE_CHAINEA : KV_STOCKAGE_CHAINEW;
    }
    void vLibere() override {
        KVBloc::Release(p());
        std::memset(pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override { KVBloc::AddRef(p()); }
    int vnUnshare() override {
        auto s = CXYString<T>::Adopt(p()); // the value's own reference, handed back below
        int nRes = s.nUnshare();
        Ecrit(pbyValeur(), s.pDetach());
        return nRes;
    }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(pszTexte(), nLongueur(), nCodePage);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = s_nVersTexte(st, s);
        return KV_bSucces(nRes) ? nAffecteUtf8(s, nCodePage) : nRes;
    }

protected:
    T* p() const { return tLit<T*>(pbyValeur()); }
    const T* pszTexte() const { return p() ? p() : s_pszVide<T>(); }
    size_t nLongueur() const { return KVBloc::nTaille(p()) / sizeof(T); }
    void Remplace(T* pNouveau) {
        KVBloc::Release(p());
        Ecrit(pbyValeur(), pNouveau);
    }
    int nAffecteUtf8(std::string_view sUtf8, unsigned nCodePage) {
        CXYString<T> s;
        int nRes;
        if constexpr (sizeof(T) == 1) {
            std::string sN = s_sVersNarrow(sUtf8, nCodePage);
            nRes = s.nAffecte(sN.data(), sN.size());
        } else {
            nRes = KVUtf8::nVersWide(sUtf8, s);
        }
        if (KV_bSucces(nRes))
            Remplace(s.pDetach());
        return nRes;
    }
};

// A date or a time as text: a counted string whose content must keep its form.
template <class T, bool bHeure> class CAny_TTexteForme : public CAny_TChaine<T> {
public:
    int SetValue(const void* pValeur) override { return CAny_TChaine<T>::SetValue(pValeur); }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        if (nTaille % sizeof(T) || (!pDonnees && nTaille))
            return KV_ERR_PARAMETRE;
        return s_nProtege([&]() -> int {
            STAnyNeutre st;
            st.nGenre = KV_GENRE_TEXTE;
            st.sOctets = s_sVersUtf8(static_cast<const T*>(pDonnees), nTaille / sizeof(T), 0);
            return vnEcrit(st, 0);
        });
    }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_AUCUN; }
    int vnInitDefaut() override {
        return s_nProtege([&]() -> int {
            const wchar_t* psz = bHeure ? CDateTimeBase::ms_pcszValeurInitTime
                                        : CDateTimeBase::ms_pcszValeurInitDate;
            return this->nAffecteUtf8(KVUtf8::VersUtf8(psz), 0);
        });
    }
    int vnEcrit(const STAnyNeutre& st, unsigned nCodePage) override {
        std::string s;
        int nRes = bHeure ? s_nVersTexteHeure(st, s) : s_nVersTexteDate(st, s);
        return KV_bSucces(nRes) ? this->nAffecteUtf8(s, nCodePage) : nRes;
    }
};
template <class T> using CAny_TTexteDate = CAny_TTexteForme<T, false>;
template <class T> using CAny_TTexteHeure = CAny_TTexteForme<T, true>;

// A text pointed to and not owned: it can be read, never produced by a conversion.
template <class T> class CAny_TPTexte : public CAny_TEnPlace<const T*> {
public:
    size_t nGetDataSize() const override { return (nGetSTRLEN() + 1) * sizeof(T); }
    const void* nGetDataAdr() const override { return pszTexte(); }
    size_t nGetUtilDataSize() const override { return nGetSTRLEN() * sizeof(T); }
    // The data form keeps the address of the text given.
    int SetValue(const void* pValeur) override {
        return CAny_TEnPlace<const T*>::SetValue(pValeur);
    }
    int SetValue(const void* pDonnees, unsigned long) override {
        this->Fixe(static_cast<const T*>(pDonnees));
        return KV_OK;
    }
    const char* nGetPCASTR() const override { return s_pszSiLargeur<char>(pszTexte()); }
    const wchar_t* nGetPCWSTR() const override { return s_pszSiLargeur<wchar_t>(pszTexte()); }
    size_t nGetSTRLEN() const override { return s_nLongueurC(pszTexte()); }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_POINTEUR; }
    int vnLit(STAnyNeutre& st, unsigned nCodePage) const override {
        st.nGenre = KV_GENRE_TEXTE;
        st.sOctets = s_sVersUtf8(pszTexte(), nGetSTRLEN(), nCodePage);
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre&, unsigned) override { return KV_ERR_TYPE; }

private:
    const T* pszTexte() const { return this->tValeur() ? this->tValeur() : s_pszVide<T>(); }
};

template <class T> class CAny_TDateHeure : public CAny_TEnPlace<T> {
public:
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_DATEHEURE;
        st.clDate = this->tValeur();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        T cl;
        int nRes = s_nVersDateHeure(st, cl);
        if (KV_bSucces(nRes))
            this->Fixe(cl);
        return nRes;
    }
};

// Signed milliseconds.
template <class T> class CAny_TDuree : public CAny_TEnPlace<T> {
public:
    bool bIsPositive() const override { return this->tValeur() >= 0; }
    int nIncremente() override { return nFixe(KVEntier(this->tValeur()) + 1); }
    int nDecremente() override { return nFixe(KVEntier(this->tValeur()) - 1); }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_DUREE;
        st.nEntier = this->tValeur();
        return KV_OK;
    }
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        KVEntier n;
        int nRes = s_nVersDuree(st, n);
        return KV_bSucces(nRes) ? nFixe(n) : nRes;
    }

private:
    int nFixe(KVEntier n) {
        if (n < std::numeric_limits<T>::min() || n > std::numeric_limits<T>::max())
            return KV_ERR_DEPASSEMENT;
        this->Fixe(static_cast<T>(n));
        return KV_OK;
    }
};

// A counted byte block (CKLBIN) held as its raw pointer.
template <class T> class CAny_TBinaire : public CAny_Intern {
    static_assert(sizeof(T) == sizeof(unsigned char*));

public:
    size_t nGetSize() const override { return sizeof(unsigned char*); }
    const void* nGetAdr() const override { return pbyValeur(); }
    size_t nGetDataSize() const override { return KVBloc::nTaille(p()); }
    const void* nGetDataAdr() const override { return p() ? p() : s_pszVide<unsigned char>(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        auto* pNouveau = tLit<unsigned char*>(static_cast<const unsigned char*>(pValeur));
        KVBloc::AddRef(pNouveau);
        Remplace(pNouveau);
        return KV_OK;
    }
    int SetValue(const void* pDonnees, unsigned long nTaille) override {
        CKLBIN cl;
        int nRes = cl.nAssign(pDonnees, nTaille, 0);
        if (KV_bSucces(nRes))
            Remplace(cl.pDetach());
        return nRes;
    }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_BINAIRE; }
    void vLibere() override {
        KVBloc::Release(p());
        std::memset(pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override { KVBloc::AddRef(p()); }
    int vnUnshare() override {
        if (KVBloc::nRef(p()) <= 1)
            return KV_OK;
        CKLBIN cl;
        int nRes = cl.nAssign(p(), KVBloc::nTaille(p()), 0);
        if (KV_bSucces(nRes))
            Remplace(cl.pDetach());
        return nRes;
    }
    int vnLit(STAnyNeutre& st, unsigned) const override {
        st.nGenre = KV_GENRE_BINAIRE;
        st.sOctets.assign(static_cast<const char*>(nGetDataAdr()), nGetDataSize());
        return KV_OK;
    }
    // Text becomes its UTF-8 bytes; other values the bytes of their text.
    int vnEcrit(const STAnyNeutre& st, unsigned) override {
        std::string s;
        int nRes = s_nVersOctets(st, s);
        return KV_bSucces(nRes) ? SetValue(s.data(), s.size()) : nRes;
    }

private:
    unsigned char* p() const { return tLit<unsigned char*>(pbyValeur()); }
    void Remplace(unsigned char* pNouveau) {
        KVBloc::Release(p());
        Ecrit(pbyValeur(), pNouveau);
    }
};

// A pointer of the host (image, carrier, font), kept and copied as it is.
template <class T> class CAny_TOpaque : public CAny_TEnPlace<T> {
public:
    size_t nGetDataSize() const override { return 0; }
    const void* nGetDataAdr() const override { return this->tValeur(); }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_POINTEUR; }
};

// A counted object: a reference added on copy, dropped on clear.
template <class T> class CAny_TObjet : public CAny_TEnPlace<T*> {
public:
    size_t nGetDataSize() const override { return 0; }
    const void* nGetDataAdr() const override { return this->tValeur(); }
    int SetValue(const void* pValeur) override {
        if (!pValeur)
            return KV_ERR_PARAMETRE;
        T* pi = tLit<T*>(static_cast<const unsigned char*>(pValeur));
        if (pi)
            pi->vAddRef();
        vLibere();
        this->Fixe(pi);
        return KV_OK;
    }
    // Bytes never become a reference: only the image form sets an object.
    int SetValue(const void*, unsigned long) override { return KV_ERR_TYPE; }
    eKVSTOCKAGE vnGetStockage() const override { return KV_STOCKAGE_OBJET; }
    void vLibere() override {
        if (T* pi = this->tValeur())
            pi->vRelease();
        std::memset(this->pbyValeur(), 0, CAny::knTailleValeur);
    }
    void vRetient() override {
        if (T* pi = this->tValeur())
            pi->vAddRef();
    }
};

// A plain block of fixed size (point, rectangle): copied, never converted.
template <class T> class CAny_TBloc : public CAny_TEnPlace<T> {};

#define KV_ANY_TYPE(nCode, NOM, GENRE, T)                                                          \
    class CAny_##NOM final : public CAny_T##GENRE<T> {                                             \
    public:                                                                                        \
        const char* vpszNomClasse() const override { return "CAny_" #NOM; }                        \
    };                                                                                             \
    static_assert(sizeof(CAny_##NOM) == sizeof(CAny_Intern), "a vtable pointer and nothing else");
#include "AnyTypes.def"

} // namespace

namespace KVAny {

CAny_Intern* s_pclConstruit(void* pSlot, uint16_t nCode) {
    if (nCode & CAny::knTableau)
        return new (pSlot) CAny_Intern;
    switch (nCode) {
#define KV_ANY_TYPE(nCode, NOM, GENRE, T)                                                          \
    case nCode:                                                                                    \
        return new (pSlot) CAny_##NOM;
#define KV_ANY_ALIAS(nCode, NOM)                                                                   \
    case nCode:                                                                                    \
        return new (pSlot) CAny_##NOM;
#include "AnyTypes.def"
    default:
        return new (pSlot) CAny_Intern;
    }
}

bool s_bConnu(unsigned nCode) {
    switch (nCode) {
#define KV_ANY_TYPE(nCode, NOM, GENRE, T) case nCode:
#define KV_ANY_ALIAS(nCode, NOM) case nCode:
#include "AnyTypes.def"
        return true;
    default:
        return false;
    }
}

} // namespace KVAny
