// What a program holds open on the machine. Every handle is counted; a wrong closer and a double close are refused and
// noted, so that a test can end with nothing open and nothing misused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace pikel::simulated {

enum class HandleKind {
    File,
    Find,
    LegacyFile,  ///< OpenFile
    RegistryKey,
    Service,  ///< service control manager and services
    Inf,
    FileQueue,
    QueueContext,
    Printer,
    Module,
    DeviceContext,
    NetworkEnumeration,
    ComObject,
    Token,  ///< closed by CloseHandle, as a file
};

class Handles {
  public:
    /// Makes a handle for an object. Values are small multiples of 4 and are never used twice.
    /// @param description  what a report says of it, such as the path
    void* Open(HandleKind kind, std::shared_ptr<void> object, std::string description);

    /// The object behind a handle, or null when the handle is not open or of another kind. Notes no misuse.
    template <class Object>
    Object* Find(HandleKind kind, const void* handle) const {
        return static_cast<Object*>(FindObject(kind, handle));
    }

    /// Closes a handle. False, with a note, when it isn't open or is of another kind.
    bool Close(HandleKind kind, const void* handle);

    std::size_t OpenCount() const { return m_open.size(); }
    std::size_t OpenCount(HandleKind kind) const;
    /// One text for each open handle, kind first.
    std::vector<std::string> Describe() const;
    /// Every refused close since the machine was opened.
    const std::vector<std::string>& Misuses() const { return m_misuses; }
    void NoteMisuse(std::string text) { m_misuses.push_back(std::move(text)); }

  private:
    struct Entry {
        HandleKind kind;
        std::shared_ptr<void> object;
        std::string description;
    };
    void* FindObject(HandleKind kind, const void* handle) const;

    std::unordered_map<std::uintptr_t, Entry> m_open;
    std::uintptr_t m_next = 0x100;
    std::vector<std::string> m_misuses;
};

}  // namespace pikel::simulated
