// A file read as text: what a Windows text stream gives of it, on every system.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/owned.h"

namespace pikel {

/// Reads a file as text: CR LF is one line end, a lone CR stays, Ctrl-Z ends the file. A read that fails ends it as
/// well. Reads go through one block of memory, whatever the file's size.
class TextStream {
  public:
    /// Opens a file for reading, as others may be reading and writing it.
    /// @return false when it can't be opened
    bool Open(LPCSTR lpszFile);
    void Close() { m_file.Reset(); }

    /// Reads up to a line end, which belongs to the text, or up to dwMax characters.
    /// @param strText [out]  emptied first
    /// @return false when there was nothing left
    bool ReadPiece(std::string& strText, std::size_t dwMax);

    enum class Line { Whole, TooLong };
    /// Reads up to a line end, which is taken but doesn't belong to the text.
    /// @param strText [out]  emptied first; of a line that is too long its first dwMax characters
    Line ReadLine(std::string& strText, std::size_t dwMax);

    /// True once a read has met the end.
    bool AtEnd() const { return m_bAtEnd; }

  private:
    static constexpr int kEnd = -1;

    int Next();
    int Peek();
    bool Fill();

    FileHandle m_file;
    std::array<char, 4096> m_buffer;
    std::size_t m_position = 0;
    std::size_t m_size = 0;
    bool m_bAtEnd = false;
};

}  // namespace pikel
