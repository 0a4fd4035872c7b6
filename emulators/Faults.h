// CFaults: answers, delays and dropped connections injected for the next N matching requests,
// the way a test makes a service fail on purpose.
#pragma once
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CJsonValue;

struct STFault {
    std::string sHost;   // empty: any service
    std::string sMethod; // empty: any method
    std::string sPath;   // a prefix of the target (path and query); empty: any
    int nStatus = 0;     // 0: no answer of its own, the service answers after the delay
    std::string sBody;
    std::vector<std::pair<std::string, std::string>> tabHeaders;
    long long nCount = 1;
    long long nDelayMs = 0;
    bool bDrop = false;
};

class CFaults {
public:
    static constexpr long long ms_nMaxDelayMs = 600000;

    // One fault object, or an array of them; nothing is added when any of them is wrong.
    bool bAdd(const CJsonValue& v, std::string* pError);
    // The first fault that matches, its count spent by one.
    std::optional<STFault> oTake(std::string_view svHost, std::string_view svMethod,
                                 std::string_view svTarget);
    size_t nClear();
    std::string sToJson() const;

private:
    static bool s_bRead(const CJsonValue& v, STFault& f, std::string* pError);

    mutable std::mutex m_mtx;
    std::vector<STFault> m_tabFaults;
};
