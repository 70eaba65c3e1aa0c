// A cabinet handed out to a program, file by file, as its callback says.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "machine/setup/compressed.h"
#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// One walk through a cabinet.
class CabinetWalk {
  public:
    CabinetWalk(Machine& machine, const std::string& path, PSP_FILE_CALLBACK_A handler, PVOID context)
        : m_machine(machine),
          m_path(path),
          m_folder(path, 0, path.find_last_of("\\/") + 1),
          m_name(path, m_folder.size()),
          m_handler(handler),
          m_context(context) {}

    DWORD Code() const { return m_code; }

    /// Asks the program about a file and expands it where it says so. False ends the walk.
    bool Visit(const CabinetEntry& entry, const std::function<std::optional<std::string>()>& expand);

  private:
    /// Tells the program of the cabinet. False ends the walk.
    bool Begin();
    UINT Ask(UINT notification, const void* info, UINT_PTR second);
    /// The answer to what is only told: a code that ends the walk, or 0.
    bool Goes(DWORD answer);
    bool Place(const std::string& target, const std::optional<std::string>& bytes);

    Machine& m_machine;
    const std::string& m_path;
    const std::string m_folder;  ///< of the cabinet, with its backslash
    const std::string m_name;    ///< of the cabinet, without its folder
    PSP_FILE_CALLBACK_A m_handler;
    PVOID m_context;
    DWORD m_code = ERROR_SUCCESS;
    bool m_begun = false;
};

}  // namespace pikel::simulated
