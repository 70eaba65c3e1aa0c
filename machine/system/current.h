// Which machine is current.
#pragma once

namespace pikel::simulated {

class Machine;

/// Goes back to the default when the machine that goes is the current one.
void LeaveMachine(const Machine* machine);

}  // namespace pikel::simulated
