// Version resources as programs read them.
#include <cstring>
#include <optional>
#include <string>

#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/modules/version_resource.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

/// The prepared version block of a file; nothing with the last error set.
std::optional<std::string> ReadVersion(LPCSTR path) {
    Machine& machine = Current();
    if (path == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, std::optional<std::string>());
    }
    if (const DWORD code = machine.Files().CheckOpen(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        code != ERROR_SUCCESS) {
        return Fail(code, std::optional<std::string>());
    }
    const std::optional<std::string> file = machine.Files().Read(path);
    if (!file) {
        return Fail(ERROR_ACCESS_DENIED, std::optional<std::string>());
    }
    DWORD code = ERROR_SUCCESS;
    std::optional<std::string> block = FindVersionResource(*file, code);
    if (block && !PrepareVersionBlock(*block, machine.System().codePage)) {
        block.reset();
        code = ERROR_RESOURCE_TYPE_NOT_FOUND;
    }
    return block ? block : Fail(code, std::optional<std::string>());
}

}  // namespace

DWORD WINAPI GetFileVersionInfoSizeA(LPCSTR lptstrFilename, LPDWORD lpdwHandle) {
    if (lpdwHandle != nullptr) {
        *lpdwHandle = 0;
    }
    const std::optional<std::string> block = ReadVersion(lptstrFilename);
    return block ? static_cast<DWORD>(block->size()) : 0;
}

BOOL WINAPI GetFileVersionInfoA(LPCSTR lptstrFilename, DWORD, DWORD dwLen, LPVOID lpData) {
    const std::optional<std::string> block = ReadVersion(lptstrFilename);
    if (!block) {
        return FALSE;
    }
    if (lpData == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    if (dwLen < block->size()) {
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    std::memcpy(lpData, block->data(), block->size());
    return TRUE;
}

BOOL WINAPI VerQueryValueA(LPCVOID pBlock, LPCSTR lpSubBlock, LPVOID* lplpBuffer, PUINT puLen) {
    if (puLen != nullptr) {
        *puLen = 0;
    }
    if (pBlock == nullptr || lpSubBlock == nullptr || lplpBuffer == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    UINT length = 0;
    const char* value = QueryVersion(static_cast<const char*>(pBlock), lpSubBlock, Current().System().codePage, length);
    if (value == nullptr) {
        return Fail(ERROR_RESOURCE_TYPE_NOT_FOUND, FALSE);
    }
    *lplpBuffer = const_cast<char*>(value);
    if (puLen != nullptr) {
        *puLen = length;
    }
    return TRUE;
}

}  // namespace pikel::simulated
