// The connection's own script functions; the stubs come from their syntax rows.
#include "connection/GoogleConnexion.h"

#define KLL_METHODES_CGoogleConnexion_GglConnecte KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglDeconnecte KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglRequete KLL_OUI
#include "frame/KllMethodStubs.h"
