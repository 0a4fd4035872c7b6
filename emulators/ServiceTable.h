// CServiceTable: the rows that make up the emulators, {host, path prefix, factory}. A new
// service is one file of its own and one row here.
#pragma once
#include <memory>
#include <span>

class CEmulator;
class IService;

struct STServiceRow {
    const char* pszHost;       // lower case, no port
    const char* pszPathPrefix; // "" for the whole host; rows sharing a host differ by prefix
    std::unique_ptr<IService> (*pfnCreate)(CEmulator& emulator);
};

class CServiceTable {
public:
    static std::span<const STServiceRow> s_Rows();
};
