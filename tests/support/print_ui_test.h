// What the tests of the machine's PRINTUI.DLL share: the sample packages on the machine, and one call of the entry.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "machine/operations.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/printers.h"
#include "support/machine_test.h"
#include "support/project.h"

namespace pikel::testing_support {

inline constexpr char kSample[] = "C:\\pkg\\aurora.inf";
inline constexpr char kModel[] = "Aurora Laser 500";

class PrintUITest : public MachineTest {
  protected:
    /// Another machine, with the sample packages in C:\pkg, C:\pkg4 and C:\pkg98.
    void StartWithPackages(std::string_view system) {
        Start(system);
        CopySample("xp", "C:\\pkg\\");
        CopySample("nt4", "C:\\pkg4\\");
        CopySample("win98", "C:\\pkg98\\");
    }

    /// Calls the entry and tells what it left.
    DWORD Run(const std::string& command) {
        std::u16string wide = simulated::ToWide(Machine().System().codePage, command);
        simulated::lastError = 0xdead;
        simulated::PrintUIEntryW(nullptr, nullptr, wide.data(), 0);
        return simulated::lastError;
    }

    std::optional<simulated::Driver> DriverOn(const std::string& environment = {}, DWORD version = 3,
                                              const std::string& name = kModel) {
        const std::optional<simulated::Environment> found = simulated::Environments(Machine()).Find(environment);
        return found ? simulated::Drivers(Machine()).Find(*found, name, version) : std::nullopt;
    }
    std::optional<simulated::Printer> PrinterOn(const std::string& name = "Office") {
        return simulated::Printers(Machine()).Find(name);
    }
    /// Names of a folder's files.
    std::vector<std::string> FilesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const simulated::FileEntry& entry : Machine().Files().List(folder)) {
            if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                names.push_back(entry.name);
            }
        }
        return names;
    }
    std::string DriverFolder(const std::string& below) {
        return Machine().System().systemDirectory + "\\spool\\drivers\\" + below;
    }
    void LoseRights() {
        simulated::SystemDescription system = Machine().System();
        system.administrator = false;
        Machine().SetSystem(system);
    }

  private:
    void CopySample(const std::string& name, const std::string& folder) {
        for (const auto& entry :
             std::filesystem::directory_iterator(testing_support::SourceDir() + "/samples/" + name)) {
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
            WriteFileOn(Machine(), folder + entry.path().filename().string(), bytes);
        }
    }
};

}  // namespace pikel::testing_support
