// What printers keep beside their settings: values in keys below the printer's own. "PrinterDriverData" is the key of
// the calls that name none.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

class PrinterData {
  public:
    static constexpr std::string_view kDriverData = "PrinterDriverData";

    /// @param printer  name of a local printer
    PrinterData(Machine& machine, std::string_view printer) : m_machine(machine), m_printer(printer) {}

    /// @param key  below the printer's own; may go down several levels
    /// @return 0; 87 for an empty name of key or value, or a key that can't be
    DWORD Set(std::string_view key, std::string_view value, DWORD type, std::string_view data);
    /// @return null when there is none
    const RegistryValue* Get(std::string_view key, std::string_view value) const;

  private:
    std::string KeyOf(std::string_view key) const;

    Machine& m_machine;
    std::string m_printer;
};

}  // namespace pikel::simulated
