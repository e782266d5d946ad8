#include "allocationcounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long long> allocationCount{0};

void* allocate(std::size_t size)
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size ? size : 1);
}

void* allocateAligned(std::size_t size, std::align_val_t alignment)
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    auto const align = static_cast<std::size_t>(alignment);
    // aligned_alloc wants a size that is a multiple of the alignment.
    std::size_t const rounded = ((size ? size : 1) + align - 1) / align * align;
    return std::aligned_alloc(align, rounded);
}

void* orThrow(void* p)
{
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    return p;
}

} // namespace

namespace zelkotest {

long long heapAllocations()
{
    return allocationCount.load(std::memory_order_relaxed);
}

AllocationScope::AllocationScope() : m_start(heapAllocations()) {}

long long AllocationScope::count() const
{
    return heapAllocations() - m_start;
}

} // namespace zelkotest

// Every form goes to malloc/aligned_alloc and back to free, so the pairs always match.
void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new[](std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t a) { return orThrow(allocateAligned(size, a)); }
void* operator new[](std::size_t size, std::align_val_t a) { return orThrow(allocateAligned(size, a)); }
void* operator new(std::size_t size, std::align_val_t a, std::nothrow_t const&) noexcept
{
    return allocateAligned(size, a);
}
void* operator new[](std::size_t size, std::align_val_t a, std::nothrow_t const&) noexcept
{
    return allocateAligned(size, a);
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::nothrow_t const&) noexcept { std::free(p); }
void operator delete[](void* p, std::nothrow_t const&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, std::nothrow_t const&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, std::nothrow_t const&) noexcept { std::free(p); }
