// A disk in memory. The codes are those that the host's calls would give.
#include "machine/files/memory_disk.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <utility>

#include "machine/files/disk_codes.h"

namespace pikel::simulated {

namespace {

/// Longest name, in bytes of UTF-8, as on the host.
constexpr std::size_t kLongestName = 255;

/// Bytes that a file may have; a write far behind the end must not take the process's memory.
constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 30;

FILETIME Now() {
    timespec now{};
    std::timespec_get(&now, TIME_UTC);
    return FileTimeOf(now);
}

}  // namespace

struct MemoryDisk::Node {
    bool isFolder = false;
    bool isReadOnly = false;
    FILETIME written = Now();
    std::string bytes;
    std::map<std::string, Number, std::less<>> names;
};

struct MemoryDisk::Spot {
    DWORD code = ERROR_SUCCESS;  ///< 0 when something is there, 2 when a name is missing, 3 for a way through a file
    Number folder = 0;
    std::string_view name;  ///< empty for the root, and when the folder is missing
    Number number = 0;      ///< what is there

    bool Exists() const { return code == ERROR_SUCCESS; }
    /// Nothing is there, but the folder is.
    bool CanBeMade() const { return code == ERROR_FILE_NOT_FOUND && !name.empty(); }
};

// ---- nodes ----------------------------------------------------------------------------------------------------------

MemoryDisk::MemoryDisk() {
    Node root;
    root.isFolder = true;
    m_slots.push_back({std::make_shared<Node>(std::move(root))});
}

MemoryDisk::~MemoryDisk() = default;

std::shared_ptr<MemoryDisk> MemoryDisk::Copy() const {
    auto copy = std::make_shared<MemoryDisk>();
    copy->m_slots = m_slots;
    copy->m_free = m_free;
    for (Number number = 0; number < copy->m_slots.size(); ++number) {
        // A file that lives by its openings alone goes without them.
        if (std::exchange(copy->m_slots[number].openings, 0) > 0) {
            copy->FreeUnlessUsed(number);
        }
    }
    return copy;
}

/// The node, for a change: one that other disks share becomes this disk's own first.
MemoryDisk::Node& MemoryDisk::Change(Number number) {
    std::shared_ptr<Node>& node = m_slots[number].node;
    if (node.use_count() > 1) {
        node = std::make_shared<Node>(*node);
    }
    return *node;
}

MemoryDisk::Spot MemoryDisk::Find(std::string_view path) const {
    Spot spot;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (name.empty()) {
            continue;
        }
        if (!spot.Exists() || !At(spot.number).isFolder) {
            // A missing name further ahead is told before a file on the way.
            spot.code = spot.Exists() ? DWORD{ERROR_PATH_NOT_FOUND} : spot.code;
            spot.name = {};
            return spot;
        }
        spot.folder = spot.number;
        spot.name = name;
        const auto& names = At(spot.folder).names;
        const auto found = names.find(name);
        spot.code = found != names.end() ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
        spot.number = spot.Exists() ? found->second : 0;
    }
    return spot;
}

DWORD MemoryDisk::Add(const Spot& spot, Node node, Number* number) {
    if (!spot.CanBeMade()) {
        return spot.Exists() ? static_cast<DWORD>(ERROR_ALREADY_EXISTS) : spot.code;
    }
    if (spot.name.size() > kLongestName) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    if (m_free.empty()) {
        m_free.push_back(m_slots.size());
        m_slots.emplace_back();
    }
    *number = m_free.back();
    m_slots[*number] = {std::make_shared<Node>(std::move(node))};
    m_free.pop_back();
    Node& folder = Change(spot.folder);
    folder.names.emplace(spot.name, *number);
    folder.written = Now();
    return ERROR_SUCCESS;
}

void MemoryDisk::TakeName(const Spot& spot) {
    Node& folder = Change(spot.folder);
    folder.names.erase(folder.names.find(spot.name));
    folder.written = Now();
    m_slots[spot.number].hasName = false;
    FreeUnlessUsed(spot.number);
}

void MemoryDisk::FreeUnlessUsed(Number number) {
    Slot& slot = m_slots[number];
    if (!slot.hasName && slot.openings == 0) {
        slot.node.reset();
        m_free.push_back(number);
    }
}

// ---- open files -----------------------------------------------------------------------------------------------------

class MemoryDisk::File : public DiskFile {
  public:
    File(std::shared_ptr<MemoryDisk> disk, Number number) : m_disk(std::move(disk)), m_number(number) {
        ++m_disk->m_slots[m_number].openings;
    }
    ~File() override {
        --m_disk->m_slots[m_number].openings;
        m_disk->FreeUnlessUsed(m_number);
    }

    DWORD Look(DiskEntry* entry) const override {
        *entry = {false, Node().isReadOnly, Node().bytes.size(), Node().written};
        return ERROR_SUCCESS;
    }
    DWORD Read(std::uint64_t at, char* buffer, std::size_t size, std::size_t* count) const override {
        const std::string& bytes = Node().bytes;
        *count = at < bytes.size() ? std::min(size, bytes.size() - static_cast<std::size_t>(at)) : 0;
        if (*count > 0) {
            std::memcpy(buffer, bytes.data() + at, *count);
        }
        return ERROR_SUCCESS;
    }
    DWORD Write(std::uint64_t at, std::string_view bytes) override {
        if (bytes.empty()) {
            return ERROR_SUCCESS;
        }
        if (bytes.size() > kLargestFile || at > kLargestFile - bytes.size()) {
            return ERROR_DISK_FULL;
        }
        MemoryDisk::Node& node = m_disk->Change(m_number);
        const auto start = static_cast<std::size_t>(at);
        if (start + bytes.size() > node.bytes.size()) {
            node.bytes.resize(start + bytes.size());
        }
        node.bytes.replace(start, bytes.size(), bytes);
        node.written = Now();
        return ERROR_SUCCESS;
    }
    DWORD Resize(std::uint64_t size) override {
        if (size > kLargestFile) {
            return ERROR_DISK_FULL;
        }
        MemoryDisk::Node& node = m_disk->Change(m_number);
        node.bytes.resize(static_cast<std::size_t>(size));
        node.written = Now();
        return ERROR_SUCCESS;
    }
    DWORD Mark(const FileMarks& marks) override {
        MemoryDisk::Node& node = m_disk->Change(m_number);
        node.written = marks.written;
        node.isReadOnly = node.isReadOnly || marks.isReadOnly;
        return ERROR_SUCCESS;
    }
    DWORD Sync() override { return ERROR_SUCCESS; }

  private:
    const MemoryDisk::Node& Node() const { return m_disk->At(m_number); }

    std::shared_ptr<MemoryDisk> m_disk;
    Number m_number;
};

// ---- the disk -------------------------------------------------------------------------------------------------------

DWORD MemoryDisk::Look(const std::string& path, DiskEntry* entry) const {
    const Spot spot = Find(path);
    if (spot.Exists() && entry != nullptr) {
        const Node& node = At(spot.number);
        *entry = {node.isFolder, node.isReadOnly, node.bytes.size(), node.written};
    }
    return spot.code;
}

std::vector<std::string> MemoryDisk::Names(const std::string& folder) const {
    std::vector<std::string> names;
    if (const Spot spot = Find(folder); spot.Exists()) {
        names.reserve(At(spot.number).names.size());
        for (const auto& [name, number] : At(spot.number).names) {
            names.push_back(name);
        }
    }
    return names;
}

DWORD MemoryDisk::MakeFolder(const std::string& path) {
    Node node;
    node.isFolder = true;
    Number number = 0;
    return Add(Find(path), std::move(node), &number);
}

DWORD MemoryDisk::RemoveFolder(const std::string& path) {
    const Spot spot = Find(path);
    if (!spot.Exists()) {
        return spot.code;
    }
    if (!At(spot.number).isFolder) {
        return ERROR_PATH_NOT_FOUND;
    }
    if (spot.name.empty()) {
        return ERROR_ACCESS_DENIED;
    }
    if (!At(spot.number).names.empty()) {
        return ERROR_DIR_NOT_EMPTY;
    }
    TakeName(spot);
    return ERROR_SUCCESS;
}

DWORD MemoryDisk::RemoveFile(const std::string& path) {
    const Spot spot = Find(path);
    if (!spot.Exists() || At(spot.number).isFolder) {
        return spot.Exists() ? static_cast<DWORD>(ERROR_ACCESS_DENIED) : spot.code;
    }
    TakeName(spot);
    return ERROR_SUCCESS;
}

/// Whether a path leads through a folder, or to it.
bool MemoryDisk::IsBelow(Number folder, std::string_view path) const {
    for (std::string_view way = path; way.starts_with('/'); way = way.substr(0, way.rfind('/'))) {
        const Spot spot = Find(way);
        if (spot.Exists() && spot.number == folder) {
            return true;
        }
    }
    return false;
}

DWORD MemoryDisk::Rename(const std::string& from, const std::string& to) {
    const Spot source = Find(from);
    const Spot target = Find(to);
    if (!source.Exists()) {
        return source.code;
    }
    if (!target.Exists() && !target.CanBeMade()) {
        return target.code;
    }
    if (source.name.empty() || (target.Exists() && target.name.empty())) {
        return ERROR_ACCESS_DENIED;
    }
    if (target.name.size() > kLongestName) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    const bool isFolder = At(source.number).isFolder;
    if (target.Exists() && target.number == source.number) {
        return ERROR_SUCCESS;
    }
    if (isFolder && IsBelow(source.number, to)) {
        return kErrorGeneralFailure;
    }
    if (target.Exists()) {
        const DWORD code = !isFolder && At(target.number).isFolder ? DWORD{ERROR_ACCESS_DENIED}
                           : isFolder                              ? RemoveFolder(to)
                                                                   : RemoveFile(to);
        if (code != ERROR_SUCCESS) {
            return code;
        }
    }
    Node& leaves = Change(source.folder);
    leaves.names.erase(leaves.names.find(source.name));
    leaves.written = Now();
    Node& comes = Change(target.folder);
    comes.names.emplace(target.name, source.number);
    comes.written = Now();
    return ERROR_SUCCESS;
}

DWORD MemoryDisk::Replace(const std::string& path, std::string_view bytes, const FileMarks* marks) {
    const Spot spot = Find(path);
    if (spot.Exists() && At(spot.number).isFolder) {
        return ERROR_ACCESS_DENIED;
    }
    Node node;
    node.bytes = bytes;
    if (marks != nullptr) {
        node.written = marks->written;
        node.isReadOnly = marks->isReadOnly;
    }
    Number number = spot.number;
    if (!spot.Exists()) {
        return Add(spot, std::move(node), &number);
    }
    if (m_slots[number].openings == 0) {
        m_slots[number].node = std::make_shared<Node>(std::move(node));
        Change(spot.folder).written = Now();
        return ERROR_SUCCESS;
    }
    // Who has the old one open goes on seeing it.
    TakeName(spot);
    Spot free = spot;
    free.code = ERROR_FILE_NOT_FOUND;
    return Add(free, std::move(node), &number);
}

DWORD MemoryDisk::Open(const std::string& path, DiskOpening how, bool readOnly, std::unique_ptr<DiskFile>* file) {
    const Spot spot = Find(path);
    Number number = spot.number;
    if (how == DiskOpening::Create) {
        Node node;
        node.isReadOnly = readOnly;
        if (const DWORD code = Add(spot, std::move(node), &number); code != ERROR_SUCCESS) {
            return code;
        }
    } else if (!spot.Exists() || At(number).isFolder) {
        return spot.Exists() ? static_cast<DWORD>(ERROR_ACCESS_DENIED) : spot.code;
    }
    if (how == DiskOpening::Truncate) {
        Node& node = Change(number);
        node.bytes.clear();
        node.written = Now();
    }
    *file = std::make_unique<File>(shared_from_this(), number);
    return ERROR_SUCCESS;
}

DWORD MemoryDisk::SetReadOnly(const std::string& path, bool readOnly) {
    const Spot spot = Find(path);
    if (spot.Exists() && !At(spot.number).isFolder) {
        Change(spot.number).isReadOnly = readOnly;
    }
    return spot.code;
}

DWORD MemoryDisk::SetWritten(const std::string& path, FILETIME written) {
    const Spot spot = Find(path);
    if (spot.Exists()) {
        Change(spot.number).written = written;
    }
    return spot.code;
}

}  // namespace pikel::simulated
