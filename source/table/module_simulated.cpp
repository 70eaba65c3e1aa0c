// Entry of the native library: takes the machine's own module as the library's, and turns the trace on where
// PIKEL_TRACE names a file. The DLL for Windows has no such switch.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "frame/os_identity.h"
#include "platform/platform.h"
#include "platform/shims/trace.h"
#include "machine/base/machine.h"
#include "machine/modules/modules.h"

namespace {

/// Appends every platform call to a file, as text or, for a name that ends in ".jsonl", as JSON lines.
void StartTrace(const char* path) {
    std::FILE* file = std::fopen(path, "a");
    if (file == nullptr) {
        std::fprintf(stderr, "pikel: can't write the trace to %s; check the folder and its rights\n", path);
        return;
    }
    bool asJson = std::string_view(path).ends_with(".jsonl");
    pikel::SetPlatform(pikel::trace::Over(pikel::NativePlatform(), [file, asJson](const pikel::trace::Call& call) {
        std::fprintf(file, "%s\n", (asJson ? call.Json() : call.Text()).c_str());
        std::fflush(file);
    }));
}

struct Attach {
    Attach() {
        pikel::SetAttachedModule(pikel::simulated::LibraryModule());
        if (const char* path = std::getenv("PIKEL_TRACE"); path != nullptr && *path != '\0') {
            StartTrace(path);
        }
    }
} const g_attach;

}  // namespace
