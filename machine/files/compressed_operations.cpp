// Cabinets and compressed files as the Setup API hands them out.
#include <cstring>
#include <functional>
#include <optional>
#include <string>

#include "machine/files/compressed.h"
#include "machine/system/machine.h"
#include "machine/operations.h"
#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kCancelled = 1223;          // ERROR_CANCELLED (winerror.h)
constexpr DWORD kReadFault = 30;            // ERROR_READ_FAULT
constexpr WORD kOrdinaryAttributes = 0x27;  // read-only, hidden, system, archive

/// A file's bytes, as far as a program may read it.
DWORD ReadWhole(Machine& machine, const char* path, std::string& bytes) {
    if (path == nullptr || *path == '\0') {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD code = machine.Files().CheckOpen(path, GENERIC_READ, FILE_SHARE_READ);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    if (machine.Files().IsDirectory(path)) {
        return ERROR_ACCESS_DENIED;
    }
    std::optional<std::string> read = machine.Files().Read(path);
    if (!read) {
        return ERROR_ACCESS_DENIED;
    }
    bytes = *std::move(read);
    return ERROR_SUCCESS;
}

/// Reads a file under its name or else under its compressed one.
DWORD ReadSource(Machine& machine, const char* path, std::string& actualPath, std::string& bytes) {
    DWORD code = ReadWhole(machine, path, bytes);
    if (code == ERROR_SUCCESS) {
        actualPath = path;
        return code;
    }
    if (code != ERROR_FILE_NOT_FOUND) {
        return code;
    }
    actualPath = CompressedName(path);
    return ReadWhole(machine, actualPath.c_str(), bytes) == ERROR_SUCCESS ? ERROR_SUCCESS : code;
}

/// The code, also as last error.
DWORD Tell(DWORD code) {
    return code == ERROR_SUCCESS ? code : Fail(code, code);
}

UINT TypeOf(Compression compression) {
    switch (compression) {
        case Compression::Szdd:
            return FILE_COMPRESSION_WINLZA;
        case Compression::Cabinet:
            return FILE_COMPRESSION_NTCAB;
        default:
            return FILE_COMPRESSION_NONE;
    }
}

/// One walk through a cabinet for a program.
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
    bool Visit(const CabinetEntry& entry, const std::function<std::optional<std::string>()>& expand) {
        if (!m_begun && !Begin()) {
            return false;
        }
        const UINT codePage = m_machine.System().codePage;
        const std::string name = entry.isUtf8 ? FromWide(codePage, ToWide(CP_UTF8, entry.name)) : entry.name;
        FILE_IN_CABINET_INFO_A info{};
        info.NameInCabinet = name.c_str();
        info.FileSize = entry.size;
        info.DosDate = entry.date;
        info.DosTime = entry.time;
        info.DosAttribs = entry.attributes & kOrdinaryAttributes;
        lastError = ERROR_SUCCESS;
        const UINT answer = Ask(SPFILENOTIFY_FILEINCABINET, &info, reinterpret_cast<UINT_PTR>(m_path.c_str()));
        if (answer == FILEOP_DOIT) {
            info.FullTargetName[sizeof info.FullTargetName - 1] = '\0';
            return Place(info.FullTargetName, expand());
        }
        if (answer == FILEOP_ABORT) {
            m_code = lastError != ERROR_SUCCESS ? lastError : kCancelled;
        }
        return answer == FILEOP_SKIP;
    }

  private:
    /// Tells the program of the cabinet. False ends the walk.
    bool Begin() {
        m_begun = true;
        const CABINET_INFO_A info = {m_folder.c_str(), m_name.c_str(), "", 0, 0};
        return Goes(Ask(SPFILENOTIFY_CABINETINFO, &info, 0));
    }

    UINT Ask(UINT notification, const void* info, UINT_PTR second) {
        return m_handler(m_context, notification, reinterpret_cast<UINT_PTR>(info), second);
    }

    /// The answer to what is only told: a code that ends the walk, or 0.
    bool Goes(DWORD answer) {
        m_code = answer;
        return answer == ERROR_SUCCESS;
    }

    bool Place(const std::string& target, const std::optional<std::string>& bytes) {
        if (!bytes) {
            m_code = ERROR_INVALID_DATA;
            return false;
        }
        // The system makes no folders here; that is the program's to do.
        const std::size_t separator = target.find_last_of("\\/");
        if (separator != std::string::npos && !m_machine.Files().IsDirectory(target.substr(0, separator + 1))) {
            m_code = ERROR_PATH_NOT_FOUND;
            return false;
        }
        m_code = m_machine.Files().Write(target, *bytes);
        if (m_code != ERROR_SUCCESS) {
            return false;
        }
        const FILEPATHS_A paths = {target.c_str(), m_path.c_str(), ERROR_SUCCESS, 0};
        return Goes(Ask(SPFILENOTIFY_FILEEXTRACTED, &paths, 0));
    }

    Machine& m_machine;
    const std::string& m_path;
    const std::string m_folder;  ///< of the cabinet, with its backslash
    const std::string m_name;    ///< of the cabinet, without its folder
    PSP_FILE_CALLBACK_A m_handler;
    PVOID m_context;
    DWORD m_code = ERROR_SUCCESS;
    bool m_begun = false;
};

}  // namespace

BOOL WINAPI SetupIterateCabinetA(PCSTR CabinetFile, DWORD, PSP_FILE_CALLBACK_A MsgHandler, PVOID Context) {
    Machine& machine = Current();
    std::string bytes;
    DWORD code =
        MsgHandler == nullptr ? static_cast<DWORD>(ERROR_INVALID_PARAMETER) : ReadWhole(machine, CabinetFile, bytes);
    if (code != ERROR_SUCCESS) {
        return Fail(code, FALSE);
    }
    const std::string path = CabinetFile;
    CabinetWalk walk(machine, path, MsgHandler, Context);
    const bool isCabinet =
        WalkCabinet(bytes, [&](const CabinetEntry& entry, const std::function<std::optional<std::string>()>& expand) {
            return walk.Visit(entry, expand);
        });
    return Outcome(isCabinet ? walk.Code() : static_cast<DWORD>(ERROR_INVALID_DATA));
}

DWORD WINAPI SetupGetFileCompressionInfoA(PCSTR SourceFileName, PSTR* ActualSourceFileName, PDWORD SourceFileSize,
                                          PDWORD TargetFileSize, PUINT CompressionType) {
    if (ActualSourceFileName == nullptr || SourceFileSize == nullptr || TargetFileSize == nullptr ||
        CompressionType == nullptr) {
        return Tell(ERROR_INVALID_PARAMETER);
    }
    *ActualSourceFileName = nullptr;
    Machine& machine = Current();
    std::string path;
    std::string bytes;
    const DWORD code = ReadSource(machine, SourceFileName, path, bytes);
    if (code != ERROR_SUCCESS) {
        return Tell(code);
    }
    const Compression compression = CompressionOf(bytes);
    const std::optional<DWORD> size =
        compression == Compression::None ? static_cast<DWORD>(bytes.size()) : ExpandedSize(bytes);
    if (!size) {
        return Tell(ERROR_INVALID_DATA);
    }
    auto* name = static_cast<char*>(machine.Heap().Allocate(BlockKind::Local, path.size() + 1));
    if (name == nullptr) {
        return Tell(ERROR_NOT_ENOUGH_MEMORY);
    }
    path.copy(name, path.size());
    *ActualSourceFileName = name;
    *SourceFileSize = static_cast<DWORD>(bytes.size());
    *TargetFileSize = *size;
    *CompressionType = TypeOf(compression);
    return ERROR_SUCCESS;
}

DWORD WINAPI SetupDecompressOrCopyFileA(PCSTR SourceFileName, PCSTR TargetFileName, PUINT CompressionType) {
    if (TargetFileName == nullptr || *TargetFileName == '\0') {
        return Tell(ERROR_INVALID_PARAMETER);
    }
    Machine& machine = Current();
    std::string path;
    std::string bytes;
    const DWORD code = ReadSource(machine, SourceFileName, path, bytes);
    if (code != ERROR_SUCCESS) {
        return Tell(code);
    }
    const Compression compression = CompressionOf(bytes);
    const bool isCopied =
        CompressionType != nullptr ? *CompressionType == FILE_COMPRESSION_NONE : compression == Compression::None;
    if (isCopied) {
        return Tell(machine.Files().Copy(path, TargetFileName, false));
    }
    if (compression == Compression::None) {
        return Tell(kReadFault);
    }
    const std::optional<std::string> expanded = Expand(bytes);
    return Tell(expanded ? machine.Files().Write(TargetFileName, *expanded) : static_cast<DWORD>(ERROR_INVALID_DATA));
}

}  // namespace pikel::simulated
