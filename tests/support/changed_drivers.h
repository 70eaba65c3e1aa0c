// The spooler's list of drivers with its records changed on their way, for lists that no spooler would be brought to.
#pragma once

#include <functional>
#include <utility>

#include "support/machine_test.h"

namespace pikel::testing_support {

/// Every list of drivers passes through `change` while the object lives. One exists at a time.
/// @tparam Info  the structure of the level that is asked for
template <class Info>
class ChangedDrivers {
  public:
    using Change = std::function<void(Info* records, DWORD count)>;

    explicit ChangedDrivers(Change change) {
        s_below = m_replaced.table;
        s_change = std::move(change);
        m_replaced.table.EnumPrinterDriversA = [](LPSTR server, LPSTR environment, DWORD level, LPBYTE info, DWORD size,
                                                  LPDWORD needed, LPDWORD returned) -> BOOL {
            const BOOL done = s_below.EnumPrinterDriversA(server, environment, level, info, size, needed, returned);
            if (done) {
                s_change(reinterpret_cast<Info*>(info), *returned);
            }
            return done;
        };
    }

  private:
    static inline PlatformTable s_below;
    static inline Change s_change;
    ReplacedOperations m_replaced;
};

}  // namespace pikel::testing_support
