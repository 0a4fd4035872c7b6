// ILibShop: the host's registry of services. The host implements it and hands it over in the
// initialisation record (or command 3053 selector 7); the component asks it for each service by
// name. It lives as long as the host and is not counted. Slot order is binding.
//
// Each operation gives a new reference to the named service, which the caller releases, or null
// with the cause in the error. The object is of the interface that the name stands for, derived
// from IInterfaceObjetBase alone, so that a static_cast reaches it:
//   "HTTP" IHTTP (HTTPService.h), "ContenuJSON" IContenuJSON (JSONService.h),
//   "GestionnaireXML" IGestionnaireXML (XMLService.h), "MainIMG" IMainIMG (ImageService.h),
//   "Persistance" IPersistance (StoreService.h, through piGetInterfaceVM).
// The figures are the versions the caller was built for; a host of its own may ignore them.
#pragma once

class CXError;
class IInterfaceObjetBase;

class ILibShop {
public:
    virtual IInterfaceObjetBase* piGetInterface(int nComposante, int nVersion,
                                                const wchar_t* pszNom, CXError* pclErreur) = 0;
    // For a service tied to the VM: piComposante is the VM's component object
    // (IVM::piGetService(SERVICEVM_COMPOSANTE)), nLibrairie the asking library's number.
    virtual IInterfaceObjetBase* piGetInterfaceVM(IInterfaceObjetBase* piComposante, int nLibrairie,
                                                  int nVersion, int nVersionMin,
                                                  const wchar_t* pszNom, CXError* pclErreur) = 0;
    virtual IInterfaceObjetBase* piGetInterfaceCompat(int nComposante, int nVersion,
                                                      int nVersionMin, int nVersionMax,
                                                      const wchar_t* pszNom, int nLibrairie,
                                                      CXError* pclErreur) = 0;

protected:
    ~ILibShop() = default;
};
