#include "ConsentPage.h"

#include "Seed.h"
#include "Text.h"

namespace {
const char s_szStyle[] =
    "body{font-family:system-ui,sans-serif;background:#f1f3f4;margin:0}"
    "main{max-width:28rem;margin:3rem auto;background:#fff;border:1px solid #dadce0;"
    "border-radius:8px;padding:2rem}"
    "h1{font-size:1.4rem;margin-top:0}code{word-break:break-all}"
    "ul{padding-left:1.2rem}li{margin:.3rem 0;word-break:break-all}"
    ".buttons{display:flex;justify-content:flex-end;gap:.8rem;margin-top:1.5rem}"
    "button{font-size:1rem;padding:.5rem 1.4rem;border-radius:4px;border:1px solid #dadce0;"
    "background:#fff;cursor:pointer}button.approve{background:#1a73e8;color:#fff;border:0}"
    ".error{color:#d93025}";

std::string s_sHead(std::string_view svTitle) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"
           "<title>" +
           CText::s_sHtmlEscape(svTitle) + "</title><style>" + s_szStyle +
           "</style></head>\n<body><main>\n";
}
} // namespace

std::string CConsentPage::s_sRender(const STConsentView& view) {
    auto esc = [](std::string_view sv) { return CText::s_sHtmlEscape(sv); };
    std::string s = s_sHead("Sign in - " + view.sProviderTitle);
    s += "<h1>" + esc(view.sProviderTitle) + "</h1>\n";
    s += "<p><strong id=\"client\">" + esc(view.sClientName) +
         "</strong> wants to access your account.</p>\n";
    s += "<form method=\"post\" action=\"" + esc(view.sAction) + "\">\n";
    s += "<input type=\"hidden\" name=\"txn\" value=\"" + esc(view.sTransaction) + "\">\n";
    s += "<p><label>Account <select name=\"user\" id=\"user\">";
    if (view.pUsers) {
        for (const STUser& u : *view.pUsers) {
            s += "<option value=\"" + esc(u.sEmail) + "\"";
            if (CText::s_bIEquals(u.sEmail, view.sSelectedEmail))
                s += " selected";
            s += ">" + esc(u.sName) + " &lt;" + esc(u.sEmail) + "&gt;</option>";
        }
    }
    s += "</select></label></p>\n";
    if (view.tabScopes.empty()) {
        s += "<p>No particular access is asked for.</p>\n";
    } else {
        s += "<p>This will allow it to use:</p>\n<ul id=\"scopes\">";
        for (const std::string& sScope : view.tabScopes)
            s += "<li>" + esc(sScope) + "</li>";
        s += "</ul>\n";
    }
    s += "<p>You will then be sent back to <code id=\"redirect\">" + esc(view.sRedirectUri) +
         "</code>.</p>\n";
    s += "<div class=\"buttons\">"
         "<button type=\"submit\" name=\"decision\" value=\"deny\" id=\"deny\">Deny</button>"
         "<button type=\"submit\" name=\"decision\" value=\"approve\" id=\"approve\" "
         "class=\"approve\" autofocus>Approve</button></div>\n";
    s += "</form>\n</main></body></html>\n";
    return s;
}

std::string CConsentPage::s_sRenderError(std::string_view svProviderTitle, std::string_view svError,
                                         std::string_view svDescription) {
    std::string s = s_sHead(std::string(svProviderTitle) + " - Error");
    s += "<h1>" + CText::s_sHtmlEscape(svProviderTitle) + "</h1>\n";
    s += "<p class=\"error\">Access blocked: this request cannot be completed.</p>\n";
    s += "<p>Error: <code id=\"error\">" + CText::s_sHtmlEscape(svError) + "</code></p>\n";
    s += "<p id=\"description\">" + CText::s_sHtmlEscape(svDescription) + "</p>\n";
    s += "</main></body></html>\n";
    return s;
}
