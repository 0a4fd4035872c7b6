#include "ServiceTable.h"

#include "Facebook.h"
#include "GoogleAccounts.h"
#include "GoogleApis.h"
#include "GoogleCalendar.h"
#include "GoogleContacts.h"
#include "GoogleDrive.h"
#include "GoogleMaps.h"
#include "OAuthProvider.h"
#include "Salesforce.h"

namespace {
const STServiceRow s_tabRows[] = {
    {"accounts.google.com", "", &CGoogleAccounts::s_pCreate},
    {"www.googleapis.com", "", &CGoogleApis::s_pCreate},
    {"www.googleapis.com", "/calendar/v3/", &CGoogleCalendar::s_pCreate},
    {"www.googleapis.com", "/drive/v2/", &CGoogleDrive::s_pCreate},
    {"www.googleapis.com", "/upload/drive/v2/", &CGoogleDrive::s_pCreate},
    {"www.google.com", "/m8/feeds/", &CGoogleContacts::s_pCreate},
    {"maps.googleapis.com", "", &CGoogleMaps::s_pCreate},
    {"oauth.provider.test", "", &COAuthProvider::s_pCreate},
    {"www.facebook.com", "", &CFacebookDialogue::s_pCreate},
    {"graph.facebook.com", "", &CFacebookGraph::s_pCreate},
    {"login.tenant.test", "", &COAuthProvider::s_pCreateTenant},
    {"login.salesforce.com", "", &CSalesforce::s_pCreate},
    {"test.salesforce.com", "", &CSalesforce::s_pCreate},
    {CSalesforce::ms_pszInstance, "", &CSalesforce::s_pCreate},
};
} // namespace

std::span<const STServiceRow> CServiceTable::s_Rows() {
    return s_tabRows;
}
