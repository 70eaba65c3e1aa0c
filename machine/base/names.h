// Names of printers, servers and their like as the machine compares them.
#pragma once

#include <string_view>

namespace pikel::simulated {

class Machine;

/// Without regard to case, in the machine's code page.
bool IsSameName(const Machine& machine, std::string_view left, std::string_view right);

/// True for the empty name, and the machine's own with or without two backslashes in front.
bool IsThisComputer(const Machine& machine, std::string_view server);

}  // namespace pikel::simulated
