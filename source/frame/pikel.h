/*
 * pikel - the common support library of a printer-driver installer.
 *
 * The library exports one function, PI_KEL_GetInterface. It hands out a table of 43 operations that an installer calls
 * one at a time, on one thread, in any order:
 *
 *     const PI_KEL_Interface *pikel = PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
 *     pikel->PI_KEL_Initialize();
 *     status = pikel->PI_KEL_AddPrinterDriver(NULL, NULL, 0, 0, record, 0);
 *     pikel->PI_KEL_Shutdown();
 *
 * Text is narrow, in the active code page, NUL terminated. Results are of three kinds:
 *   - status: 0 is success; else the system error code ORed with the operation's prefix (PIKEL_PREFIX_...).
 *   - value:  a plain number that the operation's comment explains.
 *   - none:   always 0.
 * 87 in a status means that a required argument is null, 8 that memory ran out, 120 that the system has no way to do
 * it.
 *
 * Memory that an operation hands out is one block of the process heap that holds all it points at. Give it back whole
 * with PI_KEL_FreeMemory. Records and texts passed in stay the caller's; where an operation changes a record in place,
 * its comment says so.
 *
 * Usable from C99 and C++. On Windows it builds on the system's headers, elsewhere on pikel_types.h.
 */
#ifndef PIKEL_H
#define PIKEL_H

#ifdef _WIN32
#include <windows.h>
#include <winspool.h>
#include <setupapi.h>
#else
#include "pikel_types.h"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The one version of the table that exists. */
#define PIKEL_INTERFACE_VERSION 0x100u

/** Result of an operation: 0, or an error code ORed with a prefix. */
typedef DWORD PiStatus;

/* PiStatusPrefix: what an operation's failure is marked with. The whole 32-bit code is ORed, nothing is masked. */
#define PIKEL_PREFIX_GENERAL 0x90010000u        /* general queries and settings */
#define PIKEL_PREFIX_NETWORK 0x90020000u        /* network resources */
#define PIKEL_PREFIX_PORT 0x900c0000u           /* port creation */
#define PIKEL_PREFIX_DRIVER_ADD 0x900d0000u     /* driver add, printer install and uninstall */
#define PIKEL_PREFIX_PRINTER_ADD 0x900e0000u    /* printer add */
#define PIKEL_PREFIX_DRIVER_DELETE 0x900f0000u  /* driver delete */
#define PIKEL_PREFIX_PRINTER_DELETE 0x90100000u /* printer delete */
#define PIKEL_PREFIX_INF_READ 0x90120000u       /* INF reading */
#define PIKEL_PREFIX_INSTALLED_INF 0x90130000u  /* installed INF lookup */
#define PIKEL_PREFIX_FILE_COPY 0x901b0000u      /* file copying */

/* dwArchitecture of the INF-reading operations: the driver's target system, as PI_KEL_GetInfOsVersion reports it. */
#define PIKEL_ARCHITECTURE_WINDOWS_9X 1u /* "Windows 4.0" */
#define PIKEL_ARCHITECTURE_NT4_X86 2u    /* "Windows NT x86", NT 4 generation */
#define PIKEL_ARCHITECTURE_NT_X86 3u     /* "Windows NT x86", Windows 2000 and later */
#define PIKEL_ARCHITECTURE_IA64 4u       /* "Windows IA64" */
#define PIKEL_ARCHITECTURE_X64 5u        /* "Windows x64" */

/* DriverVersionCode: a driver's generation for the spooler. The Print UI route takes 0x400 as a second spelling of 0.
 */
#define PIKEL_DRIVER_VERSION_9X 0u
#define PIKEL_DRIVER_VERSION_NT4 2u
#define PIKEL_DRIVER_VERSION_2000 3u

/* ProcessorCode. */
#define PIKEL_PROCESSOR_X86 0u
#define PIKEL_PROCESSOR_IA64 1u
#define PIKEL_PROCESSOR_X64 2u

/* copyNameMode: how a file whose source and destination names differ is copied; the two bits may be joined. */
#define PIKEL_COPY_AS_SOURCE_NAME 1u
#define PIKEL_COPY_AS_DESTINATION_NAME 2u

/**
 * What the spooler needs to add one driver. PI_KEL_GetInfInfo builds it; PI_KEL_AddPrinterDriver takes it back as it
 * stands. DriverInfo comes first, so that the record itself serves as a DRIVER_INFO_6.
 */
typedef struct DriverAddRecord {
    DRIVER_INFO_6A DriverInfo;
    MONITOR_INFO_2A MonitorInfo; /**< null or empty pName: the driver has no language monitor */
    DWORD ColorProfileCount;     /**< entries in ColorProfileList */
    LPSTR* ColorProfileList;     /**< file names of colour profiles, or null */
    DWORD NotSelectedTimeout;    /**< milliseconds */
    DWORD RetryTimeout;          /**< milliseconds */
} DriverAddRecord;

/** One value stored under a printer. */
typedef struct PrinterRegistryEntry {
    LPSTR Key; /**< key below the printer, or null for the default key */
    LPSTR ValueName;
    LPBYTE Data; /**< value bytes, or null */
    DWORD Type;  /**< REG_SZ, REG_DWORD and so on */
    DWORD Size;  /**< bytes at Data */
    DWORD Kind;  /**< 0 every system, 1 the 9x family only, 2 the NT family only */
} PrinterRegistryEntry;

/** The share of a printer on the 9x family. */
typedef struct PrinterShareRecord {
    char NetName[13];
    BYTE ShareType;
    WORD Flags;
    char Remark[50];
    char Path[33];
    char ReadWritePassword[9];
    char ReadOnlyPassword[9];
    DWORD DeviceNotSelectedTimeout; /**< milliseconds */
    DWORD TransmissionRetryTimeout; /**< milliseconds */
} PrinterShareRecord;

/** What the NT family keeps beside a printer's level 2 data. */
typedef struct PrinterSecurityRecord {
    LPSTR SecurityDescriptor;       /**< descriptor text; on NT 4.0 the raw descriptor bytes */
    DWORD SecurityDescriptorLength; /**< bytes of the text with its NUL, or of the descriptor */
    DWORD PublishAction;            /**< dwAction of PRINTER_INFO_7, 0 if not read */
    LPDEVMODEA DevMode;             /**< the per-printer DEVMODE of PRINTER_INFO_8, or null */
} PrinterSecurityRecord;

/** A printer. The first 21 fields are those of PRINTER_INFO_2, so the same memory serves the spooler at level 2. */
typedef struct PrinterRecord {
    LPSTR pServerName;
    LPSTR pPrinterName;
    LPSTR pShareName;
    LPSTR pPortName;
    LPSTR pDriverName;
    LPSTR pComment;
    LPSTR pLocation;
    LPDEVMODEA pDevMode;
    LPSTR pSepFile;
    LPSTR pPrintProcessor;
    LPSTR pDatatype;
    LPSTR pParameters;
    PSECURITY_DESCRIPTOR pSecurityDescriptor;
    DWORD Attributes;
    DWORD Priority;
    DWORD DefaultPriority;
    DWORD StartTime;
    DWORD UntilTime;
    DWORD Status;
    DWORD cJobs;
    DWORD AveragePPM;
    DWORD RegistryEntryCount;
    PrinterRegistryEntry* RegistryEntries;
    PrinterShareRecord* ShareRecord;       /**< 9x family, or null */
    PrinterSecurityRecord* SecurityRecord; /**< NT family, or null */
    DWORD ColorProfileCount;
    LPSTR* ColorProfiles; /**< colour profiles associated with the printer */
} PrinterRecord;

/** Second, optional record of PI_KEL_AddPrinter. */
typedef struct AddPrinterOptions {
    DWORD DeviceNotSelectedTimeout; /**< milliseconds; 9x family only */
    DWORD TransmissionRetryTimeout; /**< milliseconds; 9x family only */
    DWORD ColorProfileCount;
    LPSTR* ColorProfiles; /**< profiles to associate with the new printer */
} AddPrinterOptions;

/** One node of the network; an element of the result of PI_KEL_EnumNetResources and its parent argument. */
typedef struct NetResourceRecord {
    DWORD Usage;        /**< dwUsage of NETRESOURCE on the 9x family, Flags of PRINTER_INFO_1 on the NT family */
    DWORD ResourceKind; /**< 1 network, 2 domain, 3 server, 4 printer queue, 5 printer, 6 other share; 0 unknown */
    LPSTR RemoteName;
    LPSTR ShortName;
    LPSTR Comment;
    LPSTR Provider; /**< null on the NT family */
} NetResourceRecord;

/** Where one file of PI_KEL_CopyInfDriverFilesToLocal belongs. */
typedef struct LocalFileRecord {
    char szDirectory[MAX_PATH]; /**< empty when the file has no directory of its own */
    char szFileName[MAX_PATH];
} LocalFileRecord;

/** One file of PI_KEL_EnumDriverFiles. */
typedef struct DriverFileRecord {
    DWORD dwKind;   /**< 1 the driver's main file, 3 its data file, 6 any other file */
    LPSTR lpszName; /**< source name, in the same block */
} DriverFileRecord;

/** The table of operations, in its fixed order. All pointers are valid for the life of the library. */
typedef struct PI_KEL_Interface {
    /** Slot 0. Counted. The first call reads the log configuration and looks at the running system. Always 0. */
    DWORD(WINAPI* PI_KEL_Initialize)(void);

    /** Slot 1. Counted. The call that brings the count to 0 turns the log off. Always 0. */
    DWORD(WINAPI* PI_KEL_Shutdown)(void);

    /** Slot 2. Gives back a block that another operation handed out. Non-zero on success. */
    BOOL(WINAPI* PI_KEL_FreeMemory)(LPVOID block);

    /**
     * Slot 3. Adds a printer driver, with its language monitor and colour profiles.
     * @param infPath, modelName, driverVersion, processor  read only when usePrintUI is non-zero
     * @param record      read only when usePrintUI is 0; its files are already in place
     * @param usePrintUI  non-zero: through the system's Print UI; status 0x900d0057 where there is none
     * @return status, PIKEL_PREFIX_DRIVER_ADD
     */
    PiStatus(WINAPI* PI_KEL_AddPrinterDriver)(LPCSTR infPath, LPCSTR modelName, DWORD driverVersion, DWORD processor,
                                              const DriverAddRecord* record, INT usePrintUI);

    /**
     * Slot 4. Deletes a driver, and with it the monitor and files that no other driver needs.
     * @param profileList      profileCount colour profiles to uninstall, or null
     * @param fileRemovalFlag  read by the Print UI route only
     * @return status, PIKEL_PREFIX_DRIVER_DELETE
     */
    PiStatus(WINAPI* PI_KEL_DeletePrinterDriver)(DWORD driverVersion, LPCSTR driverName, DWORD processor,
                                                 DWORD profileCount, LPSTR* profileList, DWORD fileRemovalFlag,
                                                 DWORD usePrintUI);

    /** Slot 5. 1 when a file of an installed 9x driver is held open, else 0; 0 on every other family. A value. */
    DWORD(WINAPI* PI_KEL_IsDriverFileLoaded)(LPCSTR driverName);

    /**
     * Slot 6. Reads a file's product version as "major.minor", the minor with at least two digits.
     * @param version [out] text; untouched when size bytes don't hold it
     * @return status, PIKEL_PREFIX_GENERAL
     */
    PiStatus(WINAPI* PI_KEL_GetDriverFileVersion)(LPCSTR filePath, LPSTR version, DWORD size);

    /**
     * Slot 7. Compares a file's version with a text. A value: 1 equal, 2 the file is higher, 3 it is lower or can't be
     * read, 87 an argument is null.
     * @param fileVersion [out] the file's version, when size bytes hold it; may be null
     */
    DWORD(WINAPI* PI_KEL_CheckDriverFileVersion)(LPCSTR filePath, LPCSTR versionText, LPSTR fileVersion, DWORD size);

    /**
     * Slot 8. Reads all that a driver add needs from an INF.
     * @param ppRecord [out] one heap block, freed with PI_KEL_FreeMemory; null on failure of the last step
     * @return status, PIKEL_PREFIX_INF_READ; 1359 when the model isn't in the INF
     */
    PiStatus(WINAPI* PI_KEL_GetInfInfo)(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture,
                                        DWORD dwMajorVersion, DWORD dwMinorVersion, DriverAddRecord** ppRecord);

    /**
     * Slot 9. Tells the name of a driver's main file.
     * @param wantDriverFile  non-zero: the DriverFile name; 0: the name under which the source medium holds it
     * @param pdwSize [in, out] bytes at name; receives the bytes needed. A small buffer is no failure.
     * @return status, PIKEL_PREFIX_INF_READ
     */
    PiStatus(WINAPI* PI_KEL_GetDriverFileNameFromInf)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                                      DWORD dwMajorVersion, DWORD dwMinorVersion, DWORD wantDriverFile,
                                                      LPSTR name, LPDWORD pdwSize);

    /**
     * Slot 10. Copies a model's files to where its INF says, through the Setup API file queue, and applies the
     * registry part of its install section.
     * @param queueCallback  gets the queue's notifications, with the default callback's context; null: the default
     * @return status, PIKEL_PREFIX_FILE_COPY. Files copied before a failure stay.
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFiles)(LPCSTR infPath, LPCSTR driverName, PSP_FILE_CALLBACK_A queueCallback,
                                                DWORD dwArchitecture, INT dwMajorVersion, DWORD dwMinorVersion,
                                                HWND ownerWindow, HWND progressWindow);

    /**
     * Slot 11. Lists the models that an INF offers to a system.
     * @param ppList   [out] one heap block: *pdwCount pointers, then the names. Freed with PI_KEL_FreeMemory. Set to
     *                 null first, and also filled after a read that stopped half-way.
     * @param pdwCount [out] number of names
     * @return status, PIKEL_PREFIX_INF_READ
     */
    PiStatus(WINAPI* PI_KEL_GetDriverListFromInf)(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion,
                                                  DWORD dwMinorVersion, LPSTR** ppList, LPDWORD pdwCount);

    /**
     * Slot 12. Places an INF in a folder of the system unless an INF there covers it.
     * @param lpszDir  target folder, or null for the system's INF folder
     * @param dwFlag   Windows 2000 and later: 0 leaves the placing to the system, else a plain copy
     * @return status, PIKEL_PREFIX_FILE_COPY
     */
    PiStatus(WINAPI* PI_KEL_InfFileCopy)(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor,
                                         LPCSTR lpszDir, LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);

    /**
     * Slot 13. Finds the newest installed INF that lists a driver.
     * @param name [out] path; an empty text when none was found; untouched when size bytes don't hold it
     * @return status, PIKEL_PREFIX_INSTALLED_INF; it speaks of the last INF looked at, name tells the outcome
     */
    PiStatus(WINAPI* PI_KEL_GetInstalledInfName)(LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                                 DWORD dwMinorVersion, LPCSTR infFolder, LPCSTR lpszProvider,
                                                 LPCSTR lpszClass, LPSTR name, DWORD size);

    /**
     * Slot 14. Lists the children of a network node.
     * @param parent    a node of an earlier result, or null for the top
     * @param ppRecords [out] one heap block, freed with PI_KEL_FreeMemory; a block also for no children
     * @return status, PIKEL_PREFIX_NETWORK
     */
    PiStatus(WINAPI* PI_KEL_EnumNetResources)(const NetResourceRecord* parent, NetResourceRecord** ppRecords,
                                              LPDWORD pdwCount);

    /**
     * Slot 15. Creates a network printer port through a port SDK library.
     * @param lpSdkPath      path of the SDK library, which exports "CreatePort"
     * @param portName       at most 20 characters
     * @param protocolFlag   0 raw port, else LPR port
     * @param lpQueueName    LPR queue, or null
     * @param byteCountFlag  with an LPR port: count bytes before sending
     * @param result [out]   the SDK's text, when size bytes hold it; may be null
     * @return status, PIKEL_PREFIX_PORT; 1359 when the SDK refuses
     */
    PiStatus(WINAPI* PI_KEL_CreatePort)(LPCSTR lpSdkPath, LPCSTR portName, DWORD protocolFlag, LPCSTR lpQueueName,
                                        INT byteCountFlag, LPSTR result, DWORD size);

    /**
     * Slot 16. Reads all that is known of a printer.
     * @param ppRecord [out] one heap block, freed with PI_KEL_FreeMemory
     * @return status, PIKEL_PREFIX_GENERAL
     */
    PiStatus(WINAPI* PI_KEL_GetPrinter)(LPCSTR printerName, PrinterRecord** ppRecord);

    /** Slot 17. Writes a printer's settings. Only the opening of the printer can fail. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_SetPrinter)(LPCSTR printerName, PrinterRecord* record);

    /**
     * Slot 18. Adds a printer, or connects to a shared one when the name begins with two backslashes.
     * @param record   Changed in place: on the 9x family Attributes, pDatatype and Priority, on NT 4 Attributes for the
     *                 first printer; pDevMode is null after a cancelled connection on Vista with device modes off.
     * @param options  profiles and timeouts of a local printer, or null
     * @return status, PIKEL_PREFIX_PRINTER_ADD
     */
    PiStatus(WINAPI* PI_KEL_AddPrinter)(PrinterRecord* record, const AddPrinterOptions* options);

    /** Slot 19. Deletes a printer and the links of its profiles. Status, PIKEL_PREFIX_PRINTER_DELETE. */
    PiStatus(WINAPI* PI_KEL_DeletePrinter)(LPCSTR printerName, DWORD profileCount, LPSTR* profileList,
                                           DWORD usePrintUI);

    /** Slot 20. 1 when the process may do administrative work, else 0. A value. */
    DWORD(WINAPI* PI_KEL_IsAdministrators)(void);

    /** Slot 21. Creates a shortcut in a folder of the Start menu's programs. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_CreateShortCut)(LPCSTR folderName, LPCSTR linkName, LPCSTR targetPath,
                                            LPCSTR workingDirectory);

    /** Slot 22. Unpacks a cabinet into a folder of at most 260 characters. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_ExtractCabFile)(LPCSTR cabinetPath, LPCSTR outputFolder);

    /** Slot 23. 1 when a file is an INF of the provider and class given (null: any), else 0. A value. */
    DWORD(WINAPI* PI_KEL_IsValidInfFile)(LPCSTR lpszInfFile, LPCSTR lpszProvider, LPCSTR lpszClass);

    /** Slot 24. Tells the dwArchitecture of an INF, 0 for neither family. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_GetInfOsVersion)(LPCSTR infPath, LPDWORD pdwArchitecture);

    /**
     * Slot 25. Expands a model's files into a local folder.
     * @param pdwTotalSize [out] bytes written
     * @param pdwCount     [out] number of records
     * @param ppRecords    [out] one heap block, freed with PI_KEL_FreeMemory
     * @return status, PIKEL_PREFIX_FILE_COPY
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFilesToLocal)(LPCSTR infPath, LPCSTR driverName, LPCSTR localFolder,
                                                       LPDWORD pdwTotalSize, DWORD copyNameMode, LPDWORD pdwCount,
                                                       LocalFileRecord** ppRecords, DWORD dwArchitecture,
                                                       DWORD dwMajorVersion, DWORD dwMinorVersion);

    /** Slot 26. Runs one command line of the system's Print UI. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_RunPrintUI)(LPCSTR commandLine);

    /** Slot 27. Deletes a printer and leaves its 9x share alone. Status, PIKEL_PREFIX_PRINTER_DELETE. */
    PiStatus(WINAPI* PI_KEL_DeletePrinterWithoutShareReg)(LPCSTR printerName);

    /** Slot 28. Reads a text of the Print UI library's string table. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_GetResourceStrFromPrintUI)(DWORD resourceId, LPSTR text, DWORD size);

    /** Slot 29. Installs a printer with its driver through the Print UI. Status, PIKEL_PREFIX_DRIVER_ADD. */
    PiStatus(WINAPI* PI_KEL_InstallPrinterToPrintUI)(LPCSTR infPath, LPCSTR printerName, LPCSTR modelName,
                                                     LPCSTR portName, LPCSTR shareName, LPCSTR spare, DWORD shareFlag);

    /**
     * Slot 30. Deletes a printer and then its driver, unless another printer uses the driver.
     * @return status, PIKEL_PREFIX_DRIVER_ADD; a printer that is gone stays gone when the driver step fails
     */
    PiStatus(WINAPI* PI_KEL_UninstallPrinter)(LPCSTR printerName, LPCSTR driverName, DWORD driverVersion,
                                              DWORD processor, DWORD profileCount, LPSTR* profileList,
                                              DWORD fileRemovalFlag, INT usePrintUI);

    /**
     * Slot 31. Replaces the files of an installed driver, at the next restart where they are in use.
     * @param pdwRestartNeeded [out] 1 when a restart is needed
     * @param stagingFolder    belongs to the operation: emptied before and after
     * @return status, PIKEL_PREFIX_FILE_COPY
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFilesEx)(LPCSTR infPath, LPCSTR driverName, DWORD copyNameMode,
                                                  LPDWORD pdwRestartNeeded, LPCSTR stagingFolder, DWORD dwArchitecture,
                                                  DWORD dwMajorVersion, DWORD dwMinorVersion);

    /** Slot 32. XP generation: copies a driver's files to the folder of its hardware ID. Status, PIKEL_PREFIX_GENERAL.
     */
    PiStatus(WINAPI* PI_KEL_CopyDriverFileToHWIDFolder)(LPCSTR driverName);

    /** Slot 33. Applies the registry part of a model's install section. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_ControlRegistory)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                              DWORD dwMajorVersion, DWORD dwMinorVersion);

    /** Slot 34. Makes a printer the default. Status, PIKEL_PREFIX_GENERAL. */
    PiStatus(WINAPI* PI_KEL_SetDefaultPrinter)(LPCSTR printerName);

    /**
     * Slot 35. Lists a model's files by kind.
     * @param ppRecords [out] one heap block, freed with PI_KEL_FreeMemory
     * @return status, PIKEL_PREFIX_GENERAL; a model without files gives 8
     */
    PiStatus(WINAPI* PI_KEL_EnumDriverFiles)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                             DWORD dwMajorVersion, DWORD dwMinorVersion, DriverFileRecord** ppRecords,
                                             LPDWORD pdwCount);

    /**
     * Slot 36. Reads the customisation marker at the head of an INF.
     * @param pbCustomized [out] 0 or 1
     * @param code         [out] at least 20 bytes; written when customised
     * @param comment      [out] at least 75 bytes; written when customised
     * @return status, PIKEL_PREFIX_GENERAL
     */
    PiStatus(WINAPI* PI_KEL_GetCustomizeInfo)(LPCSTR infPath, LPDWORD pbCustomized, LPSTR code, LPSTR comment);

    /**
     * Slot 37. Sums the expanded sizes of several models' files.
     * @param modelNames     names, each NUL terminated, with one more NUL at the end
     * @param pdwTotalSize   [out] bytes of all distinct files
     * @param pdwSharedSize  [out] bytes of files that further models repeat
     * @return status, PIKEL_PREFIX_FILE_COPY
     */
    PiStatus(WINAPI* PI_KEL_GetCopyDriverFilesSize)(LPCSTR infPath, LPCSTR modelNames, LPDWORD pdwTotalSize,
                                                    LPDWORD pdwSharedSize, DWORD copyNameMode, DWORD dwArchitecture,
                                                    DWORD dwMajorVersion, DWORD dwMinorVersion);

    /** Slot 38. 0: printers are added and set without the caller's DEVMODE; 1: with it (the start value). Always 0. */
    DWORD(WINAPI* PI_KEL_SetEffectiveDevMode)(DWORD flag);

    /**
     * Slot 39. Puts language monitor files into the system directory.
     * @param filePath       source folder
     * @param fileList       names, each closed by "/"
     * @param pdwRebootFlag  [out] 1 when a file can only be replaced at the next start
     * @return status, PIKEL_PREFIX_FILE_COPY
     */
    PiStatus(WINAPI* PI_KEL_CopyMonitorFile)(LPCSTR filePath, LPCSTR fileList, LPDWORD pdwRebootFlag);

    /**
     * Slot 40. Tells the default printer.
     * @param name [out] untouched when there is none; size must exceed the name's length, else 87
     * @return status, PIKEL_PREFIX_GENERAL
     */
    PiStatus(WINAPI* PI_KEL_GetDefaultPrinter)(LPSTR name, DWORD size);

    /** Slot 41. 0x90010001 when the printer is the default, 0 when it isn't, 0x90010057 for a null name. */
    PiStatus(WINAPI* PI_KEL_IsDefaultPrinter)(LPCSTR printerName);

    /**
     * Slot 42. Tells the catalog that an INF names.
     * @param pbExistCAT  [out] 0 or 1
     * @param lpszCATFile [out] catalog's file name, when there is one; may be null, else large enough for the name
     * @return status, PIKEL_PREFIX_GENERAL
     */
    PiStatus(WINAPI* PI_KEL_GetCATFileInfo)(LPCSTR infPath, LPDWORD pbExistCAT, LPSTR lpszCATFile);
} PI_KEL_Interface;

#if defined(_WIN32) || !defined(__GNUC__)
#define PIKEL_EXPORT
#else
#define PIKEL_EXPORT __attribute__((visibility("default")))
#endif

/**
 * The one exported function.
 * @param version  PIKEL_INTERFACE_VERSION
 * @return the table, the same address each time; null for any other version. Touches no state and logs nothing.
 */
PIKEL_EXPORT const PI_KEL_Interface* WINAPI PI_KEL_GetInterface(DWORD version);

/** Type of PI_KEL_GetInterface, for callers that look it up by name. */
typedef const PI_KEL_Interface*(WINAPI* PI_KEL_GetInterfaceFunction)(DWORD version);

#ifdef __cplusplus
}
#endif

#endif /* PIKEL_H */
