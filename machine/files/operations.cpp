// File handles, searches, attributes and folders.
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/open_files.h"
#include "machine/files/path.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorNegativeSeek = 131;

/// The entries that a search goes through.
struct Search {
    std::vector<FileEntry> entries;
    std::size_t next = 0;
};

std::string_view PathOf(LPCSTR path) {
    return path != nullptr ? path : "";
}

Files::OpenFile* FileOf(HANDLE handle) {
    return Current().Handles().Find<Files::OpenFile>(HandleKind::File, handle);
}

/// Entries that a search for a path finds. @return 0, 2 without any, or why there can be none
DWORD FindEntries(std::string_view path, std::vector<FileEntry>* entries) {
    Machine& machine = Current();
    const UINT codePage = machine.System().codePage;
    const std::string_view name = FileName(path, codePage);
    if (!IsPattern(name)) {
        // A path that ends in a backslash, and the root of a drive, are no entries of a folder.
        FileEntry entry;
        const DWORD code = machine.Files().Look(path, &entry);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        if (name.empty() || entry.name.empty()) {
            return ERROR_FILE_NOT_FOUND;
        }
        entries->push_back(std::move(entry));
        return ERROR_SUCCESS;
    }
    const std::string folder(path.substr(0, path.size() - name.size()));
    FileEntry above;
    const DWORD code = machine.Files().Look(folder.empty() ? "." : folder, &above);
    if (code != ERROR_SUCCESS) {
        // What can't be a folder's name, and a file in the place of the folder, are told as such.
        return code == ERROR_FILE_NOT_FOUND ? static_cast<DWORD>(ERROR_PATH_NOT_FOUND)
               : code == ERROR_INVALID_NAME ? static_cast<DWORD>(ERROR_DIRECTORY)
                                            : code;
    }
    const NamePattern pattern(name, codePage);
    if (!above.name.empty()) {
        for (const char* dots : {".", ".."}) {
            if (pattern.Matches(dots)) {
                entries->push_back({dots, FILE_ATTRIBUTE_DIRECTORY, 0, above.written});
            }
        }
    }
    for (FileEntry& entry : machine.Files().List(folder.empty() ? "." : folder, name)) {
        entries->push_back(std::move(entry));
    }
    return entries->empty() ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

void HandOutEntry(const FileEntry& entry, WIN32_FIND_DATAA* data) {
    *data = {};
    data->dwFileAttributes = entry.attributes;
    data->ftCreationTime = entry.written;
    data->ftLastAccessTime = entry.written;
    data->ftLastWriteTime = entry.written;
    data->nFileSizeHigh = static_cast<DWORD>(entry.size >> 32);
    data->nFileSizeLow = static_cast<DWORD>(entry.size);
    entry.name.copy(data->cFileName, sizeof data->cFileName - 1);
}

}  // namespace

HANDLE WINAPI CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES,
                          DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes, HANDLE) {
    const std::string_view path = PathOf(lpFileName);
    std::shared_ptr<Files::OpenFile> file;
    bool existed = false;
    const DWORD code = Current().Files().Open(path, dwDesiredAccess, dwShareMode, dwCreationDisposition,
                                              dwFlagsAndAttributes, &file, &existed);
    if (code != ERROR_SUCCESS) {
        return Fail(code, INVALID_HANDLE_VALUE);
    }
    // These two tell also on success whether the file was there.
    if (dwCreationDisposition == CREATE_ALWAYS || dwCreationDisposition == OPEN_ALWAYS) {
        lastError = existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
    }
    return Current().Handles().Open(HandleKind::File, std::move(file), std::string(path));
}

BOOL WINAPI CloseHandle(HANDLE hObject) {
    Handles& handles = Current().Handles();
    const HandleKind kind =
        handles.Find<void>(HandleKind::Token, hObject) != nullptr ? HandleKind::Token : HandleKind::File;
    return Outcome(handles.Close(kind, hObject) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

DWORD WINAPI SetFilePointer(HANDLE hFile, LONG lDistanceToMove, PLONG lpDistanceToMoveHigh, DWORD dwMoveMethod) {
    Files::OpenFile* file = FileOf(hFile);
    if (file == nullptr) {
        return Fail<DWORD>(ERROR_INVALID_HANDLE, INVALID_SET_FILE_POINTER);
    }
    // Without a high part the distance is signed; with one it is the low half.
    const std::int64_t distance =
        lpDistanceToMoveHigh == nullptr
            ? lDistanceToMove
            : static_cast<std::int64_t>((static_cast<std::uint64_t>(static_cast<DWORD>(*lpDistanceToMoveHigh)) << 32) |
                                        static_cast<DWORD>(lDistanceToMove));
    if (dwMoveMethod > FILE_END) {
        return Fail<DWORD>(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    DiskEntry entry;
    if (const DWORD code = file->file->Look(&entry); code != ERROR_SUCCESS) {
        return Fail<DWORD>(code, INVALID_SET_FILE_POINTER);
    }
    const auto start = static_cast<std::int64_t>(dwMoveMethod == FILE_BEGIN     ? 0
                                                 : dwMoveMethod == FILE_CURRENT ? file->position
                                                                                : entry.size);
    if (distance > std::numeric_limits<std::int64_t>::max() - start) {
        return Fail<DWORD>(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    const std::int64_t target = start + distance;
    if (target < 0) {
        return Fail<DWORD>(kErrorNegativeSeek, INVALID_SET_FILE_POINTER);
    }
    const auto high = static_cast<DWORD>(static_cast<std::uint64_t>(target) >> 32);
    const auto low = static_cast<DWORD>(target);
    if (high != 0 && lpDistanceToMoveHigh == nullptr) {
        return Fail<DWORD>(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    file->position = static_cast<std::uint64_t>(target);
    if (lpDistanceToMoveHigh != nullptr) {
        *lpDistanceToMoveHigh = static_cast<LONG>(high);
    }
    if (low == INVALID_SET_FILE_POINTER) {
        lastError = ERROR_SUCCESS;  // tells this position from a failure
    }
    return low;
}

BOOL WINAPI WriteFile(HANDLE hFile, LPCVOID lpBuffer, DWORD nNumberOfBytesToWrite, LPDWORD lpNumberOfBytesWritten,
                      LPOVERLAPPED) {
    if (lpNumberOfBytesWritten != nullptr) {
        *lpNumberOfBytesWritten = 0;
    }
    Files::OpenFile* file = FileOf(hFile);
    if (file == nullptr || !file->MayWrite()) {
        return Fail<BOOL>(file == nullptr ? ERROR_INVALID_HANDLE : ERROR_ACCESS_DENIED, FALSE);
    }
    const DWORD code = file->Write(std::string_view(static_cast<const char*>(lpBuffer), nNumberOfBytesToWrite));
    if (code == ERROR_SUCCESS && lpNumberOfBytesWritten != nullptr) {
        *lpNumberOfBytesWritten = nNumberOfBytesToWrite;
    }
    return Outcome(code);
}

BOOL WINAPI GetFileTime(HANDLE hFile, LPFILETIME lpCreationTime, LPFILETIME lpLastAccessTime,
                        LPFILETIME lpLastWriteTime) {
    const Files::OpenFile* file = FileOf(hFile);
    DiskEntry entry;
    if (file == nullptr || file->file->Look(&entry) != ERROR_SUCCESS) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    // A disk keeps no time of creation; the last write stands for all three.
    for (LPFILETIME time : {lpCreationTime, lpLastAccessTime, lpLastWriteTime}) {
        if (time != nullptr) {
            *time = entry.written;
        }
    }
    return TRUE;
}

HANDLE WINAPI FindFirstFileA(LPCSTR lpFileName, LPWIN32_FIND_DATAA lpFindFileData) {
    const std::string_view path = PathOf(lpFileName);
    auto search = std::make_shared<Search>();
    if (const DWORD code = FindEntries(path, &search->entries); code != ERROR_SUCCESS) {
        return Fail(code, INVALID_HANDLE_VALUE);
    }
    HandOutEntry(search->entries[search->next++], lpFindFileData);
    return Current().Handles().Open(HandleKind::Find, std::move(search), std::string(path));
}

BOOL WINAPI FindNextFileA(HANDLE hFindFile, LPWIN32_FIND_DATAA lpFindFileData) {
    auto* search = Current().Handles().Find<Search>(HandleKind::Find, hFindFile);
    if (search == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    if (search->next == search->entries.size()) {
        return Fail(ERROR_NO_MORE_FILES, FALSE);
    }
    HandOutEntry(search->entries[search->next++], lpFindFileData);
    return TRUE;
}

BOOL WINAPI FindClose(HANDLE hFindFile) {
    return Outcome(Current().Handles().Close(HandleKind::Find, hFindFile) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

DWORD WINAPI GetFileAttributesA(LPCSTR lpFileName) {
    FileEntry entry;
    const DWORD code = Current().Files().Look(PathOf(lpFileName), &entry);
    return code == ERROR_SUCCESS ? entry.attributes : Fail<DWORD>(code, INVALID_FILE_ATTRIBUTES);
}

BOOL WINAPI SetFileAttributesA(LPCSTR lpFileName, DWORD dwFileAttributes) {
    return Outcome(Current().Files().SetAttributes(PathOf(lpFileName), dwFileAttributes));
}

BOOL WINAPI DeleteFileA(LPCSTR lpFileName) {
    return Outcome(Current().Files().Delete(PathOf(lpFileName)));
}

BOOL WINAPI CopyFileA(LPCSTR lpExistingFileName, LPCSTR lpNewFileName, BOOL bFailIfExists) {
    return Outcome(Current().Files().Copy(PathOf(lpExistingFileName), PathOf(lpNewFileName), bFailIfExists != FALSE));
}

BOOL WINAPI PathFileExistsA(LPCSTR pszPath) {
    return pszPath != nullptr && GetFileAttributesA(pszPath) != INVALID_FILE_ATTRIBUTES ? TRUE : FALSE;
}

BOOL WINAPI CreateDirectoryA(LPCSTR lpPathName, LPSECURITY_ATTRIBUTES) {
    return Outcome(Current().Files().MakeFolder(PathOf(lpPathName)));
}

BOOL WINAPI RemoveDirectoryA(LPCSTR lpPathName) {
    return Outcome(Current().Files().RemoveFolder(PathOf(lpPathName)));
}

}  // namespace pikel::simulated
