// Where the machine's paths lie on its disks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "machine/files/disk.h"
#include "machine/files/folder_names.h"
#include "machine/files/path.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Where a path leads, and what is there.
struct Place {
    DWORD code = 0;  ///< 0 when something is there, 2 or 3 when not, else why the path can't name a file
    MachinePath path;
    Disk* disk = nullptr;  ///< null for a path that can't name a file
    std::string location;  ///< on the disk; names that aren't there keep the spelling asked for
    std::string key;       ///< of the path; the same for every spelling
    DiskEntry entry;

    bool Exists() const { return code == ERROR_SUCCESS; }
    bool IsDirectory() const { return Exists() && entry.isFolder; }
    bool IsReadOnly() const { return Exists() && entry.isReadOnly; }
    /// Nothing is there, and a file or folder can be made in the folder that is.
    bool CanBeMade() const { return code == ERROR_FILE_NOT_FOUND; }
    std::string Folder() const { return location.substr(0, location.rfind('/')); }
    std::string Name() const { return location.substr(location.rfind('/') + 1); }
};

/// Finds places on a machine's drives, without regard to case.
class Places {
  public:
    /// @param root  path of the folder on the disk that holds the drives, without a slash at its end
    Places(std::shared_ptr<Disk> disk, std::string root);

    /// Puts a folder of the host into drive D:.
    void InsertMedium(std::string folder);
    bool IsOnMedium(const Place& place) const { return IsMedium(place.path.drive); }
    /// The folder of the host that a drive is; empty for a drive in memory.
    std::string HostFolder(char drive) const;
    /// "C:\\Windows\\x" for a path of the host on one of the drives; empty for any other.
    std::string WindowsPath(const std::filesystem::path& host, UINT codePage) const;
    /// The same for a place, in the spelling that is stored.
    std::string WindowsPath(const Place& place, UINT codePage) const;
    FolderNames& Names(const Place& place) { return IsOnMedium(place) ? m_mediumNames : m_names; }
    Disk& MachineDisk() { return *m_disk; }
    std::shared_ptr<Disk> SharedDisk() const { return m_disk; }
    Place Find(MachinePath path, UINT codePage);

  private:
    static constexpr char kMediumDrive = 'D';

    bool IsMedium(char drive) const { return !m_medium.empty() && drive == kMediumDrive; }
    std::string DriveFolder(char drive) const;
    void Match(Place& place, UINT codePage);
    bool MatchName(const std::string& asked, const std::string& wanted, UINT codePage, Place& place);

    std::shared_ptr<Disk> m_disk;
    std::unique_ptr<Disk> m_host;  ///< what the medium lies on
    std::string m_root;
    std::string m_medium;
    FolderNames m_names;
    FolderNames m_mediumNames;
    std::unordered_map<std::string, std::string> m_spellings;  ///< stored path by the path asked for, folders alone
};

}  // namespace pikel::simulated
