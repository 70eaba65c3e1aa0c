// The machine's files: what changes them.
#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/state.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kFlagDeleteOnClose = 0x04000000;

}  // namespace

DWORD Files::Write(std::string_view path, std::string_view bytes) {
    Place place = m_state->Find(path);
    if (place.code == ERROR_PATH_NOT_FOUND && !place.path.names.empty()) {
        MachinePath folder = place.path;
        folder.names.pop_back();
        const DWORD code = MakeFolders(m_state->places.WindowsPath(
            m_state->places.Find(std::move(folder), m_state->CodePage()), m_state->CodePage()));
        if (code != ERROR_SUCCESS) {
            return code == ERROR_ALREADY_EXISTS ? static_cast<DWORD>(ERROR_PATH_NOT_FOUND) : code;
        }
        place = m_state->Find(path);
    }
    if (const DWORD code = m_state->CheckWrite(place); code != ERROR_SUCCESS) {
        return code;
    }
    return m_state->FillWith(place, bytes);
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
    std::string bytes;
    if (const DWORD code = from.disk->ReadWhole(from.location, &bytes); code != ERROR_SUCCESS) {
        return code;
    }
    // A copy has the time of the file it was made from, and its read-only mark.
    const FileMarks marks = {from.entry.written, from.entry.isReadOnly};
    return m_state->FillWith(to, bytes, &marks);
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
    const Place to = m_state->Find(target);
    if (!to.Exists() && !to.CanBeMade()) {
        return to.code;
    }
    if (const DWORD code = m_state->CheckChange(to); code != ERROR_SUCCESS) {
        return code;
    }
    const bool takesPlace = to.Exists() && to.key != from.key;
    if (takesPlace && !replace) {
        return ERROR_ALREADY_EXISTS;
    }
    // A target in use is told as one without rights.
    const bool isReplaceable = !to.IsDirectory() && !to.IsReadOnly() && !m_state->open->IsOpen(to.key) &&
                               m_state->CheckAccess(to, FILE_SHARE_DELETE, kShareAll) == ERROR_SUCCESS;
    if (takesPlace && !isReplaceable) {
        return ERROR_ACCESS_DENIED;
    }
    // The new spelling counts, also of a name that stays the same but for its case.
    const std::string location = to.path.IsRoot() ? to.location : to.Folder() + "/" + to.path.names.back();
    FolderNames::Change leaves(m_state->places.Names(from), from.Folder());
    FolderNames::Change comes(m_state->places.Names(to), to.Folder());
    DWORD code = ERROR_SUCCESS;
    if (takesPlace && location != to.location) {
        code = to.disk->RemoveFile(to.location);
    }
    if (code == ERROR_SUCCESS) {
        code = from.disk->Rename(from.location, location);
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    comes.Added(to.path.names.back());
    m_state->open->Rename(from.key, to.key, location);
    if (takesPlace) {
        m_state->space->Give(to.entry.size);
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
    if (const DWORD code = m_state->CheckChange(place); code != ERROR_SUCCESS) {
        return code;
    }
    FolderNames::Change change(m_state->places.Names(place), place.Folder());
    const DWORD code = place.disk->MakeFolder(place.location);
    if (code == ERROR_SUCCESS) {
        change.Added(place.Name());
    }
    return code;
}

DWORD Files::MakeFolders(std::string_view path) {
    const Place place = m_state->Find(path);
    if (place.Exists()) {
        return place.IsDirectory() ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
    }
    if (place.disk == nullptr) {
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
    if (place.path.IsRoot()) {
        return ERROR_ACCESS_DENIED;
    }
    if (const DWORD code = m_state->CheckChange(place); code != ERROR_SUCCESS) {
        return code;
    }
    FolderNames::Change change(m_state->places.Names(place), place.Folder());
    return place.disk->RemoveFolder(place.location);
}

DWORD Files::SetAttributes(std::string_view path, DWORD attributes) {
    const Place place = m_state->Find(path);
    if (!place.Exists()) {
        return place.code;
    }
    if (const DWORD code = m_state->CheckChange(place); code != ERROR_SUCCESS) {
        return code;
    }
    // The mark means nothing on a folder.
    return place.IsDirectory() ? ERROR_SUCCESS
                               : place.disk->SetReadOnly(place.location, (attributes & FILE_ATTRIBUTE_READONLY) != 0);
}

DWORD Files::SetWrittenAt(std::string_view path, FILETIME time) {
    const Place place = m_state->Find(path);
    if (!place.Exists()) {
        return place.code;
    }
    if (const DWORD code = m_state->CheckChange(place); code != ERROR_SUCCESS) {
        return code;
    }
    return place.disk->SetWritten(place.location, time);
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
    const bool deletes = (attributes & kFlagDeleteOnClose) != 0;
    if (deletes && m_state->places.IsOnMedium(place)) {
        return ERROR_WRITE_PROTECT;
    }
    DWORD code = place.code;
    std::unique_ptr<DiskFile> file;
    if (place.Exists()) {
        code = m_state->OpenThere(place, rights, share, truncates, &file);
        if (code == ERROR_SUCCESS && truncates) {
            code = place.disk->SetReadOnly(place.location, (attributes & FILE_ATTRIBUTE_READONLY) != 0);
        }
    } else if (creates && place.CanBeMade()) {
        code = m_state->Create(place, attributes, &file);
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    *out = std::make_shared<OpenFile>();
    (*out)->file = std::move(file);
    (*out)->opening = m_state->open->Add(place.key, place.location, rights, share);
    (*out)->takeSpace = [space = m_state->space](std::uint64_t bytes) { return space->Take(bytes); };
    if (deletes) {
        (*out)->opening->DeleteAtEnd();
    }
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
