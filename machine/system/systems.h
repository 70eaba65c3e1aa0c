// The system room joins the others: it makes and opens machines, starts them anew, and tells what system they are.
//
// The systems that a machine can be made for by name.
#pragma once

#include <span>
#include <string_view>

#include "machine/base/system_description.h"

namespace pikel::simulated {

/// The systems that `Machine::Create` knows by name, in the order in which they are listed to people.
std::span<const SystemDescription> Systems();
/// Null for an unknown name; names match without regard to case.
const SystemDescription* FindSystem(std::string_view name);

}  // namespace pikel::simulated
