// Profile files: any text is read; a value that is set is found again, and nothing else is lost.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "machine/registry/profiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using pikel::simulated::ProfileText;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ProfileText profile(1252, text);
    for (const std::string& section : profile.Sections()) {
        for (const std::string& key : profile.Keys(section)) {
            profile.Find(section, key);
        }
        profile.Entries(section);
    }
    const auto sectionsBefore = profile.Sections().size();
    profile.Set("windows", "device", "Office,winspool,LPT1:");
    ProfileText again(1252, profile.Text());
    if (again.Find("windows", "device") != "Office,winspool,LPT1:" || again.Sections().size() < sectionsBefore) {
        std::abort();
    }
    return 0;
}
