// CNameKey: the key under which the host finds a script name. Names match regardless of case
// and accents, as in the host language: "gglEvenement", "GGLEVÉNEMENT" and "gglEvénement" share
// one key. The key is the name decomposed, stripped of its combining marks and case-folded.
#pragma once
#include <string>
#include <string_view>

class CNameKey {
public:
    // The key of a UTF-8 name. Text that is not UTF-8 folds its ASCII letters only.
    static std::string s_sKey(std::string_view svNom);
};
