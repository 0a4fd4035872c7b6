// CGoogleContacts: the contacts and groups feeds of www.google.com/m8/feeds/ as the retired
// service spoke them, Atom with the gd:, gContact: and openSearch: namespaces, for a bearer
// token of accounts.google.com holding the contacts scope. Each user has two feeds,
// contacts/USER/full and groups/USER/full (USER "default" or the e-mail): GET lists them with
// start-index, max-results (25 when absent), q, group and updated-min; POST creates; each
// entry is GET, PUT and DELETE at full/ID, and its edit link full/ID/VERSION carries the
// version: a write naming another version gets 409 and the current entry, and a PUT bumps it.
// The seed's "contacts" section gives the default user's groups and contacts, each as the XML
// of its elements.
#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Service.h"

class CEmulator;

class CGoogleContacts : public IService {
public:
    explicit CGoogleContacts(CEmulator& emulator) : m_Emulator(emulator) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    static constexpr long long ms_nDefaultPage = 25;

    // One entry: what the server sets, and the elements the client sent, kept as written.
    struct STEntry {
        std::string sId;
        long long nVersion = 0;
        std::string sUpdated;
        std::vector<std::string> tabElements; // serialized, in order
        std::string sSearch;                  // lower-case texts and addresses, for q
        std::vector<std::string> tabGroups;   // membership hrefs
    };
    // A user's two feeds by kind ("contacts", "groups"), entries in creation order.
    using CFeeds = std::map<std::string, std::vector<STEntry>, std::less<>>;

private:
    // The elements of an Atom entry's text, the server's own dropped; false when it is not one.
    static bool s_bReadEntry(std::string_view svXml, STEntry& e);
    std::string sEntry(const std::string& sUser, std::string_view svKind, const STEntry& e,
                       bool bDeclarations) const;
    void List(const STRequest& req, const std::string& sUser, std::string_view svKind,
              STResponse& res);
    long long nNextVersion() { return ++m_nVersion; }

    CEmulator& m_Emulator;
    std::mutex m_mtx;
    std::map<std::string, CFeeds, std::less<>> m_mapUsers; // by e-mail
    long long m_nVersion = 0;
    long long m_nNextId = 0;
};
