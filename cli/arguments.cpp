// The one place that knows the library that reads arguments: its header takes longer to compile than all the commands.
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <type_traits>

namespace pikel::cli {

namespace {

template <class Value>
constexpr OptionKind kKindOf = OptionKind::Number;
template <>
constexpr OptionKind kKindOf<bool> = OptionKind::Flag;
template <>
constexpr OptionKind kKindOf<std::string> = OptionKind::Text;
template <>
constexpr OptionKind kKindOf<std::optional<std::string>> = OptionKind::Text;
template <>
constexpr OptionKind kKindOf<std::vector<std::string>> = OptionKind::Texts;

void BindOption(CLI::App& app, const Option& option) {
    const std::string name = (option.clears ? "!" : "") + std::string(option.name);
    const std::string help(option.help);
    CLI::Option* bound = std::visit(
        [&](auto* value) {
            if constexpr (std::is_same_v<decltype(value), bool*>) {
                return app.add_flag(name, *value, help);
            } else {
                return app.add_option(name, *value, help)->type_name(std::string(option.ValueWord()));
            }
        },
        option.value);
    bound->required(option.need == Need::Required);
    if (!option.choices.empty()) {
        bound->check(CLI::IsMember(option.choices));
    }
    if (option.range) {
        bound->check(CLI::Range(option.range->lowest, option.range->highest));
    }
    if (option.showsDefault) {
        bound->capture_default_str();
    }
    if (!option.group.empty()) {
        bound->group(std::string(option.group));
    }
}

void BindCommand(CLI::App& parent, const Command& command) {
    CLI::App* app = parent.add_subcommand(std::string(command.name), std::string(command.description));
    for (const Option& option : command.options) {
        BindOption(*app, option);
    }
    for (const Command& verb : command.verbs) {
        BindCommand(*app, verb);
    }
    if (command.IsNoun()) {
        app->require_subcommand(1);
    } else {
        app->callback(command.run);
    }
}

}  // namespace

OptionKind Option::Kind() const {
    return std::visit([](auto* target) { return kKindOf<std::remove_pointer_t<decltype(target)>>; }, value);
}

std::string_view Option::ValueWord() const {
    if (Kind() == OptionKind::Flag || !word.empty()) {
        return word;
    }
    return Kind() == OptionKind::Number ? "UINT" : "TEXT";
}

int RunCommandLine(const CommandLine& commandLine, int argc, const char* const* argv) {
    CLI::App app{std::string(commandLine.description), std::string(commandLine.program)};
    app.set_version_flag("--version", std::string(commandLine.version));
    app.require_subcommand(1);
    // Subcommands take both over, so they come first.
    app.fallthrough();
    app.footer(std::string(commandLine.footer));
    for (const Option& option : commandLine.options) {
        BindOption(app, option);
    }
    for (const Command& command : commandLine.commands) {
        BindCommand(app, command);
    }
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
}

}  // namespace pikel::cli
