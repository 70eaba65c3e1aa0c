// Setup API: the INFs that the system has installed, where it looks for one, and how it takes up a new one.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "machine/system/machine.h"
#include "machine/inf/open_inf.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kNoAssociatedClass = 0xE0000200;
constexpr DWORD kInfFolder = 17;
constexpr char kClasses[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Class\\";
constexpr char kCurrentVersion[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

// How SetupGetInfInformationA is told which INF is meant.
constexpr DWORD kIsHandle = 1;
constexpr DWORD kIsPath = 2;
constexpr DWORD kReverseSearch = 4;

std::string InfFolder(Machine& machine) {
    return *SystemDirectory(machine, kInfFolder);
}

/// Hands a text or a list out; for a null buffer its size alone.
BOOL HandOut(std::string_view bytes, PSTR buffer, DWORD size, PDWORD required) {
    if (required != nullptr) {
        *required = static_cast<DWORD>(bytes.size());
    }
    if (buffer == nullptr) {
        return size == 0 ? TRUE : Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    if (size < bytes.size()) {
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    bytes.copy(buffer, bytes.size());
    return TRUE;
}

std::string_view WithNul(const std::string& text) {
    return {text.c_str(), text.size() + 1};
}

/// An INF opened for the length of one call, as a program opens it.
class InfLook {
  public:
    explicit InfLook(const char* name) : m_handle(SetupOpenInfFileA(name, nullptr, INF_STYLE_WIN4, nullptr)) {}
    ~InfLook() {
        if (IsOpen()) {
            SetupCloseInfFile(m_handle);
        }
    }
    InfLook(const InfLook&) = delete;
    InfLook& operator=(const InfLook&) = delete;

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    OpenInf& operator*() const { return *FindInf(Current(), m_handle); }

  private:
    HINF m_handle;
};

/// "{4D36E979-E325-11CE-BFC1-08002BE10318}"; all zeros for a text that isn't of that form.
GUID ReadGuid(const std::string& text) {
    GUID guid{};
    unsigned parts[11] = {};
    int end = 0;
    if (text.size() == 38 &&
        std::sscanf(text.c_str(), "{%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x}%n", &parts[0], &parts[1], &parts[2],
                    &parts[3], &parts[4], &parts[5], &parts[6], &parts[7], &parts[8], &parts[9], &parts[10],
                    &end) == 11 &&
        end == 38) {
        guid.Data1 = parts[0];
        guid.Data2 = static_cast<WORD>(parts[1]);
        guid.Data3 = static_cast<WORD>(parts[2]);
        std::transform(parts + 3, parts + 11, guid.Data4, [](unsigned part) { return static_cast<BYTE>(part); });
    }
    return guid;
}

/// Class name of an INF: its own, or the one that the system has for the identifier.
std::string ClassOf(OpenInf& inf, const std::string& guid) {
    std::string name = inf.file->Value("Version", "Class").value_or("");
    if (name.empty() && !guid.empty()) {
        name = inf.machine.Registry().Text(kClasses + guid, "Class");
    }
    return name;
}

// ---- where an INF is looked for -------------------------------------------------------------------------------------

/// The system's INF folder, then those of DevicePath.
std::vector<std::string> SearchPath(Machine& machine) {
    std::vector<std::string> folders = {InfFolder(machine)};
    const std::string path = machine.Registry().Text(kCurrentVersion, "DevicePath");
    constexpr std::string_view kRoot = "%SystemRoot%";
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find(';', start), path.size());
        std::string folder = path.substr(start, end - start);
        if (EqualNoCase(std::string_view(folder).substr(0, kRoot.size()), kRoot)) {
            folder = machine.System().windowsDirectory + folder.substr(kRoot.size());
        }
        if (!folder.empty()) {
            folders.push_back(std::move(folder));
        }
        start = end + 1;
    }
    return folders;
}

bool IsFile(Machine& machine, const std::string& path) {
    return machine.Files().Exists(path) && !machine.Files().IsDirectory(path);
}

/// Full path of an INF; nothing when it isn't there.
std::optional<std::string> Locate(Machine& machine, std::string_view name, DWORD search) {
    if (search == kIsPath || name.find_first_of("\\/:") != std::string_view::npos) {
        std::string path(name);
        return IsFile(machine, path) ? std::optional(path) : std::nullopt;
    }
    std::vector<std::string> folders = SearchPath(machine);
    if (search == kReverseSearch) {
        std::reverse(folders.begin(), folders.end());
    }
    for (const std::string& folder : folders) {
        std::string path = JoinPath(machine, folder, name);
        if (IsFile(machine, path)) {
            return path;
        }
    }
    return std::nullopt;
}

/// What SetupGetInfInformationA hands out for one INF: the head, and the INF's path where Windows keeps its own form of
/// [Version].
std::string InformationBlock(const std::string& path) {
    const DWORD head[] = {INF_STYLE_WIN4, 1};
    static_assert(sizeof head == offsetof(SP_INF_INFORMATION, VersionData));
    std::string block(reinterpret_cast<const char*>(head), sizeof head);
    block += WithNul(path);
    return block;
}

// ---- taking up an INF -----------------------------------------------------------------------------------------------

/// "oem12.inf", in any case.
bool IsOemName(std::string_view name) {
    return name.size() > 7 && EqualNoCase(name.substr(0, 3), "oem") &&
           EqualNoCase(name.substr(name.size() - 4), ".inf") &&
           std::ranges::all_of(name.substr(3, name.size() - 7), [](char ch) { return ch >= '0' && ch <= '9'; });
}

/// Where an INF is, or goes: the path, and whether it is there.
struct Destination {
    std::string path;
    bool isThere = false;
};

/// The file of the INF folder that an INF is or has the same content as, else the lowest oem number that is free.
Destination DestinationOf(Machine& machine, const std::string& source, const std::string& bytes) {
    const std::string folder = InfFolder(machine);
    const UINT codePage = machine.System().codePage;
    if (CompareNoCase(codePage, FolderOf(source, codePage), folder) == 0) {
        return {source, true};
    }
    std::set<std::string> taken;
    for (const FileEntry& entry : machine.Files().List(folder, "oem*.inf")) {
        taken.insert(LowerAscii(entry.name));
        if (IsOemName(entry.name) && entry.size == bytes.size()) {
            std::string path = JoinPath(machine, folder, entry.name);
            if (machine.Files().Read(path) == bytes) {
                return {std::move(path), true};
            }
        }
    }
    int number = 0;
    while (taken.contains("oem" + std::to_string(number) + ".inf")) {
        ++number;
    }
    return {JoinPath(machine, folder, "oem" + std::to_string(number) + ".inf"), false};
}

/// Whether the caller's rights and the INF itself allow that it is taken up.
/// @param path [out]  full path of the INF
DWORD CheckSource(Machine& machine, PCSTR source, std::string& path) {
    if (source == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const InfLook inf(source);
    if (!inf.IsOpen()) {
        return lastError;
    }
    path = (*inf).path;
    return machine.Is9x() ? DWORD{ERROR_SUCCESS} : RequireAdministrator(machine);
}

DWORD TakeUp(Machine& machine, const std::string& source, const Destination& destination, DWORD style) {
    DWORD code = ERROR_SUCCESS;
    if (destination.isThere) {
        code = (style & SP_COPY_NOOVERWRITE) != 0 ? ERROR_FILE_EXISTS : ERROR_SUCCESS;
    } else {
        code = (style & SP_COPY_REPLACEONLY) != 0 ? static_cast<DWORD>(ERROR_FILE_NOT_FOUND)
                                                  : machine.Files().Copy(source, destination.path, true);
    }
    const UINT codePage = machine.System().codePage;
    if (code == ERROR_SUCCESS && (style & SP_COPY_DELETESOURCE) != 0 &&
        CompareNoCase(codePage, source, destination.path) != 0) {
        machine.Files().Delete(source);  // one that stays is no failure
    }
    return code;
}

}  // namespace

BOOL WINAPI SetupGetInfFileListA(PCSTR DirectoryPath, DWORD InfStyle, PSTR ReturnBuffer, DWORD ReturnBufferSize,
                                 PDWORD RequiredSize) {
    Machine& machine = Current();
    const std::string folder = DirectoryPath != nullptr ? DirectoryPath : InfFolder(machine);
    if (machine.Files().Exists(folder) && !machine.Files().IsDirectory(folder)) {
        return Fail(ERROR_DIRECTORY, FALSE);
    }
    // As when it opens them, the machine takes every INF for one of style 2. A folder that isn't there holds none.
    std::vector<std::string> names;
    if ((InfStyle & INF_STYLE_WIN4) != 0) {
        for (const FileEntry& entry : machine.Files().List(folder, "*.inf")) {
            if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                names.push_back(entry.name);
            }
        }
    }
    return HandOut(JoinMultiString(names), ReturnBuffer, ReturnBufferSize, RequiredSize);
}

BOOL WINAPI SetupDiGetINFClassA(PCSTR InfName, LPGUID ClassGuid, PSTR ClassName, DWORD ClassNameSize,
                                PDWORD RequiredSize) {
    if (InfName == nullptr || ClassGuid == nullptr || ClassName == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    const InfLook inf(InfName);
    if (!inf.IsOpen()) {
        return FALSE;
    }
    const std::string guid = (*inf).file->Value("Version", "ClassGUID").value_or("");
    const std::string name = ClassOf(*inf, guid);
    if (name.empty()) {
        return Fail(kNoAssociatedClass, FALSE);
    }
    *ClassGuid = ReadGuid(guid);
    return HandOut(WithNul(name), ClassName, ClassNameSize, RequiredSize);
}

BOOL WINAPI SetupGetInfInformationA(LPCVOID InfSpec, DWORD SearchControl, PSP_INF_INFORMATION ReturnBuffer,
                                    DWORD ReturnBufferSize, PDWORD RequiredSize) {
    Machine& machine = Current();
    if (InfSpec == nullptr || SearchControl < kIsHandle || SearchControl > kReverseSearch) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    std::optional<std::string> path;
    if (SearchControl == kIsHandle) {
        const OpenInf* inf = FindInf(machine, const_cast<HINF>(InfSpec));
        if (inf == nullptr) {
            return Fail(ERROR_INVALID_HANDLE, FALSE);
        }
        path = inf->path;
    } else {
        path = Locate(machine, static_cast<const char*>(InfSpec), SearchControl);
    }
    if (!path.has_value()) {
        return Fail(ERROR_FILE_NOT_FOUND, FALSE);
    }
    return HandOut(InformationBlock(*path), reinterpret_cast<PSTR>(ReturnBuffer), ReturnBufferSize, RequiredSize);
}

BOOL WINAPI SetupQueryInfFileInformationA(PSP_INF_INFORMATION InfInformation, UINT InfIndex, PSTR ReturnBuffer,
                                          DWORD ReturnBufferSize, PDWORD RequiredSize) {
    if (InfInformation == nullptr || InfIndex >= InfInformation->InfCount) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    const std::string path = reinterpret_cast<const char*>(InfInformation) + offsetof(SP_INF_INFORMATION, VersionData);
    return HandOut(WithNul(path), ReturnBuffer, ReturnBufferSize, RequiredSize);
}

BOOL WINAPI SetupCopyOEMInfA(PCSTR SourceInfFileName, PCSTR, DWORD, DWORD CopyStyle, PSTR DestinationInfFileName,
                             DWORD DestinationInfFileNameSize, PDWORD RequiredSize,
                             PSTR* DestinationInfFileNameComponent) {
    Machine& machine = Current();
    std::string source;
    DWORD code = CheckSource(machine, SourceInfFileName, source);
    if (code != ERROR_SUCCESS) {
        return Fail(code, FALSE);
    }
    const std::optional<std::string> bytes = machine.Files().Read(source);
    if (!bytes.has_value()) {
        return Fail(ERROR_FILE_NOT_FOUND, FALSE);
    }
    const Destination destination = DestinationOf(machine, source, *bytes);
    // The place is told first: nothing is copied for a caller who can't take its name.
    if (!HandOut(WithNul(destination.path), DestinationInfFileName, DestinationInfFileNameSize, RequiredSize)) {
        return FALSE;
    }
    code = TakeUp(machine, source, destination, CopyStyle);
    if (DestinationInfFileNameComponent != nullptr && DestinationInfFileName != nullptr) {
        *DestinationInfFileNameComponent = DestinationInfFileName + destination.path.rfind('\\') + 1;
    }
    return Outcome(code);
}

}  // namespace pikel::simulated
