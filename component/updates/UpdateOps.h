// The operations of an entry's queue: an addition (POST of a new entry to its feed), a change
// (PUT of the entry to its "edit" link), a deletion (DELETE of that link), and an operation
// that does nothing. Each builds its XML and its request and tells success from failure; a
// failure leaves its error and the operation stays queued.
#pragma once
#include "xmlobject/UpdateOperation.h"

#include "connection/ServicesGoogle.h"

#include "TString.h"
#include "XYString.h"

class CHTTPResponse;
class IDocumentXML;
class INoeudXML;

namespace FctFind {
class IFinder;
}

namespace UpdateOps {

class COperationBase : public IUpdateOperation {
public:
    void operator()(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) override;
    CXmlObjectMulti* pclGetObjet() override { return m_pclObjet; }
    eUPDATEOPS eGetOperationId() override { return m_eOperation; }
    bool vbRecursif() override { return m_pclObjet != m_pclConteneur; }
    void vRemplace(IUpdateOperation* piAutre) override;

    CXmlObjectMulti* pclGetConteneur() const { return m_pclConteneur; }
    eSERVICESGOOGLE eGetService() const { return m_eService; }

protected:
    // bReference: the operation holds a reference on the object while it lives.
    COperationBase(eUPDATEOPS eOperation, eSERVICESGOOGLE eService, CXmlObjectMulti* pclConteneur,
                   CXmlObjectMulti* pclObjet, bool bReference);
    ~COperationBase() override;

    // The feed of the container ("alternate" link), the entry's own "edit" link.
    virtual CTString _vclGetUrlAjout();
    virtual CTString _vclGetUrlModif();
    virtual CTString _vclGetUrlSuppr() { return _vclGetUrlModif(); }
    virtual void _vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) = 0;

    // The href of the first link the finder accepts in the object's "link" list; "" for none.
    static CTString __clGetUrl(CXmlObjectMulti* pclObjet, FctFind::IFinder* pclFinder);
    // A new document whose root "entry" carries the namespace attributes; null when the host
    // has no XML service. The root in *ppiRacine, a reference of its own.
    static IDocumentXML* _piNouvelleEntree(INoeudXML** ppiRacine);
    // The request with the entry's XML as its Atom body, sent.
    CHTTPResponse _clEnvoieXml(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur,
                               const CTString& sURL, INoeudXML* piRacine, int eMethode);

    eUPDATEOPS m_eOperation;
    CXmlObjectMulti* m_pclObjet;
    CXmlObjectMulti* m_pclConteneur;
    eSERVICESGOOGLE m_eService;
    IUpdateOperation* m_piRemplacant = nullptr;

private:
    bool m_bReference;
};

// An entry added to its container's feed; the entry holds a reference unless it is the
// container itself.
class CAjout : public COperationBase {
public:
    CAjout(eSERVICESGOOGLE eService, CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet);
    IUpdateOperation* vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) override;

protected:
    void _vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) override;
};

// A root entry posted to the feed URL its class gives.
class CAjoutMoiMeme final : public CAjout {
public:
    CAjoutMoiMeme(eSERVICESGOOGLE eService, CXmlObjectMulti* pclObjet, const wchar_t* pszURL)
        : CAjout(eService, pclObjet, pclObjet), m_sURL(pszURL) {}
    IUpdateOperation* vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) override;

protected:
    CTString _vclGetUrlAjout() override { return m_sURL; }

private:
    CTString m_sURL;
};

class CModif final : public COperationBase {
public:
    CModif(eSERVICESGOOGLE eService, CXmlObjectMulti* pclObjet)
        : COperationBase(UPDATEOPS_MODIF, eService, pclObjet, pclObjet, false) {}
    IUpdateOperation* vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) override;

protected:
    void _vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) override;
};

class CSuppr final : public COperationBase {
public:
    CSuppr(eSERVICESGOOGLE eService, CXmlObjectMulti* pclObjet)
        : COperationBase(UPDATEOPS_SUPPR, eService, pclObjet, pclObjet, true) {}
    IUpdateOperation* vpclCopie(CXmlObjectMulti* pclConteneur, CXmlObjectMulti* pclObjet) override;
    bool vbRecursif() override { return false; }
    // A header sent with the deletion, such as "If-Match: *" for a photo.
    void SetEntete(const wchar_t* pszNom, const wchar_t* pszValeur) {
        m_sNomEntete = pszNom;
        m_sValeurEntete = pszValeur;
    }

protected:
    void _vDoOperation(CGoogleConnexion* pclConnexion, IVM* piVM, CXError* pclErreur) override;

private:
    CXYString<wchar_t> m_sNomEntete;
    CXYString<wchar_t> m_sValeurEntete;
};

// Does nothing whatever is asked: the stand-in that neutralises an operation already done.
class CVoid final : public IUpdateOperation {
public:
    void operator()(CGoogleConnexion*, IVM*, CXError*) override {}
    CXmlObjectMulti* pclGetObjet() override { return nullptr; }
    eUPDATEOPS eGetOperationId() override { return UPDATEOPS_VOID; }
    IUpdateOperation* vpclCopie(CXmlObjectMulti*, CXmlObjectMulti*) override { return new CVoid; }
    bool vbRecursif() override { return false; }
    void vRemplace(IUpdateOperation*) override {}
};

} // namespace UpdateOps
