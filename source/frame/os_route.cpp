// The row of the running system in the tables of per-system routines.
#include "frame/os_route.h"

#include <optional>

#include "frame/os_identity.h"

namespace pikel {

namespace {

std::optional<OsRoute> g_osRoute;

DWORD XpRow(DWORD dwCpuClass) {
    if (dwCpuClass & CpuClassIa64) {
        return RouteXpIa64;
    }
    return dwCpuClass & CpuClassX64 ? RouteXpX64 : RouteXp;
}

/// Here the higher processor bit wins, should both ever be set.
DWORD VistaRow(DWORD dwCpuClass) {
    if (dwCpuClass & CpuClassX64) {
        return RouteVistaX64;
    }
    return dwCpuClass & CpuClassIa64 ? RouteVistaIa64 : RouteVista;
}

}  // namespace

DWORD ClassifyRoute(DWORD dwOsClass, DWORD dwCpuClass) {
    if (dwOsClass & (OsClassWin32s | OsClassNt3)) {
        return RouteNone;
    }
    if (dwOsClass & OsClassWindows95) {
        return RouteWindows95;
    }
    if (dwOsClass & OsClassWindows98) {
        return RouteWindows98;
    }
    if (dwOsClass & OsClassWindowsMe) {
        return RouteWindowsMe;
    }
    if (dwOsClass & OsClassNt4) {
        return RouteNt4;
    }
    if (dwOsClass & OsClassWindows2000) {
        return RouteWindows2000;
    }
    if (dwOsClass & OsClassXp) {
        return XpRow(dwCpuClass);
    }
    if (dwOsClass & OsClassVista) {
        return VistaRow(dwCpuClass);
    }
    return RouteOther;
}

const OsRoute& GetOsRoute() {
    if (!g_osRoute) {
        const OsIdentity& identity = GetOsIdentity();
        g_osRoute.emplace(ClassifyRoute(identity.osClass, identity.cpuClass));
    }
    return *g_osRoute;
}

// Stands here and not beside the identity, because the route is built from it and knows it, not the other way round.
void ForgetSystemRecords() {
    g_osRoute.reset();
    ForgetOsIdentity();
}

}  // namespace pikel
