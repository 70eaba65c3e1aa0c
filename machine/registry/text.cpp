// The registry as .reg text: what is written, and the reader of the same. Both are linear in the length of the text.
#include <array>
#include <charconv>
#include <optional>
#include <utility>

#include "machine/base/text.h"
#include "machine/registry/registry.h"
#include "machine/registry/tree.h"

namespace pikel::simulated {

namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kEnd = "; end of registry";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kLineWidth = 78;

bool IsPlainAscii(std::string_view text) {
    for (char c : text) {
        if (c < 0x20 || c == 0x7f) {
            return false;
        }
    }
    return true;
}

/// Control characters of ASCII, and with `isUtf8` those of the range U+0080 to U+009F.
bool HasControls(std::string_view text, bool isUtf8 = false) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isUpper =
            isUtf8 && byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (byte < 0x20 || byte == 0x7f || isUpper) {
            return true;
        }
    }
    return false;
}

/// Text of the code page in UTF-8, when it can be shown and comes back as it was.
std::optional<std::string> ShownAsUtf8(UINT codePage, std::string_view text) {
    if (IsPlainAscii(text)) {
        return std::string(text);
    }
    if (HasControls(text)) {
        return std::nullopt;
    }
    std::string utf8 = ToUtf8(codePage, text);
    if (HasControls(utf8, true) || FromUtf8(codePage, utf8) != text) {
        return std::nullopt;
    }
    return utf8;
}

/// UTF-8 of the file in the code page; nothing when it isn't UTF-8 or has characters that the page lacks.
std::optional<std::string> Taken(UINT codePage, std::string_view utf8) {
    if (IsPlainAscii(utf8)) {
        return std::string(utf8);
    }
    std::string text = FromUtf8(codePage, utf8);
    if (ToUtf8(codePage, text) != utf8) {
        return std::nullopt;
    }
    return text;
}

/// Text of the code page as UTF-16LE bytes, when it comes back as it was.
std::optional<std::string> AsUtf16(UINT codePage, std::string_view text) {
    std::u16string wide = ToWide(codePage, text);
    if (FromWide(codePage, wide) != text) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(wide.size() * 2);
    for (char16_t unit : wide) {
        bytes += static_cast<char>(unit & 0xff);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

void AppendHexByte(std::string& out, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += digits[static_cast<unsigned char>(byte) >> 4];
    out += digits[static_cast<unsigned char>(byte) & 15];
}

// ---- writing --------------------------------------------------------------------------------------------------------

class Writer {
  public:
    explicit Writer(const RegistryTree& tree) : m_tree(tree) {}

    std::string Write() {
        m_out = kHeader;
        m_out += '\n';
        for (const auto& [folded, root] : m_tree.root.keys) {
            WriteKey(*root);
        }
        m_out += '\n';
        m_out += kEnd;
        m_out += '\n';
        return std::move(m_out);
    }

  private:
    void WriteKey(const RegistryNode& key) {
        std::size_t parentLength = m_path.size();
        if (parentLength != 0) {
            m_path += '\\';
        }
        AppendKeyName(key.name);
        m_out += "\n[";
        m_out += m_path;
        m_out += "]\n";
        for (const auto& [folded, value] : key.values) {
            WriteValue(value);
        }
        for (const auto& [folded, child] : key.keys) {
            WriteKey(*child);
        }
        m_path.resize(parentLength);
    }

    /// Two backslashes can't stand in a path otherwise, so they lead in the bytes that can't be shown.
    void AppendKeyName(std::string_view name) {
        if (std::optional<std::string> utf8 = ShownAsUtf8(m_tree.codePage, name)) {
            m_path += *utf8;
            return;
        }
        for (char byte : name) {
            if (byte >= 0x20 && byte < 0x7f && byte != '\\') {
                m_path += byte;
            } else {
                m_path += "\\\\x";
                AppendHexByte(m_path, byte);
            }
        }
    }

    void AppendQuoted(std::string_view shown) {
        m_out += '"';
        for (char c : shown) {
            if (c == '"' || c == '\\') {
                m_out += '\\';
            }
            m_out += c;
        }
        m_out += '"';
    }

    void AppendQuotedBytes(std::string_view bytes) {
        m_out += '"';
        for (char byte : bytes) {
            if (byte == '"' || byte == '\\') {
                m_out += '\\';
                m_out += byte;
            } else if (byte >= 0x20 && byte < 0x7f) {
                m_out += byte;
            } else {
                m_out += "\\x";
                AppendHexByte(m_out, byte);
            }
        }
        m_out += '"';
    }

    void AppendValueName(std::string_view name) {
        if (name.empty()) {
            m_out += '@';
        } else if (std::optional<std::string> utf8 = ShownAsUtf8(m_tree.codePage, name)) {
            AppendQuoted(*utf8);
        } else {
            AppendQuotedBytes(name);
        }
        m_out += '=';
    }

    void WriteValue(const RegistryValue& value) {
        if (std::optional<std::string> text = QuotableText(value)) {
            AppendValueName(value.name);
            AppendQuoted(*text);
        } else if (value.type == REG_DWORD && value.data.size() == 4) {
            AppendValueName(value.name);
            m_out += "dword:";
            for (std::size_t i = 4; i-- > 0;) {
                AppendHexByte(m_out, value.data[i]);
            }
        } else {
            WriteHexValue(value);
        }
        m_out += '\n';
    }

    /// The text of a REG_SZ that ends in its one NUL.
    std::optional<std::string> QuotableText(const RegistryValue& value) const {
        if (value.type != REG_SZ || value.data.empty() || value.data.find('\0') != value.data.size() - 1) {
            return std::nullopt;
        }
        return ShownAsUtf8(m_tree.codePage, std::string_view(value.data).substr(0, value.data.size() - 1));
    }

    void WriteHexValue(const RegistryValue& value) {
        std::optional<std::string> wide;
        if (IsTextType(value.type)) {
            wide = AsUtf16(m_tree.codePage, value.data);
            AppendReadableForm(value);
        }
        std::size_t lineStart = m_out.size();
        AppendValueName(value.name);
        if (IsTextType(value.type) && !wide) {
            m_out += "raw(" + std::to_string(value.type) + "):";
        } else if (value.type == REG_BINARY) {
            m_out += "hex:";
        } else {
            std::array<char, 8> digits{};
            auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value.type, 16).ptr;
            m_out += "hex(";
            m_out.append(digits.data(), end);
            m_out += "):";
        }
        AppendHexBytes(wide ? *wide : value.data, lineStart);
    }

    void AppendHexBytes(std::string_view bytes, std::size_t lineStart) {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (i != 0) {
                m_out += ',';
            }
            if (m_out.size() - lineStart >= kLineWidth - 2) {
                m_out += "\\\n";
                lineStart = m_out.size();
                m_out += "  ";
            }
            AppendHexByte(m_out, bytes[i]);
        }
    }

    /// A comment with the texts of a value that has to stand in hex, so that a person can read it.
    void AppendReadableForm(const RegistryValue& value) {
        std::string line = ";";
        std::string_view rest = value.data;
        while (!rest.empty()) {
            std::size_t length = std::min(rest.find('\0'), rest.size());
            std::optional<std::string> text = ShownAsUtf8(m_tree.codePage, rest.substr(0, length));
            if (!text) {
                return;
            }
            if (length != 0) {
                line += " \"" + *text + '"';
            }
            rest.remove_prefix(std::min(length + 1, rest.size()));
        }
        if (line.size() > 1) {
            m_out += line;
            m_out += '\n';
        }
    }

    const RegistryTree& m_tree;
    std::string m_out;
    std::string m_path;
};

// ---- reading --------------------------------------------------------------------------------------------------------

/// What is wrong with the line that is being read.
struct BadLine {
    std::string problem;
};

std::optional<unsigned> HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<unsigned>(c - '0');
    }
    char lower = static_cast<char>(c | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<unsigned>(lower - 'a' + 10);
    }
    return std::nullopt;
}

std::string_view TrimLine(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

class Reader {
  public:
    Reader(std::string_view text, RegistryTree& tree) : m_rest(text), m_tree(tree) {
        if (m_rest.starts_with(kByteOrderMark)) {
            m_rest.remove_prefix(kByteOrderMark.size());
        }
    }

    std::string Read() {
        try {
            ReadLines();
        } catch (const BadLine& bad) {
            return "line " + std::to_string(m_lineNumber) + ": " + bad.problem;
        }
        return {};
    }

  private:
    void ReadLines() {
        if (!NextLine() || TrimLine(m_line) != kHeader) {
            throw BadLine{"the first line has to be \"" + std::string(kHeader) + "\""};
        }
        bool isEnded = false;
        while (NextLine()) {
            std::string_view line = TrimLine(m_line);
            if (line.empty()) {
                continue;
            }
            if (isEnded) {
                throw BadLine{"text behind the closing line \"" + std::string(kEnd) + "\""};
            }
            if (line == kEnd) {
                isEnded = true;
            } else if (line.front() == '[') {
                ReadKey(line);
            } else if (line.front() != ';') {
                ReadValue(line);
            }
        }
        if (!isEnded) {
            throw BadLine{"the closing line \"" + std::string(kEnd) + "\" is missing; the file was cut short"};
        }
    }

    /// @return false behind the last line; the number stays at the last one then
    bool NextLine() {
        if (m_rest.empty()) {
            return false;
        }
        std::size_t length = std::min(m_rest.find('\n'), m_rest.size());
        m_line = m_rest.substr(0, length);
        m_rest.remove_prefix(std::min(length + 1, m_rest.size()));
        ++m_lineNumber;
        return true;
    }

    void ReadKey(std::string_view line) {
        if (line.size() < 2 || line.back() != ']') {
            throw BadLine{"a key has to end in ]"};
        }
        line = line.substr(1, line.size() - 2);
        if (line.starts_with('-')) {
            throw BadLine{"a key to be deleted has no place in a machine's registry"};
        }
        std::vector<std::string> names = SplitKey(line);
        std::string_view root = RegistryRootName(names.front());
        if (root.empty()) {
            throw BadLine{"unknown root \"" + names.front() + "\""};
        }
        names.front() = root;
        if (root == "HKEY_CLASSES_ROOT") {
            names = m_tree.Split("HKEY_CLASSES_ROOT");
            std::vector<std::string> rest = SplitKey(line);
            names.insert(names.end(), rest.begin() + 1, rest.end());
        }
        m_key = m_tree.Make(names);
        if (m_key == nullptr) {
            throw BadLine{"a key's name is longer than " + std::to_string(Registry::kMaxKeyName) +
                          " bytes, or the key lies deeper than " + std::to_string(Registry::kMaxDepth)};
        }
    }

    std::vector<std::string> SplitKey(std::string_view path) const {
        std::vector<std::string> names;
        std::string name;
        std::size_t runStart = 0;
        auto takeRun = [&](std::size_t end) { name += FromFile(path.substr(runStart, end - runStart)); };
        auto takeName = [&] {
            if (name.empty()) {
                throw BadLine{"a key without a name on the path"};
            }
            names.push_back(std::exchange(name, {}));
        };
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (path[i] != '\\') {
                continue;
            }
            takeRun(i);
            if (path.substr(i).starts_with("\\\\x")) {
                name += ByteAt(path, i + 3);
                i += 4;
            } else {
                takeName();
            }
            runStart = i + 1;
        }
        takeRun(path.size());
        takeName();
        return names;
    }

    void ReadValue(std::string_view line) {
        if (m_key == nullptr) {
            throw BadLine{"a value ahead of the first key"};
        }
        std::string name;
        if (line.front() == '@') {
            line.remove_prefix(1);
        } else if (line.front() == '"') {
            name = TakeQuoted(line);
        } else {
            throw BadLine{"neither a key, a value nor a comment"};
        }
        line = TrimLine(line);
        if (!line.starts_with('=')) {
            throw BadLine{"= is missing behind the value's name"};
        }
        line = TrimLine(line.substr(1));
        DWORD type = REG_SZ;
        std::string data = ReadData(line, &type);
        m_tree.SetValue(*m_key, name, type, std::move(data));
    }

    std::string ReadData(std::string_view line, DWORD* type) {
        if (line.starts_with('"')) {
            std::string data = TakeQuoted(line);
            if (!TrimLine(line).empty()) {
                throw BadLine{"text behind the closing quote"};
            }
            data += '\0';
            return data;
        }
        if (line.starts_with("dword:")) {
            *type = REG_DWORD;
            return DwordBytes(line.substr(6));
        }
        if (line.starts_with("hex:")) {
            *type = REG_BINARY;
            return HexBytes(line.substr(4));
        }
        bool isRaw = line.starts_with("raw(");
        if (!isRaw && !line.starts_with("hex(")) {
            throw BadLine{"the value is neither \"text\", dword:, hex: nor hex(n):"};
        }
        line.remove_prefix(4);
        const char* end = line.data() + line.size();
        auto [stop, error] = std::from_chars(line.data(), end, *type, 16);
        if (error != std::errc() || !std::string_view(stop, end).starts_with("):")) {
            throw BadLine{"hex(n): needs the number of a type"};
        }
        std::string bytes = HexBytes(std::string_view(stop + 2, end));
        return isRaw || !IsTextType(*type) ? bytes : FromUtf16(bytes);
    }

    static std::string DwordBytes(std::string_view digits) {
        DWORD number = 0;
        const char* end = digits.data() + digits.size();
        auto [stop, error] = std::from_chars(digits.data(), end, number, 16);
        if (error != std::errc() || stop != end) {
            throw BadLine{"dword: needs up to eight hexadecimal digits"};
        }
        std::string bytes;
        for (int shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(number >> shift & 0xff);
        }
        return bytes;
    }

    /// Bytes from this line and those that continue it.
    std::string HexBytes(std::string_view line) {
        std::string bytes;
        line = TrimLine(line);
        while (true) {
            bool isContinued = line.ends_with('\\');
            if (isContinued) {
                line.remove_suffix(1);
            }
            AppendHexLine(line, !isContinued, bytes);
            if (!isContinued) {
                return bytes;
            }
            if (!NextLine()) {
                throw BadLine{"the line that continues the value is missing"};
            }
            line = TrimLine(m_line);
        }
    }

    static void AppendHexLine(std::string_view line, bool isLast, std::string& bytes) {
        while (!line.empty()) {
            bytes += ByteAt(line, 0);
            line.remove_prefix(2);
            if (line.empty() ? !isLast : line.front() != ',') {
                throw BadLine{"bytes have to be parted by commas"};
            }
            if (line.size() == 1 && isLast) {
                throw BadLine{"a byte is missing behind the last comma"};
            }
            line.remove_prefix(std::min<std::size_t>(1, line.size()));
        }
    }

    static char ByteAt(std::string_view text, std::size_t position) {
        std::optional<unsigned> high = position < text.size() ? HexDigit(text[position]) : std::nullopt;
        std::optional<unsigned> low = position + 1 < text.size() ? HexDigit(text[position + 1]) : std::nullopt;
        if (!high || !low) {
            throw BadLine{"a byte has to be two hexadecimal digits"};
        }
        return static_cast<char>(*high << 4 | *low);
    }

    /// Takes a quoted text off the front of the line.
    std::string TakeQuoted(std::string_view& line) const {
        std::string text;
        std::string run;
        auto takeRun = [&] {
            text += FromFile(run);
            run.clear();
        };
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (line[i] == '"') {
                takeRun();
                line.remove_prefix(i + 1);
                return text;
            }
            if (line[i] != '\\') {
                run += line[i];
                continue;
            }
            char escaped = i + 1 < line.size() ? line[i + 1] : '\0';
            if (escaped == '"' || escaped == '\\') {
                run += escaped;
                ++i;
            } else if (escaped == 'x') {
                takeRun();
                text += ByteAt(line, i + 2);
                i += 3;
            } else {
                throw BadLine{"a backslash has to be doubled"};
            }
        }
        throw BadLine{"the closing quote is missing"};
    }

    std::string FromFile(std::string_view utf8) const {
        std::optional<std::string> text = Taken(m_tree.codePage, utf8);
        if (!text) {
            throw BadLine{NotInCodePage()};
        }
        return *text;
    }

    std::string FromUtf16(std::string_view bytes) const {
        if (bytes.size() % 2 != 0) {
            throw BadLine{"a text in hex is UTF-16 and needs an even number of bytes"};
        }
        std::u16string wide;
        wide.reserve(bytes.size() / 2);
        for (std::size_t i = 0; i < bytes.size(); i += 2) {
            wide += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8);
        }
        std::string text = FromWide(m_tree.codePage, wide);
        if (ToWide(m_tree.codePage, text) != wide) {
            throw BadLine{NotInCodePage()};
        }
        return text;
    }

    std::string NotInCodePage() const {
        return "no UTF-8, or characters that code page " + std::to_string(m_tree.codePage) + " lacks";
    }

    std::string_view m_rest;
    std::string_view m_line;
    std::size_t m_lineNumber = 0;
    RegistryTree& m_tree;
    RegistryNode* m_key = nullptr;
};

}  // namespace

std::string WriteRegistryText(const RegistryTree& tree) {
    return Writer(tree).Write();
}

std::string ReadRegistryText(std::string_view text, RegistryTree& tree) {
    return Reader(text, tree).Read();
}

}  // namespace pikel::simulated
