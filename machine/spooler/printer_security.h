// The security descriptors of printers, NT family: the value Security of a printer's key.
#pragma once

#include <string>

#include "machine/base/machine.h"

namespace pikel::simulated {

/// The descriptor of a new printer: administrators manage it, everybody prints, and who prints manages the document.
/// Before Vista power users manage printers as well.
std::string DefaultPrinterSecurity(const Machine& machine);

/// Puts the parts of a caller's descriptor in the place of a printer's own.
/// @param granted  rights of the handle: WRITE_DAC for the lists, WRITE_OWNER for owner and group
/// @param given    self-relative
/// @param bytes    [in, out] the printer's; as it was on failure
/// @return 0; 1338 for no descriptor; 5 without the rights
DWORD ReplacePrinterSecurity(Machine& machine, ACCESS_MASK granted, const void* given, std::string* bytes);

}  // namespace pikel::simulated
