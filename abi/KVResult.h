// Result words of host-value operations. The host and the component agree on one rule:
// 0 to 99 is success, anything above is failure. The failure numbers below are ours.
#pragma once

enum eKVRESULTAT : int {
    KV_OK = 0,
    KV_TRONQUE = 2,           // success, output cut to the room given
    KV_ERR_MEMOIRE = 100,     // the allocator refused
    KV_ERR_TROP_LONG = 101,   // a length at or above the limit of counted blocks
    KV_ERR_CONVERSION = 102,  // the value cannot be read in the asked type
    KV_ERR_TYPE = 103,        // the operation does not apply to this type
    KV_ERR_PARAMETRE = 104,   // a null or out-of-range argument
    KV_ERR_DEPASSEMENT = 105, // the value does not fit the target type
};

constexpr bool KV_bSucces(int nResultat) { return nResultat >= 0 && nResultat <= 99; }
