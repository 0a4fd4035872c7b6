// The stubs of the connection's script functions, named by the syntax rows of
// frame/Functions.def. The shorter syntaxes pass the defaults written here: GglRequete
// without a method is a GET.
#include "connection/GoogleConnexion.h"
#include "frame/KllStubs.h"

KLL_METHOD_STUB(CGoogleConnexion, GglConnecte, 0) {
    KllRetourne(pclCtx, 1, KLL_OBJET(CGoogleConnexion)->GglConnecte(pclCtx, pclErreur));
}

KLL_METHOD_STUB(CGoogleConnexion, GglConnecte, 1) {
    KllRetourne(
        pclCtx, 1,
        KLL_OBJET(CGoogleConnexion)->GglConnecte(pclCtx, pclErreur, KllArgEntier(ppArguments, 0)));
}

// No signature: these return nothing.
KLL_METHOD_STUB(CGoogleConnexion, GglDeconnecte, 0) {
    KLL_OBJET(CGoogleConnexion)->GglDeconnecte(pclCtx, pclErreur);
}

KLL_METHOD_STUB(CGoogleConnexion, GglDeconnecte, 1) {
    KLL_OBJET(CGoogleConnexion)->GglDeconnecte(pclCtx, pclErreur, KllArgEntier(ppArguments, 0));
}

KLL_METHOD_STUB(CGoogleConnexion, GglRequete, 0) {
    KllRetourne(pclCtx, 19,
                KLL_OBJET(CGoogleConnexion)
                    ->GglRequete(pclCtx, pclErreur, KllArgEntier(ppArguments, 0),
                                 KllArgTexte(ppArguments, 1), 1));
}

KLL_METHOD_STUB(CGoogleConnexion, GglRequete, 1) {
    KllRetourne(pclCtx, 19,
                KLL_OBJET(CGoogleConnexion)
                    ->GglRequete(pclCtx, pclErreur, KllArgEntier(ppArguments, 0),
                                 KllArgTexte(ppArguments, 1), KllArgEntier(ppArguments, 2)));
}

KLL_METHOD_STUB(CGoogleConnexion, GglRequete, 2) {
    KllRetourne(pclCtx, 19,
                KLL_OBJET(CGoogleConnexion)
                    ->GglRequete(pclCtx, pclErreur, KllArgEntier(ppArguments, 0),
                                 KllArgTexte(ppArguments, 1), KllArgTexte(ppArguments, 2), 1));
}

KLL_METHOD_STUB(CGoogleConnexion, GglRequete, 3) {
    KllRetourne(pclCtx, 19,
                KLL_OBJET(CGoogleConnexion)
                    ->GglRequete(pclCtx, pclErreur, KllArgEntier(ppArguments, 0),
                                 KllArgTexte(ppArguments, 1), KllArgTexte(ppArguments, 2),
                                 KllArgEntier(ppArguments, 3)));
}
