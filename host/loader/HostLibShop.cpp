#include "HostLibShop.h"

#include "HostBarrier.h"

void CHostLibShop::Register(const std::wstring& sNom, CRef<IInterfaceObjetBase> clService) {
    m_mapServices[sNom] = STService{std::move(clService), {}};
}

void CHostLibShop::RegisterMaker(const std::wstring& sNom, FNMaker fnMaker) {
    m_mapServices[sNom] = STService{{}, std::move(fnMaker)};
}

void CHostLibShop::Unregister(const std::wstring& sNom) {
    m_mapServices.erase(sNom);
}

bool CHostLibShop::bServes(const std::wstring& sNom) const {
    return m_mapServices.count(sNom) != 0;
}

void CHostLibShop::Clear() {
    m_mapServices.clear();
    m_tabRequests.clear();
}

IInterfaceObjetBase* CHostLibShop::_piFind(const wchar_t* pszNom, CXError* pclErreur) {
    return KVHost::Guard(pclErreur, static_cast<IInterfaceObjetBase*>(nullptr),
                         [&]() -> IInterfaceObjetBase* {
                             if (!pszNom)
                                 return nullptr;
                             m_tabRequests.emplace_back(pszNom);
                             auto it = m_mapServices.find(pszNom);
                             if (it == m_mapServices.end())
                                 return nullptr;
                             if (it->second.fnMaker)
                                 return it->second.fnMaker(pclErreur);
                             return CRef<IInterfaceObjetBase>(it->second.clInstance).pDetach();
                         });
}

IInterfaceObjetBase* CHostLibShop::piGetInterface(int, int, const wchar_t* pszNom,
                                                  CXError* pclErreur) {
    return _piFind(pszNom, pclErreur);
}

IInterfaceObjetBase* CHostLibShop::piGetInterfaceVM(IInterfaceObjetBase*, int, int, int,
                                                    const wchar_t* pszNom, CXError* pclErreur) {
    return _piFind(pszNom, pclErreur);
}

IInterfaceObjetBase* CHostLibShop::piGetInterfaceCompat(int, int, int, int, const wchar_t* pszNom,
                                                        int, CXError* pclErreur) {
    return _piFind(pszNom, pclErreur);
}
