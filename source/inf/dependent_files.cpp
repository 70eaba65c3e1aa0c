// The list of dependent files with which a driver is registered: the files beyond the main ones, as one multi-string.
#include "inf/dependent_files.h"

#include <vector>

#include "inf/destination_dirs_section.h"
#include "frame/log.h"
#include "frame/os_route.h"

namespace pikel {

namespace {

/// Closes a multi-string; one without a name stays empty.
void CloseList(std::string& strFiles) {
    if (!strFiles.empty()) {
        strFiles.push_back('\0');
    }
}

void AppendName(const std::string& strName, std::string& strFiles) {
    strFiles += strName;
    strFiles.push_back('\0');
}

/// All files; profiles with the folder in which the 9x family keeps them.
void ListFiles9x(const CInfInstallSection& install, std::string& strFiles) {
    for (const CopyFileEntry& entry : install.m_vecCopyFiles) {
        if (entry.m_dwDirID == DirIDColor) {
            strFiles += "Color";
            strFiles += "\\";
        }
        AppendName(entry.m_strDest, strFiles);
    }
    CloseList(strFiles);
}

/// True for a file of the printer driver directory that isn't one of the four main files. Names are compared byte by
/// byte: a main file that the copy section spells in another case stays a dependent one.
bool IsDependent(const CopyFileEntry& entry, const CInfInstallSection& install) {
    return entry.m_strDest != install.m_strDriverFile && entry.m_strDest != install.m_strDataFile &&
           entry.m_strDest != install.m_strConfigFile && entry.m_strDest != install.m_strHelpFile &&
           entry.m_dwDirID == DirIDPrinterDriver;
}

/// The dependent files alone, in their order.
void ListFiles2k(const CInfInstallSection& install, std::string& strFiles) {
    WriteLog("--- Dependents:before ---");
    for (const CopyFileEntry& entry : install.m_vecCopyFiles) {
        WriteLog("D:%s", entry.m_strDest.c_str());
    }
    std::vector<const CopyFileEntry*> vecDependents;
    for (const CopyFileEntry& entry : install.m_vecCopyFiles) {
        if (IsDependent(entry, install)) {
            vecDependents.push_back(&entry);
        }
    }
    WriteLog("--- Dependents:after ---");
    for (const CopyFileEntry* pEntry : vecDependents) {
        WriteLog("D:%s", pEntry->m_strDest.c_str());
    }
    for (const CopyFileEntry* pEntry : vecDependents) {
        AppendName(pEntry->m_strDest, strFiles);
    }
    CloseList(strFiles);
}

using DependentFilesRoutine = DWORD (*)(DWORD, const CInfInstallSection&, std::string&);

constexpr OsRouteTable<DependentFilesRoutine> kDependentFilesRoutines = {
    GetDependentFiles9x,  // Windows 95
    GetDependentFiles9x,  // Windows 98
    GetDependentFiles9x,  // Windows Me
    GetDependentFilesNT,  // NT 4
    GetDependentFiles2k,  // Windows 2000
    GetDependentFiles2k,  // XP generation, x86
    GetDependentFiles2k,  // XP generation, IA64
    GetDependentFiles2k,  // XP generation, x64
    GetDependentFiles2k,  // Vista generation, x86
    GetDependentFiles2k,  // Vista generation, IA64
    GetDependentFiles2k,  // Vista generation, x64
    GetDependentFiles2k,  // any other
};
static_assert(IsComplete(kDependentFilesRoutines));

}  // namespace

DWORD GetDependentFiles9x(DWORD /*dwDriverVersion*/, const CInfInstallSection& install, std::string& strFiles) {
    WriteLog("GetDependentFiles9x() - Start");
    strFiles.clear();
    ListFiles9x(install, strFiles);
    WriteLog("GetDependentFiles9x() - End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

DWORD GetDependentFilesNT(DWORD /*dwDriverVersion*/, const CInfInstallSection& install, std::string& strFiles) {
    WriteLog("GetDependentFilesNT() - Start");
    strFiles.clear();
    for (const CopyFileEntry& entry : install.m_vecCopyFiles) {
        AppendName(entry.m_strDest, strFiles);
    }
    CloseList(strFiles);
    WriteLog("GetDependentFilesNT() - End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

DWORD GetDependentFiles2k(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles) {
    WriteLog("GetDependentFiles2k() - Start");
    strFiles.clear();
    if (dwDriverVersion == 0) {
        ListFiles9x(install, strFiles);
    } else {
        ListFiles2k(install, strFiles);
    }
    WriteLog("GetDependentFiles2k() - End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

DWORD GetDependentFiles(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles) {
    return CallRoute(kDependentFilesRoutines, dwDriverVersion, install, strFiles);
}

}  // namespace pikel
