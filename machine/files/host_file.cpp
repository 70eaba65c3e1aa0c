// Whole files of the host.
#include "machine/files/host_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

#include "machine/base/machine_error.h"

namespace pikel::simulated {

namespace {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

[[noreturn]] void Refuse(const char* doing, const std::filesystem::path& file, int error) {
    throw MachineError(std::string("can't ") + doing + " " + file.string() + ": " + std::strerror(error));
}

}  // namespace

std::string ReadHostFile(const std::filesystem::path& file) {
    Stream stream(std::fopen(file.c_str(), "rb"));
    if (!stream) {
        Refuse("read", file, errno);
    }
    std::string bytes;
    char block[16384];
    while (std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
        bytes.append(block, count);
    }
    if (std::ferror(stream.get()) != 0) {
        Refuse("read", file, errno);
    }
    return bytes;
}

void ReplaceHostFile(const std::filesystem::path& file, std::string_view bytes) {
    std::filesystem::path fresh = file;
    fresh += ".new";
    Stream stream(std::fopen(fresh.c_str(), "wb"));
    if (!stream) {
        Refuse("write", fresh, errno);
    }
    bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
    // What was buffered may fail as late as at the close.
    isWritten = std::fclose(stream.release()) == 0 && isWritten;
    std::error_code error;
    if (isWritten) {
        std::filesystem::rename(fresh, file, error);
    }
    if (!isWritten || error) {
        int reason = error ? error.value() : errno;
        std::filesystem::remove(fresh, error);
        Refuse("write", file, reason);
    }
}

}  // namespace pikel::simulated
