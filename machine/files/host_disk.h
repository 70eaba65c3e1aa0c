// The disk that is the host's own folders. Paths are the host's, absolute; symbolic links lead where they lead.
#pragma once

#include <string>
#include <vector>

#include "machine/files/disk.h"

namespace pikel::simulated {

class HostDisk : public Disk {
  public:
    DWORD Look(const std::string& path, DiskEntry* entry) const override;
    std::vector<std::string> Names(const std::string& folder) const override;
    DWORD MakeFolder(const std::string& path) override;
    DWORD RemoveFolder(const std::string& path) override;
    DWORD RemoveFile(const std::string& path) override;
    DWORD Rename(const std::string& from, const std::string& to) override;
    /// Writes a file beside it, under a name that Names leaves out, and renames that: a process killed at any time
    /// leaves the old file or the new one.
    DWORD Replace(const std::string& path, std::string_view bytes, const FileMarks* marks) override;
    DWORD Open(const std::string& path, DiskOpening how, bool readOnly, std::unique_ptr<DiskFile>* file) override;
    DWORD SetReadOnly(const std::string& path, bool readOnly) override;
    DWORD SetWritten(const std::string& path, FILETIME written) override;
};

}  // namespace pikel::simulated
