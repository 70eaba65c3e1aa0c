// Cabinets and compressed files as the Setup API hands them out.
#include <cstring>
#include <functional>
#include <optional>
#include <string>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/operations.h"
#include "machine/setup/cabinet_walk.h"
#include "machine/setup/compressed.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kReadFault = 30;  // ERROR_READ_FAULT

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
