// The spooler's environments.
#include "machine/spooler/environments.h"

#include <algorithm>

#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kVersion9x = 0x400;

struct KnownEnvironment {
    const char* name;
    const char* folder;  ///< where the registry names none
    Generation since;
    std::vector<DWORD> versions;
};

/// The versions of "Windows NT x86" depend on the system.
std::vector<DWORD> VersionsOfX86(Generation generation) {
    switch (generation) {
        case Generation::Nt3:
        case Generation::Nt4:
            return {2};
        default:
            return {2, 3};
    }
}

}  // namespace

std::vector<Environment> Environments::List() const {
    const Registry& registry = m_machine.Registry();
    if (m_machine.Is9x()) {
        return {{"Windows 4.0", m_machine.System().systemDirectory, {0, kVersion9x}, false}};
    }
    const Generation generation = m_machine.Generation();
    const KnownEnvironment known[] = {
        {"Windows 4.0", "WIN40", Generation::Nt3, {0}},
        {"Windows NT x86", "W32X86", Generation::Nt3, VersionsOfX86(generation)},
        {"Windows IA64", "IA64", Generation::Xp, {3}},
        {"Windows x64", "x64", Generation::Xp, {3}},
    };
    std::vector<Environment> environments;
    for (const KnownEnvironment& one : known) {
        if (generation >= one.since) {
            const std::string key = PrintKey("Environments\\") + one.name;
            environments.push_back({one.name,
                                    m_machine.System().systemDirectory + "\\spool\\drivers\\" +
                                        registry.Text(key, "Directory", one.folder),
                                    one.versions, true});
        }
    }
    return environments;
}

std::optional<Environment> Environments::Find(std::string_view name) const {
    if (name.empty()) {
        name = m_machine.Environment();
    }
    for (Environment& environment : List()) {
        if (EqualNoCase(environment.name, name)) {
            return std::move(environment);
        }
    }
    return std::nullopt;
}

Environment Environments::Own() const {
    return Find({}).value_or(List().front());
}

bool Environments::IsOwn(const Environment& environment) const {
    return EqualNoCase(environment.name, m_machine.Environment());
}

bool Environments::Takes(const Environment& environment, DWORD version) {
    return std::ranges::find(environment.versions, version) != environment.versions.end();
}

DWORD Environments::OwnVersion() const {
    if (m_machine.Is9x()) {
        return kVersion9x;
    }
    return m_machine.Generation() <= Generation::Nt4 ? 2 : 3;
}

std::string Environments::VersionDirectory(const Environment& environment, DWORD version) {
    return environment.hasVersionFolders ? environment.directory + "\\" + std::to_string(version)
                                         : environment.directory;
}

std::string Environments::DriversKey(const Environment& environment, DWORD version) {
    std::string key = PrintKey("Environments\\") + environment.name + "\\Drivers";
    if (environment.hasVersionFolders) {
        key += "\\Version-" + std::to_string(version);
    }
    return key;
}

DWORD Environments::Prepare(const Environment& environment, DWORD version) {
    Registry& registry = m_machine.Registry();
    if (environment.hasVersionFolders) {
        const std::string key = DriversKey(environment, version);
        if (registry.Find(key, "Directory") == nullptr) {
            registry.SetText(key, "Directory", std::to_string(version));
            registry.SetNumber(key, "MajorVersion", version);
            registry.SetNumber(key, "MinorVersion", 0);
        }
    }
    return m_machine.Files().MakeFolders(VersionDirectory(environment, version));
}

}  // namespace pikel::simulated
