// The Windows structures and constants that the library and the simulated machine use beyond those of the public
// interface, for hosts without the Windows headers. Layouts and values are the published ones (winbase.h, winnt.h,
// winreg.h, winsvc.h, winspool.h, setupapi.h, winuser.h of the Windows SDK) for a 64-bit process; a test compiled for
// Windows holds them against the system's headers.
#pragma once

#include "pikel_types.h"

// ---- handles and pointers -------------------------------------------------------------------------------------------
using PHANDLE = HANDLE*;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using SC_HANDLE = struct SC_HANDLE__*;
using HINF = void*;
using HSPFILEQ = void*;
using HDEVINFO = void*;
using FARPROC = intptr_t (*)();
using HFILE = int;
using REGSAM = DWORD;
using LCID = DWORD;
using ACCESS_MASK = DWORD;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using OLECHAR = WCHAR;
using BSTR = WCHAR*;
using LSTATUS = LONG;
using SIZE_T = size_t;
using HLOCAL = HANDLE;
using PLONG = LONG*;
using PUINT = UINT*;
using PDWORD_PTR = DWORD_PTR*;
using PBYTE = BYTE*;
using PSTR = char*;
using PCSTR = const char*;
using LPBOOL = BOOL*;
using HGLOBAL = HANDLE;
using HDC = struct HDC__*;
using PULONG = ULONG*;
using HRESULT = LONG;
using PSID = void*;
using SCODE = LONG;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1));
inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000000));
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000001));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000002));
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000003));
inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(static_cast<uintptr_t>(0xffff));
inline constexpr HFILE HFILE_ERROR = -1;

// ---- winerror.h -----------------------------------------------------------------------------------------------------
enum : DWORD {
    ERROR_SUCCESS = 0,
    ERROR_INVALID_FUNCTION = 1,
    ERROR_FILE_NOT_FOUND = 2,
    ERROR_PATH_NOT_FOUND = 3,
    ERROR_ACCESS_DENIED = 5,
    ERROR_INVALID_HANDLE = 6,
    ERROR_NOT_ENOUGH_MEMORY = 8,
    ERROR_INVALID_DATA = 13,
    ERROR_OUTOFMEMORY = 14,
    ERROR_NO_MORE_FILES = 18,
    ERROR_WRITE_PROTECT = 19,
    ERROR_SHARING_VIOLATION = 32,
    ERROR_LOCK_VIOLATION = 33,
    ERROR_NOT_SUPPORTED = 50,
    ERROR_BAD_NETPATH = 53,
    ERROR_FILE_EXISTS = 80,
    ERROR_INVALID_PARAMETER = 87,
    ERROR_DISK_FULL = 112,
    ERROR_CALL_NOT_IMPLEMENTED = 120,
    ERROR_INSUFFICIENT_BUFFER = 122,
    ERROR_INVALID_NAME = 123,
    ERROR_INVALID_LEVEL = 124,
    ERROR_MOD_NOT_FOUND = 126,
    ERROR_PROC_NOT_FOUND = 127,
    ERROR_DIR_NOT_EMPTY = 145,
    ERROR_ALREADY_EXISTS = 183,
    ERROR_FILENAME_EXCED_RANGE = 206,
    ERROR_MORE_DATA = 234,
    ERROR_NO_MORE_ITEMS = 259,
    ERROR_DIRECTORY = 267,
    ERROR_INVALID_FLAGS = 1004,
    ERROR_FILE_INVALID = 1006,
    ERROR_BADKEY = 1010,
    ERROR_CANTREAD = 1012,
    ERROR_KEY_DELETED = 1018,
    ERROR_DEPENDENT_SERVICES_RUNNING = 1051,
    ERROR_INVALID_SERVICE_CONTROL = 1052,
    ERROR_SERVICE_ALREADY_RUNNING = 1056,
    ERROR_SERVICE_DISABLED = 1058,
    ERROR_SERVICE_DOES_NOT_EXIST = 1060,
    ERROR_SERVICE_NOT_ACTIVE = 1062,
    ERROR_DATABASE_DOES_NOT_EXIST = 1065,
    ERROR_NO_UNICODE_TRANSLATION = 1113,
    ERROR_INVALID_SHARENAME = 1215,
    ERROR_CANCELLED = 1223,
    ERROR_INTERNAL_ERROR = 1359,
    ERROR_TIMEOUT = 1460,
    RPC_S_SERVER_UNAVAILABLE = 1722,
    RPC_S_CALL_FAILED = 1726,
    RPC_X_NULL_REF_POINTER = 1780,
    ERROR_INVALID_USER_BUFFER = 1784,
    ERROR_UNKNOWN_PORT = 1796,
    ERROR_UNKNOWN_PRINTER_DRIVER = 1797,
    ERROR_UNKNOWN_PRINTPROCESSOR = 1798,
    ERROR_INVALID_SEPARATOR_FILE = 1799,
    ERROR_INVALID_PRIORITY = 1800,
    ERROR_INVALID_PRINTER_NAME = 1801,
    ERROR_PRINTER_ALREADY_EXISTS = 1802,
    ERROR_INVALID_PRINTER_COMMAND = 1803,
    ERROR_INVALID_DATATYPE = 1804,
    ERROR_INVALID_ENVIRONMENT = 1805,
    ERROR_PRINTER_DRIVER_ALREADY_INSTALLED = 1795,
    ERROR_RESOURCE_NAME_NOT_FOUND = 1814,
    ERROR_INVALID_TIME = 1901,
    ERROR_PRINTER_DELETED = 1905,
    ERROR_INVALID_PROFILE = 2011,
    ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE = 2015,
    ERROR_PROFILE_NOT_FOUND = 2016,
    ERROR_UNKNOWN_PRINT_MONITOR = 3000,
    ERROR_PRINT_MONITOR_ALREADY_INSTALLED = 3006,
    ERROR_INVALID_PRINT_MONITOR = 3007,
    ERROR_PRINT_MONITOR_IN_USE = 3008,
    // Setup API codes of setupapi.h: APPLICATION_ERROR_MASK | ERROR_SEVERITY_ERROR | number
    ERROR_EXPECTED_SECTION_NAME = 0xE0000000,
    ERROR_BAD_SECTION_NAME_LINE = 0xE0000001,
    ERROR_SECTION_NAME_TOO_LONG = 0xE0000002,
    ERROR_GENERAL_SYNTAX = 0xE0000003,
    ERROR_WRONG_INF_STYLE = 0xE0000100,
    ERROR_SECTION_NOT_FOUND = 0xE0000101,
    ERROR_LINE_NOT_FOUND = 0xE0000102,
};

// ---- winnt.h, winbase.h ---------------------------------------------------------------------------------------------
enum : DWORD {
    GENERIC_READ = 0x80000000,
    GENERIC_WRITE = 0x40000000,
    GENERIC_EXECUTE = 0x20000000,
    GENERIC_ALL = 0x10000000,
    FILE_SHARE_READ = 1,
    FILE_SHARE_WRITE = 2,
    FILE_SHARE_DELETE = 4,
    CREATE_NEW = 1,
    CREATE_ALWAYS = 2,
    OPEN_EXISTING = 3,
    OPEN_ALWAYS = 4,
    TRUNCATE_EXISTING = 5,
    FILE_ATTRIBUTE_READONLY = 1,
    FILE_ATTRIBUTE_HIDDEN = 2,
    FILE_ATTRIBUTE_DIRECTORY = 16,
    FILE_ATTRIBUTE_ARCHIVE = 32,
    FILE_ATTRIBUTE_NORMAL = 128,
    INVALID_FILE_ATTRIBUTES = 0xffffffff,
    FILE_BEGIN = 0,
    FILE_CURRENT = 1,
    FILE_END = 2,
    INVALID_SET_FILE_POINTER = 0xffffffff,
    HEAP_ZERO_MEMORY = 8,
    FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100,
    FORMAT_MESSAGE_IGNORE_INSERTS = 0x200,
    FORMAT_MESSAGE_FROM_SYSTEM = 0x1000,
    VER_PLATFORM_WIN32s = 0,
    VER_PLATFORM_WIN32_WINDOWS = 1,
    VER_PLATFORM_WIN32_NT = 2,
    DELETE = 0x10000,
    READ_CONTROL = 0x20000,
};
inline constexpr UINT OF_READ = 0;
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;
using LPFILETIME = FILETIME*;

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    CHAR cFileName[MAX_PATH];
    CHAR cAlternateFileName[14];
};
using LPWIN32_FIND_DATAA = WIN32_FIND_DATAA*;

struct OFSTRUCT {
    BYTE cBytes;
    BYTE fFixedDisk;
    WORD nErrCode;
    WORD Reserved1;
    WORD Reserved2;
    CHAR szPathName[128];
};
using LPOFSTRUCT = OFSTRUCT*;

/// 148 bytes; GetVersionExA takes this and the longer form, told apart by dwOSVersionInfoSize.
struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    CHAR szCSDVersion[128];
};
using LPOSVERSIONINFOA = OSVERSIONINFOA*;

/// 156 bytes.
struct OSVERSIONINFOEXA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    CHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};

struct SYSTEM_INFO {
    WORD wProcessorArchitecture;
    WORD wReserved;
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;
    WORD wProcessorLevel;
    WORD wProcessorRevision;
};
using LPSYSTEM_INFO = SYSTEM_INFO*;

// ---- winreg.h -------------------------------------------------------------------------------------------------------
enum : DWORD {
    REG_NONE = 0,
    REG_SZ = 1,
    REG_EXPAND_SZ = 2,
    REG_BINARY = 3,
    REG_DWORD = 4,
    REG_MULTI_SZ = 7,
    REG_QWORD = 11,
    REG_OPTION_NON_VOLATILE = 0,
    REG_CREATED_NEW_KEY = 1,
    REG_OPENED_EXISTING_KEY = 2,
    KEY_READ = 0x20019,
    KEY_WRITE = 0x20006,
    KEY_ALL_ACCESS = 0xF003F,
};

// ---- winsvc.h -------------------------------------------------------------------------------------------------------
enum : DWORD {
    SERVICE_STOPPED = 1,
    SERVICE_START_PENDING = 2,
    SERVICE_STOP_PENDING = 3,
    SERVICE_RUNNING = 4,
    SERVICE_CONTROL_STOP = 1,
    SERVICE_ACTIVE = 1,
    SERVICE_INACTIVE = 2,
    SERVICE_STATE_ALL = 3,
    SERVICE_ALL_ACCESS = 0xF01FF,
    SERVICE_WIN32_OWN_PROCESS = 0x10,
    SERVICE_AUTO_START = 2,
    SERVICE_DEMAND_START = 3,
    SERVICE_DISABLED = 4,
};

struct SERVICE_STATUS {
    DWORD dwServiceType;
    DWORD dwCurrentState;
    DWORD dwControlsAccepted;
    DWORD dwWin32ExitCode;
    DWORD dwServiceSpecificExitCode;
    DWORD dwCheckPoint;
    DWORD dwWaitHint;
};
using LPSERVICE_STATUS = SERVICE_STATUS*;

struct ENUM_SERVICE_STATUSA {
    LPSTR lpServiceName;
    LPSTR lpDisplayName;
    SERVICE_STATUS ServiceStatus;
};
using LPENUM_SERVICE_STATUSA = ENUM_SERVICE_STATUSA*;

struct QUERY_SERVICE_CONFIGA {
    DWORD dwServiceType;
    DWORD dwStartType;
    DWORD dwErrorControl;
    LPSTR lpBinaryPathName;
    LPSTR lpLoadOrderGroup;
    DWORD dwTagId;
    LPSTR lpDependencies;
    LPSTR lpServiceStartName;
    LPSTR lpDisplayName;
};
using LPQUERY_SERVICE_CONFIGA = QUERY_SERVICE_CONFIGA*;

// ---- winspool.h -----------------------------------------------------------------------------------------------------
enum : DWORD {
    PRINTER_ENUM_DEFAULT = 1,
    PRINTER_ENUM_LOCAL = 2,
    PRINTER_ENUM_CONNECTIONS = 4,
    PRINTER_ENUM_NAME = 8,
    PRINTER_ENUM_REMOTE = 0x10,
    PRINTER_ENUM_SHARED = 0x20,
    PRINTER_ENUM_NETWORK = 0x40,
    PRINTER_ATTRIBUTE_QUEUED = 0x1,
    PRINTER_ATTRIBUTE_DIRECT = 0x2,
    PRINTER_ATTRIBUTE_DEFAULT = 0x4,
    PRINTER_ATTRIBUTE_SHARED = 0x8,
    PRINTER_ATTRIBUTE_NETWORK = 0x10,
    PRINTER_ATTRIBUTE_LOCAL = 0x40,
    PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST = 0x200,
    PRINTER_ATTRIBUTE_ENABLE_BIDI = 0x800,
    PRINTER_STATUS_PAUSED = 1,
    PRINTER_CONTROL_PAUSE = 1,
    PRINTER_ALL_ACCESS = 0xF000C,
    PRINTER_ACCESS_ADMINISTER = 4,
    PRINTER_ACCESS_USE = 8,
    APD_STRICT_UPGRADE = 1,
    APD_STRICT_DOWNGRADE = 2,
    APD_COPY_ALL_FILES = 4,
    APD_COPY_NEW_FILES = 8,
    APD_COPY_FROM_DIRECTORY = 0x10,
    PORT_TYPE_WRITE = 1,
    PORT_TYPE_READ = 2,
    PORT_TYPE_REDIRECTED = 4,
    PORT_TYPE_NET_ATTACHED = 8,
};

struct PRINTER_DEFAULTSA {
    LPSTR pDatatype;
    LPDEVMODEA pDevMode;
    ACCESS_MASK DesiredAccess;
};
using LPPRINTER_DEFAULTSA = PRINTER_DEFAULTSA*;

struct PRINTER_INFO_1A {
    DWORD Flags;
    LPSTR pDescription;
    LPSTR pName;
    LPSTR pComment;
};
struct PRINTER_INFO_4A {
    LPSTR pPrinterName;
    LPSTR pServerName;
    DWORD Attributes;
};
struct PRINTER_INFO_5A {
    LPSTR pPrinterName;
    LPSTR pPortName;
    DWORD Attributes;
    DWORD DeviceNotSelectedTimeout;
    DWORD TransmissionRetryTimeout;
};

struct DRIVER_INFO_1A {
    LPSTR pName;
};
struct DRIVER_INFO_2A {
    DWORD cVersion;
    LPSTR pName;
    LPSTR pEnvironment;
    LPSTR pDriverPath;
    LPSTR pDataFile;
    LPSTR pConfigFile;
};
struct DRIVER_INFO_3A {
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
};

struct MONITOR_INFO_1A {
    LPSTR pName;
};
struct PORT_INFO_1A {
    LPSTR pName;
};
struct PORT_INFO_2A {
    LPSTR pPortName;
    LPSTR pMonitorName;
    LPSTR pDescription;
    DWORD fPortType;
    DWORD Reserved;
};

// ---- setupapi.h -----------------------------------------------------------------------------------------------------
struct INFCONTEXT {
    PVOID Inf;
    PVOID CurrentInf;
    UINT Section;
    UINT Line;
};
using PINFCONTEXT = INFCONTEXT*;

struct SP_DEVINFO_DATA;
using PSP_DEVINFO_DATA = SP_DEVINFO_DATA*;

enum : DWORD {
    INF_STYLE_WIN4 = 2,
    SP_COPY_DELETESOURCE = 0x1,
    SP_COPY_REPLACEONLY = 0x2,
    SP_COPY_NEWER = 0x4,
    SP_COPY_NOOVERWRITE = 0x8,
    SP_COPY_NODECOMP = 0x10,
    SP_COPY_SOURCE_ABSOLUTE = 0x40,
    SP_COPY_SOURCEPATH_ABSOLUTE = 0x80,
    SP_COPY_FORCE_IN_USE = 0x200,
    SP_COPY_FORCE_NOOVERWRITE = 0x1000,
    SP_COPY_FORCE_NEWER = 0x2000,
    SPINST_REGISTRY = 0x4,
};

struct SP_INF_INFORMATION {
    DWORD InfStyle;
    DWORD InfCount;
    BYTE VersionData[1];
};
using PSP_INF_INFORMATION = SP_INF_INFORMATION*;

/// Param1 of SPFILENOTIFY_CABINETINFO.
struct CABINET_INFO_A {
    PCSTR CabinetPath;
    PCSTR CabinetFile;
    PCSTR DiskName;
    WORD SetId;
    WORD CabinetNumber;
};
/// Param1 of SPFILENOTIFY_FILEINCABINET.
struct FILE_IN_CABINET_INFO_A {
    PCSTR NameInCabinet;
    DWORD FileSize;
    DWORD Win32Error;
    WORD DosDate;
    WORD DosTime;
    WORD DosAttribs;
    CHAR FullTargetName[MAX_PATH];
};
using PFILE_IN_CABINET_INFO_A = FILE_IN_CABINET_INFO_A*;
enum : DWORD {
    SPFILENOTIFY_CABINETINFO = 0x10,
    SPFILENOTIFY_FILEINCABINET = 0x11,
    SPFILENOTIFY_NEEDNEWCABINET = 0x12,
    SPFILENOTIFY_FILEEXTRACTED = 0x13,
    INFINFO_DEFAULT_SEARCH = 3,
    SPOST_PATH = 1,
    FILE_COMPRESSION_NONE = 0,
    FILE_COMPRESSION_WINLZA = 1,
    FILE_COMPRESSION_MSZIP = 2,
    FILE_COMPRESSION_NTCAB = 3,
};

// ---- winuser.h ------------------------------------------------------------------------------------------------------
struct POINT {
    LONG x;
    LONG y;
};
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_SETTINGCHANGE = 0x001A;
inline constexpr UINT PM_REMOVE = 1;

// ---- wingdi.h -------------------------------------------------------------------------------------------------------
using ICMENUMPROCA = int(CALLBACK*)(LPSTR, LPARAM);

// ---- guiddef.h, unknwn.h, shobjidl.h, objidl.h ----------------------------------------------------------------------
struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
using LPGUID = GUID*;
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
inline bool operator==(const GUID& left, const GUID& right) {
    return left.Data1 == right.Data1 && left.Data2 == right.Data2 && left.Data3 == right.Data3 &&
           __builtin_memcmp(left.Data4, right.Data4, sizeof left.Data4) == 0;
}
inline constexpr GUID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IPersistFile = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IShellLinkA = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID CLSID_ShellLink = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);

struct IUnknown {
    virtual HRESULT WINAPI QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG WINAPI AddRef() = 0;
    virtual ULONG WINAPI Release() = 0;
};
using LPUNKNOWN = IUnknown*;

struct IPersistFile : IUnknown {
    virtual HRESULT WINAPI GetClassID(CLSID* pClassID) = 0;
    virtual HRESULT WINAPI IsDirty() = 0;
    virtual HRESULT WINAPI Load(LPCWSTR pszFileName, DWORD dwMode) = 0;
    virtual HRESULT WINAPI Save(LPCWSTR pszFileName, BOOL fRemember) = 0;
    virtual HRESULT WINAPI SaveCompleted(LPCWSTR pszFileName) = 0;
    virtual HRESULT WINAPI GetCurFile(LPWSTR* ppszFileName) = 0;
};

/// In the published order of its methods. The item lists and find data of the shell are not used here.
struct IShellLinkA : IUnknown {
    virtual HRESULT WINAPI GetPath(LPSTR pszFile, int cch, WIN32_FIND_DATAA* pfd, DWORD fFlags) = 0;
    virtual HRESULT WINAPI GetIDList(void** ppidl) = 0;
    virtual HRESULT WINAPI SetIDList(const void* pidl) = 0;
    virtual HRESULT WINAPI GetDescription(LPSTR pszName, int cch) = 0;
    virtual HRESULT WINAPI SetDescription(LPCSTR pszName) = 0;
    virtual HRESULT WINAPI GetWorkingDirectory(LPSTR pszDir, int cch) = 0;
    virtual HRESULT WINAPI SetWorkingDirectory(LPCSTR pszDir) = 0;
    virtual HRESULT WINAPI GetArguments(LPSTR pszArgs, int cch) = 0;
    virtual HRESULT WINAPI SetArguments(LPCSTR pszArgs) = 0;
    virtual HRESULT WINAPI GetHotkey(WORD* pwHotkey) = 0;
    virtual HRESULT WINAPI SetHotkey(WORD wHotkey) = 0;
    virtual HRESULT WINAPI GetShowCmd(int* piShowCmd) = 0;
    virtual HRESULT WINAPI SetShowCmd(int iShowCmd) = 0;
    virtual HRESULT WINAPI GetIconLocation(LPSTR pszIconPath, int cch, int* piIcon) = 0;
    virtual HRESULT WINAPI SetIconLocation(LPCSTR pszIconPath, int iIcon) = 0;
    virtual HRESULT WINAPI SetRelativePath(LPCSTR pszPathRel, DWORD dwReserved) = 0;
    virtual HRESULT WINAPI Resolve(HWND hwnd, DWORD fFlags) = 0;
    virtual HRESULT WINAPI SetPath(LPCSTR pszFile) = 0;
};

// ---- winnetwk.h -----------------------------------------------------------------------------------------------------
struct NETRESOURCEA {
    DWORD dwScope;
    DWORD dwType;
    DWORD dwDisplayType;
    DWORD dwUsage;
    LPSTR lpLocalName;
    LPSTR lpRemoteName;
    LPSTR lpComment;
    LPSTR lpProvider;
};
using LPNETRESOURCEA = NETRESOURCEA*;
enum : DWORD {
    RESOURCE_GLOBALNET = 2,
    RESOURCETYPE_ANY = 0,
    RESOURCETYPE_DISK = 1,
    RESOURCETYPE_PRINT = 2,
    RESOURCEDISPLAYTYPE_GENERIC = 0,
    RESOURCEDISPLAYTYPE_DOMAIN = 1,
    RESOURCEDISPLAYTYPE_SERVER = 2,
    RESOURCEDISPLAYTYPE_SHARE = 3,
    RESOURCEDISPLAYTYPE_NETWORK = 6,
    RESOURCEDISPLAYTYPE_TREE = 10,
    RESOURCEDISPLAYTYPE_NDSCONTAINER = 11,
    RESOURCEUSAGE_CONNECTABLE = 1,
    RESOURCEUSAGE_CONTAINER = 2,
    WNNC_NET_LANMAN = 0x20000,
    WNNC_NET_NETWARE = 0x30000,
    ERROR_EXTENDED_ERROR = 1208,
    ERROR_NO_NETWORK = 1222,
    NERR_DuplicateShare = 2118,
    NERR_BufTooSmall = 2123,
    NERR_NetNameNotFound = 2310,
};

// ---- svrapi.h -------------------------------------------------------------------------------------------------------
/// A share of the 9x family at level 50.
struct share_info_50 {
    char shi50_netname[13];
    unsigned char shi50_type;
    unsigned short shi50_flags;
    char* shi50_remark;
    char* shi50_path;
    char shi50_rw_password[9];
    char shi50_ro_password[9];
};

// ---- winnt.h, accctrl.h: tokens and SIDs ----------------------------------------------------------------------------
enum TOKEN_INFORMATION_CLASS : int { TokenUser = 1, TokenGroups = 2 };
inline constexpr DWORD TOKEN_QUERY = 8;
struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;
struct SID {
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1];
};
struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};
struct TOKEN_USER {
    SID_AND_ATTRIBUTES User;
};
struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1];
};
inline constexpr SID_IDENTIFIER_AUTHORITY SECURITY_NT_AUTHORITY = {{0, 0, 0, 0, 0, 5}};
enum : DWORD {
    SE_GROUP_MANDATORY = 1,
    SE_GROUP_ENABLED_BY_DEFAULT = 2,
    SE_GROUP_ENABLED = 4,
    SE_GROUP_USE_FOR_DENY_ONLY = 16,
    SDDL_REVISION_1 = 1,
    SECURITY_BUILTIN_DOMAIN_RID = 0x20,
    DOMAIN_ALIAS_RID_ADMINS = 0x220,
    OWNER_SECURITY_INFORMATION = 1,
    GROUP_SECURITY_INFORMATION = 2,
    DACL_SECURITY_INFORMATION = 4,
    SACL_SECURITY_INFORMATION = 8,
    ERROR_UNKNOWN_REVISION = 1305,
    ERROR_NONE_MAPPED = 1332,
    ERROR_INVALID_ACL = 1336,
    ERROR_INVALID_SID = 1337,
    ERROR_INVALID_SECURITY_DESCR = 1338,
};

// ---- winspool.h, levels that only some operations use ---------------------------------------------------------------
/// The one level of a printer without a text, and so without an A form.
struct PRINTER_INFO_3 {
    PSECURITY_DESCRIPTOR pSecurityDescriptor;
};
struct PRINTER_INFO_7A {
    LPSTR pszObjectGUID;
    DWORD dwAction;
};
struct PRINTER_INFO_8A {
    LPDEVMODEA pDevMode;
};
enum : DWORD {
    PRINTER_CONTROL_RESUME = 2,
    PRINTER_CONTROL_PURGE = 3,
    PRINTER_CONTROL_SET_STATUS = 4,
    DSPRINT_PUBLISH = 1,
    DSPRINT_UPDATE = 2,
    DSPRINT_UNPUBLISH = 4,
    DSPRINT_REPUBLISH = 8,
    DSPRINT_PENDING = 0x80000000,
    DPD_DELETE_UNUSED_FILES = 1,
    DPD_DELETE_SPECIFIC_VERSION = 2,
    ERROR_ENVVAR_NOT_FOUND = 203,
    ERROR_NO_TOKEN = 1008,
    ERROR_RESOURCE_DATA_NOT_FOUND = 1812,
    ERROR_RESOURCE_TYPE_NOT_FOUND = 1813,
    ERROR_PRINTER_DRIVER_IN_USE = 3001,
    PRINTER_ENUM_CONTAINER = 0x8000,
    PRINTER_ENUM_ICON1 = 0x10000,
    PRINTER_ENUM_ICON2 = 0x20000,
    PRINTER_ENUM_ICON3 = 0x40000,
    PRINTER_ENUM_ICON8 = 0x800000,
};
inline constexpr UINT GMEM_ZEROINIT = 0x40;

// ---- shlobj.h -------------------------------------------------------------------------------------------------------
enum : DWORD {
    CSIDL_PROGRAMS = 2,
    CSIDL_COMMON_PROGRAMS = 0x17,
    SHCNE_NETSHARE = 0x200,
    SHCNE_NETUNSHARE = 0x400,
    SHCNE_UPDATEITEM = 0x2000,
    SHCNF_PRINTERA = 2,
};
