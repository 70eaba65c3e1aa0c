// The search for installed INFs, and what tells one INF from another.
#include "inf_store/inf_search.h"

#include <string_view>
#include <unordered_set>

#include "inf/inf_access.h"
#include "inf/manufacturer_section.h"
#include "inf/models_section.h"
#include "frame/text_stream.h"
#include "frame/log.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kClassNameSize = 256;
/// Characters of a line that IsInfTextDifferent compares.
constexpr std::size_t kMaxLine = 259;

/// The list of INF names of a folder.
/// @param names [out]  multi-string; empty with status 0 when the list could be sized but not be read
DWORD ListInfs(LPCSTR lpszDirectory, HeapBlock& names) {
    DWORD dwSize = 0;
    if (!Platform().SetupGetInfFileListA(lpszDirectory, INF_STYLE_WIN4, nullptr, 0, &dwSize)) {
        return Platform().GetLastError();
    }
    HeapBlock block = AllocateHeap(SIZE_T{dwSize} + 2);  // ends as a multi-string, whatever is written
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    // A list that can't be read the second time counts as an empty one.
    if (Platform().SetupGetInfFileListA(lpszDirectory, INF_STYLE_WIN4, static_cast<PSTR>(block.Get()), dwSize,
                                        &dwSize)) {
        WriteLog("SetupGetInfFileList Success");
        names = std::move(block);
    }
    return ERROR_SUCCESS;
}

bool IsOfClass(LPCSTR lpszPath, LPCSTR lpszClass) {
    GUID guid{};
    char szClass[kClassNameSize] = {};
    return Platform().SetupDiGetINFClassA(lpszPath, &guid, szClass, kClassNameSize, nullptr) &&
           EqualNoCase(lpszClass, szClass);
}

/// Equal but for case. A NUL within a line ends what the system compares, so that the parts are compared one by one.
bool AreSameLine(const std::string& strLine1, const std::string& strLine2) {
    std::size_t dwAt1 = 0;
    std::size_t dwAt2 = 0;
    for (;;) {
        if (!EqualNoCase(strLine1.c_str() + dwAt1, strLine2.c_str() + dwAt2)) {
            return false;
        }
        dwAt1 = strLine1.find('\0', dwAt1);
        dwAt2 = strLine2.find('\0', dwAt2);
        if (dwAt1 == std::string::npos || dwAt2 == std::string::npos) {
            return dwAt1 == dwAt2;
        }
        ++dwAt1;
        ++dwAt2;
    }
}

/// The two pairs of calls that locate an INF: each asks for the size first.
DWORD FindInfPath(LPCSTR lpszName, std::string& strPath) {
    DWORD dwSize = 0;
    if (!Platform().SetupGetInfInformationA(lpszName, INFINFO_DEFAULT_SEARCH, nullptr, 0, &dwSize)) {
        return Platform().GetLastError();
    }
    HeapBlock information = AllocateHeap(dwSize);
    if (!information) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    auto* pInformation = static_cast<PSP_INF_INFORMATION>(information.Get());
    if (!Platform().SetupGetInfInformationA(lpszName, INFINFO_DEFAULT_SEARCH, pInformation, dwSize, &dwSize)) {
        return Platform().GetLastError();
    }
    DWORD dwPathSize = 0;
    if (!Platform().SetupQueryInfFileInformationA(pInformation, 0, nullptr, 0, &dwPathSize)) {
        return Platform().GetLastError();
    }
    HeapBlock path = AllocateHeap(SIZE_T{dwPathSize} + 1);  // ends in a NUL, whatever is written
    if (!path) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    auto* lpszPath = static_cast<LPSTR>(path.Get());
    if (!Platform().SetupQueryInfFileInformationA(pInformation, 0, lpszPath, dwPathSize, &dwPathSize)) {
        return Platform().GetLastError();
    }
    strPath = lpszPath;
    return ERROR_SUCCESS;
}

}  // namespace

DWORD CInfSearch::SearchNames(LPCSTR lpszDirectory, LPCSTR lpszNames, LPCSTR lpszProvider, LPCSTR lpszClass,
                              StringList& listPaths) {
    for (LPCSTR lpszName : MultiString(lpszNames)) {
        std::string strPath = TextOrEmpty(lpszDirectory) + std::string(lpszName);
        WriteLog("szInfPath:%s", strPath.c_str());
        WriteLog("lpBuffer[i]:%s", lpszName);
        // The class first: a file of another one is not opened. Nor is one with a path that the system can't take.
        if (strPath.size() >= MAX_PATH || !IsOfClass(strPath.c_str(), lpszClass)) {
            continue;
        }
        InfHandle inf;
        const DWORD dwStatus = OpenInf(strPath.c_str(), inf);
        if (dwStatus != ERROR_SUCCESS) {
            return dwStatus;
        }
        m_cVersion = CInfVersionSection();
        m_cVersion.GetData(inf.Get());
        if (EqualNoCase(m_cVersion.m_strProvider.c_str(), lpszProvider)) {
            WriteLog("--- [%d]%s  ---", static_cast<int>(listPaths.size()), strPath.c_str());
            listPaths.Append(std::move(strPath));
        }
    }
    return ERROR_SUCCESS;
}

DWORD CInfSearch::SearchINFFile(LPCSTR lpszDirectory, LPCSTR lpszProvider, LPCSTR lpszClass, StringList& listPaths) {
    listPaths.Clear();
    WriteLog("--- SearchINFFile start  ---");
    HeapBlock names;
    DWORD dwStatus = ListInfs(lpszDirectory, names);
    if (names) {
        dwStatus = SearchNames(lpszDirectory, static_cast<LPCSTR>(names.Get()), lpszProvider, lpszClass, listPaths);
        names.Reset();
    }
    WriteLog("--- SearchINFFile End:%d  ---", static_cast<int>(dwStatus));
    return dwStatus;
}

DWORD SearchInfList(LPCSTR lpszDirectory, LPCSTR lpszProvider, LPCSTR lpszClass, StringList& listPaths) {
    return CInfSearch().SearchINFFile(lpszDirectory, lpszProvider, lpszClass, listPaths);
}

DWORD CheckDriverNameFromINF(const StringList& listWanted, const StringList& listHeld) {
    const std::unordered_set<std::string_view> setHeld(listHeld.begin(), listHeld.end());
    for (const std::string& strName : listWanted) {
        if (setHeld.count(strName) == 0) {
            WriteLog("CheckDriverNameFromINF - (%s) is not exist ", strName.c_str());
            return 0;
        }
        WriteLog("CheckDriverNameFromINF - (%s) is  exist ", strName.c_str());
    }
    return 1;
}

DWORD IsInfTextDifferent(LPCSTR lpszFile1, LPCSTR lpszFile2) {
    TextStream stream1;
    TextStream stream2;
    // A file that can't be read counts as not different.
    if (lpszFile1 == nullptr || lpszFile2 == nullptr || !stream1.Open(lpszFile1) || !stream2.Open(lpszFile2)) {
        return 0;
    }
    std::string strLine1;
    std::string strLine2;
    while (!stream1.AtEnd() && !stream2.AtEnd()) {
        const bool bWhole1 = stream1.ReadLine(strLine1, kMaxLine) == TextStream::Line::Whole;
        const bool bWhole2 = stream2.ReadLine(strLine2, kMaxLine) == TextStream::Line::Whole;
        if (!bWhole1 || !bWhole2 || !AreSameLine(strLine1, strLine2)) {
            return 1;
        }
    }
    return stream1.AtEnd() == stream2.AtEnd() ? 0 : 1;
}

std::string SystemInfFolder() {
    char szWindows[MAX_PATH] = {};
    Platform().GetWindowsDirectoryA(szWindows, sizeof szWindows);
    szWindows[sizeof szWindows - 1] = '\0';
    return std::string(szWindows) + "\\inf\\";
}

DWORD GetInfPath(LPCSTR lpszName, std::string& strPath) {
    WriteLog("GetInfPath Start");
    const DWORD dwStatus = FindInfPath(lpszName, strPath);
    WriteLog("GetInfPath End:%d", static_cast<int>(dwStatus));
    return dwStatus;
}

DWORD GetInfModelList(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, StringList& listModels,
                      NoModels noModels) {
    listModels.Clear();
    CInfManufacturerSection manufacturer;
    InfHandle inf;
    DWORD dwStatus = OpenInf(lpszInfFile, inf);
    if (!inf) {
        return dwStatus;  // 0 too, where the system gives no code for an INF that can't be opened
    }
    dwStatus = manufacturer.GetData(inf.Get(), dwProcessor, dwMajor, dwMinor);
    if (dwStatus != ERROR_SUCCESS || (manufacturer.m_vecSections.empty() && noModels == NoModels::AreNone)) {
        return dwStatus;
    }
    // Without a chosen section the empty name is looked up, which fails as a missing section does.
    return CInfModelsSection::GetAllDeviceKey(inf.Get(), manufacturer.m_vecSections.FrontOrEmpty().c_str(), listModels);
}

}  // namespace pikel
