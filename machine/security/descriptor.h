// The security room: SIDs, descriptors and their texts, the user's token and rights. It stands on the registry, where
// the machine says who its user is.
//
// Security descriptors: owner, group and the two lists of rights, and their bytes in the self-relative form. The
// entries of a list are kept as they are, so that a descriptor with entries of a kind that nobody here knows comes
// through whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/security/sid.h"
#include "platform/types.h"

namespace pikel::simulated {

/// One entry of a list.
struct AccessEntry {
    // Types.
    static constexpr BYTE kAllow = 0;
    static constexpr BYTE kDeny = 1;
    static constexpr BYTE kAudit = 2;
    static constexpr BYTE kAlarm = 3;

    BYTE type = kAllow;
    BYTE flags = 0;
    std::string body;  ///< behind the entry's header; of the types above 32 bits of rights and a SID

    static AccessEntry Make(BYTE type, BYTE flags, ACCESS_MASK rights, const Sid& sid);
    /// Rights and SID of an entry of the types above; nothing for any other entry.
    std::optional<ACCESS_MASK> Rights() const;
    std::optional<Sid> Holder() const;
};

struct AccessList {
    static constexpr std::size_t kMaxSize = 0xFFFC;  ///< bytes with its header: 16 bits, in steps of 4

    BYTE revision = 2;
    std::vector<AccessEntry> entries;

    /// Bytes with its header.
    std::size_t Size() const;
};

struct SecurityDescriptor {
    // Bits of the control word.
    static constexpr WORD kDaclPresent = 0x4;
    static constexpr WORD kSaclPresent = 0x10;
    static constexpr WORD kDaclInheritRequest = 0x100;
    static constexpr WORD kSaclInheritRequest = 0x200;
    static constexpr WORD kDaclInherited = 0x400;
    static constexpr WORD kSaclInherited = 0x800;
    static constexpr WORD kDaclProtected = 0x1000;
    static constexpr WORD kSaclProtected = 0x2000;
    static constexpr WORD kSelfRelative = 0x8000;

    WORD control = 0;
    std::optional<Sid> owner;
    std::optional<Sid> group;
    std::optional<AccessList> dacl;  ///< nothing with kDaclPresent: everybody may do everything
    std::optional<AccessList> sacl;
};

/// The self-relative form. Each list fits into AccessList::kMaxSize.
std::string BytesOf(const SecurityDescriptor& descriptor);

/// Reads a self-relative descriptor; nothing outside the bytes is looked at.
/// @return 0, or 1338 for bytes that are none
DWORD ReadDescriptor(std::string_view bytes, SecurityDescriptor* descriptor);

/// The bytes of a self-relative descriptor at a pointer, as far as its own parts say. A block of the machine's heap
/// bounds them, any other place the largest size that a descriptor can have.
/// @return 0; 1338 for null, for a descriptor with pointers inside, and for parts that lie outside
DWORD DescriptorBytesAt(Machine& machine, const void* pointer, std::string_view* bytes);

/// Puts the parts that `given` has in the place of a descriptor's own.
void Replace(SecurityDescriptor* descriptor, const SecurityDescriptor& given);

}  // namespace pikel::simulated
