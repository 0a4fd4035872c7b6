// IObjetValeur: the members of an object that no class table names, reached by name (a
// record whose fields are known only at run time). The component implements it on such
// objects; the host asks IObjetBase::vpiGetIObjetValeur for it. Slot order is binding.
#pragma once
#include "JSONService.h"
#include "ObjectInterfaces.h"

class CAny;
class CCtxInfo;
class CXError;
class INiveauPile;

// The answer for a member that the object does not hold.
inline constexpr eRESULTATOBJET gkeMembreInexistant =
    static_cast<eRESULTATOBJET>(static_cast<int>(0x80000001u));

class IObjetValeur {
public:
    // Called once per member in the object's order; its answer is not looked at.
    class IVisiteurValeur {
    public:
        virtual int veVisiteValeur(const CNomStandard& clNom, const CAny& clValeur) = 0;

    protected:
        ~IVisiteurValeur() = default;
    };

    virtual int vnGetVersionIObjetValeur() = 0;
    // The host's own stack levels; an implementation may answer RESULTAT_OBJET_NON_SUPPORTE.
    virtual eRESULTATOBJET veGetValeurPile(const CNomStandard& clNom, INiveauPile* piNiveau,
                                           unsigned nOption, CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    // The member's value; gkeMembreInexistant, with the cause in the error, when it is absent.
    virtual eRESULTATOBJET veGetValeurAny(const CNomStandard& clNom, CAny* pclValeur,
                                          unsigned nOption, CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veSetValeurPile(const CNomStandard& clNom, INiveauPile* piNiveau,
                                           unsigned nOption, CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    // Makes the member when it is missing; a value of no type changes nothing.
    virtual eRESULTATOBJET veSetValeurAny(const CNomStandard& clNom, const CAny* pclValeur,
                                          unsigned nOption, CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    virtual eRESULTATOBJET vePossedeValeur(int& bPossede, CCtxInfo* pclCtx, CXError* pclErreur) = 0;
    virtual eRESULTATOBJET veParcourtValeur(IVisiteurValeur* piVisiteur, CCtxInfo* pclCtx,
                                            CXError* pclErreur) = 0;

protected:
    ~IObjetValeur() = default;
};
