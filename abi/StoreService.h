// IPersistance: the host's store of named texts that outlives the process, registry name
// "Persistance", reached through ILibShop::piGetInterfaceVM with the VM's component object. The
// host implements it; the component keeps its saved connections in it. Values are found by
// section and key. Slot order is binding.
#pragma once
#include "ObjectInterfaces.h"

class CXError;

inline constexpr wchar_t gszServicePersistance[] = L"Persistance";

// vRelease (from the base) gives back the registry's reference.
class IPersistance : public IInterfaceObjetBase {
public:
    // Replaces the value, or creates it. The write succeeded when the error is still clean.
    virtual void vEcrit(const wchar_t* pszSection, const wchar_t* pszCle, const wchar_t* pszValeur,
                        CXError* pclErreur) = 0;
    // *ppszValeur receives a new text, the stored value or a copy of pszDefaut (null taken as
    // "") when there is none, to be given back with vLibere. False, with *ppszValeur null, when
    // the store cannot be read.
    virtual int vbLit(const wchar_t* pszSection, const wchar_t* pszCle, const wchar_t* pszDefaut,
                      wchar_t** ppszValeur, CXError* pclErreur) = 0;
    // Frees a text made by vbLit; null does nothing.
    virtual void vLibere(wchar_t* pszTexte) = 0;

protected:
    ~IPersistance() = default;
};
