// The colour room: colour management, and what GDI tells of profiles. It stands on the spooler, as a printer's profiles
// are part of its data.
//
// Colour profiles of the machine.
//
//   files        the colour folder: SYSTEM\COLOR on the 9x family, system32\spool\drivers\color from Windows 2000 on
//   installed    a value with the file's name in the key of the profile's device class ("prtr", "mntr", ...) below
//                HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\ICM on the 9x family, and below the same key of
//                "Windows NT" elsewhere; its bytes are the header's manufacturer, model and attributes. A fresh machine
//                has none.
//   linked       the multi-string Files of a printer, in its key CopyFiles\ICM; on the 9x family in PrinterDriverData
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"

namespace pikel::simulated {

class ColourProfiles {
  public:
    explicit ColourProfiles(Machine& machine) : m_machine(machine) {}

    /// The colour folder, without a backslash at its end.
    std::string Directory() const;
    bool IsInstalled(std::string_view name) const;

    /// Copies a profile into the colour folder and registers it.
    /// @param profile  a path, or the name of a file in the colour folder or else in the own drivers' folder
    /// @return 87 for an empty name; 2 for a missing file; 2011 for a file that is no profile; 183 for a profile that
    ///         is installed; else what a file operation gave
    DWORD Install(std::string_view profile);
    /// @return 2016 for a profile that isn't installed; with deleteFile also what deleting the file gave
    DWORD Uninstall(std::string_view profile, bool deleteFile);

    /// Profiles that are linked to a local printer, names without folders.
    std::vector<std::string> LinkedTo(std::string_view printer) const;
    /// @return 2016 for a profile that isn't installed; 1801 for an unknown printer; 183 for a link that is there
    DWORD Link(std::string_view profile, std::string_view printer);
    /// @return 1801 for an unknown printer; 2015 for a profile that isn't linked to it
    DWORD Unlink(std::string_view profile, std::string_view printer);

  private:
    std::string RegistryKey() const;
    std::optional<std::string> KeyOfInstalled(std::string_view name) const;
    std::string NameOf(std::string_view profile) const;
    std::string Locate(std::string_view profile) const;
    std::string_view LinksKey() const;
    void WriteLinks(std::string_view printer, const std::vector<std::string>& names);
    DWORD CheckPrinter(std::string_view printer) const;

    Machine& m_machine;
};

}  // namespace pikel::simulated
