// Names in folders of the host, found without regard to case.
#pragma once

#include <sys/stat.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

/// Looks names up by reading their folder. Large folders are kept in mind until they change, so that many look-ups of
/// names that aren't there don't read the folder each time.
class FolderNames {
  public:
    /// The stored spelling of a name (UTF-8) in a folder of the host; empty when no name matches.
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
        timespec changed{};
        std::unordered_map<std::string, std::string> names;  ///< stored spelling by folded name
    };
    Folder* Known(const std::string& folder);
    void UseCodePage(UINT codePage);

    std::unordered_map<std::string, Folder> m_large;
    UINT m_codePage = 0;
};

/// Names in a host folder, "." and ".." and files in the making not among them. Empty for a folder that can't be read.
std::vector<std::string> NamesIn(const std::string& folder);

}  // namespace pikel::simulated
