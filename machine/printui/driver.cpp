// The part of PRINTUI.DLL that installs and removes drivers.
#include "machine/printui/driver.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <set>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/colour/colour.h"
#include "machine/files/files.h"
#include "machine/files/path.h"
#include "machine/operations.h"
#include "machine/printui/strings.h"
#include "machine/setup/file_queue.h"
#include "machine/setup/install_section.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kDriverFolder = 66000;
constexpr DWORD kInfStyle = 2;     // INF_STYLE_WIN4
constexpr DWORD kMediaIsPath = 1;  // SPOST_PATH
constexpr DWORD kWrongStyle = 0xE0000100;

// ---- what a driver is for -------------------------------------------------------------------------------------------

struct NamedVersion {
    std::string_view text;
    DWORD version;
};
constexpr NamedVersion kVersionTexts[] = {
    {"Type 3 - Kernel Mode", 3},
    {"Type 2 - Kernel Mode", 2},
    {"Windows 95, 98 and Me", 0},
};

struct NamedProcessor {
    std::string_view word;
    const char* environment;
};
constexpr NamedProcessor kProcessors[] = {
    {"x86", "Windows NT x86"},   {"Intel", "Windows NT x86"}, {"x64", "Windows x64"},
    {"Itanium", "Windows IA64"}, {"IA64", "Windows IA64"},
};

std::optional<DWORD> VersionOfNumber(std::string_view text) {
    DWORD number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<DWORD> VersionOfText(const Machine& machine, std::string_view text) {
    if (machine.Generation() == Generation::Windows2000) {
        for (const auto& [id, version] : {std::pair<UINT, DWORD>(16050, 0), {16055, 2}, {16056, 3}}) {
            if (EqualNoCase(PrintUIString(machine, id), text)) {
                return version;
            }
        }
        return std::nullopt;
    }
    const auto* found = std::ranges::find_if(
        kVersionTexts, [text](const NamedVersion& named) { return EqualNoCase(named.text, text); });
    return found == std::end(kVersionTexts) ? std::nullopt : std::optional(found->version);
}

std::string EnvironmentOfWord(const Machine& machine, std::string_view word) {
    for (const NamedProcessor& processor : kProcessors) {
        const bool isKnown = machine.Generation() != Generation::Windows2000 || processor.word == "Intel";
        if (isKnown && EqualNoCase(processor.word, word)) {
            return processor.environment;
        }
    }
    return "?";
}

// ---- the INF --------------------------------------------------------------------------------------------------------

/// An INF for the length of one installation.
class InfOfPackage {
  public:
    InfOfPackage(Machine& machine, const std::string& path)
        : m_handle(SetupOpenInfFileA(path.c_str(), nullptr, kInfStyle, nullptr)), m_inf(FindInf(machine, m_handle)) {
        m_code = m_inf == nullptr ? lastError : CheckSignature();
    }
    ~InfOfPackage() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            SetupCloseInfFile(m_handle);
        }
    }
    InfOfPackage(const InfOfPackage&) = delete;
    InfOfPackage& operator=(const InfOfPackage&) = delete;

    DWORD Code() const { return m_code; }
    OpenInf& Inf() { return *m_inf; }

  private:
    DWORD CheckSignature() const {
        const std::string signature = m_inf->file->Value("Version", "Signature").value_or("");
        for (const char* known : {"$Windows NT$", "$Chicago$", "$Windows 95$"}) {
            if (EqualNoCase(signature, known)) {
                return ERROR_SUCCESS;
            }
        }
        return kWrongStyle;
    }

    HINF m_handle;
    OpenInf* m_inf;
    DWORD m_code = ERROR_SUCCESS;
};

// ---- installation ---------------------------------------------------------------------------------------------------

/// Installs one driver from an open INF.
class DriverInstallation {
  public:
    DriverInstallation(Machine& machine, const DriverTarget& target, OpenInf& inf)
        : m_machine(machine),
          m_target(target),
          m_inf(inf),
          m_isOwn(Environments(machine).IsOwn(target.environment) &&
                  target.version == Environments(machine).OwnVersion()) {}

    DWORD Run(const std::string& folder, const std::string& modelName) {
        const std::optional<ModelLine> model = FindModel(m_inf, m_target, modelName);
        if (!model) {
            return ERROR_UNKNOWN_PRINTER_DRIVER;
        }
        DriverDescription description = DescribeDriver(m_inf, m_target, *model);
        DWORD code = CopyFiles(*model, folder);
        if (code == ERROR_SUCCESS) {
            code = AddMonitor(description);
        }
        if (code == ERROR_SUCCESS) {
            TakeDependentFiles(&description.driver);
            // The files were put where the spooler takes new ones from: they don't stay there.
            code = Drivers(m_machine).Add(m_target.environment, description.driver, FileTransfer::Move);
        }
        if (code == ERROR_SUCCESS && m_isOwn) {
            code = FinishOwn(*model);
        }
        return code;
    }

    /// Names of the colour profiles that a model brings along.
    std::vector<std::string> ProfilesOf(const std::string& modelName) {
        const std::optional<ModelLine> model = FindModel(m_inf, m_target, modelName);
        std::vector<std::string> profiles;
        if (model && QueueFiles(m_inf, m_inf, model->installSection.c_str(), nullptr, 0, m_queue) == ERROR_SUCCESS) {
            for (const QueuedCopy& copy : m_queue.copies) {
                if (LiesIn(copy.target, ColourProfiles(m_machine).Directory())) {
                    profiles.push_back(NameOf(copy.target));
                }
            }
        }
        return profiles;
    }

  private:
    /// A driver of another system gets the files of its own folder alone; the rest would belong into folders of that
    /// system. One for the 9x family finds all that it has there.
    DWORD CopyFiles(const ModelLine& model, const std::string& folder) {
        const std::string& directory = m_target.environment.directory;
        if (const DWORD code = m_inf.directories.Set(kDriverFolder, directory.c_str()); code != ERROR_SUCCESS) {
            return code;
        }
        const char* root = folder.empty() ? nullptr : folder.c_str();
        const DWORD code = QueueFiles(m_inf, m_inf, model.installSection.c_str(), root, 0, m_queue);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        if (m_target.version == 0) {
            for (QueuedCopy& copy : m_queue.copies) {
                copy.target = directory + "\\" + NameOf(copy.target);
            }
        }
        if (!m_isOwn) {
            m_queue.deletes.clear();
            m_queue.renames.clear();
            std::erase_if(m_queue.copies, [&](const QueuedCopy& copy) { return !LiesIn(copy.target, directory); });
        }
        FileQueue queue = m_queue;
        SpareFilesInUse(&queue);
        return Commit(m_machine, queue, nullptr, {&SetupDefaultQueueCallbackA, nullptr});
    }

    /// The spooler may hold files outside the driver's folder, above all a monitor's library. One that wouldn't change
    /// is left alone, another is replaced at the next start.
    void SpareFilesInUse(FileQueue* queue) const {
        Files& files = m_machine.Files();
        auto isHeld = [&](const QueuedCopy& copy) {
            return files.CheckOpen(copy.target, GENERIC_WRITE, 0) == ERROR_SHARING_VIOLATION;
        };
        std::erase_if(queue->copies, [&](const QueuedCopy& copy) {
            return isHeld(copy) &&
                   files.Read(copy.target) == files.Read(JoinPath(m_machine, copy.media.path, copy.name));
        });
        for (QueuedCopy& copy : queue->copies) {
            copy.style |= isHeld(copy) ? static_cast<DWORD>(SP_COPY_FORCE_IN_USE) : 0;
        }
    }

    DWORD AddMonitor(const DriverDescription& description) {
        const std::string& name = description.driver.monitorName;
        Monitors monitors(m_machine);
        if (!m_isOwn || name.empty() || monitors.Find(name)) {
            return ERROR_SUCCESS;
        }
        return monitors.Add(name, {}, description.monitorFile);
    }

    /// Files of the driver's folder that aren't one of the main ones, each once.
    void TakeDependentFiles(Driver* driver) const {
        const UINT codePage = m_machine.System().codePage;
        std::set<std::string> seen;
        for (const std::string* main :
             {&driver->driverFile, &driver->dataFile, &driver->configFile, &driver->helpFile}) {
            seen.insert(FoldCase(codePage, *main));
        }
        for (const QueuedCopy& copy : m_queue.copies) {
            const std::string name = NameOf(copy.target);
            if (LiesIn(copy.target, m_target.environment.directory) && seen.insert(FoldCase(codePage, name)).second) {
                driver->dependentFiles.push_back(name);
            }
        }
    }

    DWORD FinishOwn(const ModelLine& model) {
        InstallProfiles();
        const DWORD code = ApplyRegistry(m_inf, model.installSection.c_str(), nullptr);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        const bool isPlaced =
            SetupCopyOEMInfA(m_inf.path.c_str(), nullptr, kMediaIsPath, 0, nullptr, 0, nullptr, nullptr) != FALSE;
        return isPlaced ? static_cast<DWORD>(ERROR_SUCCESS) : lastError;
    }

    /// What lies in the colour folder and is no profile, or is installed already, stays as it is.
    void InstallProfiles() {
        ColourProfiles profiles(m_machine);
        for (const QueuedCopy& copy : m_queue.copies) {
            if (LiesIn(copy.target, profiles.Directory()) && !profiles.IsInstalled(NameOf(copy.target))) {
                profiles.Install(copy.target);
            }
        }
    }

    std::string NameOf(const std::string& path) const {
        return std::string(FileName(path, m_machine.System().codePage));
    }
    bool LiesIn(const std::string& path, const std::string& folder) const {
        return IsSameName(m_machine, FolderOf(path, m_machine.System().codePage), folder);
    }

    Machine& m_machine;
    const DriverTarget& m_target;
    OpenInf& m_inf;
    bool m_isOwn;  ///< the driver is one that the machine itself prints with
    FileQueue m_queue;
};

}  // namespace

std::string NarrowText(const Machine& machine, const PrintUICommand::Text& text) {
    return text ? FromWide(machine.System().codePage, *text) : std::string();
}

DWORD FindTarget(Machine& machine, const PrintUICommand& command, DriverTarget* target) {
    Environments environments(machine);
    const bool isPlain = command.isPlainEnvironment;
    if (isPlain && machine.Generation() == Generation::Windows2000) {
        return ERROR_INVALID_PARAMETER;
    }
    target->environment = environments.Own();
    target->version = environments.OwnVersion();
    if (command.version) {
        const std::string text = NarrowText(machine, command.version);
        const std::optional<DWORD> version = isPlain ? VersionOfNumber(text) : VersionOfText(machine, text);
        if (!version) {
            return ERROR_INVALID_PARAMETER;
        }
        target->version = *version;
    }
    if (command.architecture) {
        std::string name = NarrowText(machine, command.architecture);
        if (!isPlain) {
            name = EnvironmentOfWord(machine, name);
            // Drivers of the 9x family are Intel's, and have an environment of their own.
            name = target->version == 0 && name == "Windows NT x86" ? "Windows 4.0" : name;
        }
        const std::optional<Environment> environment = environments.Find(name.empty() ? "?" : name);
        if (!environment) {
            return ERROR_INVALID_ENVIRONMENT;
        }
        target->environment = *environment;
    }
    return Environments::Takes(target->environment, target->version) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

DWORD InstallDriver(Machine& machine, const DriverTarget& target, const std::string& inf, const std::string& folder,
                    const std::string& model) {
    InfOfPackage package(machine, inf);
    return package.Code() == ERROR_SUCCESS ? DriverInstallation(machine, target, package.Inf()).Run(folder, model)
                                           : package.Code();
}

std::vector<std::string> ProfilesOfPackage(Machine& machine, const DriverTarget& target, const std::string& inf,
                                           const std::string& model) {
    InfOfPackage package(machine, inf);
    return package.Code() == ERROR_SUCCESS ? DriverInstallation(machine, target, package.Inf()).ProfilesOf(model)
                                           : std::vector<std::string>();
}

}  // namespace pikel::simulated
