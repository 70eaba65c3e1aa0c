// Compressed source files, by the Setup API.
#include "deploy/expand_file.h"

#include "platform/owned.h"

namespace pikel {

bool GetSourceFileInfo(const std::string& strPath, SourceFileInfo& info) {
    LPSTR lpszActualName = nullptr;
    const DWORD dwCode = Platform().SetupGetFileCompressionInfoA(strPath.c_str(), &lpszActualName, &info.dwSourceSize,
                                                                 &info.dwTargetSize, &info.nCompression);
    if (dwCode != 0) {
        return false;
    }
    // The name under which the file really lies isn't of use here: expanding finds it again.
    const LocalBlock actualName(lpszActualName);
    return true;
}

bool ExpandFile(const std::string& strSource, const std::string& strTarget, const SourceFileInfo& info) {
    UINT nCompression = info.nCompression;
    return Platform().SetupDecompressOrCopyFileA(strSource.c_str(), strTarget.c_str(), &nCompression) == 0;
}

}  // namespace pikel
