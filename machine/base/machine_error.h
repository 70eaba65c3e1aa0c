// How the machine tells its user, and not a program that runs on it, of trouble.
#pragma once

#include <stdexcept>

namespace pikel::simulated {

/// A machine folder that can't be made or read. The text names the file and says what to do.
class MachineError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace pikel::simulated
