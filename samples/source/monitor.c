/*
 * The language monitor of the Aurora sample package, for tests of the DLL on a system whose spooler loads monitors. It
 * monitors nothing: it lets itself be loaded and registered.
 */
#include <windows.h>
#include <winspool.h>

/* winsplp.h of the driver kit: what InitializePrintMonitor hands out; all entries may be null. */
typedef struct SampleMonitorEx {
    DWORD dwMonitorSize;
    FARPROC entries[17];
} SampleMonitorEx;

__declspec(dllexport) void* WINAPI InitializePrintMonitor(LPWSTR registryRoot) {
    static SampleMonitorEx monitor;
    (void)registryRoot;
    monitor.dwMonitorSize = sizeof monitor.entries;
    return &monitor;
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    (void)instance;
    (void)reason;
    (void)reserved;
    return TRUE;
}
