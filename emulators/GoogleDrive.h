// Drive version 2 on www.googleapis.com: /drive/v2/files (the list with its q search language,
// get, download with alt=media, delete) and /upload/drive/v2/files (the resumable session: its
// start with the title and the announced type and length, then the PUT of the bytes, a short
// body answered 308 with its Range). Files hold parents, labels, a MIME type and their bytes;
// the seed's "drive" section gives each user's files. Both paths share one store.
#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Service.h"

class CEmulator;
class CJsonValue;
struct STGrant;

class CGoogleDrive : public IService {
public:
    struct STFile {
        std::string sId;
        std::string sUser; // the owner's e-mail
        std::string sTitle;
        std::string sMimeType;
        std::vector<std::string> tabParents;
        bool bStarred = false;
        bool bTrashed = false;
        std::string sModified; // RFC 3339, UTC
        std::string sContent;
    };
    struct STSession {
        std::string sUser;
        std::string sTitle;
        std::string sMimeType;
        long long nLength = -1;
    };
    struct STState {
        std::mutex mtx;
        std::vector<STFile> tabFiles;
        std::map<std::string, STSession> mapSessions;
        long long nNext = 1;
    };

    CGoogleDrive(CEmulator& emulator, std::shared_ptr<STState> pState)
        : m_Emulator(emulator), m_pState(std::move(pState)) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);
    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

private:
    void List(const STRequest& req, const STGrant& g, STResponse& res);
    void StartUpload(const STRequest& req, const STGrant& g, STResponse& res);
    void PutUpload(const STRequest& req, const std::string& sSession, STResponse& res);
    CJsonValue File(const STFile& f) const;

    CEmulator& m_Emulator;
    std::shared_ptr<STState> m_pState;
};
