// CFlow: what the tests read from the flows: the parameters of a Location, a JSON member.
#pragma once
#include <string>
#include <string_view>

class CFlow {
public:
    // The value of a parameter in the query (or, with bFragment, the fragment) of a URL, as
    // written there; "" when absent.
    static std::string s_sParam(std::string_view svUrl, std::string_view svName,
                                bool bFragment = false);
    static bool s_bHasParam(std::string_view svUrl, std::string_view svName,
                            bool bFragment = false);
    static std::string s_sJsonText(std::string_view svJson, std::string_view svKey);
};
