// Code pages and names. The conversions of the C library are asked once for every character of a page; from then on a
// page is a pair of tables.
#include "machine/base/text.h"

#include <iconv.h>
#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>

namespace pikel::simulated {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char16_t kNone = 0;

/// Conversion descriptor of the C library.
class Iconv {
  public:
    Iconv(const char* to, const char* from) : m_descriptor(iconv_open(to, from)) {}
    ~Iconv() {
        if (IsOpen()) {
            iconv_close(m_descriptor);
        }
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    bool IsOpen() const { return m_descriptor != reinterpret_cast<iconv_t>(-1); }

    /// Converts one character. @return bytes written; 0 when the input is no whole character of the code.
    std::size_t Convert(const void* input, std::size_t inputSize, void* output, std::size_t outputSize) {
        iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
        // The C library takes the input by a pointer to non-const, and leaves it as it is.
        char* in = const_cast<char*>(static_cast<const char*>(input));
        char* out = static_cast<char*>(output);
        std::size_t left = outputSize;
        const std::size_t result = iconv(m_descriptor, &in, &inputSize, &out, &left);
        return result == 0 && inputSize == 0 ? outputSize - left : 0;
    }

  private:
    iconv_t m_descriptor;
};

/// The letters of every script. "C.UTF-8" is built into the C library.
class Letters {
  public:
    Letters() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {}
    ~Letters() {
        if (m_locale != nullptr) {
            freelocale(m_locale);
        }
    }
    Letters(const Letters&) = delete;
    Letters& operator=(const Letters&) = delete;

    wchar_t Lower(wchar_t character) const {
        return m_locale != nullptr ? static_cast<wchar_t>(towlower_l(static_cast<wint_t>(character), m_locale))
                                   : character;
    }

  private:
    locale_t m_locale;
};

char LowerAsciiByte(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// A page of one or two bytes a character. Entries of kNone don't exist, save that of NUL.
struct CodePage {
    bool known = false;
    bool doubleByte = false;
    char16_t defaultCharacter = u'?';
    std::array<bool, 256> isLead{};
    std::array<char, 256> lower{};
    std::array<char16_t, 256> single{};
    std::vector<char16_t> pairs;          ///< by lead byte * 256 + trail byte; empty for single-byte pages
    std::vector<std::uint16_t> fromWide;  ///< by character: the byte, or lead byte * 256 + trail byte

    explicit CodePage(UINT id);

  private:
    void ReadSingles(Iconv& toWide);
    void ReadPairs(Iconv& toWide);
    void AddWindowsOwn(UINT id);
    void Invert(Iconv& fromPage);
    void MakeFolding();
};

CodePage::CodePage(UINT id) {
    const std::string name = "CP" + std::to_string(id);
    Iconv toWide("UTF-16LE", name.c_str());
    Iconv fromWideConversion(name.c_str(), "UTF-16LE");
    if (toWide.IsOpen() && fromWideConversion.IsOpen()) {
        ReadSingles(toWide);
        ReadPairs(toWide);
    }
    // Pages that aren't built upon ASCII belong to other worlds.
    known = single['A'] == u'A' && single['\\'] == u'\\';
    if (!known) {
        doubleByte = false;
        isLead.fill(false);
        pairs.clear();
        for (std::size_t byte = 0; byte < 256; ++byte) {
            single[byte] = byte < 0x80 ? static_cast<char16_t>(byte) : kNone;
        }
    } else {
        AddWindowsOwn(id);
    }
    Invert(fromWideConversion);
    MakeFolding();
}

void CodePage::ReadSingles(Iconv& toWide) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto input = static_cast<unsigned char>(byte);
        char16_t character = kNone;
        if (toWide.Convert(&input, 1, &character, sizeof character) == sizeof character) {
            single[byte] = character;
        }
    }
}

void CodePage::ReadPairs(Iconv& toWide) {
    for (unsigned lead = 0x80; lead < 256; ++lead) {
        if (single[lead] != kNone) {
            continue;
        }
        for (unsigned trail = 0x20; trail < 256; ++trail) {
            const std::array<unsigned char, 2> input = {static_cast<unsigned char>(lead),
                                                        static_cast<unsigned char>(trail)};
            char16_t character = kNone;
            if (toWide.Convert(input.data(), input.size(), &character, sizeof character) != sizeof character) {
                continue;
            }
            if (pairs.empty()) {
                pairs.resize(0x10000, kNone);
            }
            pairs[lead * 256 + trail] = character;
            isLead[lead] = true;
            doubleByte = true;
        }
    }
}

/// What Windows has beyond the C library: bytes without a character stand for control characters or private ones, so
/// that every text of a single-byte page comes back as it was.
void CodePage::AddWindowsOwn(UINT id) {
    if (!doubleByte) {
        for (std::size_t byte = 0x80; byte < 256; ++byte) {
            if (single[byte] == kNone) {
                single[byte] = static_cast<char16_t>(byte);
            }
        }
    }
    if (id == 932) {
        defaultCharacter = u'\u30FB';
        single[0x80] = 0x80;
        single[0xA0] = 0xF8F0;
        single[0xFD] = 0xF8F1;
        single[0xFE] = 0xF8F2;
        single[0xFF] = 0xF8F3;
    }
    // A lead byte is one also where no character goes with it.
    for (std::size_t byte = 0x81; doubleByte && byte < 0xFF; ++byte) {
        isLead[byte] = single[byte] == kNone;
    }
}

void CodePage::Invert(Iconv& fromPage) {
    fromWide.assign(0x10000, kNone);
    for (unsigned byte = 0; byte < 256; ++byte) {
        if (single[byte] != kNone) {
            fromWide[single[byte]] = static_cast<std::uint16_t>(byte);
        }
    }
    for (std::size_t code = 0; code < pairs.size(); ++code) {
        if (pairs[code] == kNone) {
            continue;
        }
        std::uint16_t& place = fromWide[pairs[code]];
        if (place == kNone) {
            place = static_cast<std::uint16_t>(code);
            continue;
        }
        // Several codes for one character: the C library knows which of them is written.
        std::array<unsigned char, 2> bytes{};
        if (fromPage.Convert(&pairs[code], sizeof pairs[code], bytes.data(), bytes.size()) == bytes.size()) {
            place = static_cast<std::uint16_t>(bytes[0] * 256 + bytes[1]);
        }
    }
}

void CodePage::MakeFolding() {
    const Letters letters;
    for (std::size_t byte = 0; byte < 256; ++byte) {
        lower[byte] = LowerAsciiByte(static_cast<char>(byte));
        if (byte < 0x80 || doubleByte || single[byte] == kNone) {
            continue;
        }
        const auto folded = static_cast<unsigned long>(letters.Lower(static_cast<wchar_t>(single[byte])));
        if (folded < fromWide.size() && fromWide[folded] != kNone) {
            lower[byte] = static_cast<char>(fromWide[folded]);
        }
    }
}

const CodePage& PageOf(UINT id) {
    static std::map<UINT, std::unique_ptr<CodePage>> pages;
    static UINT lastId = 0;
    static const CodePage* last = nullptr;
    if (last == nullptr || lastId != id) {
        std::unique_ptr<CodePage>& page = pages[id];
        if (page == nullptr) {
            page = std::make_unique<CodePage>(id);
        }
        last = page.get();
        lastId = id;
    }
    return *last;
}

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void AppendUtf16(std::u16string& text, char32_t character) {
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
}

void AppendUtf8(std::string& text, char32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        text += static_cast<char>(0x80 | ((character >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    }
}

/// Decodes the UTF-8 sequence at `position`. @return kReplacement after the bytes that form no character.
char32_t NextUtf8(std::string_view text, std::size_t& position) {
    const auto first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80) {
        return first;
    }
    if (first < 0xC2 || first > 0xF4) {
        return kReplacement;
    }
    const int trails = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    char32_t character = first & (0x3F >> trails);
    for (int i = 0; i < trails; ++i) {
        const unsigned char byte = position < text.size() ? static_cast<unsigned char>(text[position]) : 0;
        // The second byte alone decides about overlong forms, surrogates and numbers beyond the last character.
        const unsigned char lowest = i != 0 ? 0x80 : first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
        const unsigned char highest = i != 0 ? 0xBF : first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
        if (byte < lowest || byte > highest) {
            return kReplacement;
        }
        character = character << 6 | (byte & 0x3F);
        ++position;
    }
    return character;
}

/// The character at `position` of a UTF-16 text; kReplacement for half a pair.
char32_t NextUtf16(std::u16string_view text, std::size_t& position) {
    const char16_t first = text[position++];
    if (first < 0xD800 || first > 0xDFFF) {
        return first;
    }
    if (first < 0xDC00 && position < text.size() && text[position] >= 0xDC00 && text[position] <= 0xDFFF) {
        return 0x10000 + ((first & 0x3FFu) << 10) + (text[position++] & 0x3FFu);
    }
    return kReplacement;
}

std::u16string WideFromUtf8(std::string_view text, bool& replaced) {
    std::u16string wide;
    wide.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const char32_t character = NextUtf8(text, position);
        replaced |= character == kReplacement && text.substr(start, 3) != "\xEF\xBF\xBD";
        AppendUtf16(wide, character);
    }
    return wide;
}

std::string Utf8FromWide(std::u16string_view text, bool& replaced) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char16_t first = text[position];
        const char32_t character = NextUtf16(text, position);
        replaced |= character == kReplacement && first != kReplacement;
        AppendUtf8(bytes, character);
    }
    return bytes;
}

std::u16string WideFromPage(const CodePage& page, std::string_view text, bool& replaced) {
    std::u16string wide;
    wide.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        char16_t character = page.single[byte];
        if (page.isLead[byte]) {
            const bool hasTrail = i + 1 < text.size() && text[i + 1] != '\0';
            character = hasTrail ? page.pairs[byte * 256u + static_cast<unsigned char>(text[i + 1])] : kNone;
            i += hasTrail ? 1 : 0;
        }
        if (character == kNone && byte != 0) {
            character = page.defaultCharacter;
            replaced = true;
        }
        wide += character;
    }
    return wide;
}

std::string PageFromWide(const CodePage& page, std::u16string_view text, bool& replaced) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t character = NextUtf16(text, position);
        const std::uint16_t code = character < page.fromWide.size() ? page.fromWide[character] : kNone;
        if (code == kNone && character != 0) {
            bytes += '?';
            replaced = true;
            continue;
        }
        if (code > 0xFF) {
            bytes += static_cast<char>(code >> 8);
        }
        bytes += static_cast<char>(code & 0xFF);
    }
    return bytes;
}

/// Position of the last backslash or slash that is a character of its own; npos without one.
std::size_t LastSeparator(std::string_view path, UINT codePage) {
    std::size_t last = std::string_view::npos;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '\\' || path[i] == '/') {
            last = i;
        } else if (static_cast<unsigned char>(path[i]) >= 0x80 && IsLeadByte(codePage, static_cast<BYTE>(path[i]))) {
            ++i;
        }
    }
    return last;
}

}  // namespace

bool KnowsCodePage(UINT codePage) {
    return codePage == CP_UTF8 || PageOf(codePage).known;
}

std::u16string ToWide(UINT codePage, std::string_view text, bool* replaced) {
    bool ignored = false;
    bool& flag = replaced != nullptr ? *replaced : ignored;
    flag = false;
    if (IsAscii(text)) {
        return std::u16string(text.begin(), text.end());
    }
    return codePage == CP_UTF8 ? WideFromUtf8(text, flag) : WideFromPage(PageOf(codePage), text, flag);
}

std::string FromWide(UINT codePage, std::u16string_view text, bool* replaced) {
    bool ignored = false;
    bool& flag = replaced != nullptr ? *replaced : ignored;
    flag = false;
    return codePage == CP_UTF8 ? Utf8FromWide(text, flag) : PageFromWide(PageOf(codePage), text, flag);
}

std::string ToUtf8(UINT codePage, std::string_view text) {
    if (codePage == CP_UTF8 || IsAscii(text)) {
        return std::string(text);
    }
    return FromWide(CP_UTF8, ToWide(codePage, text));
}

std::string FromUtf8(UINT codePage, std::string_view text) {
    if (codePage == CP_UTF8 || IsAscii(text)) {
        return std::string(text);
    }
    return FromWide(codePage, ToWide(CP_UTF8, text));
}

bool IsLeadByte(UINT codePage, unsigned char byte) {
    return codePage != CP_UTF8 && PageOf(codePage).isLead[byte];
}

std::string FoldCase(UINT codePage, std::string_view text) {
    if (codePage == CP_UTF8) {
        return LowerAscii(text);
    }
    const CodePage& page = PageOf(codePage);
    std::string folded(text);
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const auto byte = static_cast<unsigned char>(folded[i]);
        folded[i] = page.lower[byte];
        i += page.isLead[byte] ? 1 : 0;
    }
    return folded;
}

int CompareNoCase(UINT codePage, std::string_view left, std::string_view right) {
    return FoldCase(codePage, left).compare(FoldCase(codePage, right));
}

bool EqualNoCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right,
                              [](char a, char b) { return a == b || LowerAsciiByte(a) == LowerAsciiByte(b); });
}

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), LowerAsciiByte);
    return lower;
}

std::string_view FileName(std::string_view path, UINT codePage) {
    const std::size_t separator = LastSeparator(path, codePage);
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

std::string_view FolderOf(std::string_view path, UINT codePage) {
    const std::size_t separator = LastSeparator(path, codePage);
    return separator == std::string_view::npos ? std::string_view() : path.substr(0, separator);
}

std::vector<std::string> SplitMultiString(const char* texts) {
    std::vector<std::string> split;
    for (const char* text = texts; text != nullptr && *text != '\0'; text += split.back().size() + 1) {
        split.emplace_back(text);
    }
    return split;
}

std::string JoinMultiString(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += text;
        joined += '\0';
    }
    joined += '\0';
    return joined;
}

}  // namespace pikel::simulated
