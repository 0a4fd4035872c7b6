// KVAllocationFaults: the host's failing allocator, a test tool. Armed with N, the Nth
// allocation counted from then on fails (and, when persistent, every one after it) until it is
// disarmed, so that a test can walk N over a whole script and see every out-of-memory path
// taken once. Disarmed, it costs one relaxed atomic load per allocation.
//
// Counted: the counted-string allocator the host hands the component (CHostInformation, the
// host's own counted strings too), and operator new in a program that routes it here with
// pNew / Delete (the allocation walk test does; a host program keeps the library's own).
#pragma once
#include <cstddef>

class IStrMemAlloc;

namespace KVAllocationFaults {

// Counting starts at 0; the nth counted allocation fails (n >= 1).
void Arm(long nFailAt, bool bPersistent = false);
void Disarm();
// Counts one allocation; true when it is to fail.
bool bFail() noexcept;
// Allocations counted and failures made since the last Arm.
long nCounted();
long nFailed();

// The C library's allocator behind the counter.
IStrMemAlloc& StringAllocator();

// The bodies of a replaced operator new and delete: null from pNew is a failure to report
// (std::bad_alloc for the throwing forms).
void* pNew(size_t nSize) noexcept;
void Delete(void* p) noexcept;

} // namespace KVAllocationFaults
