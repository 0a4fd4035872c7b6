// CCDinoGglBase: the root of the script objects that keep their values in fields and are
// filled from JSON (calendars, events and their children, documents). Each carries its change
// state: plain writes only mark the object, and the commit of GglEcrit or GglSupprime sends
// what the mark calls for.
#pragma once
#include "connection/VisiteurJSONSetPropriete.h"
#include "frame/EtatObjet.h"
#include "frame/ObjetComposante.h"

#include "XYString.h"

#include <atomic>
#include <string_view>
#include <cstdint>

class CAny;
class CCtxInfo;
enum HTTPMethod : int;
class CGoogleConnexion;
class CHTTPResponse;
class CXError;

class CCDinoGglBase : public CObjetComposanteBase, public CVisiteurJSONSetPropriete {
public:
    // Counted from 0: the first vAddRef owns a new object.
    void vAddRef() override { m_nRef.fetch_add(1, std::memory_order_relaxed); }
    void vRelease() override {
        if (m_nRef.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    int nGetRef() const { return m_nRef.load(std::memory_order_relaxed); }
    // Gives up one reference without deleting, for a result that the VM takes with a
    // reference of its own: an object that nobody else holds then waits at 0 for it.
    IObjetBase* piCede() {
        m_nRef.fetch_sub(1, std::memory_order_acq_rel);
        return this;
    }

    // Sends what the state calls for; answers the state as it was on entry.
    virtual eEtatObjet veCommitGLL(CGoogleConnexion&, CCtxInfo*, CXError*) { return m_eEtatObjet; }

    // After a plain write: a new object becomes one to create, a read one a changed one; the
    // others keep their mark. Writes of equal values mark too.
    void _MarqueEcriture() {
        if (m_eEtatObjet == ETAT_NEUF || m_eEtatObjet == ETAT_NEUF_ATTACHE)
            m_eEtatObjet = ETAT_A_CREER;
        else if (m_eEtatObjet == ETAT_SYNCHRONISE)
            m_eEtatObjet = ETAT_MODIFIE;
    }
    // The calendar service's write road for JSON objects: sPath (after the API's origin) with
    // the body as JSON; a 200 with text makes the object equal to the server's copy and lets
    // the reply fill it. Any other answer leaves the mark, for a later commit, with the error.
    void _EcritJSON(CGoogleConnexion& clConnexion, HTTPMethod eMethode, std::wstring_view svChemin,
                    const CXYString<wchar_t>& sCorps, CCtxInfo* pclCtx, CXError* pclErreur);
    // A DELETE whose answer is not read: only a failed exchange reaches the caller. The object
    // is then one to create again.
    void _Supprime(CGoogleConnexion& clConnexion, std::wstring_view svChemin, CCtxInfo* pclCtx,
                   CXError* pclErreur);
    // A refused write: 600031 for a conflict, else 600005 with the status and the server's
    // text. Nothing when an error already stands.
    static void _FormateErreurHTTP(const CHTTPResponse& clReponse, CXError* pclErreur);
    // A JSON string copied into the field; any other value leaves the field as it was.
    static void s_CopieTexte(CAny& clValeur, CXYString<wchar_t>& sChamp);
    static bool s_bEstTexte(const CAny& clValeur);

    eEtatObjet m_eEtatObjet = ETAT_NEUF;

protected:
    CCDinoGglBase() = default;
    ~CCDinoGglBase() override = default;

private:
    std::atomic<int32_t> m_nRef{0};
};
