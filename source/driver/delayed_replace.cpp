// Delayed replacement of files on the 9x family.
#include "driver/delayed_replace.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/platform.h"

namespace pikel {

namespace {

constexpr char kWininit[] = "wininit.ini";
constexpr DWORD kSectionSize = 16384;  // bytes that the section is read into

bool BuildNewName(LPCSTR lpszOldFile, LPCSTR lpszExtension, LPSTR lpszNewFile) {
    const PathParts parts = SplitPath(lpszOldFile);
    return CopyIfFits(parts.strDrive + parts.strDirectory + parts.strName + lpszExtension, lpszNewFile, MAX_PATH);
}

/// Puts an entry behind the lines that the section has.
/// @param vecSection  the lines as they were read: each with its NUL, and one more behind the last
/// @param dwLength    length of the lines
DWORD AppendEntry(std::vector<char>& vecSection, DWORD dwLength, const std::string& strEntry) {
    if (dwLength + strEntry.size() + 2 > vecSection.size()) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::memcpy(vecSection.data() + dwLength, strEntry.c_str(), strEntry.size() + 1);
    vecSection[dwLength + strEntry.size() + 1] = '\0';
    // The section is read under one spelling and written under another; names of sections have no case.
    return Platform().WritePrivateProfileSectionA("rename", vecSection.data(), kWininit) ? 0
                                                                                         : Platform().GetLastError();
}

DWORD CopyAndRegister(LPCSTR lpszOldFile, LPCSTR lpszSourceFile, LPCSTR lpszNewFile) {
    WriteLogDetail("RenameFileAndRegister9x() CopyFile() srcPath is %s", lpszSourceFile);
    WriteLogDetail("RenameFileAndRegister9x() CopyFile() dstPath is %s", lpszNewFile);
    if (!Platform().CopyFileA(lpszSourceFile, lpszNewFile, FALSE)) {
        const DWORD dwStatus = Platform().GetLastError();
        WriteLogDetail("CopyMonitorFile9x コピー失敗:%s", lpszNewFile);
        return dwStatus;
    }
    WriteLogDetail("RenameFileAndRegister9x() WriteWininit() srcPath is %s", lpszOldFile);
    WriteLogDetail("RenameFileAndRegister9x() WriteWininit() dstPath is %s", lpszNewFile);
    const DWORD dwStatus = WriteWininit(lpszOldFile, lpszNewFile);
    if (dwStatus != 0) {
        WriteLogDetail("RenameFileAndRegister9x() リネームセクションの登録失敗");
    }
    return dwStatus;
}

}  // namespace

bool ReplaceExtension(LPCSTR lpszOldFile, LPCSTR lpszExtension, LPSTR lpszNewFile) {
    WriteLogDetail("ReplaceExtension Start");
    if (lpszOldFile == nullptr || lpszExtension == nullptr || lpszNewFile == nullptr) {
        WriteLogDetail("ReplaceExtension End(FALSE)");
        return false;
    }
    WriteLogDetail("ReplaceExtension OldFile=%s", lpszOldFile);
    WriteLogDetail("ReplaceExtension Ext=%s", lpszExtension);
    if (!BuildNewName(lpszOldFile, lpszExtension, lpszNewFile)) {
        WriteLogDetail("ReplaceExtension End(FALSE)");
        return false;
    }
    WriteLogDetail("ReplaceExtension NewFile=%s", lpszNewFile);
    WriteLogDetail("ReplaceExtension End(TRUE)");
    return true;
}

DWORD RenameFileAndRegister9x(LPCSTR lpszOldFile, LPCSTR lpszSourceFile) {
    if (lpszOldFile == nullptr || lpszSourceFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("RenameFileAndRegister9x() ReplaceExtension() OldFileName is %s", lpszOldFile);
    char szNewFile[MAX_PATH] = {};
    if (!ReplaceExtension(lpszOldFile, ".new", szNewFile)) {
        WriteLogDetail("RenameFileAndRegister9x() 新しいファイル名の作成に失敗");
        return ERROR_INTERNAL_ERROR;
    }
    WriteLogDetail("RenameFileAndRegister9x() ReplaceExtension() NewFileName is %s", szNewFile);
    return CopyAndRegister(lpszOldFile, lpszSourceFile, szNewFile);
}

DWORD WriteWininit(LPCSTR lpszTarget, LPCSTR lpszSource) {
    if (lpszTarget == nullptr || lpszSource == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("WriteWininit() - %s Start", lpszTarget);
    const std::string strEntry = std::string(lpszTarget) + "=" + lpszSource;
    // Two bytes more than the profile call is told of, so that its lines end in any case.
    std::vector<char> vecSection(kSectionSize + 2);
    const DWORD dwLength = std::min(
        Platform().GetPrivateProfileSectionA("RENAME", vecSection.data(), kSectionSize, kWininit), kSectionSize);
    DWORD dwStatus = 0;
    if (dwLength == 0) {
        if (!Platform().WritePrivateProfileStringA("RENAME", lpszTarget, lpszSource, kWininit)) {
            dwStatus = Platform().GetLastError();
        }
    } else {
        for (LPCSTR lpszLine : MultiString(vecSection.data())) {
            if (EqualNoCase(lpszLine, strEntry.c_str())) {
                return 0;  // without the end line
            }
        }
        dwStatus = AppendEntry(vecSection, dwLength, strEntry);
    }
    WriteLogDetail("WriteWininit() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
