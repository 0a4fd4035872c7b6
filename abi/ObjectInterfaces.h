// The object interfaces of the host: the root of every counted object that crosses the
// boundary. Slot order is binding: the host and the component call these through the vtable.
//
// Who implements what:
//   the component: IObjetBase, IObjetComposante (its script objects), IObjetCollection and
//     IObjetCollectionModifiable (the child lists of its objects); the host calls them;
//   the host: IKLObjetComposante (its peer of a component object), IGlobalFactory (maker of
//     those peers, handed over by command 3053 selector 9), ITypeDescription (one per class of
//     the component, handed to the class's type handler), ISerialiseObjetComposante, IKLTableau
//     (script arrays); the component calls them.
//
// Ownership: an operation named vpiGetI<Interface> is a cast and gives a borrowed pointer; any
// other operation that gives a counted interface gives a new reference, unless it says otherwise.
#pragma once

class CAny;
class CCtxInfo;
class CXError;
class IDumpMemoire;
class IVM;
class IObjetValeur;
class IObjetComposante;
class IObjetCollection;
class IObjetCollectionModifiable;
class IKLObjetComposante;
class ITypeDescription;

class IInterfaceObjetBase {
public:
    virtual void vAddRef() = 0;
    virtual void vRelease() = 0;
    virtual IInterfaceObjetBase* vpiGetObjetBase() { return nullptr; }
    virtual int vbDisponible() { return 1; }
    virtual void m32EmptyMethodIInterfaceObjetBase() {}
    virtual void m33EmptyMethodIInterfaceObjetBase() {}

protected:
    ~IInterfaceObjetBase() = default;
};

// Result of the "ve" operations below that change or compare objects.
enum eRESULTATOBJET : int {
    RESULTAT_OBJET_OK = 0,
    RESULTAT_OBJET_ERREUR = 1,       // the cause is in the CXError given
    RESULTAT_OBJET_NON_SUPPORTE = 2, // the object does not offer the operation
};

// An empty base with a virtual destructor: as the first base of a class, it puts the destructor
// pair at the head of the class's own slots.
class CClasseVideInterface {
public:
    virtual ~CClasseVideInterface() = default;
};

// The object side of a script value: what the host asks of any object it holds. The casts give
// null unless the object has that side.
class IObjetBase : public IInterfaceObjetBase {
public:
    IObjetBase* vpiGetObjetBase() override { return this; }
    // The kind of object: 5 for a script object of a component; 0 unknown.
    virtual int veGetFamille() { return 0; }
    // How the host reaches the members beyond the class table: 0 no other way.
    virtual int vnGetTypeAccesseur() { return 0; }
    // Identity, not value: the script's "=" between two object references.
    virtual int vbEgaliteObjet(IObjetBase* piAutre) { return piAutre == this; }
    virtual IObjetComposante* vpiGetIObjetComposante() { return nullptr; }
    virtual IObjetCollection* vpiGetIObjetCollection() { return nullptr; }
    // Dynamic members, for records whose fields are known only at run time.
    virtual IObjetValeur* vpiGetIObjetValeur() { return nullptr; }

protected:
    ~IObjetBase() = default;
};

// The host's way of saving and rebuilding an object whose class asks for it (vbSerialise).
// Implemented by the host; the object writes and reads named values during the call only.
class ISerialiseObjetComposante {
public:
    enum EFormat : int {
        FORMAT_BINAIRE = 1,
        FORMAT_XML = 2,
        FORMAT_JSON = 3,
    };
    virtual EFormat veGetFormat() = 0;
    virtual int vbEcrit(const wchar_t* pszNom, const CAny& clValeur, CXError* pclErreur) = 0;
    // False when the name was not saved; clValeur is then untouched.
    virtual int vbLit(const wchar_t* pszNom, CAny& clValeur, CXError* pclErreur) = 0;

protected:
    ~ISerialiseObjetComposante() = default;
};

// The component side of a script object. The operations without a body are the object's own;
// the rest are offers that a class may take up.
class IObjetComposante : public IInterfaceObjetBase {
public:
    virtual int vnGetVersionIObjetComposante() { return 1; }
    virtual int vbEgaliteObjet(IObjetComposante* piAutre) = 0;
    // The host peer, borrowed; null until one was made or given.
    virtual IKLObjetComposante* vpiGetKLObjetComposante() = 0;
    // Keeps the peer, with a reference of its own; the former one is released.
    virtual void vSetKLObjetComposante(IKLObjetComposante* piKLObjet) = 0;
    // The object that serialises access across threads, borrowed; null for none.
    virtual IInterfaceObjetBase* vpiGetObjetSynchronisation() = 0;
    // The script freed the variable explicitly; the object may still be referenced elsewhere.
    virtual void vNotifieLiberationExplicite() = 0;
    // The native object as the class of piType, in pObjet; false (and null) for another class.
    virtual int vbGetObjetC(void*& pObjet, ITypeDescription* piType, int nMode,
                            CXError* pclErreur) = 0;
    virtual void* vpGetSafeObjetC(ITypeDescription* piType) = 0;
    // The description of the object's own class.
    virtual ITypeDescription* vpiGetTypeReel() = 0;
    // Bytes of native data, for the host's memory reports.
    virtual int __vnGetTailleDonnee() = 0;
    virtual eRESULTATOBJET veDumpMemoire(const wchar_t* pszNom, IDumpMemoire* piDump,
                                         void*& pContexte) = 0;
    // An error to show against this object; nOption is 0.
    virtual void vNotifieErreurInstance(IVM* piVM, CXError* pclErreur, int nOption) = 0;
    // The last script reference went; the host may still hold the object.
    virtual void vNotifieInstanceOrpheline() = 0;
    // The native object, of the class of vpiGetTypeReel().
    virtual void* vpGetObjetC() = 0;

    virtual int vbSerialisationSpecifique_OBSOLETE() { return 0; }
    virtual int vbSerialise(ISerialiseObjetComposante* /*piSerialise*/, CXError* /*pclErreur*/) {
        return 0;
    }
    virtual int vbDeserialise(ISerialiseObjetComposante* /*piSerialise*/, CXError* /*pclErreur*/) {
        return 0;
    }
    virtual void* vpGetComparaison() { return nullptr; }
    // nResultat < 0, 0, > 0 as this object orders before, with, after the value.
    virtual eRESULTATOBJET veCompareGenerique(const CAny& /*clValeur*/, int& /*nResultat*/,
                                              CXError* /*pclErreur*/) {
        return RESULTAT_OBJET_NON_SUPPORTE;
    }
    virtual void vAvantAdoptionOrpheline(CCtxInfo* /*pclCtx*/) {}
    virtual int vbAutoriseCopieCollectionVersTableau() { return 0; }
    virtual void* vpGetInterfaceC() { return nullptr; }
    // True when the class saves itself (vbSerialise) in that format.
    virtual int vbSerialisationSpecifique(ISerialiseObjetComposante::EFormat /*eFormat*/) {
        return 0;
    }
    virtual void vReleaseContexte(CCtxInfo* /*pclCtx*/) {}

protected:
    ~IObjetComposante() = default;
};

// A list of objects that the script reads by index (agenda.Evenement[i]). Indices start at 0.
class IObjetCollection : public IInterfaceObjetBase {
public:
    virtual int vnGetVersionIObjetCollection() { return 1; }
    virtual int vnGetNbElementCollection(CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    // The element's object side, borrowed: the collection holds it. Null past the end.
    virtual IObjetBase* vpiGetElementCollection(int nIndice, CCtxInfo* pclCtx,
                                                CXError* pclErreur) = 0;
    // Whether reading past the end makes a new element.
    virtual int vbElementAutoExtensible() { return 0; }
    virtual IObjetCollectionModifiable* vpiGetIObjetCollectionModifiable() { return nullptr; }
    virtual int __veOperationInutilise__() { return 0; }
    // Whether the additions report the new position through their int* argument.
    virtual int vbRetourPositionCollection() { return 1; }
    // Whether elements are handed by reference: a change made through an element read from the
    // collection is a change of the collection's element.
    virtual int vbReferenceElementCollection() { return 1; }
    // Whether writing past the end grows the collection: 0 no.
    virtual int veCollectionAutoAgrandissement() { return 0; }
    // The filters vpiPoseFiltre accepts, as a mask; 0 none.
    virtual int vnGetFiltreAutorise() { return 0; }
    // A new collection over the elements that pass, or null.
    virtual IObjetCollection* vpiPoseFiltre(int /*nFiltre*/, CCtxInfo* /*pclCtx*/,
                                            CXError* /*pclErreur*/) {
        return nullptr;
    }
    virtual int vbAutoriseFiltreCle() { return 0; }
    virtual IObjetCollection* vpiPoseFiltreCle(const CAny& /*clCle*/, CCtxInfo* /*pclCtx*/,
                                               CXError* /*pclErreur*/) {
        return nullptr;
    }

protected:
    ~IObjetCollection() = default;
};

// The editable form of a collection. The element given to an addition is the object the script
// holds; the collection takes references of its own. A non-null pnPosition receives the index
// where the element went.
class IObjetCollectionModifiable : public CClasseVideInterface, public IObjetCollection {
public:
    virtual int vnGetVersionIObjetCollectionModifiable() { return 1; }
    virtual eRESULTATOBJET veAjouteElementCollection(IObjetComposante* piElement, int* pnPosition,
                                                     CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    // Adds a new element of the collection's class, made with no argument.
    virtual eRESULTATOBJET veAjouteElementCollectionVide(int* pnPosition, CCtxInfo* pclCtx,
                                                         CXError* pclErreur) = 0;
    // Adds a new element made from the parameters the host stacked.
    virtual eRESULTATOBJET veAjouteElementCollectionParametre(int* pnPosition, CCtxInfo* pclCtx,
                                                              CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veInsereElementCollection(int nIndice, IObjetComposante* piElement,
                                                     CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veInsereElementCollectionVide(int nIndice, CCtxInfo* pclCtx,
                                                         CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veInsereElementCollectionParametre(int nIndice, CCtxInfo* pclCtx,
                                                              CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veSupprimeElementCollection(int nIndice, CCtxInfo* pclCtx,
                                                       CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veSupprimeToutElementCollection(CCtxInfo* pclCtx,
                                                           CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veEchangeElementCollection(int nIndice1, int nIndice2, CCtxInfo* pclCtx,
                                                      CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veDeplaceElementCollection(int nDepuis, int nVers, CCtxInfo* pclCtx,
                                                      CXError* pclErreur) = 0;
};

// The host's peer of a component object: the handle its variables hold. Made by the global
// factory; the object keeps it (vSetKLObjetComposante) and releases it when destroyed.
// vpiGetObjetBase() gives the object the peer stands for, borrowed.
class IKLObjetComposante : public IInterfaceObjetBase {
public:
    virtual int vnGetVersionIKLObjetComposante() = 0;
    // As IObjetComposante::vbGetObjetC, the host choosing among the classes it knows.
    virtual int vbGetObjetC(void*& pObjet, ITypeDescription* piType, int nMode,
                            CXError* pclErreur) = 0;
    virtual void vNotifieInstanceOrpheline() = 0;
    // An error to show against the object (the fourth operation of the peer); nOption is 0.
    virtual void vNotifieErreurInstance(IVM* piVM, int nOption, CXError* pclErreur) = 0;

protected:
    ~IKLObjetComposante() = default;
};

// The host's factory of peers. Lives as long as the host; not counted.
class IGlobalFactory {
public:
    // 1 or less: a factory of the old kind, for which the component initialises no type.
    virtual int vnGetVersion() = 0;
    // A new peer for the object, whose IObjetBase side is given; null with the cause in the error.
    virtual IKLObjetComposante* vpiCreeKLObjetComposante(IObjetBase* piObjet,
                                                         CXError* pclErreur) = 0;

protected:
    ~IGlobalFactory() = default;
};

// The host's description of one class of the component, handed to the class's type handler
// before the class is first used and kept until the component ends; not counted. Two objects
// are of the same class exactly when their descriptions are the same pointer.
class ITypeDescription {
public:
    // The script name of the class, as the class table writes it.
    virtual const wchar_t* vpszGetNom() = 0;
    // The class's identifier in the component's class table.
    virtual int vnGetIdentifiant() = 0;

protected:
    ~ITypeDescription() = default;
};

// A script array, made by IVM::pclAlloueTableau and counted. Indices start at 0. Elements read
// and write as values: text as type 16, objects as type 111 with their IObjetBase side (the array
// keeps a reference of its own).
class IKLTableau : public IInterfaceObjetBase {
public:
    // Fixes the element class (null for elements that are not objects); the integers are 0.
    virtual int vbInitialise(ITypeDescription* piTypeElement, int nReserve1, int nReserve2,
                             IVM* piVM, CXError* pclErreur) = 0;
    virtual int vnGetNbElement() = 0;
    // New elements are empty values of the element type; removed ones are released.
    virtual int vbRedimensionne(int nNbElement, CXError* pclErreur) = 0;
    virtual int vbGetElement(int nIndice, CAny& clValeur, CXError* pclErreur) = 0;
    // The value is converted to the element type; false when it cannot be.
    virtual int vbSetElement(int nIndice, const CAny& clValeur, CXError* pclErreur) = 0;
    // Replaces the whole content by a copy of the source's.
    virtual int vbCopie(IKLTableau* piSource, CXError* pclErreur) = 0;

protected:
    ~IKLTableau() = default;
};
