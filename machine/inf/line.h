// The inside of one INF line: its key and its fields, with quotes, comments and continuations.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "machine/inf/characters.h"

namespace pikel::simulated {

/// A field as it stands in the text, without the blanks around it.
struct InfField {
    std::string_view raw;
    bool isPlain = true;  ///< the raw text is the value: no quotes, continuations, percent signs or NULs in it
};

struct InfLine {
    /// A line has a key when there is an equals sign behind its first field, or when that is its only one: then the one
    /// value is its own key.
    bool hasKey = false;
    InfField key;
    std::vector<InfField> values;  ///< at least one
};

/// True when a line break belongs to the line: a backslash outside quotes stands in front of it, or in front of the
/// comment at the line's end. Whole runs of backslashes and blanks count as one.
/// @param line  text up to the line break
bool IsContinued(const InfCharacters& characters, std::string_view line);

/// Takes a line apart. The views point into its text.
/// @param text  the line with its continuations, from its first character that is no blank
void ReadLine(const InfCharacters& characters, std::string_view text, InfLine& line);

/// The key alone; false for a line without one.
bool ReadKey(const InfCharacters& characters, std::string_view text, InfField& key);

/// A field's text with its quotes and continuations taken away. A NUL comes out as a blank.
void ReadField(const InfCharacters& characters, const InfField& field, std::string& text);

}  // namespace pikel::simulated
