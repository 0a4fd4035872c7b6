// The XML objects read from and written to the host's real XML service: how rows are found,
// the order members are written in, the canonical forms a change rewrites, the leaves' set
// state, the parent of a new nested member, and the script collections over lists.
#define XML_ESSAI_DEFINITIONS
#include "XmlEssai.h"

#include "xmlobject/Author.h"
#include "xmlobject/FctFind.h"
#include "xmlobject/XmlEnumerateur.h"

#include "frame/ModuleInfo.h"

namespace {

CXmlObjectMulti* Multi(const CRef<CXmlObject>& cl) { return cl->vpclGetXmlObjectMulti(); }
int Nb(const CRef<CXmlObject>& cl, const char* psz) {
    CXmlObjectListe* pcl = Multi(cl)->pclGetListe(psz);
    return pcl ? pcl->nGetNbElement() : 0;
}
std::wstring Valeur(CXmlObject* pcl) {
    CXYString<wchar_t> s;
    CXError clErreur;
    return pcl && pcl->vbGet(s, clErreur) ? std::wstring(s.pszGet()) : L"(none)";
}

// Rows are found ignoring case; a prefix is compared as text and retried without, so
// "atom:link" finds "link" but "email" never finds "gd:email".
struct STCasLigne {
    const char* pszCorps;
    const char* pszMembre;
    int nAttendu;
};
const STCasLigne gtabLignes[] = {
    {"<Title>T</Title>", "title", 1},
    {"<foo:title xmlns:foo=\"urn:x\">T</foo:title>", "title", 1},
    {"<a:link xmlns:a=\"http://www.w3.org/2005/Atom\" rel=\"self\"/>", "link", 1},
    {"<email address=\"a@x\"/>", "gd:email", 0},
    {"<GD:EMAIL xmlns:GD=\"urn:y\" address=\"a@x\"/>", "gd:email", 1},
    {"<unknown/><gd:where/>", "title", 0},
};
class Lignes : public XmlEssai, public testing::WithParamInterface<STCasLigne> {};
TEST_P(Lignes, TrouveeParNom) {
    auto cl = Lit(GetParam().pszCorps);
    EXPECT_EQ(Nb(cl, GetParam().pszMembre), GetParam().nAttendu) << GetParam().pszCorps;
}
INSTANTIATE_TEST_SUITE_P(XmlObjet, Lignes, testing::ValuesIn(gtabLignes));

// Members come out grouped by name, each group where its name first appeared.
TEST_F(XmlEssai, MembresGroupesALaPremiereApparition) {
    auto cl = Lit("<link rel=\"a\"/><title>T</title><link rel=\"b\"/><item value=\"v\"/><link rel=\"c\"/>");
    ASSERT_EQ(Nb(cl, "link"), 3);
    auto clCopie = CRef<CXmlObject>::Adopt(cl->vpclClone(nullptr));
    EXPECT_TRUE(clCopie->vbIsNouvelObjet()) << "a copy is unbound";
    CXError clErreur;
    EXPECT_EQ(Ecrit(clCopie.pGet(), clErreur),
              "<entry><link rel=\"a\"/><link rel=\"b\"/><link rel=\"c\"/><title>T</title>"
              "<item value=\"v\"/></entry>");
}

// A member added by hand to a nested element gets the element's parent as its parent.
TEST_F(XmlEssai, NouveauMembreNicheAPourParentLeGrandParent) {
    auto cl = Lit("<item value=\"v\"/>");
    auto* pclNiche = Multi(cl)->pclGetPropriete("item", 0)->vpclGetXmlObjectMulti();
    ASSERT_EQ(pclNiche->pclGetParent(), Multi(cl)) << "read members have the reader as parent";
    CXmlObject* pclNote = pclNiche->pclGetCreatePropriete("note", 5);
    ASSERT_NE(pclNote, nullptr);
    EXPECT_EQ(pclNote->pclGetParent(), Multi(cl));
    EXPECT_EQ(pclNiche->pclGetPropriete("note", 0), pclNote) << "appended whatever the index";
    EXPECT_EQ(pclNiche->pclGetPropriete("note", -1), nullptr);
}

// A change is found by comparing texts: canonical forms differ from what was read and are
// written back ("true" as 1, 3.5 as 3.500000, a date in full, a relation in the table's
// case, an unknown relation emptied). The attribute leaf of an element rewrites every time.
struct STCasCanonique {
    const char* pszNom;
    const char* pszAttributs;
    const char* pszCorps;
    bool bPremier, bSecond;
    const char* pszEcrit;
};
const STCasCanonique gtabCanonique[] = {
    {"BooleenTrue", " flag=\"true\"", "", true, false, "flag=\"1\""},
    {"BooleenUn", " flag=\"1\"", "", false, false, "flag=\"1\""},
    {"Double", " ratio=\"3.5\"", "", true, false, "ratio=\"3.500000\""},
    {"Date", "", "<updated>2014-01-02T10:20:30Z</updated>", true, false,
     "<updated>2014-01-02T10:20:30.000Z</updated>"},
    {"RelationCasse", "", "<gd:email rel=\"HTTP://SCHEMAS.GOOGLE.COM/G/2005#WORK\"/>", true, false,
     "rel=\"http://schemas.google.com/g/2005#work\""},
    {"RelationInconnue", "", "<gd:email rel=\"urn:other#home\"/>", true, false, "rel=\"\""},
    {"Href", "", "<gContact:groupMembershipInfo href=\"urn:g\"/>", true, true, "href=\"urn:g\""},
    {"TexteEgal", "", "<id>x</id>", false, false, "<id>x</id>"},
};
class Canonique : public XmlEssai, public testing::WithParamInterface<STCasCanonique> {};
TEST_P(Canonique, ReecritLaFormeDuProgramme) {
    const STCasCanonique& st = GetParam();
    auto cl = Lit(st.pszCorps, st.pszAttributs);
    CXError clErreur;
    EXPECT_EQ(cl->vbApplyToXml(clErreur), st.bPremier);
    EXPECT_EQ(cl->vbApplyToXml(clErreur), st.bSecond);
    EXPECT_NE(Texte(cl->piGetNoeud()).find(st.pszEcrit), std::string::npos) << Texte(cl->piGetNoeud());
}
INSTANTIATE_TEST_SUITE_P(XmlObjet, Canonique, testing::ValuesIn(gtabCanonique),
                         [](const auto& st) { return std::string(st.param.pszNom); });

// A leaf whose value never took (a date made with no text) is temporary and not written, nor
// is an element with nothing in it; a reset leaf is set and writes its zero; so is a clone.
TEST_F(XmlEssai, FeuillesRenseignees) {
    auto cl = Lit("");
    CXmlObject* pclDate = Multi(cl)->pclGetCreatePropriete("updated", 0);
    CXmlObject* pclItem = Multi(cl)->pclGetCreatePropriete("item", 0);
    EXPECT_TRUE(pclDate->vbEstObjetTemporaire());
    EXPECT_TRUE(pclItem->vbEstObjetTemporaire());
    auto clClone = CRef<CXmlObject>::Adopt(pclDate->vpclClone(nullptr));
    EXPECT_FALSE(clClone->vbEstObjetTemporaire());
    CXError clErreur;
    EXPECT_EQ(Ecrit(cl.pGet(), clErreur), "<entry/>") << "temporary members are left out";
    pclDate->_vRAZ(nullptr, nullptr);
    EXPECT_FALSE(pclDate->vbEstObjetTemporaire());
    EXPECT_EQ(Ecrit(cl.pGet(), clErreur), "<entry><updated>0000-00-00T00:00:00.000Z</updated></entry>");
}

// A list is written when any child is: a child that fails is taken out again and its error
// stays, the others go.
TEST_F(XmlEssai, ListeEcriteSiUnEnfantLEst) {
    auto cl = Lit("");
    auto* pclBon = static_cast<CEmail*>(Multi(cl)->pclGetCreatePropriete("gd:email", 0)->vpclGetXmlObjectMulti());
    pclBon->SetAdresse(nullptr, nullptr, L"a@x");
    CEmail* pclMauvais = CEmail::s_pclCreeObjet(nullptr, nullptr);
    CTXmlEnumerateur<CEmail> clEmails(Multi(cl), "gd:email");
    clEmails.vAddRef();
    ASSERT_EQ(clEmails.veAjouteElementCollection(pclMauvais, nullptr, nullptr, nullptr), RESULTAT_OBJET_OK);
    pclMauvais->SetAdresse(nullptr, nullptr, L"b@x");
    pclMauvais->SetType(nullptr, nullptr, 17);
    CXError clErreur(&gstMyModuleInfo60);
    EXPECT_EQ(Ecrit(cl.pGet(), clErreur), "<entry><gd:email address=\"a@x\"/></entry>");
    EXPECT_EQ(clErreur.nGetUserErrorCode(), 600054u);
}

// A title: attributes are applied only when the text changed, and then the answer is theirs,
// so a new text alone is written yet reports no change.
TEST_F(XmlEssai, TitreSeulNeCompteCommeChangement) {
    auto cl = Lit("<title type=\"text\">Old</title>");
    CXmlObject* pclTitre = Multi(cl)->pclGetPropriete("title", 0);
    CXError clErreur;
    pclTitre->vbSet(L"New", clErreur);
    EXPECT_FALSE(cl->vbApplyToXml(clErreur));
    EXPECT_NE(Texte(cl->piGetNoeud()).find("<title type=\"text\">New</title>"), std::string::npos);
    FctFind::Texte clTitre("title", L" new ");
    EXPECT_TRUE(clTitre(cl.pGet())) << "a title is read as its text";
}

// The finders of links: the whole rel, case and surrounding spaces ignored.
TEST_F(XmlEssai, LiensParRel) {
    auto cl = Lit("<link rel=\"next-edit\" href=\"1\"/><link rel=\" EDIT \" href=\"2\"/><link rel=\"edit\" href=\"3\"/>");
    CXmlObjectListe* pcl = Multi(cl)->pclGetListe("link");
    FctFind::LinkEdit clEdit;
    EXPECT_EQ(Valeur(pcl->pclFind(&clEdit, 0)->pclGetPropriete("href", 0)), L"2");
    EXPECT_EQ(Valeur(pcl->pclFind(&clEdit, 1)->pclGetPropriete("href", 0)), L"3");
    EXPECT_EQ(pcl->pclFind(&clEdit, 2), nullptr);
    EXPECT_EQ(pcl->pclFind(nullptr, 0), nullptr);
}

// The collection over a list, and what each change queues on a saved entry.
TEST_F(XmlEssai, CollectionEtNotifications) {
    auto cl = Lit("<id>urn:1</id>");
    CTXmlEnumerateur<CEmail> clEmails(Multi(cl), "gd:email");
    clEmails.vAddRef();
    EXPECT_EQ(clEmails.vnGetNbElementCollection(nullptr, nullptr), 0);
    EXPECT_EQ(clEmails.veDeplaceElementCollection(0, 1, nullptr, nullptr), RESULTAT_OBJET_OK);
    int n = -1;
    ASSERT_EQ(clEmails.veAjouteElementCollectionVide(&n, nullptr, nullptr), RESULTAT_OBJET_OK);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(Nb(cl, "gd:email"), 1) << "the first addition makes the list in the owner";
    EXPECT_EQ(clEmails.veInsereElementCollectionVide(1, nullptr, nullptr), gkeIndiceInvalide);
    CUpdatesManager& clFile = Multi(cl)->clGetUpdates();
    ASSERT_EQ(clFile.nGetNbOperation(), 1);
    EXPECT_EQ(clFile.pclGetOperation(0)->eGetOperationId(), UPDATEOPS_MODIF);
    clFile.ClearOps();
    // Removing a nested element reports a change of the entry.
    EXPECT_EQ(clEmails.veSupprimeElementCollection(0, nullptr, nullptr), RESULTAT_OBJET_OK);
    EXPECT_TRUE(clFile.bHasOperations(UPDATEOPS_MODIF));
    EXPECT_FALSE(clFile.bHasOperations(UPDATEOPS_SUPPR));
}

// Additions by kind: a new root queues its own addition, a new nested entry its addition to
// the parent entry; a deletion voids what was pending.
TEST_F(XmlEssai, AjoutsEtSuppressionsEnFile) {
    auto clNouvelle = Lit("");
    Multi(clNouvelle)->vNotifieModif();
    Multi(clNouvelle)->vNotifieModif();
    ASSERT_EQ(Multi(clNouvelle)->clGetUpdates().nGetNbOperation(), 1);
    EXPECT_EQ(Multi(clNouvelle)->clGetUpdates().pclGetOperation(0)->eGetOperationId(), UPDATEOPS_AJOUT);

    auto cl = Lit("<id>urn:1</id><entry><id>urn:2</id></entry>");
    CXmlObjectMulti* pclSous = Multi(cl)->pclGetCreatePropriete("entry", 1)->vpclGetXmlObjectMulti();
    pclSous->vSetParent(Multi(cl));
    pclSous->vNotifieModif();
    IUpdateOperation* pi = Multi(cl)->clGetUpdates().pclGetOperation(UPDATEOPS_AJOUT, pclSous);
    ASSERT_NE(pi, nullptr) << "a new nested entry is an addition to its parent";
    EXPECT_TRUE(pi->vbRecursif());
    CXmlObjectMulti* pclSaved = Multi(cl)->pclGetPropriete("entry", 0)->vpclGetXmlObjectMulti();
    pclSaved->vNotifieModif();
    EXPECT_TRUE(pclSaved->clGetUpdates().bHasOperations(UPDATEOPS_MODIF));
    pclSaved->vNotifieSuppr();
    EXPECT_FALSE(pclSaved->clGetUpdates().bHasOperations());
    EXPECT_NE(Multi(cl)->clGetUpdates().pclGetOperation(UPDATEOPS_SUPPR, pclSaved), nullptr);
    Multi(cl)->clGetUpdates().ClearOps(); // the deletion holds the entry
}

// Hostile input loads faithfully: many siblings of one name, many attributes landing on one
// row (each looked up once, not once per attribute), a large text, bytes that are not UTF-8,
// unknown namespaces.
TEST_F(XmlEssai, EntreesHostiles) {
    std::string sLiens, sAttributs;
    for (int i = 0; i < 100000; ++i)
        sLiens += "<link/>";
    for (int i = 0; i < 20000; ++i)
        sAttributs += " p" + std::to_string(i) + ":flag=\"true\"";
    auto cl = Lit(sLiens + "<id>" + std::string(10 << 20, 'x') + "</id><title>\xFF\xFE</title>"
                  "<u:id xmlns:u=\"urn:unknown\">2</u:id>", sAttributs);
    EXPECT_EQ(Nb(cl, "link"), 100000);
    EXPECT_EQ(Nb(cl, "flag"), 20000);
    EXPECT_EQ(Nb(cl, "id"), 2);
    EXPECT_EQ(Valeur(Multi(cl)->pclGetPropriete("id", 0)).size(), 10u << 20);
    EXPECT_EQ(Nb(cl, "title"), 1);
    EXPECT_FALSE(CComposanteGGL::s_piGetXMLDoc(L"<entry><id></entry>")) << "not XML: refused by the service";
}

} // namespace
