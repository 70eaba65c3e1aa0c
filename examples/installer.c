/*
 * A small installer: from an INF to a default printer, with nothing but the library's table. Copy it and make it yours.
 *
 *     installer LIBRARY INF MODEL PRINTER PORT [SDK]
 *
 *     LIBRARY  pikel.dll (Windows) or libpikel.so (Linux, over the simulated machine that PIKEL_MACHINE names)
 *     INF      the printer INF, with the driver's files beside it
 *     MODEL    a model that the INF offers to this system
 *     PRINTER  name of the new printer
 *     PORT     a port that exists, or the name of a new one if SDK is given
 *     SDK      a port SDK library, which creates the port
 *
 * Exit code 0 when all is done, 1 when an operation failed, 2 for wrong arguments.
 */
#include <stdio.h>
#include <string.h>

#include "pikel.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

/* ---- the library ------------------------------------------------------------------------------------------------- */

static const PI_KEL_Interface* LoadPikel(const char* path) {
    PI_KEL_GetInterfaceFunction getInterface = NULL;
#ifdef _WIN32
    HMODULE module = LoadLibraryA(path);
    if (module != NULL) {
        FARPROC found = GetProcAddress(module, "PI_KEL_GetInterface");
        memcpy(&getInterface, &found, sizeof getInterface);
    }
#else
    void* module = dlopen(path, RTLD_NOW);
    if (module != NULL) {
        void* found = dlsym(module, "PI_KEL_GetInterface");
        memcpy(&getInterface, &found, sizeof getInterface);
    }
#endif
    return getInterface == NULL ? NULL : getInterface(PIKEL_INTERFACE_VERSION);
}

/* Says how a step went; the low part of a status is the system's error code. */
static int Succeeded(const char* step, PiStatus status) {
    printf("%-28s 0x%08lx\n", step, (unsigned long)status);
    fflush(stdout);
    return status == 0;
}

/* ---- the system for which the INF is read ------------------------------------------------------------------------ */

typedef struct Target {
    DWORD architecture;
    DWORD major;
    DWORD minor;
} Target;

#ifdef _WIN32
static Target TargetOfThisSystem(void) {
    Target target;
    OSVERSIONINFOA version;
    SYSTEM_INFO system;
    memset(&version, 0, sizeof version);
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExA(&version);
    GetSystemInfo(&system);
    target.major = version.dwMajorVersion;
    target.minor = version.dwMinorVersion;
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) {
        target.architecture = PIKEL_ARCHITECTURE_WINDOWS_9X;
    } else if (version.dwMajorVersion < 5) {
        target.architecture = PIKEL_ARCHITECTURE_NT4_X86;
    } else if (system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64) {
        target.architecture = PIKEL_ARCHITECTURE_X64;
    } else {
        target.architecture = PIKEL_ARCHITECTURE_NT_X86;
    }
    return target;
}
#else
/* The simulated machine is an XP here; a real tool would ask it. */
static Target TargetOfThisSystem(void) {
    Target target = {PIKEL_ARCHITECTURE_NT_X86, 5, 1};
    return target;
}
#endif

/* ---- the steps --------------------------------------------------------------------------------------------------- */

/* Nobody is there to put in another disk, so a file that can't be copied ends the copying. */
static UINT CALLBACK OnFile(PVOID context, UINT notification, UINT_PTR param1, UINT_PTR param2) {
    (void)context;
    (void)param2;
    switch (notification) {
        case SPFILENOTIFY_STARTCOPY:
            printf("  %s\n", ((const FILEPATHS_A*)param1)->Target);
            return FILEOP_DOIT;
        case SPFILENOTIFY_COPYERROR:
        case SPFILENOTIFY_DELETEERROR:
        case SPFILENOTIFY_RENAMEERROR:
            return FILEOP_ABORT;
        default:
            return FILEOP_DOIT;
    }
}

static int AddDriver(const PI_KEL_Interface* pikel, const char* inf, const char* model, Target target,
                     const DriverAddRecord* record) {
    return Succeeded("copy files", pikel->PI_KEL_CopyInfDriverFiles(inf, model, OnFile, target.architecture,
                                                                    (INT)target.major, target.minor, NULL, NULL)) &&
           Succeeded("add driver", pikel->PI_KEL_AddPrinterDriver(NULL, NULL, 0, 0, record, 0));
}

static int AddNewPrinter(const PI_KEL_Interface* pikel, const char* name, const char* port,
                         const DriverAddRecord* driver) {
    static char processor[] = "winprint";
    static char datatype[] = "RAW";
    PrinterRecord printer;
    AddPrinterOptions options;
    memset(&printer, 0, sizeof printer);
    printer.pPrinterName = (LPSTR)name;
    printer.pPortName = (LPSTR)port;
    printer.pDriverName = driver->DriverInfo.pName;
    printer.pPrintProcessor = processor;
    printer.pDatatype = datatype;
    options.DeviceNotSelectedTimeout = driver->NotSelectedTimeout;
    options.TransmissionRetryTimeout = driver->RetryTimeout;
    options.ColorProfileCount = driver->ColorProfileCount;
    options.ColorProfiles = driver->ColorProfileList;
    return Succeeded("add printer", pikel->PI_KEL_AddPrinter(&printer, &options));
}

static int Install(const PI_KEL_Interface* pikel, char** arguments, int count) {
    const char *inf = arguments[0], *model = arguments[1], *printer = arguments[2], *port = arguments[3];
    Target target = TargetOfThisSystem();
    DriverAddRecord* record = NULL;
    int done =
        Succeeded("read INF",
                  pikel->PI_KEL_GetInfInfo(inf, model, target.architecture, target.major, target.minor, &record)) &&
        AddDriver(pikel, inf, model, target, record) &&
        (count < 5 || Succeeded("create port", pikel->PI_KEL_CreatePort(arguments[4], port, 0, NULL, 0, NULL, 0))) &&
        AddNewPrinter(pikel, printer, port, record) &&
        Succeeded("make it the default", pikel->PI_KEL_SetDefaultPrinter(printer));
    if (record != NULL) {
        pikel->PI_KEL_FreeMemory(record);
    }
    return done;
}

int main(int argc, char** argv) {
    const PI_KEL_Interface* pikel;
    int done;
    if (argc < 6 || argc > 7) {
        fprintf(stderr, "usage: installer LIBRARY INF MODEL PRINTER PORT [SDK]\n");
        return 2;
    }
    pikel = LoadPikel(argv[1]);
    if (pikel == NULL) {
        fprintf(stderr, "installer: can't load %s\n", argv[1]);
        return 1;
    }
    pikel->PI_KEL_Initialize();
    done = Install(pikel, argv + 2, argc - 2);
    pikel->PI_KEL_Shutdown();
    return done ? 0 : 1;
}
