// The machine's files on a folder of the host: paths, and what can be seen without a change.
#include "machine/files/files.h"

#include <fcntl.h>

#include <algorithm>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/state.h"

namespace pikel::simulated {

namespace {

/// An absolute path without a slash at its end.
std::string RootOf(const std::filesystem::path& folder) {
    std::string root = std::filesystem::absolute(folder).lexically_normal().string();
    while (root.size() > 1 && root.ends_with('/')) {
        root.pop_back();
    }
    return root;
}

}  // namespace

Files::Files(Machine& machine, std::filesystem::path root) : m_state(std::make_unique<State>(machine, RootOf(root))) {}

Files::~Files() = default;

std::filesystem::path Files::HostPath(std::string_view path) const {
    const Place place = m_state->Find(path);
    // A name that isn't there has a place all the same, on a drive that is.
    struct stat drive {};
    if (place.host.empty() || stat(m_state->places.DriveFolder(place.path.drive).c_str(), &drive) != 0) {
        return {};
    }
    return place.host;
}

std::string Files::WindowsPath(const std::filesystem::path& host) const {
    return m_state->places.WindowsPath(host, m_state->CodePage());
}

DWORD Files::Look(std::string_view path, FileEntry* entry) const {
    const Place place = m_state->Find(path);
    if (place.Exists() && entry != nullptr) {
        entry->name = place.path.IsRoot() ? std::string() : FromUtf8(m_state->CodePage(), place.HostName());
        entry->attributes = AttributesOf(place.status);
        entry->size = place.IsDirectory() ? 0 : place.Size();
        entry->written = FileTimeOf(place.status.st_mtim);
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
    return place.Exists() ? AttributesOf(place.status) : static_cast<DWORD>(INVALID_FILE_ATTRIBUTES);
}

std::optional<std::string> Files::Read(std::string_view path) const {
    const Place place = m_state->Find(path);
    if (!place.Exists() || place.IsDirectory()) {
        return std::nullopt;
    }
    const HostFile file = HostFile::Open(place.host, O_RDONLY);
    std::string bytes;
    if (!file.IsOpen() || ReadAll(file.Get(), &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<FILETIME> Files::WrittenAt(std::string_view path) const {
    const Place place = m_state->Find(path);
    return place.Exists() ? std::optional(FileTimeOf(place.status.st_mtim)) : std::nullopt;
}

std::vector<FileEntry> Files::List(std::string_view folder, std::string_view pattern) const {
    const Place place = m_state->Find(folder);
    std::vector<std::pair<std::string, FileEntry>> found;
    if (place.IsDirectory()) {
        const UINT codePage = m_state->CodePage();
        const NamePattern wanted(pattern, codePage);
        for (const std::string& stored : NamesIn(place.host)) {
            std::string name = FromUtf8(codePage, stored);
            struct stat status {};
            if (wanted.Matches(name) && stat((place.host + "/" + stored).c_str(), &status) == 0) {
                const std::uint64_t size = S_ISDIR(status.st_mode) ? 0 : static_cast<std::uint64_t>(status.st_size);
                std::string folded = FoldCase(codePage, name);
                found.emplace_back(std::move(folded),
                                   FileEntry{std::move(name), AttributesOf(status), size, FileTimeOf(status.st_mtim)});
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
    std::shared_ptr<OpenFiles::Opening> opening = m_state->open->Add(place.key, place.host, FILE_SHARE_READ, share);
    return Held([opening]() mutable { opening.reset(); });
}

Files::Held Files::LockRange(std::string_view path) {
    const Place place = m_state->Find(path);
    std::shared_ptr<OpenFiles::Opening> opening =
        m_state->open->Add(place.key, place.host, FILE_SHARE_READ, kShareAll, true);
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
