// Finds things by a name that they hold themselves: an open-addressed table of hashes and numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace pikel::simulated {

class NameIndex {
  public:
    void Reserve(std::size_t count) {
        std::size_t capacity = kSmallest;
        while (capacity < count * 2) {
            capacity *= 2;
        }
        if (capacity > m_slots.size()) {
            Rebuild(capacity);
        }
    }

    /// @param isSame  tells of a number whether the name looked for is its name
    template <class IsSame>
    std::optional<std::uint32_t> Find(std::uint32_t hash, IsSame isSame) const {
        if (m_slots.empty()) {
            return std::nullopt;
        }
        for (std::size_t place = hash & Mask(); m_slots[place].number != kFree; place = (place + 1) & Mask()) {
            if (m_slots[place].hash == hash && isSame(m_slots[place].number)) {
                return m_slots[place].number;
            }
        }
        return std::nullopt;
    }

    /// Adds a number whose name isn't there yet.
    void Add(std::uint32_t hash, std::uint32_t number) {
        if ((m_count + 1) * 2 > m_slots.size()) {
            Rebuild(m_slots.empty() ? kSmallest : m_slots.size() * 2);
        }
        Put({hash, number});
        ++m_count;
    }

  private:
    static constexpr std::uint32_t kFree = 0xffffffff;
    static constexpr std::size_t kSmallest = 16;

    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = kFree;
    };

    std::size_t Mask() const { return m_slots.size() - 1; }

    void Put(Slot slot) {
        std::size_t place = slot.hash & Mask();
        while (m_slots[place].number != kFree) {
            place = (place + 1) & Mask();
        }
        m_slots[place] = slot;
    }

    void Rebuild(std::size_t capacity) {
        std::vector<Slot> old(capacity);
        old.swap(m_slots);
        for (const Slot& slot : old) {
            if (slot.number != kFree) {
                Put(slot);
            }
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

}  // namespace pikel::simulated
