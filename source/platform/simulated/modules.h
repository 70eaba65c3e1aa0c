// The libraries that a program can load on the machine, and what each exports on which system.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// A library: its exports by name. "PRINTUI.DLL" and "printui.dll" are one.
struct Module {
    std::string name;  ///< file name, or the full path of a registered one
    std::map<std::string, FARPROC, std::less<>> exports;
};

class Modules {
 public:
    explicit Modules(Machine& machine);

    /// A library of the system by name ("winspool.drv"), or a registered one by its path. Null: the code is 126, or 193
    /// for a file on the machine that is no library.
    std::shared_ptr<Module> Load(std::string_view name, DWORD* code);

    /// Puts a library at a path of the machine, such as a port SDK; the file need not exist.
    void Register(std::string_view path, std::map<std::string, FARPROC, std::less<>> exports);
    /// Takes a library, or one of its exports, away.
    void Remove(std::string_view name);
    void RemoveExport(std::string_view name, std::string_view symbol);

 private:
    Machine& m_machine;
    std::map<std::string, std::shared_ptr<Module>, std::less<>> m_modules;
    std::set<std::string, std::less<>> m_removed;
};

}  // namespace pikel::simulated
