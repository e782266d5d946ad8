#pragma once

#include <cstddef>
#include <new>

namespace zelkodatastreamconverter::BurstEmissionList {

/// The block cache behind BurstQueueAllocator.
///
/// A radio's burst queue drops a segment at the front and appends one at the back for every
/// frame, so its deque gives back and asks for the same number of equally sized blocks each
/// time. Keeping the freed blocks of the calling thread for reuse makes a frame cost no trip
/// to the heap once the queues have reached their working size. The cache is per thread (no
/// locks), bounded, and given back to the heap when the thread ends.
class BurstQueueAllocatorBase
{
public:
    /// Bytes the calling thread currently keeps for reuse (for tests and benchmarks).
    static std::size_t cachedBytes();
    /// Gives the calling thread's cached blocks back to the heap.
    static void releaseCache();

protected:
    static void* allocateBlock(std::size_t bytes);
    static void releaseBlock(void* block, std::size_t bytes) noexcept;
};

/// A stateless allocator that recycles blocks through the per-thread cache; all instances
/// compare equal, so containers using it copy, move and swap as with std::allocator.
template <typename T>
class BurstQueueAllocator : public BurstQueueAllocatorBase
{
public:
    using value_type = T;

    BurstQueueAllocator() noexcept = default;
    template <typename U>
    BurstQueueAllocator(BurstQueueAllocator<U> const&) noexcept
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > std::size_t(-1) / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        return static_cast<T*>(allocateBlock(count * sizeof(T)));
    }
    void deallocate(T* pointer, std::size_t count) noexcept
    {
        releaseBlock(pointer, count * sizeof(T));
    }

    template <typename U>
    bool operator==(BurstQueueAllocator<U> const&) const noexcept
    {
        return true;
    }
    template <typename U>
    bool operator!=(BurstQueueAllocator<U> const&) const noexcept
    {
        return false;
    }
};

} // namespace zelkodatastreamconverter::BurstEmissionList
