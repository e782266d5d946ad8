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

// Every block of every queue passes through here, so the cache is reached through the static
// TLS block (a fixed offset from the thread pointer) instead of a __tls_get_addr call each
// time: the state and a pointer to the cache take 16 of the bytes that the loader keeps spare
// for libraries loaded at run time. The cache object itself (which needs constructing and
// destroying with the thread) is touched only when the first block is cached.
#if defined(__GNUC__)
#define ZELKO_FAST_TLS __attribute__((tls_model("initial-exec")))
#else
#define ZELKO_FAST_TLS
#endif

// Trivially destructible, so still readable when a queue is destroyed after the thread's
// cache (static objects outlive the main thread's thread_local objects).
thread_local CacheState cacheState ZELKO_FAST_TLS = CacheState::Unused;
thread_local BlockCache* aliveCache ZELKO_FAST_TLS = nullptr; ///< set while cacheState is Alive
thread_local BlockCache cache;

BlockCache::~BlockCache()
{
    clear();
    cacheState = CacheState::Destroyed;
    aliveCache = nullptr;
}

std::vector<void*>* freeListFor(BlockCache& blockCache, std::size_t bytes)
{
    for (auto& list : blockCache.freeLists) {
        if (list.first == bytes) {
            return &list.second;
        }
    }
    return nullptr;
}

} // namespace

std::size_t BurstQueueAllocatorBase::cachedBytes()
{
    return cacheState == CacheState::Alive ? aliveCache->cachedBytes : 0;
}

void BurstQueueAllocatorBase::releaseCache()
{
    if (cacheState == CacheState::Alive) {
        aliveCache->clear();
    }
}

void* BurstQueueAllocatorBase::allocateBlock(std::size_t bytes)
{
    if (cacheState == CacheState::Alive) {
        std::vector<void*>* list = freeListFor(*aliveCache, bytes);
        if (list && !list->empty()) {
            void* block = list->back();
            list->pop_back();
            aliveCache->cachedBytes -= bytes;
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
        if (cacheState != CacheState::Alive) {
            aliveCache = &cache; // constructed on first use in this thread
            cacheState = CacheState::Alive;
        }
        BlockCache& blockCache = *aliveCache;
        if (blockCache.cachedBytes + bytes > MaxCachedBytesPerThread) {
            ::operator delete(block);
            return;
        }
        std::vector<void*>* list = freeListFor(blockCache, bytes);
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
