// Security descriptors.
#include "machine/security/descriptor.h"

#include <algorithm>
#include <cstring>

#include "machine/base/machine.h"

namespace pikel::simulated {

namespace {

constexpr BYTE kRevision = 1;
constexpr std::size_t kAlignment = 4;

/// The fixed part of a self-relative descriptor. Offsets count from its start; 0: the part isn't there.
struct Header {
    BYTE revision;
    BYTE reserved;
    WORD control;
    DWORD owner;
    DWORD group;
    DWORD sacl;
    DWORD dacl;
};
static_assert(sizeof(Header) == 20);

struct ListHeader {
    BYTE revision;
    BYTE reserved;
    WORD size;
    WORD count;
    WORD reserved2;
};
static_assert(sizeof(ListHeader) == 8);

struct EntryHeader {
    BYTE type;
    BYTE flags;
    WORD size;
};
static_assert(sizeof(EntryHeader) == 4);

constexpr std::size_t kLargestDescriptor =
    sizeof(Header) + 2 * (AccessList::kMaxSize + kAlignment) + 2 * SidSize(Sid::kMaxSubAuthorities);

template <class Part>
std::optional<Part> Load(std::string_view bytes, std::size_t at) {
    if (at > bytes.size() || bytes.size() - at < sizeof(Part)) {
        return std::nullopt;
    }
    Part part;
    std::memcpy(&part, bytes.data() + at, sizeof part);
    return part;
}

template <class Part>
void Append(std::string* bytes, const Part& part) {
    bytes->append(reinterpret_cast<const char*>(&part), sizeof part);
}

bool HasKnownForm(BYTE type) {
    return type <= AccessEntry::kAlarm;
}

bool IsPlace(DWORD offset) {
    return offset >= sizeof(Header) && offset % kAlignment == 0;
}

// ---- reading --------------------------------------------------------------------------------------------------------

bool ReadPart(std::string_view bytes, DWORD offset, std::optional<Sid>* sid) {
    if (offset == 0) {
        return true;
    }
    if (!IsPlace(offset) || offset >= bytes.size()) {
        return false;
    }
    *sid = ReadSid(bytes.substr(offset));
    return sid->has_value();
}

/// @param bytes  of the whole list
bool ReadEntries(std::string_view bytes, WORD count, AccessList* list) {
    std::size_t at = sizeof(ListHeader);
    for (WORD i = 0; i < count; ++i) {
        const auto header = Load<EntryHeader>(bytes, at);
        if (!header || header->size < sizeof *header || header->size % kAlignment != 0 ||
            header->size > bytes.size() - at) {
            return false;
        }
        AccessEntry entry{header->type, header->flags,
                          std::string(bytes.substr(at + sizeof *header, header->size - sizeof *header))};
        if (HasKnownForm(entry.type) && !entry.Holder()) {
            return false;
        }
        list->entries.push_back(std::move(entry));
        at += header->size;
    }
    return true;
}

bool ReadPart(std::string_view bytes, DWORD offset, std::optional<AccessList>* list) {
    if (offset == 0) {
        return true;
    }
    const auto header = Load<ListHeader>(bytes, offset);
    if (!IsPlace(offset) || !header || header->revision < 2 || header->revision > 4 || header->size < sizeof *header ||
        header->size % kAlignment != 0 || header->size > bytes.size() - offset) {
        return false;
    }
    list->emplace();
    (*list)->revision = header->revision;
    return ReadEntries(bytes.substr(offset, header->size), header->count, &**list);
}

// ---- the extent of a descriptor -------------------------------------------------------------------------------------

/// End of the part at an offset, as its own header tells; 0 for one that isn't there, nothing for one beyond the limit.
std::optional<std::size_t> EndOfPart(const char* start, std::size_t limit, DWORD offset, bool isList) {
    if (offset == 0) {
        return 0;
    }
    // What tells the size stands in the first four bytes of either.
    if (offset > limit || limit - offset < sizeof(EntryHeader)) {
        return std::nullopt;
    }
    std::size_t size = 0;
    if (isList) {
        WORD listSize = 0;
        std::memcpy(&listSize, start + offset + offsetof(ListHeader, size), sizeof listSize);
        size = listSize;
    } else {
        size = SidSize(static_cast<BYTE>(start[offset + 1]));
    }
    return size <= limit - offset ? std::optional(offset + size) : std::nullopt;
}

}  // namespace

// ---- entries and lists ----------------------------------------------------------------------------------------------

AccessEntry AccessEntry::Make(BYTE type, BYTE flags, ACCESS_MASK rights, const Sid& sid) {
    AccessEntry entry{type, flags, {}};
    Append(&entry.body, rights);
    entry.body += BytesOf(sid);
    return entry;
}

std::optional<ACCESS_MASK> AccessEntry::Rights() const {
    return HasKnownForm(type) ? Load<ACCESS_MASK>(body, 0) : std::nullopt;
}

std::optional<Sid> AccessEntry::Holder() const {
    const bool hasOne = HasKnownForm(type) && body.size() > sizeof(ACCESS_MASK);
    return hasOne ? ReadSid(std::string_view(body).substr(sizeof(ACCESS_MASK))) : std::nullopt;
}

std::size_t AccessList::Size() const {
    std::size_t size = sizeof(ListHeader);
    for (const AccessEntry& entry : entries) {
        size += sizeof(EntryHeader) + entry.body.size();
    }
    return size;
}

namespace {

std::string BytesOf(const AccessList& list) {
    std::string bytes;
    Append(&bytes,
           ListHeader{list.revision, 0, static_cast<WORD>(list.Size()), static_cast<WORD>(list.entries.size()), 0});
    for (const AccessEntry& entry : list.entries) {
        Append(&bytes,
               EntryHeader{entry.type, entry.flags, static_cast<WORD>(sizeof(EntryHeader) + entry.body.size())});
        bytes += entry.body;
    }
    return bytes;
}

}  // namespace

// ---- descriptors ----------------------------------------------------------------------------------------------------

std::string BytesOf(const SecurityDescriptor& descriptor) {
    Header header{kRevision, 0, static_cast<WORD>(descriptor.control | SecurityDescriptor::kSelfRelative), 0, 0, 0, 0};
    std::string parts;
    auto put = [&parts](const auto& part, DWORD* offset) {
        if (part) {
            *offset = static_cast<DWORD>(sizeof(Header) + parts.size());
            parts += BytesOf(*part);
        }
    };
    // In the order of Windows' own.
    put(descriptor.sacl, &header.sacl);
    put(descriptor.dacl, &header.dacl);
    put(descriptor.owner, &header.owner);
    put(descriptor.group, &header.group);
    std::string bytes;
    Append(&bytes, header);
    return bytes + parts;
}

DWORD ReadDescriptor(std::string_view bytes, SecurityDescriptor* descriptor) {
    const auto header = Load<Header>(bytes, 0);
    if (!header || header->revision != kRevision || (header->control & SecurityDescriptor::kSelfRelative) == 0) {
        return ERROR_INVALID_SECURITY_DESCR;
    }
    SecurityDescriptor read;
    read.control = header->control;
    const bool hasDacl = (header->control & SecurityDescriptor::kDaclPresent) != 0;
    const bool hasSacl = (header->control & SecurityDescriptor::kSaclPresent) != 0;
    if (!ReadPart(bytes, header->owner, &read.owner) || !ReadPart(bytes, header->group, &read.group) ||
        (hasDacl && !ReadPart(bytes, header->dacl, &read.dacl)) ||
        (hasSacl && !ReadPart(bytes, header->sacl, &read.sacl))) {
        return ERROR_INVALID_SECURITY_DESCR;
    }
    *descriptor = std::move(read);
    return ERROR_SUCCESS;
}

DWORD DescriptorBytesAt(Machine& machine, const void* pointer, std::string_view* bytes) {
    if (pointer == nullptr) {
        return ERROR_INVALID_SECURITY_DESCR;
    }
    const std::size_t blockSize = machine.Heap().Size(pointer);
    const std::size_t limit = blockSize != 0 ? std::min(blockSize, kLargestDescriptor) : kLargestDescriptor;
    const auto* start = static_cast<const char*>(pointer);
    const auto header = Load<Header>({start, limit}, 0);
    if (!header || header->revision != kRevision || (header->control & SecurityDescriptor::kSelfRelative) == 0) {
        return ERROR_INVALID_SECURITY_DESCR;
    }
    std::size_t size = sizeof(Header);
    const struct {
        DWORD offset;
        bool isList;
    } parts[] = {{header->owner, false}, {header->group, false}, {header->sacl, true}, {header->dacl, true}};
    for (const auto& part : parts) {
        const std::optional<std::size_t> end = EndOfPart(start, limit, part.offset, part.isList);
        if (!end) {
            return ERROR_INVALID_SECURITY_DESCR;
        }
        size = std::max(size, *end);
    }
    *bytes = std::string_view(start, size);
    return ERROR_SUCCESS;
}

void Replace(SecurityDescriptor* descriptor, const SecurityDescriptor& given) {
    constexpr WORD kOfDacl = SecurityDescriptor::kDaclPresent | SecurityDescriptor::kDaclInheritRequest |
                             SecurityDescriptor::kDaclInherited | SecurityDescriptor::kDaclProtected;
    constexpr WORD kOfSacl = SecurityDescriptor::kSaclPresent | SecurityDescriptor::kSaclInheritRequest |
                             SecurityDescriptor::kSaclInherited | SecurityDescriptor::kSaclProtected;
    auto takeControl = [&](WORD bits) {
        descriptor->control = static_cast<WORD>((descriptor->control & ~bits) | (given.control & bits));
    };
    if (given.owner) {
        descriptor->owner = given.owner;
    }
    if (given.group) {
        descriptor->group = given.group;
    }
    if ((given.control & SecurityDescriptor::kDaclPresent) != 0) {
        descriptor->dacl = given.dacl;
        takeControl(kOfDacl);
    }
    if ((given.control & SecurityDescriptor::kSaclPresent) != 0) {
        descriptor->sacl = given.sacl;
        takeControl(kOfSacl);
    }
}

}  // namespace pikel::simulated
