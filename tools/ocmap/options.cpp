#include "options.h"

#include <charconv>
#include <map>
#include <string>

namespace ocmap::option
{
namespace
{

const std::map<std::string, uint32_t> kinds = {
    {"edit", TQM_REQ_EDIT}, {"get", TQM_REQ_GET}, {"get-config", TQM_REQ_GET_CONFIG}};

// Replaces the name of a kind by its number; gives what is wrong with the text, or nothing.
std::string number_of_kind(std::string &text)
{
    const auto found = kinds.find(text);
    if (found == kinds.end()) {
        return "must be edit, get or get-config, not '" + text + "'";
    }
    text = std::to_string(found->second);
    return "";
}

std::string is_seconds(const std::string &text)
{
    uint32_t number = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = failed == std::errc() && end == text.data() + text.size();
    return whole ? "" : "must be a number of seconds, not '" + text + "'";
}

CLI::Option *add_file(CLI::App &command, Options &options)
{
    return command.add_option("FILE", options.file, "NETCONF document, XML or JSON; - for standard input");
}

void add_json(CLI::App &command, Options &options, const char *description)
{
    command.add_flag_callback(
        "--json", [&options] { options.format = tqm::Format::json; }, description);
}

} // namespace

void file(CLI::App &command, Options &options)
{
    add_file(command, options)->required();
}

void optional_file(CLI::App &command, Options &options)
{
    add_file(command, options);
}

void kind(CLI::App &command, Options &options)
{
    command.add_option("--kind", options.kind, "edit, get or get-config, where the document does not say it")
        ->transform(CLI::Validator(number_of_kind, ""))
        ->type_name("KIND");
}

void json(CLI::App &command, Options &options)
{
    add_json(command, options, "Print JSON (RFC 7951) instead of XML");
}

void json_report(CLI::App &command, Options &options)
{
    add_json(command, options, "Print a refusal, or a dry run, as JSON");
}

void bare(CLI::App &command, Options &options)
{
    command.add_flag_callback(
        "--bare", [&options] { options.envelope = tqm::Envelope::none; },
        "Print the trees alone, without the element around them");
}

void check(CLI::App &command, Options &options)
{
    command.add_flag("--check", options.check, "Judge an edit by the OpenConfig model first, as 'ocmap edit' does");
}

void store(CLI::App &command, Options &options)
{
    command.add_option("--store", options.store, "Directory of the native datastore")->required()->type_name("DIR");
}

void judging_store(CLI::App &command, Options &options)
{
    command.add_option("--store", options.store, "Native datastore that an edit is judged by; else its values alone")
        ->type_name("DIR");
}

void wait(CLI::App &command, Options &options)
{
    command.add_option("--wait", options.wait, "How long to wait for another editor; without it, as long as it takes")
        ->check(CLI::Validator(is_seconds, ""))
        ->type_name("SECONDS");
}

void dry_run(CLI::App &command, Options &options)
{
    command.add_flag("--dry-run", options.dry_run, "Say what the edit would do, or why it is refused; change nothing");
}

void oper(CLI::App &command, Options &options)
{
    command
        .add_option("--oper", options.operational,
                    "The router's state: a document of its operational model; - for standard input")
        ->type_name("FILE");
}

void reverse(CLI::App &command, Options &options)
{
    command.add_flag("--reverse", options.reverse, "The document holds native trees: explain the way back");
}

void html(CLI::App &command, Options &options)
{
    command.add_option("--html", options.page, "Write a page for a browser instead; - for standard output")
        ->type_name("FILE");
}

void markdown(CLI::App &command, Options &options)
{
    command.add_flag("--markdown", options.markdown, "Print docs/mapping.md: also what does not come back");
}

void plugin(CLI::App &command, Options &options)
{
    command.add_option("--plugin", options.locations.plugin, "The plug-in, libymap_oc_macsec.so")
        ->type_name("FILE")
        ->group(common);
}

void yang(CLI::App &command, Options &options)
{
    command
        .add_option_function<std::string>(
            "--yang",
            [&options](const std::string &directory) {
                options.locations.yang = directory;
                options.locations.yang_is_own = false;
            },
            "Directory of the YANG modules")
        ->type_name("DIR")
        ->group(common);
}

void trace(CLI::App &command, Options &options)
{
    command.add_flag("--trace", options.trace, "Show the plug-in's log lines on standard error")->group(common);
}

void journal(CLI::App &command, Options &options)
{
    command.add_flag("--journal", options.journal, "Show the plug-in's calls of the framework on standard error")
        ->group(common);
}

void journal_all(CLI::App &command, Options &options)
{
    command.add_flag("--journal-all", options.questions, "Show also the calls that only ask, compare and log")
        ->group(common);
}

} // namespace ocmap::option
