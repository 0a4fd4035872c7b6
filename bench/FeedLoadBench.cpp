// The XML objects over a contacts feed: loading a feed into objects, and writing every entry
// back after a change, against the host's raw parse of the same bytes; and the memory the
// objects take beyond the host's DOM, per byte of input.
//   feed_load_10k_vs_parse   loading 10,000 parsed entries into objects over the parse of the
//                            same bytes (on both sides the release of what was built is not
//                            timed)
//   feed_load_scaling        the load of 100,000 entries over that of 10,000 (linear: 10)
//   feed_write_10k_vs_parse  every entry changed, applied and the feed written, over the parse
//   feed_load_memory         bytes the objects hold per byte of the feed, beyond the DOM
//   contacts_list_10k_vs_parse  the contacts listing's work on the same reply, parse included
//                            (the feed read as the connector's own CListeContacts, each entry
//                            taken out of it as the script's array takes it), over the parse
//   contacts_list_scaling    that listing for 100,000 entries over 10,000 (linear: 10)
#include "FigureReporter.h"
#include "HostXMLService.h"

#include "contacts/GoogleContact.h"
#include "contacts/ListesContacts.h"
#include "frame/ComposanteGGL.h"
#include "xmlobject/Email.h"
#include "xmlobject/GglElements.h"
#include "xmlobject/IM.h"
#include "xmlobject/Organization.h"
#include "xmlobject/PhoneNumber.h"
#include "xmlobject/PostalAddress.h"

#include "Any.h"
#include "Ref.h"
#include "XError.h"

#include <malloc.h>

#include <map>
#include <string>

namespace {

// A contact-like entry and its feed, with tables of their own.
class CNomBanc final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CNomBanc)
};
class CContactBanc final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CContactBanc)
};
class CFluxBanc final : public CXmlObjectMulti {
public:
    XML_OBJET_DECLARE(CFluxBanc)
};

const stXmlPropriete CNomBanc::s_m_stTabXmlDescription__[] = {
    XML_ROW("gd:fullName", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("gd:givenName", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("gd:familyName", XmlObject::Texte, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CNomBanc, CXmlObjectMulti)

const stXmlPropriete CContactBanc::s_m_stTabXmlDescription__[] = {
    XML_ROW("id", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("updated", XmlObject::DateHeure, XML_ELEMENT)
    XML_ROW("app:edited", XmlObject::DateHeure, XML_ELEMENT)
    XML_ROW("category", Ggl::CCategory, XML_ELEMENT)
    XML_ROW("title", Ggl::CTitre, XML_ELEMENT)
    XML_ROW("content", Ggl::CContent, XML_ELEMENT)
    XML_ROW("link", Ggl::CLink, XML_ELEMENT)
    XML_ROW("gd:name", CNomBanc, XML_ELEMENT)
    XML_ROW("gd:email", CEmail, XML_ELEMENT)
    XML_ROW("gd:im", CIM, XML_ELEMENT)
    XML_ROW("gd:phoneNumber", CPhoneNumber, XML_ELEMENT)
    XML_ROW("gd:postalAddress", CPostalAddress, XML_ELEMENT)
    XML_ROW("gd:organization", COrganization, XML_ELEMENT)
    XML_ROW("gContact:groupMembershipInfo", Ggl::TexteOnHref, XML_ELEMENT)
    XML_ROW("gd:etag", XmlObject::Texte, XML_ATTRIBUT)};
XML_OBJET_DEFINE_SANS_VISITE(CContactBanc, CXmlObjectMulti)

const stXmlPropriete CFluxBanc::s_m_stTabXmlDescription__[] = {
    XML_ROW("id", XmlObject::Texte, XML_ELEMENT)
    XML_ROW("updated", XmlObject::DateHeure, XML_ELEMENT)
    XML_ROW("title", Ggl::CTitre, XML_ELEMENT)
    XML_ROW("link", Ggl::CLink, XML_ELEMENT)
    XML_ROW("entry", CContactBanc, XML_ELEMENT)};
XML_OBJET_DEFINE_SANS_VISITE(CFluxBanc, CXmlObjectMulti)

// About twenty members an entry, several lists of more than one.
std::string s_sFlux(int nEntrees) {
    std::string s = "<?xml version='1.0' encoding='UTF-8'?>"
                    "<feed xmlns='http://www.w3.org/2005/Atom' xmlns:app='http://www.w3.org/2007/app' "
                    "xmlns:gContact='http://schemas.google.com/contact/2008' "
                    "xmlns:gd='http://schemas.google.com/g/2005'>"
                    "<id>user@example.com</id><updated>2024-03-01T10:00:00.000Z</updated>"
                    "<title>Contacts</title>"
                    "<link rel='self' href='https://www.google.com/m8/feeds/contacts/default/full'/>";
    s.reserve(static_cast<size_t>(nEntrees) * 2400 + 1024);
    const std::string sBase = "https://www.google.com/m8/feeds/contacts/user%40example.com/full/c";
    for (int i = 0; i < nEntrees; ++i) {
        const std::string n = std::to_string(i);
        s += "<entry gd:etag='\"Q3c5eDVSLyp7I2A9XRdVFkwLQQU." + n + "\"'><id>" + sBase + n +
             "</id><updated>2024-02-20T14:03:12.356Z</updated>"
             "<app:edited>2024-02-20T14:03:12.356Z</app:edited>"
             "<category scheme='http://schemas.google.com/g/2005#kind' "
             "term='http://schemas.google.com/contact/2008#contact'/>"
             "<title>Person " + n + "</title><content type='text'>Met at the conference</content>"
             "<link rel='http://schemas.google.com/contacts/2008/rel#photo' type='image/*' href='" +
             sBase + n + "/photo'/><link rel='self' type='application/atom+xml' href='" + sBase + n +
             "'/><link rel='edit' type='application/atom+xml' href='" + sBase + n + "/1'/>"
             "<gd:name><gd:fullName>Person " + n + "</gd:fullName><gd:givenName>Person</gd:givenName>"
             "<gd:familyName>" + n + "</gd:familyName></gd:name>"
             "<gd:email rel='http://schemas.google.com/g/2005#work' address='person." + n +
             "@example.com' primary='true'/><gd:email rel='http://schemas.google.com/g/2005#home' "
             "address='p" + n + "@home.example'/>"
             "<gd:im address='p" + n + "@chat.example' protocol='http://schemas.google.com/g/2005#JABBER' "
             "rel='http://schemas.google.com/g/2005#other'/>"
             "<gd:phoneNumber rel='http://schemas.google.com/g/2005#mobile'>+33 6 12 34 " + n +
             "</gd:phoneNumber><gd:phoneNumber rel='http://schemas.google.com/g/2005#work'>+33 1 98 76 " +
             n + "</gd:phoneNumber>"
             "<gd:postalAddress rel='http://schemas.google.com/g/2005#work'>1 rue de la Paix, Paris"
             "</gd:postalAddress><gd:organization rel='http://schemas.google.com/g/2005#work'>"
             "<gd:orgName>Example</gd:orgName><gd:orgTitle>Engineer</gd:orgTitle></gd:organization>"
             "<gContact:groupMembershipInfo deleted='false' "
             "href='http://www.google.com/m8/feeds/groups/user%40example.com/base/6'/>"
             "<gContact:groupMembershipInfo deleted='false' "
             "href='http://www.google.com/m8/feeds/groups/user%40example.com/base/" + n + "'/></entry>";
    }
    s += "</feed>";
    return s;
}

const std::string& s_rFlux(int nEntrees) {
    static std::map<int, std::string> s_map;
    auto it = s_map.find(nEntrees);
    if (it == s_map.end())
        it = s_map.emplace(nEntrees, s_sFlux(nEntrees)).first;
    return it->second;
}

// The host's XML service behind the component for the whole run.
IGestionnaireXML* piService() {
    if (!CComposanteGGL::ms_piGestionXML)
        CComposanteGGL::ms_piGestionXML = new CHostXMLService();
    return CComposanteGGL::ms_piGestionXML;
}

CRef<IDocumentXML> clAnalyse(const std::string& sFlux) {
    CAny clTexte;
    clTexte.SetStringA(sFlux.c_str(), static_cast<int>(sFlux.size()));
    CXError clErreur;
    return CRef<IDocumentXML>::Adopt(piService()->vpiAnalyse(clTexte, &clErreur));
}

CRef<CXmlObject> clCharge(IDocumentXML* piDocument) {
    auto clRacine = CRef<INoeudXML>::Adopt(piDocument->piGetRacine(0));
    return CRef<CXmlObject>::Adopt(CFluxBanc::s_pclCreate(clRacine.pGet(), XML_ELEMENT, nullptr, "feed"));
}

size_t nOctetsAlloues() { return mallinfo2().uordblks; }

// The building alone, the same on both sides: the release of what was built is not timed.
template <class F> void ChronometreConstruction(benchmark::State& state, size_t nOctets, F Construit) {
    for (auto _ : state) {
        auto cl = Construit();
        if (!cl)
            state.SkipWithError("nothing was built");
        benchmark::DoNotOptimize(cl.pGet());
        state.PauseTiming();
        cl = {};
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * nOctets));
}

void BM_FeedParse(benchmark::State& state) {
    const std::string& sFlux = s_rFlux(static_cast<int>(state.range(0)));
    ChronometreConstruction(state, sFlux.size(), [&] { return clAnalyse(sFlux); });
}

void BM_FeedLoad(benchmark::State& state) {
    const std::string& sFlux = s_rFlux(static_cast<int>(state.range(0)));
    // The memory, once and out of the timing: reading the heap's figures consolidates it.
    {
        auto clDocument = clAnalyse(sFlux);
        const size_t nAvant = nOctetsAlloues();
        auto clFlux = clCharge(clDocument.pGet());
        state.counters["bytes_per_byte"] =
            static_cast<double>(nOctetsAlloues() - nAvant) / static_cast<double>(sFlux.size());
        if (clFlux->vpclGetXmlObjectMulti()->pclGetListe("entry")->nGetNbElement() != state.range(0))
            state.SkipWithError("entries missing");
    }
    // The load alone: objects built over the parsed document.
    auto clDocument = clAnalyse(sFlux);
    ChronometreConstruction(state, sFlux.size(), [&] { return clCharge(clDocument.pGet()); });
}

// Each pass changes one member of every entry (alternating, so that each pass is a change),
// applies the entries to the retained tree and writes the feed out.
void BM_FeedWrite(benchmark::State& state) {
    const std::string& sFlux = s_rFlux(static_cast<int>(state.range(0)));
    auto clDocument = clAnalyse(sFlux);
    auto clFlux = clCharge(clDocument.pGet());
    CXmlObjectListe* pclEntrees = clFlux->vpclGetXmlObjectMulti()->pclGetListe("entry");
    std::string sSortie;
    class CSortie final : public IContenuXMLSortie {
    public:
        explicit CSortie(std::string& s) : m_s(s) {}
        int vbContenuXML(const char* p, size_t n, CXError*) override {
            m_s.assign(p, n);
            return 1;
        }
        std::string& m_s;
    } clSortie(sSortie);
    int nPasse = 0;
    for (auto _ : state) {
        const wchar_t* pszTitre = ++nPasse % 2 ? L"Changed" : L"Changed again";
        CXError clErreur;
        for (int i = 0; i < pclEntrees->nGetNbElement(); ++i) {
            CXmlObjectMulti* pclEntree = pclEntrees->pclGetElement(i)->vpclGetXmlObjectMulti();
            pclEntree->pclGetPropriete("gd:name", 0)->pclGetPropriete("gd:fullName", 0)->vbSet(pszTitre, clErreur);
            if (!pclEntree->vbApplyToXml(clErreur))
                state.SkipWithError("no change applied");
        }
        clDocument->bEcrit(clSortie, FORMATXML_DOCUMENT, &clErreur);
        benchmark::DoNotOptimize(sSortie.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sFlux.size()));
}

// What GglListeContact does with a reply: the parse, the contacts feed over it, and each entry
// taken out of the feed, which then goes; the entries are what is built.
void BM_ContactsList(benchmark::State& state) {
    const std::string& sFlux = s_rFlux(static_cast<int>(state.range(0)));
    ChronometreConstruction(state, sFlux.size(), [&] {
        auto clDocument = clAnalyse(sFlux);
        auto clRacine = CRef<INoeudXML>::Adopt(clDocument->piGetRacine(0));
        auto clFlux = CRef<CXmlObject>::Adopt(CListeContacts::s_pclCreate(clRacine.pGet(), XML_ELEMENT, nullptr, nullptr));
        CXmlObjectListe* pclEntrees = clFlux->vpclGetXmlObjectMulti()->pclGetListe("entry");
        if (!pclEntrees)
            return CRef<CXmlObjectListe>();
        for (int i = 0; i < pclEntrees->nGetNbElement(); ++i)
            pclEntrees->pclGetElement(i)->vSetParent(nullptr);
        return CRef<CXmlObjectListe>::Retain(pclEntrees);
    });
}

BENCHMARK(BM_FeedParse)->Arg(10000)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_FeedLoad)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_FeedWrite)->Arg(10000)->Unit(benchmark::kMillisecond)->Repetitions(3);
BENCHMARK(BM_ContactsList)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Repetitions(3);

[[maybe_unused]] const bool gbFigures =
    CFigureReporter::s_bDeclare("feed_load_10k_vs_parse", "BM_FeedLoad/10000", "BM_FeedParse/10000") &&
    CFigureReporter::s_bDeclare("feed_load_scaling", "BM_FeedLoad/100000", "BM_FeedLoad/10000") &&
    CFigureReporter::s_bDeclare("feed_write_10k_vs_parse", "BM_FeedWrite/10000", "BM_FeedParse/10000") &&
    CFigureReporter::s_bDeclareCounter("feed_load_memory", "BM_FeedLoad/10000", "bytes_per_byte", "B/B") &&
    CFigureReporter::s_bDeclare("contacts_list_10k_vs_parse", "BM_ContactsList/10000", "BM_FeedParse/10000") &&
    CFigureReporter::s_bDeclare("contacts_list_scaling", "BM_ContactsList/100000", "BM_ContactsList/10000");

} // namespace
