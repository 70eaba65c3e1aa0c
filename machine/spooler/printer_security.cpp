// The security descriptors of printers.
#include "machine/spooler/printer_security.h"

#include "machine/security/descriptor.h"
#include "machine/security/descriptor_text.h"

namespace pikel::simulated {

namespace {

constexpr ACCESS_MASK kWriteDac = 0x40000;
constexpr ACCESS_MASK kWriteOwner = 0x80000;

// An entry for the printer, and one that its documents inherit.
constexpr char kOwners[] = "O:BAG:SY";
constexpr char kAdministrators[] = "D:(A;;LCSWSDRCWDWO;;;BA)(A;OIIO;RPWPSDRCWDWO;;;BA)";
constexpr char kPowerUsers[] = "(A;;LCSWSDRCWDWO;;;PU)(A;OIIO;RPWPSDRCWDWO;;;PU)";
constexpr char kEverybody[] = "(A;;SWRC;;;WD)(A;CIIO;RC;;;CO)(A;OIIO;RPWPSDRCWDWO;;;CO)";

ACCESS_MASK RightsFor(const SecurityDescriptor& given) {
    constexpr WORD kLists = SecurityDescriptor::kDaclPresent | SecurityDescriptor::kSaclPresent;
    const bool hasOwners = given.owner.has_value() || given.group.has_value();
    return (hasOwners ? kWriteOwner : 0) | ((given.control & kLists) != 0 ? kWriteDac : 0);
}

}  // namespace

std::string DefaultPrinterSecurity(const Machine& machine) {
    const bool hasPowerUsers = machine.Generation() < Generation::Vista;
    const std::string text = std::string(kOwners) + kAdministrators + (hasPowerUsers ? kPowerUsers : "") + kEverybody;
    SecurityDescriptor descriptor;
    ParseDescriptorText(machine, text, &descriptor);
    return BytesOf(descriptor);
}

DWORD ReplacePrinterSecurity(Machine& machine, ACCESS_MASK granted, const void* given, std::string* bytes) {
    std::string_view givenBytes;
    SecurityDescriptor wanted;
    DWORD code = DescriptorBytesAt(machine, given, &givenBytes);
    if (code == ERROR_SUCCESS) {
        code = ReadDescriptor(givenBytes, &wanted);
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    const ACCESS_MASK needed = RightsFor(wanted);
    if ((granted & needed) != needed) {
        return ERROR_ACCESS_DENIED;
    }
    // A value that somebody damaged in the registry is replaced as a whole.
    SecurityDescriptor own;
    ReadDescriptor(*bytes, &own);
    Replace(&own, wanted);
    *bytes = BytesOf(own);
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
