// ocmap: runs the OpenConfig MACsec mapping at a desk, without a router. This file is the table of its commands, and
// what a process owes its users; the options stand in options.cpp, what the commands do in commands.cpp.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <new>
#include <span>

#include <sys/prctl.h>
#include <sys/resource.h>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "help.h"
#include "options.h"
#include "report.h"
#include "want_of_memory.h"

namespace
{

namespace option = ocmap::option;

// ---- The commands ---------------------------------------------------------------------------------------------------

using Run = tqm::Expected<void> (*)(const ocmap::Options &);

struct Command {
    const char *name;
    const char *description;
    Run run;
    std::initializer_list<option::Declare> options; // arguments and options of its own, in the order of its help
    std::span<const option::Declare> common;        // those that it shares with others
    std::initializer_list<const char *> examples;   // in its help
};

constexpr option::Declare plain[] = {option::plugin, option::yang};
// Of commands that run the plug-in's walkers, which can be watched.
constexpr option::Declare watched[] = {option::plugin, option::yang, option::trace, option::journal,
                                       option::journal_all};

// Tests run the examples from top to bottom, at the project's root: the store that `edit` makes is there for `get`.
constexpr Command commands[] = {
    {"forward",
     "Print the native trees that a request becomes",
     ocmap::forward,
     {option::file, option::kind, option::json, option::bare, option::check},
     watched,
     {"ocmap forward examples/policies/merge.xml", "ocmap forward examples/policies/get-policy.xml --json",
      "ocmap forward examples/key-chains/rotate.xml --journal"}},
    {"reverse",
     "Print the OpenConfig tree of native trees",
     ocmap::reverse,
     {option::file, option::kind, option::json, option::bare},
     watched,
     {"ocmap reverse examples/state/busy-router.xml",
      "ocmap forward examples/policies/merge.xml | ocmap reverse - --kind get-config --json"}},
    {"edit",
     "Apply an edit-config to a native datastore",
     ocmap::edit,
     {option::file, option::store, option::wait, option::dry_run, option::json_report},
     watched,
     {"ocmap edit examples/policies/merge.xml --store /tmp/router",
      "ocmap edit - --store /tmp/router < examples/interfaces/attach.xml",
      "ocmap edit examples/key-chains/create.xml --store /tmp/router --wait 5",
      "ocmap edit examples/policies/replace.xml --store /tmp/router --dry-run"}},
    {"get",
     "Read configuration and state as OpenConfig",
     ocmap::get,
     {option::optional_file, option::store, option::json, option::bare, option::oper},
     watched,
     {"ocmap get --store /tmp/router", "ocmap get examples/policies/get-all.xml --store /tmp/router --json",
      "ocmap get examples/interfaces/get-counters.xml --store /tmp/router --oper examples/state/busy-router.xml"}},
    {"get-config",
     "Read configuration as OpenConfig",
     ocmap::get_config,
     {option::optional_file, option::store, option::json, option::bare},
     watched,
     {"ocmap get-config --store /tmp/router",
      "ocmap get-config examples/policies/get-by-content.xml --store /tmp/router --json"}},
    {"explain",
     "Show what a request becomes, node by node, and why",
     ocmap::explain,
     {option::file, option::kind, option::reverse, option::judging_store, option::html},
     watched,
     {"ocmap explain examples/policies/replace.xml", "ocmap explain examples/state/busy-router.xml --reverse",
      "ocmap explain examples/policies/replace.xml --html /tmp/replace.html"}},
    {"tree",
     "Print the OpenConfig tree with its native paths",
     ocmap::tree,
     {option::markdown},
     plain,
     {"ocmap tree", "ocmap tree --markdown"}},
    {"deviations",
     "Print the YANG module of what is not supported",
     ocmap::deviations,
     {},
     plain,
     {"ocmap deviations", "ocmap deviations > /tmp/deviations.yang"}},
};

constexpr std::initializer_list<const char *> examples_of_all = {
    "ocmap forward examples/policies/merge.xml", "ocmap edit examples/policies/merge.xml --store /tmp/router",
    "ocmap get --store /tmp/router"};

// What the command line has chosen, and the options for it.
struct Chosen {
    ocmap::Options options;
    Run run = nullptr;
};

void add_help(CLI::App &app)
{
    app.set_help_flag("-h,--help", "Show this help and exit");
}

// All that only the command which is called needs.
void complete(CLI::App &added, const Command &command, Chosen &chosen)
{
    add_help(added);
    added.get_help_ptr()->group(option::common);
    added.footer(ocmap::help_footer(command.examples));
    for (const option::Declare declare : command.common) {
        declare(added, chosen.options);
    }
    for (const option::Declare declare : command.options) {
        declare(added, chosen.options);
    }
}

// To declare the options of all commands would take an eighth of the time of a small request.
void add(CLI::App &app, const Command &command, Chosen &chosen)
{
    CLI::App &added = *app.add_subcommand(command.name, command.description);
    added.group("Commands");
    added.preparse_callback([&added, &command, &chosen](std::size_t) { complete(added, command, chosen); });
    added.callback([&chosen, run = command.run] { chosen.run = run; });
}

void describe(CLI::App &app, Chosen &chosen)
{
    app.require_subcommand(1);
    app.formatter(ocmap::help_formatter());
    app.set_help_flag(); // commands would take it over, each at once
    for (const Command &command : commands) {
        add(app, command, chosen);
    }
    add_help(app);
    app.set_version_flag("--version", "ocmap " OC_MACSEC_VERSION, "Show the version and exit");
    app.footer("'ocmap COMMAND --help' shows a command's options and examples.\n\n" +
               ocmap::help_footer(examples_of_all));
}

// ---- The process ----------------------------------------------------------------------------------------------------

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

// There is then no memory for an error and its text either.
constexpr const char *out_of_memory = "error: out of memory\n  error-tag: resource-denied\n";
constexpr const char *out_of_memory_json =
    "{\"ietf-restconf:errors\": {\"error\": [{\"error-type\": \"application\", \"error-tag\": \"resource-denied\", "
    "\"error-message\": \"out of memory\"}]}}\n";
tqm::Format format_of_errors = tqm::Format::xml;

const char *text_of_no_memory()
{
    return format_of_errors == tqm::Format::json ? out_of_memory_json : out_of_memory;
}

// The process will hold keys, which belong neither into a core file nor into another process that looks at this one.
bool close_memory_to_others()
{
    const rlimit none = {0, 0};
    return prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && setrlimit(RLIMIT_CORE, &none) == 0;
}

// Prints help or the version, or what is wrong with the command line; gives the exit status.
int leave(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() != 0) {
        std::fputs(ocmap::report_line(ocmap::usage_error(app, error)).c_str(), stderr);
        return exit_usage;
    }
    app.exit(error);
    if (!std::cout.flush()) {
        std::fputs(ocmap::report_line("cannot write the help").c_str(), stderr);
        return exit_failure;
    }
    return 0;
}

int run(int argc, char **argv)
{
    if (!close_memory_to_others()) {
        std::fputs(
            ocmap::report_line(std::string("cannot keep keys out of a core file: ") + std::strerror(errno)).c_str(),
            stderr);
        return exit_failure;
    }
    Chosen chosen;
    chosen.options.locations = ocmap::default_locations();
    CLI::App app{"Maps OpenConfig MACsec requests to a router's native models and its answers back", "ocmap"};
    describe(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return leave(app, error);
    }
    format_of_errors = chosen.options.format;
    ocmap::tell_want_of_memory(text_of_no_memory());
    if (const tqm::Expected<void> done = chosen.run(chosen.options); !done) {
        std::fputs(ocmap::report(done.error(), chosen.options.format).c_str(), stderr);
        return exit_failure;
    }
    return 0;
}

} // namespace

// The commands' own errors are values; what is thrown is the standard library's, for want of memory above all. There is
// then none for a text either.
int main(int argc, char **argv)
{
    ocmap::tell_want_of_memory(out_of_memory);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc &) {
        std::fputs(text_of_no_memory(), stderr);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "error: %s\n", error.what());
    }
    return exit_failure;
}
