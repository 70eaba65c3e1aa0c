// The machine's memory blocks. The live pointers stand in a table of their own, so that a wrong free is found without a
// look at memory that may be gone already.
#include "machine/base/heap.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

namespace pikel::simulated {

namespace {

// A process of these systems never gets one block of this size; the C library is not asked for it.
constexpr std::size_t kLargestBlock = 0x7fff0000;
// A BSTR carries its length in front; the pointer that a program holds lies behind it. Eight bytes keep it aligned.
constexpr std::size_t kBstrPrefix = 8;

std::size_t PrefixOf(BlockKind kind) {
    return kind == BlockKind::Bstr ? kBstrPrefix : 0;
}

std::string_view KindName(BlockKind kind) {
    switch (kind) {
        case BlockKind::Heap:
            return "heap block";
        case BlockKind::Local:
            return "local block";
        case BlockKind::Bstr:
            return "BSTR";
        case BlockKind::Sid:
            return "SID";
    }
    return "block";
}

/// Pointers with their kinds and sizes: open addressing with linear probing, at most half full.
class PointerTable {
  public:
    struct Entry {
        std::uintptr_t pointer = 0;  // 0: free
        std::uint32_t size = 0;
        BlockKind kind = BlockKind::Heap;
    };

    PointerTable() : m_entries(static_cast<Entry*>(std::calloc(std::size_t{1} << m_bits, sizeof(Entry)))) {
        if (m_entries == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~PointerTable() { std::free(m_entries); }
    PointerTable(const PointerTable&) = delete;
    PointerTable& operator=(const PointerTable&) = delete;

    /// False when there is no memory for a larger table.
    bool Add(std::uintptr_t pointer, std::size_t size, BlockKind kind) {
        if ((m_count + 1) * 2 > Capacity() && !Grow()) {
            return false;
        }
        Insert({pointer, static_cast<std::uint32_t>(size), kind});
        ++m_count;
        return true;
    }

    const Entry* Find(std::uintptr_t pointer) const {
        if (pointer == 0) {
            return nullptr;
        }
        for (std::size_t place = Home(pointer);; place = Next(place)) {
            if (m_entries[place].pointer == pointer) {
                return &m_entries[place];
            }
            if (m_entries[place].pointer == 0) {
                return nullptr;
            }
        }
    }

    /// Takes out an entry that Find gave. Those behind it move up, so that no marks of deleted ones remain.
    void Remove(const Entry* entry) {
        std::size_t hole = static_cast<std::size_t>(entry - m_entries);
        for (std::size_t place = Next(hole); m_entries[place].pointer != 0; place = Next(place)) {
            const std::size_t home = Home(m_entries[place].pointer);
            const std::size_t mask = Capacity() - 1;
            if (((place - home) & mask) >= ((place - hole) & mask)) {
                m_entries[hole] = m_entries[place];
                hole = place;
            }
        }
        m_entries[hole].pointer = 0;
        --m_count;
    }

    std::size_t Count() const { return m_count; }

    template <class Visit>
    void ForEach(Visit visit) const {
        for (std::size_t place = 0; place < Capacity(); ++place) {
            if (m_entries[place].pointer != 0) {
                visit(m_entries[place]);
            }
        }
    }

  private:
    std::size_t Capacity() const { return std::size_t{1} << m_bits; }
    std::size_t Next(std::size_t place) const { return (place + 1) & (Capacity() - 1); }
    std::size_t Home(std::uintptr_t pointer) const {
        // Blocks of one page of memory stay side by side, so that a run of allocations touches few lines of the table;
        // the pages lie anywhere.
        const auto address = static_cast<std::uint64_t>(pointer);
        const std::uint64_t page = (address >> 12) * 0x9E3779B97F4A7C15ULL >> (64 - m_bits);
        return static_cast<std::size_t>(page + (address >> 4 & 0xFF)) & (Capacity() - 1);
    }
    void Insert(Entry entry) {
        std::size_t place = Home(entry.pointer);
        while (m_entries[place].pointer != 0) {
            place = Next(place);
        }
        m_entries[place] = entry;
    }
    bool Grow() {
        auto* larger = static_cast<Entry*>(std::calloc(Capacity() * 2, sizeof(Entry)));
        if (larger == nullptr) {
            return false;
        }
        Entry* old = m_entries;
        const std::size_t oldCapacity = Capacity();
        m_entries = larger;
        ++m_bits;
        for (std::size_t place = 0; place < oldCapacity; ++place) {
            if (old[place].pointer != 0) {
                Insert(old[place]);
            }
        }
        std::free(old);
        return true;
    }

    unsigned m_bits = 8;
    std::size_t m_count = 0;
    Entry* m_entries;
};

}  // namespace

struct Heap::State {
    PointerTable blocks;
    std::array<std::size_t, 4> openOfKind{};
    std::size_t allocations = 0;
    // The allocation with this number fails, and with `persistent` all from it on.
    std::size_t failAt = SIZE_MAX;
    bool persistent = false;
    std::vector<std::string> misuses;

    bool MustFail() {
        const std::size_t number = allocations++;
        return number == failAt || (persistent && number > failAt);
    }
};

Heap::Heap() : m_state(new State) {}

Heap::~Heap() {
    m_state->blocks.ForEach([](const PointerTable::Entry& entry) {
        std::free(reinterpret_cast<char*>(entry.pointer) - PrefixOf(entry.kind));
    });
    delete m_state;
}

void* Heap::Allocate(BlockKind kind, std::size_t size) {
    if (m_state->MustFail() || size > kLargestBlock) {
        return nullptr;
    }
    const std::size_t prefix = PrefixOf(kind);
    auto* start = static_cast<char*>(std::calloc(1, prefix + (size != 0 ? size : 1)));
    if (start == nullptr) {
        return nullptr;
    }
    char* block = start + prefix;
    if (!m_state->blocks.Add(reinterpret_cast<std::uintptr_t>(block), size, kind)) {
        std::free(start);
        return nullptr;
    }
    ++m_state->openOfKind[static_cast<std::size_t>(kind)];
    return block;
}

bool Heap::Free(BlockKind kind, void* block) {
    const PointerTable::Entry* entry = m_state->blocks.Find(reinterpret_cast<std::uintptr_t>(block));
    if (entry == nullptr || entry->kind != kind) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", block);
        m_state->misuses.push_back(std::string("free of ") + address + " as " + std::string(KindName(kind)) +
                                   ", which is " +
                                   (entry == nullptr ? "no live block" : "a " + std::string(KindName(entry->kind))));
        return false;
    }
    m_state->blocks.Remove(entry);
    --m_state->openOfKind[static_cast<std::size_t>(kind)];
    std::free(static_cast<char*>(block) - PrefixOf(kind));
    return true;
}

bool Heap::Owns(BlockKind kind, const void* block) const {
    const PointerTable::Entry* entry = m_state->blocks.Find(reinterpret_cast<std::uintptr_t>(block));
    return entry != nullptr && entry->kind == kind;
}

std::size_t Heap::Size(const void* block) const {
    const PointerTable::Entry* entry = m_state->blocks.Find(reinterpret_cast<std::uintptr_t>(block));
    return entry != nullptr ? entry->size : 0;
}

std::size_t Heap::OpenCount() const {
    return m_state->blocks.Count();
}

std::size_t Heap::OpenCount(BlockKind kind) const {
    return m_state->openOfKind[static_cast<std::size_t>(kind)];
}

std::size_t Heap::AllocationCount() const {
    return m_state->allocations;
}

void Heap::FailAllocation(std::size_t after, bool persistent) {
    m_state->failAt = m_state->allocations + after;
    m_state->persistent = persistent;
}

void Heap::StopFailing() {
    m_state->failAt = SIZE_MAX;
    m_state->persistent = false;
}

const std::vector<std::string>& Heap::Misuses() const {
    return m_state->misuses;
}

}  // namespace pikel::simulated
