// The host's file calls, with Windows codes and times.
#include "machine/files/host_disk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

#include "machine/files/disk_codes.h"

namespace pikel::simulated {

namespace {

/// Begins the names of files in the making.
constexpr std::string_view kPendingPrefix = ".pikel-pending-";

constexpr mode_t kReadOnlyMode = 0444;
constexpr mode_t kWritableMode = 0644;
constexpr mode_t kFolderMode = 0755;

DWORD CodeOfErrno(int error) {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EISDIR:
        case EBUSY:
            return ERROR_ACCESS_DENIED;
        case EROFS:
            return ERROR_WRITE_PROTECT;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return ERROR_DISK_FULL;
        case EEXIST:
            return ERROR_ALREADY_EXISTS;
        case ENOTEMPTY:
            return ERROR_DIR_NOT_EMPTY;
        case EMFILE:
        case ENFILE:
            return kErrorTooManyOpenFiles;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case EXDEV:
            return kErrorNotSameDevice;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EIO:
            return kErrorIoDevice;
        default:
            return kErrorGeneralFailure;
    }
}

/// 0, or the code of the call that failed just now.
DWORD CodeOf(bool isDone) {
    return isDone ? static_cast<DWORD>(ERROR_SUCCESS) : CodeOfErrno(errno);
}

DiskEntry EntryOf(const struct stat& status) {
    DiskEntry entry;
    entry.isFolder = S_ISDIR(status.st_mode);
    entry.isReadOnly = !entry.isFolder && (status.st_mode & S_IWUSR) == 0;
    entry.size = entry.isFolder ? 0 : static_cast<std::uint64_t>(status.st_size);
    entry.written = FileTimeOf(status.st_mtim);
    return entry;
}

class HostFile : public DiskFile {
  public:
    explicit HostFile(int descriptor) : m_descriptor(descriptor) {}
    ~HostFile() override { close(m_descriptor); }

    DWORD Look(DiskEntry* entry) const override {
        struct stat status {};
        if (fstat(m_descriptor, &status) != 0) {
            return CodeOfErrno(errno);
        }
        *entry = EntryOf(status);
        return ERROR_SUCCESS;
    }
    DWORD Read(std::uint64_t at, char* buffer, std::size_t size, std::size_t* count) const override {
        *count = 0;
        while (*count < size) {
            const ssize_t some = pread(m_descriptor, buffer + *count, size - *count, static_cast<off_t>(at + *count));
            if (some < 0 && errno == EINTR) {
                continue;
            }
            if (some <= 0) {
                return CodeOf(some == 0);
            }
            *count += static_cast<std::size_t>(some);
        }
        return ERROR_SUCCESS;
    }
    DWORD Write(std::uint64_t at, std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t some = pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at));
            if (some < 0 && errno != EINTR) {
                return CodeOfErrno(errno);
            }
            const std::size_t count = some > 0 ? static_cast<std::size_t>(some) : 0;
            bytes.remove_prefix(count);
            at += count;
        }
        return ERROR_SUCCESS;
    }
    DWORD Resize(std::uint64_t size) override { return CodeOf(ftruncate(m_descriptor, static_cast<off_t>(size)) == 0); }
    DWORD Mark(const FileMarks& marks) override {
        const timespec time = HostTimeOf(marks.written);
        const timespec times[2] = {time, time};
        return CodeOf(futimens(m_descriptor, times) == 0 &&
                      (!marks.isReadOnly || fchmod(m_descriptor, kReadOnlyMode) == 0));
    }
    DWORD Sync() override { return CodeOf(fdatasync(m_descriptor) == 0); }

  private:
    int m_descriptor;
};

/// An open that waits for no lock and is not handed to other programs. Null with errno set.
std::unique_ptr<HostFile> OpenHost(const std::string& path, int flags, mode_t mode = 0) {
    int descriptor = -1;
    do {
        descriptor = open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor >= 0 ? std::make_unique<HostFile>(descriptor) : nullptr;
}

/// A file that is being made in a folder and takes the place of another one, or none, when it is whole. Without Replace
/// it goes again.
class PendingFile {
  public:
    explicit PendingFile(std::string_view folder) {
        static std::atomic<unsigned> next = 0;
        const std::string start =
            std::string(folder) + "/" + std::string(kPendingPrefix) + std::to_string(getpid()) + "-";
        do {
            m_path = start + std::to_string(next++);
            m_file = OpenHost(m_path, O_RDWR | O_CREAT | O_EXCL, kWritableMode);
        } while (m_file == nullptr && errno == EEXIST);
        if (m_file == nullptr) {
            m_code = CodeOfErrno(errno);
            m_path.clear();
        }
    }
    ~PendingFile() {
        if (!m_path.empty()) {
            unlink(m_path.c_str());
        }
    }
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    /// Code of the creation.
    DWORD Code() const { return m_code; }
    HostFile& File() { return *m_file; }
    DWORD Replace(const std::string& target) {
        if (rename(m_path.c_str(), target.c_str()) != 0) {
            return CodeOfErrno(errno);
        }
        m_path.clear();
        return ERROR_SUCCESS;
    }

  private:
    std::string m_path;
    std::unique_ptr<HostFile> m_file;
    DWORD m_code = ERROR_SUCCESS;
};

int FlagsOf(DiskOpening how) {
    switch (how) {
        case DiskOpening::Read:
            return O_RDONLY;
        case DiskOpening::Write:
            return O_RDWR;
        case DiskOpening::Truncate:
            return O_RDWR | O_TRUNC;
        default:
            return O_RDWR | O_CREAT | O_EXCL;
    }
}

}  // namespace

DWORD HostDisk::Look(const std::string& path, DiskEntry* entry) const {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return CodeOfErrno(errno);
    }
    if (entry != nullptr) {
        *entry = EntryOf(status);
    }
    return ERROR_SUCCESS;
}

std::vector<std::string> HostDisk::Names(const std::string& folder) const {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    while (const dirent* entry = directory != nullptr ? readdir(directory.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && !name.starts_with(kPendingPrefix)) {
            names.emplace_back(name);
        }
    }
    return names;
}

DWORD HostDisk::MakeFolder(const std::string& path) {
    return CodeOf(mkdir(path.c_str(), kFolderMode) == 0);
}

DWORD HostDisk::RemoveFolder(const std::string& path) {
    return CodeOf(rmdir(path.c_str()) == 0);
}

DWORD HostDisk::RemoveFile(const std::string& path) {
    return CodeOf(unlink(path.c_str()) == 0);
}

DWORD HostDisk::Rename(const std::string& from, const std::string& to) {
    return CodeOf(rename(from.c_str(), to.c_str()) == 0);
}

DWORD HostDisk::Replace(const std::string& path, std::string_view bytes, const FileMarks* marks) {
    PendingFile pending(path.substr(0, path.rfind('/')));
    DWORD code = pending.Code();
    if (code == ERROR_SUCCESS) {
        code = pending.File().Write(0, bytes);
    }
    if (code == ERROR_SUCCESS && marks != nullptr) {
        code = pending.File().Mark(*marks);
    }
    return code == ERROR_SUCCESS ? pending.Replace(path) : code;
}

DWORD HostDisk::Open(const std::string& path, DiskOpening how, bool readOnly, std::unique_ptr<DiskFile>* file) {
    std::unique_ptr<HostFile> opened = OpenHost(path, FlagsOf(how), readOnly ? kReadOnlyMode : kWritableMode);
    if (opened == nullptr) {
        return CodeOfErrno(errno);
    }
    *file = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD HostDisk::SetReadOnly(const std::string& path, bool readOnly) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return CodeOfErrno(errno);
    }
    const mode_t bits = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = readOnly ? status.st_mode & ~bits : status.st_mode | S_IWUSR;
    return CodeOf(mode == status.st_mode || chmod(path.c_str(), mode & 07777) == 0);
}

DWORD HostDisk::SetWritten(const std::string& path, FILETIME written) {
    const timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, HostTimeOf(written)};
    return CodeOf(utimensat(AT_FDCWD, path.c_str(), times, 0) == 0);
}

}  // namespace pikel::simulated
