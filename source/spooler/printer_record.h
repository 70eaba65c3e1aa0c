// Builds the record of a printer: one heap block that holds everything it points at.
#pragma once

#include "frame/pikel.h"
#include "frame/string_list.h"
#include "spooler/printer_values.h"

namespace pikel {

/// What a record is built from. All of it stays its owner's.
struct PrinterRecordSource {
    const PRINTER_INFO_2A* pLevel2 = nullptr;          ///< required
    const RegistryDataBlock* pValues = nullptr;        ///< or null
    const StringList* pProfiles = nullptr;             ///< or null
    const PrinterShareRecord* pShare = nullptr;        ///< its first seven fields, or null
    const PRINTER_INFO_5A* pLevel5 = nullptr;          ///< for the timeouts of the share, or null
    const PrinterSecurityRecord* pSecurity = nullptr;  ///< or null
};

/// Copies all sources into one zeroed block of the process heap. pSecurityDescriptor is always null; a share record is
/// made when share or level 5 is given.
/// @param ppRecord [out]  the block, freed with PI_KEL_FreeMemory; null on failure
/// @return 0; 87 without level 2 data; 8 without memory
DWORD PackPrinterRecord(PrinterRecord** ppRecord, const PrinterRecordSource& source);

}  // namespace pikel
