// The connection's two map functions; the stubs come from their syntax rows.
#include "connection/GoogleConnexion.h"
#include "maps/GoogleParametre.h"
#include "maps/GooglePoint.h"

#include "MemoImage.h"

#define KLL_METHODES_CGoogleConnexion_GglRecupereCarte KLL_OUI
#define KLL_METHODES_CGoogleConnexion_GglAdresseVersCoordonnees KLL_OUI
#include "frame/KllMethodStubs.h"
