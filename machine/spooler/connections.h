// How a user connects to shared printers of other computers, NT family.
#pragma once

#include <string_view>

#include "machine/spooler/connection_store.h"

namespace pikel::simulated {

class Connections : public ConnectionStore {
  public:
    using ConnectionStore::ConnectionStore;

    /// @return 87 for an empty name; 1801 for one that isn't a shared printer's; what its ConnectCode says
    DWORD Add(std::string_view name);
    /// @return 87 for an empty name; 1801 for one without a connection
    DWORD Remove(std::string_view name);
};

}  // namespace pikel::simulated
