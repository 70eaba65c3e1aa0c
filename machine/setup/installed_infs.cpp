// The INFs that the system has installed.
#include "machine/setup/installed_infs.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/path.h"
#include "machine/inf/directory_ids.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kInfFolder = 17;
constexpr char kClasses[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Class\\";
constexpr char kCurrentVersion[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

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

/// "oem12.inf", in any case.
bool IsOemName(std::string_view name) {
    return name.size() > 7 && EqualNoCase(name.substr(0, 3), "oem") &&
           EqualNoCase(name.substr(name.size() - 4), ".inf") &&
           std::ranges::all_of(name.substr(3, name.size() - 7), [](char ch) { return ch >= '0' && ch <= '9'; });
}

}  // namespace

std::string InfFolder(Machine& machine) {
    return *SystemDirectory(machine, kInfFolder);
}

GUID GuidOf(const std::string& text) {
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

std::string ClassOfInf(OpenInf& inf, const std::string& guid) {
    std::string name = inf.file->Value("Version", "Class").value_or("");
    if (name.empty() && !guid.empty()) {
        name = inf.machine.Registry().Text(kClasses + guid, "Class");
    }
    return name;
}

std::optional<std::string> LocateInf(Machine& machine, std::string_view name, DWORD search) {
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

InfDestination FindInfDestination(Machine& machine, const std::string& source, const std::string& bytes) {
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

DWORD TakeUpInf(Machine& machine, const std::string& source, const InfDestination& destination, DWORD style) {
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

}  // namespace pikel::simulated
