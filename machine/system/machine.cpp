// The machine with all its rooms: making and opening its folder, and what it does as a whole.
#include "machine/base/machine.h"

#include <utility>

#include "machine/desktop/desktop.h"
#include "machine/files/files.h"
#include "machine/files/host_disk.h"
#include "machine/files/memory_disk.h"
#include "machine/modules/modules.h"
#include "machine/registry/registry.h"
#include "machine/services/services.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/port_sdk.h"
#include "machine/system/current.h"
#include "machine/system/fresh_machine.h"
#include "machine/system/machine_folder.h"
#include "machine/system/machine_ini.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

// ---- making and opening ---------------------------------------------------------------------------------------------

Machine::Machine(std::shared_ptr<Disk> disk, fs::path folder, SystemDescription system)
    : m_disk(std::move(disk)),
      m_folder(std::move(folder)),
      m_system(std::move(system)),
      m_handles(std::make_unique<simulated::Handles>()),
      m_heap(std::make_unique<simulated::Heap>()),
      m_files(std::make_unique<simulated::Files>(*this, m_disk, m_folder)),
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
    CreateInMemory(system)->SaveTo(folder);
    return Open(folder);
}

std::unique_ptr<Machine> Machine::CreateInMemory(const SystemDescription& system) {
    // Refuses a description that could not be opened again.
    ReadMachineIni(WriteMachineIni(system), kIniName);
    std::unique_ptr<Machine> machine(new Machine(std::make_shared<MemoryDisk>(), {}, system));
    FillFreshMachine(*machine->m_disk, *machine->m_registry, system);
    machine->m_registry->MarkClean();
    machine->m_services->StartAutomaticOnes();
    return machine;
}

std::unique_ptr<Machine> Machine::Open(const fs::path& folder) {
    SystemDescription system = ReadMachineIni(ReadMachineFile(folder, kIniName), folder / kIniName);
    const std::string registry = ReadMachineFile(folder, kRegistryName);
    RequireDrive(folder, system);
    // A working directory that changes later must not move the machine.
    std::unique_ptr<Machine> machine(
        new Machine(std::make_shared<HostDisk>(), fs::absolute(folder), std::move(system)));
    std::string problem = machine->m_registry->Parse(registry);
    if (!problem.empty()) {
        throw MachineError((folder / kRegistryName).string() + ": " + problem);
    }
    machine->m_services->StartAutomaticOnes();
    return machine;
}

std::unique_ptr<Machine> Machine::Copy() const {
    std::shared_ptr<MemoryDisk> disk;
    if (IsInMemory()) {
        disk = static_cast<const MemoryDisk&>(*m_disk).Copy();
    } else {
        disk = std::make_shared<MemoryDisk>();
        CopyDrives(*m_disk, m_folder.string(), *disk, {});
    }
    std::unique_ptr<Machine> copy(new Machine(std::move(disk), {}, m_system));
    copy->m_registry->CopyFrom(*m_registry);
    copy->m_services->StartAutomaticOnes();
    return copy;
}

void Machine::SaveTo(const fs::path& folder) const {
    NewFolder target(folder);
    HostDisk host;
    CopyDrives(*m_disk, m_folder.string(), host, fs::absolute(folder).string());
    WriteMachineFile(folder, kRegistryName, m_registry->Text());
    // Comes last: a folder without it is no machine, so one that was made by halves can't be opened.
    WriteMachineFile(folder, kIniName, WriteMachineIni(m_system));
    target.Keep();
}

void Machine::SetSystem(const SystemDescription& system) {
    if (system.codePage != m_system.codePage) {
        std::string problem = m_registry->SetCodePage(system.codePage);
        if (!problem.empty()) {
            throw MachineError((m_folder / kRegistryName).string() + ": " + problem);
        }
    }
    const std::string ini = WriteMachineIni(system);
    if (!IsInMemory()) {
        WriteMachineFile(m_folder, kIniName, ini);
    }
    m_system = system;
}

void Machine::Commit() {
    if (m_registry->IsDirty()) {
        if (!IsInMemory()) {
            WriteMachineFile(m_folder, kRegistryName, m_registry->Text());
        }
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
