// Text of the machine: the active code page, names without regard to case, multi-strings.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

/// Conversions between a Windows code page (1252, 932, 65001, ...) and UTF-16. Bytes or characters that don't exist come
/// out as '?' when `replaced` is given or null alike; `*replaced` tells it.
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

/// A path's last component, and what stands before it without the backslash.
std::string_view FileName(std::string_view path);
std::string_view FolderOf(std::string_view path);

/// Texts of a multi-string, up to the empty one. Null gives none.
std::vector<std::string> SplitMultiString(const char* texts);
/// The texts with their NULs and one more.
std::string JoinMultiString(const std::vector<std::string>& texts);

/// The system's message for a code, CR LF at its end; empty for one that isn't known.
std::string MessageText(DWORD code);
/// "ERROR_FILE_NOT_FOUND"; empty for one that isn't known.
std::string_view CodeName(DWORD code);

}  // namespace pikel::simulated
