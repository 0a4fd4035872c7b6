// The store over SQLite: values by section and key, defaults, surviving a restart, the file's
// mode and journal, where the file goes, and failures that say why.
#include "DataServiceErrors.h"
#include "HostStoreService.h"
#include "Ref.h"
#include "Utf8.h"
#include "XError.h"

#include <gtest/gtest.h>

#include <ostream>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class StoreTest : public testing::Test {
protected:
    void SetUp() override {
        char szTemplate[] = "/tmp/kvggl-store-XXXXXX";
        ASSERT_NE(mkdtemp(szTemplate), nullptr);
        m_sDirectory = szTemplate;
    }
    void TearDown() override { fs::remove_all(m_sDirectory); }

    CRef<CHostStoreService> clOpen(const std::string& sPath) {
        return CRef<CHostStoreService>::Adopt(new CHostStoreService(sPath));
    }
    // The value read, or "<failed>".
    static std::wstring s_sRead(IPersistance& clStore, const wchar_t* pszSection,
                                const wchar_t* pszKey, const wchar_t* pszDefault = L"") {
        wchar_t* psz = nullptr;
        CXError clError;
        if (!clStore.vbLit(pszSection, pszKey, pszDefault, &psz, &clError)) {
            EXPECT_EQ(psz, nullptr);
            return L"<failed>";
        }
        std::wstring s = psz;
        clStore.vLibere(psz);
        return s;
    }

    std::string m_sDirectory;
};

TEST_F(StoreTest, WritesReadsAndSurvivesARestart) {
    const std::string sPath = m_sDirectory + "/sub/dir/store.db";
    const std::wstring sRecords = L"first\r\nsecond \u00e9\U0001F600\r\n";
    {
        CRef<CHostStoreService> clStore = clOpen(sPath);
        CXError clError;
        clStore->vEcrit(L"KVGGL", L"KV_GGL_ACCOUNTS", L"old", &clError);
        clStore->vEcrit(L"KVGGL", L"KV_GGL_ACCOUNTS", sRecords.c_str(), &clError);
        clStore->vEcrit(L"OTHER", L"KV_GGL_ACCOUNTS", L"elsewhere", &clError);
        clStore->vEcrit(L"KVGGL", L"EMPTY", nullptr, &clError);
        EXPECT_TRUE(clError.bEstPropre()) << KVUtf8::VersUtf8(clError.pszGetUserMessage());
        EXPECT_EQ(s_sRead(*clStore, L"KVGGL", L"KV_GGL_ACCOUNTS"), sRecords);
    }
    // A new service over the same file: what was written is there.
    CRef<CHostStoreService> clStore = clOpen(sPath);
    EXPECT_EQ(s_sRead(*clStore, L"KVGGL", L"KV_GGL_ACCOUNTS"), sRecords);
    EXPECT_EQ(s_sRead(*clStore, L"OTHER", L"KV_GGL_ACCOUNTS"), L"elsewhere");
    EXPECT_EQ(s_sRead(*clStore, L"KVGGL", L"EMPTY", L"default"), L"");
    EXPECT_EQ(s_sRead(*clStore, L"KVGGL", L"MISSING", L"default"), L"default");
    EXPECT_EQ(s_sRead(*clStore, L"KVGGL", L"MISSING", nullptr), L"");
    EXPECT_EQ(s_sRead(*clStore, L"kvggl", L"KV_GGL_ACCOUNTS", L"d"), L"d") << "names are exact";
    clStore->vLibere(nullptr);
}

TEST_F(StoreTest, PrivateFileInWriteAheadMode) {
    const std::string sPath = m_sDirectory + "/new/store.db";
    mode_t nFormer = umask(0);
    CRef<CHostStoreService> clStore = clOpen(sPath);
    CXError clError;
    clStore->vEcrit(L"S", L"K", L"V", &clError);
    umask(nFormer);
    ASSERT_TRUE(clError.bEstPropre());
    struct stat st {};
    ASSERT_EQ(stat(sPath.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    ASSERT_EQ(stat((m_sDirectory + "/new").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0700u);
    // The journal of WAL mode sits beside the file while it is open, as private as the file.
    ASSERT_EQ(stat((sPath + "-wal").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
}

TEST_F(StoreTest, AnExistingFileIsMadePrivate) {
    const std::string sPath = m_sDirectory + "/store.db";
    FILE* pFile = std::fopen(sPath.c_str(), "w");
    ASSERT_NE(pFile, nullptr);
    std::fclose(pFile);
    ASSERT_EQ(chmod(sPath.c_str(), 0644), 0);
    CRef<CHostStoreService> clStore = clOpen(sPath);
    EXPECT_EQ(s_sRead(*clStore, L"S", L"K", L"d"), L"d");
    struct stat st {};
    ASSERT_EQ(stat(sPath.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
}

// The store never goes through a symbolic link: its target would be made private, or written.
TEST_F(StoreTest, NoLinkFollowed) {
    const std::string sTarget = m_sDirectory + "/target";
    std::fclose(std::fopen(sTarget.c_str(), "w"));
    ASSERT_EQ(chmod(sTarget.c_str(), 0644), 0);
    ASSERT_EQ(symlink(sTarget.c_str(), (m_sDirectory + "/link.db").c_str()), 0);
    CXError clLink;
    clOpen(m_sDirectory + "/link.db")->vEcrit(L"S", L"K", L"V", &clLink);
    EXPECT_NE(std::wstring(clLink.pszGetUserMessage()).find(L"symbolic link"), std::wstring::npos)
        << KVUtf8::VersUtf8(clLink.pszGetUserMessage());
    struct stat st {};
    ASSERT_EQ(stat(sTarget.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u) << "the link's target keeps its mode";
    EXPECT_EQ(st.st_size, 0) << "and its bytes";
}

TEST_F(StoreTest, AReadOnlyStoreIsRead) {
    if (geteuid() == 0)
        GTEST_SKIP() << "file modes do not bind the superuser";
    const std::string sPath = m_sDirectory + "/readonly.db";
    {
        CXError clError;
        clOpen(sPath)->vEcrit(L"S", L"K", L"kept", &clError);
        ASSERT_TRUE(clError.bEstPropre());
    }
    ASSERT_EQ(chmod(sPath.c_str(), 0400), 0);
    CRef<CHostStoreService> clStore = clOpen(sPath);
    EXPECT_EQ(s_sRead(*clStore, L"S", L"K"), L"kept");
    CXError clWrite;
    clStore->vEcrit(L"S", L"K", L"new", &clWrite);
    EXPECT_FALSE(clWrite.bEstPropre()) << "writing a read-only store fails";
}

TEST_F(StoreTest, FailuresSayWhy) {
    // A path through a file: the directory cannot be made.
    const std::string sFile = m_sDirectory + "/plain";
    std::fclose(std::fopen(sFile.c_str(), "w"));
    CRef<CHostStoreService> clStore = clOpen(sFile + "/store.db");
    CXError clError;
    clStore->vEcrit(L"S", L"K", L"V", &clError);
    EXPECT_EQ(clError.nGetUserErrorCode(), DATASERVICE_STORE_OPEN);
    EXPECT_NE(std::wstring(clError.pszGetUserMessage()).find(L"cannot be created"),
              std::wstring::npos);
    wchar_t* psz = reinterpret_cast<wchar_t*>(1);
    CXError clReadError;
    EXPECT_FALSE(clStore->vbLit(L"S", L"K", L"d", &psz, &clReadError));
    EXPECT_EQ(psz, nullptr);
    EXPECT_EQ(clReadError.nGetErrorLevel(), ELEVEL_ERREUR);
    // A file that is no database.
    const std::string sJunk = m_sDirectory + "/junk.db";
    FILE* pFile = std::fopen(sJunk.c_str(), "w");
    std::fputs("this is not a database file, not at all, and it is long enough to tell", pFile);
    std::fclose(pFile);
    CXError clJunk;
    clOpen(sJunk)->vEcrit(L"S", L"K", L"V", &clJunk);
    EXPECT_EQ(clJunk.nGetUserErrorCode(), DATASERVICE_STORE_OPEN);
    EXPECT_NE(std::wstring(clJunk.pszGetUserMessage()).find(L"not a database"), std::wstring::npos)
        << KVUtf8::VersUtf8(clJunk.pszGetUserMessage());
    // Missing names.
    CXError clArgument;
    clOpen(m_sDirectory + "/ok.db")->vEcrit(nullptr, L"K", L"V", &clArgument);
    EXPECT_EQ(clArgument.nGetUserErrorCode(), DATASERVICE_STORE_ARGUMENT);
}

struct STPathCase {
    const char* pszName;
    std::map<std::string, std::string> mapVariables;
    const char* pszExpected;
};
// Cases go by their name in test listings.
void PrintTo(const STPathCase& stCase, std::ostream* pOut) {
    *pOut << stCase.pszName;
}

const STPathCase gtabPaths[] = {
    {"Override", {{"KVGGL_STORE", "/x/s.db"}, {"XDG_DATA_HOME", "/d"}, {"HOME", "/h"}}, "/x/s.db"},
    {"DataHome", {{"XDG_DATA_HOME", "/d"}, {"HOME", "/h"}}, "/d/kvggl/store.db"},
    {"RelativeDataHomeIgnored",
     {{"XDG_DATA_HOME", "rel"}, {"HOME", "/h"}},
     "/h/.local/share/kvggl/store.db"},
    {"Home", {{"HOME", "/h"}}, "/h/.local/share/kvggl/store.db"},
    {"EmptyOverrideIgnored",
     {{"KVGGL_STORE", ""}, {"HOME", "/h"}},
     "/h/.local/share/kvggl/store.db"},
    {"Nothing", {}, ""},
};

class StorePath : public testing::TestWithParam<STPathCase> {};

TEST_P(StorePath, DefaultPlace) {
    const auto& mapVariables = GetParam().mapVariables;
    std::string sPath = CHostStoreService::s_sDefaultPath([&](const char* pszName) {
        auto it = mapVariables.find(pszName);
        return it == mapVariables.end() ? nullptr : it->second.c_str();
    });
    EXPECT_EQ(sPath, GetParam().pszExpected);
}

INSTANTIATE_TEST_SUITE_P(Variables, StorePath, testing::ValuesIn(gtabPaths),
                         [](const auto& info) { return std::string(info.param.pszName); });

} // namespace
