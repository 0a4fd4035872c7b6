#include "ServiceTable.h"

#include "GoogleAccounts.h"
#include "OAuthProvider.h"

namespace {
const STServiceRow s_tabRows[] = {
    {"accounts.google.com", "", &CGoogleAccounts::s_pCreate},
    {"oauth.provider.test", "", &COAuthProvider::s_pCreate},
};
} // namespace

std::span<const STServiceRow> CServiceTable::s_Rows() {
    return s_tabRows;
}
