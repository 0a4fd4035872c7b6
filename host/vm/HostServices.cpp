#include "HostServices.h"

#include "HostLibShop.h"
#include "HostVM.h"

#ifdef KVGGL_HAVE_SERVICES
#include "HTTPClient.h"
#include "HostImageService.h"
#include "HostJSONService.h"
#include "HostOptions.h"
#include "HostStoreService.h"
#include "HostXMLService.h"
#include "ImageService.h"
#include "StoreService.h"
#include "XMLService.h"
#include "JSONService.h"
#include "LoginDialogue.h"

#include <cstdlib>
#include <memory>

namespace {

// A service made at its first request, then shared; the maker gives a new reference each time.
template <class TService, class TInterface, class FMake>
CHostLibShop::FNMaker s_fnShared(FMake fnMake) {
    auto pclSlot = std::make_shared<CRef<IInterfaceObjetBase>>();
    return [pclSlot, fnMake](CXError*) -> IInterfaceObjetBase* {
        if (!*pclSlot) {
            TService* p = fnMake(); // one reference, the creator's: the slot keeps it
            *pclSlot = CRef<IInterfaceObjetBase>::Adopt(static_cast<TInterface*>(p));
        }
        return CRef<IInterfaceObjetBase>(*pclSlot).pDetach();
    };
}

} // namespace

void CHostServices::s_Register(CHostLibShop& clLibShop, CHostVM& clVM, std::string& sWarnings) {
    auto fnGet = [](const char* psz) -> const char* { return std::getenv(psz); };
    STHostOptions stOptions = STHostOptions::s_stFromVariables(fnGet, sWarnings);
    clLibShop.RegisterMaker(gszServiceHTTP, s_fnShared<CHTTPClient, IHTTP>([stOptions] {
                                return new CHTTPClient(stOptions);
                            }));
    clLibShop.RegisterMaker(gszServiceJSON, s_fnShared<CHostJSONService, IContenuJSON>(
                                                [] { return new CHostJSONService(); }));
    clLibShop.RegisterMaker(gszServiceXML, s_fnShared<CHostXMLService, IGestionnaireXML>(
                                               [] { return new CHostXMLService(); }));
    clLibShop.RegisterMaker(gszServiceImage, s_fnShared<CHostImageService, IMainIMG>(
                                                 [] { return new CHostImageService(); }));
    clLibShop.RegisterMaker(gszServicePersistance, s_fnShared<CHostStoreService, IPersistance>(
                                                       [] { return new CHostStoreService(); }));
    auto fnLogin = s_fnShared<CLoginDialogue, IAuthentification>(
        [stOptions] { return new CLoginDialogue(stOptions); });
    clVM.SetLogin([fnLogin](CXError* pclErreur) {
        return static_cast<IAuthentification*>(fnLogin(pclErreur));
    });
}

bool CHostServices::s_bAvailable() {
    return true;
}

#else

void CHostServices::s_Register(CHostLibShop&, CHostVM&, std::string&) {}

bool CHostServices::s_bAvailable() {
    return false;
}

#endif
