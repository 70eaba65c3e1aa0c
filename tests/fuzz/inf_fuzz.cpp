// INF text: any bytes are read or refused, and every line that can be reached is walked.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "machine/inf/file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using pikel::simulated::InfFile;
    InfFile::Error error;
    const UINT codePage = size > 0 && (data[0] & 1) != 0 ? 932 : 1252;
    auto file = InfFile::Parse(std::string(reinterpret_cast<const char*>(data), size), codePage, &error);
    if (!file) {
        if (error.code == 0) {
            std::abort();  // refused without a reason
        }
        return 0;
    }
    for (std::size_t section = 0; section < file->SectionCount(); ++section) {
        const auto number = static_cast<unsigned>(section);
        // A name leads to its section: the first of that name, since sections of one name are one.
        if (!file->FindSection(file->SectionName(number))) {
            std::abort();
        }
        const auto lines = file->LineCount(number);
        for (unsigned line = 0; line < lines && line < 64; ++line) {
            const auto fields = file->FieldCount(number, line);
            for (unsigned field = 0; field <= fields + 1 && field < 64; ++field) {
                file->Field(number, line, field);
            }
            file->LineText(number, line);
        }
        file->FindLine(number, "Provider");
    }
    return 0;
}
