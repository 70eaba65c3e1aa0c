// The machine: making and opening its folder, its clock, and which machine is current.
#include "machine/system/machine.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <system_error>

#include "machine/modules/desktop.h"
#include "machine/system/fresh_machine.h"
#include "machine/files/host_disk.h"
#include "machine/files/memory_disk.h"
#include "machine/system/machine_folder.h"
#include "machine/system/machine_ini.h"
#include "machine/spooler/port_sdk.h"
#include "machine/services/services.h"
#include "machine/spooler/monitors.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

thread_local DWORD lastError = ERROR_SUCCESS;

namespace {

using Milliseconds = std::chrono::milliseconds;

/// Nothing for a date that doesn't exist.
std::unique_ptr<std::chrono::local_time<Milliseconds>> ToTimePoint(const SYSTEMTIME& time) {
    using namespace std::chrono;
    year_month_day date{year(time.wYear), month(time.wMonth), day(time.wDay)};
    if (!date.ok() || time.wYear > 30827) {  // the last year that a FILETIME reaches
        return nullptr;
    }
    return std::make_unique<local_time<Milliseconds>>(local_days(date) + hours(time.wHour) + minutes(time.wMinute) +
                                                      seconds(time.wSecond) + Milliseconds(time.wMilliseconds));
}

SYSTEMTIME FromTimePoint(std::chrono::local_time<Milliseconds> point) {
    using namespace std::chrono;
    local_days today = floor<days>(point);
    year_month_day date(today);
    hh_mm_ss<Milliseconds> clock(point - today);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(static_cast<int>(date.year()));
    time.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    time.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    time.wDayOfWeek = static_cast<WORD>(weekday(today).c_encoding());
    time.wHour = static_cast<WORD>(clock.hours().count());
    time.wMinute = static_cast<WORD>(clock.minutes().count());
    time.wSecond = static_cast<WORD>(clock.seconds().count());
    time.wMilliseconds = static_cast<WORD>(clock.subseconds().count());
    return time;
}

SYSTEMTIME HostLocalTime() {
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    std::tm parts{};
    localtime_r(&now.tv_sec, &parts);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(parts.tm_year + 1900);
    time.wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time.wDay = static_cast<WORD>(parts.tm_mday);
    time.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time.wHour = static_cast<WORD>(parts.tm_hour);
    time.wMinute = static_cast<WORD>(parts.tm_min);
    time.wSecond = static_cast<WORD>(std::min(parts.tm_sec, 59));
    time.wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000);
    return time;
}

/// A time moved by the machine's clock; one that doesn't exist stays as it is.
SYSTEMTIME Moved(const SYSTEMTIME& time, Milliseconds distance) {
    auto point = ToTimePoint(time);
    return point == nullptr ? time : FromTimePoint(*point + distance);
}

/// The machine that is current when nobody named one.
class DefaultMachine {
  public:
    DefaultMachine() {
        const char* named = std::getenv("PIKEL_MACHINE");
        if (named != nullptr && *named != '\0') {
            m_machine = Machine::Open(named);
        } else {
            m_machine = Machine::CreateInMemory(*FindSystem("xp"));
        }
        const char* medium = std::getenv("PIKEL_MEDIUM");
        if (medium != nullptr && *medium != '\0') {
            m_machine->Files().InsertMedium(medium);
        }
    }
    DefaultMachine(const DefaultMachine&) = delete;
    DefaultMachine& operator=(const DefaultMachine&) = delete;

    Machine& Get() { return *m_machine; }

  private:
    std::unique_ptr<Machine> m_machine;
};

Machine& Default() {
    try {
        static DefaultMachine machine;
        return machine.Get();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pikel: no simulated machine to work on: %s\n", error.what());
        std::exit(EXIT_FAILURE);
    }
}

Machine* current = nullptr;

}  // namespace

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
    m_files->SetLoadedTest([this](std::string_view path) { return Monitors(*this).IsLoaded(path); });
}

Machine::~Machine() {
    if (current == this) {
        current = nullptr;
    }
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

// ---- what it is -----------------------------------------------------------------------------------------------------

simulated::Generation Machine::Generation() const {
    return GenerationOf(m_system);
}

std::string_view Machine::Environment() const {
    return EnvironmentOf(m_system);
}

void Machine::Advance(ULONGLONG milliseconds) {
    m_clock += milliseconds;
    m_services->Settle();
}

SYSTEMTIME Machine::LocalTime() const {
    SYSTEMTIME base = m_localTime != nullptr ? *m_localTime : HostLocalTime();
    return Moved(base, Milliseconds(m_clock));
}

void Machine::SetLocalTime(const SYSTEMTIME& time) {
    m_localTime = std::make_unique<SYSTEMTIME>(Moved(time, -Milliseconds(m_clock)));
}

// ---- the current machine --------------------------------------------------------------------------------------------

Machine& Current() {
    return current != nullptr ? *current : Default();
}

void Use(Machine* machine) {
    current = machine;
}

}  // namespace pikel::simulated
