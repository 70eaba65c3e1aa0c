// A file read as text. The line ends and the end mark are those of a Windows text stream, also where the C library's
// own streams know neither.
#include "frame/text_stream.h"

#include <cstdint>

namespace pikel {

namespace {

constexpr int kCtrlZ = 0x1a;

/// The number by which the 16-bit style calls know an open file: its handle's own value, which the system keeps within
/// 32 bits.
HFILE FileNumber(HANDLE hFile) {
    return static_cast<HFILE>(reinterpret_cast<std::intptr_t>(hFile));
}

}  // namespace

bool TextStream::Open(LPCSTR lpszFile) {
    m_position = 0;
    m_size = 0;
    m_bAtEnd = false;
    // Not by OpenFile: that one takes no path of more than 127 characters, and looks for bare names in other folders.
    m_file.Reset(Platform().CreateFileA(lpszFile, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(m_file);
}

bool TextStream::Fill() {
    m_position = 0;
    m_size = 0;
    if (m_file) {
        const UINT uRead =
            Platform()._lread(FileNumber(m_file.Get()), m_buffer.data(), static_cast<UINT>(m_buffer.size()));
        m_size = uRead <= m_buffer.size() ? uRead : 0;
    }
    return m_size != 0;
}

int TextStream::Peek() {
    if (m_position == m_size && !Fill()) {
        return kEnd;
    }
    return static_cast<unsigned char>(m_buffer[m_position]);
}

int TextStream::Next() {
    int nChar = m_bAtEnd ? kEnd : Peek();
    if (nChar == kEnd || nChar == kCtrlZ) {
        m_bAtEnd = true;
        return kEnd;
    }
    ++m_position;
    if (nChar == '\r' && Peek() == '\n') {
        ++m_position;
        return '\n';
    }
    return nChar;
}

bool TextStream::ReadPiece(std::string& strText, std::size_t dwMax) {
    strText.clear();
    while (strText.size() < dwMax) {
        const int nChar = Next();
        if (nChar == kEnd) {
            break;
        }
        strText.push_back(static_cast<char>(nChar));
        if (nChar == '\n') {
            break;
        }
    }
    return !strText.empty();
}

TextStream::Line TextStream::ReadLine(std::string& strText, std::size_t dwMax) {
    strText.clear();
    for (;;) {
        const int nChar = Next();
        if (nChar == kEnd || nChar == '\n') {
            return Line::Whole;
        }
        if (strText.size() == dwMax) {
            return Line::TooLong;
        }
        strText.push_back(static_cast<char>(nChar));
    }
}

}  // namespace pikel
