// The change state of a JSON-backed object: what its next commit sends.
#pragma once

enum eEtatObjet : int {
    ETAT_SYNCHRONISE = 0,  // equals the server's copy
    ETAT_MODIFIE = 1,      // changed since it was read
    ETAT_A_CREER = 2,      // not on the server
    ETAT_A_SUPPRIMER = 3,  // to be removed
    ETAT_NEUF_ATTACHE = 4, // empty object added to a collection
    ETAT_NEUF = 5,         // as constructed
};
