#include "AllocationFaults.h"

#include "StrMemAlloc.h"

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<bool> gbArmed{false};
std::atomic<bool> gbPersistent{false};
std::atomic<long> gnFailAt{0};
std::atomic<long> gnCounted{0};
std::atomic<long> gnFailed{0};

class CFailingAllocator final : public IStrMemAlloc {
public:
    void* vpAlloue(size_t nTaille) override {
        return KVAllocationFaults::bFail() ? nullptr : std::malloc(nTaille);
    }
    void* vpRealloue(void* p, size_t nTaille) override {
        return KVAllocationFaults::bFail() ? nullptr : std::realloc(p, nTaille);
    }
    void vLibere(void* p) override { std::free(p); }
};

CFailingAllocator gclAllocator;

} // namespace

namespace KVAllocationFaults {

void Arm(long nFailAt, bool bPersistent) {
    gbArmed.store(false);
    gnCounted.store(0);
    gnFailed.store(0);
    gnFailAt.store(nFailAt);
    gbPersistent.store(bPersistent);
    gbArmed.store(nFailAt > 0);
}

void Disarm() {
    gbArmed.store(false);
}

bool bFail() noexcept {
    if (!gbArmed.load(std::memory_order_relaxed))
        return false;
    long n = gnCounted.fetch_add(1) + 1;
    long nAt = gnFailAt.load();
    if (n < nAt || (n > nAt && !gbPersistent.load()))
        return false;
    gnFailed.fetch_add(1);
    return true;
}

long nCounted() {
    return gnCounted.load();
}

long nFailed() {
    return gnFailed.load();
}

IStrMemAlloc& StringAllocator() {
    return gclAllocator;
}

void* pNew(size_t nSize) noexcept {
    return bFail() ? nullptr : std::malloc(nSize ? nSize : 1);
}

void Delete(void* p) noexcept {
    std::free(p);
}

} // namespace KVAllocationFaults
