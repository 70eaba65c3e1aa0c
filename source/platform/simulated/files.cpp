// The machine's files on a folder of the host.
#include "platform/simulated/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <unordered_map>

#include "platform/simulated/folder_names.h"
#include "platform/simulated/host_io.h"
#include "platform/simulated/machine.h"
#include "platform/simulated/machine_path.h"
#include "platform/simulated/open_files.h"
#include "platform/simulated/spooler_monitors.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr char kMediumDrive = 'D';
constexpr DWORD kFlagDeleteOnClose = 0x04000000;
// Spellings of folders that are kept in mind before the memory starts anew.
constexpr std::size_t kMostSpellings = 1024;

std::uint64_t SizeOf(const struct stat& status) {
    return static_cast<std::uint64_t>(status.st_size);
}

std::string HostFolderOf(const std::string& host) {
    return host.substr(0, host.rfind('/'));
}

std::string HostNameOf(const std::string& host) {
    return host.substr(host.rfind('/') + 1);
}

/// True when the key is one of the paths or lies below one.
bool IsAtOrBelow(const std::vector<std::string>& paths, const std::string& key) {
    return std::ranges::any_of(paths, [&key](const std::string& path) {
        return key.starts_with(path) && (key.size() == path.size() || key[path.size()] == '/');
    });
}

DWORD SetOwnerWrite(const std::string& host, const struct stat& status, bool writable) {
    const mode_t bits = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = writable ? status.st_mode | S_IWUSR : status.st_mode & ~bits;
    return mode == status.st_mode || chmod(host.c_str(), mode & 07777) == 0 ? ERROR_SUCCESS : CodeOfErrno(errno);
}

/// Where a path leads on the host.
struct Place {
    DWORD code = 0;  ///< 0 when something is there, 2 or 3 when not, else why the path can't name a file
    MachinePath path;
    std::string host;
    std::string key;
    struct stat status {};

    bool Exists() const { return code == ERROR_SUCCESS; }
    bool IsDirectory() const { return Exists() && S_ISDIR(status.st_mode); }
    bool IsReadOnly() const { return Exists() && (AttributesOf(status) & FILE_ATTRIBUTE_READONLY) != 0; }
    /// Nothing is there, and a file or folder can be made in the folder that is.
    bool CanBeMade() const { return code == ERROR_FILE_NOT_FOUND; }
};

}  // namespace

struct Files::State {
    Machine& machine;
    std::string root;
    FolderNames names;
    std::unordered_map<std::string, std::string> spellings;  ///< stored path by the path asked for, folders alone
    std::shared_ptr<OpenFiles> open = std::make_shared<OpenFiles>();
    std::vector<std::string> denied;
    /// Shared with the open files, which may outlive this object.
    std::shared_ptr<std::optional<std::uint64_t>> freeSpace = std::make_shared<std::optional<std::uint64_t>>();

    State(Machine& owner, std::string folder) : machine(owner), root(std::move(folder)) {}

    UINT CodePage() const { return machine.System().codePage; }
    char SystemDrive() const;
    MachinePath Parse(std::string_view path) const { return ParsePath(path, CodePage(), SystemDrive()); }

    Place Find(std::string_view path) { return Find(Parse(path)); }
    Place Find(MachinePath path);
    void Match(Place& place);

    bool IsDenied(const Place& place) const { return IsAtOrBelow(denied, place.key); }
    /// The disk in the drive; empty without one.
    std::string medium;
    bool IsOnMedium(const Place& place) const { return !medium.empty() && place.path.drive == kMediumDrive; }
    bool IsClosedToChanges(const Place& place) const { return IsDenied(place) || IsOnMedium(place); }
    std::string DriveFolder(char drive) const {
        return !medium.empty() && drive == kMediumDrive ? medium : root + "/" + drive;
    }
    DWORD CheckAccess(const Place& place, DWORD rights, DWORD share) const;
    DWORD CheckWrite(const Place& place) const;

    DWORD TakeSpace(std::uint64_t bytes) { return Take(*freeSpace, bytes); }
    static DWORD Take(std::optional<std::uint64_t>& space, std::uint64_t bytes);
    void GiveSpace(std::uint64_t bytes);
    DWORD ChangeSize(std::uint64_t from, std::uint64_t to);

    DWORD Fill(const Place& place, const std::function<DWORD(int descriptor)>& write);
    DWORD Remove(const Place& place);
    HostFile OpenHost(const Place& place, DWORD rights, bool truncate) const;
    HostFile CreateHost(const Place& place, DWORD attributes, DWORD* code);
};

char Files::State::SystemDrive() const {
    const std::string& folder = machine.System().systemDirectory;
    return folder.size() >= 2 && folder[1] == ':' ? static_cast<char>(folder[0] & ~0x20) : 'C';
}

Place Files::State::Find(MachinePath path) {
    Place place;
    place.path = std::move(path);
    place.code = place.path.code;
    if (place.code != ERROR_SUCCESS) {
        return place;
    }
    place.key = place.path.Key(CodePage());
    place.host = DriveFolder(place.path.drive);
    const std::size_t driveLength = place.host.size();
    for (const std::string& name : place.path.names) {
        place.host += '/';
        place.host += name;
    }
    // The spelling asked for is there as a rule.
    if (stat(place.host.c_str(), &place.status) != 0) {
        place.host.resize(driveLength);
        Match(place);
    }
    if (place.Exists() && place.path.endsInSeparator && !place.IsDirectory()) {
        place.code = ERROR_INVALID_NAME;
    }
    return place;
}

/// Finds the stored spelling name by name, as far as the path goes; what isn't there keeps the spelling asked for.
void Files::State::Match(Place& place) {
    const std::vector<std::string>& wanted = place.path.names;
    struct stat status {};
    bool found = stat(place.host.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    place.code = found ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND;
    std::string asked = place.host;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const bool isLast = i + 1 == wanted.size();
        asked += "/" + wanted[i];
        std::string next = place.host + "/" + wanted[i];
        if (found) {
            const bool mayEnter = S_ISDIR(status.st_mode);
            const auto known = spellings.find(asked);
            if (known != spellings.end() && stat(known->second.c_str(), &status) == 0) {
                next = known->second;
            } else if (!mayEnter || stat(next.c_str(), &status) != 0) {
                const std::string name = mayEnter ? names.Find(place.host, wanted[i], CodePage()) : std::string();
                next = name.empty() ? next : place.host + "/" + name;
                found = !name.empty() && stat(next.c_str(), &status) == 0;
                if (found && S_ISDIR(status.st_mode)) {
                    if (spellings.size() >= kMostSpellings) {
                        spellings.clear();
                    }
                    spellings[asked] = next;
                }
            }
            if (!found) {
                place.code = isLast && mayEnter ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
            }
        }
        place.host = std::move(next);
    }
    place.status = status;
}

/// What an open meets apart from the file's being there.
DWORD Files::State::CheckAccess(const Place& place, DWORD rights, DWORD share) const {
    if (IsOnMedium(place) && (rights & (FILE_SHARE_WRITE | FILE_SHARE_DELETE)) != 0) {
        return ERROR_WRITE_PROTECT;
    }
    if (IsDenied(place) || ((rights & FILE_SHARE_WRITE) != 0 && place.IsReadOnly())) {
        return ERROR_ACCESS_DENIED;
    }
    // The running spooler has its monitors loaded: nobody writes or deletes them, or keeps readers out.
    const bool meetsReader = (rights & ~DWORD{FILE_SHARE_READ}) != 0 || (share & FILE_SHARE_READ) == 0;
    if (meetsReader && place.Exists() && Monitors(machine).IsLoaded(machine.Files().WindowsPath(place.host))) {
        return ERROR_SHARING_VIOLATION;
    }
    return open->Check(place.key, rights, share);
}

/// What replacing or making a file meets.
DWORD Files::State::CheckWrite(const Place& place) const {
    if (place.CanBeMade() && place.path.endsInSeparator) {
        return ERROR_INVALID_NAME;
    }
    if (!place.Exists() && !place.CanBeMade()) {
        return place.code;
    }
    return place.IsDirectory() ? static_cast<DWORD>(ERROR_ACCESS_DENIED)
                               : CheckAccess(place, FILE_SHARE_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
}

DWORD Files::State::Take(std::optional<std::uint64_t>& space, std::uint64_t bytes) {
    if (!space) {
        return ERROR_SUCCESS;
    }
    if (bytes > *space) {
        return ERROR_DISK_FULL;
    }
    *space -= bytes;
    return ERROR_SUCCESS;
}

void Files::State::GiveSpace(std::uint64_t bytes) {
    if (*freeSpace) {
        **freeSpace += bytes;
    }
}

DWORD Files::State::ChangeSize(std::uint64_t from, std::uint64_t to) {
    if (to > from) {
        return TakeSpace(to - from);
    }
    GiveSpace(from - to);
    return ERROR_SUCCESS;
}

/// Gives a file its whole content. Others see the old file or the new one; a file that somebody shares for writing is
/// the one case that is written in place, as its holder has to see the change.
DWORD Files::State::Fill(const Place& place, const std::function<DWORD(int descriptor)>& write) {
    if (open->IsOpen(place.key)) {
        const HostFile file = OpenHost(place, FILE_SHARE_WRITE, true);
        return file.IsOpen() ? write(file.Get()) : CodeOfErrno(errno);
    }
    const std::string folder = HostFolderOf(place.host);
    FolderNames::Change change(names, folder);
    PendingFile pending(folder);
    DWORD code = pending.Code();
    if (code == ERROR_SUCCESS) {
        code = write(pending.Descriptor());
    }
    if (code == ERROR_SUCCESS) {
        code = pending.Replace(place.host);
    }
    if (code == ERROR_SUCCESS) {
        change.Added(HostNameOf(place.host));
    }
    return code;
}

DWORD Files::State::Remove(const Place& place) {
    FolderNames::Change change(names, HostFolderOf(place.host));
    if (unlink(place.host.c_str()) != 0) {
        return CodeOfErrno(errno);
    }
    GiveSpace(SizeOf(place.status));
    return ERROR_SUCCESS;
}

HostFile Files::State::OpenHost(const Place& place, DWORD rights, bool truncate) const {
    const bool writes = truncate || (rights & FILE_SHARE_WRITE) != 0;
    return HostFile::Open(place.host, (writes ? O_RDWR : O_RDONLY) | (truncate ? O_TRUNC : 0));
}

HostFile Files::State::CreateHost(const Place& place, DWORD attributes, DWORD* code) {
    FolderNames::Change change(names, HostFolderOf(place.host));
    HostFile file = HostFile::Open(place.host, O_RDWR | O_CREAT | O_EXCL,
                                   (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0644);
    *code = file.IsOpen() ? ERROR_SUCCESS : CodeOfErrno(errno);
    if (file.IsOpen()) {
        change.Added(HostNameOf(place.host));
    }
    return file;
}

Files::Files(Machine& machine, std::filesystem::path root)
    : m_state(std::make_unique<State>(machine, std::filesystem::absolute(root).lexically_normal().string())) {
    while (m_state->root.size() > 1 && m_state->root.ends_with('/')) {
        m_state->root.pop_back();
    }
    m_state->open->remove = [space = m_state->freeSpace](const std::string& host) {
        struct stat status {};
        if (stat(host.c_str(), &status) == 0 && unlink(host.c_str()) == 0 && *space) {
            **space += SizeOf(status);
        }
    };
}

Files::~Files() = default;

void Files::InsertMedium(const std::filesystem::path& folder) {
    m_state->medium = folder.string();
    m_state->spellings.clear();
}

std::filesystem::path Files::HostPath(std::string_view path) const {
    const Place place = m_state->Find(path);
    // A name that isn't there has a place all the same, on a drive that is.
    struct stat drive {};
    if (place.host.empty() || stat(m_state->DriveFolder(place.path.drive).c_str(), &drive) != 0) {
        return {};
    }
    return place.host;
}

std::string Files::WindowsPath(const std::filesystem::path& host) const {
    const std::filesystem::path below = host.lexically_relative(m_state->root);
    std::string path;
    for (const std::filesystem::path& part : below) {
        if (path.empty()) {
            path = part.string() + ":";
        } else {
            path += "\\" + FromUtf8(m_state->CodePage(), part.string());
        }
    }
    return path.size() == 2 ? path + "\\" : path;
}

DWORD Files::Look(std::string_view path, FileEntry* entry) const {
    const Place place = m_state->Find(path);
    if (place.Exists() && entry != nullptr) {
        entry->name = place.path.IsRoot() ? std::string() : FromUtf8(m_state->CodePage(), HostNameOf(place.host));
        entry->attributes = AttributesOf(place.status);
        entry->size = place.IsDirectory() ? 0 : SizeOf(place.status);
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
                const std::uint64_t size = S_ISDIR(status.st_mode) ? 0 : SizeOf(status);
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

DWORD Files::Write(std::string_view path, std::string_view bytes) {
    Place place = m_state->Find(path);
    if (place.code == ERROR_PATH_NOT_FOUND && !place.path.names.empty()) {
        MachinePath folder = place.path;
        folder.names.pop_back();
        const DWORD code = MakeFolders(WindowsPath(m_state->Find(std::move(folder)).host));
        if (code != ERROR_SUCCESS) {
            return code == ERROR_ALREADY_EXISTS ? static_cast<DWORD>(ERROR_PATH_NOT_FOUND) : code;
        }
        place = m_state->Find(path);
    }
    if (const DWORD code = m_state->CheckWrite(place); code != ERROR_SUCCESS) {
        return code;
    }
    const std::uint64_t oldSize = place.Exists() ? SizeOf(place.status) : 0;
    if (const DWORD code = m_state->ChangeSize(oldSize, bytes.size()); code != ERROR_SUCCESS) {
        return code;
    }
    const DWORD code = m_state->Fill(place, [bytes](int descriptor) { return WriteAll(descriptor, bytes); });
    if (code != ERROR_SUCCESS) {
        m_state->ChangeSize(bytes.size(), oldSize);
    }
    return code;
}

DWORD Files::Copy(std::string_view source, std::string_view target, bool failIfExists) {
    const Place from = m_state->Find(source);
    if (!from.Exists() || from.IsDirectory()) {
        return from.Exists() ? static_cast<DWORD>(ERROR_ACCESS_DENIED) : from.code;
    }
    if (const DWORD code = m_state->CheckAccess(from, FILE_SHARE_READ, FILE_SHARE_READ); code != ERROR_SUCCESS) {
        return code;
    }
    const Place to = m_state->Find(target);
    if (to.Exists() && failIfExists) {
        return ERROR_FILE_EXISTS;
    }
    if (to.Exists() && to.key == from.key) {
        return ERROR_SHARING_VIOLATION;
    }
    if (const DWORD code = m_state->CheckWrite(to); code != ERROR_SUCCESS) {
        return code;
    }
    const HostFile input = HostFile::Open(from.host, O_RDONLY);
    std::string bytes;
    if (!input.IsOpen()) {
        return CodeOfErrno(errno);
    }
    if (const DWORD code = ReadAll(input.Get(), &bytes); code != ERROR_SUCCESS) {
        return code;
    }
    const std::uint64_t oldSize = to.Exists() ? SizeOf(to.status) : 0;
    if (const DWORD code = m_state->ChangeSize(oldSize, bytes.size()); code != ERROR_SUCCESS) {
        return code;
    }
    // A copy has the time of the file it was made from, and its read-only mark.
    const DWORD code = m_state->Fill(to, [&bytes, &from](int descriptor) -> DWORD {
        const timespec times[2] = {from.status.st_mtim, from.status.st_mtim};
        const DWORD written = WriteAll(descriptor, bytes);
        if (written != ERROR_SUCCESS) {
            return written;
        }
        const bool marked = futimens(descriptor, times) == 0 && (!from.IsReadOnly() || fchmod(descriptor, 0444) == 0);
        return marked ? static_cast<DWORD>(ERROR_SUCCESS) : CodeOfErrno(errno);
    });
    if (code != ERROR_SUCCESS) {
        m_state->ChangeSize(bytes.size(), oldSize);
    }
    return code;
}

DWORD Files::Move(std::string_view source, std::string_view target, bool replace) {
    const Place from = m_state->Find(source);
    if (!from.Exists()) {
        return from.code;
    }
    if (from.path.IsRoot() || (from.IsDirectory() && m_state->open->IsAnyOpenBelow(from.key))) {
        return ERROR_ACCESS_DENIED;
    }
    if (const DWORD code = m_state->CheckAccess(from, FILE_SHARE_DELETE, kShareAll); code != ERROR_SUCCESS) {
        return code;
    }
    Place to = m_state->Find(target);
    if (!to.Exists() && !to.CanBeMade()) {
        return to.code;
    }
    if (m_state->IsClosedToChanges(to)) {
        return ERROR_ACCESS_DENIED;
    }
    const bool takesPlace = to.Exists() && to.key != from.key;
    if (takesPlace && !replace) {
        return ERROR_ALREADY_EXISTS;
    }
    if (takesPlace && (to.IsDirectory() || to.IsReadOnly() || m_state->open->IsOpen(to.key))) {
        return ERROR_ACCESS_DENIED;
    }
    // The new spelling counts, also of a name that stays the same but for its case.
    const std::string newHost = to.path.IsRoot() ? to.host : HostFolderOf(to.host) + "/" + to.path.names.back();
    FolderNames::Change leaves(m_state->names, HostFolderOf(from.host));
    FolderNames::Change comes(m_state->names, HostFolderOf(newHost));
    if (takesPlace && newHost != to.host && unlink(to.host.c_str()) != 0) {
        return CodeOfErrno(errno);
    }
    if (rename(from.host.c_str(), newHost.c_str()) != 0) {
        return CodeOfErrno(errno);
    }
    comes.Added(HostNameOf(newHost));
    m_state->open->Rename(from.key, to.key, newHost);
    if (takesPlace) {
        m_state->GiveSpace(SizeOf(to.status));
    }
    return ERROR_SUCCESS;
}

DWORD Files::Delete(std::string_view path) {
    const Place place = m_state->Find(path);
    if (!place.Exists() || place.IsDirectory()) {
        return place.Exists() ? static_cast<DWORD>(ERROR_ACCESS_DENIED) : place.code;
    }
    if (const DWORD code = m_state->CheckAccess(place, FILE_SHARE_DELETE, kShareAll); code != ERROR_SUCCESS) {
        return code;
    }
    if (place.IsReadOnly()) {
        return ERROR_ACCESS_DENIED;
    }
    if (m_state->open->IsOpen(place.key)) {
        m_state->open->DeleteAtEnd(place.key);
        return ERROR_SUCCESS;
    }
    return m_state->Remove(place);
}

DWORD Files::MakeFolder(std::string_view path) {
    const Place place = m_state->Find(path);
    if (place.Exists() && place.path.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    if (place.Exists() || place.code == ERROR_INVALID_NAME) {
        return place.Exists() ? static_cast<DWORD>(ERROR_ALREADY_EXISTS) : place.code;
    }
    if (!place.CanBeMade()) {
        return place.code;
    }
    if (m_state->IsClosedToChanges(place)) {
        return ERROR_ACCESS_DENIED;
    }
    FolderNames::Change change(m_state->names, HostFolderOf(place.host));
    if (mkdir(place.host.c_str(), 0755) != 0) {
        return CodeOfErrno(errno);
    }
    change.Added(HostNameOf(place.host));
    return ERROR_SUCCESS;
}

DWORD Files::MakeFolders(std::string_view path) {
    const Place place = m_state->Find(path);
    if (place.Exists()) {
        return place.IsDirectory() ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
    }
    if (place.host.empty()) {
        return place.code;
    }
    // Nothing is made on a drive that isn't there.
    std::string folder = std::string(1, place.path.drive) + ":";
    if (!IsDirectory(folder)) {
        return ERROR_PATH_NOT_FOUND;
    }
    for (const std::string& name : place.path.names) {
        folder += "\\" + FromUtf8(m_state->CodePage(), name);
        const DWORD code = MakeFolder(folder);
        if (code != ERROR_SUCCESS && !(code == ERROR_ALREADY_EXISTS && IsDirectory(folder))) {
            return code == ERROR_ALREADY_EXISTS ? static_cast<DWORD>(ERROR_PATH_NOT_FOUND) : code;
        }
    }
    return ERROR_SUCCESS;
}

DWORD Files::RemoveFolder(std::string_view path) {
    const Place place = m_state->Find(path);
    if (!place.Exists()) {
        return place.code;
    }
    if (!place.IsDirectory()) {
        return ERROR_DIRECTORY;
    }
    if (place.path.IsRoot() || m_state->IsClosedToChanges(place)) {
        return ERROR_ACCESS_DENIED;
    }
    FolderNames::Change change(m_state->names, HostFolderOf(place.host));
    return rmdir(place.host.c_str()) == 0 ? ERROR_SUCCESS : CodeOfErrno(errno);
}

DWORD Files::SetAttributes(std::string_view path, DWORD attributes) {
    const Place place = m_state->Find(path);
    if (!place.Exists()) {
        return place.code;
    }
    if (m_state->IsClosedToChanges(place)) {
        return ERROR_ACCESS_DENIED;
    }
    // The mark means nothing on a folder.
    return place.IsDirectory() ? ERROR_SUCCESS
                               : SetOwnerWrite(place.host, place.status, (attributes & FILE_ATTRIBUTE_READONLY) == 0);
}

DWORD Files::SetWrittenAt(std::string_view path, FILETIME time) {
    const Place place = m_state->Find(path);
    if (!place.Exists()) {
        return place.code;
    }
    if (m_state->IsClosedToChanges(place)) {
        return ERROR_ACCESS_DENIED;
    }
    const timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, HostTimeOf(time)};
    return utimensat(AT_FDCWD, place.host.c_str(), times, 0) == 0 ? ERROR_SUCCESS : CodeOfErrno(errno);
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

void Files::Deny(std::string_view path) {
    const MachinePath parsed = m_state->Parse(path);
    if (parsed.code == ERROR_SUCCESS) {
        m_state->denied.push_back(parsed.Key(m_state->CodePage()));
    }
}

void Files::SetFreeSpace(std::optional<std::uint64_t> bytes) {
    *m_state->freeSpace = bytes;
}

DWORD Files::Open(std::string_view path, DWORD access, DWORD share, DWORD disposition, DWORD attributes,
                  std::shared_ptr<OpenFile>* out, bool* existed) {
    const DWORD rights = RightsOf(access);
    const bool truncates = disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    const bool creates = disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING ||
        (disposition == TRUNCATE_EXISTING && (rights & FILE_SHARE_WRITE) == 0)) {
        return ERROR_INVALID_PARAMETER;
    }
    const Place place = m_state->Find(path);
    *existed = place.Exists();
    if (place.Exists() && disposition == CREATE_NEW) {
        return ERROR_FILE_EXISTS;
    }
    if (place.IsDirectory()) {
        return ERROR_ACCESS_DENIED;
    }
    DWORD code = place.code;
    HostFile file;
    if (place.Exists()) {
        const DWORD needed = truncates ? rights | FILE_SHARE_WRITE : rights;
        code = m_state->CheckAccess(place, needed, share);
        if (code == ERROR_SUCCESS) {
            file = m_state->OpenHost(place, rights, truncates);
            code = file.IsOpen() ? ERROR_SUCCESS : CodeOfErrno(errno);
        }
        if (code == ERROR_SUCCESS && truncates) {
            m_state->GiveSpace(SizeOf(place.status));
            code = SetOwnerWrite(place.host, place.status, (attributes & FILE_ATTRIBUTE_READONLY) == 0);
        }
    } else if (creates && place.CanBeMade()) {
        code = m_state->CheckWrite(place);
        if (code == ERROR_SUCCESS) {
            file = m_state->CreateHost(place, attributes, &code);
        }
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    *out = std::make_shared<OpenFile>();
    (*out)->file = std::move(file);
    (*out)->opening = m_state->open->Add(place.key, place.host, rights, share);
    (*out)->takeSpace = [space = m_state->freeSpace](std::uint64_t bytes) { return State::Take(*space, bytes); };
    if ((attributes & kFlagDeleteOnClose) != 0) {
        (*out)->opening->DeleteAtEnd();
    }
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
