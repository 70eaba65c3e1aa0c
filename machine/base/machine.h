// A simulated Windows machine. It lives in memory, or in a folder that a person can read, compare and copy:
//
//   machine.ini    the system's version fields, processor, computer name, code page, rights, restart pending
//   registry.reg   the registry as text
//   C/...          the system drive
//
// All state lies where Windows keeps it, so two copies of the folder can be compared with diff. What an operation has
// done when it returns is on disk.
//
// This room is the ground: the machine as every room sees it, its clock, heap, handles, last error and texts. The
// header knows no room: who works with a machine's files or registry includes that room's header. system/machine.cpp
// joins the rooms and holds the members.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "machine/base/clock.h"
#include "machine/base/handles.h"
#include "machine/base/heap.h"
#include "machine/base/last_error.h"
#include "machine/base/machine_error.h"
#include "machine/base/system_description.h"
#include "platform/types.h"

namespace pikel::simulated {

class Desktop;
class Disk;
class Files;
class Modules;
class Registry;
class Services;

class Machine {
  public:
    /// Makes a fresh machine in a folder that doesn't exist or is empty. Throws MachineError.
    static std::unique_ptr<Machine> Create(const std::filesystem::path& folder, const SystemDescription& system);
    /// Opens a machine. Throws MachineError when a file is missing or damaged; nothing is touched then.
    static std::unique_ptr<Machine> Open(const std::filesystem::path& folder);
    /// Makes a fresh machine that lies in memory and goes with the object. Throws MachineError for a description that
    /// machine.ini couldn't hold.
    static std::unique_ptr<Machine> CreateInMemory(const SystemDescription& system);
    /// Another machine, in memory and independent of this one: what a process finds that opens a copy of this one's
    /// folder, with the changes of the registry that wait for a commit. So the system, files and registry are the same;
    /// what goes with a process starts anew: the clock, handles, heap, services (the automatic ones run), modules and
    /// windows, rights that were denied, free space, the medium. Of a machine in memory it is cheap, as what is in the
    /// files is shared until it changes. Throws MachineError for files that can't be read.
    std::unique_ptr<Machine> Copy() const;
    /// Writes the machine into a folder that doesn't exist or is empty, for Open; it goes on where it is. Throws
    /// MachineError, with nothing left of what was made.
    void SaveTo(const std::filesystem::path& folder) const;
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// Empty for a machine in memory.
    const std::filesystem::path& Folder() const { return m_folder; }
    bool IsInMemory() const { return m_folder.empty(); }
    const SystemDescription& System() const { return m_system; }
    /// Writes machine.ini anew. Throws MachineError.
    void SetSystem(const SystemDescription& system);
    simulated::Generation Generation() const { return GenerationOf(m_system); }
    bool Is9x() const { return m_system.platform == VER_PLATFORM_WIN32_WINDOWS; }
    /// The environment of the machine's own drivers: "Windows 4.0", "Windows NT x86", "Windows IA64", "Windows x64".
    std::string_view Environment() const { return EnvironmentOf(m_system); }
    /// Full path of the library's module: "C:\Program Files\pikel\pikel.dll".
    std::string_view ModulePath() const { return "C:\\Program Files\\pikel\\pikel.dll"; }

    simulated::Files& Files() { return *m_files; }
    simulated::Registry& Registry() { return *m_registry; }
    simulated::Handles& Handles() { return *m_handles; }
    simulated::Heap& Heap() { return *m_heap; }
    simulated::Modules& Modules() { return *m_modules; }
    simulated::Services& Services() { return *m_services; }
    simulated::Desktop& Desktop() { return *m_desktop; }

    /// Milliseconds since the machine was opened; Sleep adds to it and takes no time.
    ULONGLONG Clock() const { return m_clock.Now(); }
    void Advance(ULONGLONG milliseconds);
    /// The machine's local time: fixed by a test, else the host's, plus Clock().
    SYSTEMTIME LocalTime() const { return m_clock.LocalTime(); }
    void SetLocalTime(const SYSTEMTIME& time) { m_clock.SetLocalTime(time); }

    /// Writes a changed registry to disk. Every operation that changes it calls this before it returns.
    void Commit();
    /// The same with a code: 0, or 1016 when registry.reg can't be written. The change waits for the next commit then.
    DWORD TryCommit();
    /// Rights of the machine's user on a registry key: 0, or 5. On the NT family only an administrator writes below
    /// HKEY_LOCAL_MACHINE; Registry::Deny takes further rights away.
    DWORD CheckAccess(std::string_view key, REGSAM access) const;

  private:
    Machine(std::shared_ptr<Disk> disk, std::filesystem::path folder, SystemDescription system);

    std::shared_ptr<Disk> m_disk;
    std::filesystem::path m_folder;
    SystemDescription m_system;
    simulated::Clock m_clock;
    std::unique_ptr<simulated::Handles> m_handles;
    std::unique_ptr<simulated::Heap> m_heap;
    std::unique_ptr<simulated::Files> m_files;
    std::unique_ptr<simulated::Registry> m_registry;
    std::unique_ptr<simulated::Modules> m_modules;
    std::unique_ptr<simulated::Services> m_services;
    std::unique_ptr<simulated::Desktop> m_desktop;
};

/// The machine that the operations work on. Without one made current, the machine that PIKEL_MACHINE names is opened on
/// first use, or else a private xp machine is made in memory that goes with the process. A PIKEL_MACHINE that can't be
/// opened ends the process with the reason on standard error: working on another machine would be worse.
/// PIKEL_MEDIUM names a folder that lies in that machine's drive D: (see Files::InsertMedium).
Machine& Current();
/// Makes a machine current; null goes back to the default. The caller keeps it alive.
void Use(Machine* machine);

}  // namespace pikel::simulated
