// Compiled, not run: the stub generator's answer to a row that names a member the class does
// not have. Built as it stands, the rows below compile; with KVGGL_PROBE_BAD_ROW the extra
// row must stop the build, which the test of this file checks by the compiler's message.
#include "connection/GoogleConnexion.h"
#include "frame/KllMethodStubs.h"

KLL_STUB_METHODE(CGoogleConnexion, GglRequete, 90, BUFFER, OBJ(gglConnexion), INT, TEXT)
KLL_STUB_METHODE(CGoogleConnexion, GglRequete, 91, BUFFER, OBJ(gglConnexion), INT, TEXT, TEXT)
#ifdef KVGGL_PROBE_BAD_ROW
KLL_STUB_METHODE(CGoogleConnexion, GglRequeteInexistante, 0, BUFFER, OBJ(gglConnexion), INT)
#endif
