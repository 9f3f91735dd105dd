// See help.h.
#include "help.h"

#include <algorithm>
#include <map>
#include <vector>

namespace ocmap
{
namespace
{

// Tests run these lines from top to bottom: the store that `edit` makes is there for `get`.
const std::map<std::string, std::vector<const char *>> examples = {
    {"",
     {
         "ocmap forward examples/policies/merge.xml",
         "ocmap edit examples/policies/merge.xml --store /tmp/router",
         "ocmap get --store /tmp/router",
     }},
    {"forward",
     {
         "ocmap forward examples/policies/merge.xml",
         "ocmap forward examples/policies/get-policy.xml --json",
         "ocmap forward examples/key-chains/rotate.xml --journal",
     }},
    {"reverse",
     {
         "ocmap reverse examples/state/busy-router.xml",
         "ocmap forward examples/policies/merge.xml | ocmap reverse - --kind get-config --json",
     }},
    {"edit",
     {
         "ocmap edit examples/policies/merge.xml --store /tmp/router",
         "ocmap edit - --store /tmp/router < examples/interfaces/attach.xml",
         "ocmap edit examples/key-chains/create.xml --store /tmp/router --wait 5",
         "ocmap edit examples/policies/replace.xml --store /tmp/router --dry-run",
     }},
    {"get",
     {
         "ocmap get --store /tmp/router",
         "ocmap get examples/policies/get-all.xml --store /tmp/router --json",
         "ocmap get examples/interfaces/get-counters.xml --store /tmp/router --oper examples/state/busy-router.xml",
     }},
    {"get-config",
     {
         "ocmap get-config --store /tmp/router",
         "ocmap get-config examples/policies/get-by-content.xml --store /tmp/router --json",
     }},
    {"explain",
     {
         "ocmap explain examples/policies/replace.xml",
         "ocmap explain examples/state/busy-router.xml --reverse",
         "ocmap explain examples/policies/replace.xml --html /tmp/replace.html",
     }},
    {"tree",
     {
         "ocmap tree",
         "ocmap tree --markdown",
     }},
    {"deviations",
     {
         "ocmap deviations",
         "ocmap deviations > /tmp/deviations.yang",
     }},
};

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
        std::string text = "Usage: ocmap";
        text += app->get_parent() == nullptr ? " COMMAND" : " " + app->get_name();
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

std::string help_footer(const std::string &command)
{
    std::string text = command.empty() ? "'ocmap COMMAND --help' shows a command's options and examples.\n\n" : "";
    if (const auto found = examples.find(command); found != examples.end()) {
        text += "Examples:\n";
        for (const char *example : found->second) {
            text += std::string("  ") + example + "\n";
        }
        text += "\n";
    }
    return text + "Exit status: 0 done; 1 refused or failed, with the reason on standard error; 2 wrong command line.";
}

std::string usage_error(const CLI::App &app, const CLI::ParseError &error)
{
    const std::vector<CLI::App *> chosen = app.get_subcommands();
    if (!chosen.empty()) {
        return std::string(error.what()) + "; see 'ocmap " + chosen.front()->get_name() + " --help'";
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
