// A Salesforce query reply into records against the parse: the host's parse of a reply of N
// records (20 fields each, a parent account nested in each) and the component's records built
// over it, against pugixml parsing the same bytes.
//   soap_query_2000_vs_parse  2,000 records over their raw parse
//   soap_query_scaling        20,000 records over 2,000 (linear: 10)
#include "FigureReporter.h"
#include "HostXMLService.h"

#include "salesforce/SFObject.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <pugixml.hpp>

#include <map>
#include <string>

namespace {

std::string s_sReply(int nRecords) {
    std::string s = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><soapenv:Envelope "
                    "xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
                    "xmlns=\"urn:partner.soap.sforce.com\" "
                    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                    "xmlns:sf=\"urn:sobject.partner.soap.sforce.com\"><soapenv:Body><queryResponse>"
                    "<result xsi:type=\"QueryResult\"><done>true</done>"
                    "<queryLocator xsi:nil=\"true\"/>";
    s.reserve(static_cast<size_t>(nRecords) * 1200 + 1024);
    for (int i = 0; i < nRecords; ++i) {
        const std::string n = std::to_string(i);
        const std::string sId = "003500000" + std::string(6 - std::min<size_t>(6, n.size()), '0') + n + "AAA";
        s += "<records xsi:type=\"sf:sObject\"><sf:type>Contact</sf:type><sf:Id>" + sId +
             "</sf:Id><sf:Id>" + sId + "</sf:Id>";
        for (int f = 0; f < 17; ++f)
            s += "<sf:Field" + std::to_string(f) + "__c>value " + n + "." + std::to_string(f) +
                 "</sf:Field" + std::to_string(f) + "__c>";
        s += "<sf:Email xsi:nil=\"true\"/><sf:Account xsi:type=\"sf:sObject\"><sf:type>Account"
             "</sf:type><sf:Id xsi:nil=\"true\"/><sf:Name>Account " + n +
             "</sf:Name></sf:Account></records>";
    }
    return s + "<size>" + std::to_string(nRecords) + "</size></result></queryResponse>"
                                                     "</soapenv:Body></soapenv:Envelope>";
}

const std::string& s_rReply(int nRecords) {
    static std::map<int, std::string> s_map;
    auto it = s_map.find(nRecords);
    if (it == s_map.end())
        it = s_map.emplace(nRecords, s_sReply(nRecords)).first;
    return it->second;
}

void BM_SoapQueryParse(benchmark::State& state) {
    const std::string& sReply = s_rReply(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        pugi::xml_document clDocument;
        if (!clDocument.load_buffer(sReply.data(), sReply.size()))
            state.SkipWithError("the reply does not parse");
        benchmark::DoNotOptimize(clDocument.first_child());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sReply.size()));
}

// What SFExecuteRequete does with a reply: the host's parse, the result node, the records.
void BM_SoapQueryRecords(benchmark::State& state) {
    const int nRecords = static_cast<int>(state.range(0));
    const std::string& sReply = s_rReply(nRecords);
    auto clService = CRef<CHostXMLService>::Adopt(new CHostXMLService());
    CAny clText;
    clText.SetStringA(sReply.c_str(), static_cast<int>(sReply.size()));
    for (auto _ : state) {
        CXError clError;
        auto clDocument = CRef<IDocumentXML>::Adopt(clService->vpiAnalyse(clText, &clError));
        auto clRoot = CRef<INoeudXML>::Adopt(clDocument ? clDocument->piGetRacine(0) : nullptr);
        auto clBody = CRef<INoeudXML>::Adopt(clRoot ? clRoot->piGetEnfantParNom("Body") : nullptr);
        auto clResponse =
            CRef<INoeudXML>::Adopt(clBody ? clBody->piGetEnfantParNom("queryResponse") : nullptr);
        auto clResult =
            CRef<INoeudXML>::Adopt(clResponse ? clResponse->piGetEnfantParNom("result") : nullptr);
        if (!clResult) {
            state.SkipWithError("the reply does not parse");
            break;
        }
        CXmlObject* pcl = CSFQueryResult::s_pclCreate(clResult.pGet(), XML_ELEMENT, nullptr, "result");
        CXmlObjectMulti* pclMulti = pcl->vpclGetXmlObjectMulti();
        CXmlObjectListe* pclRecords = pclMulti ? pclMulti->pclGetListe("records") : nullptr;
        if (!pclRecords || pclRecords->nGetNbElement() != nRecords)
            state.SkipWithError("records lost");
        benchmark::DoNotOptimize(pclRecords);
        // The records outlive the call, in the script: their end is no part of it.
        state.PauseTiming();
        pcl->vRelease();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sReply.size()));
}

BENCHMARK(BM_SoapQueryParse)->Arg(2000)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_SoapQueryRecords)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("soap_query_2000_vs_parse", "BM_SoapQueryRecords/2000",
                                "BM_SoapQueryParse/2000") &&
    CFigureReporter::s_bDeclare("soap_query_scaling", "BM_SoapQueryRecords/20000",
                                "BM_SoapQueryRecords/2000");

} // namespace
