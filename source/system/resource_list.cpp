// Nodes of the network as one heap block, and the display part of their names.
#include "system/resource_list.h"

#include <string_view>

#include "frame/text.h"

namespace pikel {
namespace {

/// What stands behind the last separator; the whole text without one. A trail byte of a double-byte character is no
/// separator.
std::string_view BehindLast(std::string_view text, std::string_view separator) {
    std::size_t behind = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const BYTE byte = static_cast<BYTE>(text[i]);
        if (byte >= 0x80 && i + 1 < text.size() && Platform().IsDBCSLeadByte(byte)) {
            ++i;
        } else if (text.substr(i, separator.size()) == separator) {
            behind = i + separator.size();
        }
    }
    return text.substr(behind);
}

std::string_view DisplayPart(std::string_view name, LPCSTR lpszGiven, DWORD dwKind) {
    switch (dwKind) {
        case 1:
        case 3:
            return lpszGiven != nullptr ? std::string_view(lpszGiven) : BehindLast(name, "\\\\");
        case 2:
            return BehindLast(name, "!");
        case 4:
            return BehindLast(name, "\\");
        default:
            return name;
    }
}

}  // namespace

bool GetShortName(LPCSTR lpszName, LPCSTR lpszGiven, DWORD dwKind, LPSTR lpszShort, DWORD dwSize) {
    if (lpszName == nullptr || lpszShort == nullptr || dwSize == 0) {
        return false;
    }
    *lpszShort = '\0';
    CopyIfFits(DisplayPart(lpszName, lpszGiven, dwKind), lpszShort, dwSize);
    return true;
}

}  // namespace pikel
