// Names as the machine compares them.
#include "machine/base/names.h"

#include "machine/base/machine.h"
#include "machine/base/text.h"

namespace pikel::simulated {

bool IsSameName(const Machine& machine, std::string_view left, std::string_view right) {
    return CompareNoCase(machine.System().codePage, left, right) == 0;
}

bool IsThisComputer(const Machine& machine, std::string_view server) {
    if (server.starts_with("\\\\")) {
        server.remove_prefix(2);
    }
    return server.empty() || IsSameName(machine, server, machine.System().computerName);
}

}  // namespace pikel::simulated
