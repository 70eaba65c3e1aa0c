// Reads ICC profile files for the registry entries of Windows 95.
#include "colour/profile_data.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "frame/log.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr std::size_t kHeadSize = 1024;
constexpr std::size_t kKindAt = 12;
constexpr std::size_t kIdentAt = 44;
// The two bounds between which the first blocks are looked for. They are no part of the file's format: a
// profile whose blocks lie outside them is entered without its texts.
constexpr std::size_t kBlocksFrom = 304;
constexpr std::size_t kFirstBlockBefore = 512;
constexpr std::size_t kBlockSize = 268;
constexpr std::size_t kLengthAt = 11;  // low byte of a big-endian count
constexpr std::size_t kTextAt = 12;
constexpr std::size_t kNotFound = kHeadSize;

constexpr std::string_view kTextMark("text\0\0\0\0", 8);
constexpr std::string_view kDescriptionMark("desc\0\0\0\0", 8);

/// The first bytes of a profile; zeros where the file is shorter.
using ProfileHead = std::array<char, kHeadSize>;

/// Offset of the first mark that starts in [from, before), or kNotFound.
std::size_t FindMark(const ProfileHead& head, std::string_view mark, std::size_t from, std::size_t before) {
    from = std::min(from, kHeadSize);
    std::size_t found = std::string_view(head.data(), head.size()).substr(from).find(mark);
    return found == std::string_view::npos || from + found >= before ? kNotFound : from + found;
}

/// Where the search for the first description starts. It steps over a text block, whose string it measures from 8 bytes
/// behind the text's first byte; of a shorter text it measures what lies behind it.
std::size_t FindDescriptionsStart(const ProfileHead& head) {
    std::size_t block = FindMark(head, kTextMark, kBlocksFrom, kFirstBlockBefore);
    if (block == kNotFound) {
        return kBlocksFrom;
    }
    std::string_view text(head.data() + block + 16, kHeadSize - block - 16);
    return block + 8 + std::min(text.find('\0'), text.size());
}

/// Copies the text of a description block. Of a block that runs beyond the bytes read, what is missing counts as zeros.
void CopyDescription(const ProfileHead& head, std::size_t block, LPSTR lpszText) {
    std::array<char, kBlockSize> bytes{};
    std::memcpy(bytes.data(), head.data() + block, std::min(kBlockSize, kHeadSize - block));
    std::size_t length = static_cast<unsigned char>(bytes[kLengthAt]);  // at most 255: the text and its NUL fit
    static_assert(kTextAt + 255 <= kBlockSize && 255 < kProfileTextSize);
    std::memcpy(lpszText, bytes.data() + kTextAt, length);
    lpszText[length] = '\0';
}

/// Reads the head of a profile; logs a failure.
bool ReadHead(LPCSTR lpszPath, ProfileHead& head) {
    OFSTRUCT ofs{};
    ofs.cBytes = sizeof ofs;
    ReadFileHandle file(Platform().OpenFile(TextOrEmpty(lpszPath), &ofs, OF_READ));
    if (!file) {
        WriteLogDetail("WIToolReadProfileData Open Error");
        return false;
    }
    if (Platform()._lread(file.Get(), head.data(), kHeadSize) == static_cast<UINT>(HFILE_ERROR)) {
        WriteLogDetail("WIToolReadProfileData _lread Error");
        return false;
    }
    return true;
}

/// Finds and copies the two description texts.
bool ReadDescriptions(const ProfileHead& head, LPSTR lpszManufacturerText, LPSTR lpszModelText) {
    std::size_t first = FindMark(head, kDescriptionMark, FindDescriptionsStart(head), kFirstBlockBefore);
    if (first == kNotFound) {
        return false;
    }
    CopyDescription(head, first, lpszManufacturerText);
    std::size_t second = FindMark(head, kDescriptionMark, first + kTextAt, kHeadSize);
    if (second == kNotFound) {
        WriteLogDetail("WIToolReadProfileData-Read Error");
        return false;
    }
    CopyDescription(head, second, lpszModelText);
    return true;
}

}  // namespace

DWORD WIToolReadProfileData(LPCSTR lpszPath, LPBYTE pbIdent, LPSTR lpszManufacturerText, LPSTR lpszModelText,
                            LPSTR lpszKind) {
    *lpszManufacturerText = '\0';
    *lpszModelText = '\0';
    ProfileHead head{};
    if (!ReadHead(lpszPath, head)) {
        return 0;
    }
    std::memcpy(lpszKind, head.data() + kKindAt, kProfileKindSize - 1);
    lpszKind[kProfileKindSize - 1] = '\0';
    std::memcpy(pbIdent, head.data() + kIdentAt, kProfileIdentSize);
    return ReadDescriptions(head, lpszManufacturerText, lpszModelText) ? 1 : 0;
}

}  // namespace pikel
