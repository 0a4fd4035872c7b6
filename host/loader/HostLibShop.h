// CHostLibShop: the host's registry of services (ILibShop), by name. A service is registered
// either as one shared instance or as a maker called at each request; either way the caller
// gets a new reference, which it releases.
//
// A name that nothing serves answers null and leaves the error as it was: the component
// decides what a missing service means (without "HTTP" it refuses itself with 600033). The
// version figures of the requests are ignored: this host has one version of each service.
// Names are matched exactly, as the component spells them ("HTTP", "ContenuJSON", ...).
#pragma once
#include "LibShop.h"
#include "ObjectInterfaces.h"
#include "Ref.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

class CHostLibShop final : public ILibShop {
public:
    // Gives a new reference, or null with the cause in the error.
    using FNMaker = std::function<IInterfaceObjetBase*(CXError* pclErreur)>;

    CHostLibShop() = default;
    CHostLibShop(const CHostLibShop&) = delete;
    CHostLibShop& operator=(const CHostLibShop&) = delete;
    ~CHostLibShop() = default;

    // One instance for every request; the registry keeps a reference of its own.
    void Register(const std::wstring& sNom, CRef<IInterfaceObjetBase> clService);
    void RegisterMaker(const std::wstring& sNom, FNMaker fnMaker);
    void Unregister(const std::wstring& sNom);
    bool bServes(const std::wstring& sNom) const;
    // Drops every service and the record of requests.
    void Clear();

    // Every name asked so far, in order.
    const std::vector<std::wstring>& tabRequests() const { return m_tabRequests; }

    IInterfaceObjetBase* piGetInterface(int nComposante, int nVersion, const wchar_t* pszNom,
                                        CXError* pclErreur) override;
    IInterfaceObjetBase* piGetInterfaceVM(IInterfaceObjetBase* piComposante, int nLibrairie,
                                          int nVersion, int nVersionMin, const wchar_t* pszNom,
                                          CXError* pclErreur) override;
    IInterfaceObjetBase* piGetInterfaceCompat(int nComposante, int nVersion, int nVersionMin,
                                              int nVersionMax, const wchar_t* pszNom,
                                              int nLibrairie, CXError* pclErreur) override;

private:
    IInterfaceObjetBase* _piFind(const wchar_t* pszNom, CXError* pclErreur);

    struct STService {
        CRef<IInterfaceObjetBase> clInstance;
        FNMaker fnMaker;
    };
    std::map<std::wstring, STService> m_mapServices;
    std::vector<std::wstring> m_tabRequests;
};
