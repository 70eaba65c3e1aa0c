#include "machine/setup/file_copy.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/path.h"
#include "machine/inf/directory_ids.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/setup/compressed.h"

namespace pikel::simulated {

namespace {

constexpr char kSessionManager[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";
constexpr DWORD kWriteFault = 29;
constexpr char kPendingRenames[] = "PendingFileRenameOperations";

// ---- versions -------------------------------------------------------------------------------------------------------

/// File version of a file's version resource: both halves of VS_FIXEDFILEINFO, dwFileVersionMS in front.
std::optional<std::uint64_t> FileVersion(const std::string& path) {
    constexpr std::size_t highPlace = 8;
    constexpr std::size_t smallest = 16;
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeA(path.c_str(), &ignored);
    if (size == 0) {
        return std::nullopt;
    }
    std::string block(size, '\0');
    LPVOID fixed = nullptr;
    UINT length = 0;
    if (!GetFileVersionInfoA(path.c_str(), 0, size, block.data()) ||
        !VerQueryValueA(block.data(), "\\", &fixed, &length) || length < smallest) {
        return std::nullopt;
    }
    DWORD halves[2] = {};
    std::memcpy(halves, static_cast<const char*>(fixed) + highPlace, sizeof halves);
    return static_cast<std::uint64_t>(halves[0]) << 32 | halves[1];
}

/// True when the target's version keeps the source from replacing it.
bool IsTargetNewer(const FileCopy& copy) {
    const std::optional<std::uint64_t> source = FileVersion(copy.source);
    const std::optional<std::uint64_t> target = FileVersion(copy.target);
    if (!source.has_value() || !target.has_value()) {
        return false;
    }
    return (copy.style & kCopyNewerOnly) != 0 ? *target >= *source : *target > *source;
}

// ---- what the flags say ---------------------------------------------------------------------------------------------

bool Asks(const QueueCallback& callback, UINT notification, const FileCopy& copy) {
    const FILEPATHS_A paths = {copy.target.c_str(), copy.source.c_str(), ERROR_SUCCESS, 0};
    return callback && callback.Tell(notification, paths, 0) != 0;
}

/// True when the copy isn't wanted.
bool KeepsTarget(const FileCopy& copy, bool targetExists, const QueueCallback& callback) {
    if (!targetExists) {
        return (copy.style & SP_COPY_REPLACEONLY) != 0;
    }
    if ((copy.style & SP_COPY_FORCE_NOOVERWRITE) != 0) {
        return true;
    }
    if ((copy.style & SP_COPY_NOOVERWRITE) != 0 && !Asks(callback, kNotifyTargetExists, copy)) {
        return true;
    }
    constexpr DWORD newer = SP_COPY_NEWER | SP_COPY_FORCE_NEWER | kCopyNewerOnly;
    if ((copy.style & newer) == 0 || !IsTargetNewer(copy)) {
        return false;
    }
    return (copy.style & SP_COPY_FORCE_NEWER) != 0 || !Asks(callback, kNotifyTargetNewer, copy);
}

// ---- placing --------------------------------------------------------------------------------------------------------

/// Copies a file, or expands one that lies under its compressed name.
DWORD CopyOrExpand(Files& files, const FileCopy& copy) {
    if (files.Exists(copy.source)) {
        return files.Copy(copy.source, copy.target, false);
    }
    const std::optional<std::string> bytes = files.Read(CompressedName(copy.source));
    const std::optional<std::string> expanded = bytes ? Expand(*bytes) : std::nullopt;
    return expanded ? files.Write(copy.target, *expanded) : static_cast<DWORD>(ERROR_INVALID_DATA);
}

/// Code with which a source can be read, under its own name or its compressed one.
DWORD CheckSource(const Files& files, const std::string& path) {
    const DWORD code = files.CheckOpen(path, GENERIC_READ, FILE_SHARE_READ);
    const bool isCompressed = code == ERROR_FILE_NOT_FOUND &&
                              files.CheckOpen(CompressedName(path), GENERIC_READ, FILE_SHARE_READ) == ERROR_SUCCESS;
    return isCompressed ? static_cast<DWORD>(ERROR_SUCCESS) : code;
}

/// Copies over a target that may be read-only. The target keeps its mark; a source's mark doesn't go with the file, for
/// what comes from a disc is always read-only.
DWORD Overwrite(Machine& machine, const FileCopy& copy) {
    Files& files = machine.Files();
    const DWORD before = files.Attributes(copy.target);
    const bool wasReadOnly = before != INVALID_FILE_ATTRIBUTES && (before & FILE_ATTRIBUTE_READONLY) != 0;
    if (wasReadOnly) {
        if (const DWORD code = files.SetAttributes(copy.target, before & ~DWORD{FILE_ATTRIBUTE_READONLY}); code != 0) {
            return code;
        }
    }
    const DWORD code = CopyOrExpand(files, copy);
    const DWORD after = files.Attributes(copy.target);
    if (after != INVALID_FILE_ATTRIBUTES) {
        const DWORD mark = FILE_ATTRIBUTE_READONLY;
        files.SetAttributes(copy.target, wasReadOnly ? after | mark : after & ~mark);
    }
    return code;
}

/// A name beside the target that is free.
std::string WaitingName(Machine& machine, const std::string& target) {
    const std::string_view folder = FolderOf(target, machine.System().codePage);
    for (unsigned number = 1;; ++number) {
        char name[16];
        std::snprintf(name, sizeof name, "SET%X.tmp", number);
        std::string path = JoinPath(machine, folder, name);
        if (!machine.Files().Exists(path)) {
            return path;
        }
    }
}

/// Adds a pair to what the session manager renames when the system starts. "!" lets the target be replaced.
DWORD RegisterRename(Machine& machine, const std::string& waiting, const std::string& target) {
    if (const DWORD code = machine.CheckAccess(kSessionManager, KEY_WRITE); code != ERROR_SUCCESS) {
        return code;
    }
    const RegistryValue* pending = machine.Registry().Find(kSessionManager, kPendingRenames);
    // The list is kept as it stands: an empty text in its middle means that a file is deleted.
    std::string data = pending != nullptr && pending->type == REG_MULTI_SZ ? pending->data : std::string();
    if (!data.empty()) {
        data.pop_back();
    }
    for (const std::string& text : {"\\??\\" + waiting, "!\\??\\" + target, std::string()}) {
        data.append(text).push_back('\0');
    }
    machine.Registry().Set(kSessionManager, kPendingRenames, REG_MULTI_SZ, data);
    return machine.TryCommit();
}

/// On the 9x family the start-up step reads the section [rename] of wininit.ini.
DWORD RegisterRename9x(const std::string& waiting, const std::string& target) {
    const bool isWritten =
        WritePrivateProfileStringA("rename", target.c_str(), waiting.c_str(), "wininit.ini") != FALSE;
    return isWritten ? static_cast<DWORD>(ERROR_SUCCESS) : lastError;
}

DWORD MarkRestart(Machine& machine) {
    if (machine.System().restartPending) {
        return ERROR_SUCCESS;
    }
    SystemDescription system = machine.System();
    system.restartPending = true;
    try {
        machine.SetSystem(system);
        return ERROR_SUCCESS;
    } catch (const MachineError&) {
        return kWriteFault;
    }
}

/// Leaves the file beside its target, to take its place when the system starts.
DWORD Delay(Machine& machine, const FileCopy& copy, std::string& waiting) {
    waiting = WaitingName(machine, copy.target);
    DWORD code = Overwrite(machine, {copy.source, waiting, 0});
    if (code != ERROR_SUCCESS) {
        return code;
    }
    code = machine.Is9x() ? RegisterRename9x(waiting, copy.target) : RegisterRename(machine, waiting, copy.target);
    if (code != ERROR_SUCCESS) {
        machine.Files().Delete(waiting);
        return code;
    }
    return MarkRestart(machine);
}

}  // namespace

DWORD PlaceFile(Machine& machine, const FileCopy& copy, const QueueCallback& callback, CopyOutcome& outcome,
                std::string& waiting) {
    outcome = CopyOutcome::Kept;
    DWORD code = CheckSource(machine.Files(), copy.source);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    const bool targetExists = machine.Files().Exists(copy.target);
    if (KeepsTarget(copy, targetExists, callback)) {
        return ERROR_SUCCESS;
    }
    if (targetExists && (copy.style & SP_COPY_FORCE_IN_USE) != 0) {
        code = Delay(machine, copy, waiting);
        outcome = CopyOutcome::Delayed;
    } else {
        code = Overwrite(machine, copy);
        outcome = CopyOutcome::Copied;
    }
    if (code == ERROR_SUCCESS && (copy.style & SP_COPY_DELETESOURCE) != 0) {
        // A source that can't be deleted stays; the file is in its place all the same.
        machine.Files().Delete(copy.source);
    }
    return code;
}

}  // namespace pikel::simulated
