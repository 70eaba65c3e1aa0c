// The registry calls. Each returns its code and leaves the last error alone.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/handles.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr LSTATUS kDone = 0;
constexpr LSTATUS kNoAccessToMemory = 998;
constexpr LSTATUS kBadPathname = 161;
constexpr std::size_t kMaxValueName = 16383;

constexpr REGSAM kQueryValue = 0x1;
constexpr REGSAM kSetValue = 0x2;
constexpr REGSAM kCreateSubKey = 0x4;

LSTATUS Code(DWORD code) {
    return static_cast<LSTATUS>(code);
}

/// Checks the text of a sub-key, and joins it to its key.
LSTATUS Join(const OpenKey& key, LPCSTR subKey, std::string& path) {
    path = key.path;
    if (subKey == nullptr || *subKey == '\0') {
        return kDone;
    }
    if (*subKey == '\\') {
        return Current().Is9x() ? Code(ERROR_FILE_NOT_FOUND) : kBadPathname;
    }
    path += '\\';
    path += subKey;
    return kDone;
}

LSTATUS CheckAccess(std::string_view path, REGSAM access) {
    return Code(Current().CheckAccess(path, access));
}

LSTATUS CommitChange() {
    return Code(Current().TryCommit());
}

/// Creating goes by the rights on the key that is there, whatever rights its handle was opened with.
LSTATUS CreateKeyAt(std::string path) {
    Machine& machine = Current();
    LSTATUS code = CheckAccess(path, kCreateSubKey);
    if (code != kDone) {
        return code;
    }
    if (!machine.Registry().CreateKey(path)) {
        return Code(ERROR_INVALID_PARAMETER);  // too long a name, or too deep
    }
    return CommitChange();
}

/// Hands a value's data out by the rules that a query and an enumeration share.
LSTATUS HandOutData(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) {
    if (type != nullptr) {
        *type = value.type;
    }
    if (size == nullptr) {
        return kDone;
    }
    DWORD room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data == nullptr) {
        return kDone;
    }
    if (room < value.data.size()) {
        return Code(ERROR_MORE_DATA);
    }
    std::memcpy(data, value.data.data(), value.data.size());
    bool lacksNul = IsTextType(value.type) && !value.data.empty() && value.data.back() != '\0';
    if (lacksNul && room > value.data.size() && !Current().Is9x()) {
        data[value.data.size()] = 0;
    }
    return kDone;
}

}  // namespace

LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD /*ulOptions*/, REGSAM samDesired, PHKEY phkResult) {
    if (phkResult == nullptr) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    *phkResult = nullptr;
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    std::string path;
    code = Join(key, lpSubKey, path);
    if (code != kDone) {
        return code;
    }
    if (!Current().Registry().KeyExists(path)) {
        return Code(ERROR_FILE_NOT_FOUND);
    }
    return OpenKeyHandle(path, samDesired, phkResult);
}

LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR /*lpClass*/, DWORD /*dwOptions*/,
                               REGSAM samDesired, const LPSECURITY_ATTRIBUTES /*lpSecurityAttributes*/, PHKEY phkResult,
                               LPDWORD lpdwDisposition) {
    if (phkResult == nullptr || Reserved != 0) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    *phkResult = nullptr;
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    std::string path;
    code = Join(key, lpSubKey, path);
    if (code != kDone) {
        return code;
    }
    bool isNew = !Current().Registry().KeyExists(path);
    if (isNew) {
        code = CreateKeyAt(path);
    }
    if (code == kDone) {
        code = OpenKeyHandle(path, samDesired, phkResult);
    }
    if (code == kDone && lpdwDisposition != nullptr) {
        *lpdwDisposition = isNew ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    }
    return code;
}

LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData,
                                LPDWORD lpcbData) {
    if (lpReserved != nullptr || (lpData != nullptr && lpcbData == nullptr)) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    if ((key.access & kQueryValue) == 0) {
        return Code(ERROR_ACCESS_DENIED);
    }
    const RegistryValue* value = Current().Registry().Find(key.path, lpValueName == nullptr ? "" : lpValueName);
    return value == nullptr ? Code(ERROR_FILE_NOT_FOUND) : HandOutData(*value, lpType, lpData, lpcbData);
}

LSTATUS WINAPI RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                              DWORD cbData) {
    std::string_view name = lpValueName == nullptr ? "" : lpValueName;
    if (Reserved != 0 || name.size() > kMaxValueName) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    if (lpData == nullptr && cbData != 0) {
        return kNoAccessToMemory;
    }
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    if ((key.access & kSetValue) == 0) {
        return Code(ERROR_ACCESS_DENIED);
    }
    code = RootOf(hKey) == nullptr ? kDone : CheckAccess(key.path, kSetValue);
    if (code != kDone) {
        return code;
    }
    std::string data = cbData == 0 ? std::string() : std::string(reinterpret_cast<const char*>(lpData), cbData);
    if (IsTextType(dwType) && !data.empty() && data.back() != '\0' && !Current().Is9x()) {
        data += '\0';
    }
    Current().Registry().Set(key.path, name, dwType, data);
    return CommitChange();
}

LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD lpReserved,
                             LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
    if (lpValueName == nullptr || lpcchValueName == nullptr || lpReserved != nullptr ||
        (lpData != nullptr && lpcbData == nullptr)) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    if ((key.access & kQueryValue) == 0) {
        return Code(ERROR_ACCESS_DENIED);
    }
    const RegistryValue* value = Current().Registry().ValueAt(key.path, dwIndex);
    if (value == nullptr) {
        return Code(ERROR_NO_MORE_ITEMS);
    }
    if (*lpcchValueName <= value->name.size()) {
        return Code(ERROR_MORE_DATA);
    }
    code = HandOutData(*value, lpType, lpData, lpcbData);
    std::memcpy(lpValueName, value->name.c_str(), value->name.size() + 1);
    *lpcchValueName = static_cast<DWORD>(value->name.size());
    return code;
}

LSTATUS WINAPI RegDeleteKeyA(HKEY hKey, LPCSTR lpSubKey) {
    if (lpSubKey == nullptr) {
        return Code(ERROR_INVALID_PARAMETER);
    }
    OpenKey key;
    LSTATUS code = Code(ResolveKey(hKey, key));
    if (code != kDone) {
        return code;
    }
    std::string path;
    code = Join(key, lpSubKey, path);
    if (code != kDone) {
        return code;
    }
    Registry& registry = Current().Registry();
    if (!registry.KeyExists(path)) {
        return Code(ERROR_FILE_NOT_FOUND);
    }
    code = CheckAccess(path, DELETE);
    if (code != kDone) {
        return code;
    }
    // The 9x family deletes all that lies below, too.
    bool isRoot = *lpSubKey == '\0' && RootOf(hKey) != nullptr;
    if (isRoot || (!Current().Is9x() && registry.HasSubKeys(path))) {
        return Code(ERROR_ACCESS_DENIED);
    }
    registry.DeleteKey(path);
    return CommitChange();
}

LSTATUS WINAPI RegCloseKey(HKEY hKey) {
    if (RootOf(hKey) != nullptr) {
        return kDone;
    }
    return Current().Handles().Close(HandleKind::RegistryKey, hKey) ? kDone : Code(ERROR_INVALID_HANDLE);
}

}  // namespace pikel::simulated
