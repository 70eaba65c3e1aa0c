// Security descriptors as text, in the descriptor definition language of Windows 2000 and later:
//
//   O:owner G:group D:flags(type;flags;rights;object;inherited object;holder)... S:flags(...)...
//
// without the blanks. List flags are P, AR and AI; types A, D, AU and AL; entry flags CI, OI, NP, IO, ID, SA and FA;
// rights a number, or letters in pairs; owner, group and holder two letters or S-1-... . Entries for objects of a
// directory have no place here.
#pragma once

#include <string>
#include <string_view>

#include "machine/security/descriptor.h"

namespace pikel::simulated {

/// @param parts  owner 1, group 2, DACL 4, SACL 8: those to show, as far as the descriptor has them
/// @return 0, or 1336 for a list with an entry that has no text
DWORD WriteDescriptorText(const Machine& machine, const SecurityDescriptor& descriptor, DWORD parts, std::string* text);

/// @return 0; 1337 for an owner, group or holder that is no SID; 1336 for a list that is wrong otherwise, or too long;
///         87 for what is no part, and for a part that comes twice
DWORD ParseDescriptorText(const Machine& machine, std::string_view text, SecurityDescriptor* descriptor);

}  // namespace pikel::simulated
