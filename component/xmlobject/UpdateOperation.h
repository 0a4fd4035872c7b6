// IUpdateOperation: one pending operation on an entry (an addition, a change, a deletion),
// queued by setters and collections and run when the script saves.
#pragma once
#include "XError.h"

class CGoogleConnexion;
class CXmlObjectMulti;
class IVM;

// A bit mask.
enum eUPDATEOPS : int {
    UPDATEOPS_AJOUT = 1,
    UPDATEOPS_MODIF = 2,
    UPDATEOPS_SUPPR = 4,
    UPDATEOPS_VOID = 8,
};

class IUpdateOperation : public CKVUnknown {
public:
    virtual void operator()(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) = 0;
    // The entry that is sent.
    virtual CXmlObjectMulti* pclGetObjet() = 0;
    virtual eUPDATEOPS eGetOperationId() = 0;
    // The same operation on a copy of the entry: pclConteneur holds pclObjet (null for the
    // container itself). One reference held.
    virtual IUpdateOperation* vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) = 0;
    // The entry that went out has a queue of its own to run straight after it.
    virtual bool vbRecursif() = 0;
    // Another operation runs in place of this one from now on.
    virtual void vRemplace(IUpdateOperation* piAutre) = 0;

    void vAddRef() { dwAddRef(); }
    void vRelease() { dwRelease(); }

protected:
    IUpdateOperation() : CKVUnknown(1) {}
};
