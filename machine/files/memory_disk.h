// A disk in memory: "/C/Windows/win.ini" from a root that is always there. It goes with its last user.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "machine/files/disk.h"

namespace pikel::simulated {

/// Always held by a shared_ptr, as its open files keep it alive.
class MemoryDisk : public Disk, public std::enable_shared_from_this<MemoryDisk> {
  public:
    MemoryDisk();
    ~MemoryDisk() override;

    /// Another disk with the same folders and files; open ones are just files there. It costs a pointer for each of
    /// them: what is in them is shared until one of the disks changes it.
    std::shared_ptr<MemoryDisk> Copy() const;

    DWORD Look(const std::string& path, DiskEntry* entry) const override;
    std::vector<std::string> Names(const std::string& folder) const override;
    DWORD MakeFolder(const std::string& path) override;
    DWORD RemoveFolder(const std::string& path) override;
    DWORD RemoveFile(const std::string& path) override;
    DWORD Rename(const std::string& from, const std::string& to) override;
    DWORD Replace(const std::string& path, std::string_view bytes, const FileMarks* marks) override;
    DWORD Open(const std::string& path, DiskOpening how, bool readOnly, std::unique_ptr<DiskFile>* file) override;
    DWORD SetReadOnly(const std::string& path, bool readOnly) override;
    DWORD SetWritten(const std::string& path, FILETIME written) override;

  private:
    /// A folder or file, whatever its names are. Its number is its place among the slots.
    using Number = std::size_t;
    struct Node;
    /// A node lives while it has a name or is open; its slot is given away again afterwards.
    struct Slot {
        std::shared_ptr<Node> node;
        bool hasName = true;
        std::size_t openings = 0;
    };
    /// Where a path leads: to a folder that is there, and a name that may be in it.
    struct Spot;
    class File;

    const Node& At(Number number) const { return *m_slots[number].node; }
    Node& Change(Number number);
    Spot Find(std::string_view path) const;
    /// Makes a node with a name. @return a code
    DWORD Add(const Spot& spot, Node node, Number* number);
    void TakeName(const Spot& spot);
    void FreeUnlessUsed(Number number);
    bool IsBelow(Number folder, std::string_view path) const;

    std::vector<Slot> m_slots;
    std::vector<Number> m_free;
};

}  // namespace pikel::simulated
