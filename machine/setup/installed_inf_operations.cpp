// Setup API: the INFs that the system has installed.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/operations.h"
#include "machine/security/rights.h"
#include "machine/setup/installed_infs.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kNoAssociatedClass = 0xE0000200;

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

/// What SetupGetInfInformationA hands out for one INF: the head, and the INF's path where Windows keeps its own form of
/// [Version].
std::string InformationBlock(const std::string& path) {
    const DWORD head[] = {INF_STYLE_WIN4, 1};
    static_assert(sizeof head == offsetof(SP_INF_INFORMATION, VersionData));
    std::string block(reinterpret_cast<const char*>(head), sizeof head);
    block += WithNul(path);
    return block;
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
    const std::string name = ClassOfInf(*inf, guid);
    if (name.empty()) {
        return Fail(kNoAssociatedClass, FALSE);
    }
    *ClassGuid = GuidOf(guid);
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
        path = LocateInf(machine, static_cast<const char*>(InfSpec), SearchControl);
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
    const InfDestination destination = FindInfDestination(machine, source, *bytes);
    // The place is told first: nothing is copied for a caller who can't take its name.
    if (!HandOut(WithNul(destination.path), DestinationInfFileName, DestinationInfFileNameSize, RequiredSize)) {
        return FALSE;
    }
    code = TakeUpInf(machine, source, destination, CopyStyle);
    if (DestinationInfFileNameComponent != nullptr && DestinationInfFileName != nullptr) {
        *DestinationInfFileNameComponent = DestinationInfFileName + destination.path.rfind('\\') + 1;
    }
    return Outcome(code);
}

}  // namespace pikel::simulated
