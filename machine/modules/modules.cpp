// The libraries of the machine.
#include "machine/modules/modules.h"

#include <algorithm>
#include <array>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/path.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorBadExeFormat = 193;

// ---- which system has what ------------------------------------------------------------------------------------------

using Families = unsigned;

template <class... Generations>
constexpr Families FamiliesOf(Generations... generations) {
    return ((1u << static_cast<unsigned>(generations)) | ...);
}

constexpr Families kNone = 0;
constexpr Families k9x = FamiliesOf(Generation::Windows95, Generation::Windows98, Generation::WindowsMe);
constexpr Families kFromVista = FamiliesOf(Generation::Vista, Generation::Other);
constexpr Families kFrom2000 = FamiliesOf(Generation::Windows2000, Generation::Xp) | kFromVista;
constexpr Families kFrom98 = FamiliesOf(Generation::Windows98, Generation::WindowsMe) | kFrom2000;
constexpr Families kEvery = ~0u;

struct LibraryRow {
    std::string_view name;
    Families systems;
};

constexpr LibraryRow kLibraries[] = {
    {"winspool.drv", kEvery},   {"setupapi.dll", kEvery},
    {"advapi32.dll", kEvery},   {"mscms.dll", kFrom98},  // colour management came with Windows 98
    {"shfolder.dll", kFrom98},                           // comes with the shell of Internet Explorer 5
    {"printui.dll", kFrom2000},                          //
    {"svrapi.dll", k9x},                                 // the NT family's shares are served by netapi32.dll
};

struct ExportRow {
    std::string_view library;
    std::string_view name;
    Families systems;
};

// One row for each function that is looked up by name; a row that is missing is a compile error below.
constexpr ExportRow kExports[] = {
    {"winspool.drv", "AddPrinterDriverExA", kFrom2000},
    {"winspool.drv", "SetPrinterDataExA", kFrom2000},
    {"winspool.drv", "GetPrinterDataExA", kFrom2000},
    {"winspool.drv", "DeletePrinterDriverExA", kFrom2000},
    {"winspool.drv", "GetDefaultPrinterA", kFrom2000},
    {"winspool.drv", "SetDefaultPrinterA", kFrom2000},
    {"setupapi.dll", "SetupCopyOEMInfA", kFrom98},
    {"advapi32.dll", "ConvertSecurityDescriptorToStringSecurityDescriptorA", kFrom2000},
    {"advapi32.dll", "ConvertStringSecurityDescriptorToSecurityDescriptorA", kFrom2000},
    {"mscms.dll", "GetColorDirectoryA", kFrom98},
    {"mscms.dll", "InstallColorProfileA", kFrom98},
    {"mscms.dll", "UninstallColorProfileA", kFrom98},
    {"mscms.dll", "AssociateColorProfileWithDeviceA", kFrom98},
    {"mscms.dll", "DisassociateColorProfileFromDeviceA", kFrom98},
    {"mscms.dll", "WcsAssociateColorProfileWithDevice", kFromVista},
    {"mscms.dll", "WcsDisassociateColorProfileFromDevice", kFromVista},
    {"shfolder.dll", "SHGetFolderPathA", kFrom98},
    {"printui.dll", "PrintUIEntryW", kFrom2000},
    // The wide form is the only one that a system has had; the others are names that callers of such entries try.
    {"printui.dll", "PrintUIEntryA", kNone},
    {"printui.dll", "PrintUIEntry", kNone},
    {"svrapi.dll", "NetShareGetInfo", k9x},
    {"svrapi.dll", "NetShareSetInfo", k9x},
    {"svrapi.dll", "NetShareAdd", k9x},
    {"svrapi.dll", "NetShareDel", k9x},
};

constexpr bool HasRow(std::string_view library, std::string_view name) {
    return library.empty() || std::ranges::any_of(kExports, [=](const ExportRow& row) {
               return row.library == library && row.name == name;
           });
}

#define OPERATION(result, name, parameters, failure)
#define LOOKED_UP(module, result, name, parameters, failure) \
    static_assert(HasRow(module, #name), "kExports lacks " module " " #name);
#include "platform/operations/all.def"

// ---- where the functions are ----------------------------------------------------------------------------------------

template <class Function>
FARPROC AsFarproc(Function* function) {
    // By way of the one function type that every other may be cast to without a warning.
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

FARPROC FunctionOf(std::string_view library, std::string_view name) {
    struct Entry {
        std::string_view library;
        std::string_view name;
        FARPROC function;
    };
    static const Entry entries[] = {
#define OPERATION(result, name, parameters, failure)
#define LOOKED_UP(module, result, name, parameters, failure) {module, #name, AsFarproc(&simulated::name)},
#include "platform/operations/all.def"
    };
    const auto* found = std::ranges::find_if(
        entries, [=](const Entry& entry) { return entry.library == library && entry.name == name; });
    return found != std::end(entries) ? found->function : nullptr;
}

/// Puts the extension to a name that has none; a dot at its end says that there is none.
std::string WithExtension(std::string_view name, UINT codePage) {
    std::string full(name);
    const std::string_view file = FileName(name, codePage);
    if (file.ends_with('.')) {
        full.pop_back();
    } else if (!file.empty() && file.find('.') == std::string_view::npos) {
        full += ".dll";
    }
    return full;
}

}  // namespace

/// A loaded library behind its handle.
struct Modules::Loaded {
    std::shared_ptr<Module> module;
    std::string key;
    unsigned count = 0;
};

Modules::Modules(Machine& machine) : m_machine(machine) {}

std::string Modules::KeyOf(std::string_view path) const {
    const SystemDescription& system = m_machine.System();
    return ParsePath(path, system).Key(system.codePage);
}

bool Modules::IsRemoved(std::string_view name) const {
    return m_removed.contains(LowerAscii(name));
}

std::shared_ptr<Module> Modules::SystemLibrary(std::string_view name) const {
    const Families system = FamiliesOf(m_machine.Generation());
    const auto* library =
        std::ranges::find_if(kLibraries, [name](const LibraryRow& row) { return EqualNoCase(row.name, name); });
    if (library == std::end(kLibraries) || (library->systems & system) == 0 || IsRemoved(name)) {
        return nullptr;
    }
    auto module = std::make_shared<Module>();
    module->name = m_machine.System().systemDirectory + "\\" + std::string(library->name);
    for (const ExportRow& row : kExports) {
        if (row.library == library->name && (row.systems & system) != 0 &&
            !IsRemoved(std::string(row.library) + "!" + std::string(row.name))) {
            module->exports.emplace(row.name, FunctionOf(row.library, row.name));
        }
    }
    return module;
}

/// Looks in one place. Null with code 0: nothing is there.
std::shared_ptr<Module> Modules::LoadFrom(const std::string& path, DWORD* code) const {
    const UINT codePage = m_machine.System().codePage;
    const std::string name(FileName(path, codePage));
    *code = ERROR_SUCCESS;
    if (const auto found = m_modules.find(KeyOf(path)); found != m_modules.end() && !IsRemoved(name)) {
        auto module = std::make_shared<Module>(*found->second);
        std::erase_if(module->exports, [&](const auto& entry) { return IsRemoved(name + "!" + entry.first); });
        return module;
    }
    if (KeyOf(FolderOf(path, codePage)) == KeyOf(m_machine.System().systemDirectory)) {
        if (std::shared_ptr<Module> library = SystemLibrary(name)) {
            return library;
        }
    }
    if (!IsRemoved(name) && m_machine.Files().Exists(path) && !m_machine.Files().IsDirectory(path)) {
        *code = kErrorBadExeFormat;
    }
    return nullptr;
}

std::shared_ptr<Module> Modules::Load(std::string_view name, DWORD* code) {
    const SystemDescription& system = m_machine.System();
    const std::string full = WithExtension(name, system.codePage);
    std::vector<std::string> places;
    if (full.find_first_of("\\/:") != std::string::npos) {
        places.push_back(full);
    } else if (!full.empty()) {
        const std::string program(FolderOf(m_machine.ModulePath()));
        for (const std::string& folder : {program, system.systemDirectory, system.windowsDirectory}) {
            places.push_back(folder + "\\" + full);
        }
    }
    for (const std::string& place : places) {
        std::shared_ptr<Module> module = LoadFrom(place, code);
        if (module != nullptr || *code != ERROR_SUCCESS) {
            return module;
        }
    }
    *code = ERROR_MOD_NOT_FOUND;
    return nullptr;
}

void Modules::Register(std::string_view path, std::map<std::string, FARPROC, std::less<>> exports) {
    m_modules[KeyOf(path)] = std::make_shared<Module>(Module{std::string(path), std::move(exports)});
}

void Modules::Remove(std::string_view name) {
    m_removed.insert(LowerAscii(FileName(name, m_machine.System().codePage)));
}

void Modules::RemoveExport(std::string_view name, std::string_view symbol) {
    const std::string_view file = FileName(name, m_machine.System().codePage);
    m_removed.insert(LowerAscii(std::string(file) + "!" + std::string(symbol)));
}

HMODULE Modules::Open(std::string_view name, DWORD* code) {
    std::shared_ptr<Module> module = Load(name, code);
    if (module == nullptr) {
        return nullptr;
    }
    const std::string key = KeyOf(module->name);
    HMODULE& handle = m_handles[key];
    if (handle == nullptr) {
        const std::string description = module->name;
        auto loaded = std::make_shared<Loaded>(Loaded{std::move(module), key});
        handle = static_cast<HMODULE>(m_machine.Handles().Open(HandleKind::Module, std::move(loaded), description));
    }
    ++m_machine.Handles().Find<Loaded>(HandleKind::Module, handle)->count;
    return handle;
}

bool Modules::Close(HMODULE handle) {
    auto* loaded = m_machine.Handles().Find<Loaded>(HandleKind::Module, handle);
    if (loaded != nullptr && --loaded->count > 0) {
        return true;
    }
    if (loaded != nullptr) {
        m_handles.erase(loaded->key);
    }
    return m_machine.Handles().Close(HandleKind::Module, handle);
}

const Module* Modules::Find(HMODULE handle) const {
    const auto* loaded = m_machine.Handles().Find<Loaded>(HandleKind::Module, handle);
    return loaded != nullptr ? loaded->module.get() : nullptr;
}

std::string Modules::PathOf(HMODULE handle) const {
    if (handle == nullptr) {
        return std::string(FolderOf(m_machine.ModulePath())) + "\\setup.exe";
    }
    if (handle == LibraryModule()) {
        return std::string(m_machine.ModulePath());
    }
    const Module* module = Find(handle);
    return module != nullptr ? module->name : std::string();
}

HMODULE LibraryModule() {
    return reinterpret_cast<HMODULE>(static_cast<uintptr_t>(0x10000000));
}

}  // namespace pikel::simulated
