/*
 * The system types that cross the library's interface, for hosts without the Windows headers.
 *
 * Every structure has the layout that the Windows headers publish for a 64-bit process: 32-bit LONG and DWORD,
 * 16-bit WCHAR, natural alignment. On Windows this file is not used: pikel.h includes the system's own headers there.
 * Usable from C89 and C++98 on, with a <stdint.h>.
 */
#ifndef PIKEL_TYPES_H
#define PIKEL_TYPES_H

#ifdef _WIN32
#error "pikel_types.h stands in for the Windows headers; include <windows.h> instead"
#endif

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WINAPI
#define CALLBACK

typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef char CHAR;
typedef int16_t SHORT;
typedef uint16_t WORD;
typedef uint16_t USHORT;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uint32_t DWORD;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t DWORDLONG;
typedef uint64_t ULONGLONG;
typedef intptr_t INT_PTR;
typedef uintptr_t UINT_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t DWORD_PTR;
/* Of the type of u"" texts where the language has them. */
#if defined(__cplusplus) && __cplusplus >= 201103L
typedef char16_t WCHAR;
#else
typedef uint16_t WCHAR;
#endif

typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef BYTE* LPBYTE;
typedef DWORD* LPDWORD;
typedef DWORD* PDWORD;
typedef BOOL* PBOOL;
typedef void* HANDLE;
typedef HANDLE* LPHANDLE;
typedef struct HWND__* HWND;
typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef void* PSECURITY_DESCRIPTOR;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
#define MAX_PATH 260

/* wtypesbase.h */
typedef struct _FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME;

/* wingdi.h: DEVMODE, fixed part of 156 bytes, followed by dmDriverExtra bytes. */
#define CCHDEVICENAME 32
#define CCHFORMNAME 32
typedef struct _devicemodeA {
    BYTE dmDeviceName[CCHDEVICENAME];
    WORD dmSpecVersion;
    WORD dmDriverVersion;
    WORD dmSize;
    WORD dmDriverExtra;
    DWORD dmFields;
    SHORT dmOrientation;
    SHORT dmPaperSize;
    SHORT dmPaperLength;
    SHORT dmPaperWidth;
    SHORT dmScale;
    SHORT dmCopies;
    SHORT dmDefaultSource;
    SHORT dmPrintQuality;
    SHORT dmColor;
    SHORT dmDuplex;
    SHORT dmYResolution;
    SHORT dmTTOption;
    SHORT dmCollate;
    BYTE dmFormName[CCHFORMNAME];
    WORD dmLogPixels;
    DWORD dmBitsPerPel;
    DWORD dmPelsWidth;
    DWORD dmPelsHeight;
    DWORD dmDisplayFlags;
    DWORD dmDisplayFrequency;
    DWORD dmICMMethod;
    DWORD dmICMIntent;
    DWORD dmMediaType;
    DWORD dmDitherType;
    DWORD dmReserved1;
    DWORD dmReserved2;
    DWORD dmPanningWidth;
    DWORD dmPanningHeight;
} DEVMODEA, *PDEVMODEA, *LPDEVMODEA;

/* winspool.h: DRIVER_INFO_6 */
typedef struct _DRIVER_INFO_6A {
    DWORD cVersion;
    LPSTR pName;
    LPSTR pEnvironment;
    LPSTR pDriverPath;
    LPSTR pDataFile;
    LPSTR pConfigFile;
    LPSTR pHelpFile;
    LPSTR pDependentFiles;
    LPSTR pMonitorName;
    LPSTR pDefaultDataType;
    LPSTR pszzPreviousNames;
    FILETIME ftDriverDate;
    DWORDLONG dwlDriverVersion;
    LPSTR pszMfgName;
    LPSTR pszOEMUrl;
    LPSTR pszHardwareID;
    LPSTR pszProvider;
} DRIVER_INFO_6A, *PDRIVER_INFO_6A, *LPDRIVER_INFO_6A;

/* winspool.h: MONITOR_INFO_2 */
typedef struct _MONITOR_INFO_2A {
    LPSTR pName;
    LPSTR pEnvironment;
    LPSTR pDLLName;
} MONITOR_INFO_2A, *PMONITOR_INFO_2A, *LPMONITOR_INFO_2A;

/* winspool.h: PRINTER_INFO_2 */
typedef struct _PRINTER_INFO_2A {
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
} PRINTER_INFO_2A, *PPRINTER_INFO_2A, *LPPRINTER_INFO_2A;

/* setupapi.h: what the callback of a file queue is told of, and what it answers. */
enum {
    SPFILENOTIFY_STARTQUEUE = 0x1,
    SPFILENOTIFY_ENDQUEUE = 0x2,
    SPFILENOTIFY_STARTSUBQUEUE = 0x3,
    SPFILENOTIFY_ENDSUBQUEUE = 0x4,
    SPFILENOTIFY_STARTDELETE = 0x5,
    SPFILENOTIFY_ENDDELETE = 0x6,
    SPFILENOTIFY_DELETEERROR = 0x7,
    SPFILENOTIFY_STARTRENAME = 0x8,
    SPFILENOTIFY_ENDRENAME = 0x9,
    SPFILENOTIFY_RENAMEERROR = 0xa,
    SPFILENOTIFY_STARTCOPY = 0xb,
    SPFILENOTIFY_ENDCOPY = 0xc,
    SPFILENOTIFY_COPYERROR = 0xd,
    SPFILENOTIFY_NEEDMEDIA = 0xe,
    FILEOP_ABORT = 0,
    FILEOP_DOIT = 1,
    FILEOP_SKIP = 2,
    FILEOP_RETRY = FILEOP_DOIT,
    FILEOP_NEWPATH = 4,
    FILEOP_COPY = 0
};

/* setupapi.h: Param1 of the notifications that concern one file. */
typedef struct _FILEPATHS_A {
    const char* Target;
    const char* Source;
    UINT Win32Error;
    DWORD Flags;
} FILEPATHS_A, *PFILEPATHS_A;

/* setupapi.h: Param1 of SPFILENOTIFY_NEEDMEDIA. */
typedef struct _SOURCE_MEDIA_A {
    const char* Reserved;
    const char* Tagfile;
    const char* Description;
    const char* SourcePath;
    const char* SourceFile;
    DWORD Flags;
} SOURCE_MEDIA_A, *PSOURCE_MEDIA_A;

/* setupapi.h: the callback of a file queue. Param1 and Param2 depend on the notification. */
typedef UINT(CALLBACK* PSP_FILE_CALLBACK_A)(PVOID Context, UINT Notification, UINT_PTR Param1, UINT_PTR Param2);

#ifdef __cplusplus
}
#endif

#endif /* PIKEL_TYPES_H */
