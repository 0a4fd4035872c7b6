// The calendar's script functions; the stubs come from their syntax rows.
#include "calendar/GoogleAgenda.h"
#include "connection/GoogleConnexion.h"

#define KLL_METHODES_CGoogleConnexion_GglListeAgenda KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglRecupereAgenda KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglRemplitAgenda KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglRemplitAgendaParRequete KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglEcrit_0 KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglSupprime_1 KLL_OUI
#include "frame/KllMethodStubs.h"
