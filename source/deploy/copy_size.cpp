// Sums up the files of several models.
#include "deploy/copy_size.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "inf/inf_access.h"
#include "deploy/copy_lists.h"
#include "deploy/expand_file.h"
#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// The pairs of names that the models have. Names are told apart by every byte, also by case.
class FilePairs {
  public:
    /// Takes the pairs of one model. A pair that is there already counts as repeated once more.
    void Add(const CopyFileLists& lists) {
        for (std::size_t i = 0; i < lists.size(); ++i) {
            const auto [pair, fIsNew] = m_setPairs.emplace(lists.vecSourceNames[i], lists.vecTargetNames[i]);
            if (fIsNew) {
                m_mapDistinct[pair->first].push_back(&pair->second);
            } else {
                ++m_mapRepeated[pair->second];
            }
        }
    }

    /// Sources in the order of their bytes, and the targets of each in the order of their coming.
    const std::map<std::string, std::vector<const std::string*>>& Distinct() const { return m_mapDistinct; }
    DWORD Repetitions(const std::string& strTarget) const {
        const auto found = m_mapRepeated.find(strTarget);
        return found == m_mapRepeated.end() ? 0 : found->second;
    }

  private:
    std::set<std::pair<std::string, std::string>> m_setPairs;
    std::map<std::string, std::vector<const std::string*>> m_mapDistinct;
    std::unordered_map<std::string, DWORD> m_mapRepeated;  ///< by target name, whatever the source
};

/// Reads all models from one open INF.
/// @return the code of the last one
DWORD CollectPairs(LPCSTR lpszInfPath, LPCSTR lpszModelNames, DWORD dwCopyNameMode, DWORD dwArchitecture,
                   DWORD dwMajorVersion, DWORD dwMinorVersion, FilePairs& pairs) {
    if (IsEmpty(lpszModelNames)) {
        return 0;
    }
    InfHandle inf;
    DWORD dwStatus = OpenInf(lpszInfPath, inf);
    if (dwStatus != 0) {
        return dwStatus;
    }
    CopyFileLists lists;
    for (LPCSTR lpszModel : MultiString(lpszModelNames)) {
        dwStatus = CollectCopyFileLists(inf.Get(), lpszModel, dwCopyNameMode, dwArchitecture, dwMajorVersion,
                                        dwMinorVersion, lists);
        // A model that can't be read leaves the lists of the one before it, which then count as repeated.
        pairs.Add(lists);
    }
    return dwStatus;
}

void SumUp(const FilePairs& pairs, const std::string& strFolder, LPDWORD pdwTotalSize, LPDWORD pdwSharedSize) {
    DWORD dwTotal = 0;
    DWORD dwShared = 0;
    DWORD dwSize = 0;
    for (const auto& [strSource, vecTargets] : pairs.Distinct()) {
        const std::string strPath = strFolder + strSource;
        for (const std::string* pstrTarget : vecTargets) {
            SourceFileInfo info;
            if (GetSourceFileInfo(strPath, info)) {
                dwSize = info.dwTargetSize;
                dwTotal += dwSize;
                WriteLogDetail("\t\tFile(%s) Size\t%d\t%d", strPath.c_str(), info.dwSourceSize, info.dwTargetSize);
            }
            // A file that isn't there counts here with the size of the last one that was. A test for it would lower the
            // shared size that the operation hands out.
            dwShared += dwSize * pairs.Repetitions(*pstrTarget);
        }
    }
    *pdwTotalSize = dwTotal;
    *pdwSharedSize = dwShared;
}

}  // namespace

DWORD DoGetCopyDriverFilesSize(LPCSTR lpszInfPath, LPCSTR lpszModelNames, LPDWORD pdwTotalSize, LPDWORD pdwSharedSize,
                               DWORD dwCopyNameMode, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion) {
    WriteLogDetail("DoGetCopyDriverFilesSize Start");
    if (lpszInfPath == nullptr || lpszModelNames == nullptr || pdwTotalSize == nullptr || pdwSharedSize == nullptr ||
        !IsCopyNameMode(dwCopyNameMode)) {
        return ERROR_INVALID_PARAMETER;
    }
    FilePairs pairs;
    const DWORD dwStatus = CollectPairs(lpszInfPath, lpszModelNames, dwCopyNameMode, dwArchitecture, dwMajorVersion,
                                        dwMinorVersion, pairs);
    if (dwStatus == 0) {
        SumUp(pairs, FolderOfPath(lpszInfPath), pdwTotalSize, pdwSharedSize);
    }
    WriteLogDetail("DoGetCopyDriverFilesSize End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
