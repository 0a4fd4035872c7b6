// IHTTP: the host's HTTP and SOAP service, registry name "HTTP". The host implements it; the
// component asks ILibShop for it once per connection and calls it for every exchange.
// IEntetesHTTP, the header set of a request, is made by the service and filled by the
// component. CParametresHTTPRequete is the record of one request: the component writes it, the
// host reads it. Slot order and the record's layout are binding.
//
// The service performs one exchange at a time, synchronously, and never follows a redirect
// itself: a 3xx is an answer like any other.
#pragma once
#include "KLBIN.h"
#include "ObjectInterfaces.h"
#include "XYString.h"

#include <cstddef>
#include <cstdint>

class CAny;
class CXError;
class IVM;
struct STManipAUB;

inline constexpr wchar_t gszServiceHTTP[] = L"HTTP";

// The verb of a request; 0, 5 and values above 6 are not verbs.
enum eMETHODEHTTP : int {
    METHODE_HTTP_GET = 1,
    METHODE_HTTP_POST = 2,
    METHODE_HTTP_PUT = 3,
    METHODE_HTTP_DELETE = 4,
    METHODE_HTTP_PATCH = 6,
};

// What IHTTP::vbDonneResultat reads of the last answer.
enum eRESULTATHTTP : int {
    RESULTAT_HTTP_ENTETE = 1,  // the response head as wide text (16), status line first,
                               // lines ended by "\r\n"
    RESULTAT_HTTP_MESSAGE = 2, // the body as bytes (28), as received once decompressed
    RESULTAT_HTTP_CODE = 3,    // the status as an integer (8)
};

// What IHTTP::vbSoapDonneResultat reads of the last SOAP answer.
enum eSOAPResultat : int {
    SOAP_RESULTAT_REPONSE = 1, // the whole reply as received: with nOption 1 as narrow UTF-8
                               // text (19), with 0 as bytes (28)
};

// The parts of the last SOAP fault that IHTTP::vbSoapErreur reads.
enum eSOAPErreur : int {
    SOAP_ERREUR_CODE = 1,    // faultcode
    SOAP_ERREUR_MESSAGE = 2, // faultstring
};

// Headers of one request, in the order added. Counted.
class IEntetesHTTP : public IInterfaceObjetBase {
public:
    // Adds a header; one of the same name already there stays.
    virtual void vAjoute(const wchar_t* pszNom, const wchar_t* pszValeur) = 0;
    virtual int vnGetNbEntete() = 0;
    // Texts held by the set; "" past the end.
    virtual const wchar_t* vpszGetNom(int nIndice) = 0;
    virtual const wchar_t* vpszGetValeur(int nIndice) = 0;

protected:
    ~IEntetesHTTP() = default;
};

// One request as it crosses to the host. Every writer starts from the values below; the host
// reads the fields and writes none. Reserved fields keep their start values.
class CParametresHTTPRequete {
public:
    static constexpr int32_t knVersion = 2;
    static constexpr int32_t knOption = 16;

    CParametresHTTPRequete() = default;
    CParametresHTTPRequete(const CParametresHTTPRequete&) = delete;
    CParametresHTTPRequete& operator=(const CParametresHTTPRequete&) = delete;
    ~CParametresHTTPRequete() {
        if (m_piEntetes)
            m_piEntetes->vRelease();
        if (m_piReserve)
            m_piReserve->vRelease();
    }

    // Takes over the caller's reference; the former set is released.
    void AdopteEntetes(IEntetesHTTP* piEntetes) {
        if (m_piEntetes)
            m_piEntetes->vRelease();
        m_piEntetes = piEntetes;
    }

    int32_t m_nVersion = knVersion;
    CXYString<wchar_t> m_sURL; // final, query included
    CXYString<wchar_t> m_sReserve1;
    CKLBIN m_clCorps;                  // bytes to send; empty for GET and DELETE
    CXYString<wchar_t> m_sTypeContenu; // sent as Content-Type along with a body
    CXYString<wchar_t> m_sReserve2;
    CXYString<wchar_t> m_sReserve3;
    int32_t m_nMethode = METHODE_HTTP_GET; // eMETHODEHTTP
    int32_t m_nOption = knOption;
    IEntetesHTTP* m_piEntetes = nullptr; // owned; null for none
    int32_t m_nReserve = 0;
    IInterfaceObjetBase* m_piReserve = nullptr; // owned
};
static_assert(offsetof(CParametresHTTPRequete, m_sURL) == 8);
static_assert(offsetof(CParametresHTTPRequete, m_clCorps) == 24);
static_assert(offsetof(CParametresHTTPRequete, m_sTypeContenu) == 32);
static_assert(offsetof(CParametresHTTPRequete, m_nMethode) == 56);
static_assert(offsetof(CParametresHTTPRequete, m_nOption) == 60);
static_assert(offsetof(CParametresHTTPRequete, m_piEntetes) == 64);
static_assert(offsetof(CParametresHTTPRequete, m_nReserve) == 72);
static_assert(offsetof(CParametresHTTPRequete, m_piReserve) == 80);
static_assert(sizeof(CParametresHTTPRequete) == 88);

// The service. vRelease (from the base) gives back the registry's reference. An operation that
// fails answers false and leaves its cause in vpiGetErreur(), which the caller copies.
class IHTTP : public IInterfaceObjetBase {
public:
    // The service's error, borrowed: that of the last failed operation, clean after a success.
    virtual CXError* vpiGetErreur() = 0;
    // One part of the last answer (eRESULTATHTTP); false when no answer is held.
    virtual int vbDonneResultat(CAny& clValeur, int nGenre) = 0;
    // Ties the next exchanges to the calling VM (progress, cancelling); nOption is 0.
    virtual void vSetVM(IVM* piVM, int nOption) = 0;
    // A new empty header set, owned by the caller.
    virtual IEntetesHTTP* vpiCreeEntetes() = 0;
    // Performs the exchange; true when an answer arrived, whatever its status. nOption is 0.
    virtual int vbExecute(CParametresHTTPRequete& clRequete, int nOption) = 0;

    // Posts a SOAP envelope (text or bytes, UTF-8) to the URL as text/xml, with the header
    // SOAPAction set to pszActionSOAP ("" when null or empty). True on a reply without fault.
    // A fault answers false and leaves vpiGetErreur() clean, so that the caller reads the fault
    // through vbSoapErreur; a failed transport answers false with its cause.
    virtual int vbSoapExecute(const wchar_t* pszURL, const STManipAUB& stEnveloppe,
                              const wchar_t* pszActionSOAP) = 0;
    // Adds an element to the Header of the next envelopes, in namespace pszEspaceNoms (or none),
    // with mustUnderstand="1" when bDoitComprendre is set.
    virtual int vbSoapAjouteEntete(const wchar_t* pszNom, const CAny& clValeur,
                                   const wchar_t* pszEspaceNoms, int bDoitComprendre) = 0;
    virtual int vbSoapDonneResultat(CAny& clValeur, eSOAPResultat eResultat, int nOption) = 0;
    // One part of the last fault; false when the last reply held none.
    virtual int vbSoapErreur(eSOAPErreur eErreur, CXYString<wchar_t>& sTexte) = 0;

protected:
    ~IHTTP() = default;
};
