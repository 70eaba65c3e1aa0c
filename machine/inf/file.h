// The INF room: INF files as text, INFs that programs have open, and directory ids. It stands on the files.
//
// The text of an INF file, taken apart as far as somebody looks: opening finds the sections, touching a section finds
// its lines, reading a line finds its fields. Nothing is copied but what quotes or %strings% change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/name_index.h"
#include "machine/inf/characters.h"
#include "machine/inf/line.h"
#include "platform/types.h"

namespace pikel::simulated {

class InfFile {
  public:
    /// Longest name of a section, in bytes.
    static constexpr std::size_t kLongestSectionName = 255;
    /// Longest line text that %strings% may make, in bytes; those beyond it stay as they are.
    static constexpr std::size_t kLongestText = 16 * 1024 * 1024;

    struct Error {
        DWORD code = 0;
        UINT line = 0;  ///< from 1; 0 when no line is to blame
    };

    /// Reads the bytes of a file: UTF-16 or UTF-8 with their marks, UTF-16LE also without one, else text of the code
    /// page.
    /// @param error [out]  1006 for no bytes at all, 0xE0000000 for text before the first section, 0xE0000001 for a
    ///                     section name that isn't closed, 0xE0000002 for one that is too long
    /// @return null with an error
    static std::unique_ptr<InfFile> Parse(std::string bytes, UINT codePage, Error* error = nullptr);

    InfFile(const InfFile&) = delete;
    InfFile& operator=(const InfFile&) = delete;

    /// Gives %10% and its like their folders. Without it they stay as they are.
    using DirectoryLookUp = std::function<std::optional<std::string>(DWORD id)>;
    void SetDirectories(DirectoryLookUp directories) { m_directories = std::move(directories); }

    // Sections and lines have numbers from 0. Names match without regard to case; sections of one name are one.
    std::size_t SectionCount() const { return m_sections.size(); }
    std::optional<UINT> FindSection(std::string_view name) const;
    /// As the file writes it first.
    std::string_view SectionName(UINT section) const { return m_sections[section].name; }
    UINT LineCount(UINT section);
    /// The first line with a key; keys are compared after substitution.
    std::optional<UINT> FindLine(UINT section, std::string_view key);

    // Quotes and strings are resolved. A view lives until the next call.
    /// Fields right of the equals sign.
    UINT FieldCount(UINT section, UINT line);
    /// Field 0 is the key, or the one value of a line without an equals sign. Nothing for a field that isn't there.
    std::optional<std::string_view> Field(UINT section, UINT line, UINT index);
    /// Fields from 1 on, joined by commas.
    std::string_view LineText(UINT section, UINT line);

    /// All fields from 1 on.
    std::vector<std::string> Fields(UINT section, UINT line);
    /// Field 1 of the first line with a key in a section; nothing when there is none.
    std::optional<std::string> Value(std::string_view section, std::string_view key);

  private:
    struct Chunk {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::uint32_t next = 0;  ///< the section's next chunk; 0: none, for chunk 0 follows no other
    };
    /// What is known of a section once somebody looked at it.
    struct Content {
        std::vector<std::string_view> lines;  ///< whole lines with their continuations
        std::unique_ptr<NameIndex> keys;      ///< first line of each key; null until somebody looks for one
    };
    struct Section {
        std::string_view name;
        std::uint32_t firstChunk = 0;
        std::uint32_t lastChunk = 0;
        std::unique_ptr<Content> content;
    };
    struct String {
        std::string name;
        std::string value;
    };

    InfFile(std::string text, UINT codePage);

    Error FindSections();
    Error ReadHeader(std::string_view line, std::size_t begin);
    void OpenSection(std::string_view name, std::size_t begin);
    std::string_view NextPhysicalLine(std::size_t& at) const;
    std::string_view WholeLine(std::string_view first, std::size_t& at) const;
    std::size_t NextHeader(std::size_t at) const;
    bool MayContinueLines() const;

    std::optional<UINT> FindSection(std::string_view name, std::uint32_t hash) const;
    Content& ContentOf(UINT section);
    void IndexKeys(Content& content);
    /// The key of a line after substitution; nothing for a line without one. `text` is used when it isn't plain.
    std::optional<std::string_view> KeyOf(std::string_view line, std::string& text);
    const InfLine& TakeApart(UINT section, UINT line);
    /// @param room  bytes that substitution may fill
    std::string_view ValueOf(const InfField& field, std::string& text, std::size_t room = kLongestText);
    void Substitute(std::string& text, std::size_t room);
    /// A view lives until the next call.
    std::optional<std::string_view> StringNamed(std::string_view name);
    void ReadStrings(std::string_view section);

    std::string m_text;
    InfCharacters m_characters;
    bool m_hasContinuations;  ///< some line may go on behind its break
    std::vector<Section> m_sections;
    std::vector<Chunk> m_chunks;
    NameIndex m_sectionNames;
    DirectoryLookUp m_directories;

    bool m_hasStrings = false;
    std::vector<String> m_strings;
    NameIndex m_stringNames;
    std::string m_directory;

    // The line that was looked at last: fields are mostly read one after the other, and each of them twice, for its
    // size and for its text. Its key has a place of its own, for lists of keys touch nothing else.
    struct Place {
        UINT section = 0xffffffff;
        UINT line = 0xffffffff;

        bool operator==(const Place&) const = default;
    };
    Place m_last;
    InfLine m_parts;
    Place m_lastKey;
    std::optional<std::string_view> m_key;
    std::string m_keyText;
    std::string m_value;
    std::string m_substituted;
    std::string m_lineText;
};

}  // namespace pikel::simulated
