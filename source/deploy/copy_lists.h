// The files of one model as lists in step: where each comes from, what it is called after copying, and where it goes.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel {

/// DirID of a file that is staged and never placed: the catalog.
inline constexpr INT kNoDirID = -1;

struct CopyFileLists {
    std::vector<std::string> vecSourceNames;
    std::vector<std::string> vecTargetNames;
    std::vector<INT> vecDirIDs;
    std::string strMonitorFile;
    std::string strDriverFile;
    std::string strDataFile;

    std::size_t size() const { return vecSourceNames.size(); }
    /// The target name, or the source name where there is none.
    const std::string& NameAt(std::size_t nIndex) const {
        return vecTargetNames[nIndex].empty() ? vecSourceNames[nIndex] : vecTargetNames[nIndex];
    }
};

/// True for a copyNameMode without bits above the low two.
constexpr bool IsCopyNameMode(DWORD dwCopyNameMode) {
    return (dwCopyNameMode & ~DWORD{3}) == 0;
}

/// Reads the lists of one model from an open INF.
///
/// @param dwCopyNameMode  how a file enters whose source and destination names differ: bit 1 adds it under its
///                        destination name, bit 0 under its source name, in this order. Others enter once in any case.
/// @param lists [out]     filled anew after a good read alone; else as before
/// @return 0; 87 for a null handle or name; else the code of the section that could not be read
DWORD CollectCopyFileLists(HINF hInf, LPCSTR lpszDriverName, DWORD dwCopyNameMode, DWORD dwArchitecture,
                           DWORD dwMajorVersion, DWORD dwMinorVersion, CopyFileLists& lists);

/// The same from an INF's path.
/// @return also 87 for a null path and the last error for an INF that can't be opened
DWORD CollectCopyFileLists(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwCopyNameMode, DWORD dwArchitecture,
                           DWORD dwMajorVersion, DWORD dwMinorVersion, CopyFileLists& lists);

}  // namespace pikel
