// Names in folders of a disk, found without regard to case.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "machine/files/disk.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Looks names up by reading their folder. Large folders are kept in mind until they change, so that many look-ups of
/// names that aren't there don't read the folder each time.
class FolderNames {
  public:
    /// @param disk  whose folders they are; lives longer
    explicit FolderNames(const Disk& disk) : m_disk(disk) {}

    /// The stored spelling of a name (UTF-8) in a folder; empty when no name matches.
    std::string Find(const std::string& folder, std::string_view name, UINT codePage);

    /// A change that the machine itself makes in a folder; without one, a large folder is read anew afterwards.
    class Change {
      public:
        Change(FolderNames& names, std::string_view folder);
        ~Change();
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        void Added(std::string_view name);

      private:
        FolderNames& m_names;
        std::string m_folder;
        bool m_isKnown;
    };

  private:
    struct Folder {
        FILETIME changed{};
        std::unordered_map<std::string, std::string> names;  ///< stored spelling by folded name
    };
    Folder* Known(const std::string& folder);
    bool ChangeTime(const std::string& folder, FILETIME* time) const;
    void UseCodePage(UINT codePage);

    const Disk& m_disk;
    std::unordered_map<std::string, Folder> m_large;
    UINT m_codePage = 0;
};

}  // namespace pikel::simulated
