// A request body is whole or refused: when memory runs out while a piece of it is kept or
// copied, the request says so and gives no bytes, instead of a shorter body that would go out
// as if it were the real one.
#include "connection/HTTPRequete.h"

#include "StrMemAlloc.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// The C library's allocator that refuses from its Nth request on.
class CAllocateurQuiCede final : public IStrMemAlloc {
public:
    explicit CAllocateurQuiCede(int nAvantEchec) : m_nReste(nAvantEchec) {}
    void* vpAlloue(size_t n) override { return bAccorde() ? std::malloc(n) : nullptr; }
    void* vpRealloue(void* p, size_t n) override {
        return bAccorde() ? std::realloc(p, n) : nullptr;
    }
    void vLibere(void* p) override { std::free(p); }

private:
    bool bAccorde() { return m_nReste-- > 0; }
    int m_nReste;
};

struct CAllocateurEnPlace {
    explicit CAllocateurEnPlace(IStrMemAlloc* pi)
        : m_piAvant(std::exchange(CInformationModule::ms_piStrMemAlloc, pi)) {}
    ~CAllocateurEnPlace() { CInformationModule::ms_piStrMemAlloc = m_piAvant; }
    IStrMemAlloc* m_piAvant;
};

unsigned char gabyUn[] = "first piece,";
unsigned char gabyDeux[] = "second piece";

TEST(CorpsEntier, UneCopieQuiPerdUnMorceauNeDonneRien) {
    // The second piece's copy is refused: the first copy succeeds, the next request fails.
    CAllocateurQuiCede clAlloc(1);
    CHTTPRequete clSource(SERVICEGOOGLE_AGENDA, L"https://example.test/", HTTPCT_GOOGLE_INCONNU);
    clSource.AjouteDonnees(gabyUn, sizeof(gabyUn) - 1);
    clSource.AjouteDonnees(gabyDeux, sizeof(gabyDeux) - 1);
    unsigned long n = 0;
    ASSERT_NE(clSource.pGetDonnees(&n), nullptr);
    ASSERT_EQ(n, sizeof(gabyUn) + sizeof(gabyDeux) - 2);

    CAllocateurEnPlace clEnPlace(&clAlloc);
    CHTTPRequete clCopie(clSource);
    EXPECT_FALSE(clCopie.bDonneesIntactes());
    EXPECT_EQ(clCopie.pGetDonnees(&n), nullptr);
    EXPECT_EQ(n, 0u) << "a partial body was given out";
}

TEST(CorpsEntier, UnMorceauRefuseAuDepartRendLeCorpsIncomplet) {
    CHTTPRequete clRequete(SERVICEGOOGLE_AGENDA, L"https://example.test/", HTTPCT_GOOGLE_INCONNU);
    clRequete.AjouteDonnees(gabyUn, sizeof(gabyUn) - 1);
    {
        CAllocateurQuiCede clAlloc(0);
        CAllocateurEnPlace clEnPlace(&clAlloc);
        clRequete.AjouteDonnees(gabyDeux, sizeof(gabyDeux) - 1);
    }
    unsigned long n = 1;
    EXPECT_FALSE(clRequete.bDonneesIntactes());
    EXPECT_EQ(clRequete.pGetDonnees(&n), nullptr);
    EXPECT_EQ(n, 0u);
}

} // namespace
