#include "help.h"

#include <algorithm>
#include <vector>

namespace ocmap
{
namespace
{

// What calls it: the names of the commands that lead to it, the tool's first.
std::string words_of(const CLI::App &app)
{
    return app.get_parent() == nullptr ? app.get_name() : words_of(*app.get_parent()) + " " + app.get_name();
}

class HelpFormatter final : public CLI::Formatter
{
public:
    HelpFormatter() { column_width(22); }

    std::string make_help(const CLI::App *app, std::string, CLI::AppFormatMode mode) const override
    {
        std::string text = make_usage(app, "") + "\n" + app->get_description() + ".\n";
        const auto arguments = app->get_options(&CLI::Option::get_positional);
        text += arguments.empty() ? "" : make_group("Argument", true, arguments);
        const std::string own = "Options"; // a command's own options go before those of all commands
        std::string rest;
        for (const std::string &group : app->get_groups()) {
            const auto options = app->get_options([&group](const CLI::Option *option) {
                return option->nonpositional() && option->get_group() == group;
            });
            if (!options.empty()) {
                (group == own ? text : rest) += make_group(group, false, options);
            }
        }
        return text + rest + make_subcommands(app, mode) + "\n" + make_footer(app);
    }

    std::string make_usage(const CLI::App *app, std::string) const override
    {
        std::string text = "Usage: " + words_of(*app) + (app->get_subcommands({}).empty() ? "" : " COMMAND");
        for (const CLI::Option *option : app->get_options(&CLI::Option::get_positional)) {
            text += " " + make_option_usage(option);
        }
        for (const CLI::Option *option : app->get_options(&CLI::Option::nonpositional)) {
            if (option->get_required()) {
                text += " " + option->get_name() + " " + option->get_type_name();
            }
        }
        return text + " [OPTION]...\n";
    }

    std::string make_option_opts(const CLI::Option *option) const override
    {
        return option->get_positional() || option->get_type_size() == 0 ? "" : " " + option->get_type_name();
    }
};

std::string names_of_commands(const CLI::App &app)
{
    std::string names;
    for (const CLI::App *command : app.get_subcommands({})) {
        names += (names.empty() ? "" : ", ") + command->get_name();
    }
    return names;
}

} // namespace

std::shared_ptr<CLI::FormatterBase> help_formatter()
{
    return std::make_shared<HelpFormatter>();
}

std::string help_footer(std::span<const char *const> examples)
{
    std::string text = "Examples:\n";
    for (const char *example : examples) {
        text += std::string("  ") + example + "\n";
    }
    return text +
           "\nExit status: 0 done; 1 refused or failed, with the reason on standard error; 2 wrong command line.";
}

std::string usage_error(const CLI::App &app, const CLI::ParseError &error)
{
    if (const std::vector<CLI::App *> chosen = app.get_subcommands(); !chosen.empty()) {
        return std::string(error.what()) + "; see '" + words_of(*chosen.front()) + " --help'";
    }
    const std::vector<std::string> words = app.remaining();
    const auto word = std::ranges::find_if(words, [](const std::string &text) { return !text.starts_with("-"); });
    if (word != words.end()) {
        return "unknown command '" + *word + "'; the commands are " + names_of_commands(app);
    }
    if (!words.empty()) {
        return "unknown option '" + words.front() + "'; see 'ocmap --help'";
    }
    return "a command is missing; the commands are " + names_of_commands(app);
}

} // namespace ocmap
