// Which machine is current, and the one that is when nobody named one.
#include "machine/system/current.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/system/systems.h"

namespace pikel::simulated {

namespace fs = std::filesystem;

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
            MakePrivate();
        }
        const char* medium = std::getenv("PIKEL_MEDIUM");
        if (medium != nullptr && *medium != '\0') {
            m_machine->Files().InsertMedium(medium);
        }
    }
    ~DefaultMachine() {
        m_machine.reset();
        if (!m_private.empty()) {
            std::error_code ignored;
            fs::remove_all(m_private, ignored);
        }
    }
    DefaultMachine(const DefaultMachine&) = delete;
    DefaultMachine& operator=(const DefaultMachine&) = delete;

    Machine& Get() { return *m_machine; }

  private:
    void MakePrivate() {
        std::error_code error;
        fs::path pattern = fs::temp_directory_path(error) / "pikel-machine-XXXXXX";
        std::string folder = pattern.string();
        if (error || mkdtemp(folder.data()) == nullptr) {
            throw MachineError("can't make a folder like " + pattern.string() + " for a private machine");
        }
        m_private = folder;
        m_machine = Machine::Create(m_private, *FindSystem("xp"));
    }

    fs::path m_private;
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
