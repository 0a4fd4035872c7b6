// The JSON service over simdjson: the walk's order under the three answers, nested walks,
// handles and values a visitor keeps, the values of each type, access by index, bad input.
#include "Any.h"
#include "DataServiceErrors.h"
#include "HostJSONService.h"
#include "JSONWalk.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"
#include "XYString.h"

#include <gtest/gtest.h>

#include <ostream>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

// A value as "type:text", the way the walk's tables below write it.
std::string s_Describe(const CAny& clValue) {
    char sz[64];
    switch (clValue.nGetType()) {
    case 0:
        return "0:null";
    case 1: {
        bool b = false;
        (void)clValue.nGetBool(&b);
        return b ? "1:true" : "1:false";
    }
    case 9: {
        long n = 0;
        (void)clValue.nGetINT_64(&n);
        return "9:" + std::to_string(n);
    }
    case 12: {
        double r = 0;
        (void)clValue.nGetREAL(&r);
        std::snprintf(sz, sizeof sz, "12:%.17g", r);
        return sz;
    }
    case 16: {
        CXYString<wchar_t> s;
        (void)clValue.__nFillString(s);
        return "16:" + KVUtf8::VersUtf8(s.sv());
    }
    default:
        return "type " + std::to_string(clValue.nGetType());
    }
}

// Writes down what it is shown and answers by rule: the answer for an event, VISITE_DESCEND
// for any event the rule does not name.
class CRecorder : public IVisiteurJSON {
public:
    std::vector<std::string> tabEvents;
    std::map<std::string, eVISITEJSON> mapAnswers;

    std::string sEvents() const {
        std::string s;
        for (const auto& e : tabEvents)
            s += (s.empty() ? "" : "|") + e;
        return s;
    }

    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        return eNote("value " + s_Describe(clValue));
    }
    eVISITEJSON veVisiteObjet(IObjetJSON& clObject) override {
        return eNote("object " + std::to_string(clObject.vnGetNbMembre()));
    }
    eVISITEJSON veVisiteMembre(const CNomStandard& clName, IElementJSON&) override {
        EXPECT_EQ(clName.pszGet()[clName.nLongueur()], L'\0') << "names end with a zero";
        return eNote("member " + KVUtf8::VersUtf8(clName.sv()));
    }
    eVISITEJSON veVisiteTableau(ITableauJSON& clArray) override {
        return eNote("array " + std::to_string(clArray.vnGetNbElement()));
    }
    eVISITEJSON veVisiteElement(IElementJSON&) override { return eNote("element"); }

protected:
    eVISITEJSON eNote(const std::string& sEvent) {
        tabEvents.push_back(sEvent);
        auto it = mapAnswers.find(sEvent);
        return it == mapAnswers.end() ? VISITE_DESCEND : it->second;
    }
};

CRef<IElementJSON> s_clParse(const std::string& sText, CXError* pclError = nullptr) {
    CRef<CHostJSONService> clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    CXError clError;
    return CRef<IElementJSON>::Adopt(
        clService->vpiAnalyse(sText.data(), sText.size(), pclError ? pclError : &clError));
}

struct STWalkCase {
    const char* pszName;
    const char* pszJSON;
    std::map<std::string, eVISITEJSON> mapAnswers;
    const char* pszExpected;
};
// Cases go by their name in test listings.
void PrintTo(const STWalkCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const char gszSample[] = R"({"a":1,"b":[true,null,"x"],"c":{"d":2.5}})";

const STWalkCase gtabWalk[] = {
    {"DescendEverywhere",
     gszSample,
     {},
     "object 3|member a|value 9:1|member b|array 3|element|value 1:true|element|value 0:null|"
     "element|value 16:x|member c|object 1|member d|value 12:2.5"},
    {"StopAtMember",
     gszSample,
     {{"member b", VISITE_ARRET}},
     "object 3|member a|value 9:1|member b"},
    {"SkipMember",
     gszSample,
     {{"member b", VISITE_SUIVANT}},
     "object 3|member a|value 9:1|member b|member c|object 1|member d|value 12:2.5"},
    {"SkipArray",
     gszSample,
     {{"array 3", VISITE_SUIVANT}},
     "object 3|member a|value 9:1|member b|array 3|member c|object 1|member d|value 12:2.5"},
    {"StopDeepInside",
     gszSample,
     {{"value 0:null", VISITE_ARRET}},
     "object 3|member a|value 9:1|member b|array 3|element|value 1:true|element|value 0:null"},
    {"RootObjectNext", gszSample, {{"object 3", VISITE_SUIVANT}}, "object 3"},
    {"SkipElements", "[1,[2],3]", {{"element", VISITE_SUIVANT}}, "array 3|element|element|element"},
    {"NestedArrays",
     "[[],[[5]],{}]",
     {},
     "array 3|element|array 0|element|array 1|element|array 1|element|value 9:5|element|"
     "object 0"},
    {"ScalarRoot", R"("\u00e9\ud83d\ude00\n")", {}, "value 16:\xC3\xA9\xF0\x9F\x98\x80\n"},
    {"EmptyObject", "{}", {}, "object 0"},
    {"DuplicateMembers",
     R"({"k":1,"k":2})",
     {{"value 9:1", VISITE_ARRET}},
     "object 2|member k|value 9:1"},
};

class JSONWalk : public testing::TestWithParam<STWalkCase> {};

TEST_P(JSONWalk, VisitsInDocumentOrder) {
    const STWalkCase& stCase = GetParam();
    CRef<IElementJSON> clRoot = s_clParse(stCase.pszJSON);
    ASSERT_TRUE(clRoot);
    CRecorder clRecorder;
    clRecorder.mapAnswers = stCase.mapAnswers;
    clRoot->vAccepte(clRecorder);
    EXPECT_EQ(clRecorder.sEvents(), stCase.pszExpected);
}

INSTANTIATE_TEST_SUITE_P(Answers, JSONWalk, testing::ValuesIn(gtabWalk),
                         [](const auto& info) { return std::string(info.param.pszName); });

// The component's way: an object shown to the visitor is walked by the visitor itself, which
// then answers "next". A stop inside that walk ends it alone.
class CSelfWalker final : public CRecorder {
public:
    eVISITEJSON veVisiteObjet(IObjetJSON& clObject) override {
        eNote("object " + std::to_string(clObject.vnGetNbMembre()));
        clObject.vAccepte(*this);
        return VISITE_SUIVANT;
    }
};

TEST(JSONWalkNested, StopEndsOnlyTheWalkItHappenedIn) {
    CRef<IElementJSON> clRoot = s_clParse(R"({"o":{"x":1,"y":2},"z":3})");
    ASSERT_TRUE(clRoot);
    CSelfWalker clWalker;
    clWalker.mapAnswers = {{"member x", VISITE_ARRET}};
    clRoot->vAccepte(clWalker);
    EXPECT_EQ(clWalker.sEvents(), "object 2|member o|object 2|member x|member z|value 9:3");
}

// Handles shown during a walk and kept by the visitor stay on their node, and keep the
// document, after the walk has moved on and the root is gone.
class CKeeper final : public CRecorder {
public:
    std::vector<CRef<IElementJSON>> tabKept;
    std::vector<CAny> tabValues;
    eVISITEJSON veVisiteMembre(const CNomStandard& clName, IElementJSON& clValue) override {
        tabKept.push_back(CRef<IElementJSON>::Retain(&clValue));
        return CRecorder::veVisiteMembre(clName, clValue);
    }
    eVISITEJSON veVisiteElement(IElementJSON& clElement) override {
        tabKept.push_back(CRef<IElementJSON>::Retain(&clElement));
        return CRecorder::veVisiteElement(clElement);
    }
    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        tabValues.push_back(clValue);
        return CRecorder::veVisiteValeur(clValue);
    }
};

TEST(JSONWalkNested, KeptHandlesAndValuesStayTrue) {
    CKeeper clKeeper;
    {
        CRef<IElementJSON> clRoot = s_clParse(R"({"a":"one","b":["two","three"],"c":4})");
        ASSERT_TRUE(clRoot);
        clRoot->vAccepte(clKeeper);
    }
    std::vector<std::string> tabKept;
    for (auto& clElement : clKeeper.tabKept) {
        CAny clValue;
        if (clElement->vbGetValeur(clValue))
            tabKept.push_back(s_Describe(clValue));
        else
            tabKept.push_back(clElement->veGetGenre() == GENRE_JSON_TABLEAU ? "array" : "?");
    }
    EXPECT_EQ(tabKept, (std::vector<std::string>{"16:one", "array", "16:two", "16:three", "9:4"}));
    std::vector<std::string> tabValues;
    for (auto& clValue : clKeeper.tabValues)
        tabValues.push_back(s_Describe(clValue));
    EXPECT_EQ(tabValues, (std::vector<std::string>{"16:one", "16:two", "16:three", "9:4"}));
    // The kept array still answers by index.
    ITableauJSON* piArray = clKeeper.tabKept[1]->vpiGetITableauJSON();
    ASSERT_NE(piArray, nullptr);
    CRef<IElementJSON> clSecond = CRef<IElementJSON>::Adopt(piArray->vpiGetElement(1));
    CAny clValue;
    ASSERT_TRUE(clSecond && clSecond->vbGetValeur(clValue));
    EXPECT_EQ(s_Describe(clValue), "16:three");
}

TEST(JSONValues, EachTypeAsTheVisitorReceivesIt) {
    CRef<IElementJSON> clRoot =
        s_clParse(R"({"s":"a\"b\\\u00e9\ud83d\ude00","e":"","i":-42,"max":9223372036854775807,)"
                  R"("u":18446744073709551615,"r":-1.5e3,"t":true,"f":false,"n":null})");
    ASSERT_TRUE(clRoot);
    CRecorder clRecorder;
    clRoot->vAccepte(clRecorder);
    EXPECT_EQ(clRecorder.sEvents(),
              "object 9|member s|value 16:a\"b\\\xC3\xA9\xF0\x9F\x98\x80|member e|value 16:|"
              "member i|value 9:-42|member max|value 9:9223372036854775807|"
              "member u|value 12:1.8446744073709552e+19|member r|value 12:-1500|"
              "member t|value 1:true|member f|value 1:false|member n|value 0:null");
}

TEST(JSONElements, KindsCastsAndIndexAccess) {
    CRef<IElementJSON> clRoot = s_clParse(R"([10,"x",{"k":1},[1,2],null,true,1.5])");
    ASSERT_TRUE(clRoot);
    EXPECT_EQ(clRoot->veGetGenre(), GENRE_JSON_TABLEAU);
    EXPECT_EQ(clRoot->vpiGetIObjetJSON(), nullptr);
    CAny clValue;
    EXPECT_FALSE(clRoot->vbGetValeur(clValue));
    ITableauJSON* piArray = clRoot->vpiGetITableauJSON();
    ASSERT_NE(piArray, nullptr);
    EXPECT_EQ(piArray, clRoot->vpiGetITableauJSON()) << "a cast is the element's own";
    ASSERT_EQ(piArray->vnGetNbElement(), 7);
    const eGENREJSON aeKinds[] = {GENRE_JSON_NOMBRE,  GENRE_JSON_CHAINE, GENRE_JSON_OBJET,
                                  GENRE_JSON_TABLEAU, GENRE_JSON_NUL,    GENRE_JSON_BOOLEEN,
                                  GENRE_JSON_NOMBRE};
    const char* apszValues[] = {"9:10", "16:x", nullptr, nullptr, "0:null", "1:true", "12:1.5"};
    // Rising, then back and forth: the remembered position must not lead astray.
    for (int i : {0, 1, 2, 3, 4, 5, 6, 5, 2, 6, 0, 3}) {
        CRef<IElementJSON> clElement = CRef<IElementJSON>::Adopt(piArray->vpiGetElement(i));
        ASSERT_TRUE(clElement) << i;
        EXPECT_EQ(clElement->veGetGenre(), aeKinds[i]) << i;
        CAny clItem;
        EXPECT_EQ(clElement->vbGetValeur(clItem) != 0, apszValues[i] != nullptr) << i;
        if (apszValues[i]) {
            EXPECT_EQ(s_Describe(clItem), apszValues[i]) << i;
        }
        EXPECT_EQ(clElement->vpiGetIObjetJSON() != nullptr, aeKinds[i] == GENRE_JSON_OBJET);
        EXPECT_EQ(clElement->vpiGetITableauJSON() != nullptr, aeKinds[i] == GENRE_JSON_TABLEAU);
    }
    EXPECT_EQ(piArray->vpiGetElement(7), nullptr);
    EXPECT_EQ(piArray->vpiGetElement(-1), nullptr);
    CRef<IElementJSON> clObject = CRef<IElementJSON>::Adopt(piArray->vpiGetElement(2));
    EXPECT_EQ(clObject->vpiGetIObjetJSON()->vnGetNbMembre(), 1);
    // The cast outlives its element when it is held.
    CRef<ITableauJSON> clInner = CRef<ITableauJSON>::Retain(
        CRef<IElementJSON>::Adopt(piArray->vpiGetElement(3))->vpiGetITableauJSON());
    clRoot.Reset();
    EXPECT_EQ(clInner->vnGetNbElement(), 2);
    CRecorder clRecorder;
    clInner->vAccepte(clRecorder);
    EXPECT_EQ(clRecorder.sEvents(), "element|value 9:1|element|value 9:2");
}

TEST(JSONElements, ConcurrentWalksOfOneDocument) {
    std::string sText = "[";
    for (int i = 0; i < 2000; ++i)
        sText += (i ? "," : "") + std::string(R"({"n":)") + std::to_string(i) + R"(,"s":"v"})";
    sText += "]";
    CRef<IElementJSON> clRoot = s_clParse(sText);
    ASSERT_TRUE(clRoot);
    std::vector<size_t> tabCounts(4);
    std::vector<std::thread> tabThreads;
    for (size_t t = 0; t < tabCounts.size(); ++t)
        tabThreads.emplace_back([&, t] {
            CRecorder clRecorder;
            clRoot->vAccepte(clRecorder);
            tabCounts[t] = clRecorder.tabEvents.size();
        });
    for (auto& th : tabThreads)
        th.join();
    for (size_t n : tabCounts)
        EXPECT_EQ(n, 1u + 2000u * 6u);
}

// The walk's decoder against the reference one, over texts whose runs of ASCII end at every
// place around the decoder's four-, eight- and sixteen-byte pieces. Each text sits alone in a
// block of its exact size, so that a read outside it faults under the address sanitizer.
TEST(JSONDecode, MatchesTheReferenceAtEveryLengthAndPlace) {
    const char* apszWide[] = {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"};
    for (size_t nLength = 0; nLength <= 52; ++nLength) {
        // nAt == nLength: ASCII only.
        for (size_t nAt = 0; nAt <= nLength; ++nAt) {
            for (const char* pszWide : apszWide) {
                std::string sText;
                for (size_t i = 0; i < nLength; ++i)
                    sText += i == nAt ? std::string(pszWide) : std::string(1, 'a' + i % 26);
                std::unique_ptr<char[]> pText(new char[sText.size()]);
                std::memcpy(pText.get(), sText.data(), sText.size());
                std::vector<wchar_t> tabOut(sText.size() + 1, L'#');
                size_t n = CJSONWalk::s_nDecode({pText.get(), sText.size()}, tabOut.data());
                ASSERT_EQ(std::wstring(tabOut.data(), n), KVUtf8::VersWide(sText))
                    << nLength << " " << nAt;
                ASSERT_EQ(tabOut[sText.size()], L'#') << "nothing written past the room";
                if (nAt == nLength)
                    break;
            }
        }
    }
}

// The walk writes each text into the block of the value it shows when nobody else holds that
// block and it has the room; a value the visitor kept a copy of is never written over.
class CTextKeeper final : public CRecorder {
public:
    std::vector<const void*> tabBlocks; // the block of each text shown
    std::vector<CAny> tabKept;
    std::set<std::string> setKeep; // texts to keep a copy of
    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        if (clValue.nGetType() == 16) {
            tabBlocks.push_back(clValue.pclGetIntern()->nGetPCWSTR());
            if (setKeep.count(s_Describe(clValue)))
                tabKept.push_back(clValue);
        }
        return CRecorder::veVisiteValeur(clValue);
    }
};

TEST(JSONWalkValues, TextsReuseTheirBlockUnlessShared) {
    CRef<IElementJSON> clRoot =
        s_clParse(R"(["the first text, the longest","second","th\u00efrd","fou",)"
                  R"("a text too long for it","fifth","sixth"])");
    ASSERT_TRUE(clRoot);
    CTextKeeper clKeeper;
    clKeeper.setKeep = {"16:second", "16:fifth"};
    clRoot->vAccepte(clKeeper);
    EXPECT_EQ(clKeeper.sEvents(),
              "array 7|element|value 16:the first text, the longest|element|value 16:second|"
              "element|value 16:th\xC3\xAFrd|element|value 16:fou|"
              "element|value 16:a text too long for it|element|value 16:fifth|"
              "element|value 16:sixth");
    const auto& tab = clKeeper.tabBlocks;
    ASSERT_EQ(tab.size(), 7u);
    EXPECT_EQ(tab[1], tab[0]) << "unshared, with the room: in place";
    EXPECT_NE(tab[2], tab[1]) << "the kept copy holds the block";
    EXPECT_EQ(tab[3], tab[2]);
    EXPECT_NE(tab[4], tab[3]) << "no room";
    EXPECT_EQ(tab[5], tab[4]);
    EXPECT_NE(tab[6], tab[5]) << "the kept copy holds the block";
    ASSERT_EQ(clKeeper.tabKept.size(), 2u);
    EXPECT_EQ(s_Describe(clKeeper.tabKept[0]), "16:second");
    EXPECT_EQ(s_Describe(clKeeper.tabKept[1]), "16:fifth");
}

// A visitor may change the value it is shown; the leaves after it are shown as they are.
class CConverter final : public CRecorder {
public:
    eVISITEJSON veVisiteValeur(CAny& clValue) override {
        eVISITEJSON eAnswer = CRecorder::veVisiteValeur(clValue);
        (void)clValue.__nCastTo(clValue.nGetType() == 16 ? 9 : 16);
        return eAnswer;
    }
};

TEST(JSONWalkValues, ValuesChangedByTheVisitorDoNotLeak) {
    CRef<IElementJSON> clRoot =
        s_clParse(R"([true,false,7,8,1.5,2.5,"12","b",null,null,true,"c",9])");
    ASSERT_TRUE(clRoot);
    CConverter clConverter;
    clRoot->vAccepte(clConverter);
    EXPECT_EQ(clConverter.sEvents(),
              "array 13|element|value 1:true|element|value 1:false|element|value 9:7|"
              "element|value 9:8|element|value 12:1.5|element|value 12:2.5|element|value 16:12|"
              "element|value 16:b|element|value 0:null|element|value 0:null|"
              "element|value 1:true|element|value 16:c|element|value 9:9");
}

struct STBadCase {
    const char* pszName;
    std::string sText;
    eDATASERVICEERROR eCode;
};
// Cases go by their name in test listings.
void PrintTo(const STBadCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

std::string s_Truncated() {
    std::string s = "{\"items\":[";
    for (int i = 0; i < 500; ++i)
        s += R"({"id":"e)" + std::to_string(i) + R"(","start":{"dateTime":"2024-01-01"}},)";
    return s.substr(0, s.size() * 2 / 3);
}

const STBadCase gtabBad[] = {
    {"Empty", "", DATASERVICE_JSON_SYNTAX},
    {"Blanks", "  \n ", DATASERVICE_JSON_SYNTAX},
    {"OpenObject", "{", DATASERVICE_JSON_SYNTAX},
    {"OpenArray", "[1,2", DATASERVICE_JSON_SYNTAX},
    {"MissingValue", R"({"a":})", DATASERVICE_JSON_SYNTAX},
    {"BadLiteral", "nul", DATASERVICE_JSON_SYNTAX},
    {"OpenString", "\"abc", DATASERVICE_JSON_SYNTAX},
    {"BadUTF8", "[\"\xFF\xFE\"]", DATASERVICE_JSON_SYNTAX},
    {"TrailingGarbage", "{} x", DATASERVICE_JSON_SYNTAX},
    {"BadEscape", R"(["\q"])", DATASERVICE_JSON_SYNTAX},
    {"TooDeep", std::string(5000, '[') + std::string(5000, ']'), DATASERVICE_JSON_SYNTAX},
    {"Truncated", s_Truncated(), DATASERVICE_JSON_SYNTAX},
    {"OverLimit", R"({"key":"a value longer than the limit"})", DATASERVICE_JSON_TOO_LARGE},
};

class JSONBadInput : public testing::TestWithParam<STBadCase> {};

TEST_P(JSONBadInput, NullWithAClearError) {
    const STBadCase& stCase = GetParam();
    CRef<CHostJSONService> clService = CRef<CHostJSONService>::Adopt(new CHostJSONService(32));
    if (stCase.eCode != DATASERVICE_JSON_TOO_LARGE)
        clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    CXError clError;
    IElementJSON* piRoot =
        clService->vpiAnalyse(stCase.sText.data(), stCase.sText.size(), &clError);
    EXPECT_EQ(piRoot, nullptr);
    EXPECT_EQ(clError.nGetErrorLevel(), ELEVEL_ERREUR);
    EXPECT_EQ(clError.nGetUserErrorCode(), static_cast<unsigned>(stCase.eCode));
    std::wstring sMessage = clError.pszGetUserMessage();
    if (stCase.eCode == DATASERVICE_JSON_TOO_LARGE) {
        EXPECT_NE(sMessage.find(L"more than the limit of 32 bytes"), std::wstring::npos)
            << KVUtf8::VersUtf8(sMessage);
    } else {
        EXPECT_EQ(sMessage.rfind(L"The text is not valid JSON: ", 0), 0u)
            << KVUtf8::VersUtf8(sMessage);
    }
    EXPECT_GT(sMessage.size(), 30u) << "the cause is named";
}

INSTANTIATE_TEST_SUITE_P(Texts, JSONBadInput, testing::ValuesIn(gtabBad),
                         [](const auto& info) { return std::string(info.param.pszName); });

TEST(JSONBadInputs, NullPointerAndNoErrorObject) {
    CRef<CHostJSONService> clService = CRef<CHostJSONService>::Adopt(new CHostJSONService());
    CXError clError;
    EXPECT_EQ(clService->vpiAnalyse(nullptr, 4, &clError), nullptr);
    EXPECT_FALSE(clError.bEstPropre());
    EXPECT_EQ(clService->vpiAnalyse("{", 1, nullptr), nullptr);
}

} // namespace
