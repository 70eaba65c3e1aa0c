// Names in folders of the host, found without regard to case.
#include "machine/files/folder_names.h"

#include <dirent.h>

#include "machine/files/host_io.h"
#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

// From this number of names on a folder is kept in mind.
constexpr std::size_t kLargeFolder = 256;

std::string Folded(UINT codePage, std::string_view utf8) {
    return FoldCase(codePage, FromUtf8(codePage, utf8));
}

bool ChangeTime(const std::string& folder, timespec* time) {
    struct stat status {};
    if (stat(folder.c_str(), &status) != 0) {
        return false;
    }
    *time = status.st_mtim;
    return true;
}

}  // namespace

std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    while (const dirent* entry = directory != nullptr ? readdir(directory.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && !PendingFile::IsPendingName(name)) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string FolderNames::Find(const std::string& folder, std::string_view name, UINT codePage) {
    UseCodePage(codePage);
    const std::string wanted = Folded(codePage, name);
    if (const Folder* known = Known(folder)) {
        const auto found = known->names.find(wanted);
        return found != known->names.end() ? found->second : std::string();
    }
    timespec changed{};
    if (!ChangeTime(folder, &changed)) {
        return {};
    }
    std::vector<std::string> names = NamesIn(folder);
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
    timespec changed{};
    const timespec& known = found->second.changed;
    if (!ChangeTime(folder, &changed) || changed.tv_sec != known.tv_sec || changed.tv_nsec != known.tv_nsec) {
        m_large.erase(found);
        return nullptr;
    }
    return &found->second;
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
    if (found != m_names.m_large.end() && !ChangeTime(m_folder, &found->second.changed)) {
        m_names.m_large.erase(found);
    }
}

void FolderNames::Change::Added(std::string_view name) {
    if (m_isKnown) {
        m_names.m_large.at(m_folder).names.insert_or_assign(Folded(m_names.m_codePage, name), std::string(name));
    }
}

}  // namespace pikel::simulated
