// What the class Files keeps, and the steps that its operations share.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/files/files.h"
#include "machine/files/open_files.h"
#include "machine/files/places.h"

namespace pikel::simulated {

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Room on the drive.
class FreeSpace {
  public:
    /// No limit for nothing.
    void Set(std::optional<std::uint64_t> bytes) { m_bytes = bytes; }
    /// 0, or 112 with nothing taken.
    DWORD Take(std::uint64_t bytes);
    void Give(std::uint64_t bytes);
    /// Room that a file needs whose size changes.
    DWORD Change(std::uint64_t from, std::uint64_t to);

  private:
    std::optional<std::uint64_t> m_bytes;
};

struct Files::State {
    Machine& machine;
    Places places;
    std::vector<std::string> denied;  ///< keys of paths
    std::function<bool(std::string_view path)> isLoaded;
    // Shared with the open files, which may outlive this object.
    std::shared_ptr<OpenFiles> open = std::make_shared<OpenFiles>();
    std::shared_ptr<FreeSpace> space = std::make_shared<FreeSpace>();

    State(Machine& owner, std::shared_ptr<Disk> disk, std::string root);

    UINT CodePage() const;
    MachinePath Parse(std::string_view path) const;
    Place Find(std::string_view path) { return places.Find(Parse(path), CodePage()); }

    bool IsDenied(const Place& place) const;
    /// What any change at a place meets: 5 without rights, 19 on a disk that can't be written to.
    DWORD CheckChange(const Place& place) const;
    /// What an open meets apart from the file's being there. Rights are those of RightsOf.
    DWORD CheckAccess(const Place& place, DWORD rights, DWORD share) const;
    /// What replacing or making a file meets.
    DWORD CheckWrite(const Place& place) const;

    /// Gives a file its whole content. Others see the old file or the new one; a file that somebody has open and shares
    /// for writing is written in place, as its holder has to see the change. @param marks  may be null
    DWORD Fill(const Place& place, std::string_view bytes, const FileMarks* marks);
    /// Fill, with the room on the drive accounted for.
    DWORD FillWith(const Place& place, std::string_view bytes, const FileMarks* marks = nullptr);
    /// Takes a file away that nobody has open.
    DWORD Remove(const Place& place);
    /// Opens a file that is there, by the rules of access and sharing. @return a code
    DWORD OpenThere(const Place& place, DWORD rights, DWORD share, bool truncate, std::unique_ptr<DiskFile>* file);
    /// Makes a file that isn't there, likewise.
    DWORD Create(const Place& place, DWORD attributes, std::unique_ptr<DiskFile>* file);
};

}  // namespace pikel::simulated
