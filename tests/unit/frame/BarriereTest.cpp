// The exception barrier of the C boundary: what a body throws becomes an error of the call, and
// a body that answers a value answers the failure value instead.
#include "frame/KllBarriere.h"

#include "XError.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

struct STCas {
    const char* pszNom;
    void (*pfnLance)();
    unsigned nCode;            // 100 for the error with no memory, else 0
    const wchar_t* pszDebug;   // what the debug text holds
};
const STCas gtabCas[] = {
    {"bad_alloc", [] { throw std::bad_alloc(); }, 100, L""},
    {"runtime_error", [] { throw std::runtime_error("boom"); }, 0, L"##internal error: boom##"},
    {"anything", [] { throw 42; }, 0, L"##internal error: unknown exception##"},
};

class Barriere : public testing::TestWithParam<STCas> {};

TEST_P(Barriere, LExceptionDevientUneErreur) {
    CXError clErreur;
    const int n = KllSousBarriere(&clErreur, -1, [] {
        GetParam().pfnLance();
        return 7;
    });
    EXPECT_EQ(n, -1);
    EXPECT_EQ(clErreur.nGetErrorLevel(), ELEVEL_GRAVE);
    EXPECT_EQ(clErreur.nGetUserErrorCode(), GetParam().nCode);
    EXPECT_NE(std::wstring(clErreur.pszGetDebugMessage()).find(GetParam().pszDebug),
              std::wstring::npos);
}
INSTANTIATE_TEST_SUITE_P(Frame, Barriere, testing::ValuesIn(gtabCas),
                         [](const auto& info) { return std::string(info.param.pszNom); });

TEST(Barriere, UnCorpsSansExceptionPasseTelQuel) {
    CXError clErreur;
    EXPECT_EQ(KllSousBarriere(&clErreur, -1, [] { return 7; }), 7);
    EXPECT_TRUE(clErreur.bEstPropre());
    KllSousBarriere(nullptr, [] { throw std::runtime_error("no error object: dropped"); });
}

} // namespace
