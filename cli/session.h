// One run of the tool: the options that hold for every command, the system that it works on, and its output.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "json.h"
#include "library.h"
#include "platform/types.h"

namespace pikel::cli {

/// The system for which an INF is read.
struct Target {
    DWORD architecture = 0;  ///< dwArchitecture
    DWORD major = 0;
    DWORD minor = 0;
};

class Session {
  public:
    std::string machineFolder;  ///< --machine; empty: PIKEL_MACHINE
    std::string traceFile;      ///< --trace
    std::string targetSystem;   ///< --for: name of a system; empty: the one at hand
    bool asJson = false;        ///< --json

    /// The table of operations; the library is loaded on first use, with the machine, medium and trace set by then.
    const PI_KEL_Interface& Table();

    /// The path under which the library finds a file. On a machine a host file's folder becomes the disk in drive D:, a
    /// path with a drive letter is the machine's own. On Windows the full path. Throws ToolError for a missing file.
    std::string PathFor(const std::string& file);

    /// The same for a file that may not lie in a drive's root: the Print UI can't read a folder that ends in a
    /// backslash. On a machine the disk in drive D: is then what holds the file's folder.
    std::string PathInFolderFor(const std::string& file);

    /// The same for a folder; the result has no backslash at its end.
    std::string FolderFor(const std::string& folder);

    /// Throws ToolError, with what to do, unless a machine is named. On Windows the system itself is the machine.
    void RequireMachine();

    /// Has the next look at the machine see what the library has changed since the last one.
    void LookAgain();

    /// The named machine, or without one a fresh machine that goes with the session: for questions that change nothing
    /// which a person would want to keep. Call it behind PathFor.
    void UseSomeMachine();

    Target TargetSystem();

    /// Notes that the work is done once the system restarts: exit code 3.
    void NoteRestart() { m_exitCode = 3; }
    int ExitCode() const { return m_exitCode; }

    /// Prints a result: the JSON with --json, else what the function prints.
    void Print(const nlohmann::json& json, const std::function<void()>& asText) const;
    /// The same for an object with these members.
    void Print(std::initializer_list<JsonField> fields, const std::function<void()>& asText) const {
        Print(JsonObject(fields), asText);
    }
    /// A progress line on standard error, only where a person looks at it.
    void Progress(const std::string& text) const;

    /// Throws OperationFailed for a non-zero status.
    static void Check(const char* operation, DWORD status, DWORD prefix);

    ~Session();

  private:
    void PrepareEnvironment() const;

    int m_exitCode = 0;
    std::string m_mediumFolder;
    std::string m_scratchFolder;      ///< holds the session's own machine
    std::shared_ptr<void> m_machine;  ///< the simulated machine, for what the tool itself asks it
    std::unique_ptr<Library> m_library;
};

/// Frees a block that the table handed out.
template <class Block>
class TableBlock {
  public:
    explicit TableBlock(const PI_KEL_Interface& table) : m_table(table) {}
    ~TableBlock() {
        if (m_block != nullptr) {
            m_table.PI_KEL_FreeMemory(m_block);
        }
    }
    TableBlock(const TableBlock&) = delete;
    TableBlock& operator=(const TableBlock&) = delete;
    Block** Out() { return &m_block; }
    Block* Get() const { return m_block; }
    Block* operator->() const { return m_block; }

  private:
    const PI_KEL_Interface& m_table;
    Block* m_block = nullptr;
};

/// Narrow text of the system as UTF-8.
std::string Utf8(const char* text);
/// The same where the text may be null: JSON null then.
nlohmann::json JsonText(const char* text);
/// UTF-8 as narrow text of the system.
std::string FromUtf8(const std::string& text);

}  // namespace pikel::cli
