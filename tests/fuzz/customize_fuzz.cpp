// Customisation header: any bytes are read, and the texts keep to their fields.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "inf/customize_field.h"
#include "machine/base/machine.h"
#include "machine/files/files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pikel;
    constexpr char kPath[] = "C:\\fuzz.inf";
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (simulated::Current().Files().Write(kPath, text) != 0) {
        return 0;
    }
    CInfCustomizeField field;
    if (field.GetData(kPath) != 0 || field.m_bCustomized > 1) {
        std::abort();
    }
    if (std::strlen(field.m_szCode) > 8 || std::memchr(field.m_szComment, '\0', sizeof field.m_szComment) == nullptr) {
        std::abort();
    }
    if (field.m_bCustomized == 0 && (field.m_szCode[0] != '\0' || field.m_szComment[0] != '\0')) {
        std::abort();
    }
    return 0;
}
