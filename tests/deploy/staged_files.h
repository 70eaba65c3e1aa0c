// Fixture for tests of the staged copy of several files.
#pragma once

#include <string>
#include <vector>

#include "deploy/staged_copy.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel::testing_support {

inline constexpr char kStagedInf[] = "C:\\Package\\aurora.inf";
inline constexpr char kStaging[] = "C:\\staging";
inline constexpr char kThreeFiles[] = "A.DLL\r\nB.DLL\r\nC.DLL\r\n";

/// A package with A.DLL, B.DLL and C.DLL of version 2.0, and its staged copy. The log is on.
class StagedFiles : public MachineTest {
  protected:
    StagedFiles() { Begin("xp"); }
    /// @param files    lines of the copy section
    /// @param install  further lines of the install section
    void Begin(const std::string& system, const std::string& files = kThreeFiles, const std::string& install = {}) {
        Start(system);
        PutInf(files, install);
        for (const char* name : {"A.DLL", "B.DLL", "C.DLL"}) {
            PutSource(name, "2.0");
        }
        Test().TurnLogOn();
        ForgetCalls(Test());
    }
    void PutInf(const std::string& files, const std::string& install = {}) {
        WriteFileOn(Machine(), kStagedInf,
                    "[Version]\r\nSignature=\"$Windows NT$\"\r\n[Manufacturer]\r\nN=NL\r\n[NL]\r\n\"Aurora\"=AURORA\r\n"
                    "[AURORA]\r\nCopyFiles=FILES\r\n" +
                        install + "[FILES]\r\n" + files + "[DestinationDirs]\r\nDefaultDestDir=66000\r\n");
    }
    DWORD Copy(DWORD mode = 2, DWORD infArchitecture = 3, const char* staging = kStaging) {
        return DoCopyInfDriverFilesEx(kStagedInf, "Aurora", mode, &m_restart, staging, infArchitecture, 3, 5, 1);
    }

    std::string Drivers() { return Machine().System().systemDirectory + "\\spool\\drivers\\W32X86\\"; }
    std::string Installed(const std::string& name) { return Drivers() + "3\\" + name; }
    void PutSource(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), "C:\\Package\\" + name, MakePeFile(version));
    }
    void PutInstalled(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), Installed(name), MakePeFile(version));
    }
    simulated::Files::Held Hold(const std::string& path) { return Machine().Files().HoldOpen(path, FILE_SHARE_READ); }
    bool IsOf(const std::string& path, const std::string& version) {
        return Machine().Files().Read(path) == MakePeFile(version);
    }
    /// The lines that tell how the files were placed and whether they were locked.
    std::vector<std::string> TakeVerdicts() {
        std::vector<std::string> lines;
        for (std::string& line : Test().TakeLog()) {
            if (line.starts_with("::") || line.find("lock] ") != std::string::npos) {
                lines.push_back(std::move(line));
            }
        }
        return lines;
    }
    std::string Copied(const std::string& name) {
        return "::CopyFile( C:\\staging\\" + name + ", " + Drivers() + name + ", FALSE );";
    }
    std::string Deferred(const std::string& name) {
        return "::SetupInstallFileEx( " + name + ", C:\\staging\\, " + Drivers() + name + " );";
    }

    DWORD m_restart = 77;
};

}  // namespace pikel::testing_support
