// Memory that the machine hands out by pointer: heap blocks, LocalAlloc blocks, BSTRs and SIDs. A set of the live
// pointers tells a leak, a double free and a wrong closer.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pikel::simulated {

enum class BlockKind { Heap, Local, Bstr, Sid };

class Heap {
  public:
    Heap();
    ~Heap();
    Heap(const Heap&) = delete;
    Heap& operator=(const Heap&) = delete;

    /// A zeroed block, or null when memory is short (see FailAllocation). A size of 0 gives a block as well.
    void* Allocate(BlockKind kind, std::size_t size);
    /// Frees a block of that kind; false, with a note, for any other pointer. Null is the caller's matter.
    bool Free(BlockKind kind, void* block);
    bool Owns(BlockKind kind, const void* block) const;
    /// Bytes asked for when the block was allocated.
    std::size_t Size(const void* block) const;

    std::size_t OpenCount() const;
    std::size_t OpenCount(BlockKind kind) const;
    /// Number of allocations so far.
    std::size_t AllocationCount() const;
    /// Makes allocations fail: the one that comes `after` further ones, and with `persistent` every later one too.
    void FailAllocation(std::size_t after, bool persistent);
    void StopFailing();
    const std::vector<std::string>& Misuses() const;

  private:
    struct State;
    State* m_state;
};

}  // namespace pikel::simulated
