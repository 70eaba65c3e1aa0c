// A printer driver's package as Windows' own installation reads it: which model lines of an INF count for a system, and
// what the install section of a model says of the driver. Knows Windows' rules alone.
//
// [Manufacturer] names a models section and the systems for which it has forms of its own:
//
//   %Maker% = Section, NTx86.5.1, NTamd64        the forms are [Section.NTx86.5.1] and [Section.NTamd64]
//
// From the XP generation on the form nearest to the system is taken: of its processor, of the highest version that
// isn't above its own, then of its product type and suite. A form names them as NT[processor][.major[.minor[.product
// type[.suite]]]]; what it leaves out holds for all. Without a form that fits, and on older systems, the section itself
// counts. An install section has forms with .NTx86 (and its like) and .NT at their end, which come before the plain one
// on the NT family.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/inf/open_inf.h"
#include "machine/spooler/drivers.h"

namespace pikel::simulated {

/// The system that a driver is for.
struct DriverTarget {
    Environment environment;
    DWORD version = 0;  ///< DRIVER_INFO's cVersion
};

/// A line of a models section.
struct ModelLine {
    std::string manufacturer;
    std::string name;
    std::string section;         ///< install section as the line names it
    std::string installSection;  ///< the form of it that counts
    std::string hardwareId;
};

/// Name of the models section that counts for a system.
/// @param fields  of a [Manufacturer] line, from 1 on
/// @param target  decides about the processor, and with version 0 for a system without forms
std::string ModelsSectionFor(const Machine& machine, const DriverTarget& target,
                             const std::vector<std::string>& fields);

/// Finds a model by its name. Nothing when no section that counts has it.
std::optional<ModelLine> FindModel(OpenInf& inf, const DriverTarget& target, std::string_view name);

/// A driver as an install section describes it.
struct DriverDescription {
    Driver driver;
    std::string monitorFile;  ///< DLL of the driver's language monitor; empty for none
};

/// Reads the driver's record. Dependent files aren't known here: what is copied tells them.
DriverDescription DescribeDriver(OpenInf& inf, const DriverTarget& target, const ModelLine& model);

}  // namespace pikel::simulated
