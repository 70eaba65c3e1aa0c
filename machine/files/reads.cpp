// The machine's files: paths, and what can be seen without a change.
#include "machine/files/files.h"

#include <algorithm>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/state.h"

namespace pikel::simulated {

namespace {

/// An absolute path without a slash at its end; empty for none.
std::string RootOf(const std::filesystem::path& folder) {
    if (folder.empty()) {
        return {};
    }
    std::string root = std::filesystem::absolute(folder).lexically_normal().string();
    while (root.size() > 1 && root.ends_with('/')) {
        root.pop_back();
    }
    return root;
}

}  // namespace

Files::Files(Machine& machine, std::shared_ptr<Disk> disk, const std::filesystem::path& root)
    : m_state(std::make_unique<State>(machine, std::move(disk), RootOf(root))) {}

Files::~Files() = default;

std::filesystem::path Files::HostPath(std::string_view path) const {
    const Place place = m_state->Find(path);
    const std::string drive = place.disk != nullptr ? m_state->places.HostFolder(place.path.drive) : std::string();
    // A name that isn't there has a place all the same, on a drive that is.
    return drive.empty() || place.disk->Look(drive, nullptr) != ERROR_SUCCESS ? std::string() : place.location;
}

std::string Files::WindowsPath(const std::filesystem::path& host) const {
    return m_state->places.WindowsPath(host, m_state->CodePage());
}

DWORD Files::Look(std::string_view path, FileEntry* entry) const {
    const Place place = m_state->Find(path);
    if (place.Exists() && entry != nullptr) {
        entry->name = place.path.IsRoot() ? std::string() : FromUtf8(m_state->CodePage(), place.Name());
        entry->attributes = place.entry.Attributes();
        entry->size = place.entry.size;
        entry->written = place.entry.written;
    }
    return place.code;
}

bool Files::Exists(std::string_view path) const {
    return m_state->Find(path).Exists();
}

bool Files::IsDirectory(std::string_view path) const {
    return m_state->Find(path).IsDirectory();
}

DWORD Files::Attributes(std::string_view path) const {
    const Place place = m_state->Find(path);
    return place.Exists() ? place.entry.Attributes() : static_cast<DWORD>(INVALID_FILE_ATTRIBUTES);
}

std::optional<std::string> Files::Read(std::string_view path) const {
    const Place place = m_state->Find(path);
    if (!place.Exists() || place.IsDirectory()) {
        return std::nullopt;
    }
    std::string bytes;
    if (place.disk->ReadWhole(place.location, &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<FILETIME> Files::WrittenAt(std::string_view path) const {
    const Place place = m_state->Find(path);
    return place.Exists() ? std::optional(place.entry.written) : std::nullopt;
}

std::vector<FileEntry> Files::List(std::string_view folder, std::string_view pattern) const {
    const Place place = m_state->Find(folder);
    std::vector<std::pair<std::string, FileEntry>> found;
    if (place.IsDirectory()) {
        const UINT codePage = m_state->CodePage();
        const NamePattern wanted(pattern, codePage);
        for (const std::string& stored : place.disk->Names(place.location)) {
            std::string name = FromUtf8(codePage, stored);
            DiskEntry entry;
            if (wanted.Matches(name) && place.disk->Look(place.location + "/" + stored, &entry) == ERROR_SUCCESS) {
                std::string folded = FoldCase(codePage, name);
                found.emplace_back(std::move(folded),
                                   FileEntry{std::move(name), entry.Attributes(), entry.size, entry.written});
            }
        }
    }
    std::ranges::sort(found, {}, [](const auto& entry) -> const std::string& { return entry.first; });
    std::vector<FileEntry> entries;
    entries.reserve(found.size());
    for (auto& [folded, entry] : found) {
        entries.push_back(std::move(entry));
    }
    return entries;
}

DWORD Files::CheckOpen(std::string_view path, DWORD access, DWORD share) const {
    const Place place = m_state->Find(path);
    if (!place.Exists() || place.IsDirectory()) {
        return place.Exists() ? static_cast<DWORD>(ERROR_ACCESS_DENIED) : place.code;
    }
    return m_state->CheckAccess(place, RightsOf(access), share);
}

Files::Held Files::HoldOpen(std::string_view path, DWORD share) {
    const Place place = m_state->Find(path);
    std::shared_ptr<OpenFiles::Opening> opening = m_state->open->Add(place.key, place.location, FILE_SHARE_READ, share);
    return Held([opening]() mutable { opening.reset(); });
}

Files::Held Files::LockRange(std::string_view path) {
    const Place place = m_state->Find(path);
    std::shared_ptr<OpenFiles::Opening> opening =
        m_state->open->Add(place.key, place.location, FILE_SHARE_READ, kShareAll, true);
    return Held([opening]() mutable { opening.reset(); });
}

void Files::InsertMedium(const std::filesystem::path& folder) {
    m_state->places.InsertMedium(RootOf(folder));
}

void Files::SetLoadedTest(std::function<bool(std::string_view path)> isLoaded) {
    m_state->isLoaded = std::move(isLoaded);
}

void Files::Deny(std::string_view path) {
    const MachinePath parsed = m_state->Parse(path);
    if (parsed.code == ERROR_SUCCESS) {
        m_state->denied.push_back(parsed.Key(m_state->CodePage()));
    }
}

void Files::SetFreeSpace(std::optional<std::uint64_t> bytes) {
    m_state->space->Set(bytes);
}

}  // namespace pikel::simulated
