// Asking and expanding files that may lie compressed on their medium.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// What the Setup API tells of a source file.
struct SourceFileInfo {
    DWORD dwSourceSize = 0;  ///< bytes on the medium
    DWORD dwTargetSize = 0;  ///< bytes once expanded
    UINT nCompression = 0;
};

/// Asks for a file, which may lie under its compressed name.
/// @return true when it is there; else the last error tells why
bool GetSourceFileInfo(const std::string& strPath, SourceFileInfo& info);

/// Expands or copies a file.
/// @return true when it is done; else the last error tells why
bool ExpandFile(const std::string& strSource, const std::string& strTarget, const SourceFileInfo& info);

}  // namespace pikel
