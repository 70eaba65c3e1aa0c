// Printer INFs for tests: one text for each era, and their files on a machine.
#pragma once

#include <string>
#include <string_view>

#include "support/machine_test.h"

namespace pikel::testing_support {

/// An INF for Windows 2000 and later with these models:
///   Aurora 500    everything that an INF can tell: monitor, profiles, help, registry entries
///   Aurora Plain  a driver with the least
///   Aurora Lost   its install section is missing
inline constexpr char kAuroraInf[] = R"([Version]
Signature="$Windows NT$"
Provider="Nordlicht"
Class=Printer
ClassGUID={4D36E979-E325-11CE-BFC1-08002BE10318}
DriverVer=03/15/2006,1.2.3.4

[OEM URLS]
%Maker%="http://nordlicht.example"

[Manufacturer]
%Maker%=NORD

[NORD]
"Aurora 500"=A500,NordlichtA500,NordlichtAny
"Aurora Plain"=PLAIN
"Aurora Lost"=LOST,NordlichtLost

[A500]
CopyFiles=A500.Files,A500.Profiles,A500.Old,@NLRES_EN.DLL
DataSection=A500.Data
DataFile=A500.GPD
HelpFile=NLAURORA.HLP
LanguageMonitor="Aurora Monitor,NLMON.DLL"
DefaultDataType=RAW
RetryTimeout=90
NotSelectedTimeout=30
AddReg=A500.Registry

[A500.Data]
DriverFile=NLAURORA.DLL
ConfigFile=NLAURUI.DLL

[A500.Files]
NLAURORA.DLL
A500.GPD
NLAURUI.DLL
NLAURORA.HLP
NLLOCAL.DLL,NLRES_DE.DLL

[A500.Profiles]
NLA500A.ICC

[A500.Old]
NLDISP.ICC

[A500.Registry]
HKLM,"SOFTWARE\Nordlicht\Aurora",Model,,"A500"

[PLAIN]
CopyFiles=PLAIN.Files

[PLAIN.Files]
NLPLAIN.DLL

[DestinationDirs]
DefaultDestDir=66000
A500.Files=66000
A500.Profiles=66003
A500.Old=23
Unknown=12345

[SourceDisksNames]
1=%Disk%,,

[SourceDisksFiles]
NLAURORA.DLL=1
A500.GPD=1
NLAURUI.DLL=1
NLAURORA.HLP=1
NLRES_DE.DLL=1
NLRES_EN.DLL=1
NLA500A.ICC=1
NLDISP.ICC=1
NLMON.DLL=1
NLPLAIN.DLL=1

[Strings]
Maker="Nordlicht"
Disk="Aurora Disk"
)";

/// An INF for the 9x family: the same model, whose directories are those of 9x.
inline constexpr char kAurora98Inf[] = R"([Version]
Signature="$CHICAGO$"
Provider="Nordlicht"
Class=Printer
DriverVer=07/01/1999,4.1

[Manufacturer]
"Nordlicht"=NORD

[NORD]
"Aurora 500"=A500,NordlichtA500
"Aurora Plain"=PLAIN

[A500]
CopyFiles=A500.Files,A500.Profiles
DataFile=A500.DAT
DriverFile=NLAUR9X.DRV
HelpFile=NLAUR9X.HLP
LanguageMonitor="Aurora Monitor,NLMON9X.DLL"
DefaultDataType=EMF
AddReg=A500.Registry

[A500.Files]
NLAUR9X.DRV
A500.DAT
NLAUR9X.HLP
NLMON9X.DLL

[A500.Profiles]
NLA500A.ICC

[A500.Registry]
HKLM,"SOFTWARE\Nordlicht\Aurora",Model,,"A500"

[PLAIN]
CopyFiles=PLAIN.Files

[PLAIN.Files]
NLPLAIN.DRV

[DestinationDirs]
DefaultDestDir=11
A500.Profiles=23

[SourceDisksNames]
1="Aurora Disk",,

[SourceDisksFiles]
NLAUR9X.DRV=1
A500.DAT=1
NLAUR9X.HLP=1
NLMON9X.DLL=1
NLA500A.ICC=1
NLPLAIN.DRV=1
)";

inline constexpr char kPackageFolder[] = "C:\\Package";
inline constexpr char kAuroraPath[] = "C:\\Package\\aurora.inf";

/// Puts the INF of the machine's era, with all its files, into kPackageFolder. A file's bytes are its name.
inline void PutAuroraPackage(simulated::Machine& machine) {
    WriteFileOn(machine, kAuroraPath, machine.Is9x() ? kAurora98Inf : kAuroraInf);
    for (const char* name : {"NLAURORA.DLL", "A500.GPD", "NLAURUI.DLL", "NLAURORA.HLP", "NLRES_DE.DLL", "NLRES_EN.DLL",
                             "NLA500A.ICC", "NLDISP.ICC", "NLMON.DLL", "NLPLAIN.DLL", "NLAUR9X.DRV", "A500.DAT",
                             "NLAUR9X.HLP", "NLMON9X.DLL", "NLPLAIN.DRV"}) {
        WriteFileOn(machine, std::string(kPackageFolder) + "\\" + name, name);
    }
}

/// Puts the INF of Windows 2000 and later with one text of it replaced.
inline void ChangeAuroraInf(simulated::Machine& machine, std::string_view text, std::string_view by) {
    std::string inf = kAuroraInf;
    const std::size_t place = inf.find(text);
    ASSERT_NE(place, std::string::npos) << text;
    WriteFileOn(machine, kAuroraPath, inf.replace(place, text.size(), by));
}

}  // namespace pikel::testing_support
