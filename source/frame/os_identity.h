// What system runs: the process-wide record that every route goes by.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// Flags of a Windows family and version. A value carries one family flag and one version flag.
enum OsClass : DWORD {
    OsClass9xFamily = 0x1,
    OsClassNtFamily = 0x2,
    OsClassWin32s = 0x4,
    OsClassWindows95 = 0x8,
    OsClassWindows98 = 0x10,
    OsClassWindowsMe = 0x20,
    OsClassNt3 = 0x40,
    OsClassNt4 = 0x80,
    OsClassWindows2000 = 0x100,
    OsClassXp = 0x200,
    OsClassVista = 0x400,
    OsClassUnknown = 0x80000000,
};

/// 0 for x86 and every processor that isn't known.
enum CpuClass : DWORD {
    CpuClassX86 = 0,
    CpuClassIa64 = 0x10000000,  ///< bit 28
    CpuClassX64 = 0x20000000,   ///< bit 29
};

/// Version part of the record.
struct OsVersion {
    DWORD versionInfoSize = 0;  ///< structure size that GetVersionExA took
    DWORD majorVersion = 0;
    DWORD minorVersion = 0;
    DWORD buildNumber = 0;
    DWORD platformId = 0;
    char csdVersion[128] = {};
    WORD servicePackMajor = 0;
    WORD servicePackMinor = 0;
    WORD suiteMask = 0;
    BYTE productType = 0;
    BYTE reserved = 0;
    DWORD osClass = OsClassUnknown;
    DWORD cpuClass = CpuClassX86;
};

/// The record of the running system. The path texts are all empty when one of them could not be read.
struct OsIdentity : OsVersion {
    std::string windowsDirectory;
    std::string systemDirectory;
    std::string systemDrive;      ///< "C:"
    std::string tempDirectory;    ///< without its trailing backslash
    std::string moduleFilePath;   ///< full path of this module
    std::string moduleDirectory;  ///< without a trailing backslash
    std::string computerName;
};

/// The record, built on first use and kept until the process ends.
const OsIdentity& GetOsIdentity();

/// True when the running system has one of the flags.
/// @param dwFlags  of OsClass, ORed
inline bool HasOsClass(DWORD dwFlags) {
    return (GetOsIdentity().osClass & dwFlags) != 0;
}

/// Drops the record alone; ForgetSystemRecords drops all.
void ForgetOsIdentity();

/// OsClass of version fields; the classification alone, for any made-up values.
DWORD ClassifyOs(DWORD dwPlatformId, DWORD dwMajorVersion, DWORD dwMinorVersion, DWORD dwBuildNumber);
/// CpuClass of a dwProcessorType.
DWORD ClassifyProcessor(DWORD dwProcessorType);

/// True when a dwArchitecture value is not for the running system. An OsClass without a rule of its own takes all.
bool IsForeignArchitecture(DWORD dwArchitecture);

/// False on Windows 95, 98, Me and NT 4; true on every other system, the unknown ones too.
bool IsPrintUIUsable();

/// Module of the library: stored when it is attached, kept for path look-ups by the first Initialize.
void SetAttachedModule(HMODULE hModule);
/// Keeps the attached module for the path look-ups from now on.
void KeepModule();
/// The kept module; null before the first Initialize, which stands for the host program.
HMODULE GetKeptModule();

/// Drops the records of the running system (identity and route), so that the next use builds them anew. For programs
/// that run the library on several machines in turn, as the tests do.
void ForgetSystemRecords();

}  // namespace pikel
