// What the class Files keeps, and the steps that its operations share.
#include "machine/files/state.h"

#include <algorithm>

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

Files::State::State(Machine& owner, std::shared_ptr<Disk> disk, std::string root)
    : machine(owner), places(disk, std::move(root)) {
    open->remove = [disk, space = space](const std::string& location) {
        DiskEntry entry;
        if (disk->Look(location, &entry) == ERROR_SUCCESS && disk->RemoveFile(location) == ERROR_SUCCESS) {
            space->Give(entry.size);
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
    if (meetsReader && isLoaded && place.Exists() && isLoaded(places.WindowsPath(place, CodePage()))) {
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

DWORD Files::State::Fill(const Place& place, std::string_view bytes, const FileMarks* marks) {
    if (open->IsOpen(place.key)) {
        std::unique_ptr<DiskFile> file;
        DWORD code = place.disk->Open(place.location, DiskOpening::Truncate, false, &file);
        if (code == ERROR_SUCCESS) {
            code = file->Write(0, bytes);
        }
        return code == ERROR_SUCCESS && marks != nullptr ? file->Mark(*marks) : code;
    }
    FolderNames::Change change(places.Names(place), place.Folder());
    const DWORD code = place.disk->Replace(place.location, bytes, marks);
    if (code == ERROR_SUCCESS) {
        change.Added(place.Name());
    }
    return code;
}

DWORD Files::State::FillWith(const Place& place, std::string_view bytes, const FileMarks* marks) {
    const std::uint64_t oldSize = place.Exists() ? place.entry.size : 0;
    DWORD code = space->Change(oldSize, bytes.size());
    if (code != ERROR_SUCCESS) {
        return code;
    }
    code = Fill(place, bytes, marks);
    if (code != ERROR_SUCCESS) {
        space->Change(bytes.size(), oldSize);
    }
    return code;
}

DWORD Files::State::Remove(const Place& place) {
    FolderNames::Change change(places.Names(place), place.Folder());
    const DWORD code = place.disk->RemoveFile(place.location);
    if (code == ERROR_SUCCESS) {
        space->Give(place.entry.size);
    }
    return code;
}

DWORD Files::State::OpenThere(const Place& place, DWORD rights, DWORD share, bool truncate,
                              std::unique_ptr<DiskFile>* file) {
    const DWORD needed = truncate ? rights | FILE_SHARE_WRITE : rights;
    if (const DWORD code = CheckAccess(place, needed, share); code != ERROR_SUCCESS) {
        return code;
    }
    const bool writes = (needed & FILE_SHARE_WRITE) != 0;
    const DiskOpening how = truncate ? DiskOpening::Truncate : writes ? DiskOpening::Write : DiskOpening::Read;
    const DWORD code = place.disk->Open(place.location, how, false, file);
    if (code == ERROR_SUCCESS && truncate) {
        space->Give(place.entry.size);
    }
    return code;
}

DWORD Files::State::Create(const Place& place, DWORD attributes, std::unique_ptr<DiskFile>* file) {
    if (const DWORD code = CheckWrite(place); code != ERROR_SUCCESS) {
        return code;
    }
    FolderNames::Change change(places.Names(place), place.Folder());
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    const DWORD code = place.disk->Open(place.location, DiskOpening::Create, readOnly, file);
    if (code == ERROR_SUCCESS) {
        change.Added(place.Name());
    }
    return code;
}

}  // namespace pikel::simulated
