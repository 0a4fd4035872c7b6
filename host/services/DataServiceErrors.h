// The codes of the errors that the host's data services (JSON, XML, store, images) write into a
// CXError, in the host's own range beside those of HostErrors.h, and the one way they write
// them: English text made where the failure is seen, level 2 (an error of the call, not a fault
// of the process), the library's own words as the debug message when there are any.
// Append-only: a code is never renumbered nor reused.
//
//   7040xx  JSON service     7050xx  XML service
//   7060xx  store            7070xx  image service
#pragma once
#include "XError.h"

#include <string>

enum eDATASERVICEERROR : unsigned {
    DATASERVICE_JSON_SYNTAX = 704001,    // the text is not JSON, or nests too deep
    DATASERVICE_JSON_TOO_LARGE = 704002, // over the size limit of the service
    DATASERVICE_XML_SYNTAX = 705001,     // the text is not well-formed XML
    DATASERVICE_XML_TOO_LARGE = 705002,
    DATASERVICE_XML_ARGUMENT = 705003, // a value the operation cannot take
    DATASERVICE_XML_ENCODING = 705004, // an encoding the writer does not know
    DATASERVICE_XML_WRITE = 705005,    // nothing to write, or the sink refused
    DATASERVICE_STORE_OPEN = 706001,   // the store file cannot be opened or created
    DATASERVICE_STORE_ACCESS = 706002, // a read or a write of the store failed
    DATASERVICE_STORE_ARGUMENT = 706003,
    DATASERVICE_IMAGE_READ = 707001, // the file cannot be read
    DATASERVICE_IMAGE_ARGUMENT = 707002,
    DATASERVICE_IMAGE_TOO_LARGE = 707003,
};

namespace KVDataService {

// Writes the error, when there is an error object to write into.
inline void Fail(CXError* pclErreur, eDATASERVICEERROR eCode, const std::wstring& sMessage,
                 const std::wstring& sDetail = {}) {
    if (!pclErreur)
        return;
    pclErreur->SetUserErrorMessage(nullptr, eCode, sMessage.c_str());
    pclErreur->SetErrorLevel(ELEVEL_ERREUR);
    if (!sDetail.empty())
        pclErreur->AddDebugMessageNoFormat((L"##" + sDetail + L"##").c_str());
}

} // namespace KVDataService
