// The 16-bit style file calls.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/open_files.h"
#include "machine/files/path.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

// Styles of OpenFile.
constexpr UINT kWrite = 0x1;
constexpr UINT kReadWrite = 0x2;
constexpr UINT kAccessMask = 0x3;
constexpr UINT kShareExclusive = 0x10;
constexpr UINT kShareDenyWrite = 0x20;
constexpr UINT kShareDenyRead = 0x30;
constexpr UINT kShareMask = 0x70;
constexpr UINT kParse = 0x100;
constexpr UINT kDelete = 0x200;
constexpr UINT kCreate = 0x1000;
constexpr UINT kExist = 0x4000;

DWORD AccessOf(UINT style) {
    switch (style & kAccessMask) {
        case kWrite:
            return GENERIC_WRITE;
        case kReadWrite:
            return GENERIC_READ | GENERIC_WRITE;
        default:
            return GENERIC_READ;
    }
}

DWORD ShareOf(UINT style) {
    switch (style & kShareMask) {
        case kShareExclusive:
            return 0;
        case kShareDenyWrite:
            return FILE_SHARE_READ;
        case kShareDenyRead:
            return FILE_SHARE_WRITE;
        default:
            return FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
}

/// A path in full, in the spelling given; empty for one that can't name a file.
std::string FullPath(std::string_view path) {
    const SystemDescription& system = Current().System();
    const MachinePath parsed = ParsePath(path, system);
    if (parsed.code != ERROR_SUCCESS) {
        return {};
    }
    std::string full = std::string(1, parsed.drive) + ":";
    for (const std::string& name : parsed.names) {
        full += "\\" + FromUtf8(system.codePage, name);
    }
    return full;
}

/// Where the file lies that a name stands for: a name alone is looked for in the folders of the search path.
std::string PlaceOf(std::string_view name) {
    Machine& machine = Current();
    const bool isBare = name.find_first_of("\\/:") == std::string_view::npos;
    if (isBare && !machine.Files().Exists(name)) {
        const std::string folders[] = {std::string(FolderOf(machine.ModulePath())), machine.System().systemDirectory,
                                       machine.System().windowsDirectory};
        for (const std::string& folder : folders) {
            std::string path = folder + "\\" + std::string(name);
            if (machine.Files().Exists(path)) {
                return path;
            }
        }
    }
    return FullPath(name);
}

HFILE Refuse(OFSTRUCT* structure, DWORD code) {
    structure->nErrCode = static_cast<WORD>(code);
    return Fail(code, HFILE_ERROR);
}

HFILE OpenPath(const std::string& path, OFSTRUCT* structure, UINT style) {
    const DWORD disposition = (style & kCreate) != 0 ? CREATE_ALWAYS : OPEN_EXISTING;
    const DWORD access = (style & kCreate) != 0 ? GENERIC_READ | GENERIC_WRITE : AccessOf(style);
    std::shared_ptr<Files::OpenFile> file;
    bool existed = false;
    const DWORD code = Current().Files().Open(path, access, ShareOf(style), disposition, 0, &file, &existed);
    if (code != ERROR_SUCCESS) {
        return Refuse(structure, code);
    }
    if ((style & kExist) != 0) {
        return 1;  // the test for existence closes the file again and gives a number that isn't HFILE_ERROR
    }
    void* handle = Current().Handles().Open(HandleKind::LegacyFile, std::move(file), path);
    return static_cast<HFILE>(reinterpret_cast<intptr_t>(handle));
}

const void* HandleOf(HFILE file) {
    return reinterpret_cast<const void*>(static_cast<intptr_t>(file));
}

/// Null for a number that is no open file. The numbers are handles: those of CreateFileA serve as well.
Files::OpenFile* FileOf(HFILE file) {
    const Handles& handles = Current().Handles();
    auto* legacy = handles.Find<Files::OpenFile>(HandleKind::LegacyFile, HandleOf(file));
    return legacy != nullptr ? legacy : handles.Find<Files::OpenFile>(HandleKind::File, HandleOf(file));
}

}  // namespace

HFILE WINAPI OpenFile(LPCSTR lpFileName, LPOFSTRUCT lpReOpenBuff, UINT uStyle) {
    *lpReOpenBuff = {};
    lpReOpenBuff->cBytes = sizeof(OFSTRUCT);
    lpReOpenBuff->fFixedDisk = 1;
    if (lpFileName == nullptr || *lpFileName == '\0') {
        return Refuse(lpReOpenBuff, ERROR_PATH_NOT_FOUND);
    }
    const bool mayBeMissing = (uStyle & (kCreate | kParse)) != 0;
    const std::string path = mayBeMissing ? FullPath(lpFileName) : PlaceOf(lpFileName);
    if (path.size() >= sizeof lpReOpenBuff->szPathName) {
        return Refuse(lpReOpenBuff, ERROR_INVALID_DATA);
    }
    path.copy(lpReOpenBuff->szPathName, path.size());
    if ((uStyle & kParse) != 0) {
        return 0;
    }
    if ((uStyle & kDelete) != 0) {
        const DWORD code = Current().Files().Delete(path);
        return code == ERROR_SUCCESS ? 1 : Refuse(lpReOpenBuff, code);
    }
    return OpenPath(path.empty() ? std::string(lpFileName) : path, lpReOpenBuff, uStyle);
}

UINT WINAPI _lread(HFILE hFile, LPVOID lpBuffer, UINT uBytes) {
    Files::OpenFile* file = FileOf(hFile);
    if (file == nullptr || !file->MayRead()) {
        return Fail<UINT>(file == nullptr ? ERROR_INVALID_HANDLE : ERROR_ACCESS_DENIED, static_cast<UINT>(HFILE_ERROR));
    }
    std::size_t count = 0;
    const DWORD code = file->Read(static_cast<char*>(lpBuffer), uBytes, &count);
    return code == ERROR_SUCCESS ? static_cast<UINT>(count) : Fail<UINT>(code, static_cast<UINT>(HFILE_ERROR));
}

HFILE WINAPI _lclose(HFILE hFile) {
    return Current().Handles().Close(HandleKind::LegacyFile, HandleOf(hFile)) ? 0
                                                                              : Fail(ERROR_INVALID_HANDLE, HFILE_ERROR);
}

}  // namespace pikel::simulated
