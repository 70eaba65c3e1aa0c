// Open handles of the machine.
#include "machine/base/handles.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

namespace pikel::simulated {

namespace {

std::string_view KindName(HandleKind kind) {
    switch (kind) {
        case HandleKind::File:
            return "file";
        case HandleKind::Find:
            return "file search";
        case HandleKind::LegacyFile:
            return "file of OpenFile";
        case HandleKind::RegistryKey:
            return "registry key";
        case HandleKind::Service:
            return "service";
        case HandleKind::Inf:
            return "INF";
        case HandleKind::FileQueue:
            return "file queue";
        case HandleKind::QueueContext:
            return "queue callback context";
        case HandleKind::Printer:
            return "printer";
        case HandleKind::Module:
            return "library";
        case HandleKind::DeviceContext:
            return "device context";
        case HandleKind::NetworkEnumeration:
            return "network enumeration";
        case HandleKind::ComObject:
            return "COM object";
        case HandleKind::Token:
            return "token";
    }
    return "handle";
}

std::uintptr_t Number(const void* handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

void* Handles::Open(HandleKind kind, std::shared_ptr<void> object, std::string description) {
    const std::uintptr_t number = m_next;
    m_open.emplace(number, Entry{kind, std::move(object), std::move(description)});
    m_next += 4;
    return reinterpret_cast<void*>(number);
}

void* Handles::FindObject(HandleKind kind, const void* handle) const {
    const auto found = m_open.find(Number(handle));
    return found != m_open.end() && found->second.kind == kind ? found->second.object.get() : nullptr;
}

bool Handles::Close(HandleKind kind, const void* handle) {
    const auto found = m_open.find(Number(handle));
    if (found == m_open.end() || found->second.kind != kind) {
        char number[32];
        std::snprintf(number, sizeof number, "0x%llx", static_cast<unsigned long long>(Number(handle)));
        std::string note = std::string("close of ") + number + " as " + std::string(KindName(kind));
        if (found == m_open.end()) {
            note += ", which is not open";
        } else {
            note += ", which is a " + std::string(KindName(found->second.kind)) + " " + found->second.description;
        }
        NoteMisuse(std::move(note));
        return false;
    }
    // The object goes after its entry, so that what it does while going sees the handle as closed.
    const std::shared_ptr<void> object = std::move(found->second.object);
    m_open.erase(found);
    return true;
}

std::size_t Handles::OpenCount(HandleKind kind) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(m_open, [kind](const auto& open) { return open.second.kind == kind; }));
}

std::vector<std::string> Handles::Describe() const {
    std::vector<std::pair<std::uintptr_t, const Entry*>> ordered;
    ordered.reserve(m_open.size());
    for (const auto& [number, entry] : m_open) {
        ordered.emplace_back(number, &entry);
    }
    std::ranges::sort(ordered);
    std::vector<std::string> texts;
    texts.reserve(ordered.size());
    for (const auto& [number, entry] : ordered) {
        texts.push_back(std::string(KindName(entry->kind)) + " " + entry->description);
    }
    return texts;
}

}  // namespace pikel::simulated
