// The machine with all its rooms: making and opening its folder, and what it does as a whole.
#include "machine/base/machine.h"

#include <system_error>

#include "machine/desktop/desktop.h"
#include "machine/files/files.h"
#include "machine/files/host_file.h"
#include "machine/modules/modules.h"
#include "machine/registry/registry.h"
#include "machine/services/services.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/port_sdk.h"
#include "machine/system/current.h"
#include "machine/system/fresh_machine.h"
#include "machine/system/machine_ini.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

namespace {

constexpr const char* kIniName = "machine.ini";
constexpr const char* kRegistryName = "registry.reg";

/// Makes the folder of a new machine, or takes one that is there and empty.
/// @return true when it was made here
bool PrepareFolder(const fs::path& folder) {
    std::error_code error;
    fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found) {
        fs::create_directories(folder, error);
        if (error) {
            throw MachineError("can't make the folder " + folder.string() + ": " + error.message());
        }
        return true;
    }
    bool isEmpty = status.type() == fs::file_type::directory && fs::is_empty(folder, error);
    if (error) {
        throw MachineError("can't use " + folder.string() + ": " + error.message());
    }
    if (!isEmpty) {
        throw MachineError(folder.string() + " is there already and is no empty folder; name a new one");
    }
    return false;
}

/// Takes away what a failed creation left behind.
void CleanUp(const fs::path& folder, bool isOurs) {
    std::error_code ignored;
    if (isOurs) {
        fs::remove_all(folder, ignored);
        return;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        fs::remove_all(entry.path(), ignored);
    }
}

void RequireFile(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        throw MachineError(file.string() + " is missing: " + file.parent_path().string() +
                           " is no machine; make one with 'pikel machine new'");
    }
}

void RequireDrive(const fs::path& folder, const SystemDescription& system) {
    fs::path drive = folder / std::string(1, static_cast<char>(system.windowsDirectory[0] & ~0x20));
    std::error_code error;
    if (!fs::is_directory(drive, error)) {
        throw MachineError(drive.string() + " is missing: it is the drive of the windows-directory in " +
                           (folder / kIniName).string());
    }
}

}  // namespace

// ---- making and opening ---------------------------------------------------------------------------------------------

Machine::Machine(fs::path folder, SystemDescription system)
    : m_folder(std::move(folder)),
      m_system(std::move(system)),
      m_handles(std::make_unique<simulated::Handles>()),
      m_heap(std::make_unique<simulated::Heap>()),
      m_files(std::make_unique<simulated::Files>(*this, m_folder)),
      m_registry(std::make_unique<simulated::Registry>(m_system.codePage)),
      m_modules(std::make_unique<simulated::Modules>(*this)),
      m_services(std::make_unique<simulated::Services>(*this)),
      m_desktop(std::make_unique<simulated::Desktop>()) {
    RegisterPortSdk(*this);
    HoldLoadedMonitors(*this);
}

Machine::~Machine() {
    LeaveMachine(this);
}

std::unique_ptr<Machine> Machine::Create(const fs::path& folder, const SystemDescription& system) {
    // Refuses a description that could not be opened again before anything is made.
    ReadMachineIni(WriteMachineIni(system), folder / kIniName);
    bool isOurs = PrepareFolder(folder);
    try {
        FillFreshMachine(folder, system);
        return Open(folder);
    } catch (const fs::filesystem_error& error) {
        CleanUp(folder, isOurs);
        throw MachineError("can't make the machine " + folder.string() + ": " + error.what());
    } catch (...) {
        CleanUp(folder, isOurs);
        throw;
    }
}

std::unique_ptr<Machine> Machine::Open(const fs::path& folder) {
    fs::path ini = folder / kIniName;
    fs::path registry = folder / kRegistryName;
    RequireFile(ini);
    RequireFile(registry);
    SystemDescription system = ReadMachineIni(ReadHostFile(ini), ini);
    RequireDrive(folder, system);
    // A working directory that changes later must not move the machine.
    std::unique_ptr<Machine> machine(new Machine(fs::absolute(folder), std::move(system)));
    std::string problem = machine->m_registry->Parse(ReadHostFile(registry));
    if (!problem.empty()) {
        throw MachineError(registry.string() + ": " + problem);
    }
    machine->m_services->StartAutomaticOnes();
    return machine;
}

void Machine::SetSystem(const SystemDescription& system) {
    if (system.codePage != m_system.codePage) {
        std::string problem = m_registry->SetCodePage(system.codePage);
        if (!problem.empty()) {
            throw MachineError((m_folder / kRegistryName).string() + ": " + problem);
        }
    }
    ReplaceHostFile(m_folder / kIniName, WriteMachineIni(system));
    m_system = system;
}

void Machine::Commit() {
    if (m_registry->IsDirty()) {
        ReplaceHostFile(m_folder / kRegistryName, m_registry->Text());
        m_registry->MarkClean();
    }
}

DWORD Machine::TryCommit() {
    constexpr DWORD registryIoFailed = 1016;
    try {
        Commit();
        return ERROR_SUCCESS;
    } catch (const MachineError&) {
        return registryIoFailed;
    }
}

DWORD Machine::CheckAccess(std::string_view key, REGSAM access) const {
    bool isReader = !Is9x() && !m_system.administrator && m_registry->IsBelowLocalMachine(key);
    if (isReader && (access & simulated::Registry::kWriteAccess) != 0) {
        return ERROR_ACCESS_DENIED;
    }
    return m_registry->CheckAccess(key, access);
}

void Machine::Advance(ULONGLONG milliseconds) {
    m_clock.Advance(milliseconds);
    m_services->Settle();
}

}  // namespace pikel::simulated
