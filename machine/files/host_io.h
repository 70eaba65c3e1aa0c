// The host's file calls, with Windows codes and times.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

/// The Windows code that says what errno says.
DWORD CodeOfErrno(int error);

FILETIME FileTimeOf(const timespec& time);
timespec HostTimeOf(const FILETIME& time);
/// 16 for a directory, 32 for a file, 33 for one that its owner may not write.
DWORD AttributesOf(const struct stat& status);

/// Descriptor of an open host file.
class HostFile {
  public:
    HostFile() = default;
    explicit HostFile(int descriptor) : m_descriptor(descriptor) {}
    HostFile(HostFile&& other) noexcept : m_descriptor(other.Release()) {}
    HostFile& operator=(HostFile&& other) noexcept;
    ~HostFile();

    /// An open that waits for no lock and is not handed to other programs. Tells success by IsOpen; else errno says
    /// why.
    static HostFile Open(const std::string& path, int flags, mode_t mode = 0);

    bool IsOpen() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    int Release();

  private:
    int m_descriptor = -1;
};

/// Reads a file to its end. @return a code
DWORD ReadAll(int descriptor, std::string* bytes);
/// Writes at the file's position. @return a code
DWORD WriteAll(int descriptor, std::string_view bytes);

/// A file that is being made in a folder and takes the place of another one, or none, when it is whole. Until then it
/// bears a name that the machine doesn't see; without Replace it goes again.
class PendingFile {
  public:
    /// @param folder  host folder that exists
    explicit PendingFile(std::string_view folder);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    /// Code of the creation.
    DWORD Code() const { return m_code; }
    int Descriptor() const { return m_file.Get(); }
    /// Puts the file at a path of the same folder. @return a code
    DWORD Replace(const std::string& target);

    /// True for the names that such files bear.
    static bool IsPendingName(std::string_view name);

  private:
    std::string m_path;
    HostFile m_file;
    DWORD m_code = 0;
};

}  // namespace pikel::simulated
