// What a machine needs of a file system: folders and files, by paths that its kind of disk understands. There are two
// kinds, the folders of the host (host_disk.h) and a tree in memory (memory_disk.h); they give the same answers. Names
// match to the letter here; what Windows makes of names, shares and rights stands above.
#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

/// What is at a path.
struct DiskEntry {
    bool isFolder = false;
    bool isReadOnly = false;  ///< of files alone
    std::uint64_t size = 0;   ///< bytes of a file, 0 of a folder
    FILETIME written{};       ///< of a folder: when a name last came or went

    /// 16 for a folder, 32 for a file, 33 for a read-only one.
    DWORD Attributes() const;
};

/// What a file bears beside its bytes.
struct FileMarks {
    FILETIME written;
    bool isReadOnly;
};

/// An open file. Each call gives a code, 0 when it is done.
class DiskFile {
  public:
    virtual ~DiskFile() = default;
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    virtual DWORD Look(DiskEntry* entry) const = 0;
    /// @param count  [out] bytes read: fewer than asked for at the end alone, and 0 behind it
    virtual DWORD Read(std::uint64_t at, char* buffer, std::size_t size, std::size_t* count) const = 0;
    /// Writes all of the bytes; what lies between the end and `at` becomes zeros.
    virtual DWORD Write(std::uint64_t at, std::string_view bytes) = 0;
    /// Cuts the file, or fills it up with zeros.
    virtual DWORD Resize(std::uint64_t size) = 0;
    /// Sets the time, and the read-only mark where there is one to set; it takes none away.
    virtual DWORD Mark(const FileMarks& marks) = 0;
    /// Comes back when what was written would outlast the host.
    virtual DWORD Sync() = 0;

  protected:
    DiskFile() = default;
};

/// How a file is opened.
enum class DiskOpening {
    Read,
    Write,     ///< for reading as well, like the ones below
    Truncate,  ///< with nothing left in it
    Create,    ///< makes it; 183 when something is there
};

/// Each call gives a code: 0 when it is done, 2 when a name of the path is missing, 3 when a name on the way is no
/// folder, else the reason.
class Disk {
  public:
    virtual ~Disk() = default;
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    /// @param entry  [out] filled on success; may be null
    virtual DWORD Look(const std::string& path, DiskEntry* entry) const = 0;
    /// Names in a folder, in no order, "." and ".." and files in the making not among them. None for what is no folder.
    virtual std::vector<std::string> Names(const std::string& folder) const = 0;

    virtual DWORD MakeFolder(const std::string& path) = 0;
    /// 145 for one that holds something.
    virtual DWORD RemoveFolder(const std::string& path) = 0;
    virtual DWORD RemoveFile(const std::string& path) = 0;
    /// Gives a file or folder another path. A file takes the place of one that is there.
    virtual DWORD Rename(const std::string& from, const std::string& to) = 0;
    /// Gives a file its whole content, and makes it when it isn't there. Whoever looks sees the old file or the new
    /// one, and after a failure the old one. A file that is open must be written in place instead: its openings go on
    /// showing the old one.
    /// @param marks  null: written now, not read-only
    virtual DWORD Replace(const std::string& path, std::string_view bytes, const FileMarks* marks) = 0;

    /// @param readOnly  mark of a file that is made
    /// @param file      [out] set on success
    virtual DWORD Open(const std::string& path, DiskOpening how, bool readOnly, std::unique_ptr<DiskFile>* file) = 0;
    virtual DWORD SetReadOnly(const std::string& path, bool readOnly) = 0;
    virtual DWORD SetWritten(const std::string& path, FILETIME written) = 0;

    /// Code of a file's reading to its end.
    DWORD ReadWhole(const std::string& path, std::string* bytes);

  protected:
    Disk() = default;
};

/// Copies a folder with all that is in it, times and marks of files included.
/// @param to  path of a folder that isn't there, or that is and gets what the other holds
DWORD CopyTree(Disk& source, const std::string& from, Disk& target, const std::string& to);

FILETIME FileTimeOf(const timespec& time);
timespec HostTimeOf(const FILETIME& time);

/// What to tell a person of a disk's code: "access is denied".
std::string_view ReasonOf(DWORD code);

}  // namespace pikel::simulated
