// Command lines of PRINTUI.DLL's entry.
#include "machine/printui/command.h"

#include <algorithm>

namespace pikel::simulated {

namespace {

constexpr char16_t kQuote = u'"';
constexpr char16_t kBackslash = u'\\';
constexpr char16_t kAtSign = u'@';

bool IsBlank(char16_t character) {
    return character == u' ' || character == u'\t';
}

// ---- switches -------------------------------------------------------------------------------------------------------

struct WorkSwitch {
    std::u16string_view letters;
    PrintUICommand::Work work;
};
constexpr WorkSwitch kWorkSwitches[] = {
    {u"ia", PrintUICommand::Work::AddDriver},     {u"if", PrintUICommand::Work::InstallPrinter},
    {u"dl", PrintUICommand::Work::DeletePrinter}, {u"dn", PrintUICommand::Work::DeleteConnection},
    {u"dd", PrintUICommand::Work::DeleteDriver},  {u"Xs", PrintUICommand::Work::SetProperties},
};

struct ValueSwitch {
    char16_t letter;
    PrintUICommand::Text PrintUICommand::*member;
};
constexpr ValueSwitch kValueSwitches[] = {
    {u'm', &PrintUICommand::model},        {u'f', &PrintUICommand::inf},     {u'l', &PrintUICommand::folder},
    {u'b', &PrintUICommand::printer},      {u'r', &PrintUICommand::port},    {u'n', &PrintUICommand::name},
    {u'h', &PrintUICommand::architecture}, {u'v', &PrintUICommand::version},
};

struct FlagSwitch {
    char16_t letter;
    bool PrintUICommand::*member;
    bool value;
};
constexpr FlagSwitch kFlagSwitches[] = {
    {u'q', &PrintUICommand::isQuiet, true},           {u'K', &PrintUICommand::isPlainEnvironment, true},
    {u'u', &PrintUICommand::usesPresentDriver, true}, {u'Z', &PrintUICommand::isShared, true},
    {u'z', &PrintUICommand::isShared, false},
};

// ---- the walk over a command line -----------------------------------------------------------------------------------

class Parser {
  public:
    explicit Parser(std::u16string_view rest) : m_rest(rest) {}

    std::optional<PrintUICommand> Parse() {
        for (SkipBlanks(); !m_rest.empty(); SkipBlanks()) {
            if (!(IsSwitch() ? TakeSwitch() : TakeFreeWord())) {
                return std::nullopt;
            }
        }
        return m_hasWork && PairWords() ? std::optional(std::move(m_command)) : std::nullopt;
    }

  private:
    void SkipBlanks() {
        const auto end = std::ranges::find_if_not(m_rest, IsBlank);
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.begin()));
    }
    bool IsSwitch() const { return m_rest.starts_with(u'/'); }

    /// Takes the text up to the next blank outside quotes. @return false for a quote that isn't closed
    bool TakeText(std::u16string* text) {
        bool isQuoted = false;
        std::size_t at = 0;
        for (; at < m_rest.size() && (isQuoted || !IsBlank(m_rest[at])); ++at) {
            const char16_t next = at + 1 < m_rest.size() ? m_rest[at + 1] : u'\0';
            if (m_rest[at] == kBackslash && (next == kQuote || next == kAtSign)) {
                *text += next;
                ++at;
            } else if (m_rest[at] == kQuote) {
                isQuoted = !isQuoted;
            } else {
                *text += m_rest[at];
            }
        }
        m_rest.remove_prefix(at);
        return !isQuoted;
    }

    /// The same for a text that may not name a file of arguments.
    bool TakePlainText(std::u16string* text) {
        const std::u16string_view behindQuote = m_rest.starts_with(kQuote) ? m_rest.substr(1) : m_rest;
        return !behindQuote.starts_with(kAtSign) && TakeText(text);
    }

    bool TakeFreeWord() {
        std::u16string word;
        const bool isTaken = TakePlainText(&word);
        m_words.push_back(std::move(word));
        return isTaken;
    }

    bool TakeSwitch() {
        m_rest.remove_prefix(1);
        for (const WorkSwitch& its : kWorkSwitches) {
            if (m_rest.starts_with(its.letters)) {
                m_rest.remove_prefix(its.letters.size());
                m_command.work = its.work;
                return !std::exchange(m_hasWork, true) && IsAtBlank();
            }
        }
        const char16_t letter = m_rest.empty() ? u'\0' : m_rest.front();
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
        for (const FlagSwitch& its : kFlagSwitches) {
            if (letter == its.letter) {
                m_command.*its.member = its.value;
                return IsAtBlank();
            }
        }
        const auto* its = std::ranges::find(kValueSwitches, letter, &ValueSwitch::letter);
        return its != std::end(kValueSwitches) && TakeValue(&(m_command.*(its->member)));
    }

    bool TakeValue(PrintUICommand::Text* value) {
        if (IsAtBlank()) {
            SkipBlanks();
            if (m_rest.empty() || IsSwitch()) {
                return false;
            }
        }
        return TakePlainText(&value->emplace());
    }

    bool IsAtBlank() const { return m_rest.empty() || IsBlank(m_rest.front()); }

    /// Free words are keys and values of properties, and nothing else.
    bool PairWords() {
        if (m_command.work != PrintUICommand::Work::SetProperties) {
            return m_words.empty();
        }
        for (std::size_t i = 0; i + 1 < m_words.size(); i += 2) {
            m_command.properties.emplace_back(std::move(m_words[i]), std::move(m_words[i + 1]));
        }
        return m_words.size() % 2 == 0;
    }

    std::u16string_view m_rest;
    PrintUICommand m_command;
    bool m_hasWork = false;
    std::vector<std::u16string> m_words;
};

}  // namespace

std::optional<PrintUICommand> ParsePrintUICommand(std::u16string_view text) {
    return Parser(text).Parse();
}

}  // namespace pikel::simulated
