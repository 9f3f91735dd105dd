// The framework is met here and nowhere else in the tests of the plug-in.
#include "walk.h"

#include <gtest/gtest.h>

#include <cctype>
#include <iterator>
#include <map>
#include <regex>
#include <utility>

#include "environment.h"
#include "system.h"
#include "tqm/framework.h"
#include "tqm/journal.h"
#include "tqm/request.h"

namespace test
{
namespace
{

const ocmap::Environment &environment()
{
    static const tqm::Expected<ocmap::Environment> loaded = [] {
        let_model_be(true);
        return ocmap::Environment::load({PLUGIN, YANG});
    }();
    if (!loaded) {
        ADD_FAILURE() << loaded.error().text;
        std::abort();
    }
    return *loaded;
}

tqm::Direction direction_of(Direction direction)
{
    return direction == Direction::forward ? tqm::Direction::forward : tqm::Direction::reverse;
}

struct Flag {
    uint32_t bit;
    const char *name;
};

std::string flags_of(uint32_t value, std::initializer_list<Flag> flags)
{
    std::string text;
    for (const Flag &flag : flags) {
        if ((value & flag.bit) != 0) {
            text += std::string(text.empty() ? "" : "+") + flag.name;
            value &= ~flag.bit;
        }
    }
    return value == 0 ? text : text + "+" + std::to_string(value);
}

std::string state_of(const tqm_map_request &record, const tqm_map_ctx ctx)
{
    const std::string fields[][2] = {
        {"fill", record.fill_mode == 0 ? "" : std::to_string(record.fill_mode)},
        {"delete", record.delete_mode == 0 ? "" : std::to_string(record.delete_mode)},
        {"replace", record.replace_active == 0 ? "" : std::to_string(record.replace_active)},
        {"walk", flags_of(record.walk_flags, {{TQM_WALK_REPLACE_REMOVE, "remove"},
                                              {TQM_WALK_REPLACE_MERGE, "merge"},
                                              {TQM_WALK_XPATH_ERROR, "xpath-error"}})},
        {"filter", flags_of(record.filter_flags, {{TQM_FILTER_ALL_SIBLINGS, "siblings"},
                                                  {TQM_FILTER_SELECTION_SEEN, "selection"},
                                                  {TQM_FILTER_MATCH_SEEN, "match"},
                                                  {TQM_FILTER_MATCH_IN_REQUEST, "matches"}})},
        {"depth", record.output_depth == 0 ? "" : std::to_string(record.output_depth)},
        {"list", ctx->list_operation == 0 ? "" : tqm::operation_name(ctx->list_operation)},
    };
    std::string text;
    for (const auto &field : fields) {
        if (!field[1].empty()) {
            text += (text.empty() ? "" : " ") + field[0] + "=" + field[1];
        }
    }
    return text;
}

/// "#7: ERR: function:12 ctx=0x1,text" as "function: ERR text".
std::string normalised(const std::string &trace)
{
    static const std::regex form(R"(#\d+: (TRC|ERR): (\w+):\d+ ctx=\S+?,((?:.|\n)*))");
    std::smatch match;
    if (!std::regex_match(trace, match, form)) {
        ADD_FAILURE() << "no trace line: " << trace;
        return trace;
    }
    const std::string function = match[2];
    std::string text = match[3];
    if (text.find(function) != std::string::npos) { // with its own line, perhaps
        text = std::regex_replace(text, std::regex(function + "(: ?)\\d+"), function + "$1N");
    }
    return function + ": " + (match[1] == "ERR" ? "ERR " : "") + text;
}

} // namespace

struct Walk::State {
    struct Action {
        std::string operation;
        unsigned int countdown;
        std::function<void()> run;
    };

    uint32_t kind;
    Direction direction;
    tqm::Faults faults = {};
    tqm::Watch watch = {};
    bool journals_questions = false;
    bool no_configuration = false;
    rcode rc = 0;
    std::vector<Event> events = {};
    std::vector<Action> actions = {};
    Lines logged = {};
    Lines traced = {};
    std::string shown_state = {};
    std::unique_ptr<tqm::Journal> journal = {};
    std::unique_ptr<tqm::Request> made = {};

    tqm::Request &request();
    void note(Event::Of of, std::string text);
    void called(std::string_view line);
    void compare_sinks() const;
};

tqm::Request &Walk::State::request()
{
    if (made) {
        return *made;
    }
    journal = std::make_unique<tqm::Journal>([this](std::string_view line) { called(line); }, journals_questions);
    watch.journal = journal.get();
    watch.faults = &faults;
    watch.log = [this](uint32_t, std::string_view line) { logged.emplace_back(line); };
    watch.trace = [this](std::string_view line) {
        traced.emplace_back(line);
        note(Event::Of::line, normalised(traced.back()));
    };
    made = std::make_unique<tqm::Request>(environment().schema(), environment().plugin().registrations(), kind,
                                          direction_of(direction), watch);
    if (no_configuration) {
        made->header().option_group_5 = 0x2000;
        made->header().data_selector = TQM_DATA_SELECTOR_NO_CONFIG;
    }
    return *made;
}

void Walk::State::note(Event::Of of, std::string text)
{
    std::string state = state_of(made->record(), made->ctx());
    if (state != shown_state) {
        shown_state = state;
        events.push_back({Event::Of::state, std::move(state)});
    }
    events.push_back({of, std::move(text)});
}

void Walk::State::called(std::string_view line)
{
    note(Event::Of::call, std::string(line));
    for (Action &action : actions) {
        if (line.starts_with(action.operation + "(") && action.countdown > 0 && --action.countdown == 0) {
            action.run();
        }
    }
}

// Each message goes to both sinks, with one text; the trace buffer's lines are cut.
void Walk::State::compare_sinks() const
{
    if (!watch.log_trace || !watch.trace_on) {
        return;
    }
    ASSERT_EQ(logged.size(), traced.size());
    for (std::size_t index = 0; index < logged.size(); ++index) {
        const std::string &trace = traced[index];
        const std::string level = trace.substr(trace.find(": ") + 2, 3);
        const std::string text = trace.substr(trace.find(',') + 1);
        const std::string log_text = logged[index].substr(logged[index].find(',') + 1);
        EXPECT_TRUE(logged[index].starts_with(level + ": TQM: ctx=0x")) << logged[index];
        EXPECT_TRUE(log_text == text || (trace.size() == TQM_TRACE_LINE_MAX - 1 && log_text.starts_with(text)))
            << trace;
    }
}

Walk::Walk(uint32_t kind, Direction direction) : state_(new State{kind, direction})
{
    sinks(true, true);
}

Walk::~Walk() = default;
Walk::Walk(Walk &&) noexcept = default;

Walk &Walk::fault(const std::string &operation, unsigned int nth, rcode code)
{
    state_->faults.fail(operation, nth, code);
    return *this;
}

Walk &Walk::on_call(const std::string &operation, unsigned int nth, std::function<void()> action)
{
    state_->actions.push_back({operation, nth, std::move(action)});
    return *this;
}

Walk &Walk::without_configuration()
{
    state_->no_configuration = true;
    return *this;
}

Walk &Walk::questions()
{
    state_->journals_questions = true;
    return *this;
}

Walk &Walk::sinks(bool log, bool trace)
{
    state_->watch.log_errors = state_->watch.log_trace = log;
    state_->watch.trace_on = trace;
    return *this;
}

Walk &Walk::load(const std::string &document)
{
    auto parsed = tqm::Document::parse(document);
    if (!parsed) {
        ADD_FAILURE() << parsed.error().text << ": " << document;
        return *this;
    }
    const auto loaded = state_->request().load(std::move(*parsed));
    if (!loaded) {
        ADD_FAILURE() << loaded.error().text << ": " << document;
    } else if (state_->request().tree_count() == 0) {
        ADD_FAILURE() << "nothing to walk: " << document;
    }
    return *this;
}

Walk &Walk::run()
{
    const std::span<const tqm_map_reg_info> trees = environment().plugin().registrations();
    if (state_->direction == Direction::forward) {
        return run(trees.front().forward_root, tree());
    }
    for (uint32_t index = 0; index < state_->request().tree_count(); ++index) {
        for (const tqm_map_reg_info &info : trees) {
            if (std::string_view(tree(index)->ns) == info.native_ns) {
                run(info.reverse_root, tree(index));
            }
        }
    }
    return *this;
}

Walk &Walk::run(const std::string &name, const rdl_tqm_datatree *node)
{
    state_->rc = call(name, ctx(), node, out());
    state_->compare_sinks();
    return *this;
}

Walk &Walk::run(tqm_map_function function, const rdl_tqm_datatree *node)
{
    state_->rc = function(ctx(), node, out());
    state_->compare_sinks();
    return *this;
}

rcode Walk::rc() const
{
    return state_->rc;
}

const std::vector<Event> &Walk::events() const
{
    return state_->events;
}

static Lines texts_of(const std::vector<Event> &events, Event::Of of, const std::string &beginning = "",
                      std::size_t without = 0)
{
    Lines found;
    for (const Event &event : events) {
        if (event.of == of && event.text.starts_with(beginning)) {
            found.push_back(event.text.substr(without));
        }
    }
    return found;
}

Lines Walk::calls() const
{
    return texts_of(events(), Event::Of::call);
}

Lines Walk::lines() const
{
    return texts_of(events(), Event::Of::line);
}

Lines Walk::lines_of(const std::string &function) const
{
    return texts_of(events(), Event::Of::line, function + ": ", function.size() + 2);
}

Lines Walk::calls_of(const std::string &operation) const
{
    return texts_of(events(), Event::Of::call, operation + "(");
}

const Lines &Walk::logged() const
{
    return state_->logged;
}

const Lines &Walk::traced() const
{
    return state_->traced;
}

std::string Walk::state() const
{
    return state_of(state_->request().record(), ctx());
}

std::string Walk::outcome() const
{
    tqm::Request &request = state_->request();
    std::string text = code_name(rc());
    const tqm_map_request &record = request.record();
    if (record.error_tag != nullptr) {
        text += std::string(", tag ") + record.error_tag;
    }
    if (!request.error_path().empty()) {
        text += ", path " + request.error_path();
    }
    if (record.error_msg != nullptr) {
        text += std::string(", \"") + record.error_msg + "\"";
    }
    return text;
}

tqm_map_ctx Walk::ctx() const
{
    return state_->request().ctx();
}

rdl_tqm_datatree *Walk::out() const
{
    return state_->request().out();
}

rdl_tqm_datatree *Walk::tree(uint32_t index) const
{
    return state_->request().tree(index);
}

bool is_container_function(const std::string &name)
{
    static const std::regex form(
        "\\w+_(cont|duck_map_container)(_\\w+)?|"
        "ymap_ot_ifmgr_interfaceconfigurations_interfaceconfiguration_macsec_fwd|"
        "ymap_to_ocmacsec_(interfaces_interface_mka|key_clear_text|keychain_valid_date_time)_rev");
    return std::regex_match(name, form);
}

void *symbol(const std::string &name)
{
    void *const found = environment().plugin().symbol(name.c_str());
    EXPECT_NE(found, nullptr) << "the plug-in exports no " << name;
    return found;
}

rcode call(const std::string &name, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    void *const function = symbol(name);
    if (!is_container_function(name)) {
        return reinterpret_cast<tqm_map_function>(function)(ctx, node, out);
    }
    const bool has_children = node != nullptr && (node->present & TQM_PRESENT_SUBTREE) != 0;
    return reinterpret_cast<tqm_map_container_function>(function)(ctx, node, has_children ? node->subtree_count : 0,
                                                                  out);
}

std::string printed(uint32_t kind, Direction direction, const std::string &document)
{
    auto parsed = tqm::Document::parse(document);
    tqm::Framework framework(environment().plugin(), environment().schema());
    const auto trees = direction == Direction::forward ? framework.forward(std::move(*parsed), kind)
                                                       : framework.reverse(std::move(*parsed), kind);
    if (!trees) {
        return trees.error().text;
    }
    std::string text;
    trees->print(text);
    return text;
}

std::string wrap(std::string_view path, std::string_view inside)
{
    if (path.empty()) {
        return std::string(inside);
    }
    static const std::regex form(R"(([\w-]+)(?::(\w+))?(?:\[([\w-]+)=([^\]]*)\])?(?:/(.*))?)");
    std::cmatch step;
    if (!std::regex_match(path.data(), path.data() + path.size(), step, form)) {
        ADD_FAILURE() << "no path: " << path;
        return {};
    }
    const std::string tag = step[1];
    const std::string operation = step[2].matched ? " nc:operation='" + step[2].str() + "'" : "";
    const std::string key =
        step[3].matched ? "<" + step[3].str() + ">" + step[4].str() + "</" + step[3].str() + ">" : "";
    return "<" + tag + operation + ">" + key + wrap(step[5].str(), inside) + "</" + tag + ">";
}

std::string document(uint32_t kind, Direction direction, std::string_view inside)
{
    static const std::string vendor = "http://tarvex.example/ns/yang/Tarvex-";
    static const std::pair<const char *, std::string> replacements[] = {
        {"^<macsec\\b(?! xmlns)", "<macsec xmlns='$mka'"},
        {"^<keychains\\b(?! xmlns)", "<keychains xmlns='$keychain'"},
        {"^<interface-configurations\\b(?! xmlns)", "<interface-configurations xmlns='$ifmgr'"},
        {"^<oc-macsec\\b(?! xmlns)", "<oc-macsec xmlns='$oper'"},
        {"\\$mka-if\\b", vendor + "crypto-macsec-mka-if-cfg"},
        {"\\$mka\\b", vendor + "crypto-macsec-mka-cfg"},
        {"\\$keychain\\b", vendor + "lib-keychain-cfg"},
        {"\\$ifmgr\\b", vendor + "ifmgr-cfg"},
        {"\\$oper\\b", vendor + "PRIVATE-oc-macsec-oper"},
    };
    const std::string nc = " xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>";
    std::string text(inside);
    if (direction == Direction::forward) {
        const std::string wrapper = kind == TQM_REQ_GET || kind == TQM_REQ_GET_CONFIG ? "filter" : "config";
        return "<" + wrapper + nc + "<macsec xmlns='" + oc_ns + "'>" + text + "</macsec></" + wrapper + ">";
    }
    for (const auto &[from, to] : replacements) {
        std::string replaced;
        std::regex_replace(std::back_inserter(replaced), text.begin(), text.end(), std::regex(from),
                           std::regex_replace(to, std::regex("\\$"), "$$$$"));
        text = replaced;
    }
    return "<data" + nc + text + "</data>";
}

std::string code_name(rcode code)
{
    static const std::map<rcode, const char *> names = {
        {0, "0"},
        {TQM_ERR_BAD_ARGS, "BAD_ARGS"},
        {TQM_ERR_NO_SUBTREE, "NO_SUBTREE"},
        {TQM_ERR_UNSUPPORTED, "UNSUPPORTED"},
        {TQM_ERR_LIST_KEY, "LIST_KEY"},
        {TQM_ERR_KEY_DELETE, "KEY_DELETE"},
        {TQM_ERR_INVALID_REQUEST, "INVALID_REQUEST"},
        {TQM_ERR_SKIP_NODE, "SKIP_NODE"},
        {TQM_ERR_AUGMENT, "AUGMENT"},
    };
    const auto found = names.find(code);
    if (found != names.end()) {
        return found->second;
    }
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", code);
    return text;
}

} // namespace test
