// Requests are explained, and what is explained of the node itself is taken.
#include "model_probe.h"

#include <algorithm>
#include <utility>

#include "explain.h"
#include "openconfig.h"

namespace ocmap
{
namespace
{

constexpr const char *any_key = "x";
// Every leaf takes it: the mappers pass on what their value tables do not know, and the time leaves want this form.
constexpr const char *any_value = "2030-01-01T00:00:00";
// No node has this tag. A read that names it beside a key does not select all of the entry.
constexpr const char *no_such_node = "<none-of-all/>";

std::vector<std::string> steps_of(std::string_view path)
{
    std::vector<std::string> steps;
    for (std::size_t begin = 1; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        steps.emplace_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return steps;
}

struct Mapped {
    bool supported = true;
    Paths paths;
};

class Prober
{
public:
    explicit Prober(const Environment &environment) : environment_(environment) {}

    tqm::Expected<ProbedNode> probe(const router::SchemaNode &info) const
    {
        ProbedNode node{info, true, {}, {}};
        const auto read = map(info, TQM_REQ_GET, "");
        if (!read) {
            return tl::unexpected(read.error());
        }
        node.supported = read->supported;
        node.read = read->paths;
        for (const std::string operation : {"merge", "remove"}) {
            // Removing an entry, or a key, takes all that is below it, too; merging a container says nothing.
            const bool is_removal = operation == "remove";
            const bool tells_nothing = is_removal ? info.is_key || info.kind == router::NodeKind::list
                                                  : info.kind == router::NodeKind::container;
            if (!info.config || !node.supported || tells_nothing) {
                continue;
            }
            const auto edit = map(info, TQM_REQ_EDIT, operation);
            if (!edit) {
                return tl::unexpected(edit.error());
            }
            node.edit.insert(edit->paths.begin(), edit->paths.end());
        }
        return node;
    }

private:
    tqm::Expected<Mapped> map(const router::SchemaNode &info, uint32_t kind, const std::string &operation) const
    {
        auto document = tqm::Document::parse(request(info, kind, operation));
        if (!document) {
            return tl::unexpected(document.error());
        }
        const auto explanation = explain(environment_, std::move(*document), tqm::Direction::forward, kind);
        if (!explanation) {
            return tl::unexpected(explanation.error());
        }
        const std::size_t depth = steps_of(info.path).size() - 1;
        const std::string tag = info.path.substr(info.path.rfind('/') + 1);
        const auto node = std::ranges::find_if(explanation->request.rbegin(), explanation->request.rend(),
                                               [&](const RequestNode &r) { return r.depth == depth && r.tag == tag; });
        Mapped mapped;
        mapped.supported = node->fate != Fate::refused || explanation->refusal->code != TQM_ERR_UNSUPPORTED;
        for (const std::size_t add : node->adds) {
            const std::string &path = explanation->adds[add].path; // mappers may leave out the first slash
            mapped.paths.insert(path.starts_with('/') ? path : "/" + path);
        }
        return mapped;
    }

    // A document that names the node, and the keys of the entries around it.
    std::string request(const router::SchemaNode &info, uint32_t kind, const std::string &operation) const
    {
        const bool is_edit = kind == TQM_REQ_EDIT;
        const std::string attribute =
            operation.empty() || operation == "merge" || info.is_key ? "" : " nc:operation='" + operation + "'";
        const std::vector<std::string> steps = steps_of(info.path);
        std::string open;
        std::string close;
        std::string path;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            path += "/" + steps[i];
            const bool is_target = i + 1 == steps.size();
            const tqm::SchemaNode *const known = environment_.schema().find(path);
            const bool is_leaf = is_target && info.kind != router::NodeKind::list;
            const bool names_own_key = info.is_key && i + 2 == steps.size();
            open += "<" + steps[i] + (is_target ? attribute : "");
            open += i == 0 ? std::string(" xmlns='") + openconfig_ns + "'>" : ">";
            if (known != nullptr && known->is_list() && !names_own_key) {
                open += "<" + known->keys.front() + ">" + any_key + "</" + known->keys.front() + ">";
            }
            if (is_leaf && operation != "remove" && (is_edit || info.is_key)) {
                open += any_value;
            }
            if (is_target && !is_leaf && !is_edit) {
                open += no_such_node;
            }
            const bool keeps_entry_open = names_own_key && !is_edit;
            close.insert(0, std::string(keeps_entry_open ? no_such_node : "") + "</" + steps[i] + ">");
        }
        const std::string wrapper = is_edit ? "config" : "filter";
        return "<" + wrapper + " xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" + open + close + "</" + wrapper +
               ">";
    }

    const Environment &environment_;
};

// A request for a container alone covers the nodes below it: what they add is not its own.
void keep_own_paths(std::vector<ProbedNode> &nodes)
{
    for (auto container = nodes.rbegin(); container != nodes.rend(); ++container) {
        if (container->info.kind != router::NodeKind::container) {
            continue;
        }
        for (auto below = container.base(); below != nodes.end(); ++below) {
            if (!below->info.path.starts_with(container->info.path + "/")) {
                break;
            }
            for (const Paths *const paths : {&below->read, &below->edit}) {
                const auto is_theirs = [&](const std::string &path) { return paths->contains(path); };
                std::erase_if(container->read, is_theirs);
                std::erase_if(container->edit, is_theirs);
            }
        }
    }
}

} // namespace

tqm::Expected<std::vector<ProbedNode>> probe_model(const Environment &environment)
{
    const Prober prober(environment);
    std::vector<ProbedNode> nodes;
    for (const router::SchemaNode &info : environment.models().nodes(openconfig_ns)) {
        auto node = prober.probe(info);
        if (!node) {
            return tl::unexpected(node.error());
        }
        nodes.push_back(std::move(*node));
    }
    keep_own_paths(nodes);
    return nodes;
}

} // namespace ocmap
