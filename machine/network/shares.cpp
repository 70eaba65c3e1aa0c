// What the machine shares with other computers, 9x family.
#include "machine/network/shares.h"

#include <algorithm>

#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr char kStartKey[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Network\\LanMan";
constexpr char kMemoryKey[] = "HKLM\\SOFTWARE\\Simulated Network\\Shares";
constexpr BYTE kLastType = 3;
constexpr DWORD kNoSuchPath = 2116;  // NERR_UnknownDevDir

std::string MemoryKeyOf(std::string_view name) {
    return kMemoryKey + ("\\" + std::string(name));
}

Share Read(const Registry& registry, const std::string& key, std::string_view name) {
    Share share;
    share.name = name;
    share.type = static_cast<BYTE>(registry.Number(key, "Type"));
    share.flags = static_cast<WORD>(registry.Number(key, "Flags"));
    share.remark = registry.Text(key, "Remark");
    share.path = registry.Text(key, "Path");
    share.readWritePassword = registry.Text(key, "Read Write Password");
    share.readOnlyPassword = registry.Text(key, "Read Only Password");
    return share;
}

bool IsShareName(std::string_view name) {
    const auto isAllowed = [](char character) {
        return static_cast<unsigned char>(character) >= ' ' &&
               std::string_view("\"/\\[]:|<>+=;,*?").find(character) == std::string_view::npos;
    };
    return !name.empty() && name.size() <= Shares::kLongestName && std::ranges::all_of(name, isAllowed);
}

}  // namespace

std::string Shares::StartKeyOf(std::string_view name) {
    return kStartKey + ("\\" + std::string(name));
}

std::optional<Share> Shares::Find(std::string_view name) const {
    if (!IsShareName(name)) {
        return std::nullopt;
    }
    const Registry& registry = m_machine.Registry();
    // Until the first change the system shares what it started with.
    const std::string folder = registry.KeyExists(kMemoryKey) ? kMemoryKey : kStartKey;
    const std::string key = folder + "\\" + std::string(name);
    return registry.KeyExists(key) ? std::optional(Read(registry, key, name)) : std::nullopt;
}

void Shares::TakeUpStarted() {
    Registry& registry = m_machine.Registry();
    if (!registry.CreateKey(kMemoryKey)) {
        return;
    }
    for (const std::string& name : registry.SubKeys(kStartKey)) {
        Write(Read(registry, StartKeyOf(name), name));
    }
}

void Shares::Write(const Share& share) {
    Registry& registry = m_machine.Registry();
    const std::string key = MemoryKeyOf(share.name);
    registry.SetNumber(key, "Flags", share.flags);
    registry.SetNumber(key, "Type", share.type);
    registry.SetText(key, "Path", share.path);
    registry.SetText(key, "Remark", share.remark);
    registry.SetText(key, "Read Write Password", share.readWritePassword);
    registry.SetText(key, "Read Only Password", share.readOnlyPassword);
}

DWORD Shares::Add(const Share& share) {
    if (!IsShareName(share.name)) {
        return ERROR_INVALID_NAME;
    }
    if (share.type > kLastType) {
        return ERROR_INVALID_PARAMETER;
    }
    if (share.path.empty()) {
        return kNoSuchPath;
    }
    if (Find(share.name)) {
        return NERR_DuplicateShare;
    }
    TakeUpStarted();
    Write(share);
    return ERROR_SUCCESS;
}

DWORD Shares::Change(std::string_view name, const Share& share) {
    const std::optional<Share> before = Find(name);
    if (!before) {
        return NERR_NetNameNotFound;
    }
    if (share.path.empty()) {
        return kNoSuchPath;
    }
    TakeUpStarted();
    Share changed = share;
    changed.name = before->name;
    changed.type = before->type;
    Write(changed);
    return ERROR_SUCCESS;
}

DWORD Shares::Remove(std::string_view name) {
    if (!Find(name)) {
        return NERR_NetNameNotFound;
    }
    TakeUpStarted();
    m_machine.Registry().DeleteKey(MemoryKeyOf(name));
    return ERROR_SUCCESS;
}

void Shares::StartAnew() {
    m_machine.Registry().DeleteKey(kMemoryKey);
}

}  // namespace pikel::simulated
