// What a case shows.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>
#include <optional>
#include <regex>
#include <set>

#include "case_request.h"
#include "system.h"

namespace test
{
namespace
{

constexpr std::string_view row_arrow = " =>";

/// The local time zone, for as long as this lives.
class Zone
{
    std::optional<std::string> before_;

public:
    explicit Zone(const std::string &zone)
    {
        if (const char *const before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone.c_str(), 1);
        tzset();
    }
    ~Zone()
    {
        before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;
};

// ---- What is shown -------------------------------------------------------------------------------------------------

/// Exported names with their module's part in short.
std::string shortened(const std::string &name)
{
    static const std::pair<std::string_view, std::string_view> prefixes[] = {
        {"ymap_ot_oc_macsec_openconfigmacsec_", "oc."},
        {"ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_", "mka."},
        {"ymap_to_oc_macsec_tarvexcryptomacsecmkaifcfg_", "mka-if."},
        {"ymap_to_oc_macsec_tarvexlibkeychaincfg_", "keychain."},
        {"ymap_to_oc_macsec_tarvexifmgrcfg_", "ifmgr."},
        {"ymap_to_oc_macsec_tarvexprivateocmacsecoper_", "oper."},
    };
    for (const auto &[prefix, shorter] : prefixes) {
        if (name.starts_with(prefix)) {
            return std::string(shorter) + name.substr(prefix.size());
        }
    }
    return name;
}

std::string shown_line(const std::string &line)
{
    const std::size_t colon = line.find(": ");
    const std::string name = shortened(line.substr(0, colon));
    const std::string text = line.substr(colon + 2);
    return text == "Start" ? "> " + name : text == "End" ? "< " + name : "! " + name + ": " + text;
}

bool is_entering_or_leaving(const std::string &shown)
{
    return shown.starts_with("> ") || shown.starts_with("< ");
}

/// Functions that are entered and left one right behind the other share a line, as far as it is wide.
void add_line(const std::string &line, Lines &shown)
{
    constexpr std::size_t width = 120;
    if (!shown.empty() && is_entering_or_leaving(line) && is_entering_or_leaving(shown.back()) &&
        shown.back().size() + line.size() < width) {
        shown.back() += " " + line;
    } else {
        shown.push_back(line);
    }
}

/// An add as path=value[ from source][ entry][ flags n][ in tree][ -> failure], a read of state as "read path from
/// source".
std::optional<std::string> shown_add(const std::string &call)
{
    static const std::regex form(
        R"re(tqm_map_datatree_add_path(?:_flagged)?\("([^"]*)", ns=([^,]*), value=(.*), source=([^,]*), list_entry=(\d))re"
        R"re((?:, flags=(\d+))?(?:, out_node=1)?(?:, tree=([^,)]*))?.*\) = (.*))re");
    static const std::regex read(R"re(tqm_map_add_leaf_from_xpath\("([^"]*)", ns=([^,]*), node=(.*)\) = (.*))re");
    std::smatch match;
    const auto unless = [](const std::string &text, const std::string &usual, const std::string &before) {
        return text == usual || text.empty() ? "" : before + text;
    };
    if (std::regex_match(call, match, form)) {
        return match[1].str() + "=" + match[3].str() + unless(match[4], "null", " from ") +
               (match[5] == "1" ? " entry" : "") + unless(match[6], "0", " flags ") + unless(match[7], "", " in ") +
               unless(match[8], "0", " -> ");
    }
    if (std::regex_match(call, match, read)) {
        return "read " + match[1].str() + " from " + match[3].str() + unless(match[4], "0", " -> ");
    }
    return std::nullopt;
}

/// The request tree behind the walk, with all marks of the walkers.
void show_marks(const rdl_tqm_datatree &node, const std::string &indent, Lines &lines)
{
    static constexpr const char *roles[] = {"", "leaf", "leaf-list", "container", "list", "?", "match"};
    static constexpr const char *operations[] = {"merge", "replace", "create", "delete", "remove"};
    std::string line = indent + (node.tag == nullptr ? "?" : node.tag);
    if ((node.role_present & TQM_ROLE_PRESENT) != 0) {
        line += std::string(" ") + (node.node_role < std::size(roles) ? roles[node.node_role] : "?");
    }
    if (node.is_key != 0) {
        line += (node.present & TQM_PRESENT_IS_KEY) != 0 ? " key" : " key?";
    }
    if ((node.present & TQM_PRESENT_OPERATION) != 0 && node.operation != TQM_OP_MERGE) {
        line += std::string(" ") + (node.operation < std::size(operations) ? operations[node.operation] : "?");
    }
    lines.push_back(line);
    for (uint32_t child = 0; (node.present & TQM_PRESENT_SUBTREE) != 0 && child < node.subtree_count; ++child) {
        show_marks(node.subtree[child], indent + "  ", lines);
    }
}

/// The events of a walk, or of what happens in one function of it.
std::vector<Event> events_of(const Walk &walk, const std::string &function)
{
    std::vector<Event> events = walk.events();
    const auto is_line = [&](const char *text) {
        return [&function, text](const Event &event) {
            return event.of == Event::Of::line && shortened(event.text) == function + ": " + text;
        };
    };
    if (!function.empty()) {
        events.erase(events.begin(), std::ranges::find_if(events, is_line("Start")));
        const auto last = std::find_if(events.rbegin(), events.rend(), is_line("End"));
        events.erase(last == events.rend() ? events.end() : last.base(), events.end());
    }
    return events;
}

/// The parts that "show" names: walk, calls, adds, lines [of names that match], marks.
void show(const Walk &walk, const std::string &what, const Case &one, Lines &shown)
{
    const std::regex names(what.starts_with("lines ") ? what.substr(6) : ".*");
    const std::string beginning = one.setting("below");
    for (const Event &event : events_of(walk, one.setting("inside"))) {
        if (event.of == Event::Of::state && (what == "walk" || what == "calls")) {
            shown.push_back("[" + event.text + "]");
        } else if (event.of == Event::Of::call && what == "adds") {
            if (const auto add = shown_add(event.text); add && add->starts_with(beginning)) {
                shown.push_back(add->substr(beginning.size()));
            }
        } else if (event.of == Event::Of::call && (what == "walk" || what == "calls")) {
            shown.push_back(event.text);
        } else if (event.of == Event::Of::line && (what == "walk" || what.starts_with("lines"))) {
            const std::string line = shown_line(event.text);
            if (std::regex_search(line, names)) {
                add_line(line, shown);
            }
        }
    }
    if (what == "marks" && walk.tree() != nullptr) {
        show_marks(*walk.tree(), "", shown);
    }
}

/// What a client is told, and what the walk has left behind: fields, and nodes on the hierarchy.
std::string outcome_text(const Walk &walk)
{
    std::string text = walk.outcome() + (walk.state().empty() ? "" : " [" + walk.state() + "]");
    const auto pushed = static_cast<int>(walk.calls_of("tqm_map_add_to_node_hierarchy").size());
    const auto popped = static_cast<int>(walk.calls_of("tqm_map_remove_from_node_hierarchy").size());
    return pushed == popped ? text : text + ", " + std::to_string(pushed - popped) + " left on the hierarchy";
}

/// The printed trees, without their wrapper and with short namespaces; with its indentation, or in one line.
Lines shown_document(const Request &request, bool in_one_line)
{
    static const std::regex native(" xmlns=\"http://tarvex.example/ns/yang/Tarvex-([^\"]*)\"");
    static const std::regex openconfig(" xmlns=\"http://openconfig.net/yang/macsec\"");
    Lines shown;
    for (const std::string &line : words(printed(request.kind, request.direction, request.document), '\n')) {
        if (line.starts_with("  ")) {
            const std::string text =
                std::regex_replace(std::regex_replace(line.substr(2), native, " ns=$1"), openconfig, "");
            if (in_one_line && !shown.empty()) {
                shown.back() += text.substr(text.find_first_not_of(' '));
            } else {
                shown.push_back(text);
            }
        } else if (!line.starts_with("<")) {
            shown.push_back(line); // an error
        }
    }
    return shown;
}

Lines shown_of(const Case &one, const Request &request)
{
    const Walk walk = walked(one, request, std::nullopt);
    Lines shown;
    for (const auto &[word, rest] : one.settings) {
        if (word == "show" && rest == "document") {
            const Lines text = shown_document(request, one.has("rows"));
            shown.insert(shown.end(), text.begin(), text.end());
        } else if (word == "show") {
            show(walk, rest, one, shown);
        }
    }
    const std::string outcome = outcome_text(walk);
    if (outcome != "0" || shown.empty()) {
        shown.push_back("= " + outcome);
    }
    return shown;
}

// ---- Sweeps --------------------------------------------------------------------------------------------------------

bool has_faults(const std::string &operation)
{
    static const char *const without[] = {"tqm_map_is_request_add", "tqm_oc_error_path", "plat_named_free",
                                          "tqm_map_util_itree_stack_size"};
    return std::ranges::find(without, operation) == std::end(without);
}

/// The lines of `walk` that `usual` does not have.
Lines new_lines(const Walk &usual, const Walk &walk)
{
    std::multiset<std::string> known;
    for (const std::string &line : usual.lines()) {
        known.insert(line);
    }
    Lines found;
    for (const std::string &line : walk.lines()) {
        if (const auto same = known.find(line); same != known.end()) {
            known.erase(same);
        } else {
            found.push_back(shown_line(line));
        }
    }
    return found;
}

/// How a walk went on whose `usual` form has no fault.
std::string went_on(const Walk &usual, const Walk &walk)
{
    std::string adds;
    for (const std::string &call : walk.calls()) {
        adds += !shown_add(call) ? "" : call.ends_with(" = 0") ? "+" : "-";
    }
    std::string text = outcome_text(walk) + "; " + (adds.empty() ? "no adds" : adds) + ", " +
                       std::to_string(walk.calls().size()) + " calls, " + std::to_string(walk.lines().size()) +
                       " lines";
    for (const std::string &line : new_lines(usual, walk)) {
        text += "; " + line;
    }
    return text;
}

/// Each call of the walk fails once: its code, how far the walk then goes, and the lines that are logged of it.
Lines sweep_of(const Case &one, const Request &request)
{
    const Walk usual = walked(one, request, std::nullopt);
    const rcode code = one.setting("sweep") == "skip" ? TQM_ERR_SKIP_NODE : failure;
    std::map<std::string, unsigned int> counts;
    std::map<std::string, std::string> without_effect;
    Lines shown;
    for (const std::string &call : usual.calls()) {
        const std::string operation = call.substr(0, call.find('('));
        if (!has_faults(operation)) {
            continue;
        }
        const unsigned int nth = ++counts[operation];
        const Walk walk = walked(one, request, std::pair{operation, nth}, code);
        const std::string what = went_on(usual, walk);
        if (what == went_on(usual, usual)) {
            without_effect[operation] += " " + std::to_string(nth);
        } else {
            shown.push_back(operation + " " + std::to_string(nth) + ": " + what);
        }
    }
    for (const auto &[operation, calls] : without_effect) {
        shown.push_back(std::string("without effect: ").append(operation).append(calls));
    }
    return shown;
}

std::string joined(const Lines &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += text.empty() ? "" : "; ";
        text += line;
    }
    return text;
}

} // namespace

Lines outcome_of(const Case &one)
{
    const Zone zone(one.setting("zone", "UTC0"));
    const Clock clock(one.setting("now"));
    if (one.has("sweep")) {
        return sweep_of(one, request_of(one, ""));
    }
    if (!one.has("rows")) {
        return shown_of(one, request_of(one, ""));
    }
    Lines rows;
    for (const std::string &row : one.expected) {
        const std::string input = row.substr(0, row.find(row_arrow));
        rows.push_back(input + std::string(row_arrow) + " " + joined(shown_of(one, request_of(one, input))));
    }
    return rows;
}

} // namespace test
