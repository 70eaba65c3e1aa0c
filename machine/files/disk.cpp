// What both kinds of disk have in common.
#include "machine/files/disk.h"

#include "machine/files/disk_codes.h"

namespace pikel::simulated {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;

DWORD CopyFileBetween(Disk& source, const std::string& from, const DiskEntry& entry, Disk& target,
                      const std::string& to) {
    std::string bytes;
    if (const DWORD code = source.ReadWhole(from, &bytes); code != ERROR_SUCCESS) {
        return code;
    }
    const FileMarks marks = {entry.written, entry.isReadOnly};
    return target.Replace(to, bytes, &marks);
}

}  // namespace

DWORD DiskEntry::Attributes() const {
    if (isFolder) {
        return FILE_ATTRIBUTE_DIRECTORY;
    }
    return isReadOnly ? FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY : static_cast<DWORD>(FILE_ATTRIBUTE_ARCHIVE);
}

DWORD Disk::ReadWhole(const std::string& path, std::string* bytes) {
    std::unique_ptr<DiskFile> file;
    DiskEntry entry;
    DWORD code = Open(path, DiskOpening::Read, false, &file);
    if (code == ERROR_SUCCESS) {
        code = file->Look(&entry);
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    // One byte more than there should be, so that the end is met at once; a file may grow meanwhile.
    bytes->resize(static_cast<std::size_t>(entry.size) + 1);
    std::size_t length = 0;
    for (;;) {
        std::size_t count = 0;
        code = file->Read(length, bytes->data() + length, bytes->size() - length, &count);
        length += count;
        if (code != ERROR_SUCCESS || length < bytes->size()) {
            bytes->resize(length);
            return code;
        }
        bytes->resize(length + 0x1000);
    }
}

DWORD CopyTree(Disk& source, const std::string& from, Disk& target, const std::string& to) {
    DWORD code = target.MakeFolder(to);
    if (code == ERROR_ALREADY_EXISTS) {
        code = ERROR_SUCCESS;
    }
    for (const std::string& name : source.Names(from)) {
        const std::string below = "/" + name;
        DiskEntry entry;
        if (code == ERROR_SUCCESS) {
            code = source.Look(from + below, &entry);
        }
        if (code != ERROR_SUCCESS) {
            break;
        }
        code = entry.isFolder ? CopyTree(source, from + below, target, to + below)
                              : CopyFileBetween(source, from + below, entry, target, to + below);
    }
    return code;
}

FILETIME FileTimeOf(const timespec& time) {
    const auto ticks =
        static_cast<std::uint64_t>((time.tv_sec + kSecondsFrom1601To1970) * kTicksPerSecond + time.tv_nsec / 100);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

timespec HostTimeOf(const FILETIME& time) {
    const auto ticks =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
    timespec host{};
    host.tv_sec = ticks / kTicksPerSecond - kSecondsFrom1601To1970;
    host.tv_nsec = ticks % kTicksPerSecond * 100;
    return host;
}

std::string_view ReasonOf(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return "it isn't there";
        case kErrorTooManyOpenFiles:
            return "too many files are open";
        case ERROR_ACCESS_DENIED:
            return "access is denied";
        case ERROR_NOT_ENOUGH_MEMORY:
            return "the memory is used up";
        case ERROR_WRITE_PROTECT:
            return "the disk can't be written to";
        case ERROR_DISK_FULL:
            return "the disk is full";
        case ERROR_DIR_NOT_EMPTY:
            return "the folder isn't empty";
        case ERROR_ALREADY_EXISTS:
            return "something is there already";
        case ERROR_FILENAME_EXCED_RANGE:
            return "the name is too long";
        default:
            return "the disk failed";
    }
}

}  // namespace pikel::simulated
