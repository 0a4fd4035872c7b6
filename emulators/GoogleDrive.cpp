#include "GoogleDrive.h"

#include <cctype>
#include <ctime>
#include <functional>
#include <optional>
#include <string_view>

#include "Emulator.h"
#include "Form.h"
#include "GoogleAccounts.h"
#include "GoogleApis.h"
#include "JsonValue.h"
#include "Request.h"
#include "Response.h"
#include "Seed.h"
#include "Text.h"
#include "TokenStore.h"

namespace {

constexpr std::string_view s_svFiles = "/drive/v2/files";
constexpr std::string_view s_svUpload = "/upload/drive/v2/files";
constexpr const char* s_pszFolder = "application/vnd.google-apps.folder";

// The scopes that reach a user's files, the old documents feeds among them.
const std::initializer_list<std::string_view> s_tabScopes = {
    "https://www.googleapis.com/auth/drive",
    "https://www.googleapis.com/auth/drive.file",
    "https://docs.google.com/feeds/",
    "https://docs.googleusercontent.com/",
};

std::string s_sNow() {
    std::time_t t = std::time(nullptr);
    std::tm tm{};
    gmtime_r(&t, &tm);
    char sz[32];
    std::strftime(sz, sizeof(sz), "%Y-%m-%dT%H:%M:%S.000Z", &tm);
    return sz;
}

void s_Invalid(STResponse& res, std::string_view svMessage, std::string_view svLocation) {
    CJsonValue item = CJsonValue::s_Object();
    item.Set("domain", CJsonValue::s_String("global"));
    item.Set("reason", CJsonValue::s_String("invalid"));
    item.Set("message", CJsonValue::s_String(std::string(svMessage)));
    item.Set("locationType", CJsonValue::s_String("parameter"));
    item.Set("location", CJsonValue::s_String(std::string(svLocation)));
    CJsonValue error = CJsonValue::s_Object();
    error.Set("errors", CJsonValue::s_Array().Push(std::move(item)));
    error.Set("code", CJsonValue::s_Int(400));
    error.Set("message", CJsonValue::s_String(std::string(svMessage)));
    res.SetJson(400, CJsonValue::s_Object().Set("error", std::move(error)));
}

void s_NotFound(STResponse& res, const std::string& sId) {
    CGoogleAccounts::s_WriteError(res, 404, "NOT_FOUND", "File not found: " + sId, "notFound", {});
}

bool s_bIContains(std::string_view sv, std::string_view svPart) {
    for (size_t i = 0; i + svPart.size() <= sv.size(); ++i)
        if (CText::s_bIEquals(sv.substr(i, svPart.size()), svPart))
            return true;
    return false;
}

// ---- the q language: a predicate over a file, or nothing when the text does not parse -----

using FPredicate = std::function<bool(const CGoogleDrive::STFile&)>;

class CQuery {
public:
    explicit CQuery(std::string_view sv) : m_sv(sv) {}

    std::optional<FPredicate> oParse() {
        auto o = oOr();
        Skip();
        if (!o || m_n != m_sv.size())
            return std::nullopt;
        return o;
    }

private:
    void Skip() {
        while (m_n < m_sv.size() && std::isspace(static_cast<unsigned char>(m_sv[m_n])))
            ++m_n;
    }
    // A keyword, as a whole word, without regard to case.
    bool bWord(std::string_view svWord) {
        Skip();
        if (m_sv.size() - m_n < svWord.size())
            return false;
        for (size_t i = 0; i < svWord.size(); ++i)
            if (std::tolower(static_cast<unsigned char>(m_sv[m_n + i])) != svWord[i])
                return false;
        size_t nEnd = m_n + svWord.size();
        if (nEnd < m_sv.size() && (std::isalnum(static_cast<unsigned char>(m_sv[nEnd])) ||
                                   m_sv[nEnd] == '_'))
            return false;
        m_n = nEnd;
        return true;
    }
    bool bSymbol(std::string_view svSymbol) {
        Skip();
        if (m_sv.substr(m_n, svSymbol.size()) != svSymbol)
            return false;
        m_n += svSymbol.size();
        return true;
    }
    std::optional<std::string> oString() {
        Skip();
        if (m_n >= m_sv.size() || m_sv[m_n] != '\'')
            return std::nullopt;
        std::string s;
        for (++m_n; m_n < m_sv.size(); ++m_n) {
            char c = m_sv[m_n];
            if (c == '\\' && m_n + 1 < m_sv.size()) {
                s += m_sv[++m_n];
            } else if (c == '\'') {
                ++m_n;
                return s;
            } else {
                s += c;
            }
        }
        return std::nullopt;
    }
    std::optional<FPredicate> oOr() {
        auto a = oAnd();
        while (a && bWord("or")) {
            auto b = oAnd();
            if (!b)
                return std::nullopt;
            a = [x = *a, y = *b](const CGoogleDrive::STFile& f) { return x(f) || y(f); };
        }
        return a;
    }
    std::optional<FPredicate> oAnd() {
        auto a = oNot();
        while (a && bWord("and")) {
            auto b = oNot();
            if (!b)
                return std::nullopt;
            a = [x = *a, y = *b](const CGoogleDrive::STFile& f) { return x(f) && y(f); };
        }
        return a;
    }
    std::optional<FPredicate> oNot() {
        if (bWord("not")) {
            auto a = oNot();
            if (!a)
                return std::nullopt;
            return [x = *a](const CGoogleDrive::STFile& f) { return !x(f); };
        }
        if (bSymbol("(")) {
            auto a = oOr();
            if (!a || !bSymbol(")"))
                return std::nullopt;
            return a;
        }
        return oTerm();
    }
    std::optional<FPredicate> oTerm() {
        // 'id' in parents
        if (auto oValue = oString()) {
            if (!bWord("in") || !bWord("parents"))
                return std::nullopt;
            return [s = *oValue](const CGoogleDrive::STFile& f) {
                for (const std::string& p : f.tabParents)
                    if (p == s)
                        return true;
                return false;
            };
        }
        for (std::string_view svFlag : {"starred", "trashed"}) {
            if (!bWord(svFlag))
                continue;
            bool bEqual = bSymbol("=");
            if (!bEqual && !bSymbol("!="))
                return std::nullopt;
            bool bValue;
            if (bWord("true"))
                bValue = true;
            else if (bWord("false"))
                bValue = false;
            else
                return std::nullopt;
            const bool bStarred = svFlag == "starred";
            return [=](const CGoogleDrive::STFile& f) {
                return ((bStarred ? f.bStarred : f.bTrashed) == bValue) == bEqual;
            };
        }
        for (std::string_view svField : {"title", "mimetype", "modifieddate"}) {
            if (!bWord(svField))
                continue;
            std::string_view svOp;
            for (std::string_view sv : {"!=", "<=", ">=", "=", "<", ">"})
                if (bSymbol(sv)) {
                    svOp = sv;
                    break;
                }
            if (svOp.empty() && bWord("contains"))
                svOp = "contains";
            if (svOp.empty() || (svOp == "contains" && svField != "title"))
                return std::nullopt;
            auto oValue = oString();
            if (!oValue)
                return std::nullopt;
            return [=, s = *oValue](const CGoogleDrive::STFile& f) {
                const std::string& sField = svField == "title"      ? f.sTitle
                                            : svField == "mimetype" ? f.sMimeType
                                                                    : f.sModified;
                if (svOp == "contains")
                    return s_bIContains(sField, s);
                int n = sField.compare(s);
                return svOp == "=" ? n == 0 : svOp == "!=" ? n != 0 : svOp == "<" ? n < 0
                       : svOp == "<=" ? n <= 0 : svOp == ">" ? n > 0 : n >= 0;
            };
        }
        return std::nullopt;
    }

    std::string_view m_sv;
    size_t m_n = 0;
};

// One store per emulator, shared by the listing and the upload rows.
std::shared_ptr<CGoogleDrive::STState> s_pState(CEmulator& emulator) {
    static std::mutex mtx;
    static std::map<CEmulator*, std::weak_ptr<CGoogleDrive::STState>> map;
    std::lock_guard lock(mtx);
    auto p = map[&emulator].lock();
    if (!p) {
        p = std::make_shared<CGoogleDrive::STState>();
        map[&emulator] = p;
    }
    return p;
}

} // namespace

std::unique_ptr<IService> CGoogleDrive::s_pCreate(CEmulator& emulator) {
    return std::make_unique<CGoogleDrive>(emulator, s_pState(emulator));
}

void CGoogleDrive::vReset() {
    std::lock_guard lock(m_pState->mtx);
    m_pState->tabFiles.clear();
    m_pState->mapSessions.clear();
    // "drive": {"files": [{"id", "user", "title", "mimeType", "parents", "starred", "trashed",
    // "modifiedDate", "content"}]}
    const CJsonValue* pSection = m_Emulator.Seed().Document().pFind("drive");
    const CJsonValue* pFiles = pSection ? pSection->pFind("files") : nullptr;
    if (!pFiles || !pFiles->bIsArray())
        return;
    for (const CJsonValue& v : pFiles->Items()) {
        STFile f;
        f.sId = v.sText("id");
        f.sUser = v.sText("user");
        f.sTitle = v.sText("title");
        f.sMimeType = v.sText("mimeType");
        if (const CJsonValue* p = v.pFind("parents"))
            for (const CJsonValue& x : p->Items())
                f.tabParents.push_back(x.sGetString());
        const CJsonValue* pStarred = v.pFind("starred");
        f.bStarred = pStarred && pStarred->bGetBool();
        const CJsonValue* pTrashed = v.pFind("trashed");
        f.bTrashed = pTrashed && pTrashed->bGetBool();
        f.sModified = v.sText("modifiedDate", "2026-01-15T09:30:00.000Z");
        f.sContent = v.sText("content");
        m_pState->tabFiles.push_back(std::move(f));
    }
}

CJsonValue CGoogleDrive::File(const STFile& f) const {
    CJsonValue v = CJsonValue::s_Object();
    v.Set("kind", CJsonValue::s_String("drive#file"));
    v.Set("id", CJsonValue::s_String(f.sId));
    v.Set("title", CJsonValue::s_String(f.sTitle));
    v.Set("mimeType", CJsonValue::s_String(f.sMimeType));
    v.Set("labels", CJsonValue::s_Object()
                        .Set("starred", CJsonValue::s_Bool(f.bStarred))
                        .Set("hidden", CJsonValue::s_Bool(false))
                        .Set("trashed", CJsonValue::s_Bool(f.bTrashed))
                        .Set("restricted", CJsonValue::s_Bool(false))
                        .Set("viewed", CJsonValue::s_Bool(true)));
    v.Set("modifiedDate", CJsonValue::s_String(f.sModified));
    CJsonValue parents = CJsonValue::s_Array();
    for (const std::string& p : f.tabParents)
        parents.Push(CJsonValue::s_Object()
                         .Set("kind", CJsonValue::s_String("drive#parentReference"))
                         .Set("id", CJsonValue::s_String(p))
                         .Set("isRoot", CJsonValue::s_Bool(false)));
    v.Set("parents", std::move(parents));
    // Google's own documents are exported, not downloaded: they have no downloadUrl.
    if (f.sMimeType.rfind("application/vnd.google-apps.", 0) != 0) {
        v.Set("downloadUrl", CJsonValue::s_String("https://www.googleapis.com/drive/v2/files/" +
                                                  f.sId + "?alt=media"));
        v.Set("fileSize", CJsonValue::s_String(std::to_string(f.sContent.size())));
    }
    return v;
}

void CGoogleDrive::vHandle(const STRequest& req, STResponse& res) {
    STGrant g;
    if (!CGoogleAccounts::s_bAuthorise(m_Emulator, req, res, s_tabScopes, &g))
        return;
    std::lock_guard lock(m_pState->mtx);
    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    const std::string sPath = req.sPath;
    if (sPath == s_svUpload) {
        std::string sSession = oQuery ? oQuery->sValue("upload_id") : std::string();
        if (req.sMethod == "POST" && sSession.empty())
            return StartUpload(req, g, res);
        if (req.sMethod == "PUT" && !sSession.empty())
            return PutUpload(req, sSession, res);
        return CGoogleApis::s_WriteNotFound(res);
    }
    if (sPath == s_svFiles && req.sMethod == "GET")
        return List(req, g, res);
    if (sPath.rfind(std::string(s_svFiles) + "/", 0) != 0)
        return CGoogleApis::s_WriteNotFound(res);
    const std::string sId = sPath.substr(s_svFiles.size() + 1);
    for (auto it = m_pState->tabFiles.begin(); it != m_pState->tabFiles.end(); ++it) {
        if (it->sId != sId || it->sUser != g.sEmail)
            continue;
        if (req.sMethod == "DELETE") {
            m_pState->tabFiles.erase(it);
            return res.SetBody(204, "", "");
        }
        if (req.sMethod == "GET") {
            if (oQuery && oQuery->sValue("alt") == "media")
                return res.SetBody(200, it->sMimeType, it->sContent);
            return res.SetJson(200, File(*it));
        }
        return CGoogleApis::s_WriteNotFound(res);
    }
    s_NotFound(res, sId);
}

void CGoogleDrive::List(const STRequest& req, const STGrant& g, STResponse& res) {
    auto oQuery = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    FPredicate fMatch = [](const STFile&) { return true; };
    if (oQuery && oQuery->bHas("q")) {
        auto oPredicate = CQuery(oQuery->sValue("q")).oParse();
        if (!oPredicate)
            return s_Invalid(res, "Invalid query", "q");
        fMatch = *oPredicate;
    }
    CJsonValue items = CJsonValue::s_Array();
    for (const STFile& f : m_pState->tabFiles)
        if (f.sUser == g.sEmail && fMatch(f))
            items.Push(File(f));
    CJsonValue v = CJsonValue::s_Object();
    v.Set("kind", CJsonValue::s_String("drive#fileList"));
    v.Set("etag", CJsonValue::s_String(CGoogleApis::s_sEtag(items.sSerialize())));
    v.Set("selfLink", CJsonValue::s_String("https://www.googleapis.com/drive/v2/files"));
    v.Set("items", std::move(items));
    res.SetJson(200, v);
}

void CGoogleDrive::StartUpload(const STRequest& req, const STGrant& g, STResponse& res) {
    auto oForm = CForm::s_oParse(req.sQuery, CForm::eLenient, nullptr);
    if (!oForm || oForm->sValue("uploadType") != "resumable")
        return s_Invalid(res, "Invalid Value", "uploadType");
    std::string sError;
    auto oBody = CJsonValue::s_oParse(req.sBody, &sError);
    if (!oBody || !oBody->bIsObject())
        return s_Invalid(res, "Parse Error", "body");
    STSession s;
    s.sUser = g.sEmail;
    s.sTitle = oBody->sText("title", "Untitled");
    s.sMimeType = req.sHeader("X-Upload-Content-Type");
    const std::string sLength = req.sHeader("X-Upload-Content-Length");
    if (!sLength.empty()) {
        char* pEnd = nullptr;
        s.nLength = std::strtoll(sLength.c_str(), &pEnd, 10);
        if (*pEnd || s.nLength < 0)
            return s_Invalid(res, "Invalid X-Upload-Content-Length", "X-Upload-Content-Length");
    }
    const std::string sSession = CText::s_sRandomToken(24);
    m_pState->mapSessions[sSession] = s;
    res.SetBody(200, "", "");
    res.AddHeader("Location", "https://www.googleapis.com/upload/drive/v2/files"
                              "?uploadType=resumable&upload_id=" + sSession);
}

void CGoogleDrive::PutUpload(const STRequest& req, const std::string& sSession, STResponse& res) {
    auto it = m_pState->mapSessions.find(sSession);
    if (it == m_pState->mapSessions.end())
        return CGoogleAccounts::s_WriteError(res, 404, "NOT_FOUND", "Upload session not found",
                                             "notFound", {});
    const STSession& s = it->second;
    if (!s.sMimeType.empty() && req.sHeader("Content-Type") != s.sMimeType)
        return s_Invalid(res, "The Content-Type does not match the announced upload type",
                         "Content-Type");
    const long long nReceived = static_cast<long long>(req.sBody.size());
    if (s.nLength >= 0 && nReceived < s.nLength) {
        // The rest is awaited: the received range, and no file yet.
        res.SetBody(308, "", "");
        if (nReceived > 0)
            res.AddHeader("Range", "bytes=0-" + std::to_string(nReceived - 1));
        return;
    }
    STFile f;
    f.sId = "0B" + std::to_string(1000000 + m_pState->nNext++) + "Upl";
    f.sUser = s.sUser;
    f.sTitle = s.sTitle;
    f.sMimeType = s.sMimeType.empty() ? "application/octet-stream" : s.sMimeType;
    f.sModified = s_sNow();
    f.sContent = req.sBody;
    m_pState->mapSessions.erase(it);
    res.SetJson(200, File(f));
    m_pState->tabFiles.push_back(std::move(f));
}
