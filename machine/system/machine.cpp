// The machine: making and opening its folder, its clock, and which machine is current.
#include "machine/system/machine.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <system_error>

#include "machine/modules/desktop.h"
#include "machine/system/fresh_machine.h"
#include "machine/files/host_file.h"
#include "machine/system/machine_ini.h"
#include "machine/spooler/port_sdk.h"
#include "machine/services/services.h"
#include "machine/spooler/monitors.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

thread_local DWORD lastError = ERROR_SUCCESS;

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
            MakePrivate();
        }
        const char* medium = std::getenv("PIKEL_MEDIUM");
        if (medium != nullptr && *medium != '\0') {
            m_machine->Files().InsertMedium(medium);
        }
    }
    ~DefaultMachine() {
        m_machine.reset();
        if (!m_private.empty()) {
            std::error_code ignored;
            fs::remove_all(m_private, ignored);
        }
    }
    DefaultMachine(const DefaultMachine&) = delete;
    DefaultMachine& operator=(const DefaultMachine&) = delete;

    Machine& Get() { return *m_machine; }

  private:
    void MakePrivate() {
        std::error_code error;
        fs::path pattern = fs::temp_directory_path(error) / "pikel-machine-XXXXXX";
        std::string folder = pattern.string();
        if (error || mkdtemp(folder.data()) == nullptr) {
            throw MachineError("can't make a folder like " + pattern.string() + " for a private machine");
        }
        m_private = folder;
        m_machine = Machine::Create(m_private, *FindSystem("xp"));
    }

    fs::path m_private;
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
    m_files->SetLoadedTest([this](std::string_view path) { return Monitors(*this).IsLoaded(path); });
}

Machine::~Machine() {
    if (current == this) {
        current = nullptr;
    }
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
