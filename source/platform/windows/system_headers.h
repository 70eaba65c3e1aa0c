// The Windows headers, with the macros taken away that would rename the library's own functions.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <winspool.h>
#include <winsvc.h>
#include <setupapi.h>
#include <shlwapi.h>
#include <oleauto.h>
#include <objbase.h>
#include <shlobj.h>
#include <winnetwk.h>
#include <sddl.h>
#include <icm.h>
#include <lmerr.h>
#include <svrapi.h>

#undef GetPrinterData
#undef SetPrinterData
#undef GetDefaultPrinter
#undef SetDefaultPrinter
#undef InstallColorProfile
#undef AddPrinterDriver
#undef DeletePrinterDriver
#undef AddPrinter
#undef CreatePort
#undef FormatMessage
#undef DeletePrinterConnection
#undef AddMonitor
#undef DeleteMonitor
