#include "ServiceTable.h"

#include "GoogleAccounts.h"
#include "GoogleApis.h"
#include "GoogleCalendar.h"
#include "GoogleMaps.h"
#include "OAuthProvider.h"

namespace {
const STServiceRow s_tabRows[] = {
    {"accounts.google.com", "", &CGoogleAccounts::s_pCreate},
    {"www.googleapis.com", "", &CGoogleApis::s_pCreate},
    {"www.googleapis.com", "/calendar/v3/", &CGoogleCalendar::s_pCreate},
    {"maps.googleapis.com", "", &CGoogleMaps::s_pCreate},
    {"oauth.provider.test", "", &COAuthProvider::s_pCreate},
};
} // namespace

std::span<const STServiceRow> CServiceTable::s_Rows() {
    return s_tabRows;
}
