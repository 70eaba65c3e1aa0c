// Builds ICC profile files, as far as they are read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pikel::testing_support {

class IccProfile {
  public:
    /// A profile of zeros with its class and its signatures of four characters each.
    explicit IccProfile(std::string_view kind, std::string_view manufacturer = "NORD", std::string_view model = "A500",
                        std::size_t size = 2048)
        : m_bytes(size, '\0') {
        Put(12, kind);
        Put(36, "acsp");
        Put(44, "junk");
        Put(48, manufacturer);
        Put(52, model);
    }

    IccProfile& Put(std::size_t offset, std::string_view bytes) {
        if (m_bytes.size() < offset + bytes.size()) {
            m_bytes.resize(offset + bytes.size(), '\0');
        }
        m_bytes.replace(offset, bytes.size(), bytes);
        return *this;
    }
    /// A text block: mark, then the text with its NUL.
    IccProfile& PutText(std::size_t offset, std::string_view text) {
        return Put(offset, std::string("text\0\0\0\0", 8)).Put(offset + 8, std::string(text) + '\0');
    }
    /// A description block: mark, count (big-endian, its low byte alone is read), text.
    IccProfile& PutDescription(std::size_t offset, std::string_view text, std::size_t count) {
        std::string block("desc\0\0\0\0", 8);
        for (int shift : {24, 16, 8, 0}) {
            block += static_cast<char>(count >> shift & 0xff);
        }
        return Put(offset, block + std::string(text));
    }
    IccProfile& PutDescription(std::size_t offset, std::string_view text) {
        return PutDescription(offset, std::string(text) + '\0', text.size() + 1);
    }
    /// Ends the file there.
    IccProfile& Cut(std::size_t size) {
        m_bytes.resize(size, '\0');
        return *this;
    }

    const std::string& Bytes() const { return m_bytes; }

  private:
    std::string m_bytes;
};

}  // namespace pikel::testing_support
