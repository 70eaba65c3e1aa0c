// Where the machine's paths lie on the host.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

#include "machine/files/folder_names.h"
#include "machine/files/host_io.h"
#include "machine/files/path.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Where a path leads on the host, and what is there.
struct Place {
    DWORD code = 0;  ///< 0 when something is there, 2 or 3 when not, else why the path can't name a file
    MachinePath path;
    std::string host;  ///< names that aren't there keep the spelling asked for; empty for a path that can't name a file
    std::string key;   ///< of the path; the same for every spelling
    struct stat status {};

    bool Exists() const { return code == ERROR_SUCCESS; }
    bool IsDirectory() const { return Exists() && S_ISDIR(status.st_mode); }
    bool IsReadOnly() const { return Exists() && (AttributesOf(status) & FILE_ATTRIBUTE_READONLY) != 0; }
    /// Nothing is there, and a file or folder can be made in the folder that is.
    bool CanBeMade() const { return code == ERROR_FILE_NOT_FOUND; }
    /// Bytes of a file.
    std::uint64_t Size() const { return static_cast<std::uint64_t>(status.st_size); }
    std::string HostFolder() const { return host.substr(0, host.rfind('/')); }
    std::string HostName() const { return host.substr(host.rfind('/') + 1); }
};

/// Finds places below the machine's folder, without regard to case.
class HostPlaces {
  public:
    /// @param root  the machine's folder, absolute, without a slash at its end
    explicit HostPlaces(std::string root) : m_root(std::move(root)) {}

    /// Folder of the host that a drive is.
    std::string DriveFolder(char drive) const;
    /// Puts a folder of another place into drive D:.
    void InsertMedium(std::string folder);
    bool IsOnMedium(const Place& place) const { return !m_medium.empty() && place.path.drive == kMediumDrive; }
    /// "C:\\Windows\\x" for a path of the host on one of the drives; empty for any other.
    std::string WindowsPath(const std::filesystem::path& host, UINT codePage) const;
    FolderNames& Names() { return m_names; }
    Place Find(MachinePath path, UINT codePage);

  private:
    static constexpr char kMediumDrive = 'D';

    void Match(Place& place, UINT codePage);
    bool MatchName(const std::string& asked, const std::string& wanted, UINT codePage, std::string& host,
                   struct stat& status);

    std::string m_root;
    std::string m_medium;
    FolderNames m_names;
    std::unordered_map<std::string, std::string> m_spellings;  ///< stored path by the path asked for, folders alone
};

}  // namespace pikel::simulated
