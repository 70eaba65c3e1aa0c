// Answers of the spooler's reads and enumerations: fixed records at the front of the caller's buffer, and behind them
// what the records point at. The caller's buffer may be unaligned; nothing is read from it.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

/// The room behind the records. Without a buffer it only measures, so one piece of code tells the size and does the
/// work.
class InfoSpace {
  public:
    /// @param buffer  null to measure
    /// @param start   bytes that the records take
    InfoSpace(LPBYTE buffer, std::size_t start) : m_buffer(buffer), m_used(start) {}

    /// The text with its NUL.
    LPSTR Text(std::string_view text);
    /// Null for an empty text.
    LPSTR TextOrNull(std::string_view text) { return text.empty() ? nullptr : Text(text); }
    /// The texts with their NULs and one more; null for none.
    LPSTR MultiTextOrNull(const std::vector<std::string>& texts);
    /// The bytes at a place whose distance from the buffer's start is a multiple of 8; null for none.
    void* BytesOrNull(std::string_view bytes);

    /// Bytes from the start of the buffer to the end of what was asked for so far.
    std::size_t Used() const { return m_used; }

  private:
    void* Put(const void* bytes, std::size_t size);

    LPBYTE m_buffer;
    std::size_t m_used;
};

/// Where the caller wants an answer.
struct InfoBuffer {
    LPBYTE bytes;
    DWORD size;
    LPDWORD needed;
    LPDWORD returned = nullptr;  ///< null for a read of one record
};

/// Checks the pointers of an answer and clears its counts.
/// @param isNt  the NT family answers as its remote procedure calls do
/// @return 0, 1780 for a null count, 1784 for a null buffer with a size; 87 for both on the 9x family
DWORD CheckInfoBuffer(const InfoBuffer& buffer, bool isNt);

/// Tells the size and checks that it fits.
/// @return 0, or 122
DWORD ReserveInfo(const InfoBuffer& buffer, std::size_t size);

/// A record of the caller's, which need not be aligned.
template <class Info>
Info Load(const BYTE* bytes) {
    Info info;
    std::memcpy(&info, bytes, sizeof info);
    return info;
}

/// Answers with one record for each source.
/// @param fill  void(InfoSpace&, Info&, const Source&): fills a zeroed record; called twice for each source
/// @return 0, or 122 with the size in *needed
template <class Info, class Source, class Fill>
DWORD AnswerWith(const InfoBuffer& buffer, const std::vector<Source>& sources, Fill fill) {
    const std::size_t records = sources.size() * sizeof(Info);
    auto fillAll = [&](LPBYTE bytes) {
        InfoSpace space(bytes, records);
        std::size_t at = 0;
        for (const Source& source : sources) {
            Info info{};
            fill(space, info, source);
            if (bytes != nullptr) {
                std::memcpy(bytes + at, &info, sizeof info);
            }
            at += sizeof info;
        }
        return space.Used();
    };
    const DWORD code = ReserveInfo(buffer, fillAll(nullptr));
    if (code == ERROR_SUCCESS && !sources.empty()) {
        fillAll(buffer.bytes);
        if (buffer.returned != nullptr) {
            *buffer.returned = static_cast<DWORD>(sources.size());
        }
    }
    return code;
}

/// Answers with a text alone.
DWORD AnswerWithText(const InfoBuffer& buffer, std::string_view text);

}  // namespace pikel::simulated
