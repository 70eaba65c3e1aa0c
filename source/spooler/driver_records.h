// Reading the spooler's records of drivers.
#pragma once

#include "frame/string_list.h"
#include "frame/text.h"
#include "platform/owned.h"
#include "spooler/spooler_read.h"

namespace pikel {

/// What the spooler tells as the version of 9x drivers, which count as version 0 here.
inline constexpr DWORD kSpoolerVersion9x = 0x400;

/// Reads the drivers of the local spooler.
/// @param lpszEnvironment  DriverArchitecture, or null for the running system's own
/// @param dwLevel          level of the records, 3 or 6
/// @param drivers [out]    *pdwCount records with their texts, or empty for none
/// @return 0; 8 without memory; else the spooler's code
DWORD EnumDriverRecords(LPCSTR lpszEnvironment, DWORD dwLevel, HeapBlock& drivers, DWORD* pdwCount);

/// Makes version 0 of the version that the spooler tells for 9x drivers.
/// @param Info  DRIVER_INFO_3A or DRIVER_INFO_6A
template <class Info>
void ReplaceSpoolerVersion9x(Info* pDrivers, DWORD dwCount) {
    for (DWORD i = 0; i < dwCount; ++i) {
        if (pDrivers[i].cVersion == kSpoolerVersion9x) {
            pDrivers[i].cVersion = 0;
        }
    }
}

/// Upper-cases a record's file in place, and appends its bare name to a list.
/// @param lpszFile  null and empty are passed over
/// @param pFiles    null: the file is upper-cased alone
void TakeDriverFile(LPSTR lpszFile, StringList* pFiles);

/// The same for the files of a record, in the order of its fields, and for its dependent files behind them.
/// @param Info  DRIVER_INFO_3A or DRIVER_INFO_6A of a block that may be written to
template <class Info>
void TakeDriverFiles(const Info& driver, StringList* pFiles) {
    for (LPSTR lpszFile : {driver.pConfigFile, driver.pDataFile, driver.pDriverPath, driver.pHelpFile}) {
        TakeDriverFile(lpszFile, pFiles);
    }
    for (LPCSTR lpszFile : MultiString(driver.pDependentFiles)) {
        TakeDriverFile(const_cast<LPSTR>(lpszFile), pFiles);
    }
}

/// Upper-cases ASCII letters in place; trail bytes of double-byte characters stay.
void UpperCase(LPSTR lpszText);

}  // namespace pikel
