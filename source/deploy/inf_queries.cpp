// Queries of one model's files.
#include "deploy/inf_queries.h"

#include <algorithm>
#include <string>
#include <vector>

#include "inf/inf_access.h"
#include "deploy/copy_lists.h"
#include "deploy/model_sections.h"
#include "frame/log.h"
#include "frame/packer.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kMainFile = 1;
constexpr DWORD kDataFile = 3;
constexpr DWORD kOtherFile = 6;

// ---- the main file's name -------------------------------------------------------------------------------------------

/// The name that the source medium has for the driver's main file.
std::string SourceNameOf(const CInfInstallSection& install) {
    const auto entry =
        std::find_if(install.m_vecCopyFiles.begin(), install.m_vecCopyFiles.end(), [&](const CopyFileEntry& candidate) {
            return EqualNoCase(candidate.m_strDest.c_str(), install.m_strDriverFile.c_str());
        });
    if (entry == install.m_vecCopyFiles.end()) {
        return {};
    }
    return entry->m_strSource.empty() ? entry->m_strDest : entry->m_strSource;
}

DWORD ReadInstall(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                  DWORD dwMinorVersion, ModelSections& model) {
    if (lpszDriverName == nullptr || lpszInfPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    InfHandle inf;
    const DWORD dwStatus = OpenInf(lpszInfPath, inf);
    if (dwStatus != 0) {
        return dwStatus;
    }
    return model.ReadInstall(inf.Get(), lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
}

// ---- files by kind --------------------------------------------------------------------------------------------------

struct FileOfKind {
    DWORD dwKind;
    const std::string* pstrName;
};

void AppendFileKind(const CopyFileLists& lists, std::vector<FileOfKind>& vecFiles) {
    if (lists.vecSourceNames.size() != lists.vecTargetNames.size()) {
        WriteLog("AppendFileKind() Error!!! ... rvecSrcList != rvecDstList!");
        return;
    }
    for (std::size_t i = 0; i < lists.size(); ++i) {
        LPCSTR lpszTarget = lists.vecTargetNames[i].c_str();
        const DWORD dwKind = EqualNoCase(lpszTarget, lists.strDriverFile.c_str()) ? kMainFile
                             : EqualNoCase(lpszTarget, lists.strDataFile.c_str()) ? kDataFile
                                                                                  : kOtherFile;
        vecFiles.push_back({dwKind, &lists.vecSourceNames[i]});
    }
}

/// Packs the records and their names into one block. A list of no files counts as a failure.
DWORD HandOut(const std::vector<FileOfKind>& vecFiles, DriverFileRecord** ppRecords, LPDWORD pdwCount) {
    if (vecFiles.empty()) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    PackSize size;
    size.Add<DriverFileRecord>(vecFiles.size());
    for (const FileOfKind& file : vecFiles) {
        size.AddText(*file.pstrName);
    }
    HeapBlock block = AllocateHeap(size.Size());
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    Packer packer(block.Get());
    auto* pRecords = packer.Take<DriverFileRecord>(vecFiles.size());
    for (std::size_t i = 0; i < vecFiles.size(); ++i) {
        pRecords[i].dwKind = vecFiles[i].dwKind;
        pRecords[i].lpszName = packer.Text(*vecFiles[i].pstrName);
    }
    *ppRecords = static_cast<DriverFileRecord*>(block.Release());
    *pdwCount = static_cast<DWORD>(vecFiles.size());
    return 0;
}

// ---- the registry part ----------------------------------------------------------------------------------------------

DWORD ApplyRegistry(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                    DWORD dwMinorVersion) {
    if (lpszInfPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    UINT uErrorLine = 0;  // asked for and not read, as with every INF
    InfHandle inf(Platform().SetupOpenInfFileA(lpszInfPath, nullptr, INF_STYLE_WIN4, &uErrorLine));
    if (inf.Get() == INVALID_HANDLE_VALUE) {
        return 0;  // an INF that can't be opened has no registry part to apply: the operation reports success for it
    }
    if (inf.Get() == nullptr) {
        inf.Release();  // nothing that could be closed
        return ERROR_INVALID_PARAMETER;
    }
    if (lpszDriverName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    ModelSections model;
    const DWORD dwStatus = model.ReadModel(inf.Get(), lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
    if (dwStatus != 0) {
        return dwStatus;
    }
    const BOOL bDone = Platform().SetupInstallFromInfSectionA(
        nullptr, inf.Get(), model.m_cModels.m_strInstallSection.c_str(), SPINST_REGISTRY, nullptr, nullptr, 0, nullptr,
        nullptr, nullptr, nullptr);
    return bDone ? 0 : Platform().GetLastError();
}

}  // namespace

DWORD DoGetDriverFileNameFromInf(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                 DWORD dwMinorVersion, bool fWantDriverFile, LPSTR lpszName, LPDWORD pdwSize) {
    WriteLogDetail("DoGetDriverFileNameFromInf Start");
    ModelSections model;
    DWORD dwStatus = pdwSize == nullptr ? static_cast<DWORD>(ERROR_INVALID_PARAMETER)
                                        : ReadInstall(lpszInfPath, lpszDriverName, dwArchitecture, dwMajorVersion,
                                                      dwMinorVersion, model);
    if (dwStatus == 0) {
        const std::string strAnswer =
            fWantDriverFile ? model.m_cInstall.m_strDriverFile : SourceNameOf(model.m_cInstall);
        CopyIfFits(strAnswer, lpszName, *pdwSize);
        *pdwSize = static_cast<DWORD>(strAnswer.size() + 1);
    }
    WriteLogDetail("DoGetDriverFileNameFromInf End(%d)", dwStatus);
    return dwStatus;
}

DWORD DoEnumDriverFiles(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                        DWORD dwMinorVersion, DriverFileRecord** ppRecords, LPDWORD pdwCount) {
    WriteLogDetail("DoEnumDriverFiles Start");
    if (lpszInfPath == nullptr || lpszDriverName == nullptr || ppRecords == nullptr || pdwCount == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *ppRecords = nullptr;
    *pdwCount = 0;
    CopyFileLists lists;
    DWORD dwStatus = CollectCopyFileLists(lpszInfPath, lpszDriverName, PIKEL_COPY_AS_DESTINATION_NAME, dwArchitecture,
                                          dwMajorVersion, dwMinorVersion, lists);
    if (dwStatus == 0) {
        std::vector<FileOfKind> vecFiles;
        AppendFileKind(lists, vecFiles);
        dwStatus = HandOut(vecFiles, ppRecords, pdwCount);
    }
    WriteLogDetail("DoEnumDriverFiles End(%d)", dwStatus);
    return dwStatus;
}

DWORD DoControlRegistory(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                         DWORD dwMinorVersion) {
    WriteLogDetail("DoControlRegistory Start");
    const DWORD dwStatus = ApplyRegistry(lpszInfPath, lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
    WriteLogDetail("DoControlRegistory End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
