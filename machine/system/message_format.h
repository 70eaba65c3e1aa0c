// Messages with places for texts of the caller.
#pragma once

#include <cstdarg>
#include <optional>
#include <string>
#include <string_view>

namespace pikel::simulated {

/// The texts that stand for %1, %2 and so on, which come in one of two forms. They are asked for in rising order.
class MessageInserts {
  public:
    MessageInserts(bool isArray, va_list* arguments) : m_isArray(isArray), m_arguments(arguments) {}

    /// Null when there is none. Numbers beyond 99 don't exist.
    const char* At(unsigned number);

  private:
    bool m_isArray;
    va_list* m_arguments;
    unsigned m_taken = 0;
    const char* m_texts[99] = {};
};

/// Puts the inserts in. Nothing when one is missing. "%0" ends the text, "%n" is a line break, "%%" a percent sign; any
/// other character behind a percent sign stands for itself.
std::optional<std::string> ExpandMessage(std::string_view text, MessageInserts inserts);

}  // namespace pikel::simulated
