// The registry room: the registry itself, and the profile files that hold what the registry doesn't. It stands on the
// files.
//
// The machine's registry, kept as "Windows Registry Editor Version 5.00" text in registry.reg. Keys and value names
// match without regard to case and keep their spelling. A path names the root in full or short:
// "HKEY_LOCAL_MACHINE\SYSTEM", "HKLM\SYSTEM"; HKEY_CLASSES_ROOT is HKLM\SOFTWARE\Classes, and
// "SYSTEM\CurrentControlSet" is a key of its own (no control set links). A backslash at a path's end and a doubled one
// don't count.
//
// The text is UTF-8, whatever the machine's code page. hex(1), hex(2) and hex(7) hold UTF-16LE, as in a file that
// Windows wrote, so that parts of such a file can be pasted in. Where it goes beyond Windows:
//   raw(n):61,ff           bytes of a text type that are no text of the machine's code page
//   "\x0a", [HKLM\a\\x0a]  bytes in names that can't be shown
//   ; end of registry      the last line; a file that was cut short lacks it
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "machine/registry/value.h"
#include "platform/types.h"

namespace pikel::simulated {

struct RegistryTree;

class Registry {
  public:
    /// Longest name of a key, in bytes, and the deepest key below a root.
    static constexpr std::size_t kMaxKeyName = 255;
    static constexpr std::size_t kMaxDepth = 512;

    /// The rights that change something: KEY_SET_VALUE, KEY_CREATE_SUB_KEY, KEY_CREATE_LINK, DELETE, WRITE_DAC,
    /// WRITE_OWNER, GENERIC_ALL, GENERIC_WRITE.
    static constexpr REGSAM kWriteAccess = 0x2 | 0x4 | 0x20 | 0x10000 | 0x40000 | 0x80000 | GENERIC_ALL | GENERIC_WRITE;

    /// @param codePage  the machine's; names and texts are kept in it
    explicit Registry(UINT codePage = 1252);
    ~Registry();

    /// Takes .reg text in the place of all that is there.
    /// @return an empty text, or what is wrong and in which line; the registry is unchanged then
    std::string Parse(std::string_view text);
    /// Takes all that another registry holds in the place of what is there. Denials don't come along.
    void CopyFrom(const Registry& other);
    /// Keeps names and texts as characters, in another code page from now on. Key numbers don't survive.
    /// @return as Parse; a character that the page lacks is a problem, and nothing changes then
    std::string SetCodePage(UINT codePage);
    /// The whole registry as .reg text, keys and values in a fixed order, so that two states can be compared with diff.
    std::string Text() const;

    bool KeyExists(std::string_view key) const;
    /// A number that a key keeps as long as it lives and that no other one ever gets; 0 for a missing key.
    std::uint64_t KeyId(std::string_view key) const;
    /// Makes every missing key on the path. @return true when the last one is new; false also for a path with an
    /// unknown root, with a name that is too long, or deeper than a registry goes.
    bool CreateKey(std::string_view key);
    /// Deletes a key and all below it; a root is only emptied. @return false when there is none.
    bool DeleteKey(std::string_view key);
    bool HasSubKeys(std::string_view key) const;
    /// Sub-keys and values come in the order of their names, case apart.
    std::vector<std::string> SubKeys(std::string_view key) const;
    std::vector<RegistryValue> Values(std::string_view key) const;
    /// The value at a place in that order, null behind the last one. Going through all of them takes linear time.
    const RegistryValue* ValueAt(std::string_view key, std::size_t index) const;
    /// Null for a missing one. Lives until the key changes.
    const RegistryValue* Find(std::string_view key, std::string_view name) const;
    /// Sets a value, making the key when it is missing.
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
    /// 0, or 5 when the key is denied for this access.
    DWORD CheckAccess(std::string_view key, REGSAM access) const;
    /// Whether a path leads to HKEY_LOCAL_MACHINE or below it.
    bool IsBelowLocalMachine(std::string_view key) const;

  private:
    std::string ReplaceTree(std::string_view text, UINT codePage);

    std::unique_ptr<RegistryTree> m_tree;
};

}  // namespace pikel::simulated
