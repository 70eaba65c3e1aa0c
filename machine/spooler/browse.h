// Browsing the network through the spooler, NT family: EnumPrintersA with PRINTER_ENUM_NAME at level 1. Without a name
// it lists the print providers, below one of the network's its domains ("<provider>!<domain>") and below these their
// servers ("\\<server>"), and below a server the printers that it shares. The local provider has the machine's own.
#pragma once

#include <optional>
#include <string_view>

#include "machine/base/info_buffer.h"
#include "machine/base/machine.h"

namespace pikel::simulated {

/// The local print provider, spelt as the system spells it.
inline constexpr char kLocalPrintProvider[] = "Windows NT Local Print Providor";

/// Answers an enumeration that browses.
/// @param buffer  checked
/// @return nothing when it asks for printers of this computer, or for what the network doesn't have; else 0, 122, or
///         the code with which the network's provider fails
std::optional<DWORD> AnswerWithBrowseList(Machine& machine, DWORD flags, std::string_view name, DWORD level,
                                          const InfoBuffer& buffer);

}  // namespace pikel::simulated
