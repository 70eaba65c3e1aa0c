// What the handles of the registry calls stand for.
#include "machine/registry/handles.h"

#include <memory>

#include "machine/base/machine.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr REGSAM kMaximumAllowed = 0x02000000;

/// The rights that a handle carries. The 9x family has no security and lets every handle do everything.
REGSAM Granted(std::string_view path, REGSAM asked) {
    REGSAM granted = asked;
    if ((asked & GENERIC_READ) != 0) {
        granted |= KEY_READ;
    }
    if ((asked & GENERIC_WRITE) != 0) {
        granted |= KEY_WRITE;
    }
    if ((asked & GENERIC_ALL) != 0 || Current().Is9x()) {
        granted |= KEY_ALL_ACCESS;
    }
    if ((asked & kMaximumAllowed) != 0) {
        granted |= Current().CheckAccess(path, KEY_ALL_ACCESS) == ERROR_SUCCESS ? KEY_ALL_ACCESS : KEY_READ;
    }
    return granted;
}

}  // namespace

const char* RootOf(HKEY key) {
    switch (static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key))) {
        case 0x80000000:
            return "HKCR";
        case 0x80000001:
            return "HKCU";
        case 0x80000002:
            return "HKLM";
        case 0x80000003:
            return "HKU";
        default:
            return nullptr;
    }
}

DWORD ResolveKey(HKEY handle, OpenKey& key) {
    Machine& machine = Current();
    if (const char* root = RootOf(handle)) {
        key = {root, machine.Registry().KeyId(root), KEY_ALL_ACCESS};
        return ERROR_SUCCESS;
    }
    const OpenKey* open = machine.Handles().Find<OpenKey>(HandleKind::RegistryKey, handle);
    if (open == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    key = *open;
    return machine.Registry().KeyId(key.path) == key.id ? static_cast<DWORD>(ERROR_SUCCESS) : ERROR_KEY_DELETED;
}

DWORD PathOfKey(HKEY handle, std::string& path) {
    OpenKey key;
    const DWORD code = ResolveKey(handle, key);
    if (code == ERROR_SUCCESS) {
        path = key.path;
    }
    return code;
}

LSTATUS OpenKeyHandle(const std::string& path, REGSAM access, PHKEY result) {
    Machine& machine = Current();
    if (const DWORD code = machine.CheckAccess(path, access); code != ERROR_SUCCESS) {
        return static_cast<LSTATUS>(code);
    }
    auto key = std::make_shared<OpenKey>(OpenKey{path, machine.Registry().KeyId(path), Granted(path, access)});
    *result = static_cast<HKEY>(machine.Handles().Open(HandleKind::RegistryKey, std::move(key), path));
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
