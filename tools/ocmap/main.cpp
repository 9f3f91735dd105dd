// ocmap: runs the OpenConfig MACsec mapping at a desk, without a router. This file is its command line; what the
// commands do stands in commands.cpp.
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <new>

#include <sys/prctl.h>
#include <sys/resource.h>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "help.h"
#include "report.h"
#include "want_of_memory.h"

namespace
{

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

const std::map<std::string, uint32_t> kinds = {
    {"edit", TQM_REQ_EDIT}, {"get", TQM_REQ_GET}, {"get-config", TQM_REQ_GET_CONFIG}};

using Run = tqm::Expected<void> (*)(const ocmap::Options &);

// What the command line has chosen, and the options for it.
struct Chosen {
    ocmap::Options options;
    Run run = nullptr;
};

constexpr const char *common = "Common options";

// A command with the options that every one has.
CLI::App *add_plain_command(CLI::App &app, const char *name, const char *description, Chosen &chosen, Run run)
{
    CLI::App *const command = app.add_subcommand(name, description);
    command->callback([&chosen, run] { chosen.run = run; });
    command->footer(ocmap::help_footer(name));
    ocmap::Locations &locations = chosen.options.locations;
    command->add_option("--plugin", locations.plugin, "The plug-in, libymap_oc_macsec.so")
        ->type_name("FILE")
        ->group(common);
    command->add_option("--yang", locations.yang, "Directory of the YANG modules")->type_name("DIR")->group(common);
    command->group("Commands");
    command->get_help_ptr()->group(common);
    return command;
}

// A command that runs the plug-in's walkers, which can be watched.
CLI::App *add_command(CLI::App &app, const char *name, const char *description, Chosen &chosen, Run run)
{
    ocmap::Options &options = chosen.options;
    CLI::App *const command = add_plain_command(app, name, description, chosen, run);
    command->add_flag("--trace", options.trace, "Show the plug-in's log lines on standard error")->group(common);
    command->add_flag("--journal", options.journal, "Show the plug-in's calls of the framework on standard error")
        ->group(common);
    command->add_flag("--journal-all", options.questions, "Show also the calls that only ask, compare and log")
        ->group(common);
    return command;
}

void add_file(CLI::App *command, ocmap::Options &options, bool required)
{
    command->add_option("FILE", options.file, "NETCONF document, XML or JSON; - for standard input")
        ->required(required);
}

void add_kind(CLI::App *command, ocmap::Options &options)
{
    const auto number_of = [](std::string &text) -> std::string {
        const auto found = kinds.find(text);
        if (found == kinds.end()) {
            return "must be edit, get or get-config, not '" + text + "'";
        }
        text = std::to_string(found->second);
        return "";
    };
    command->add_option("--kind", options.kind, "edit, get or get-config, where the document does not say it")
        ->transform(CLI::Validator(number_of, ""))
        ->type_name("KIND");
}

// How trees are printed.
void add_form(CLI::App *command, ocmap::Options &options)
{
    command->add_flag_callback(
        "--json", [&options] { options.format = tqm::Format::json; }, "Print JSON (RFC 7951) instead of XML");
    command->add_flag_callback(
        "--bare", [&options] { options.envelope = tqm::Envelope::none; },
        "Print the trees alone, without the element around them");
}

void add_store(CLI::App *command, ocmap::Options &options)
{
    command->add_option("--store", options.store, "Directory of the native datastore")->required()->type_name("DIR");
}

void add_wait(CLI::App *command, ocmap::Options &options)
{
    const auto is_number = [](const std::string &text) -> std::string {
        uint32_t number = 0;
        const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool whole = failed == std::errc() && end == text.data() + text.size();
        return whole ? "" : "must be a number of seconds, not '" + text + "'";
    };
    command->add_option("--wait", options.wait, "How long to wait for another editor; without it, as long as it takes")
        ->check(CLI::Validator(is_number, ""))
        ->type_name("SECONDS");
}

// The process will hold keys, which belong neither into a core file nor into another process that looks at this one.
bool close_memory_to_others()
{
    const rlimit none = {0, 0};
    return prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && setrlimit(RLIMIT_CORE, &none) == 0;
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
    ocmap::Options &options = chosen.options;
    options.locations = ocmap::default_locations();

    CLI::App app{"Maps OpenConfig MACsec requests to a router's native models and its answers back", "ocmap"};
    app.require_subcommand(1);
    app.formatter(ocmap::help_formatter());
    app.footer(ocmap::help_footer(""));
    app.set_help_flag("-h,--help", "Show this help and exit");
    app.set_version_flag("--version", "ocmap " OC_MACSEC_VERSION, "Show the version and exit");
    CLI::App *command =
        add_command(app, "forward", "Print the native trees that a request becomes", chosen, ocmap::forward);
    add_file(command, options, true);
    add_kind(command, options);
    add_form(command, options);
    command->add_flag("--check", options.check, "Judge an edit by the OpenConfig model first, as 'ocmap edit' does");
    command = add_command(app, "reverse", "Print the OpenConfig tree of native trees", chosen, ocmap::reverse);
    add_file(command, options, true);
    add_kind(command, options);
    add_form(command, options);
    command = add_command(app, "edit", "Apply an edit-config to a native datastore", chosen, ocmap::edit);
    add_file(command, options, true);
    add_store(command, options);
    add_wait(command, options);
    command->add_flag("--dry-run", options.dry_run, "Say what the edit would do, or why it is refused; change nothing");
    command->add_flag_callback(
        "--json", [&options] { options.format = tqm::Format::json; }, "Print a refusal, or a dry run, as JSON");
    command = add_command(app, "get", "Read configuration and state as OpenConfig", chosen, ocmap::get);
    add_file(command, options, false);
    add_store(command, options);
    add_form(command, options);
    command
        ->add_option("--oper", options.operational,
                     "The router's state: a document of its operational model; - for standard input")
        ->type_name("FILE");
    command = add_command(app, "get-config", "Read configuration as OpenConfig", chosen, ocmap::get_config);
    add_file(command, options, false);
    add_store(command, options);
    add_form(command, options);
    command = add_command(app, "explain", "Show what a request becomes, node by node, and why", chosen, ocmap::explain);
    add_file(command, options, true);
    add_kind(command, options);
    command->add_flag("--reverse", options.reverse, "The document holds native trees: explain the way back");
    command->add_option("--store", options.store, "Native datastore that an edit is judged by; else its values alone")
        ->type_name("DIR");
    command->add_option("--html", options.page, "Write a page for a browser instead; - for standard output")
        ->type_name("FILE");
    command = add_plain_command(app, "tree", "Print the OpenConfig tree with its native paths", chosen, ocmap::tree);
    command->add_flag("--markdown", options.markdown, "Print docs/mapping.md: also what does not come back");
    add_plain_command(app, "deviations", "Print the YANG module of what is not supported", chosen, ocmap::deviations);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) {
            app.exit(error); // prints the help, or the version
            if (!std::cout.flush()) {
                std::fputs(ocmap::report_line("cannot write the help").c_str(), stderr);
                return exit_failure;
            }
            return 0;
        }
        std::fputs(ocmap::report_line(ocmap::usage_error(app, error)).c_str(), stderr);
        return exit_usage;
    }
    format_of_errors = options.format;
    ocmap::tell_want_of_memory(text_of_no_memory());
    if (const tqm::Expected<void> done = chosen.run(options); !done) {
        std::fputs(ocmap::report(done.error(), options.format).c_str(), stderr);
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
