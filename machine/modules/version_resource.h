// Version resources of program files: found in a file's bytes, made ready for a program, and asked by path. Formats: PE
// and resource directory as the "PE Format" documentation has them, VS_VERSIONINFO as verrsrc.h has it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

/// The VS_VERSIONINFO block of a 32- or 64-bit program file.
/// @param code [out]  1812 for a file without resources or that is no program file, 1813 for one without a version
/// @return the bytes as they lie in the file, or nothing
std::optional<std::string> FindVersionResource(std::string_view file, DWORD& code);

/// Makes a block ready for QueryVersion: every structure of it lies within its parent, and its texts are turned into
/// texts of a code page, in the places of the wide ones.
/// @return false for a damaged block, of which nothing is used then
bool PrepareVersionBlock(std::string& block, UINT codePage);

/// Asks a prepared block.
/// @param block   its first byte; it tells its own length
/// @param path    "\" for the fixed part, "\VarFileInfo\Translation", "\StringFileInfo\040904e4\FileVersion"; case
///                doesn't count
/// @param length [out]  bytes of a binary value, characters of a text with its NUL
/// @return where the value lies in the block; null when there is none
const char* QueryVersion(const char* block, std::string_view path, UINT codePage, UINT& length);

}  // namespace pikel::simulated
