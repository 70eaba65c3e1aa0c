// The rules by which the spooler's local printers come, change and go.
#pragma once

#include <string>
#include <string_view>

#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

class Printers : public PrinterStore {
  public:
    using PrinterStore::PrinterStore;

    /// Adds a printer. The first one becomes the default printer: on the 9x family and from Windows 2000 on by itself,
    /// on NT 4 when the attribute for it is given.
    /// @return 0, or a code of Check; 1802 for a name that is taken
    DWORD Add(Printer printer);
    /// Gives a printer other settings, and another name with them.
    /// @param name  name so far
    /// @return 0, or a code of Check; 1905 when it is gone; 1802 for a new name that is taken
    DWORD Change(std::string_view name, Printer printer);
    /// @return false when there is none
    bool Remove(std::string_view name);
    /// Sets status bits, which Change leaves alone.
    void SetStatus(std::string_view name, DWORD status);
    /// @param security  bytes of a self-relative descriptor
    void SetSecurity(std::string_view name, std::string_view security);
    /// @param devMode  bytes; empty: what the driver gives a new printer
    void SetDevMode(std::string_view name, std::string_view devMode);

    /// Longest name: 220 characters on the NT family, 31 on the 9x family.
    std::size_t LongestName() const;

  private:
    DWORD Check(const Printer& printer) const;
    DWORD CheckName(std::string_view name) const;
    bool IsPrintProcessor(std::string_view name) const;
    bool TakesDatatype(std::string_view datatype) const;
    void CompleteNew(Printer& printer) const;
};

}  // namespace pikel::simulated
