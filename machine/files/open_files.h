// Who holds which file of the machine open, and what each lets others do beside it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "machine/files/files.h"
#include "machine/files/disk.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Rights that take part in sharing; their bits are those of the share modes.
DWORD RightsOf(DWORD access);

/// The open files, by the key of their paths.
class OpenFiles : public std::enable_shared_from_this<OpenFiles> {
  public:
    struct File;
    /// One open of a file. Ends when it goes.
    class Opening {
      public:
        Opening(std::shared_ptr<OpenFiles> table, std::shared_ptr<File> file, DWORD rights, DWORD share, bool isLock);
        ~Opening();
        Opening(const Opening&) = delete;
        Opening& operator=(const Opening&) = delete;

        DWORD Rights() const { return m_rights; }
        DWORD Share() const { return m_share; }
        bool IsLock() const { return m_isLock; }
        /// The file goes with the last open of it.
        void DeleteAtEnd();

      private:
        std::shared_ptr<OpenFiles> m_table;
        std::shared_ptr<File> m_file;
        DWORD m_rights;
        DWORD m_share;
        bool m_isLock;
    };

    /// Code of an open with these rights beside the opens that are there: 0, 5 (going away), 32 or 33.
    DWORD Check(const std::string& key, DWORD rights, DWORD share) const;
    bool IsOpen(const std::string& key) const { return m_files.contains(key); }
    /// True when a file below the folder is open.
    bool IsAnyOpenBelow(const std::string& folderKey) const;
    /// Adds an open without a check.
    std::unique_ptr<Opening> Add(const std::string& key, const std::string& location, DWORD rights, DWORD share,
                                 bool isLock = false);
    /// The file goes with the last open of it; until then nobody gets in.
    void DeleteAtEnd(const std::string& key);
    /// An open file got another name.
    void Rename(const std::string& key, const std::string& newKey, const std::string& newLocation);

    /// What is done with a file that has to go with its last open.
    std::function<void(const std::string& location)> remove;

  private:
    std::map<std::string, std::shared_ptr<File>> m_files;
};

/// A file that a program holds open through a handle.
struct Files::OpenFile {
    std::unique_ptr<DiskFile> file;
    std::uint64_t position = 0;  ///< where the next read or write begins
    std::unique_ptr<OpenFiles::Opening> opening;
    /// What a write must ask for room, in bytes; gives a code. Lasts as long as the file.
    std::function<DWORD(std::uint64_t)> takeSpace;

    bool MayRead() const { return (opening->Rights() & FILE_SHARE_READ) != 0; }
    bool MayWrite() const { return (opening->Rights() & FILE_SHARE_WRITE) != 0; }
    /// Reads at the position and goes on by what was read. @return a code
    DWORD Read(char* buffer, std::size_t size, std::size_t* count);
    /// Writes at the position and goes on; all bytes or none. @return a code
    DWORD Write(std::string_view bytes);
};

}  // namespace pikel::simulated
