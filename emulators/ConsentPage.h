// CConsentPage: the pages a browser sees at an OAuth provider: the consent form with Approve
// and Deny, and the error page shown when the request cannot be sent back to the client.
#pragma once
#include <string>
#include <string_view>
#include <vector>

struct STUser;

struct STConsentView {
    std::string sProviderTitle;
    std::string sClientName;
    std::string sRedirectUri;
    std::string sAction; // where the form goes, in the browser form when the page came that way
    std::string sTransaction;
    std::vector<std::string> tabScopes;
    const std::vector<STUser>* pUsers = nullptr;
    std::string sSelectedEmail;
};

class CConsentPage {
public:
    static std::string s_sRender(const STConsentView& view);
    static std::string s_sRenderError(std::string_view svProviderTitle, std::string_view svError,
                                      std::string_view svDescription);
};
