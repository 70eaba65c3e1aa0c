// The machine's files: Windows paths on a disk, the host's or one in memory. Names match without regard to case; share
// modes are kept for the handles of this process and for files that a test holds open in another process's name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Disk;
class Machine;

/// What FindFirstFileA tells of one entry.
struct FileEntry {
    std::string name;  ///< as stored, active code page
    DWORD attributes = 0;
    std::uint64_t size = 0;
    FILETIME written{};
};

class Files {
  public:
    /// @param root  folder of the disk that holds the drives: on the host the machine's, absolute; empty in memory
    Files(Machine& machine, std::shared_ptr<Disk> disk, const std::filesystem::path& root);
    ~Files();

    /// Host path of a Windows path: "C:\x" lies in <root>/C/x. Components that exist match without regard to case; a
    /// path without a drive is taken from the current directory, which is the root of the system drive. Both slashes
    /// separate. Empty for a path that leaves the machine (".." above the root), a UNC path, a drive that isn't there
    /// or one in memory.
    std::filesystem::path HostPath(std::string_view path) const;
    /// "C:\Windows\x" for a host path below the root.
    std::string WindowsPath(const std::filesystem::path& host) const;

    /// What is at a path, with the name as stored. @return a code: 0, 2, 3, or why the path can't name a file
    DWORD Look(std::string_view path, FileEntry* entry) const;
    bool Exists(std::string_view path) const;
    bool IsDirectory(std::string_view path) const;
    /// INVALID_FILE_ATTRIBUTES for a missing one.
    DWORD Attributes(std::string_view path) const;
    /// The bytes, whoever holds the file and whatever it denies; CheckOpen tells whether a program could read them.
    std::optional<std::string> Read(std::string_view path) const;
    std::optional<FILETIME> WrittenAt(std::string_view path) const;
    /// Entries whose names match a pattern with * and ?, in the order of their names, "." and ".." not among them.
    std::vector<FileEntry> List(std::string_view folder, std::string_view pattern = "*") const;

    // Each returns a system code and respects share modes, read-only files, denied paths and the free space.
    /// Replaces the file whole (by rename), making missing folders.
    DWORD Write(std::string_view path, std::string_view bytes);
    DWORD Copy(std::string_view source, std::string_view target, bool failIfExists);
    DWORD Move(std::string_view source, std::string_view target, bool replace);
    DWORD Delete(std::string_view path);
    DWORD MakeFolder(std::string_view path);
    /// Every missing folder on the path.
    DWORD MakeFolders(std::string_view path);
    DWORD RemoveFolder(std::string_view path);
    DWORD SetAttributes(std::string_view path, DWORD attributes);
    DWORD SetWrittenAt(std::string_view path, FILETIME time);

    /// Code that opening the path with this access and share mode would give now; 0 when it would open.
    DWORD CheckOpen(std::string_view path, DWORD access, DWORD share) const;

    /// Stands for another process that holds a file open until the object goes.
    class Held {
      public:
        explicit Held(std::function<void()> release) : m_release(std::move(release)) {}
        Held(Held&& other) noexcept : m_release(std::exchange(other.m_release, nullptr)) {}
        Held& operator=(Held&&) = delete;
        ~Held() {
            if (m_release) {
                m_release();
            }
        }

      private:
        std::function<void()> m_release;
    };
    /// @param share  what the other process lets in beside itself; 0: nobody
    Held HoldOpen(std::string_view path, DWORD share = 0);
    /// Opens that meet a locked range: they fail with 33 until the object goes.
    Held LockRange(std::string_view path);

    /// Puts a folder of the host into drive D:, as a disk that can't be written to. It is no part of the machine's own
    /// folder and goes with the process.
    void InsertMedium(const std::filesystem::path& folder);
    /// Asks on every open whether a program of the machine, such as its spooler, has a file loaded at that moment; it
    /// is held open for reading then.
    void SetLoadedTest(std::function<bool(std::string_view path)> isLoaded);
    /// No rights: opens, writes, deletes and creations at or below the path give 5.
    void Deny(std::string_view path);
    /// Room left on the drive in bytes; writes beyond it give 112. No limit by default.
    void SetFreeSpace(std::optional<std::uint64_t> bytes);

    // The handle-based calls of operations.h use these.
    struct OpenFile;
    /// CreateFileA without the handle. *existed tells whether the file was there before.
    DWORD Open(std::string_view path, DWORD access, DWORD share, DWORD disposition, DWORD attributes,
               std::shared_ptr<OpenFile>* out, bool* existed);

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace pikel::simulated
