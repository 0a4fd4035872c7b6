// The host interfaces as a layout: where each operation sits in its vtable, where the contexts
// keep their fields, and that each counted interface can be implemented and held in CRef.
#include "HTTPService.h"
#include "ImageService.h"
#include "JSONService.h"
#include "LibShop.h"
#include "LoginService.h"
#include "ObjectInterfaces.h"
#include "Ref.h"
#include "StoreService.h"
#include "VM.h"
#include "XMLService.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Itanium C++ ABI: a pointer to a virtual member function holds 1 plus the byte offset of its
// slot in the vtable, then the adjustment of `this`.
template <class F> size_t nSlot(F pfn) {
    static_assert(sizeof(F) == 2 * sizeof(uintptr_t));
    uintptr_t aw[2];
    std::memcpy(aw, &pfn, sizeof aw);
    if ((aw[0] & 1) == 0 || aw[1] != 0)
        return SIZE_MAX; // not virtual, or not in this vtable
    return (aw[0] - 1) / sizeof(void*);
}

struct STSlot {
    std::string sNom;
    size_t nObtenu;
    size_t nAttendu;
};
template <class F> STSlot Slot(const char* pszNom, F pfn, size_t nAttendu) {
    return {pszNom, nSlot(pfn), nAttendu};
}
#define SLOT(C, F, N) Slot(#C "::" #F, &C::F, N)

void VerifieSlots(const std::vector<STSlot>& tabSlots) {
    for (const STSlot& st : tabSlots)
        EXPECT_EQ(st.nObtenu, st.nAttendu) << st.sNom;
}

// The six slots of IInterfaceObjetBase come first in every counted interface.
constexpr size_t knBase = 6;

TEST(InterfacesSlots, RacineEtObjets) {
    VerifieSlots({
        SLOT(IInterfaceObjetBase, vAddRef, 0),
        SLOT(IInterfaceObjetBase, vRelease, 1),
        SLOT(IInterfaceObjetBase, vpiGetObjetBase, 2),
        SLOT(IInterfaceObjetBase, vbDisponible, 3),
        SLOT(IInterfaceObjetBase, m33EmptyMethodIInterfaceObjetBase, 5),
        // The covariant override keeps the root's slot: no adjustment is needed.
        SLOT(IObjetBase, vpiGetObjetBase, 2),
        SLOT(IObjetBase, veGetFamille, knBase + 0),
        SLOT(IObjetBase, vpiGetIObjetValeur, knBase + 5),
        SLOT(IObjetComposante, vnGetVersionIObjetComposante, knBase + 0),
        SLOT(IObjetComposante, vpGetObjetC, knBase + 13),
        SLOT(IObjetComposante, vbSerialisationSpecifique_OBSOLETE, knBase + 14),
        SLOT(IObjetComposante, vbSerialise, knBase + 15),
        SLOT(IObjetComposante, vbDeserialise, knBase + 16),
        SLOT(IObjetComposante, vpGetComparaison, knBase + 17),
        SLOT(IObjetComposante, veCompareGenerique, knBase + 18),
        SLOT(IObjetComposante, vAvantAdoptionOrpheline, knBase + 19),
        SLOT(IObjetComposante, vbAutoriseCopieCollectionVersTableau, knBase + 20),
        SLOT(IObjetComposante, vpGetInterfaceC, knBase + 21),
        SLOT(IObjetComposante, vbSerialisationSpecifique, knBase + 22),
        SLOT(IObjetComposante, vReleaseContexte, knBase + 23),
        // The host tells an object of an error through the fourth operation of its peer.
        SLOT(IKLObjetComposante, vNotifieErreurInstance, knBase + 3),
        SLOT(IGlobalFactory, vnGetVersion, 0),
        SLOT(IGlobalFactory, vpiCreeKLObjetComposante, 1),
        SLOT(IKLTableau, vbInitialise, knBase + 0),
        SLOT(IKLTableau, vbCopie, knBase + 5),
    });
}

TEST(InterfacesSlots, Collections) {
    VerifieSlots({
        SLOT(IObjetCollection, vnGetVersionIObjetCollection, knBase + 0),
        SLOT(IObjetCollection, vnGetNbElementCollection, knBase + 1),
        SLOT(IObjetCollection, vpiGetElementCollection, knBase + 2),
        SLOT(IObjetCollection, vbElementAutoExtensible, knBase + 3),
        SLOT(IObjetCollection, vpiGetIObjetCollectionModifiable, knBase + 4),
        SLOT(IObjetCollection, __veOperationInutilise__, knBase + 5),
        SLOT(IObjetCollection, vbRetourPositionCollection, knBase + 6),
        SLOT(IObjetCollection, vbReferenceElementCollection, knBase + 7),
        SLOT(IObjetCollection, veCollectionAutoAgrandissement, knBase + 8),
        SLOT(IObjetCollection, vnGetFiltreAutorise, knBase + 9),
        SLOT(IObjetCollection, vpiPoseFiltre, knBase + 10),
        SLOT(IObjetCollection, vbAutoriseFiltreCle, knBase + 11),
        SLOT(IObjetCollection, vpiPoseFiltreCle, knBase + 12),
        // The empty first base puts its destructor pair ahead of the editing operations.
        SLOT(IObjetCollectionModifiable, vnGetVersionIObjetCollectionModifiable, 2),
        SLOT(IObjetCollectionModifiable, veAjouteElementCollection, 3),
        SLOT(IObjetCollectionModifiable, veAjouteElementCollectionVide, 4),
        SLOT(IObjetCollectionModifiable, veAjouteElementCollectionParametre, 5),
        SLOT(IObjetCollectionModifiable, veInsereElementCollection, 6),
        SLOT(IObjetCollectionModifiable, veInsereElementCollectionVide, 7),
        SLOT(IObjetCollectionModifiable, veInsereElementCollectionParametre, 8),
        SLOT(IObjetCollectionModifiable, veSupprimeElementCollection, 9),
        SLOT(IObjetCollectionModifiable, veSupprimeToutElementCollection, 10),
        SLOT(IObjetCollectionModifiable, veEchangeElementCollection, 11),
        SLOT(IObjetCollectionModifiable, veDeplaceElementCollection, 12),
    });
}

TEST(InterfacesSlots, VMEtRegistre) {
    VerifieSlots({
        SLOT(IVM, nInfoVM, 0),
        SLOT(IVM, bEmpileAny, 1),
        SLOT(IVM, bAppelleFonctionVM, 2),
        SLOT(IVM, piGetService, 3),
        SLOT(IVM, bRetourneValeurAppel, 4),
        SLOT(IVM, bEmpileDateHeure, 5),
        SLOT(IVM, bRetourneValeur, 6),
        SLOT(IVM, pclAlloueTableau, 7),
        SLOT(IVM, bEmpileChaineA, 8),
        SLOT(IVM, piGetAuthentification, 9),
        SLOT(ILibShop, piGetInterface, 0),
        SLOT(ILibShop, piGetInterfaceVM, 1),
        SLOT(ILibShop, piGetInterfaceCompat, 2),
    });
}

TEST(InterfacesSlots, Services) {
    VerifieSlots({
        // The order in which the HTTP service declares its operations, SOAP after.
        SLOT(IHTTP, vRelease, 1),
        SLOT(IHTTP, vpiGetErreur, knBase + 0),
        SLOT(IHTTP, vbDonneResultat, knBase + 1),
        SLOT(IHTTP, vSetVM, knBase + 2),
        SLOT(IHTTP, vpiCreeEntetes, knBase + 3),
        SLOT(IHTTP, vbExecute, knBase + 4),
        SLOT(IHTTP, vbSoapExecute, knBase + 5),
        SLOT(IHTTP, vbSoapAjouteEntete, knBase + 6),
        SLOT(IHTTP, vbSoapDonneResultat, knBase + 7),
        SLOT(IHTTP, vbSoapErreur, knBase + 8),
        SLOT(IEntetesHTTP, vAddRef, 0),
        SLOT(IEntetesHTTP, vRelease, 1),
        SLOT(IEntetesHTTP, vAjoute, knBase + 0),
        SLOT(IVisiteurJSON, vnGetVersionIVisiteurJSON, 0),
        SLOT(IVisiteurJSON, veVisiteValeur, 1),
        SLOT(IVisiteurJSON, veVisiteObjet, 2),
        SLOT(IVisiteurJSON, veVisiteMembre, 3),
        SLOT(IVisiteurJSON, veVisiteTableau, 4),
        SLOT(IVisiteurJSON, veVisiteElement, 5),
        SLOT(IElementJSON, vAccepte, knBase + 4),
        SLOT(IContenuJSON, vpiAnalyse, knBase + 0),
        SLOT(INoeudXML, eGetGenre, knBase + 0),
        SLOT(INoeudXML, pszGetAttribut, knBase + 3),
        SLOT(INoeudXML, piGetNamespace, knBase + 6),
        SLOT(INoeudXML, SupprimeNoeud, knBase + 11),
        SLOT(INoeudXML, piGetSuivant, knBase + 13),
        SLOT(IDocumentXML, SetEncodage, knBase + 0),
        SLOT(IDocumentXML, bCreeRacine, knBase + 1),
        SLOT(IDocumentXML, piGetRacine, knBase + 2),
        SLOT(IGestionnaireXML, vpiCreeDocument, knBase + 0),
        SLOT(IPersistance, vEcrit, knBase + 0),
        SLOT(IPersistance, vbLit, knBase + 1),
        SLOT(IPersistance, vLibere, knBase + 2),
        SLOT(IAuthentification, vGetURLRedirection, knBase + 0),
        SLOT(IAuthentification, veAuthentifie, knBase + 1),
        SLOT(IMainIMG, vpiGetImageFactory, knBase + 0),
        SLOT(IImage, veGetTypeImage, knBase + 0),
    });
}

// The host reads the call context by offset, as raw memory.
TEST(InterfacesContextes, LusParDecalage) {
    IVM* piVM = reinterpret_cast<IVM*>(uintptr_t{0x1000});
    STKLAppel stAppel{piVM, 0, 7, -3, 42};
    unsigned char aby[sizeof stAppel];
    std::memcpy(aby, &stAppel, sizeof stAppel);
    int32_t n;
    std::memcpy(&n, aby + 12, 4);
    EXPECT_EQ(n, 7);
    std::memcpy(&n, aby + 16, 4);
    EXPECT_EQ(n, -3);
    std::memcpy(&n, aby + 20, 4);
    EXPECT_EQ(n, 42);
    void* p;
    std::memcpy(&p, aby, sizeof p);
    EXPECT_EQ(p, piVM);

    CCtxInfo clCtx{nullptr, nullptr, piVM};
    void* apMots[3];
    std::memcpy(apMots, &clCtx, sizeof apMots);
    EXPECT_EQ(apMots[2], piVM) << "the VM is the third word";
    EXPECT_EQ(CCtxInfo::s_piGetVM(&clCtx), piVM);
    EXPECT_EQ(CCtxInfo::s_piGetVM(nullptr), nullptr);
}

// A count for the fakes: the first reference belongs to the creator.
template <class I> class TCompte : public I {
public:
    using tInterface = I;
    explicit TCompte(int* pnDetruits) : m_pnDetruits(pnDetruits) {}
    virtual ~TCompte() { ++*m_pnDetruits; }
    void vAddRef() override { ++m_nRef; }
    void vRelease() override {
        if (--m_nRef == 0)
            delete this;
    }
    int m_nRef = 1;

private:
    int* m_pnDetruits;
};

class CFauxObjet final : public TCompte<IObjetBase> {
public:
    using TCompte::TCompte;
};

class CFauxCollection final : public TCompte<IObjetCollectionModifiable> {
public:
    using TCompte::TCompte;
    int vnGetNbElementCollection(CCtxInfo*, CXError*) override { return 0; }
    IObjetBase* vpiGetElementCollection(int, CCtxInfo*, CXError*) override { return nullptr; }
    IObjetCollectionModifiable* vpiGetIObjetCollectionModifiable() override { return this; }
    eRESULTATOBJET veAjouteElementCollection(IObjetComposante*, int*, CCtxInfo*,
                                             CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veAjouteElementCollectionVide(int*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veAjouteElementCollectionParametre(int*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veInsereElementCollection(int, IObjetComposante*, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veInsereElementCollectionVide(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veInsereElementCollectionParametre(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veSupprimeElementCollection(int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veSupprimeToutElementCollection(CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veEchangeElementCollection(int, int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
    eRESULTATOBJET veDeplaceElementCollection(int, int, CCtxInfo*, CXError*) override {
        return RESULTAT_OBJET_OK;
    }
};

class CFauxComposante final : public TCompte<IObjetComposante> {
public:
    using TCompte::TCompte;
    int vbEgaliteObjet(IObjetComposante* pi) override { return pi == this; }
    IKLObjetComposante* vpiGetKLObjetComposante() override { return nullptr; }
    void vSetKLObjetComposante(IKLObjetComposante*) override {}
    IInterfaceObjetBase* vpiGetObjetSynchronisation() override { return nullptr; }
    void vNotifieLiberationExplicite() override {}
    int vbGetObjetC(void*& p, ITypeDescription*, int, CXError*) override {
        p = nullptr;
        return 0;
    }
    void* vpGetSafeObjetC(ITypeDescription*) override { return nullptr; }
    ITypeDescription* vpiGetTypeReel() override { return nullptr; }
    int __vnGetTailleDonnee() override { return 0; }
    eRESULTATOBJET veDumpMemoire(const wchar_t*, IDumpMemoire*, void*&) override {
        return RESULTAT_OBJET_OK;
    }
    void vNotifieErreurInstance(IVM*, CXError*, int) override {}
    void vNotifieInstanceOrpheline() override {}
    void* vpGetObjetC() override { return this; }
};

class CFauxPair final : public TCompte<IKLObjetComposante> {
public:
    using TCompte::TCompte;
    int vnGetVersionIKLObjetComposante() override { return 1; }
    int vbGetObjetC(void*& p, ITypeDescription*, int, CXError*) override {
        p = nullptr;
        return 0;
    }
    void vNotifieInstanceOrpheline() override {}
    void vNotifieErreurInstance(IVM*, int, CXError*) override {}
};

class CFauxTableau final : public TCompte<IKLTableau> {
public:
    using TCompte::TCompte;
    int vbInitialise(ITypeDescription*, int, int, IVM*, CXError*) override { return 1; }
    int vnGetNbElement() override { return 0; }
    int vbRedimensionne(int, CXError*) override { return 1; }
    int vbGetElement(int, CAny&, CXError*) override { return 0; }
    int vbSetElement(int, const CAny&, CXError*) override { return 0; }
    int vbCopie(IKLTableau*, CXError*) override { return 1; }
};

class CFauxEntetes final : public TCompte<IEntetesHTTP> {
public:
    using TCompte::TCompte;
    void vAjoute(const wchar_t*, const wchar_t*) override {}
    int vnGetNbEntete() override { return 0; }
    const wchar_t* vpszGetNom(int) override { return L""; }
    const wchar_t* vpszGetValeur(int) override { return L""; }
};

class CFauxHTTP final : public TCompte<IHTTP> {
public:
    using TCompte::TCompte;
    CXError* vpiGetErreur() override { return nullptr; }
    int vbDonneResultat(CAny&, int) override { return 0; }
    void vSetVM(IVM*, int) override {}
    IEntetesHTTP* vpiCreeEntetes() override { return nullptr; }
    int vbExecute(CParametresHTTPRequete&, int) override { return 0; }
    int vbSoapExecute(const wchar_t*, const STManipAUB&, const wchar_t*) override { return 0; }
    int vbSoapAjouteEntete(const wchar_t*, const CAny&, const wchar_t*, int) override { return 0; }
    int vbSoapDonneResultat(CAny&, eSOAPResultat, int) override { return 0; }
    int vbSoapErreur(eSOAPErreur, CXYString<wchar_t>&) override { return 0; }
};

class CFauxElementJSON final : public TCompte<IElementJSON> {
public:
    using TCompte::TCompte;
    eGENREJSON veGetGenre() override { return GENRE_JSON_NUL; }
    int vbGetValeur(CAny&) override { return 0; }
    IObjetJSON* vpiGetIObjetJSON() override { return nullptr; }
    ITableauJSON* vpiGetITableauJSON() override { return nullptr; }
    void vAccepte(IVisiteurJSON&) override {}
};

class CFauxObjetJSON final : public TCompte<IObjetJSON> {
public:
    using TCompte::TCompte;
    int vnGetNbMembre() override { return 0; }
    void vAccepte(IVisiteurJSON&) override {}
};

class CFauxTableauJSON final : public TCompte<ITableauJSON> {
public:
    using TCompte::TCompte;
    int vnGetNbElement() override { return 0; }
    IElementJSON* vpiGetElement(int) override { return nullptr; }
    void vAccepte(IVisiteurJSON&) override {}
};

class CFauxContenuJSON final : public TCompte<IContenuJSON> {
public:
    using TCompte::TCompte;
    IElementJSON* vpiAnalyse(const char*, size_t, CXError*) override { return nullptr; }
};

class CFauxNamespace final : public TCompte<INamespaceXML> {
public:
    using TCompte::TCompte;
    const char* pszGetPrefixe() override { return ""; }
    const char* pszGetURI() override { return ""; }
};

class CFauxNoeud final : public TCompte<INoeudXML> {
public:
    using TCompte::TCompte;
    eGENRENOEUDXML eGetGenre() override { return NOEUDXML_ELEMENT; }
    const char* pszGetNom() override { return ""; }
    const char* pszGetValeur() override { return ""; }
    const char* pszGetAttribut(const char*) override { return ""; }
    INoeudXML* piGetEnfant(int) override { return nullptr; }
    INoeudXML* piGetAttribut(int) override { return nullptr; }
    INamespaceXML* piGetNamespace() override { return nullptr; }
    int bSetTexte(const wchar_t*) override { return 0; }
    int bSetValeurAttribut(const char*, const wchar_t*) override { return 0; }
    int bSetAttributUTF8(const char*, const char*) override { return 0; }
    int bAjouteEnfant(const char*, INoeudXML**) override { return 0; }
    void SupprimeNoeud() override {}
    INoeudXML* piGetEnfantParNom(const char*) override { return nullptr; }
    INoeudXML* piGetSuivant(const char*) override { return nullptr; }
};

class CFauxDocument final : public TCompte<IDocumentXML> {
public:
    using TCompte::TCompte;
    void SetEncodage(const wchar_t*) override {}
    int bCreeRacine(const char*, INoeudXML**) override { return 0; }
    INoeudXML* piGetRacine(int) override { return nullptr; }
    int bImporteRacine(INoeudXML*, CXError*) override { return 0; }
    int bEcrit(IContenuXMLSortie&, eFORMATXML, CXError*) override { return 0; }
};

class CFauxGestionnaireXML final : public TCompte<IGestionnaireXML> {
public:
    using TCompte::TCompte;
    IDocumentXML* vpiCreeDocument(CXError*) override { return nullptr; }
    IDocumentXML* vpiAnalyse(const CAny&, CXError*) override { return nullptr; }
};

class CFauxPersistance final : public TCompte<IPersistance> {
public:
    using TCompte::TCompte;
    void vEcrit(const wchar_t*, const wchar_t*, const wchar_t*, CXError*) override {}
    int vbLit(const wchar_t*, const wchar_t*, const wchar_t*, wchar_t** pp, CXError*) override {
        *pp = nullptr;
        return 0;
    }
    void vLibere(wchar_t*) override {}
};

class CFauxAuthentification final : public TCompte<IAuthentification> {
public:
    using TCompte::TCompte;
    void vGetURLRedirection(int, CXYString<wchar_t>&) override {}
    eAUTHENTIFICATION veAuthentifie(const wchar_t*, IVM*, const wchar_t*, CXYString<wchar_t>&,
                                    CXError*) override {
        return AUTHENTIFICATION_ERREUR;
    }
};

class CFauxImage final : public TCompte<IImage> {
public:
    using TCompte::TCompte;
    IImageFactory::TYPEIMAGE veGetTypeImage() override { return IImageFactory::TYPEIMAGE_PNG; }
    int vbGetTaille(int& nL, int& nH) override { return nL = nH = 0; }
};

class CFauxFabriqueImage final : public TCompte<IImageFactory> {
public:
    using TCompte::TCompte;
    IImage* vpiCreeImage(const void*, size_t, const wchar_t*, CXError*) override { return nullptr; }
    IImage* vpiChargeImage(const wchar_t*, CXError*) override { return nullptr; }
};

class CFauxMainIMG final : public TCompte<IMainIMG> {
public:
    using TCompte::TCompte;
    IImageFactory* vpiGetImageFactory(CXError*) override { return nullptr; }
};

// Each counted interface held in CRef: copies share one object, destroyed once, by the last
// release, reached through the interface's own vRelease slot.
template <class T> class InterfacesCRef : public testing::Test {};
using tFaux = testing::Types<CFauxObjet, CFauxCollection, CFauxComposante, CFauxPair, CFauxTableau,
                             CFauxEntetes, CFauxHTTP, CFauxElementJSON, CFauxObjetJSON,
                             CFauxTableauJSON, CFauxContenuJSON, CFauxNamespace, CFauxNoeud,
                             CFauxDocument, CFauxGestionnaireXML, CFauxPersistance,
                             CFauxAuthentification, CFauxImage, CFauxFabriqueImage, CFauxMainIMG>;
TYPED_TEST_SUITE(InterfacesCRef, tFaux);

TYPED_TEST(InterfacesCRef, PartageEtDetruitUneFois) {
    using TFaux = TypeParam;
    using I = typename TFaux::tInterface;
    int nDetruits = 0;
    {
        TFaux* pclFaux = new TFaux(&nDetruits);
        CRef<I> r1 = CRef<I>::Adopt(pclFaux);
        {
            CRef<I> r2 = r1;
            EXPECT_EQ(pclFaux->m_nRef, 2);
            // A service handed over as IInterfaceObjetBase* comes back by static_cast.
            IInterfaceObjetBase* piBase = r2.pGet();
            EXPECT_EQ(static_cast<I*>(piBase), r1.pGet());
        }
        EXPECT_EQ(pclFaux->m_nRef, 1);
        EXPECT_EQ(nDetruits, 0);
    }
    EXPECT_EQ(nDetruits, 1);
}

TEST(InterfacesObjets, ObjetBaseParDefaut) {
    int nDetruits = 0;
    CRef<IObjetBase> r = CRef<IObjetBase>::Adopt(new CFauxObjet(&nDetruits));
    IInterfaceObjetBase* piRacine = r.pGet();
    EXPECT_EQ(piRacine->vpiGetObjetBase(), r.pGet()) << "reached through the root's slot";
    EXPECT_EQ(r->vpiGetObjetBase(), r.pGet());
    EXPECT_EQ(r->vpiGetIObjetComposante(), nullptr);
    EXPECT_EQ(r->vpiGetIObjetCollection(), nullptr);
    EXPECT_EQ(r->vpiGetIObjetValeur(), nullptr);
    EXPECT_TRUE(r->vbEgaliteObjet(r.pGet()));
    EXPECT_FALSE(r->vbEgaliteObjet(nullptr));
    CFauxObjet clAutre(&nDetruits);
    EXPECT_FALSE(r->vbEgaliteObjet(&clAutre)) << "identity, not value";
}

TEST(InterfacesObjets, CollectionModifiableParSesDeuxBases) {
    int nDetruits = 0;
    CFauxCollection* pclCollection = new CFauxCollection(&nDetruits);
    CRef<IObjetCollection> r = CRef<IObjetCollection>::Adopt(pclCollection);
    IObjetCollectionModifiable* piModifiable = r->vpiGetIObjetCollectionModifiable();
    ASSERT_EQ(piModifiable, pclCollection);
    EXPECT_EQ(static_cast<IObjetCollection*>(piModifiable), r.pGet());
    EXPECT_EQ(piModifiable->veAjouteElementCollectionVide(nullptr, nullptr, nullptr),
              RESULTAT_OBJET_OK);
    r.Reset();
    EXPECT_EQ(nDetruits, 1);
}

TEST(InterfacesHTTP, RequeteValeursDeDepartEtLiberation) {
    int nEntetesDetruits = 0, nReserveDetruit = 0;
    {
        CParametresHTTPRequete clRequete;
        EXPECT_EQ(clRequete.m_nVersion, 2);
        EXPECT_EQ(clRequete.m_nOption, 16);
        EXPECT_EQ(clRequete.m_nMethode, METHODE_HTTP_GET);
        EXPECT_EQ(clRequete.m_nReserve, 0);
        EXPECT_TRUE(clRequete.m_sURL.bVide());
        EXPECT_TRUE(clRequete.m_clCorps.bVide());
        EXPECT_EQ(clRequete.m_piEntetes, nullptr);
        EXPECT_EQ(clRequete.m_piReserve, nullptr);

        // A set adopted over another releases the former one.
        clRequete.AdopteEntetes(new CFauxEntetes(&nEntetesDetruits));
        clRequete.AdopteEntetes(new CFauxEntetes(&nEntetesDetruits));
        EXPECT_EQ(nEntetesDetruits, 1);
        clRequete.m_piReserve = new CFauxObjet(&nReserveDetruit);
    }
    EXPECT_EQ(nEntetesDetruits, 2) << "the record owns its header set";
    EXPECT_EQ(nReserveDetruit, 1) << "and its reserved object";
}

TEST(InterfacesJSON, NomStandard) {
    CNomStandard clVide;
    EXPECT_STREQ(clVide.pszGet(), L"") << "never null";
    EXPECT_EQ(clVide.nLongueur(), 0u);
    const wchar_t szNom[] = L"access_token";
    CNomStandard clNom(szNom, 12);
    EXPECT_EQ(clNom.sv(), L"access_token");
    EXPECT_EQ(CNomStandard(szNom, 6).sv(), L"access") << "the length bounds the name";
}

} // namespace
