#include "burstqueueallocator.h"

#include <utility>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

// Enough for the queues of dozens of radios at 16 segments of 2048 bursts; beyond it freed
// blocks go straight back to the heap.
constexpr std::size_t MaxCachedBytesPerThread = std::size_t(64) << 20;

struct BlockCache
{
    // One free list per block size; a deque uses two or three sizes, so a short vector is
    // searched faster than a map.
    std::vector<std::pair<std::size_t, std::vector<void*>>> freeLists;
    std::size_t cachedBytes = 0;

    void clear()
    {
        for (auto& list : freeLists) {
            for (void* block : list.second) {
                ::operator delete(block);
            }
            list.second.clear();
        }
        cachedBytes = 0;
    }
    ~BlockCache();
};

enum class CacheState : unsigned char
{
    Unused,
    Alive,
    Destroyed
};

// Trivially destructible, so still readable when a queue is destroyed after the thread's
// cache (static objects outlive the main thread's thread_local objects).
thread_local CacheState cacheState = CacheState::Unused;
thread_local BlockCache cache;

BlockCache::~BlockCache()
{
    clear();
    cacheState = CacheState::Destroyed;
}

std::vector<void*>* freeListFor(std::size_t bytes)
{
    for (auto& list : cache.freeLists) {
        if (list.first == bytes) {
            return &list.second;
        }
    }
    return nullptr;
}

} // namespace

std::size_t BurstQueueAllocatorBase::cachedBytes()
{
    return cacheState == CacheState::Alive ? cache.cachedBytes : 0;
}

void BurstQueueAllocatorBase::releaseCache()
{
    if (cacheState == CacheState::Alive) {
        cache.clear();
    }
}

void* BurstQueueAllocatorBase::allocateBlock(std::size_t bytes)
{
    if (cacheState == CacheState::Alive) {
        std::vector<void*>* list = freeListFor(bytes);
        if (list && !list->empty()) {
            void* block = list->back();
            list->pop_back();
            cache.cachedBytes -= bytes;
            return block;
        }
    }
    return ::operator new(bytes);
}

void BurstQueueAllocatorBase::releaseBlock(void* block, std::size_t bytes) noexcept
{
    if (!block) {
        return;
    }
    if (cacheState == CacheState::Destroyed) {
        ::operator delete(block);
        return;
    }
    try {
        BlockCache& blockCache = cache; // constructed on first use in this thread
        cacheState = CacheState::Alive;
        if (blockCache.cachedBytes + bytes > MaxCachedBytesPerThread) {
            ::operator delete(block);
            return;
        }
        std::vector<void*>* list = freeListFor(bytes);
        if (!list) {
            blockCache.freeLists.emplace_back(bytes, std::vector<void*>());
            list = &blockCache.freeLists.back().second;
        }
        list->push_back(block);
        blockCache.cachedBytes += bytes;
    } catch (...) {
        ::operator delete(block);
    }
}

} // namespace zelkodatastreamconverter::BurstEmissionList
