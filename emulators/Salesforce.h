// Salesforce: the partner SOAP interface 15.0. The login hosts (login.salesforce.com and
// test.salesforce.com) answer "login" at /services/Soap/u/15.0 and hand out a session on the
// instance host (na1.salesforce.com), which answers every other call at the serverUrl it gave,
// with the SessionHeader checked on each. Records live in memory from the seed's "salesforce"
// section; SOQL and SOSL are evaluated over them (a subset: Salesforce.cpp says which).
// Errors are SOAP 1.1 faults as the real service writes them, with status 500.
#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Service.h"

class CEmulator;
namespace pugi {
class xml_node;
}

class CSalesforce : public IService {
public:
    static constexpr const char* ms_pszInstance = "na1.salesforce.com";
    explicit CSalesforce(CEmulator& emulator) : m_Emulator(emulator) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);
    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    struct STRecord {
        std::string sType;
        std::string sId;
        std::vector<std::pair<std::string, std::string>> tabFields; // Id not among them
        bool bDeleted = false;
        bool bPurged = false;
        std::string sDeletedDate;
        const std::string* pField(std::string_view svName) const;
        void Set(const std::string& sName, const std::string& sValue);
    };
    struct STCall; // one call's context (Salesforce.cpp)

private:
    void Login(const pugi::xml_node& op, STResponse& res);
    void Call(const std::string& sOp, const pugi::xml_node& op, const std::string& sUser,
              STResponse& res);

    std::string sQuery(const std::string& sSoql, bool bAll, std::string& sFaultCode,
                       std::string& sFaultMsg);
    std::string sPage(const std::string& sLocator, std::string& sFaultCode, std::string& sFaultMsg);
    std::string sSearch(const std::string& sSosl, std::string& sFaultCode, std::string& sFaultMsg);
    std::string sSave(const pugi::xml_node& op, const std::string& sMode);
    std::string sConvert(const pugi::xml_node& op);
    std::string sChanges(const pugi::xml_node& op, bool bDeleted);
    std::string sMerge(const pugi::xml_node& op);
    STRecord* pFind(std::string_view svId);
    std::string sNewId(const std::string& sType);

    CEmulator& m_Emulator;
    std::mutex m_mtx;
    std::vector<STRecord> m_tabRecords;
    std::map<std::string, std::pair<std::vector<std::string>, size_t>> m_mapLocators;
    long long m_nNextId = 1;
    long long m_nNextLocator = 1;
};
