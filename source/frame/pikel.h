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
 * In a status, 87 means that a required argument is null, 8 that memory ran out, 120 that the system has no way to do
 * it, 1359 that something went wrong that has no code, or that an INF lacks what was asked for. The codes that an
 * operation's comment lists are without the prefix. Other codes are those of the system call that failed.
 *
 * An out parameter is written on success; what a failure writes is told with it, and without a word it is untouched.
 *
 * In the operations that read an INF, dwArchitecture, dwMajorVersion and dwMinorVersion tell the system for which it is
 * read: one of PIKEL_ARCHITECTURE_..., and the version numbers as the system tells them (5 and 1 for Windows XP).
 *
 * Memory that an operation hands out is one block of the process heap that holds all it points at. Give it back whole
 * with PI_KEL_FreeMemory. Records and texts passed in stay the caller's; where an operation changes a record in place,
 * its comment says so.
 *
 * Usable from C89 and C++98 on. On Windows it builds on the system's headers, elsewhere on pikel_types.h.
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
    /**
     * Slot 0. Counted. The first call reads the log configuration and looks at the running system; the others only
     * count.
     * @return always 0
     */
    DWORD(WINAPI* PI_KEL_Initialize)(void);

    /**
     * Slot 1. Counted. The call that brings the count to 0 turns the log off. A call without an Initialize before it
     * spoils the count: the next Initialize does nothing then.
     * @return always 0
     */
    DWORD(WINAPI* PI_KEL_Shutdown)(void);

    /**
     * Slot 2. Gives back a block that another operation handed out, with all that it holds.
     * @param block  as the operation gave it; afterwards neither it nor what it points at may be read
     * @return non-zero on success, 0 for what is no block of the process heap
     */
    BOOL(WINAPI* PI_KEL_FreeMemory)(LPVOID block);

    /**
     * Slot 3. Adds a printer driver, with its language monitor and colour profiles. A profile that fails doesn't fail
     * the add. Nothing is undone on failure: a monitor that was registered stays, and so do the files.
     *
     * A caller who fills the record himself fills in DriverInfo cVersion, pName, pEnvironment (PI_KEL_GetInfInfo writes
     * "Windows 4.0", "Windows NT x86", "Windows IA64" or "Windows x64"), pDriverPath, pDataFile and pConfigFile, all
     * three full paths of files that are in place in the driver directory, and, where the driver has them, pHelpFile (a
     * full path), pDependentFiles (bare names, each NUL terminated, with one more NUL at the end), pMonitorName and
     * pDefaultDataType. The fields from pszzPreviousNames on count where the spooler takes level 6: on Windows Me, and
     * from Windows 2000 on. A driver with a language monitor has its name, environment and DLL in MonitorInfo. All else
     * is 0. On Windows 2000 and later the files that the record names are deleted after a successful add: the spooler
     * has copied them.
     * @param infPath        full path of the INF, its files beside it. Read only when usePrintUI is non-zero.
     * @param modelName      as the INF writes it. Likewise.
     * @param driverVersion  PIKEL_DRIVER_VERSION_... Likewise.
     * @param processor      PIKEL_PROCESSOR_... Likewise.
     * @param record         stays the caller's and isn't changed. Read only when usePrintUI is 0; required then, and so
     *                       is its DriverInfo.pName.
     * @param usePrintUI     non-zero: through the system's Print UI
     * @return status, PIKEL_PREFIX_DRIVER_ADD. 87: a null record or name; with usePrintUI also a system without Print
     *         UI (before Windows 2000), or a version without a name. Else the spooler's code for the monitor or the
     *         driver, or the code that the Print UI left.
     */
    PiStatus(WINAPI* PI_KEL_AddPrinterDriver)(LPCSTR infPath, LPCSTR modelName, DWORD driverVersion, DWORD processor,
                                              const DriverAddRecord* record, INT usePrintUI);

    /**
     * Slot 4. Deletes a driver, and with it the language monitor, the files and the colour profiles that nobody else
     * needs. What is gone before a failure stays gone. A driver file that can't be deleted stays, and is no failure; a
     * profile that can't be deleted is one.
     * @param driverVersion    PIKEL_DRIVER_VERSION_...
     * @param driverName       name of the driver. Required.
     * @param processor        PIKEL_PROCESSOR_...
     * @param profileCount     entries in profileList
     * @param profileList      file names of colour profiles to uninstall; null for none
     * @param fileRemovalFlag  with usePrintUI, 0 leaves the language monitor and its file; not read otherwise
     * @param usePrintUI       non-zero: through the system's Print UI
     * @return status, PIKEL_PREFIX_DRIVER_DELETE. 87: a null name, an empty one with usePrintUI, or a system without
     *         Print UI. Else the code of the step that failed: 3001 for a driver that a printer uses.
     */
    PiStatus(WINAPI* PI_KEL_DeletePrinterDriver)(DWORD driverVersion, LPCSTR driverName, DWORD processor,
                                                 DWORD profileCount, LPSTR* profileList, DWORD fileRemovalFlag,
                                                 DWORD usePrintUI);

    /**
     * Slot 5. Tells whether a program holds a file of an installed driver open. On the 9x family alone.
     * @param driverName  name of the driver; null answers 0
     * @return a value: 1 a file is held, 0 none is, the driver isn't known, or the family is another one
     */
    DWORD(WINAPI* PI_KEL_IsDriverFileLoaded)(LPCSTR driverName);

    /**
     * Slot 6. Reads a file's product version as "major.minor", the minor with at least two digits.
     * @param filePath      full path. Required.
     * @param version [out] the text; untouched on failure, and when size bytes don't hold it with its NUL. May be null.
     * @param size          bytes at version; 260 are always enough
     * @return status, PIKEL_PREFIX_GENERAL. 0 also for a text that didn't fit; 87 a null path; 8 no memory; 122 a
     *         version text of 260 bytes or more; else the system's code for a file without a version resource.
     */
    PiStatus(WINAPI* PI_KEL_GetDriverFileVersion)(LPCSTR filePath, LPSTR version, DWORD size);

    /**
     * Slot 7. Compares a file's product version with a text, number by number: 1.10 is higher than 1.9.
     * @param filePath          full path. Required.
     * @param versionText       what it is compared with, such as "1.2". Required.
     * @param fileVersion [out] the file's version, when it could be read and size bytes hold it; else untouched. May be
     *                          null.
     * @param size              bytes at fileVersion
     * @return a value: 1 the file's version is equal, 2 it is higher, 3 it is lower or can't be read, 87 a required
     *         argument is null
     */
    DWORD(WINAPI* PI_KEL_CheckDriverFileVersion)(LPCSTR filePath, LPCSTR versionText, LPSTR fileVersion, DWORD size);

    /**
     * Slot 8. Reads all that a driver add needs of one model from an INF.
     * @param lpcInfPath      path of the INF. Required.
     * @param lpDriverName    the model, as PI_KEL_GetDriverListFromInf lists it. Required.
     * @param dwArchitecture  PIKEL_ARCHITECTURE_..., the driver's target system
     * @param dwMajorVersion, dwMinorVersion  version of the target system
     * @param ppRecord [out]  one heap block, freed with PI_KEL_FreeMemory; a text that the INF lacks is null in it.
     *                        Required. Null after a failure of the last step, untouched by an earlier one: set it to
     *                        null before.
     * @return status, PIKEL_PREFIX_INF_READ. 87: a null argument or an unknown dwArchitecture; 8 no memory; 1359 the
     *         model isn't in the INF; else the code of the open, of a section, or of the spooler that tells the driver
     *         directory.
     */
    PiStatus(WINAPI* PI_KEL_GetInfInfo)(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture,
                                        DWORD dwMajorVersion, DWORD dwMinorVersion, DriverAddRecord** ppRecord);

    /**
     * Slot 9. Tells the name of a driver's main file.
     * @param infPath         path of the INF. Required.
     * @param driverName      the model. Required.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @param wantDriverFile  non-zero: the DriverFile name; 0: the name under which the source medium holds it, empty
     *                        when the copy sections don't name the file
     * @param name [out]      the name, when *pdwSize bytes hold it with its NUL; else untouched. May be null, to ask
     *                        for the size.
     * @param pdwSize [in, out] bytes at name; receives the bytes needed, NUL included. Required; untouched on failure.
     * @return status, PIKEL_PREFIX_INF_READ. 0 also for a buffer that is too small; 87 a null argument; else the code
     *         of the open or of a section.
     */
    PiStatus(WINAPI* PI_KEL_GetDriverFileNameFromInf)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                                      DWORD dwMajorVersion, DWORD dwMinorVersion, DWORD wantDriverFile,
                                                      LPSTR name, LPDWORD pdwSize);

    /**
     * Slot 10. Copies a model's files to where its INF says, through the Setup API file queue, and applies the registry
     * part of its install section. On the NT family the file of its language monitor is placed as well; a failure of
     * that doesn't count. Files copied before a failure stay.
     * @param infPath         full path of the INF; its folder is the source of the files. Required.
     * @param driverName      the model. Required.
     * @param queueCallback   gets the queue's notifications, with the default callback's context; null: the default one
     * @param dwArchitecture  PIKEL_ARCHITECTURE_...; for another value the directories are the running system's own
     * @param dwMajorVersion, dwMinorVersion  version of the target system
     * @param ownerWindow     owner of the system's dialogs, or null
     * @param progressWindow  gets the progress messages, or null
     * @return status, PIKEL_PREFIX_FILE_COPY. 87 a null path or name; else the code of the first step that failed: the
     *         INF, a section, the queue (2 for a file that isn't beside the INF), or the registry part.
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFiles)(LPCSTR infPath, LPCSTR driverName, PSP_FILE_CALLBACK_A queueCallback,
                                                DWORD dwArchitecture, INT dwMajorVersion, DWORD dwMinorVersion,
                                                HWND ownerWindow, HWND progressWindow);

    /**
     * Slot 11. Lists the models that an INF offers to a system.
     * @param infPath         full path of the INF. Required.
     * @param dwArchitecture  has no effect on the choice
     * @param dwMajorVersion, dwMinorVersion  version of the target system, which chooses the models section; low bytes
     *                        count
     * @param ppList [out]    one heap block: *pdwCount pointers, then the names, sorted. Freed with PI_KEL_FreeMemory.
     *                        Null when there is no name; filled as well after a read that stopped half-way, so it is to
     *                        be freed on failure too. Required.
     * @param pdwCount [out]  number of names. Required.
     * @return status, PIKEL_PREFIX_INF_READ. 0 also for an INF that names no model; 87 a null argument; 8 no memory;
     *         else the code of the open or of a section, and the list holds the names read so far.
     */
    PiStatus(WINAPI* PI_KEL_GetDriverListFromInf)(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion,
                                                  DWORD dwMinorVersion, LPSTR** ppList, LPDWORD pdwCount);

    /**
     * Slot 12. Places an INF in a folder of the system, unless an INF there covers it.
     * @param lpszInfFile   path of the INF. Required.
     * @param dwProcessor   PIKEL_ARCHITECTURE_... of the system whose models count
     * @param dwMajor, dwMinor  its version
     * @param lpszDir       target folder without a backslash at its end; null: the system's INF folder. An empty text
     *                      isn't taken for null.
     * @param lpszProvider, lpszClass  provider and class of the INFs in the folder that count. Required.
     * @param dwFlag        Windows 2000 and later: 0 leaves the placing to the system, else a plain copy
     * @return status, PIKEL_PREFIX_FILE_COPY. 0 also when nothing had to be copied, and on some systems when the copy
     *         failed or no name was free; 87 a null required argument; 206 a folder whose path is too long; else the
     *         code of the copy or of an INF that couldn't be read.
     */
    PiStatus(WINAPI* PI_KEL_InfFileCopy)(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor,
                                         LPCSTR lpszDir, LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);

    /**
     * Slot 13. Finds the newest installed INF of a provider and class that lists a driver. Read name and not the
     * status: the status speaks of the last INF looked at.
     * @param driverName    the model's name; case plays no part. Required.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  system whose models count
     * @param infFolder     folder with a backslash at its end; null: the system's INF folder
     * @param lpszProvider, lpszClass  whose INFs count
     * @param name [out]    path of the INF; an empty text when no INF lists the driver; untouched when there is no INF
     *                      of the provider and class, and when size bytes don't hold the path. Required.
     * @param size          bytes at name
     * @return status, PIKEL_PREFIX_INSTALLED_INF. 87 a null driverName or name; 2 no INF of the provider and class, or
     *         the last one has no models; else the code of reading the last one. 0 says nothing of name.
     */
    PiStatus(WINAPI* PI_KEL_GetInstalledInfName)(LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                                 DWORD dwMinorVersion, LPCSTR infFolder, LPCSTR lpszProvider,
                                                 LPCSTR lpszClass, LPSTR name, DWORD size);

    /**
     * Slot 14. Lists the children of a network node. The 9x family asks its network providers, every other system the
     * spooler.
     * @param parent          a node of an earlier result, or null for the top
     * @param ppRecords [out] one heap block: *pdwCount records, then their texts. Freed with PI_KEL_FreeMemory. A block
     *                        also when there are no children; null on failure. Required.
     * @param pdwCount [out]  number of records, 0 on failure. Required.
     * @return status, PIKEL_PREFIX_NETWORK. 0 also for a parent that is no container on the 9x family; 87 a null out
     *         pointer; 8 no memory; else the code of the network or the spooler.
     */
    PiStatus(WINAPI* PI_KEL_EnumNetResources)(const NetResourceRecord* parent, NetResourceRecord** ppRecords,
                                              LPDWORD pdwCount);

    /**
     * Slot 15. Creates a network printer port through a port SDK library.
     * @param lpSdkPath      path of the SDK library, which exports "CreatePort". Required.
     * @param portName       name of the port, at most 20 bytes. Required.
     * @param protocolFlag   0: a raw port, else an LPR port. Before Windows 2000 the port monitor is an LPR one either
     *                       way.
     * @param lpQueueName    queue of an LPR port, or null
     * @param byteCountFlag  with an LPR port, non-zero: count the bytes before sending
     * @param result [out]   the text that the SDK returns, as a rule the port's name; untouched on failure, for an
     *                       empty text, and when size bytes don't hold it with its NUL. May be null.
     * @param size           bytes at result
     * @return status, PIKEL_PREFIX_PORT. 0 also when the text didn't fit; 87 a null path or name, or a name that is too
     *         long; 8 no memory; 1359 the SDK refuses; else the code with which the library or its export can't be had
     *         (126, 127).
     */
    PiStatus(WINAPI* PI_KEL_CreatePort)(LPCSTR lpSdkPath, LPCSTR portName, DWORD protocolFlag, LPCSTR lpQueueName,
                                        INT byteCountFlag, LPSTR result, DWORD size);

    /**
     * Slot 16. Reads all that is known of a printer: level 2 data, values, colour profiles; on the 9x family its share,
     * on the NT family its descriptor, publishing state and DEVMODE. Of a connection to a shared printer the level 2
     * data alone.
     * @param printerName    name of the printer. Required.
     * @param ppRecord [out] one heap block, freed with PI_KEL_FreeMemory; null on failure. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null argument; 8 no memory; else the code of the read that failed,
     *         such as 1801 for an unknown printer.
     */
    PiStatus(WINAPI* PI_KEL_GetPrinter)(LPCSTR printerName, PrinterRecord** ppRecord);

    /**
     * Slot 17. Writes a printer's settings, its values, and its share (9x family) or its descriptor, publishing state
     * and DEVMODE (NT family). A paused printer stays paused. The record of a connection to a shared printer is left
     * alone.
     * @param printerName  name of the printer. Required.
     * @param record       as PI_KEL_GetPrinter gives it; stays the caller's and isn't changed. Required. Which DEVMODE
     *                     counts is told by PI_KEL_SetEffectiveDevMode.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null argument; else the code with which the printer can't be opened.
     *         What fails after that is told to the log alone: read the printer again to see what was taken.
     */
    PiStatus(WINAPI* PI_KEL_SetPrinter)(LPCSTR printerName, PrinterRecord* record);

    /**
     * Slot 18. Adds a printer, or connects to a shared one when the name begins with two backslashes. A connection that
     * fails is followed by a local add under the same name, unless the user cancelled it on the Vista generation.
     * Nothing is rolled back: a printer that was added stays when a later step fails.
     *
     * A caller fills in pPrinterName, pDriverName, pPortName, pPrintProcessor ("WinPrint") and pDatatype ("RAW") of a
     * local printer: the spooler refuses one without any of them, and the library puts none in, but for the data type
     * on the 9x family. A connection needs pPrinterName alone. All else may be 0 or null.
     * @param record   pPrinterName is required. Changed in place: on the 9x family Attributes, Priority and pDatatype
     *                 (a text of the library, not of any block), on NT 4 Attributes for the machine's first printer;
     *                 pDevMode is null during the call while device modes are off, and stays so after a cancelled
     *                 connection on Vista.
     * @param options  profiles and timeouts of a local printer; null for none. Stays as it is.
     * @return status, PIKEL_PREFIX_PRINTER_ADD. 87 a null record or name; else the code of the step that failed: the
     *         spooler's, such as 1796 an unknown port, 1797 driver or 1798 print processor, 1802 a name that is taken,
     *         1804 a data type that it doesn't take.
     */
    PiStatus(WINAPI* PI_KEL_AddPrinter)(PrinterRecord* record, const AddPrinterOptions* options);

    /**
     * Slot 19. Deletes a printer, first the links of its colour profiles, and on the 9x family its share. Of a
     * connection to a shared printer it deletes the connection alone.
     * @param printerName   name of the printer. Required.
     * @param profileCount  entries in profileList
     * @param profileList   file names of profiles that are linked to the printer; null for none. The files stay
     *                      installed.
     * @param usePrintUI    non-zero: through the system's Print UI; the Vista generation goes the direct way all the
     *                      same
     * @return status, PIKEL_PREFIX_PRINTER_DELETE. 87 a null name on the direct way, or usePrintUI on a system without
     *         Print UI (before Windows 2000), and nothing is done; else the code of the step that failed, after which
     *         nothing more is done. A link that can't be cut keeps the printer: on the direct way with its code, while
     *         through the Print UI that code is only logged.
     */
    PiStatus(WINAPI* PI_KEL_DeletePrinter)(LPCSTR printerName, DWORD profileCount, LPSTR* profileList,
                                           DWORD usePrintUI);

    /**
     * Slot 20. Tells whether the process may do administrative work.
     * @return a value: 1 yes, also on the 9x family, which knows no administrators; 0 no
     */
    DWORD(WINAPI* PI_KEL_IsAdministrators)(void);

    /**
     * Slot 21. Creates a shortcut in a folder of the Start menu's programs: of all users on the NT family, of the
     * current one on the 9x family. COM is set up on the calling thread for as long as this takes, where the thread
     * lacks it.
     * @param folderName        folder below the programs; made unless it is there. Required.
     * @param linkName          file name of the shortcut, used as it stands: with ".lnk" at its end. Required.
     * @param targetPath        full path of what the shortcut starts. Required.
     * @param workingDirectory  folder in which it starts, or null
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null required argument; 1359 the programs' folder isn't known, a path
     *         doesn't fit into 259 bytes, or the shell failed, whatever its own code was. The folder stays then.
     */
    PiStatus(WINAPI* PI_KEL_CreateShortCut)(LPCSTR folderName, LPCSTR linkName, LPCSTR targetPath,
                                            LPCSTR workingDirectory);

    /**
     * Slot 22. Unpacks a cabinet into a folder, with the subfolders that the names in it have. Files that are there are
     * replaced, and what was unpacked before a failure stays.
     * @param cabinetPath   full path of the cabinet. Required.
     * @param outputFolder  at most 260 bytes; made when missing. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null argument or a folder that is too long; else the system's code for
     *         a cabinet that is missing or damaged, or a file that can't be written.
     */
    PiStatus(WINAPI* PI_KEL_ExtractCabFile)(LPCSTR cabinetPath, LPCSTR outputFolder);

    /**
     * Slot 23. Tells whether a file is an INF of a provider and class. ASCII letters match without regard to case.
     * @param lpszInfFile              path of the file; null answers 0
     * @param lpszProvider, lpszClass  null: any. With both null it is enough that the file can be opened as an INF.
     * @return a value: 1 it is, 0 it isn't or can't be opened
     */
    DWORD(WINAPI* PI_KEL_IsValidInfFile)(LPCSTR lpszInfFile, LPCSTR lpszProvider, LPCSTR lpszClass);

    /**
     * Slot 24. Tells for which system an INF is written.
     * @param infPath              path of the INF. Required.
     * @param pdwArchitecture [out] PIKEL_ARCHITECTURE_..., or 0 for neither family. On failure 0, but 3 when only the
     *                              Manufacturer section couldn't be read. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null argument; else the code of the open or of the Manufacturer
     *         section.
     */
    PiStatus(WINAPI* PI_KEL_GetInfOsVersion)(LPCSTR infPath, LPDWORD pdwArchitecture);

    /**
     * Slot 25. Expands a model's files, and the INF itself, into a local folder, to be installed from there later. A
     * file that is there already is kept and counts as done.
     * @param infPath             full path of the INF; its folder is the source of the files. Required.
     * @param driverName          the model. Required.
     * @param localFolder         the folder to fill. It must exist: it isn't made here. Required.
     * @param pdwTotalSize [out]  bytes that this call expanded; files that were there already don't count. Required.
     * @param copyNameMode        PIKEL_COPY_AS_...; 0 leaves out the files whose two names differ
     * @param pdwCount [out]      number of filled records. Required.
     * @param ppRecords [out]     one heap block, freed with PI_KEL_FreeMemory; null when there was no memory for it.
     *                            May be null for a caller who doesn't ask where the files belong.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @return status, PIKEL_PREFIX_FILE_COPY. 87 a null required argument or an unknown bit in copyNameMode; the code
     *         of the INF or of a section: all out parameters are untouched after these. Else the code of the first file
     *         that can't be read or expanded, and then the out parameters tell of the files before it: a block comes
     *         back, which is to be freed. Files that were expanded stay.
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFilesToLocal)(LPCSTR infPath, LPCSTR driverName, LPCSTR localFolder,
                                                       LPDWORD pdwTotalSize, DWORD copyNameMode, LPDWORD pdwCount,
                                                       LocalFileRecord** ppRecords, DWORD dwArchitecture,
                                                       DWORD dwMajorVersion, DWORD dwMinorVersion);

    /**
     * Slot 26. Runs one command line of the system's Print UI: Windows 2000 and later. The Print UI gives no result;
     * the thread's last error right behind it is taken for one, so a code can be older than the call, and what the
     * Print UI told the user alone is no failure.
     * @param commandLine  as for "rundll32 printui.dll,PrintUIEntry", such as /dl /n"Printer" /q; at most 2048 bytes.
     *                     Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null or too long command line, or a Print UI without that entry; 126 a
     *         system without Print UI; else what the command left.
     */
    PiStatus(WINAPI* PI_KEL_RunPrintUI)(LPCSTR commandLine);

    /**
     * Slot 27. Deletes a printer and leaves its colour profiles, and its share on the 9x family, alone. Of a connection
     * to a shared printer it deletes the connection alone.
     * @param printerName  name of the printer. Required.
     * @return status, PIKEL_PREFIX_PRINTER_DELETE. 87 a null name; else the spooler's code for the open or the
     *         deletion.
     */
    PiStatus(WINAPI* PI_KEL_DeletePrinterWithoutShareReg)(LPCSTR printerName);

    /**
     * Slot 28. Reads a text of the Print UI library's string table: Windows 2000 and later.
     * @param resourceId  number of the text
     * @param text [out]  the text, cut to size - 1 bytes where it is longer; not to be read after a failure. Required.
     * @param size        bytes at text
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null text; 126 a system without Print UI; else the system's code for a
     *         text that is empty or not there.
     */
    PiStatus(WINAPI* PI_KEL_GetResourceStrFromPrintUI)(DWORD resourceId, LPSTR text, DWORD size);

    /**
     * Slot 29. Installs a printer with its driver through the Print UI: Windows 2000 and later. A printer that was
     * installed stays when it can't be shared.
     * @param infPath      full path of the INF, its files beside it. Required, and not empty.
     * @param printerName  name of the new printer. Likewise.
     * @param modelName    the model, as the INF writes it. Likewise.
     * @param portName     a port that is there. Likewise.
     * @param shareName    name of its share; required and not empty when shareFlag is non-zero, else not read
     * @param spare        not read; null
     * @param shareFlag    0: not shared; 1: shared by the Print UI too. With any value but 0 the share name is set
     *                     afterwards, unless the port is a redirected one.
     * @return status, PIKEL_PREFIX_DRIVER_ADD. 87 a null or empty required argument, or a system without Print UI; 8 a
     *         command line that gets too long, or no memory; else the code that a command left, as for
     *         PI_KEL_RunPrintUI.
     */
    PiStatus(WINAPI* PI_KEL_InstallPrinterToPrintUI)(LPCSTR infPath, LPCSTR printerName, LPCSTR modelName,
                                                     LPCSTR portName, LPCSTR shareName, LPCSTR spare, DWORD shareFlag);

    /**
     * Slot 30. Deletes a printer and then its driver, with all that belongs to the driver alone, unless another printer
     * uses it.
     * @param printerName      name of the printer. Required.
     * @param driverName       name of its driver. Required for the driver to go.
     * @param driverVersion    PIKEL_DRIVER_VERSION_...
     * @param processor        PIKEL_PROCESSOR_...
     * @param profileCount     entries in profileList
     * @param profileList      file names of profiles of the printer and the driver; null for none
     * @param fileRemovalFlag  with usePrintUI, 0 leaves the language monitor and its file; not read otherwise
     * @param usePrintUI       non-zero: through the system's Print UI; the Vista generation goes the direct way all the
     *                         same
     * @return status, PIKEL_PREFIX_DRIVER_ADD. 0 also when the driver stays because another printer uses it; 87 a null
     *         name on the direct way, or usePrintUI on a system without Print UI; else the code of the step that
     *         failed. A printer that is gone stays gone when the driver can't be deleted.
     */
    PiStatus(WINAPI* PI_KEL_UninstallPrinter)(LPCSTR printerName, LPCSTR driverName, DWORD driverVersion,
                                              DWORD processor, DWORD profileCount, LPSTR* profileList,
                                              DWORD fileRemovalFlag, INT usePrintUI);

    /**
     * Slot 31. Replaces the files of an installed driver, at the next restart where they are in use. An installed file
     * that is newer is kept. A file that can't be expanded or copied into place is passed over. Files placed before a
     * failure stay.
     * @param infPath       full path of the INF; its folder is the source of the files. Required.
     * @param driverName    the model. Required.
     * @param copyNameMode  PIKEL_COPY_AS_...; 0 leaves out the files whose two names differ
     * @param pdwRestartNeeded [out] 1 when a file in use is replaced at the next restart, else 0. Required; untouched
     *                               when the arguments are refused.
     * @param stagingFolder belongs to the operation: made when missing, one level only, and its files are deleted at
     *                      the start and at the end. Required.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @return status, PIKEL_PREFIX_FILE_COPY. 87 a null argument or an unknown bit in copyNameMode; the code of the
     *         staging folder, of the INF or of a section; else the code of a replacement at restart that couldn't be
     *         arranged.
     */
    PiStatus(WINAPI* PI_KEL_CopyInfDriverFilesEx)(LPCSTR infPath, LPCSTR driverName, DWORD copyNameMode,
                                                  LPDWORD pdwRestartNeeded, LPCSTR stagingFolder, DWORD dwArchitecture,
                                                  DWORD dwMajorVersion, DWORD dwMinorVersion);

    /**
     * Slot 32. Windows XP and Server 2003: copies the files of an installed driver to a folder that is named after its
     * hardware ID. Does nothing on other systems.
     * @param driverName  name of the driver, without regard to case. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 0 also for an unknown driver, one without a hardware ID, and files that
     *         can't be copied; 87 a null name; 112 the disk is full, and then the folder's files are deleted again.
     */
    PiStatus(WINAPI* PI_KEL_CopyDriverFileToHWIDFolder)(LPCSTR driverName);

    /**
     * Slot 33. Applies the registry part of a model's install section.
     * @param infPath     path of the INF. Required.
     * @param driverName  the model. Required.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @return status, PIKEL_PREFIX_GENERAL. 0 also for an INF that can't be opened; 87 a null argument; else the code
     *         of a section or of the system, and what was written before it stays.
     */
    PiStatus(WINAPI* PI_KEL_ControlRegistory)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                              DWORD dwMajorVersion, DWORD dwMinorVersion);

    /**
     * Slot 34. Makes a printer the default.
     * @param printerName  name of the printer. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null name; 13 an entry of the system for the printer that isn't text;
     *         else the code of the step that failed, such as 2 for a printer that NT 4 doesn't know.
     */
    PiStatus(WINAPI* PI_KEL_SetDefaultPrinter)(LPCSTR printerName);

    /**
     * Slot 35. Lists a model's files by kind.
     * @param infPath         path of the INF. Required.
     * @param driverName      the model. Required.
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @param ppRecords [out] one heap block of *pdwCount records and their names, freed with PI_KEL_FreeMemory; null on
     *                        failure. Required.
     * @param pdwCount [out]  number of records, 0 on failure. Required.
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null argument, and neither is written then; 8 no memory, and also a
     *         model without files; else the code of the open or of a section.
     */
    PiStatus(WINAPI* PI_KEL_EnumDriverFiles)(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture,
                                             DWORD dwMajorVersion, DWORD dwMinorVersion, DriverFileRecord** ppRecords,
                                             LPDWORD pdwCount);

    /**
     * Slot 36. Reads the customisation marker at the head of an INF.
     * @param infPath            path of the INF. Required.
     * @param pbCustomized [out] 0 or 1; 0 for a file that can't be opened. Required; untouched when infPath is null.
     * @param code         [out] at least 20 bytes, or null; written when customised
     * @param comment      [out] at least 75 bytes, or null; written when customised
     * @return status, PIKEL_PREFIX_GENERAL. 87 a null required argument; 2 a file that can't be opened.
     */
    PiStatus(WINAPI* PI_KEL_GetCustomizeInfo)(LPCSTR infPath, LPDWORD pbCustomized, LPSTR code, LPSTR comment);

    /**
     * Slot 37. Sums the expanded sizes of several models' files. Copies nothing.
     * @param infPath              full path of the INF; the files are looked for in its folder. Required.
     * @param modelNames           names, each NUL terminated, with one more NUL at the end. Required.
     * @param pdwTotalSize [out]   bytes of all distinct files. Required.
     * @param pdwSharedSize [out]  bytes of files that further models repeat, once for each repetition. Required.
     * @param copyNameMode         PIKEL_COPY_AS_...; 0 leaves out the files whose two names differ
     * @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
     * @return status, PIKEL_PREFIX_FILE_COPY. 87 a null argument or an unknown bit in copyNameMode; else the code of
     *         the last model, and both sums are untouched after these. An earlier model that can't be read adds
     *         nothing, and its code doesn't count. A file that isn't there adds nothing to the first sum.
     */
    PiStatus(WINAPI* PI_KEL_GetCopyDriverFilesSize)(LPCSTR infPath, LPCSTR modelNames, LPDWORD pdwTotalSize,
                                                    LPDWORD pdwSharedSize, DWORD copyNameMode, DWORD dwArchitecture,
                                                    DWORD dwMajorVersion, DWORD dwMinorVersion);

    /**
     * Slot 38. Tells whether PI_KEL_AddPrinter and PI_KEL_SetPrinter apply the DEVMODE of the caller's record. Holds
     * for the whole process, from the next add or set on; 1 is the start value.
     * @param flag  0: without it; 1: with it. No value is refused: another one counts as 1 for an add, as 0 for a set.
     * @return always 0
     */
    DWORD(WINAPI* PI_KEL_SetEffectiveDevMode)(DWORD flag);

    /**
     * Slot 39. Copies language monitor files into the system directory where they are missing there or older. The 9x
     * family replaces a file in use at the next start; the NT family stops the spooler for the copy and starts it
     * again.
     * @param filePath             source folder. Required.
     * @param fileList             names, each closed by "/". Required.
     * @param pdwRebootFlag [out]  1 when a file waits for the next start, else 0. May be null.
     * @return status, PIKEL_PREFIX_FILE_COPY. 87 a null required argument, or a list whose last name isn't closed; the
     *         code with which the system directory can't be had, and nothing is copied; else on the 9x family the code
     *         that ended the walk, on the NT family the code of the last file that was looked at. Earlier files stay
     *         copied.
     */
    PiStatus(WINAPI* PI_KEL_CopyMonitorFile)(LPCSTR filePath, LPCSTR fileList, LPDWORD pdwRebootFlag);

    /**
     * Slot 40. Tells the default printer.
     * @param name [out] its name; untouched when there is none, and on failure. Required.
     * @param size       bytes at name; must exceed the name's length
     * @return status, PIKEL_PREFIX_GENERAL. 0 also when there is no default printer, but for NT 4, where that can be 2;
     *         87 a null name or one that is too small; else the system's code.
     */
    PiStatus(WINAPI* PI_KEL_GetDefaultPrinter)(LPSTR name, DWORD size);

    /**
     * Slot 41. Tells whether a printer is the default.
     * @param printerName  name of the printer. Required.
     * @return 0x90010001 (PIKEL_PREFIX_GENERAL | 1) it is; 0 it isn't, there is none, or that couldn't be found out;
     *         0x90010057 a null name
     */
    PiStatus(WINAPI* PI_KEL_IsDefaultPrinter)(LPCSTR printerName);

    /**
     * Slot 42. Tells whether an INF names a catalog, and which.
     * @param infPath           path of the INF. Required.
     * @param pbExistCAT [out]  0 or 1; 0 for a file that can't be opened. Required.
     * @param lpszCATFile [out] the catalog's file name; untouched without one. May be null; else large enough for any
     *                          value that the INF may hold: a line of an INF is shorter than 4096 bytes.
     * @return status, PIKEL_PREFIX_GENERAL. 0 also for a file that can't be opened; 87 a null infPath or pbExistCAT.
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
