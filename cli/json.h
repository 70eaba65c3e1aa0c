// JSON for the tool. What nearly every command needs of its class is compiled once, in json.cpp. A member that isn't
// listed works all the same and is compiled where it is used; the whole class would bring a dozen binary formats along.
#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): one list for the declarations here and the definitions in json.cpp
#define PIKEL_JSON_MEMBERS(EXTERN)                                                                                  \
    EXTERN template nlohmann::basic_json<>::basic_json(initializer_list_t, bool, value_t);                          \
    EXTERN template nlohmann::basic_json<>::basic_json(const basic_json&);                                          \
    EXTERN template nlohmann::basic_json<>::basic_json(basic_json&&) noexcept;                                      \
    EXTERN template nlohmann::basic_json<>::basic_json(value_t);                                                    \
    EXTERN template nlohmann::basic_json<>::~basic_json() noexcept;                                                 \
    EXTERN template void nlohmann::basic_json<>::json_value::destroy(value_t);                                      \
    EXTERN template nlohmann::basic_json<>::json_value::json_value(value_t);                                        \
    EXTERN template nlohmann::basic_json<> nlohmann::basic_json<>::array(initializer_list_t);                       \
    EXTERN template void nlohmann::basic_json<>::push_back(basic_json&&);                                           \
    EXTERN template void nlohmann::basic_json<>::push_back(initializer_list_t);                                     \
    EXTERN template nlohmann::basic_json<>::reference nlohmann::basic_json<>::operator[](object_t::key_type);       \
    EXTERN template nlohmann::basic_json<>::const_reference nlohmann::basic_json<>::operator[](                     \
        const object_t::key_type&) const;                                                                           \
    EXTERN template nlohmann::basic_json<>::string_t nlohmann::basic_json<>::dump(int, char, bool, error_handler_t) \
        const;

PIKEL_JSON_MEMBERS(extern)

namespace pikel::cli {

/// A member of an object.
struct JsonField {
    const char* name;
    nlohmann::json value;
};

/// An object with these members. The class's own lists of pairs do the same, but each length of a name in them is
/// another set of functions to compile.
nlohmann::json JsonObject(std::initializer_list<JsonField> fields);

}  // namespace pikel::cli
