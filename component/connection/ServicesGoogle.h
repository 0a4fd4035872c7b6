// eSERVICESGOOGLE: the Google services a connection holds tokens for. The value indexes the
// token array of the connection and travels with every request built for that service.
#pragma once

enum eSERVICESGOOGLE : int {
    SERVICEGOOGLE_AUCUN = 0,
    SERVICEGOOGLE_AGENDA = 1,
    SERVICEGOOGLE_CONTACT = 2,
    SERVICEGOOGLE_DOCUMENTS = 3,
    SERVICEGOOGLE_STATICMAPS = 4,
    SERVICEGOOGLE_PICASA = 5,
    SERVICEGOOGLE_NB = 6,
};
