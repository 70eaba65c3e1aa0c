// .reg text: any text is taken or refused whole, and what was taken comes out the same when it is written and read
// again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "machine/registry/registry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using pikel::simulated::Registry;
    Registry first;
    if (!first.Parse(std::string_view(reinterpret_cast<const char*>(data), size)).empty()) {
        return 0;
    }
    const std::string text = first.Text();
    Registry second;
    if (!second.Parse(text).empty() || second.Text() != text) {
        std::abort();
    }
    return 0;
}
