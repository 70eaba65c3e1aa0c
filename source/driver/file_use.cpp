// Tests of driver files: in use or not, newer or older.
#include "driver/file_use.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include "spooler/driver_records.h"
#include "frame/look_ups.h"
#include "frame/file_version.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/path.h"
#include "frame/string_list.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kShortVersionSize = 32;  // bytes of a version text here

const DRIVER_INFO_3A* FindDriver(const HeapBlock& drivers, DWORD dwCount, LPCSTR lpszDriverName) {
    const auto* pFirst = static_cast<const DRIVER_INFO_3A*>(drivers.Get());
    const auto* pFound = std::find_if(pFirst, pFirst + dwCount, [&](const DRIVER_INFO_3A& info) {
        return EqualNoCase(TextOrEmpty(info.pName), TextOrEmpty(lpszDriverName));
    });
    return pFound == pFirst + dwCount ? nullptr : pFound;
}

/// True when the first place of a mark in a stem is the stem's end. A stem that has the mark earlier as well passes for
/// another file, which is probed then: "nt4nt.dll" is, "drvnt.dll" isn't.
bool EndsAtFirst(const std::string& strStem, std::string_view mark) {
    const std::size_t nPlace = strStem.find(mark);
    return nPlace != std::string::npos && strStem.size() - nPlace == mark.size();
}

std::string LowerCase(std::string strText) {
    for (char& ch : strText) {
        if (ch >= 'A' && ch <= 'Z') {
            ch = static_cast<char>(ch - 'A' + 'a');
        }
    }
    return strText;
}

/// Dependent files that say something about the driver's being loaded.
bool IsTelling(LPCSTR lpszFile, const std::string& strMonitorFile) {
    const PathParts parts = SplitPath(lpszFile);
    if (!EqualNoCase(parts.strExtension.c_str(), ".dll") && !EqualNoCase(parts.strExtension.c_str(), ".drv")) {
        return false;
    }
    if (EqualNoCase(parts.strName.substr(0, 3).c_str(), "auc") || EqualNoCase(lpszFile, "usbmon.dll")) {
        return false;
    }
    const std::string strStem = LowerCase(parts.strName);
    if (EndsAtFirst(strStem, "9x") || EndsAtFirst(strStem, "nt")) {
        return false;
    }
    return strMonitorFile.empty() || !EqualNoCase(lpszFile, strMonitorFile.c_str());
}

StringList TellingFiles(const DRIVER_INFO_3A& driver) {
    std::string strMonitorFile;
    GetMonitorFile(driver.pMonitorName, strMonitorFile);  // without a file, none is left out for it
    StringList files;
    for (LPCSTR lpszFile : MultiString(driver.pDependentFiles)) {
        if (IsTelling(lpszFile, strMonitorFile)) {
            files.Append(lpszFile);
        }
    }
    return files;
}

/// Probes every file, so that the log tells of each.
bool IsAnyInUse(const StringList& files) {
    bool fInUse = false;
    for (const std::string& strFile : files) {
        const std::string strPath = GetOsIdentity().systemDirectory + "\\" + strFile;
        ClearReadOnly(strPath.c_str());
        DWORD dwCode = 0;
        switch (ProbeFileUse(strPath.c_str(), &dwCode)) {
            case FileUse::Free:
                WriteLog("...File(%s) is not used", strPath.c_str());
                break;
            case FileUse::InUse:
                WriteLog("...File(%s) is used", strPath.c_str());
                fInUse = true;
                break;
            case FileUse::Unknown:
                WriteLog("*** CreateFile(%s): Error(%d) ***", strPath.c_str(), dwCode);
                break;
        }
    }
    return fInUse;
}

/// Settles two version texts as numbers. In single precision on purpose: versions that a float can't tell apart count
/// as equal, and the files' times decide then.
INT CompareVersionTexts(LPCSTR lpszSource, LPCSTR lpszTarget) {
    const auto fSource = static_cast<float>(std::strtod(lpszSource, nullptr));
    const auto fTarget = static_cast<float>(std::strtod(lpszTarget, nullptr));
    return fSource > fTarget ? 1 : fTarget > fSource ? -1 : 0;
}

}  // namespace

FileUse ProbeFileUse(LPCSTR lpszPath, DWORD* pdwCode) {
    *pdwCode = 0;
    const FileHandle file(Platform().CreateFileA(lpszPath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) {
        return FileUse::Free;
    }
    *pdwCode = Platform().GetLastError();
    const bool fHeld = *pdwCode == ERROR_SHARING_VIOLATION || *pdwCode == ERROR_LOCK_VIOLATION;
    return fHeld ? FileUse::InUse : FileUse::Unknown;
}

void ClearReadOnly(LPCSTR lpszPath) {
    const DWORD dwAttributes = Platform().GetFileAttributesA(lpszPath);
    if ((dwAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
        Platform().SetFileAttributesA(lpszPath, dwAttributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    }
}

DWORD IsDriverFileLoaded(LPCSTR lpszDriverName) {
    if (!HasOsClass(OsClass9xFamily)) {
        return 0;
    }
    HeapBlock drivers;
    DWORD dwCount = 0;
    if (EnumDriverRecords(nullptr, 3, drivers, &dwCount) != 0) {
        return 0;
    }
    const DRIVER_INFO_3A* pDriver = FindDriver(drivers, dwCount, lpszDriverName);
    if (pDriver == nullptr || IsEmpty(pDriver->pDependentFiles)) {
        return 0;
    }
    return IsAnyInUse(TellingFiles(*pDriver)) ? 1 : 0;
}

DWORD CheckUseMonitorFile(LPCSTR lpszPath) {
    if (lpszPath == nullptr) {
        WriteLogDetail("CheckUseMonitorFile End(FALSE)");
        return 0;
    }
    WriteLogDetail("CheckUseMonitorFile File=%s", lpszPath);
    DWORD dwCode = 0;
    const bool fInUse = ProbeFileUse(lpszPath, &dwCode) == FileUse::InUse;
    if (fInUse) {
        WriteLogDetail("CheckUseMonitorFile End(TRUE)");
    }
    // A fixed text that says nothing about the outcome: a file that is free ends the log with (TRUE) as well, and one
    // in use has the line twice.
    WriteLogDetail("CheckUseMonitorFile End(TRUE)");
    return fInUse ? 1 : 0;
}

DWORD CompareFileVersion(LPCSTR lpszSource, LPCSTR lpszTarget, INT& nResult) {
    nResult = 0;
    char szSource[kShortVersionSize] = {};
    char szTarget[kShortVersionSize] = {};
    if (!Platform().PathFileExistsA(lpszSource)) {
        nResult = 2;
    } else {
        DoGetDriverFileVersion(lpszSource, szSource, sizeof szSource, 0);
    }
    if (!Platform().PathFileExistsA(lpszTarget)) {
        nResult = -2;
        return 0;
    }
    DoGetDriverFileVersion(lpszTarget, szTarget, sizeof szTarget, 0);
    if (nResult != 0) {
        return 0;
    }
    if (!IsEmpty(szSource) && !IsEmpty(szTarget)) {
        nResult = CompareVersionTexts(szSource, szTarget);
    }
    if (nResult == 0) {
        FileCompare(lpszSource, lpszTarget, nResult);
    }
    return 0;
}

}  // namespace pikel
