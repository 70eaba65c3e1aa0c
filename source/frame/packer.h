// Lays out a block for the caller: fixed part, arrays and strings in one heap block. The one place that does pointer
// arithmetic on such blocks.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/owned.h"

namespace pikel {

/// First pass of a packing: adds up what the second will take, with the same calls.
class PackSize {
  public:
    template <class Item>
    void Add(std::size_t count = 1) {
        m_size = Aligned(m_size, alignof(Item)) + count * sizeof(Item);
    }
    void AddBytes(std::size_t count, std::size_t alignment = 1) { m_size = Aligned(m_size, alignment) + count; }
    /// Bytes whose end lies at a multiple of the alignment.
    void AddBytesUpTo(std::size_t count, std::size_t alignment) { m_size = Aligned(m_size + count, alignment); }
    /// A text with its NUL.
    void AddText(std::string_view text) { AddBytes(text.size() + 1); }
    /// A text that may be null, which takes nothing.
    void AddOptionalText(LPCSTR lpszText) {
        if (lpszText != nullptr) {
            AddText(lpszText);
        }
    }
    std::size_t Size() const { return m_size; }

    static constexpr std::size_t Aligned(std::size_t offset, std::size_t alignment) {
        return (offset + alignment - 1) / alignment * alignment;
    }

  private:
    std::size_t m_size = 0;
};

/// Second pass: hands out the places in a zeroed block, in the order of the first.
class Packer {
  public:
    /// @param block  from AllocateHeap with the size of the first pass
    explicit Packer(void* block) : m_begin(static_cast<char*>(block)) {}

    template <class Item>
    Item* Take(std::size_t count = 1) {
        m_offset = PackSize::Aligned(m_offset, alignof(Item));
        return reinterpret_cast<Item*>(TakeBytes(count * sizeof(Item)));
    }
    char* TakeBytes(std::size_t count, std::size_t alignment = 1) {
        m_offset = PackSize::Aligned(m_offset, alignment);
        char* place = m_begin + m_offset;
        m_offset += count;
        return place;
    }
    char* TakeBytesUpTo(std::size_t count, std::size_t alignment) {
        m_offset = PackSize::Aligned(m_offset + count, alignment);
        return m_begin + m_offset - count;
    }
    LPSTR Text(std::string_view text) {
        char* place = TakeBytes(text.size() + 1);
        std::memcpy(place, text.data(), text.size());
        return place;
    }
    LPSTR OptionalText(LPCSTR lpszText) { return lpszText == nullptr ? nullptr : Text(lpszText); }

  private:
    char* m_begin;
    std::size_t m_offset = 0;
};

}  // namespace pikel
