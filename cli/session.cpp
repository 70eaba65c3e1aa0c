#include "session.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "failure.h"
#include "platform/platform.h"

#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>

#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/system/systems.h"
#endif

namespace pikel::cli {

namespace {

#ifndef _WIN32
bool HasDriveLetter(const std::string& path) {
    return path.size() >= 2 && path[1] == ':';
}
#endif

/// dwArchitecture of a system by its version and processor.
DWORD ArchitectureOf(DWORD platform, DWORD major, DWORD processorType) {
    if (platform == VER_PLATFORM_WIN32_WINDOWS) {
        return PIKEL_ARCHITECTURE_WINDOWS_9X;
    }
    if (major < 5) {
        return PIKEL_ARCHITECTURE_NT4_X86;
    }
    return processorType == 8664   ? PIKEL_ARCHITECTURE_X64
           : processorType == 2200 ? PIKEL_ARCHITECTURE_IA64
                                   : PIKEL_ARCHITECTURE_NT_X86;
}

}  // namespace

Session::~Session() {
    m_library.reset();
#ifndef _WIN32
    if (m_machine) {
        simulated::Use(nullptr);
        m_machine.reset();
    }
#endif
    if (!m_scratchFolder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(m_scratchFolder, ignored);
    }
}

void Session::Check(const char* operation, DWORD status, DWORD prefix) {
    if (status != 0) {
        throw OperationFailed(operation, status, prefix);
    }
}

const PI_KEL_Interface& Session::Table() {
    if (!m_library) {
        PrepareEnvironment();
        m_library = std::make_unique<Library>();
    }
    return m_library->Table();
}

#ifdef _WIN32

void Session::PrepareEnvironment() const {
    if (!traceFile.empty()) {
        throw ToolError("--trace works on a simulated machine alone");
    }
}

std::string Session::PathFor(const std::string& file) {
    char path[MAX_PATH];
    DWORD length = GetFullPathNameA(file.c_str(), sizeof path, path, nullptr);
    if (length == 0 || length >= sizeof path) {
        throw ToolError(file + ": not a usable path");
    }
    return path;
}

std::string Session::PathInFolderFor(const std::string& file) {
    return PathFor(file);
}

void Session::LookAgain() {}

std::string Session::FolderFor(const std::string& folder) {
    std::string path = PathFor(folder);
    while (path.size() > 3 && path.back() == '\\') {
        path.pop_back();
    }
    return path;
}

void Session::UseSomeMachine() {
    RequireMachine();
}

void Session::RequireMachine() {
    if (!machineFolder.empty()) {
        throw ToolError("--machine: simulated machines exist in the native build alone");
    }
}

Target Session::TargetSystem() {
    if (!targetSystem.empty()) {
        throw ToolError("--for: systems by name exist in the native build alone");
    }
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    Platform().GetVersionExA(&version);
    SYSTEM_INFO system{};
    Platform().GetSystemInfo(&system);
    return {ArchitectureOf(version.dwPlatformId, version.dwMajorVersion, system.dwProcessorType),
            version.dwMajorVersion, version.dwMinorVersion};
}

#else

void Session::PrepareEnvironment() const {
    if (!machineFolder.empty()) {
        setenv("PIKEL_MACHINE", machineFolder.c_str(), 1);
    }
    if (!m_mediumFolder.empty()) {
        setenv("PIKEL_MEDIUM", m_mediumFolder.c_str(), 1);
    }
    if (!traceFile.empty()) {
        setenv("PIKEL_TRACE", traceFile.c_str(), 1);
    }
}

std::string Session::PathFor(const std::string& file) {
    if (HasDriveLetter(file)) {
        return file;
    }
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(file, error);
    if (error || !std::filesystem::is_regular_file(path, error)) {
        throw ToolError(file + ": no such file; a path of the machine begins with its drive, as in C:\\Temp\\a.inf");
    }
    m_mediumFolder = path.parent_path().string();
    return "D:\\" + path.filename().string();
}

std::string Session::PathInFolderFor(const std::string& file) {
    const std::string path = PathFor(file);
    const std::filesystem::path folder = m_mediumFolder;
    if (HasDriveLetter(file) || !folder.has_filename()) {
        return path;
    }
    m_mediumFolder = folder.parent_path().string();
    return "D:\\" + folder.filename().string() + path.substr(2);
}

void Session::LookAgain() {
    simulated::Use(nullptr);
    m_machine.reset();
    RequireMachine();
}

std::string Session::FolderFor(const std::string& folder) {
    if (HasDriveLetter(folder)) {
        return folder;
    }
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(folder, error);
    if (error || !std::filesystem::is_directory(path, error)) {
        throw ToolError(folder + ": no such folder; a path of the machine begins with its drive, as in C:\\Temp");
    }
    m_mediumFolder = path.string();
    return "D:";
}

void Session::UseSomeMachine() {
    if (machineFolder.empty() && std::getenv("PIKEL_MACHINE") == nullptr) {
        std::string pattern = (std::filesystem::temp_directory_path() / "pikel-machine-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw ToolError("can't make a folder in " + std::filesystem::temp_directory_path().string());
        }
        m_scratchFolder = pattern;
        machineFolder = m_scratchFolder + "/machine";
        const simulated::SystemDescription* system = simulated::FindSystem(targetSystem.empty() ? "xp" : targetSystem);
        if (system == nullptr) {
            throw ToolError("--for " + targetSystem + ": no such system; `pikel machine systems` lists them");
        }
        simulated::Machine::Create(machineFolder, *system);
    }
    RequireMachine();
}

void Session::RequireMachine() {
    const char* named = std::getenv("PIKEL_MACHINE");
    if (machineFolder.empty() && named != nullptr) {
        machineFolder = named;
    }
    if (machineFolder.empty()) {
        throw ToolError(
            "no machine is named; make one with `pikel machine new DIR --system xp` and name it with --machine DIR or "
            "in PIKEL_MACHINE");
    }
    try {
        if (!m_machine) {
            std::shared_ptr<simulated::Machine> machine = simulated::Machine::Open(machineFolder);
            simulated::Use(machine.get());
            m_machine = std::move(machine);
        }
        if (!m_mediumFolder.empty()) {
            simulated::Current().Files().InsertMedium(m_mediumFolder);
        }
    } catch (const simulated::MachineError& problem) {
        throw ToolError(problem.what());
    }
}

Target Session::TargetSystem() {
    simulated::SystemDescription system = *simulated::FindSystem("xp");
    if (!targetSystem.empty()) {
        const simulated::SystemDescription* named = simulated::FindSystem(targetSystem);
        if (named == nullptr) {
            throw ToolError("--for " + targetSystem + ": no such system; `pikel machine systems` lists them");
        }
        system = *named;
    } else if (!machineFolder.empty() || std::getenv("PIKEL_MACHINE") != nullptr) {
        RequireMachine();
        system = simulated::Current().System();
    }
    return {ArchitectureOf(system.platform, system.major, system.processorType), system.major, system.minor};
}

#endif

void Session::Print(const nlohmann::json& json, const std::function<void()>& asText) const {
    if (asJson) {
        std::printf("%s\n", json.dump(2).c_str());
    } else {
        asText();
    }
}

void Session::Progress(const std::string& text) const {
    if (!asJson && isatty(fileno(stderr)) != 0) {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
}

namespace {

/// Text of one code page in another one.
std::string Recode(const std::string& text, UINT from, UINT to) {
    const PlatformTable& platform = Platform();
    const int size = static_cast<int>(text.size());
    const int length = size == 0 ? 0 : platform.MultiByteToWideChar(from, 0, text.data(), size, nullptr, 0);
    std::basic_string<WCHAR> wide(length > 0 ? static_cast<std::size_t>(length) : 0, 0);
    if (wide.empty()) {
        return "";
    }
    platform.MultiByteToWideChar(from, 0, text.data(), size, wide.data(), length);
    const int bytes = platform.WideCharToMultiByte(to, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(bytes > 0 ? static_cast<std::size_t>(bytes) : 0, '\0');
    platform.WideCharToMultiByte(to, 0, wide.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

}  // namespace

std::string Utf8(const char* text) {
    return Recode(text, CP_ACP, CP_UTF8);
}

std::string FromUtf8(const std::string& text) {
    return Recode(text, CP_UTF8, CP_ACP);
}

nlohmann::json JsonText(const char* text) {
    return text == nullptr ? nlohmann::json(nullptr) : nlohmann::json(Utf8(text));
}

}  // namespace pikel::cli
