// The codes of the errors that the reference host's services write into a CXError. They lie in
// the host's own range, 700000 and up, clear of the component's codes (600000 and up), so that a
// script tells at once which side failed. Append-only: a code is never renumbered nor reused.
//
//   7000xx  the host as a whole (700001: a C++ exception stopped a callback, HostBarrier.h)
//   7010xx  HTTP and SOAP service
//   7020xx  login dialogue
//   7030xx  host functions
//
// Host errors carry no module record: the message is English text made where the failure is
// seen, and the level is 2 (an error, not a fault of the process).
#pragma once
#include <string_view>

class CXError;

enum eHOSTERROR : unsigned {
    // HTTP and SOAP
    HOSTERROR_HTTP_RESOLVE = 701001,           // the host name is unknown
    HOSTERROR_HTTP_CONNECT = 701002,           // no connection could be made
    HOSTERROR_HTTP_TLS = 701003,               // the secure channel or its certificate was refused
    HOSTERROR_HTTP_TIMEOUT = 701004,           // connecting or the whole exchange took too long
    HOSTERROR_HTTP_CONNECTION_LOST = 701005,   // the answer stopped short or never came
    HOSTERROR_HTTP_BAD_REQUEST = 701006,       // address, verb, header or envelope not sendable
    HOSTERROR_HTTP_TOO_LARGE = 701007,         // the body is over the host's limit
    HOSTERROR_HTTP_REDIRECT_LOOP = 701008,     // the 21st redirect in a row
    HOSTERROR_HTTP_TRANSPORT = 701009,         // any other transport failure
    HOSTERROR_HTTP_NO_ANSWER = 701010,         // a result asked of an exchange that gave none
    HOSTERROR_HTTP_ROUTE = 701011,             // the routing setting cannot be read
    HOSTERROR_SOAP_NOT_SOAP = 701012,          // a failure status without a SOAP fault
    HOSTERROR_SOAP_NO_FAULT = 701013,          // a fault part asked when the reply held none
    HOSTERROR_HTTP_REDIRECT_INSECURE = 701014, // a redirect from https to plain http
    // Login dialogue
    HOSTERROR_LOGIN_LISTENER = 702001, // the redirect address cannot be served
    HOSTERROR_LOGIN_URL = 702002,      // no login address, or no redirect address given out
    HOSTERROR_LOGIN_RANDOM = 702003,   // no random state value could be drawn
    HOSTERROR_LOGIN_TIMEOUT = 702004,  // the browser never came back in time
    HOSTERROR_LOGIN_STATE = 702005,    // the answer did not bring the state value back
    HOSTERROR_LOGIN_BROWSER = 702006,  // the browser command failed
    HOSTERROR_LOGIN_CLIENT = 702007,   // the login address names no client (empty client_id)
    // Host functions
    HOSTERROR_TIME_INVALID = 703001, // a date that does not exist
};

namespace KVHost {
// Writes the error: code, English message, level 2, and the technical detail (library codes,
// addresses) as the debug message when given.
void SetError(CXError& clError, eHOSTERROR eCode, std::string_view sMessage,
              std::string_view sDetail = {});

// The last transport failure of the HTTP service with a host (name not resolved, connection
// refused, TLS, timeout), kept so that the login dialogue that follows a failed silent refresh
// can give that cause at once instead of waiting for a browser; an exchange that reaches the
// host clears it. Host names as in the URL.
void NoteTransportFailure(std::string_view svHost, eHOSTERROR eCode, std::string_view svMessage);
void ClearTransportFailure(std::string_view svHost);
// Whether the host failed so in the last minute, with the code and message.
bool bRecentTransportFailure(std::string_view svHost, eHOSTERROR& eCode, std::string& sMessage);
} // namespace KVHost
