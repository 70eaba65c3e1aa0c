// What the class Files keeps, and the steps that its operations share.
#include "machine/files/state.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "machine/base/machine.h"

namespace pikel::simulated {

DWORD FreeSpace::Take(std::uint64_t bytes) {
    if (m_bytes && bytes > *m_bytes) {
        return ERROR_DISK_FULL;
    }
    if (m_bytes) {
        *m_bytes -= bytes;
    }
    return ERROR_SUCCESS;
}

void FreeSpace::Give(std::uint64_t bytes) {
    if (m_bytes) {
        *m_bytes += bytes;
    }
}

DWORD FreeSpace::Change(std::uint64_t from, std::uint64_t to) {
    if (to > from) {
        return Take(to - from);
    }
    Give(from - to);
    return ERROR_SUCCESS;
}

Files::State::State(Machine& owner, std::string root) : machine(owner), places(std::move(root)) {
    open->remove = [space = space](const std::string& host) {
        struct stat status {};
        if (stat(host.c_str(), &status) == 0 && unlink(host.c_str()) == 0) {
            space->Give(static_cast<std::uint64_t>(status.st_size));
        }
    };
}

UINT Files::State::CodePage() const {
    return machine.System().codePage;
}

MachinePath Files::State::Parse(std::string_view path) const {
    return ParsePath(path, machine.System());
}

bool Files::State::IsDenied(const Place& place) const {
    return std::ranges::any_of(denied, [&key = place.key](const std::string& path) {
        return key.starts_with(path) && (key.size() == path.size() || key[path.size()] == '/');
    });
}

DWORD Files::State::CheckChange(const Place& place) const {
    if (places.IsOnMedium(place)) {
        return ERROR_WRITE_PROTECT;
    }
    return IsDenied(place) ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

DWORD Files::State::CheckAccess(const Place& place, DWORD rights, DWORD share) const {
    const bool changes = (rights & (FILE_SHARE_WRITE | FILE_SHARE_DELETE)) != 0;
    if (changes && places.IsOnMedium(place)) {
        return ERROR_WRITE_PROTECT;
    }
    if (IsDenied(place) || ((rights & FILE_SHARE_WRITE) != 0 && place.IsReadOnly())) {
        return ERROR_ACCESS_DENIED;
    }
    // What is loaded is read: nobody writes or deletes it, or keeps readers out.
    const bool meetsReader = changes || (rights != 0 && (share & FILE_SHARE_READ) == 0);
    if (meetsReader && isLoaded && place.Exists() && isLoaded(places.WindowsPath(place.host, CodePage()))) {
        return ERROR_SHARING_VIOLATION;
    }
    return open->Check(place.key, rights, share);
}

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

DWORD Files::State::Fill(const Place& place, const std::function<DWORD(int descriptor)>& write) {
    if (open->IsOpen(place.key)) {
        const HostFile file = HostFile::Open(place.host, O_RDWR | O_TRUNC);
        return file.IsOpen() ? write(file.Get()) : CodeOfErrno(errno);
    }
    const std::string folder = place.HostFolder();
    FolderNames::Change change(places.Names(), folder);
    PendingFile pending(folder);
    DWORD code = pending.Code();
    if (code == ERROR_SUCCESS) {
        code = write(pending.Descriptor());
    }
    if (code == ERROR_SUCCESS) {
        code = pending.Replace(place.host);
    }
    if (code == ERROR_SUCCESS) {
        change.Added(place.HostName());
    }
    return code;
}

DWORD Files::State::FillWith(const Place& place, std::uint64_t size,
                             const std::function<DWORD(int descriptor)>& write) {
    const std::uint64_t oldSize = place.Exists() ? place.Size() : 0;
    DWORD code = space->Change(oldSize, size);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    code = Fill(place, write);
    if (code != ERROR_SUCCESS) {
        space->Change(size, oldSize);
    }
    return code;
}

DWORD Files::State::Remove(const Place& place) {
    FolderNames::Change change(places.Names(), place.HostFolder());
    if (unlink(place.host.c_str()) != 0) {
        return CodeOfErrno(errno);
    }
    space->Give(place.Size());
    return ERROR_SUCCESS;
}

DWORD Files::State::OpenHost(const Place& place, DWORD rights, DWORD share, bool truncate, HostFile* file) {
    const DWORD needed = truncate ? rights | FILE_SHARE_WRITE : rights;
    if (const DWORD code = CheckAccess(place, needed, share); code != ERROR_SUCCESS) {
        return code;
    }
    const bool writes = (needed & FILE_SHARE_WRITE) != 0;
    *file = HostFile::Open(place.host, (writes ? O_RDWR : O_RDONLY) | (truncate ? O_TRUNC : 0));
    if (!file->IsOpen()) {
        return CodeOfErrno(errno);
    }
    if (truncate) {
        space->Give(place.Size());
    }
    return ERROR_SUCCESS;
}

DWORD Files::State::CreateHost(const Place& place, DWORD attributes, HostFile* file) {
    if (const DWORD code = CheckWrite(place); code != ERROR_SUCCESS) {
        return code;
    }
    FolderNames::Change change(places.Names(), place.HostFolder());
    const mode_t mode = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0644;
    *file = HostFile::Open(place.host, O_RDWR | O_CREAT | O_EXCL, mode);
    if (!file->IsOpen()) {
        return CodeOfErrno(errno);
    }
    change.Added(place.HostName());
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
