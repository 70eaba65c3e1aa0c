// Paths as texts of the active code page.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel {

/// The four parts of a path, each with its own punctuation: "C:", "\Folder\", "name", ".ext".
struct PathParts {
    std::string strDrive;
    std::string strDirectory;
    std::string strName;
    std::string strExtension;
};

/// Splits a path. Backslash and slash end a directory; trail bytes of double-byte characters don't count.
PathParts SplitPath(std::string_view path);

/// Takes a trailing backslash away, unless it is the trail byte of a double-byte character.
void DropTrailingBackslash(std::string& path);

/// A folder's path with one backslash at its end; an empty one stays empty.
std::string WithBackslash(std::string path);

/// Drive and directory of a path, with the backslash at their end.
std::string FolderOfPath(std::string_view path);
/// File name and extension of a path.
std::string FileNameOfPath(std::string_view path);

/// Makes every directory named on a path. A last component without a backslash behind it is not made. Failures are not
/// looked at; a null path is left alone.
void EnsurePathExists(LPCSTR lpszPath);

/// What stands behind the last backslash; the whole text without one. Byte by byte.
std::string_view BehindLastBackslash(std::string_view path);

}  // namespace pikel
