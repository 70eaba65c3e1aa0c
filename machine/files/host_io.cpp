// The host's file calls, with Windows codes and times.
#include "machine/files/host_io.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace pikel::simulated {

namespace {

constexpr std::string_view kPendingPrefix = ".pikel-pending-";

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;

constexpr DWORD kErrorTooManyOpenFiles = 4;
constexpr DWORD kErrorNotSameDevice = 17;
constexpr DWORD kErrorGeneralFailure = 31;
constexpr DWORD kErrorIoDevice = 1117;

}  // namespace

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

DWORD AttributesOf(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) {
        return FILE_ATTRIBUTE_DIRECTORY;
    }
    const bool isReadOnly = (status.st_mode & S_IWUSR) == 0;
    return isReadOnly ? FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY : static_cast<DWORD>(FILE_ATTRIBUTE_ARCHIVE);
}

HostFile& HostFile::operator=(HostFile&& other) noexcept {
    if (this != &other) {
        HostFile old(std::exchange(m_descriptor, other.Release()));
    }
    return *this;
}

HostFile::~HostFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

HostFile HostFile::Open(const std::string& path, int flags, mode_t mode) {
    int descriptor = -1;
    do {
        descriptor = open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (descriptor < 0 && errno == EINTR);
    return HostFile(descriptor);
}

int HostFile::Release() {
    return std::exchange(m_descriptor, -1);
}

DWORD ReadAll(int descriptor, std::string* bytes) {
    struct stat status {};
    const bool sized = fstat(descriptor, &status) == 0 && status.st_size > 0;
    bytes->resize(sized ? static_cast<std::size_t>(status.st_size) : 0);
    std::size_t length = 0;
    for (;;) {
        if (length == bytes->size()) {
            bytes->resize(length + 0x1000);
        }
        const ssize_t count = read(descriptor, bytes->data() + length, bytes->size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            bytes->resize(length);
            return count < 0 ? CodeOfErrno(errno) : static_cast<DWORD>(ERROR_SUCCESS);
        }
        length += static_cast<std::size_t>(count);
    }
}

DWORD WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return CodeOfErrno(errno);
        }
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return ERROR_SUCCESS;
}

PendingFile::PendingFile(std::string_view folder) {
    static std::atomic<unsigned> next = 0;
    const std::string start = std::string(folder) + "/" + std::string(kPendingPrefix) + std::to_string(getpid()) + "-";
    do {
        m_path = start + std::to_string(next++);
        m_file = HostFile::Open(m_path, O_RDWR | O_CREAT | O_EXCL, 0644);
    } while (!m_file.IsOpen() && errno == EEXIST);
    if (!m_file.IsOpen()) {
        m_code = CodeOfErrno(errno);
        m_path.clear();
    }
}

PendingFile::~PendingFile() {
    if (!m_path.empty()) {
        unlink(m_path.c_str());
    }
}

DWORD PendingFile::Replace(const std::string& target) {
    if (rename(m_path.c_str(), target.c_str()) != 0) {
        return CodeOfErrno(errno);
    }
    m_path.clear();
    return ERROR_SUCCESS;
}

bool PendingFile::IsPendingName(std::string_view name) {
    return name.starts_with(kPendingPrefix);
}

}  // namespace pikel::simulated
