// The folder of a machine on the host.
#include "machine/system/machine_folder.h"

#include <system_error>
#include <utility>

#include "machine/files/host_disk.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

namespace {

void Require(DWORD code, const char* doing, const std::string& what) {
    if (code != ERROR_SUCCESS) {
        throw MachineError(std::string("can't ") + doing + " " + what + ": " + std::string(ReasonOf(code)));
    }
}

/// The folder of a drive has a letter for its name; others are no part of the machine.
bool IsDrive(std::string_view name) {
    return name.size() == 1 && name[0] >= 'A' && name[0] <= 'Z';
}

}  // namespace

NewFolder::NewFolder(fs::path folder) : m_folder(std::move(folder)) {
    std::error_code error;
    const fs::file_status status = fs::status(m_folder, error);
    if (status.type() == fs::file_type::not_found) {
        fs::create_directories(m_folder, error);
        if (error) {
            throw MachineError("can't make the folder " + m_folder.string() + ": " + error.message());
        }
        m_isMade = true;
        return;
    }
    const bool isEmpty = status.type() == fs::file_type::directory && fs::is_empty(m_folder, error);
    if (error) {
        throw MachineError("can't use " + m_folder.string() + ": " + error.message());
    }
    if (!isEmpty) {
        throw MachineError(m_folder.string() + " is there already and is no empty folder; name a new one");
    }
}

NewFolder::~NewFolder() {
    std::error_code ignored;
    if (m_isKept) {
        return;
    }
    if (m_isMade) {
        fs::remove_all(m_folder, ignored);
        return;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder, ignored)) {
        fs::remove_all(entry.path(), ignored);
    }
}

std::string ReadMachineFile(const fs::path& folder, const char* name) {
    const fs::path file = folder / name;
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        throw MachineError(file.string() + " is missing: " + folder.string() +
                           " is no machine; make one with 'pikel machine new'");
    }
    std::string bytes;
    Require(HostDisk().ReadWhole(file.string(), &bytes), "read", file.string());
    return bytes;
}

void WriteMachineFile(const fs::path& folder, const char* name, std::string_view bytes) {
    const std::string file = (folder / name).string();
    Require(HostDisk().Replace(file, bytes, nullptr), "write", file);
}

void RequireDrive(const fs::path& folder, const SystemDescription& system) {
    fs::path drive = folder / std::string(1, static_cast<char>(system.windowsDirectory[0] & ~0x20));
    std::error_code error;
    if (!fs::is_directory(drive, error)) {
        throw MachineError(drive.string() + " is missing: it is the drive of the windows-directory in " +
                           (folder / kIniName).string());
    }
}

void CopyDrives(Disk& source, const std::string& from, Disk& target, const std::string& to) {
    for (const std::string& name : source.Names(from)) {
        if (IsDrive(name)) {
            const std::string drive = "/" + name;
            Require(CopyTree(source, from + drive, target, to + drive), "copy", from + drive);
        }
    }
}

}  // namespace pikel::simulated
