// The XML DOM's walk against the parse: every child and every attribute of a generated Atom
// feed of contacts, reached by index through INoeudXML, against pugixml parsing the same bytes.
//   xml_walk_100k_vs_parse  the walk of 100,000 entries over their raw parse
//   xml_walk_scaling        the walk of 100,000 entries over that of 10,000 (linear: 10)
#include "FigureReporter.h"
#include "HostXMLService.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <pugixml.hpp>

#include <cstring>
#include <map>
#include <string>

namespace {

// A contacts feed as the service sends it: namespaced elements, URL-laden attributes, a few
// texts per entry.
std::string s_sFeed(int nEntries) {
    std::string s =
        "<?xml version='1.0' encoding='UTF-8'?>"
        "<feed xmlns='http://www.w3.org/2005/Atom' "
        "xmlns:app='http://www.w3.org/2007/app' "
        "xmlns:gContact='http://schemas.google.com/contact/2008' "
        "xmlns:batch='http://schemas.google.com/gdata/batch' "
        "xmlns:gd='http://schemas.google.com/g/2005' gd:etag='W/\"CUMBRHo_fip7I2A9WhJXEkQ.\"'>"
        "<id>user@example.com</id><updated>2024-03-01T10:00:00.000Z</updated>"
        "<category scheme='http://schemas.google.com/g/2005#kind' "
        "term='http://schemas.google.com/contact/2008#contact'/>"
        "<title>User's Contacts</title>"
        "<generator version='1.0' uri='http://www.google.com/m8/feeds'>Contacts</generator>";
    s.reserve(static_cast<size_t>(nEntries) * 1400 + 1024);
    for (int i = 0; i < nEntries; ++i) {
        std::string n = std::to_string(i);
        std::string sId = "c" + n + "f3a9";
        s += "<entry gd:etag='\"Q3c5eDVSLyp7I2A9XRdVFkwLQQU." + n +
             "\"'><id>http://www.google.com/m8/feeds/contacts/user%40example.com/base/" + sId +
             "</id><updated>2024-02-20T14:03:12.356Z</updated>"
             "<app:edited xmlns:app='http://www.w3.org/2007/app'>2024-02-20T14:03:12.356Z"
             "</app:edited><category scheme='http://schemas.google.com/g/2005#kind' "
             "term='http://schemas.google.com/contact/2008#contact'/>"
             "<title>Person " +
             n +
             "</title><link rel='http://schemas.google.com/contacts/2008/rel#photo' "
             "type='image/*' href='https://www.google.com/m8/feeds/photos/media/"
             "user%40example.com/" +
             sId +
             "'/><link rel='self' type='application/atom+xml' "
             "href='https://www.google.com/m8/feeds/contacts/user%40example.com/full/" +
             sId +
             "'/><link rel='edit' type='application/atom+xml' "
             "href='https://www.google.com/m8/feeds/contacts/user%40example.com/full/" +
             sId + "'/><gd:name><gd:fullName>Person " + n +
             "</gd:fullName><gd:givenName>Person</gd:givenName><gd:familyName>" + n +
             "</gd:familyName></gd:name>"
             "<gd:email rel='http://schemas.google.com/g/2005#work' address='person." +
             n +
             "@example.com' primary='true'/>"
             "<gd:phoneNumber rel='http://schemas.google.com/g/2005#mobile'>+33 6 12 34 " +
             n +
             "</gd:phoneNumber><gContact:groupMembershipInfo deleted='false' "
             "href='http://www.google.com/m8/feeds/groups/user%40example.com/base/6'/></entry>";
    }
    s += "</feed>";
    return s;
}

const std::string& s_rFeed(int nEntries) {
    static std::map<int, std::string> s_mapFeeds;
    auto it = s_mapFeeds.find(nEntries);
    if (it == s_mapFeeds.end())
        it = s_mapFeeds.emplace(nEntries, s_sFeed(nEntries)).first;
    return it->second;
}

// What a reader of the tree does at each node: its kind and name; for an element, each
// attribute's name, namespace and value, then each child; for a text, its value.
void s_Walk(INoeudXML& clNode, size_t& nTally) {
    nTally += static_cast<size_t>(clNode.eGetGenre());
    if (clNode.eGetGenre() != NOEUDXML_ELEMENT) {
        nTally += static_cast<unsigned char>(*clNode.pszGetValeur());
        return;
    }
    CRef<INamespaceXML> clNamespace = CRef<INamespaceXML>::Adopt(clNode.piGetNamespace());
    nTally += static_cast<unsigned char>(*clNode.pszGetNom()) + (clNamespace ? 1 : 0);
    for (int i = 0;; ++i) {
        CRef<INoeudXML> clAttribute = CRef<INoeudXML>::Adopt(clNode.piGetAttribut(i));
        if (!clAttribute)
            break;
        CRef<INamespaceXML> clAttributeNamespace =
            CRef<INamespaceXML>::Adopt(clAttribute->piGetNamespace());
        nTally += static_cast<unsigned char>(*clAttribute->pszGetNom()) +
                  static_cast<unsigned char>(*clAttribute->pszGetValeur()) +
                  (clAttributeNamespace ? 1 : 0);
    }
    for (int i = 0;; ++i) {
        CRef<INoeudXML> clChild = CRef<INoeudXML>::Adopt(clNode.piGetEnfant(i));
        if (!clChild)
            break;
        s_Walk(*clChild, nTally);
    }
}

void BM_XMLParse(benchmark::State& state) {
    const std::string& sFeed = s_rFeed(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        pugi::xml_document clDocument;
        pugi::xml_parse_result stResult = clDocument.load_buffer(sFeed.data(), sFeed.size());
        if (!stResult)
            state.SkipWithError(stResult.description());
        benchmark::DoNotOptimize(clDocument.first_child());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sFeed.size()));
}

void BM_XMLWalk(benchmark::State& state) {
    const std::string& sFeed = s_rFeed(static_cast<int>(state.range(0)));
    CRef<CHostXMLService> clService = CRef<CHostXMLService>::Adopt(new CHostXMLService());
    CAny clText;
    clText.SetStringA(sFeed.c_str(), static_cast<int>(sFeed.size()));
    CXError clError;
    CRef<IDocumentXML> clDocument =
        CRef<IDocumentXML>::Adopt(clService->vpiAnalyse(clText, &clError));
    CRef<INoeudXML> clRoot =
        clDocument ? CRef<INoeudXML>::Adopt(clDocument->piGetRacine(0)) : CRef<INoeudXML>();
    if (!clRoot) {
        state.SkipWithError("the feed does not parse");
        return;
    }
    for (auto _ : state) {
        size_t nTally = 0;
        s_Walk(*clRoot, nTally);
        benchmark::DoNotOptimize(nTally);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sFeed.size()));
}

BENCHMARK(BM_XMLParse)->Arg(100000)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_XMLWalk)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("xml_walk_100k_vs_parse", "BM_XMLWalk/100000",
                                "BM_XMLParse/100000") &&
    CFigureReporter::s_bDeclare("xml_walk_scaling", "BM_XMLWalk/100000", "BM_XMLWalk/10000");

} // namespace
