// CHostServices: the registration point of the host's services. Every service the host has is
// registered here under the name the component asks for, made at its first request and shared
// after that:
//
//   "HTTP"             CHTTPClient        HTTP and SOAP over libcurl
//   "ContenuJSON"      CHostJSONService   JSON over simdjson
//   "GestionnaireXML"  CHostXMLService    XML over pugixml
//   "MainIMG"          CHostImageService  image types and sizes
//   "Persistance"      CHostStoreService  the named-value store over SQLite
// and the login dialogue (CLoginDialogue) behind IVM::piGetAuthentification.
//
// A build without host/services registers nothing: the component then refuses itself for
// want of "HTTP" (600033), and what needs a service reports it missing.
#pragma once
#include <string>

class CHostLibShop;
class CHostVM;

class CHostServices {
public:
    // Settings that cannot be read are described in sWarnings.
    static void s_Register(CHostLibShop& clLibShop, CHostVM& clVM, std::string& sWarnings);
    // Whether this build has the services.
    static bool s_bAvailable();
};
