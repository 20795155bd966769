/// Memory of every kind that runs out when a test wants it to.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstddef>

namespace Kavra::Tests {

/// Which requests for memory are refused, counted from the one that is made first.
enum class Refusal {
    kOne,      ///< one alone, as when another thread has memory back a moment later
    kAllSince  ///< one and all that follow
};

/// While one lives, the requests that its thread makes are counted, and some are refused: those to the host's two
/// allocators and those to the C++ heap, whoever makes them. What C libraries take with `malloc` is not among them.
class Shortage {
public:
    Shortage(std::size_t request, Refusal refusal);
    ~Shortage();
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;

    /// Whether so many requests were made that one was refused.
    static bool HasRefused();
};

/// Stands in for the host's two allocators for as long as it lives, so that their requests are counted too.
class WatchedAllocators {
public:
    WatchedAllocators();
    ~WatchedAllocators();
    WatchedAllocators(const WatchedAllocators&) = delete;
    WatchedAllocators& operator=(const WatchedAllocators&) = delete;

private:
    Objects::IMemoryAllocator* mBlocks;
    Objects::IMemoryAllocator* mObjects;
};

/// What was given out, of the host's allocators or of the C++ heap, and not given back.
struct LiveMemory {
    std::size_t hostBlocks, heapBlocks;
    bool operator==(const LiveMemory&) const = default;
};
LiveMemory CountLiveMemory();

}  // namespace Kavra::Tests
