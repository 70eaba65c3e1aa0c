// The string table of PRINTUI.DLL.
#include "machine/printui/strings.h"

#include <algorithm>
#include <iterator>

#include "machine/base/machine.h"

namespace pikel::simulated {

namespace {

struct TableText {
    UINT id;
    std::string_view text;
};
/// Later systems name versions otherwise, under other ids.
constexpr TableText kTexts2000[] = {
    {16050, "Windows 95 or 98"},
    {16055, "Windows NT 4.0"},
    {16056, "Windows 2000"},
};

}  // namespace

std::string_view PrintUIString(const Machine& machine, UINT id) {
    const auto* found = std::ranges::find(kTexts2000, id, &TableText::id);
    const bool isThere = machine.Generation() == Generation::Windows2000 && found != std::end(kTexts2000);
    return isThere ? found->text : std::string_view();
}

}  // namespace pikel::simulated
