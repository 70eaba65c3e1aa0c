#include "library.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "failure.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace pikel::cli {

namespace {

#ifdef _WIN32

std::string LibraryPath() {
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    if (length == 0 || length == sizeof path) {
        throw ToolError("can't tell where this program lies");
    }
    std::string program(path, length);
    return program.substr(0, program.find_last_of('\\') + 1) + "pikel.dll";
}

void* Load(const std::string& path) {
    HMODULE module = LoadLibraryA(path.c_str());
    if (module == nullptr) {
        throw ToolError("can't load " + path + ": " + ErrorText(GetLastError()));
    }
    return module;
}

PI_KEL_GetInterfaceFunction Find(void* module) {
    auto found = GetProcAddress(static_cast<HMODULE>(module), "PI_KEL_GetInterface");
    return reinterpret_cast<PI_KEL_GetInterfaceFunction>(reinterpret_cast<void (*)()>(found));
}

void Unload(void* module) {
    FreeLibrary(static_cast<HMODULE>(module));
}

#else

/// Beside the program, as in the build folder, or in the library folder of an installation.
std::string LibraryPath() {
    std::error_code error;
    std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    for (const char* relative : {"libpikel.so", "../lib/libpikel.so", "../lib/x86_64-linux-gnu/libpikel.so"}) {
        std::filesystem::path path = program.parent_path() / relative;
        if (std::filesystem::exists(path, error)) {
            return path.string();
        }
    }
    return "libpikel.so";
}

void* Load(const std::string& path) {
    // The library stays until the process ends: its machine and its C++ runtime data live as long.
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module == nullptr) {
        throw ToolError(std::string("can't load the library: ") + dlerror());
    }
    return module;
}

PI_KEL_GetInterfaceFunction Find(void* module) {
    return reinterpret_cast<PI_KEL_GetInterfaceFunction>(dlsym(module, "PI_KEL_GetInterface"));
}

void Unload(void* module) {
    dlclose(module);
}

#endif

}  // namespace

Library::Library() {
    m_module = Load(LibraryPath());
    PI_KEL_GetInterfaceFunction getInterface = Find(m_module);
    m_table = getInterface == nullptr ? nullptr : getInterface(PIKEL_INTERFACE_VERSION);
    if (m_table == nullptr) {
        Unload(m_module);
        throw ToolError("the library beside this program is of another version");
    }
    m_table->PI_KEL_Initialize();
}

Library::~Library() {
    m_table->PI_KEL_Shutdown();
    Unload(m_module);
}

}  // namespace pikel::cli
