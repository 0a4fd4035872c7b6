// CObjectSerializer: the host's save/rebuild path for a script object. Saving reads every
// property that takes part (plain values with a setter or a forced setter: option 0x202), every
// object-valued property, and every collection, element by element; rebuilding makes a new
// object and writes the values back, through the setter where there is one and through the
// forced setter where the property is read-only to scripts. An object-valued property with a
// setter gets a new object; a read-only one is rebuilt in place; collections get new elements.
//
// The saved form is JSON text, so that it can be kept anywhere:
//   {"type": "gglParamètreCarte",
//    "properties": {"Format": "png8", "Echelle": 2, ...},
//    "objects": {"Chemin": {"type": "gglChemin", ...}},
//    "collections": {"Marqueur": [{"type": "gglMarqueur", ...}, ...]}}
// Values by the property's type: booleans, integers, reals and texts as themselves, dates as
// "YYYY-MM-DDTHH:MM:SS.mmm" (null when absent), binary values in base64, arrays as arrays.
// Image values are not saved. Nesting stops at 32 levels. Credentials are saved as they are,
// in plain text, unless the caller asks to leave them out.
#pragma once
#include "HostOutcome.h"

#include <string>
#include <string_view>

class CHost;

class CObjectSerializer {
public:
    static constexpr int knMaxDepth = 32;

    explicit CObjectSerializer(CHost& clHost) : m_clHost(clHost) {}

    // The value of the outcome is the saved text. Without bSecrets, the secrets are left out.
    bool bSave(IObjetBase* piObjet, STHostOutcome& st, bool bSecrets = true);
    // Whether a property of a type holds a credential (a client secret, a password, tokens, a
    // session): its name ends so, or it is the value or the saved form of an "AuthToken". Left
    // out of a save on request, since the saved text is plain.
    static bool s_bSecret(std::string_view svType, std::string_view svProperty);
    // The value of the outcome is the new object. svType may be empty: the saved type is used;
    // when given, it must name the saved type.
    bool bRebuild(std::string_view svType, std::string_view svSaved, STHostOutcome& st);

    // sv as a JSON string, quotes included, appended to s.
    static void s_QuoteJSON(std::string& s, std::string_view sv);
    static std::string s_sBase64(std::string_view sv);
    // False on text that is not base64.
    static bool s_bFromBase64(std::string_view sv, std::string& sOut);

private:
    CHost& m_clHost;
};
