#include "machine/setup/compressed.h"

#include <mspack.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace pikel::simulated {

namespace {

/// Most bytes that one file of a damaged or hostile cabinet may expand to.
constexpr std::size_t kLargestFile = std::size_t{1} << 28;

constexpr char kInput[] = "input";
constexpr char kOutput[] = "output";

/// What the library reads and writes: it asks for files by name, and gets these texts.
struct Memory {
    mspack_system system{};  ///< first, so that the library's pointer leads here
    std::string_view input;
    std::string output;
};

struct OpenMemory {
    Memory* memory = nullptr;
    bool isOutput = false;
    std::size_t at = 0;
};

OpenMemory* Of(mspack_file* file) {
    return reinterpret_cast<OpenMemory*>(file);
}

mspack_file* Open(mspack_system* system, const char* name, int mode) {
    auto* memory = reinterpret_cast<Memory*>(system);
    const bool isOutput = std::strcmp(name, kOutput) == 0;
    if (isOutput != (mode == MSPACK_SYS_OPEN_WRITE)) {
        return nullptr;
    }
    if (isOutput) {
        memory->output.clear();
    }
    return reinterpret_cast<mspack_file*>(new (std::nothrow) OpenMemory{memory, isOutput, 0});
}

void Close(mspack_file* file) {
    delete Of(file);
}

int Read(mspack_file* file, void* buffer, int bytes) {
    OpenMemory& open = *Of(file);
    if (open.isOutput || bytes < 0) {
        return -1;
    }
    const std::size_t count = std::min(static_cast<std::size_t>(bytes), open.memory->input.size() - open.at);
    std::memcpy(buffer, open.memory->input.data() + open.at, count);
    open.at += count;
    return static_cast<int>(count);
}

int Write(mspack_file* file, void* buffer, int bytes) {
    OpenMemory& open = *Of(file);
    if (!open.isOutput || bytes < 0 || open.memory->output.size() + static_cast<std::size_t>(bytes) > kLargestFile) {
        return -1;
    }
    try {
        open.memory->output.append(static_cast<const char*>(buffer), static_cast<std::size_t>(bytes));
    } catch (...) {
        return -1;  // not through the library's frames
    }
    return bytes;
}

int Seek(mspack_file* file, off_t offset, int mode) {
    OpenMemory& open = *Of(file);
    const auto size = static_cast<off_t>(open.isOutput ? open.memory->output.size() : open.memory->input.size());
    const off_t base = mode == MSPACK_SYS_SEEK_START ? 0
                       : mode == MSPACK_SYS_SEEK_CUR ? static_cast<off_t>(open.at)
                                                     : size;
    if (base + offset < 0 || base + offset > size) {
        return -1;
    }
    open.at = static_cast<std::size_t>(base + offset);
    return 0;
}

off_t Tell(mspack_file* file) {
    return static_cast<off_t>(Of(file)->at);
}

void Message(mspack_file*, const char*, ...) {}

void* Allocate(mspack_system*, size_t bytes) {
    return std::malloc(bytes);
}

void Free(void* block) {
    std::free(block);
}

void Copy(void* source, void* target, size_t bytes) {
    std::memcpy(target, source, bytes);
}

Memory MemoryOf(std::string_view input) {
    Memory memory;
    memory.system.open = Open;
    memory.system.close = Close;
    memory.system.read = Read;
    memory.system.write = Write;
    memory.system.seek = Seek;
    memory.system.tell = Tell;
    memory.system.message = Message;
    memory.system.alloc = Allocate;
    memory.system.free = Free;
    memory.system.copy = Copy;
    memory.input = input;
    return memory;
}

WORD DosDate(const mscabd_file& file) {
    return static_cast<WORD>((file.date_y - 1980) << 9 | file.date_m << 5 | file.date_d);
}

WORD DosTime(const mscabd_file& file) {
    return static_cast<WORD>(file.time_h << 11 | file.time_m << 5 | file.time_s / 2);
}

std::optional<std::string> ExpandSzdd(std::string_view bytes) {
    Memory memory = MemoryOf(bytes);
    const std::unique_ptr<msszdd_decompressor, decltype(&mspack_destroy_szdd_decompressor)> decompressor(
        mspack_create_szdd_decompressor(&memory.system), &mspack_destroy_szdd_decompressor);
    if (decompressor == nullptr) {
        return std::nullopt;
    }
    const int code = decompressor->decompress(decompressor.get(), kInput, kOutput);
    const std::optional<DWORD> size = ExpandedSize(bytes);
    // A file that is cut short expands to less than it tells.
    if (code != MSPACK_ERR_OK || memory.output.size() != size) {
        return std::nullopt;
    }
    return std::move(memory.output);
}

}  // namespace

Compression CompressionOf(std::string_view bytes) {
    if (bytes.starts_with("MSCF")) {
        return Compression::Cabinet;
    }
    return bytes.starts_with(std::string_view("SZDD\x88\xF0\x27\x33", 8)) ? Compression::Szdd : Compression::None;
}

std::string CompressedName(const std::string& path) {
    const std::size_t separator = path.find_last_of("\\/:");
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (separator != std::string::npos && dot < separator)) {
        return path + "._";
    }
    std::string name = path;
    if (path.size() - dot > 3) {
        name.back() = '_';
    } else {
        name += '_';
    }
    return name;
}

bool WalkCabinet(std::string_view bytes,
                 const std::function<bool(const CabinetEntry& entry,
                                          const std::function<std::optional<std::string>()>& expand)>& visit) {
    Memory memory = MemoryOf(bytes);
    const std::unique_ptr<mscab_decompressor, decltype(&mspack_destroy_cab_decompressor)> decompressor(
        mspack_create_cab_decompressor(&memory.system), &mspack_destroy_cab_decompressor);
    if (decompressor == nullptr) {
        return false;
    }
    const auto close = [&](mscabd_cabinet* open) { decompressor->close(decompressor.get(), open); };
    const std::unique_ptr<mscabd_cabinet, decltype(close)> cabinet(decompressor->open(decompressor.get(), kInput),
                                                                   close);
    if (cabinet == nullptr) {
        return false;
    }
    for (mscabd_file* file = cabinet->files; file != nullptr; file = file->next) {
        const CabinetEntry entry = {file->filename, (file->attribs & MSCAB_ATTRIB_UTF_NAME) != 0,
                                    file->length,   static_cast<WORD>(file->attribs & ~MSCAB_ATTRIB_UTF_NAME),
                                    DosDate(*file), DosTime(*file)};
        const auto expand = [&]() -> std::optional<std::string> {
            if (decompressor->extract(decompressor.get(), file, kOutput) != MSPACK_ERR_OK) {
                return std::nullopt;
            }
            return std::move(memory.output);
        };
        if (!visit(entry, expand)) {
            break;
        }
    }
    return true;
}

std::optional<std::string> Expand(std::string_view bytes) {
    if (CompressionOf(bytes) == Compression::Szdd) {
        return ExpandSzdd(bytes);
    }
    std::optional<std::string> expanded;
    WalkCabinet(bytes, [&](const CabinetEntry&, const std::function<std::optional<std::string>()>& expand) {
        expanded = expand();
        return false;
    });
    return expanded;
}

std::optional<DWORD> ExpandedSize(std::string_view bytes) {
    if (CompressionOf(bytes) == Compression::Szdd) {
        constexpr std::size_t kSizeAt = 10;
        if (bytes.size() < kSizeAt + 4) {
            return std::nullopt;
        }
        DWORD size = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            size |= static_cast<DWORD>(static_cast<unsigned char>(bytes[kSizeAt + i])) << (8 * i);
        }
        return size;
    }
    std::optional<DWORD> size;
    WalkCabinet(bytes, [&](const CabinetEntry& entry, const std::function<std::optional<std::string>()>&) {
        size = entry.size;
        return false;
    });
    return size;
}

}  // namespace pikel::simulated
