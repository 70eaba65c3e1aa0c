// Collects the files of one model.
#include "deploy/copy_lists.h"

#include "inf/inf_access.h"
#include "deploy/model_sections.h"
#include "frame/pikel.h"

namespace pikel {

namespace {

void Add(CopyFileLists& lists, const std::string& strSource, const std::string& strTarget, INT nDirID) {
    lists.vecSourceNames.push_back(strSource);
    lists.vecTargetNames.push_back(strTarget);
    lists.vecDirIDs.push_back(nDirID);
}

void AddEntry(CopyFileLists& lists, const CopyFileEntry& entry, DWORD dwCopyNameMode) {
    const INT nDirID = static_cast<INT>(entry.m_dwDirID);
    if (entry.m_strSource.empty()) {
        Add(lists, entry.m_strDest, entry.m_strDest, nDirID);
        return;
    }
    if ((dwCopyNameMode & PIKEL_COPY_AS_DESTINATION_NAME) != 0) {
        Add(lists, entry.m_strSource, entry.m_strDest, nDirID);
    }
    if ((dwCopyNameMode & PIKEL_COPY_AS_SOURCE_NAME) != 0) {
        Add(lists, entry.m_strSource, entry.m_strSource, nDirID);
    }
}

}  // namespace

DWORD CollectCopyFileLists(HINF hInf, LPCSTR lpszDriverName, DWORD dwCopyNameMode, DWORD dwArchitecture,
                           DWORD dwMajorVersion, DWORD dwMinorVersion, CopyFileLists& lists) {
    if (hInf == nullptr || lpszDriverName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    ModelSections model;
    const DWORD dwStatus = model.ReadAll(hInf, lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
    if (dwStatus != 0) {
        return dwStatus;
    }
    lists = {};
    for (const CopyFileEntry& entry : model.m_cInstall.m_vecCopyFiles) {
        AddEntry(lists, entry, dwCopyNameMode);
    }
    const std::string& strCatalog = model.m_cVersion.m_strCatalogFile;
    if (!strCatalog.empty()) {
        Add(lists, strCatalog, strCatalog, kNoDirID);
    }
    lists.strMonitorFile = model.m_cInstall.m_strMonitorFile;
    lists.strDriverFile = model.m_cInstall.m_strDriverFile;
    lists.strDataFile = model.m_cInstall.m_strDataFile;
    return 0;
}

DWORD CollectCopyFileLists(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwCopyNameMode, DWORD dwArchitecture,
                           DWORD dwMajorVersion, DWORD dwMinorVersion, CopyFileLists& lists) {
    if (lpszInfPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    InfHandle inf;
    const DWORD dwStatus = OpenInf(lpszInfPath, inf);
    if (dwStatus != 0) {
        return dwStatus;
    }
    return CollectCopyFileLists(inf.Get(), lpszDriverName, dwCopyNameMode, dwArchitecture, dwMajorVersion,
                                dwMinorVersion, lists);
}

}  // namespace pikel
