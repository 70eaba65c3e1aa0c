// The default printer, and the list of devices that programs of old read.
//
//   NT family   HKCU\Software\Microsoft\Windows NT\CurrentVersion: the value Device of the key Windows is
//               "name,winspool,port", and each printer has a value in the keys Devices and PrinterPorts
//   9x family   the bit PRINTER_ATTRIBUTE_DEFAULT of a printer's Attributes; win.ini repeats it as device= of
//               [windows], and each printer has an entry in its sections [devices] and [PrinterPorts]
#pragma once

#include <string>
#include <string_view>

#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

class DefaultPrinter {
  public:
    explicit DefaultPrinter(Machine& machine) : m_machine(machine) {}

    /// Empty when there is none.
    std::string Name() const;
    bool Is(std::string_view name) const;
    void Set(const Printer& printer);

    // What the spooler does to both when printers come and go.
    void Added(const Printer& printer, bool wantsDefault);
    void Changed(const Printer& before, const Printer& after, bool wantsDefault);
    void Removed(const Printer& printer);

  private:
    std::string DeviceOf(const Printer& printer) const;
    std::string DevicePort(const Printer& printer) const;
    std::string FreeNetworkPort() const;
    void ListDevice(const Printer& printer);
    void UnlistDevice(const Printer& printer);
    void SetDeviceText(std::string_view text);
    void MarkIn9xAttributes(std::string_view name);

    Machine& m_machine;
};

}  // namespace pikel::simulated
