// The modules room: libraries and their exports, and the version resources of program files. It stands on the files.
//
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
    std::string name;  ///< full path
    std::map<std::string, FARPROC, std::less<>> exports;
};

class Modules {
  public:
    explicit Modules(Machine& machine);

    /// A library of the system by name ("winspool.drv"), or a registered one by its path. A name without a folder is
    /// looked for on the search path, one without an extension gets ".dll". Null: the code is 126, or 193 for a file on
    /// the machine that is no library.
    std::shared_ptr<Module> Load(std::string_view name, DWORD* code);

    /// Puts a library at a path of the machine, such as a port SDK; the file need not exist.
    void Register(std::string_view path, std::map<std::string, FARPROC, std::less<>> exports);
    /// Takes a library, or one of its exports, away.
    void Remove(std::string_view name);
    void RemoveExport(std::string_view name, std::string_view symbol);

    // The handle-based calls of operations.h use these. One library has one handle, however often it is loaded.
    /// A library with its handle counted. Null: *code tells why.
    HMODULE Open(std::string_view name, DWORD* code);
    /// Takes one count back; the last one closes the handle. False for a handle that is no loaded library.
    bool Close(HMODULE handle);
    /// Null for a handle that is no loaded library.
    const Module* Find(HMODULE handle) const;
    /// Full path of a loaded library, of the program for null; empty for any other handle.
    std::string PathOf(HMODULE handle) const;

  private:
    struct Loaded;
    std::string KeyOf(std::string_view path) const;
    std::shared_ptr<Module> LoadFrom(const std::string& path, DWORD* code) const;
    std::shared_ptr<Module> SystemLibrary(std::string_view name) const;
    bool IsRemoved(std::string_view name) const;

    Machine& m_machine;
    std::map<std::string, std::shared_ptr<Module>, std::less<>>
        m_modules;                                          ///< registered ones, by the key of their path
    std::set<std::string, std::less<>> m_removed;           ///< file names, and "name!symbol" for exports
    std::map<std::string, HMODULE, std::less<>> m_handles;  ///< of loaded ones, by the key of their path
};

/// Handle of the library's own module, whose path is Machine::ModulePath(). Valid at all times, and not counted as
/// open.
HMODULE LibraryModule();

}  // namespace pikel::simulated
