// KVPkce: the proof key of a sign-in (S256 code challenge), added by the host on its own so
// that nobody else who reads the consent address (the browser command's arguments are visible
// to every local user) can redeem the code the provider sends back. The login dialogue puts the
// challenge on an authorisation address that asks for a code and has none, and remembers the
// verifier with the code it receives; the HTTP service adds that verifier to the token request
// that carries the code. The component sees none of it.
#pragma once
#include <string>

namespace KVPkce {

// A fresh verifier (43 characters of base64url from 32 random bytes) and its challenge,
// base64url(SHA-256(verifier)); false when the system gives no random bytes.
bool bNew(std::string& sVerifier, std::string& sChallenge);

// The verifier of a code the dialogue received (the code as decoded from the answer).
void Remember(const std::string& sCode, const std::string& sVerifier);

// An authorization-code grant body (form-encoded) whose code was remembered and that carries
// no verifier of its own gets "&code_verifier=..." (the code is then forgotten); true when
// the body was changed.
bool bAddVerifier(std::string& sBody);

} // namespace KVPkce
