// The machine's registry, kept as "Windows Registry Editor Version 5.00" text in registry.reg. Keys and value names match
// without regard to case and keep their spelling. A path names the root in full or short: "HKEY_LOCAL_MACHINE\SYSTEM",
// "HKLM\SYSTEM"; "SYSTEM\CurrentControlSet" is a key of its own (no control set links).
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

struct RegistryValue {
    std::string name;  ///< empty: the default value
    DWORD type = 0;
    std::string data;  ///< bytes as stored; texts in the active code page with their NUL
};

class Registry {
 public:
    Registry();
    ~Registry();

    /// Reads .reg text. @return an empty text, or what is wrong and in which line; the registry is unchanged then.
    std::string Parse(std::string_view text);
    /// The whole registry as .reg text, keys and values in a fixed order, so that two states can be compared with diff.
    std::string Text() const;

    bool KeyExists(std::string_view key) const;
    /// Makes every missing key on the path. @return true when the last one is new.
    bool CreateKey(std::string_view key);
    /// Deletes a key and all below it. @return false when there is none.
    bool DeleteKey(std::string_view key);
    std::vector<std::string> SubKeys(std::string_view key) const;
    std::vector<RegistryValue> Values(std::string_view key) const;
    const RegistryValue* Find(std::string_view key, std::string_view name) const;
    void Set(std::string_view key, std::string_view name, DWORD type, std::string_view data);
    bool DeleteValue(std::string_view key, std::string_view name);

    // Typed forms; a missing value or one of another type gives the fallback.
    std::string Text(std::string_view key, std::string_view name, std::string_view fallback = {}) const;
    DWORD Number(std::string_view key, std::string_view name, DWORD fallback = 0) const;
    std::vector<std::string> Texts(std::string_view key, std::string_view name) const;
    void SetText(std::string_view key, std::string_view name, std::string_view text);
    void SetNumber(std::string_view key, std::string_view name, DWORD number);
    void SetTexts(std::string_view key, std::string_view name, const std::vector<std::string>& texts);
    void SetBytes(std::string_view key, std::string_view name, std::string_view bytes);

    /// Set by every change; Machine::Commit writes the file and clears it.
    bool IsDirty() const;
    void MarkClean();

    /// No rights: opens for writing (and with everything also reads) at or below the key give 5.
    void Deny(std::string_view key, bool everything = false);
    DWORD CheckAccess(std::string_view key, REGSAM access) const;

 private:
    struct Node;
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace pikel::simulated
