// The counted form shared by CXYString and CKLBIN: one pointer to the data, preceded by a
// 32-bit reference count, a 32-bit capacity and a 32-bit size, both in bytes. A null pointer
// is the empty block. Counts change atomically.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>

struct STEnteteBloc {
    std::atomic<int32_t> nRef;
    uint32_t nCapacite; // bytes of data the block can hold, terminator excluded
    uint32_t nTaille;   // bytes of data in use
};
static_assert(sizeof(STEnteteBloc) == 12, "the header of a counted block is three 32-bit words");

namespace KVBloc {

// Sizes at or above this are refused, so that a size and its terminator always fit 31 bits.
constexpr uint32_t knTailleMax = 0x7FFFFF00u;

inline STEnteteBloc* pEntete(const void* p) {
    return reinterpret_cast<STEnteteBloc*>(const_cast<char*>(static_cast<const char*>(p)) -
                                           sizeof(STEnteteBloc));
}
inline uint32_t nTaille(const void* p) { return p ? pEntete(p)->nTaille : 0; }
inline uint32_t nCapacite(const void* p) { return p ? pEntete(p)->nCapacite : 0; }
inline int32_t nRef(const void* p) {
    // Acquire: a writer that finds itself the only owner sees every write of the former ones.
    return p ? pEntete(p)->nRef.load(std::memory_order_acquire) : 0;
}

// A new block of `nCapacite` bytes plus `nTerminal` zero bytes, count 1, size 0; null when the
// allocator refuses or the capacity is at or above the limit.
void* pAlloue(size_t nCapacite, size_t nTerminal);
void AddRef(void* p);
// Drops one reference; frees at zero. Null is ignored.
void Release(void* p);

// Makes `p` the only owner of a block holding at least `nTaille` bytes, keeping the first
// `nGarde` bytes of the old contents. Result KV_OK, KV_ERR_TROP_LONG or KV_ERR_MEMOIRE, and
// `p` unchanged on failure.
int nPrepare(void*& p, size_t nTaille, size_t nGarde, size_t nTerminal);
// Sets the size in bytes and writes the terminator after it; the block must be unique.
void FixeTaille(void* p, size_t nTaille, size_t nTerminal);

} // namespace KVBloc
