// Names in folders of a disk, found without regard to case.
#include "machine/files/folder_names.h"

#include <utility>
#include <vector>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

// From this number of names on a folder is kept in mind.
constexpr std::size_t kLargeFolder = 256;

std::string Folded(UINT codePage, std::string_view utf8) {
    return FoldCase(codePage, FromUtf8(codePage, utf8));
}

}  // namespace

std::string FolderNames::Find(const std::string& folder, std::string_view name, UINT codePage) {
    UseCodePage(codePage);
    const std::string wanted = Folded(codePage, name);
    if (const Folder* known = Known(folder)) {
        const auto found = known->names.find(wanted);
        return found != known->names.end() ? found->second : std::string();
    }
    FILETIME changed{};
    if (!ChangeTime(folder, &changed)) {
        return {};
    }
    std::vector<std::string> names = m_disk.Names(folder);
    if (names.size() >= kLargeFolder) {
        Folder& large = m_large[folder];
        large.changed = changed;
        for (std::string& stored : names) {
            std::string folded = Folded(codePage, stored);
            large.names.emplace(std::move(folded), std::move(stored));
        }
        const auto found = large.names.find(wanted);
        return found != large.names.end() ? found->second : std::string();
    }
    for (std::string& stored : names) {
        if (Folded(codePage, stored) == wanted) {
            return std::move(stored);
        }
    }
    return {};
}

FolderNames::Folder* FolderNames::Known(const std::string& folder) {
    const auto found = m_large.find(folder);
    if (found == m_large.end()) {
        return nullptr;
    }
    FILETIME changed{};
    const FILETIME& known = found->second.changed;
    if (!ChangeTime(folder, &changed) || changed.dwLowDateTime != known.dwLowDateTime ||
        changed.dwHighDateTime != known.dwHighDateTime) {
        m_large.erase(found);
        return nullptr;
    }
    return &found->second;
}

bool FolderNames::ChangeTime(const std::string& folder, FILETIME* time) const {
    DiskEntry entry;
    if (m_disk.Look(folder, &entry) != ERROR_SUCCESS) {
        return false;
    }
    *time = entry.written;
    return true;
}

void FolderNames::UseCodePage(UINT codePage) {
    if (m_codePage != codePage) {
        m_large.clear();
        m_codePage = codePage;
    }
}

FolderNames::Change::Change(FolderNames& names, std::string_view folder)
    : m_names(names), m_folder(folder), m_isKnown(names.Known(m_folder) != nullptr) {}

FolderNames::Change::~Change() {
    const auto found = m_isKnown ? m_names.m_large.find(m_folder) : m_names.m_large.end();
    if (found != m_names.m_large.end() && !m_names.ChangeTime(m_folder, &found->second.changed)) {
        m_names.m_large.erase(found);
    }
}

void FolderNames::Change::Added(std::string_view name) {
    if (m_isKnown) {
        m_names.m_large.at(m_folder).names.insert_or_assign(Folded(m_names.m_codePage, name), std::string(name));
    }
}

}  // namespace pikel::simulated
