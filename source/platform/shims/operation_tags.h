// A tag for each platform operation, from the list: its name, its parameters' names, its pointer type and how it fails.
// The shims are templates over these.
#pragma once

#include <string_view>
#include <type_traits>

#include "platform/platform.h"

namespace pikel::shims {

namespace tag {
#define OPERATION(result, name, parameters, failureForm)             \
    struct name {                                                    \
        static constexpr std::string_view kName = #name;             \
        static constexpr std::string_view kParameters = #parameters; \
        using Failure = failure::failureForm;                        \
        using Pointer = decltype(PlatformTable::name);               \
    };
#define LOOKED_UP(module, result, name, parameters, failureForm)     \
    struct name {                                                    \
        static constexpr std::string_view kName = #name;             \
        static constexpr std::string_view kParameters = #parameters; \
        using Failure = failure::failureForm;                        \
        using Pointer = looked_up::name;                             \
    };
#include "platform/operations/all.def"
}  // namespace tag

/// Fills a table with Wrapper<Tag>::Call for each imported operation and keeps what lies below in Wrapper<Tag>::below.
template <template <class> class Wrapper>
PlatformTable WrapTable(const PlatformTable& inner) {
    PlatformTable table = inner;
#define OPERATION(result, name, parameters, failureForm) \
    Wrapper<tag::name>::below = inner.name;              \
    table.name = &Wrapper<tag::name>::Call;
#define LOOKED_UP(module, result, name, parameters, failureForm)
#include "platform/operations/all.def"
    return table;
}

/// For a shim's GetProcAddress: puts Wrapper<Tag>::Call in the place of a function that is on the list. Others stay.
template <template <class> class Wrapper>
FARPROC WrapLookedUp(std::string_view symbol, FARPROC found) {
#define OPERATION(result, name, parameters, failureForm)
#define LOOKED_UP(module, result, name, parameters, failureForm)                                   \
    if (symbol == #name) {                                                                         \
        auto function = reinterpret_cast<looked_up::name>(reinterpret_cast<void (*)()>(found));    \
        if (function != &Wrapper<tag::name>::Call) {                                               \
            Wrapper<tag::name>::below = function;                                                  \
        }                                                                                          \
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&Wrapper<tag::name>::Call)); \
    }
#include "platform/operations/all.def"
    return found;
}

}  // namespace pikel::shims
