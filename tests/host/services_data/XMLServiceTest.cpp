// The XML service over pugixml: walks by index, prefixes and namespaces, edits, the bytes
// written in each encoding and format, the life of nodes and documents, bad input.
#include "Any.h"
#include "DataServiceErrors.h"
#include "HostXMLService.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <ostream>
#include <memory>
#include <string>
#include <vector>

namespace {

const char gszAtom[] = "http://www.w3.org/2005/Atom";
const char gszGd[] = "http://schemas.google.com/g/2005";

const std::string gsFeed =
    std::string(R"(<?xml version="1.0" encoding="UTF-8"?>)") + R"(<feed xmlns=")" + gszAtom +
    R"(" xmlns:gd=")" + gszGd +
    R"("><!-- listed --><id>urn:1</id><entry gd:etag="W/1"><title type="text">A &amp; B</title>)"
    R"(<gd:email address="a@example.com" rel="home"/><content>x<![CDATA[<y>]]>z</content>)"
    R"(</entry><entry><title>Second</title></entry></feed>)";

class CSink final : public IContenuXMLSortie {
public:
    std::string sText;
    bool bAccept = true;
    int vbContenuXML(const char* pText, size_t nSize, CXError*) override {
        sText.assign(pText, nSize);
        return bAccept;
    }
};

CRef<CHostXMLService> s_clService() {
    return CRef<CHostXMLService>::Adopt(new CHostXMLService());
}

CRef<IDocumentXML> s_clParse(const std::string& sText, CXError* pclError = nullptr) {
    CAny clText;
    clText.SetStringA(sText.c_str(), static_cast<int>(sText.size()));
    CXError clError;
    return CRef<IDocumentXML>::Adopt(
        s_clService()->vpiAnalyse(clText, pclError ? pclError : &clError));
}

CRef<INoeudXML> s_clRoot(IDocumentXML& clDocument) {
    return CRef<INoeudXML>::Adopt(clDocument.piGetRacine(0));
}

CRef<INoeudXML> s_clChild(INoeudXML& clNode, int i) {
    return CRef<INoeudXML>::Adopt(clNode.piGetEnfant(i));
}

std::string s_Write(IDocumentXML& clDocument, eFORMATXML eFormat = FORMATXML_DOCUMENT) {
    CSink clSink;
    CXError clError;
    EXPECT_TRUE(clDocument.bEcrit(clSink, eFormat, &clError))
        << KVUtf8::VersUtf8(clError.pszGetUserMessage());
    return clSink.sText;
}

// A node's name as written: its namespace's prefix, if any, and its local name.
std::string s_Name(INoeudXML& clNode) {
    CRef<INamespaceXML> clNamespace = CRef<INamespaceXML>::Adopt(clNode.piGetNamespace());
    std::string sPrefix = clNamespace ? clNamespace->pszGetPrefixe() : "";
    return (sPrefix.empty() ? "" : sPrefix + ":") + clNode.pszGetNom();
}

// The tree as seen through the interface, by index only.
std::string s_Describe(INoeudXML& clNode) {
    switch (clNode.eGetGenre()) {
    case NOEUDXML_TEXTE:
        return std::string("'") + clNode.pszGetValeur() + "'";
    case NOEUDXML_COMMENTAIRE:
        return std::string("#") + clNode.pszGetValeur();
    case NOEUDXML_ELEMENT:
        break;
    default:
        return "?";
    }
    std::string s = s_Name(clNode);
    std::string sAttributes;
    for (int i = 0;; ++i) {
        CRef<INoeudXML> clAttribute = CRef<INoeudXML>::Adopt(clNode.piGetAttribut(i));
        if (!clAttribute)
            break;
        EXPECT_EQ(clAttribute->eGetGenre(), NOEUDXML_ATTRIBUT);
        EXPECT_EQ(clAttribute->piGetEnfant(0), nullptr);
        sAttributes += (i ? " " : "") + s_Name(*clAttribute) + "=" + clAttribute->pszGetValeur();
    }
    if (!sAttributes.empty())
        s += "{" + sAttributes + "}";
    std::string sChildren;
    for (int i = 0;; ++i) {
        CRef<INoeudXML> clChild = s_clChild(clNode, i);
        if (!clChild)
            break;
        sChildren += (i ? "," : "") + s_Describe(*clChild);
    }
    if (!sChildren.empty())
        s += "[" + sChildren + "]";
    return s;
}

TEST(XMLRead, WalkByIndexSeesEveryNodeWithItsPrefix) {
    CRef<IDocumentXML> clDocument = s_clParse(gsFeed);
    ASSERT_TRUE(clDocument);
    CRef<INoeudXML> clRoot = s_clRoot(*clDocument);
    ASSERT_TRUE(clRoot);
    EXPECT_EQ(s_Describe(*clRoot),
              std::string("feed{xmlns=") + gszAtom + " xmlns:gd=" + gszGd +
                  "}[# listed ,id['urn:1'],entry{gd:etag=W/1}[title{type=text}['A & B'],"
                  "gd:email{address=a@example.com rel=home},content['x','<y>','z']],"
                  "entry[title['Second']]]");
}

TEST(XMLRead, ValuesAndAttributesByName) {
    CRef<IDocumentXML> clDocument = s_clParse(gsFeed);
    CRef<INoeudXML> clRoot = s_clRoot(*clDocument);
    CRef<INoeudXML> clEntry = s_clChild(*clRoot, 2);
    EXPECT_STREQ(clEntry->pszGetAttribut("gd:etag"), "W/1");
    EXPECT_STREQ(clEntry->pszGetAttribut("etag"), "") << "names carry their prefix";
    EXPECT_STREQ(clEntry->pszGetAttribut(nullptr), "");
    CRef<INoeudXML> clContent = CRef<INoeudXML>::Adopt(clEntry->piGetEnfantParNom("content"));
    ASSERT_TRUE(clContent);
    EXPECT_STREQ(clContent->pszGetValeur(), "x<y>z") << "the pieces of text joined";
    CRef<INoeudXML> clEmail = CRef<INoeudXML>::Adopt(clEntry->piGetEnfantParNom("email"));
    ASSERT_TRUE(clEmail);
    EXPECT_STREQ(clEmail->pszGetNom(), "email");
    EXPECT_STREQ(clEmail->pszGetValeur(), "");
    // Siblings by local name, or any element.
    CRef<INoeudXML> clId = CRef<INoeudXML>::Adopt(clRoot->piGetEnfantParNom("id"));
    CRef<INoeudXML> clNext = CRef<INoeudXML>::Adopt(clId->piGetSuivant(nullptr));
    ASSERT_TRUE(clNext);
    EXPECT_STREQ(clNext->pszGetAttribut("gd:etag"), "W/1");
    CRef<INoeudXML> clSecond = CRef<INoeudXML>::Adopt(clNext->piGetSuivant("entry"));
    ASSERT_TRUE(clSecond);
    EXPECT_STREQ(CRef<INoeudXML>::Adopt(clSecond->piGetEnfant(0))->pszGetValeur(), "Second");
    EXPECT_EQ(clSecond->piGetSuivant("entry"), nullptr);
    EXPECT_EQ(clRoot->piGetEnfantParNom("missing"), nullptr);
}

struct STNamespaceCase {
    const char* pszName;
    const char* pszXML;
    std::vector<int> tabPath; // child indices from the root; -1 - i: attribute i of the last
    const char* pszPrefix;    // null: no namespace expected
    const char* pszURI;
};
// Cases go by their name in test listings.
void PrintTo(const STNamespaceCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const STNamespaceCase gtabNamespaces[] = {
    {"DefaultOnRoot", R"(<f xmlns="urn:a"/>)", {}, "", "urn:a"},
    {"PrefixedChild", R"(<f xmlns:gd="urn:g"><gd:e/></f>)", {0}, "gd", "urn:g"},
    {"NearestDeclarationWins",
     R"(<f xmlns:p="urn:1"><p:a xmlns:p="urn:2"><p:b/></p:a></f>)",
     {0, 0},
     "p",
     "urn:2"},
    {"UndeclaredPrefixKept", R"(<foo:bar/>)", {}, "foo", ""},
    {"NoDefault", R"(<f/>)", {}, nullptr, nullptr},
    {"DefaultUndone", R"(<f xmlns="urn:a"><g xmlns=""><h/></g></f>)", {0, 0}, nullptr, nullptr},
    {"PlainAttributeHasNone", R"(<f xmlns="urn:a" k="v"/>)", {-2}, nullptr, nullptr},
    {"PrefixedAttribute", R"(<f xmlns:gd="urn:g" gd:k="v"/>)", {-2}, "gd", "urn:g"},
    {"DeclarationAttribute",
     R"(<f xmlns:gd="urn:g"/>)",
     {-1},
     "xmlns",
     "http://www.w3.org/2000/xmlns/"},
    {"XmlPrefix", R"(<f xml:lang="fr"/>)", {-1}, "xml", "http://www.w3.org/XML/1998/namespace"},
};

class XMLNamespace : public testing::TestWithParam<STNamespaceCase> {};

TEST_P(XMLNamespace, PrefixAndURI) {
    const STNamespaceCase& stCase = GetParam();
    CRef<IDocumentXML> clDocument = s_clParse(stCase.pszXML);
    ASSERT_TRUE(clDocument);
    CRef<INoeudXML> clNode = s_clRoot(*clDocument);
    for (int i : stCase.tabPath) {
        ASSERT_TRUE(clNode);
        clNode =
            CRef<INoeudXML>::Adopt(i >= 0 ? clNode->piGetEnfant(i) : clNode->piGetAttribut(-1 - i));
    }
    ASSERT_TRUE(clNode);
    CRef<INamespaceXML> clNamespace = CRef<INamespaceXML>::Adopt(clNode->piGetNamespace());
    if (!stCase.pszPrefix) {
        EXPECT_FALSE(clNamespace);
        return;
    }
    ASSERT_TRUE(clNamespace);
    EXPECT_STREQ(clNamespace->pszGetPrefixe(), stCase.pszPrefix);
    EXPECT_STREQ(clNamespace->pszGetURI(), stCase.pszURI);
}

INSTANTIATE_TEST_SUITE_P(Names, XMLNamespace, testing::ValuesIn(gtabNamespaces),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(XMLIndex, RememberedPositionsFollowEdits) {
    CRef<IDocumentXML> clDocument = s_clParse(R"(<r a="1" b="2" c="3"><x/><y/><z/></r>)");
    CRef<INoeudXML> clRoot = s_clRoot(*clDocument);
    EXPECT_STREQ(s_clChild(*clRoot, 2)->pszGetNom(), "z");
    EXPECT_STREQ(s_clChild(*clRoot, 0)->pszGetNom(), "x") << "backwards from the last position";
    EXPECT_STREQ(s_clChild(*clRoot, 1)->pszGetNom(), "y");
    // Take the first child out: positions shift, the remembered one must not be believed.
    s_clChild(*clRoot, 0)->SupprimeNoeud();
    EXPECT_STREQ(s_clChild(*clRoot, 1)->pszGetNom(), "z");
    EXPECT_FALSE(s_clChild(*clRoot, 2));
    CRef<INoeudXML> clAdded;
    {
        INoeudXML* piAdded = nullptr;
        ASSERT_TRUE(clRoot->bAjouteEnfant("w", &piAdded));
        clAdded = CRef<INoeudXML>::Adopt(piAdded);
    }
    EXPECT_STREQ(s_clChild(*clRoot, 2)->pszGetNom(), "w");

    CRef<INoeudXML> clB = CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(1));
    EXPECT_STREQ(clB->pszGetNom(), "b");
    CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(0))->SupprimeNoeud();
    EXPECT_STREQ(CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(1))->pszGetNom(), "c");
    EXPECT_FALSE(CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(2)));
    EXPECT_STREQ(clB->pszGetValeur(), "2") << "another attribute's removal leaves this one";
    EXPECT_EQ(clRoot->piGetEnfant(-1), nullptr);
    EXPECT_EQ(clRoot->piGetAttribut(-1), nullptr);
}

TEST(XMLEdit, BuildEditAndWriteExactBytes) {
    CXError clError;
    CRef<IDocumentXML> clDocument =
        CRef<IDocumentXML>::Adopt(s_clService()->vpiCreeDocument(&clError));
    ASSERT_TRUE(clDocument);
    INoeudXML* piRoot = nullptr;
    ASSERT_TRUE(clDocument->bCreeRacine("feed", &piRoot));
    CRef<INoeudXML> clRoot = CRef<INoeudXML>::Adopt(piRoot);
    ASSERT_TRUE(clRoot->bSetAttributUTF8("xmlns", gszAtom));
    ASSERT_TRUE(clRoot->bSetAttributUTF8("xmlns:gd", gszGd));
    INoeudXML* pi = nullptr;
    ASSERT_TRUE(clRoot->bAjouteEnfant("entry", &pi));
    CRef<INoeudXML> clEntry = CRef<INoeudXML>::Adopt(pi);
    ASSERT_TRUE(clEntry->bAjouteEnfant("title", &pi));
    CRef<INoeudXML> clTitle = CRef<INoeudXML>::Adopt(pi);
    ASSERT_TRUE(clTitle->bSetTexte(L"Tom & \"Jerry\" <3"));
    ASSERT_TRUE(clEntry->bAjouteEnfant("gd:email", &pi));
    CRef<INoeudXML> clEmail = CRef<INoeudXML>::Adopt(pi);
    ASSERT_TRUE(clEmail->bSetValeurAttribut("address", L"\u00e9@example.com"));
    ASSERT_TRUE(clEmail->bSetAttributUTF8("rel", "work"));
    ASSERT_TRUE(clEmail->bSetAttributUTF8("rel", "a\"b<c&d")) << "an existing one replaced";
    ASSERT_TRUE(clEntry->bAjouteEnfant("gone", &pi));
    CRef<INoeudXML>::Adopt(pi)->SupprimeNoeud();
    ASSERT_TRUE(clEntry->bAjouteEnfant("id", nullptr));
    const std::string sRoot =
        std::string(R"(<feed xmlns=")") + gszAtom + R"(" xmlns:gd=")" + gszGd +
        R"("><entry><title>Tom &amp; "Jerry" &lt;3</title>)"
        "<gd:email address=\"\xC3\xA9@example.com\" rel=\"a&quot;b&lt;c&amp;d\"/><id/>"
        "</entry></feed>";
    EXPECT_EQ(s_Write(*clDocument), R"(<?xml version="1.0" encoding="UTF-8"?>)" + sRoot);
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION), sRoot);
    // And it reads back as written.
    CRef<IDocumentXML> clAgain = s_clParse(s_Write(*clDocument));
    ASSERT_TRUE(clAgain);
    EXPECT_EQ(s_Write(*clAgain), s_Write(*clDocument));
}

TEST(XMLEdit, SetTextReplacesChildrenThatStayValid) {
    CRef<IDocumentXML> clDocument = s_clParse("<r><a>1</a><b k='v'>2</b>tail</r>");
    CRef<INoeudXML> clRoot = s_clRoot(*clDocument);
    CRef<INoeudXML> clB = s_clChild(*clRoot, 1);
    CRef<INoeudXML> clKey = CRef<INoeudXML>::Adopt(clB->piGetAttribut(0));
    ASSERT_TRUE(clRoot->bSetTexte(L"new"));
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION), "<r>new</r>");
    EXPECT_STREQ(clRoot->pszGetValeur(), "new");
    // The former child still reads, edits, and has no siblings.
    EXPECT_STREQ(clB->pszGetNom(), "b");
    EXPECT_STREQ(clB->pszGetValeur(), "2");
    EXPECT_STREQ(clKey->pszGetValeur(), "v");
    EXPECT_EQ(clB->piGetSuivant(nullptr), nullptr);
    EXPECT_TRUE(clB->bSetAttributUTF8("k", "w"));
    EXPECT_STREQ(clKey->pszGetValeur(), "w");
    // Text and attribute nodes take their new value in place.
    CRef<INoeudXML> clText = s_clChild(*clRoot, 0);
    ASSERT_TRUE(clText->bSetTexte(L"other"));
    ASSERT_FALSE(CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(0)));
    ASSERT_TRUE(clRoot->bSetAttributUTF8("x", "1"));
    ASSERT_TRUE(CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(0))->bSetTexte(L"2"));
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION), R"(<r x="2">other</r>)");
    // An empty text leaves no child.
    ASSERT_TRUE(clRoot->bSetTexte(L""));
    EXPECT_EQ(clRoot->piGetEnfant(0), nullptr);
    // A removed attribute keeps what it was, detached.
    CRef<INoeudXML> clX = CRef<INoeudXML>::Adopt(clRoot->piGetAttribut(0));
    clX->SupprimeNoeud();
    EXPECT_STREQ(clX->pszGetNom(), "x");
    EXPECT_STREQ(clX->pszGetValeur(), "2");
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION), "<r/>");
}

TEST(XMLEdit, InvalidNamesAreRefused) {
    CRef<IDocumentXML> clDocument = s_clParse("<r/>");
    CRef<INoeudXML> clRoot = s_clRoot(*clDocument);
    for (const char* pszName : {"a b", "1a", "", "a:", ":a", "a:b:c", "a<b", "-a", "a\"b"}) {
        INoeudXML* pi = reinterpret_cast<INoeudXML*>(1);
        EXPECT_FALSE(clRoot->bAjouteEnfant(pszName, &pi)) << pszName;
        EXPECT_EQ(pi, nullptr) << pszName;
        EXPECT_FALSE(clRoot->bSetAttributUTF8(pszName, "v")) << pszName;
    }
    EXPECT_FALSE(clRoot->bAjouteEnfant(nullptr, nullptr));
    for (const char* pszName : {"gd:email", "_x", "\xC3\xA9t\xC3\xA9", "a.b-c"})
        EXPECT_TRUE(clRoot->bAjouteEnfant(pszName, nullptr)) << pszName;
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION),
              "<r><gd:email/><_x/><\xC3\xA9t\xC3\xA9/><a.b-c/></r>");
}

TEST(XMLLife, NodesKeepTheirDocument) {
    CRef<INoeudXML> clEntry;
    {
        CRef<IDocumentXML> clDocument = s_clParse(gsFeed);
        clEntry = s_clChild(*s_clRoot(*clDocument), 2);
    }
    ASSERT_TRUE(clEntry);
    EXPECT_STREQ(clEntry->pszGetNom(), "entry");
    EXPECT_TRUE(clEntry->bAjouteEnfant("more", nullptr));
    CRef<INoeudXML> clTitle = s_clChild(*clEntry, 0);
    EXPECT_STREQ(clTitle->pszGetValeur(), "A & B");
}

TEST(XMLDocumentTop, RootsImportAndTopLevelNodes) {
    CRef<IDocumentXML> clSource = s_clParse(gsFeed);
    CRef<INoeudXML> clEntry = s_clChild(*s_clRoot(*clSource), 2);
    CXError clError;
    CRef<IDocumentXML> clTarget =
        CRef<IDocumentXML>::Adopt(s_clService()->vpiCreeDocument(&clError));
    EXPECT_FALSE(clTarget->bEcrit(*std::make_unique<CSink>(), FORMATXML_DOCUMENT, &clError));
    EXPECT_EQ(clError.nGetUserErrorCode(), DATASERVICE_XML_WRITE);
    ASSERT_TRUE(clTarget->bImporteRacine(clEntry.pGet(), &clError));
    // The copy brings the declarations its prefixes need; the source is unchanged.
    EXPECT_EQ(s_Write(*clTarget, FORMATXML_SANS_DECLARATION),
              std::string(R"(<entry gd:etag="W/1" xmlns=")") + gszAtom + R"(" xmlns:gd=")" + gszGd +
                  R"("><title type="text">A &amp; B</title><gd:email address="a@example.com" )"
                  R"(rel="home"/><content>x<![CDATA[<y>]]>z</content></entry>)");
    EXPECT_EQ(s_Write(*clSource), s_Write(*s_clParse(gsFeed)));
    // A second import replaces the root; the former one lives on for its holders.
    CRef<INoeudXML> clFormer = s_clRoot(*clTarget);
    ASSERT_TRUE(clTarget->bImporteRacine(s_clChild(*s_clRoot(*clSource), 3).pGet(), &clError));
    EXPECT_STREQ(clFormer->pszGetAttribut("gd:etag"), "W/1");
    EXPECT_EQ(s_Write(*clTarget, FORMATXML_SANS_DECLARATION),
              std::string(R"(<entry xmlns=")") + gszAtom + R"(" xmlns:gd=")" + gszGd +
                  R"("><title>Second</title></entry>)");
    // Nothing, an attribute or a text is no root.
    CRef<INoeudXML> clAttribute = CRef<INoeudXML>::Adopt(clEntry->piGetAttribut(0));
    for (INoeudXML* pi : {static_cast<INoeudXML*>(nullptr), clAttribute.pGet()}) {
        CXError clRefused;
        EXPECT_FALSE(clTarget->bImporteRacine(pi, &clRefused));
        EXPECT_EQ(clRefused.nGetUserErrorCode(), DATASERVICE_XML_ARGUMENT);
    }
    // Top-level nodes: 0 the root, then the others in order.
    CRef<IDocumentXML> clTop = s_clParse("<?pi one?><r/><!--after-->");
    ASSERT_TRUE(clTop);
    EXPECT_STREQ(CRef<INoeudXML>::Adopt(clTop->piGetRacine(0))->pszGetNom(), "r");
    EXPECT_EQ(CRef<INoeudXML>::Adopt(clTop->piGetRacine(1))->eGetGenre(), NOEUDXML_INSTRUCTION);
    EXPECT_STREQ(CRef<INoeudXML>::Adopt(clTop->piGetRacine(2))->pszGetValeur(), "after");
    EXPECT_EQ(clTop->piGetRacine(3), nullptr);
    EXPECT_EQ(s_Write(*clTop),
              R"(<?xml version="1.0" encoding="UTF-8"?><?pi one?><r/><!--after-->)");
    // A new root replaces the old one in its place.
    INoeudXML* piNew = nullptr;
    ASSERT_TRUE(clTop->bCreeRacine("s", &piNew));
    CRef<INoeudXML>::Adopt(piNew)->bSetTexte(L"t");
    EXPECT_EQ(s_Write(*clTop),
              R"(<?xml version="1.0" encoding="UTF-8"?><?pi one?><s>t</s><!--after-->)");
    // What was taken out is nobody's sibling, nor is where it went.
    EXPECT_EQ(s_clRoot(*clTop)->piGetSuivant(nullptr), nullptr);
    s_clRoot(*clTop)->SupprimeNoeud();
    EXPECT_EQ(clTop->piGetRacine(0), nullptr);
}

struct STEncodingCase {
    const wchar_t* pszEncoding;
    std::string sExpected; // the bytes written
};
void PrintTo(const STEncodingCase& stCase, std::ostream* pOut) {
    *pOut << KVUtf8::VersUtf8(stCase.pszEncoding);
}

std::string s_Utf16LE(const std::string& sAscii) {
    std::string s;
    for (char c : sAscii)
        s += std::string{c, '\0'};
    return s;
}

const STEncodingCase gtabEncodings[] = {
    {L"UTF-8", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9\xE2\x82\xAC</a>"},
    {L"ISO-8859-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9&#8364;</a>"},
    {L"utf-16", "\xFF\xFE" + s_Utf16LE("<?xml version=\"1.0\" encoding=\"utf-16\"?><a>") +
                    std::string("\xE9\x00\xAC\x20", 4) + s_Utf16LE("</a>")},
    {L"UTF-16BE", std::string("\xFE\xFF\x00<", 4)},
    {L"UTF-32", std::string("\xFF\xFE\x00\x00<\x00\x00\x00", 8)},
};

class XMLEncoding : public testing::TestWithParam<STEncodingCase> {};

TEST_P(XMLEncoding, WrittenBytesReadBack) {
    const STEncodingCase& stCase = GetParam();
    CRef<IDocumentXML> clDocument = s_clParse("<a>\xC3\xA9\xE2\x82\xAC</a>");
    clDocument->SetEncodage(stCase.pszEncoding);
    std::string sWritten = s_Write(*clDocument);
    EXPECT_EQ(sWritten.substr(0, stCase.sExpected.size()), stCase.sExpected);
    // Bytes that tell their encoding come back to the same text.
    CAny clBytes;
    ASSERT_EQ(clBytes.SetBinary(sWritten.data(), sWritten.size()), 0);
    CXError clError;
    CRef<IDocumentXML> clAgain =
        CRef<IDocumentXML>::Adopt(s_clService()->vpiAnalyse(clBytes, &clError));
    ASSERT_TRUE(clAgain) << KVUtf8::VersUtf8(clError.pszGetUserMessage());
    EXPECT_STREQ(s_clRoot(*clAgain)->pszGetValeur(), "\xC3\xA9\xE2\x82\xAC");
}

INSTANTIATE_TEST_SUITE_P(Names, XMLEncoding, testing::ValuesIn(gtabEncodings));

TEST(XMLEncodings, Latin1ReferencesWhereItMayAndRefusesElsewhere) {
    CRef<IDocumentXML> clDocument =
        s_clParse("<a k=\"\xE2\x82\xAC\">\xE2\x82\xAC<!--\xC3\xA9--></a>");
    clDocument->SetEncodage(L"ISO-8859-1");
    EXPECT_EQ(s_Write(*clDocument, FORMATXML_SANS_DECLARATION),
              "<a k=\"&#8364;\">&#8364;<!--\xE9--></a>");
    for (const char* pszXML : {"<\xE2\x82\xAC/>", "<a><!--\xE2\x82\xAC--></a>",
                               "<a><![CDATA[\xE2\x82\xAC]]></a>", "<a><?p \xE2\x82\xAC?></a>"}) {
        CRef<IDocumentXML> clRefused = s_clParse(pszXML);
        ASSERT_TRUE(clRefused) << pszXML;
        clRefused->SetEncodage(L"latin1");
        CSink clSink;
        CXError clError;
        EXPECT_FALSE(clRefused->bEcrit(clSink, FORMATXML_DOCUMENT, &clError)) << pszXML;
        EXPECT_EQ(clError.nGetUserErrorCode(), DATASERVICE_XML_ENCODING) << pszXML;
        EXPECT_NE(std::wstring(clError.pszGetUserMessage()).find(L"U+20AC"), std::wstring::npos)
            << pszXML;
    }
}

TEST(XMLEncodings, UnknownEncodingAndRefusingSink) {
    CRef<IDocumentXML> clDocument = s_clParse("<a/>");
    clDocument->SetEncodage(L"EBCDIC");
    CSink clSink;
    CXError clError;
    EXPECT_FALSE(clDocument->bEcrit(clSink, FORMATXML_DOCUMENT, &clError));
    EXPECT_EQ(clError.nGetUserErrorCode(), DATASERVICE_XML_ENCODING);
    EXPECT_NE(std::wstring(clError.pszGetUserMessage()).find(L"EBCDIC"), std::wstring::npos);
    clDocument->SetEncodage(nullptr);
    clSink.bAccept = false;
    CXError clRefused;
    EXPECT_FALSE(clDocument->bEcrit(clSink, FORMATXML_DOCUMENT, &clRefused));
    EXPECT_EQ(clRefused.nGetUserErrorCode(), DATASERVICE_XML_WRITE);
    EXPECT_FALSE(clDocument->bEcrit(clSink, static_cast<eFORMATXML>(7), &clRefused));
}

TEST(XMLParse, WideNarrowAndBytes) {
    CXError clError;
    CAny clWide;
    ASSERT_EQ(clWide.__nSetString(L"<a b=\"\u00e9\">\U0001F600</a>"), 0);
    CRef<IDocumentXML> clDocument =
        CRef<IDocumentXML>::Adopt(s_clService()->vpiAnalyse(clWide, &clError));
    ASSERT_TRUE(clDocument);
    EXPECT_STREQ(s_clRoot(*clDocument)->pszGetValeur(), "\xF0\x9F\x98\x80");
    EXPECT_STREQ(s_clRoot(*clDocument)->pszGetAttribut("b"), "\xC3\xA9");
    // Bytes in Latin-1, as their declaration says.
    const std::string sLatin1 = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>";
    CAny clBytes;
    ASSERT_EQ(clBytes.SetBinary(sLatin1.data(), sLatin1.size()), 0);
    clDocument = CRef<IDocumentXML>::Adopt(s_clService()->vpiAnalyse(clBytes, &clError));
    ASSERT_TRUE(clDocument);
    EXPECT_STREQ(s_clRoot(*clDocument)->pszGetValeur(), "\xC3\xA9");
}

struct STBadXML {
    const char* pszName;
    std::string sText;
};
// Cases go by their name in test listings.
void PrintTo(const STBadXML& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const STBadXML gtabBadXML[] = {
    {"Empty", ""},
    {"DeclarationOnly", "<?xml version=\"1.0\"?>"},
    {"TextOnly", "just text"},
    {"Unclosed", "<a>"},
    {"Mismatch", "<a></b>"},
    {"Crossed", "<a><b></a></b>"},
    {"OpenTag", "<a"},
    {"UnquotedAttribute", "<a x=1/>"},
    {"BadComment", "<a><!-- x </a>"},
    {"Truncated", gsFeed.substr(0, gsFeed.size() / 2)},
    {"OnlyAStart", "<"},
};

class XMLBadInput : public testing::TestWithParam<STBadXML> {};

TEST_P(XMLBadInput, NullWithDescriptionAndPlace) {
    CXError clError;
    CRef<IDocumentXML> clDocument = s_clParse(GetParam().sText, &clError);
    EXPECT_FALSE(clDocument);
    EXPECT_EQ(clError.nGetErrorLevel(), ELEVEL_ERREUR);
    EXPECT_EQ(clError.nGetUserErrorCode(), DATASERVICE_XML_SYNTAX);
    std::wstring sMessage = clError.pszGetUserMessage();
    EXPECT_EQ(sMessage.rfind(L"The text is not well-formed XML: ", 0), 0u)
        << KVUtf8::VersUtf8(sMessage);
    EXPECT_NE(sMessage.find(L" at offset "), std::wstring::npos);
    EXPECT_NE(sMessage.find(L"(line 1, column "), std::wstring::npos);
}

INSTANTIATE_TEST_SUITE_P(Texts, XMLBadInput, testing::ValuesIn(gtabBadXML),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(XMLBadInputs, PlaceOnALaterLineAndSizeLimit) {
    CXError clError;
    EXPECT_FALSE(s_clParse("<a>\n<b>\n  <c></b>\n</a>", &clError));
    EXPECT_NE(std::wstring(clError.pszGetUserMessage()).find(L"(line 3, column "),
              std::wstring::npos)
        << KVUtf8::VersUtf8(clError.pszGetUserMessage());
    CRef<CHostXMLService> clSmall = CRef<CHostXMLService>::Adopt(new CHostXMLService(16));
    CAny clText;
    clText.SetStringA("<a>seventeen b</a>");
    CXError clTooLarge;
    EXPECT_EQ(clSmall->vpiAnalyse(clText, &clTooLarge), nullptr);
    EXPECT_EQ(clTooLarge.nGetUserErrorCode(), DATASERVICE_XML_TOO_LARGE);
    EXPECT_EQ(clSmall->vpiAnalyse(clText, nullptr), nullptr);
}

} // namespace
