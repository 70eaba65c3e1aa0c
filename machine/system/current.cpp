// Which machine is current, and the one that is when nobody named one.
#include "machine/system/current.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/system/systems.h"

namespace pikel::simulated {

namespace {

Machine* current = nullptr;

/// The machine that is current when nobody named one.
class DefaultMachine {
  public:
    DefaultMachine() {
        const char* named = std::getenv("PIKEL_MACHINE");
        if (named != nullptr && *named != '\0') {
            m_machine = Machine::Open(named);
        } else {
            m_machine = Machine::CreateInMemory(*FindSystem("xp"));
        }
        const char* medium = std::getenv("PIKEL_MEDIUM");
        if (medium != nullptr && *medium != '\0') {
            m_machine->Files().InsertMedium(medium);
        }
    }
    DefaultMachine(const DefaultMachine&) = delete;
    DefaultMachine& operator=(const DefaultMachine&) = delete;

    Machine& Get() { return *m_machine; }

  private:
    std::unique_ptr<Machine> m_machine;
};

Machine& Default() {
    try {
        static DefaultMachine machine;
        return machine.Get();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pikel: no simulated machine to work on: %s\n", error.what());
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace

Machine& Current() {
    return current != nullptr ? *current : Default();
}

void Use(Machine* machine) {
    current = machine;
}

void LeaveMachine(const Machine* machine) {
    if (current == machine) {
        current = nullptr;
    }
}

}  // namespace pikel::simulated
