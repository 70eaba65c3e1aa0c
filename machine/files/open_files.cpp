// Who holds which file of the machine open, and what each lets others do beside it.
#include "machine/files/open_files.h"

#include <algorithm>
#include <utility>

namespace pikel::simulated {

namespace {

// Specific rights of files, beside the generic ones.
constexpr DWORD kFileReadData = 0x1;
constexpr DWORD kFileWriteData = 0x2;
constexpr DWORD kFileAppendData = 0x4;
constexpr DWORD kFileExecute = 0x20;

}  // namespace

struct OpenFiles::File {
    std::string key;
    std::string location;
    std::vector<const Opening*> openings;
    bool deleteAtEnd = false;
};

DWORD RightsOf(DWORD access) {
    DWORD rights = 0;
    if ((access & (GENERIC_READ | GENERIC_EXECUTE | GENERIC_ALL | kFileReadData | kFileExecute)) != 0) {
        rights |= FILE_SHARE_READ;
    }
    if ((access & (GENERIC_WRITE | GENERIC_ALL | kFileWriteData | kFileAppendData)) != 0) {
        rights |= FILE_SHARE_WRITE;
    }
    if ((access & (DELETE | GENERIC_ALL)) != 0) {
        rights |= FILE_SHARE_DELETE;
    }
    return rights;
}

OpenFiles::Opening::Opening(std::shared_ptr<OpenFiles> table, std::shared_ptr<File> file, DWORD rights, DWORD share,
                            bool isLock)
    : m_table(std::move(table)), m_file(std::move(file)), m_rights(rights), m_share(share), m_isLock(isLock) {
    m_file->openings.push_back(this);
}

OpenFiles::Opening::~Opening() {
    std::erase(m_file->openings, this);
    if (!m_file->openings.empty()) {
        return;
    }
    m_table->m_files.erase(m_file->key);
    if (m_file->deleteAtEnd) {
        m_table->remove(m_file->location);
    }
}

void OpenFiles::Opening::DeleteAtEnd() {
    m_file->deleteAtEnd = true;
}

DWORD OpenFiles::Check(const std::string& key, DWORD rights, DWORD share) const {
    const auto found = m_files.find(key);
    if (found == m_files.end()) {
        return ERROR_SUCCESS;
    }
    const File& file = *found->second;
    if (file.deleteAtEnd) {
        return ERROR_ACCESS_DENIED;
    }
    // Opens that ask for attributes alone disturb nobody.
    const bool refused = std::ranges::any_of(file.openings, [rights, share](const Opening* other) {
        return rights != 0 && other->Rights() != 0 &&
               ((rights & ~other->Share()) != 0 || (other->Rights() & ~share) != 0);
    });
    if (refused) {
        return ERROR_SHARING_VIOLATION;
    }
    const bool locked = std::ranges::any_of(file.openings, [](const Opening* other) { return other->IsLock(); });
    return locked ? ERROR_LOCK_VIOLATION : ERROR_SUCCESS;
}

bool OpenFiles::IsAnyOpenBelow(const std::string& folderKey) const {
    const std::string start = folderKey + "/";
    const auto first = m_files.lower_bound(start);
    return first != m_files.end() && first->first.starts_with(start);
}

std::unique_ptr<OpenFiles::Opening> OpenFiles::Add(const std::string& key, const std::string& location, DWORD rights,
                                                   DWORD share, bool isLock) {
    std::shared_ptr<File>& file = m_files[key];
    if (file == nullptr) {
        file = std::make_shared<File>(File{key, location, {}, false});
    }
    return std::make_unique<Opening>(shared_from_this(), file, rights, share, isLock);
}

void OpenFiles::DeleteAtEnd(const std::string& key) {
    m_files.at(key)->deleteAtEnd = true;
}

void OpenFiles::Rename(const std::string& key, const std::string& newKey, const std::string& newLocation) {
    auto node = m_files.extract(key);
    if (node.empty()) {
        return;
    }
    node.key() = newKey;
    node.mapped()->key = newKey;
    node.mapped()->location = newLocation;
    m_files.insert(std::move(node));
}

DWORD Files::OpenFile::Read(char* buffer, std::size_t size, std::size_t* count) {
    const DWORD code = file->Read(position, buffer, size, count);
    position += *count;
    return code;
}

DWORD Files::OpenFile::Write(std::string_view bytes) {
    DiskEntry entry;
    if (const DWORD code = file->Look(&entry); code != ERROR_SUCCESS) {
        return code;
    }
    const std::uint64_t end = position + bytes.size();
    if (end > entry.size) {
        if (const DWORD code = takeSpace(end - entry.size); code != ERROR_SUCCESS) {
            return code;
        }
    }
    if (const DWORD code = file->Write(position, bytes); code != ERROR_SUCCESS) {
        return code;
    }
    position = end;
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
