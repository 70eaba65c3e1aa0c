// Text of the machine: the active code page, names without regard to case, multi-strings.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

/// True for a code page that the conversions know: UTF-8 and the pages of one or two bytes a character.
bool KnowsCodePage(UINT codePage);
/// Conversions between a Windows code page (1252, 932, 65001, ...) and UTF-16. Bytes that stand for no character come
/// out as the page's default character ('?', U+30FB in 932, U+FFFD in UTF-8), characters that the page lacks as '?';
/// `*replaced` tells whether that happened. Of an unknown page only the ASCII characters exist.
std::u16string ToWide(UINT codePage, std::string_view text, bool* replaced = nullptr);
std::string FromWide(UINT codePage, std::u16string_view text, bool* replaced = nullptr);
/// Host file names are UTF-8.
std::string ToUtf8(UINT codePage, std::string_view text);
std::string FromUtf8(UINT codePage, std::string_view text);
bool IsLeadByte(UINT codePage, unsigned char byte);

/// Folding for names: ASCII letters always, the code page's other letters for the single-byte pages. Trail bytes stay.
std::string FoldCase(UINT codePage, std::string_view text);
int CompareNoCase(UINT codePage, std::string_view left, std::string_view right);
/// ASCII folding alone, for keys, sections, module names.
bool EqualNoCase(std::string_view left, std::string_view right);
std::string LowerAscii(std::string_view text);

/// A path's last component, and what stands before it without the backslash. The code page tells a backslash from a
/// trail byte; for the single-byte pages any will do.
std::string_view FileName(std::string_view path, UINT codePage = 1252);
std::string_view FolderOf(std::string_view path, UINT codePage = 1252);

/// Texts of a multi-string, up to the empty one. Null gives none.
std::vector<std::string> SplitMultiString(const char* texts);
/// The texts with their NULs and one more.
std::string JoinMultiString(const std::vector<std::string>& texts);

/// Null counts as empty.
inline std::string_view TextOf(const char* text) {
    return text == nullptr ? std::string_view() : text;
}

}  // namespace pikel::simulated
