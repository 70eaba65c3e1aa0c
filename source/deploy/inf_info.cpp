// Reads one model of an INF into the record that a driver add takes.
#include "deploy/inf_info.h"

#include <string>
#include <vector>

#include "inf/inf_access.h"
#include "deploy/model_sections.h"
#include "frame/look_ups.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/packer.h"
#include "inf/destination_dirs_section.h"
#include "inf/dependent_files.h"
#include "platform/owned.h"

namespace pikel {

namespace {

DWORD ReadModel(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                DWORD dwMinorVersion, ModelSections& model) {
    InfHandle inf;
    const DWORD dwStatus = OpenInf(lpcInfPath, inf);
    if (dwStatus != 0) {
        return dwStatus;
    }
    return model.ReadAll(inf.Get(), lpDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
}

/// DriverVersionCode of a driver.
DWORD DriverVersionOf(DWORD dwArchitecture, DWORD dwMajorVersion) {
    switch (dwArchitecture) {
        case PIKEL_ARCHITECTURE_NT4_X86:
        case PIKEL_ARCHITECTURE_NT_X86:
            return dwMajorVersion == 4 ? PIKEL_DRIVER_VERSION_NT4 : PIKEL_DRIVER_VERSION_2000;
        case PIKEL_ARCHITECTURE_IA64:
        case PIKEL_ARCHITECTURE_X64:
            return PIKEL_DRIVER_VERSION_2000;
        default:
            return PIKEL_DRIVER_VERSION_9X;
    }
}

// ---- the record before it is packed ---------------------------------------------------------------------------------

/// The record with pointers that borrow from the sections, from the caller and from the texts beside it.
struct Draft {
    DriverAddRecord record{};
    bool hasDriver = false;  ///< DriverInfo is filled in
    std::string strDriverPath;
    std::string strDataFile;
    std::string strConfigFile;
    std::string strHelpFile;
    std::string strDependentFiles;  ///< multi-string with its NULs
    std::vector<LPSTR> vecProfiles;
};

/// Null for a text that is absent. What it points at isn't written to: packing copies it.
LPSTR Borrow(const std::string& strText) {
    return strText.empty() ? nullptr : const_cast<LPSTR>(strText.c_str());
}

/// A file of the driver directory; the directory alone for an empty name.
std::string InDirectory(const std::string& strDirectory, const std::string& strFile) {
    return strFile.empty() ? strDirectory : strDirectory + "\\" + strFile;
}

void FillPaths(const CInfInstallSection& install, const std::string& strDirectory, Draft& draft) {
    draft.strDriverPath = InDirectory(strDirectory, install.m_strDriverFile);
    draft.strDataFile = InDirectory(strDirectory, install.m_strDataFile);
    draft.strConfigFile = InDirectory(strDirectory, install.m_strConfigFile);
    draft.strHelpFile = InDirectory(strDirectory, install.m_strHelpFile);

    DRIVER_INFO_6A& info = draft.record.DriverInfo;
    info.pDriverPath = Borrow(draft.strDriverPath);
    info.pDataFile = Borrow(draft.strDataFile);
    info.pConfigFile = Borrow(draft.strConfigFile);
    info.pHelpFile = Borrow(draft.strHelpFile);
    info.pDependentFiles = Borrow(draft.strDependentFiles);
}

/// A 9x driver has its date and version from the install section, and is the only one with a default data type.
void FillVersion(const ModelSections& model, DWORD dwVersion, DRIVER_INFO_6A& info) {
    info.cVersion = dwVersion;
    if (dwVersion == PIKEL_DRIVER_VERSION_9X) {
        info.pDefaultDataType = Borrow(model.m_cInstall.m_strDefaultDataType);
        info.ftDriverDate = model.m_cInstall.m_ftDriverDate;
        info.dwlDriverVersion = model.m_cInstall.m_qwDriverVer;
    } else {
        info.ftDriverDate = model.m_cVersion.m_ftDriverDate;
        info.dwlDriverVersion = model.m_cVersion.m_qwDriverVer;
    }
}

/// @param lpszEnvironment  DriverArchitecture; null stands for x86 here
/// @return 0, also without a driver part when the dependent files can't be told
DWORD FillDriver(const ModelSections& model, LPCSTR lpDriverName, LPCSTR lpszEnvironment, DWORD dwVersion,
                 Draft& draft) {
    if (lpszEnvironment == nullptr) {
        lpszEnvironment = kEnvironmentX86;
    }
    std::string strDirectory;
    DWORD dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
    if (dwStatus != 0) {
        return dwStatus;
    }
    if (GetDependentFiles(dwVersion, model.m_cInstall, draft.strDependentFiles) != 0) {
        return 0;
    }
    DRIVER_INFO_6A& info = draft.record.DriverInfo;
    FillVersion(model, dwVersion, info);
    FillPaths(model.m_cInstall, strDirectory, draft);
    info.pName = const_cast<LPSTR>(lpDriverName);
    info.pEnvironment = const_cast<LPSTR>(lpszEnvironment);
    info.pMonitorName = Borrow(model.m_cInstall.m_strMonitorName);
    info.pszMfgName = Borrow(model.m_cManufacturer.m_strManufacturer);
    info.pszOEMUrl = Borrow(model.m_cVersion.m_strOemUrl);
    info.pszHardwareID = Borrow(model.m_cModels.m_strHardwareId);
    info.pszProvider = Borrow(model.m_cVersion.m_strProvider);
    draft.hasDriver = true;
    return 0;
}

/// A monitor needs a name and a file; with one of them alone its part stays empty.
DWORD FillMonitor(const CInfInstallSection& install, LPCSTR lpszEnvironment, MONITOR_INFO_2A& info) {
    if (lpszEnvironment == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!install.m_strMonitorName.empty() && !install.m_strMonitorFile.empty()) {
        info.pName = Borrow(install.m_strMonitorName);
        info.pEnvironment = const_cast<LPSTR>(lpszEnvironment);
        info.pDLLName = Borrow(install.m_strMonitorFile);
    }
    return 0;
}

/// The files that go to a colour directory.
void FillProfiles(const CInfInstallSection& install, Draft& draft) {
    for (const CopyFileEntry& entry : install.m_vecCopyFiles) {
        if (entry.m_dwDirID == DirIDColor || entry.m_dwDirID == DirIDNtColor) {
            draft.vecProfiles.push_back(const_cast<LPSTR>(entry.m_strDest.c_str()));
        }
    }
    draft.record.ColorProfileCount = static_cast<DWORD>(draft.vecProfiles.size());
}

DWORD FillDraft(const ModelSections& model, LPCSTR lpDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                Draft& draft) {
    LPCSTR lpszEnvironment = DriverArchitectureOf(dwArchitecture);
    DWORD dwVersion = DriverVersionOf(dwArchitecture, dwMajorVersion);
    DWORD dwStatus = FillDriver(model, lpDriverName, lpszEnvironment, dwVersion, draft);
    if (dwStatus == 0) {
        dwStatus = FillMonitor(model.m_cInstall, lpszEnvironment, draft.record.MonitorInfo);
    }
    if (dwStatus == 0) {
        FillProfiles(model.m_cInstall, draft);
        draft.record.NotSelectedTimeout = model.m_cInstall.m_dwNotSelectedTimeout;
        draft.record.RetryTimeout = model.m_cInstall.m_dwRetryTimeout;
    }
    return dwStatus;
}

// ---- packing --------------------------------------------------------------------------------------------------------

/// The texts of the record that end in their first NUL, in the order in which they lie in the block.
constexpr LPSTR DRIVER_INFO_6A::*kDriverTexts[] = {
    &DRIVER_INFO_6A::pName,        &DRIVER_INFO_6A::pEnvironment,     &DRIVER_INFO_6A::pDriverPath,
    &DRIVER_INFO_6A::pDataFile,    &DRIVER_INFO_6A::pConfigFile,      &DRIVER_INFO_6A::pHelpFile,
    &DRIVER_INFO_6A::pMonitorName, &DRIVER_INFO_6A::pDefaultDataType, &DRIVER_INFO_6A::pszMfgName,
    &DRIVER_INFO_6A::pszOEMUrl,    &DRIVER_INFO_6A::pszHardwareID,    &DRIVER_INFO_6A::pszProvider,
};
constexpr LPSTR MONITOR_INFO_2A::*kMonitorTexts[] = {
    &MONITOR_INFO_2A::pName,
    &MONITOR_INFO_2A::pEnvironment,
    &MONITOR_INFO_2A::pDLLName,
};

/// Bytes of the packed record, by the steps of Pack.
std::size_t PackedSize(const Draft& draft) {
    PackSize size;
    size.Add<DriverAddRecord>();
    size.Add<LPSTR>(draft.vecProfiles.size());
    for (auto ppszText : kDriverTexts) {
        size.AddOptionalText(draft.record.DriverInfo.*ppszText);
    }
    size.AddText(draft.strDependentFiles);
    for (auto ppszText : kMonitorTexts) {
        size.AddOptionalText(draft.record.MonitorInfo.*ppszText);
    }
    for (LPSTR lpszProfile : draft.vecProfiles) {
        size.AddText(lpszProfile);
    }
    return size.Size();
}

/// Copies the record and all that it points at into a block of PackedSize bytes.
DriverAddRecord* Pack(const Draft& draft, void* pBlock) {
    Packer packer(pBlock);
    auto* pRecord = packer.Take<DriverAddRecord>();
    *pRecord = draft.record;
    LPSTR* ppszProfiles = packer.Take<LPSTR>(draft.vecProfiles.size());
    for (auto ppszText : kDriverTexts) {
        pRecord->DriverInfo.*ppszText = packer.OptionalText(draft.record.DriverInfo.*ppszText);
    }
    LPSTR lpszDependentFiles = packer.Text(draft.strDependentFiles);
    if (draft.record.DriverInfo.pDependentFiles != nullptr) {
        pRecord->DriverInfo.pDependentFiles = lpszDependentFiles;
    }
    for (auto ppszText : kMonitorTexts) {
        pRecord->MonitorInfo.*ppszText = packer.OptionalText(draft.record.MonitorInfo.*ppszText);
    }
    for (std::size_t i = 0; i < draft.vecProfiles.size(); ++i) {
        ppszProfiles[i] = packer.Text(draft.vecProfiles[i]);
    }
    if (!draft.vecProfiles.empty()) {
        pRecord->ColorProfileList = ppszProfiles;
    }
    return pRecord;
}

DWORD HandOut(const Draft& draft, DriverAddRecord** ppRecord) {
    *ppRecord = nullptr;
    if (!draft.hasDriver) {
        return ERROR_INVALID_PARAMETER;
    }
    HeapBlock block = AllocateHeap(PackedSize(draft));
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    *ppRecord = Pack(draft, block.Release());
    return 0;
}

}  // namespace

DWORD DoGetInfInfo(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                   DWORD dwMinorVersion, DriverAddRecord** ppRecord) {
    if (lpcInfPath == nullptr || lpDriverName == nullptr || ppRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DoGetInfInfo Start");
    WriteLogDetail("lpcInfPath:%s, lpDriverName:%s", lpcInfPath, lpDriverName);
    WriteLogDetail("dwArchitecture:%d", dwArchitecture);
    ModelSections model;
    Draft draft;
    DWORD dwStatus = ReadModel(lpcInfPath, lpDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion, model);
    if (dwStatus == 0) {
        dwStatus = FillDraft(model, lpDriverName, dwArchitecture, dwMajorVersion, draft);
    }
    if (dwStatus == 0) {
        dwStatus = HandOut(draft, ppRecord);
    }
    WriteLogDetail("DoGetInfInfo End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
