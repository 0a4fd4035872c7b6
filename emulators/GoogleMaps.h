// CGoogleMaps: maps.googleapis.com, the Static Maps image (/maps/api/staticmap) and the
// Geocoding service (/maps/api/geocode/json). Both take an API key in the query, checked
// against the seed's "maps" section (its "keys", each with an optional daily quota), which also
// holds the places the geocoder knows ("places": address, other names, location, postal code,
// country). Errors are written as the real services write them: the image service in plain
// text with 403 or 400, the geocoder in its JSON with its status words.
#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "MapImage.h"
#include "Service.h"

class CEmulator;

class CGoogleMaps : public IService {
public:
    static constexpr const char* ms_pszHost = "maps.googleapis.com";

    explicit CGoogleMaps(CEmulator& emulator) : m_Emulator(emulator) {}
    static std::unique_ptr<IService> s_pCreate(CEmulator& emulator);

    void vReset() override;
    void vHandle(const STRequest& req, STResponse& res) override;

    // Lower case, accents and punctuation dropped, blanks single: how addresses are compared.
    static std::string s_sFold(std::string_view sv);

private:
    struct STKey {
        std::string sKey;
        long long nQuota = -1; // requests a day; -1 without limit
    };
    struct STPlace {
        std::string sAddress; // as the service formats it
        std::vector<std::string> tabNames; // folded: the address and every other name
        STLatLng at;
        std::string sPlaceId;
        std::string sPostalCode;
        std::string sCountry; // ISO code, upper case
        std::string sType;
    };
    enum eKEY { eKeyOk, eKeyMissing, eKeyInvalid, eKeyOverQuota };

    eKEY eCheckKey(std::string_view svKey);
    std::vector<const STPlace*> Find(std::string_view svAddress, std::string_view svRegion) const;
    void StaticMap(const STRequest& req, STResponse& res);
    void Geocode(const STRequest& req, STResponse& res);

    CEmulator& m_Emulator;
    // Filled by vReset only, which never overlaps a request.
    std::vector<STKey> m_tabKeys;
    std::vector<STPlace> m_tabPlaces;
    std::mutex m_mtx; // the counts of the keys
    std::map<std::string, long long> m_mapUsed;
};
