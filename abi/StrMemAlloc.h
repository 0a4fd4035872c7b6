// The allocator of counted strings and byte blocks. The host owns it and hands it over at
// initialisation, so that a block made on one side of the boundary can be freed on the other.
#pragma once
#include <cstddef>

class IStrMemAlloc {
public:
    virtual void* vpAlloue(size_t nTaille) = 0;
    virtual void* vpRealloue(void* p, size_t nTaille) = 0;
    virtual void vLibere(void* p) = 0;

protected:
    ~IStrMemAlloc() = default;
};

// Process-wide values shared by every module built on the boundary types. Each module has its
// own copy of these statics; the host fills the component's through its initialisation.
class CInformationModule {
public:
    static IStrMemAlloc* ms_piStrMemAlloc;

    // The allocator in force: the host's once it has spoken, else the C library's.
    static IStrMemAlloc& s_Allocateur();
    // The C library's allocator, which a host may hand out as its own.
    static IStrMemAlloc& s_AllocateurStandard();
};
