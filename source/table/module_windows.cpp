// Entry point of the DLL: keeps the module's handle, and does nothing else.
#include "frame/os_identity.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID /*reserved*/) {
    if (dwReason == DLL_PROCESS_ATTACH) {
        pikel::SetAttachedModule(hInstance);
        DisableThreadLibraryCalls(hInstance);
    } else if (dwReason == DLL_PROCESS_DETACH) {
        pikel::SetAttachedModule(nullptr);
    }
    return TRUE;
}
