// Loaded libraries and their paths.
#include <cstdint>
#include <cstring>
#include <string>

#include "machine/base/machine.h"
#include "machine/modules/modules.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorInvalidOrdinal = 182;
constexpr uintptr_t kLargestOrdinal = 0xFFFF;

bool IsOwnModule(HMODULE module) {
    return module == nullptr || module == LibraryModule();
}

}  // namespace

HMODULE WINAPI LoadLibraryA(LPCSTR lpLibFileName) {
    DWORD code = ERROR_SUCCESS;
    const HMODULE module = Current().Modules().Open(lpLibFileName != nullptr ? lpLibFileName : "", &code);
    return module != nullptr ? module : Fail<HMODULE>(code, nullptr);
}

FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName) {
    const Module* module = Current().Modules().Find(hModule);
    if (module == nullptr && !IsOwnModule(hModule)) {
        return Fail<FARPROC>(ERROR_MOD_NOT_FOUND, nullptr);
    }
    if (reinterpret_cast<uintptr_t>(lpProcName) <= kLargestOrdinal) {
        return Fail<FARPROC>(kErrorInvalidOrdinal, nullptr);
    }
    if (module != nullptr) {
        const auto found = module->exports.find(lpProcName);
        if (found != module->exports.end() && found->second != nullptr) {
            return found->second;
        }
    }
    return Fail<FARPROC>(ERROR_PROC_NOT_FOUND, nullptr);
}

BOOL WINAPI FreeLibrary(HMODULE hLibModule) {
    if (hLibModule == LibraryModule() || Current().Modules().Close(hLibModule)) {
        return TRUE;
    }
    return Fail<BOOL>(hLibModule == nullptr ? ERROR_INVALID_HANDLE : ERROR_MOD_NOT_FOUND, FALSE);
}

DWORD WINAPI GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) {
    const std::string path = Current().Modules().PathOf(hModule);
    if (path.empty()) {
        return Fail<DWORD>(ERROR_MOD_NOT_FOUND, 0);
    }
    if (nSize == 0) {
        return Fail<DWORD>(ERROR_INSUFFICIENT_BUFFER, 0);
    }
    if (path.size() < nSize) {
        std::memcpy(lpFilename, path.c_str(), path.size() + 1);
        return static_cast<DWORD>(path.size());
    }
    // The path is cut. Systems before Vista leave the NUL out and tell nothing.
    std::memcpy(lpFilename, path.data(), nSize);
    if (Current().Generation() >= Generation::Vista) {
        lpFilename[nSize - 1] = '\0';
        lastError = ERROR_INSUFFICIENT_BUFFER;
    }
    return nSize;
}

}  // namespace pikel::simulated
