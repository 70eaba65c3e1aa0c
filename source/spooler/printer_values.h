// The fixed list of values that belong to a printer's settings: read into a record, and written back from one.
#pragma once

#include "frame/pikel.h"
#include "platform/owned.h"

namespace pikel {

/// The values that were read of a printer: one heap block with an array of entries and, behind it, what they point at.
class RegistryDataBlock {
  public:
    /// Null without entries.
    const PrinterRegistryEntry* Entries() const { return static_cast<const PrinterRegistryEntry*>(m_block.Get()); }
    /// Bytes of the whole block.
    DWORD Size() const { return m_dwSize; }
    DWORD Count() const { return m_dwCount; }

    void Empty() { Store({}, 0, 0); }
    /// Takes a block over.
    void Store(HeapBlock block, DWORD dwSize, DWORD dwCount) {
        m_block = std::move(block);
        m_dwSize = dwSize;
        m_dwCount = dwCount;
    }

  private:
    HeapBlock m_block;
    DWORD m_dwSize = 0;
    DWORD m_dwCount = 0;
};

/// Reads the listed values of a printer. One that can't be read is logged and passed over; those of the other family
/// are so on every call.
/// @param block [out]  emptied first; stays empty when no value is there
/// @return 0; 8 without memory
DWORD ReadPrinterValues(RegistryDataBlock& block, LPCSTR lpszPrinterName);

/// Writes values of a printer, all of them, whatever happens to one.
/// @param pEntries  dwCount entries, or null
/// @return the code of the last entry alone: a failure before it isn't told. 0 without entries.
DWORD SetRegistryData(LPCSTR lpszPrinterName, const PrinterRegistryEntry* pEntries, DWORD dwCount);

}  // namespace pikel
