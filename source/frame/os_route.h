// Which per-system routine serves: a row number for the running system, and tables of 12 routines that it indexes.
#pragma once

#include <array>
#include <cstddef>

#include "platform/types.h"

namespace pikel {

/// Rows of every table, in this order. 99: Win32s and NT 3.x, for which no route exists.
enum OsRouteIndex : DWORD {
    RouteWindows95 = 0,
    RouteWindows98 = 1,
    RouteWindowsMe = 2,
    RouteNt4 = 3,
    RouteWindows2000 = 4,
    RouteXp = 5,
    RouteXpIa64 = 6,
    RouteXpX64 = 7,
    RouteVista = 8,
    RouteVistaIa64 = 9,
    RouteVistaX64 = 10,
    RouteOther = 11,
    RouteNone = 99,
};

inline constexpr std::size_t kRouteCount = 12;

/// A table of routines, one for each row.
template <class Routine>
using OsRouteTable = std::array<Routine, kRouteCount>;

/// True when no cell of a table is null; every table asserts it.
template <class Routine>
constexpr bool IsComplete(const OsRouteTable<Routine>& table) {
    for (Routine routine : table) {
        // With the sanitizers a function's address is no constant to compare with null; a null cell is.
        if (__builtin_constant_p(routine == nullptr) && routine == nullptr) {
            return false;
        }
    }
    return true;
}

/// Holder of the row of the running system.
class OsRoute {
  public:
    explicit OsRoute(DWORD dwIndex) : m_dwIndex(dwIndex) {}
    DWORD Index() const { return m_dwIndex; }
    bool HasRoute() const { return m_dwIndex < kRouteCount; }

  private:
    DWORD m_dwIndex;
};

/// The one instance, built on first use from OsIdentity.
const OsRoute& GetOsRoute();

/// Row of an OsClass and CpuClass.
DWORD ClassifyRoute(DWORD dwOsClass, DWORD dwCpuClass);

/// Calls the row of the running system with the arguments unchanged. A system without a row gets 120.
template <class Result, class... Parameters, class... Arguments>
Result CallRoute(const OsRouteTable<Result (*)(Parameters...)>& table, Arguments&&... arguments) {
    if (!GetOsRoute().HasRoute()) {
        return static_cast<Result>(ERROR_CALL_NOT_IMPLEMENTED);
    }
    return table[GetOsRoute().Index()](static_cast<Arguments&&>(arguments)...);
}

/// A routine for rows that have no work: does nothing and returns 0.
template <class... Parameters>
DWORD NoWork(Parameters...) {
    return 0;
}

}  // namespace pikel
