// The OpenConfig tree with its native paths, by running the walkers on one request for each node.
#include "model_tree.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

#include "tqm/request.h"

namespace ocmap
{
namespace
{

using Paths = std::set<std::string>;

constexpr const char *any_key = "x";
// Every leaf takes it: the mappers pass on what their value tables do not know, and the time leaves want this form.
constexpr const char *any_value = "2030-01-01T00:00:00";
// A child that no table has. It keeps a container or list from selecting all that is below it.
constexpr const char *no_such_tag = "-";

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
    Paths paths;
    bool supported = true;
};

class Prober
{
public:
    explicit Prober(const Environment &environment) : environment_(environment) {}

    /// Native paths of `node` alone in requests of `kind`.
    Mapped map(const router::NodeInfo &node, uint32_t kind) const
    {
        Mapped own = run(node, node.path, kind);
        const std::string parent = node.path.substr(0, node.path.rfind('/'));
        if (!parent.empty()) {
            for (const std::string &path :
                 run({parent, router::NodeKind::container, node.config, false}, parent, kind).paths) {
                own.paths.erase(path);
            }
        }
        return own;
    }

private:
    // Paths that a request for the node at `path` adds: those of its leaves and of its list entries without leaves.
    Mapped run(const router::NodeInfo &node, const std::string &path, uint32_t kind) const
    {
        tqm::Request request(environment_.schema(), environment_.plugin().registrations(), kind,
                             tqm::Direction::forward);
        tqm::TreeBuilder builder = request.builder();
        build(builder, node, path, kind);
        request.adopt(builder.finish());
        const rcode rc =
            environment_.plugin().registrations().front().forward_root(request.ctx(), request.tree(), request.out());
        Mapped mapped;
        const char *const tag = request.record().error_tag;
        const std::string name = path.substr(path.rfind('/') + 1);
        mapped.supported = rc != TQM_ERR_UNSUPPORTED || tag == nullptr || name != tag;
        for (const tqm::OutputNode &root : request.output().roots()) {
            collect(root, mapped.paths);
        }
        return mapped;
    }

    void build(tqm::TreeBuilder &builder, const router::NodeInfo &node, const std::string &path, uint32_t kind) const
    {
        const std::vector<std::string> steps = steps_of(path);
        const bool is_leaf = node.kind == router::NodeKind::leaf || node.kind == router::NodeKind::leaf_list;
        const std::size_t inner = is_leaf ? steps.size() - 1 : steps.size();
        std::string walked;
        for (std::size_t index = 0; index < inner; ++index) {
            walked += "/" + steps[index];
            builder.open(router::ns::openconfig, steps[index]);
            const std::vector<std::string> *const keys = environment_.schema().list_keys(walked);
            const bool names_key = node.is_key && index + 1 == inner;
            if (keys != nullptr && !names_key && (kind == TQM_REQ_EDIT || index + 1 < inner || is_leaf)) {
                builder.leaf(router::ns::openconfig, keys->front(), any_key);
            }
        }
        if (is_leaf) {
            const bool has_value = kind == TQM_REQ_EDIT || node.is_key;
            builder.leaf(router::ns::openconfig, steps.back(),
                         has_value ? std::optional<std::string_view>(any_value) : std::nullopt);
        }
        if (!is_leaf || node.is_key) {
            builder.leaf(router::ns::openconfig, no_such_tag, std::nullopt);
        }
        for (std::size_t index = 0; index < inner; ++index) {
            builder.close();
        }
    }

    static void collect(const tqm::OutputNode &node, Paths &paths)
    {
        if (node.children().empty()) {
            paths.emplace(node.path());
        }
        for (const tqm::OutputNode &child : node.children()) {
            collect(child, paths);
        }
    }

    const Environment &environment_;
};

std::string joined(const Paths &paths)
{
    std::string text;
    for (const std::string &path : paths) {
        text += (text.empty() ? "" : ", ") + path;
    }
    return text;
}

// Where reads and edits differ, both.
std::string native_paths(const Prober &prober, const router::NodeInfo &node)
{
    const Mapped read = prober.map(node, TQM_REQ_GET);
    if (!read.supported) {
        return "not supported";
    }
    if (!node.config) {
        return joined(read.paths);
    }
    const Mapped edit = prober.map(node, TQM_REQ_EDIT);
    if (edit.paths == read.paths || edit.paths.empty() || node.kind == router::NodeKind::list) {
        return joined(read.paths);
    }
    return joined(read.paths) + "; edit: " + joined(edit.paths);
}

std::string node_line(const router::NodeInfo &node, const tqm::Schema &schema)
{
    const std::vector<std::string> steps = steps_of(node.path);
    std::string line(2 + 3 * (steps.size() - 1), ' ');
    line += node.config ? "+--rw " : "+--ro ";
    line += steps.back();
    switch (node.kind) {
    case router::NodeKind::list:
        line += "* [" + schema.list_keys(node.path)->front() + "]";
        break;
    case router::NodeKind::leaf_list:
        line += "*";
        break;
    case router::NodeKind::leaf:
        line += node.is_key ? "" : "?";
        break;
    case router::NodeKind::container:
        break;
    }
    return line;
}

} // namespace

std::string model_tree(const Environment &environment)
{
    constexpr std::size_t column = 64;
    const Prober prober(environment);
    std::string text = "module: openconfig-macsec\n";
    for (const router::NodeInfo &node : environment.models().nodes(router::ns::openconfig)) {
        std::string line = node_line(node, environment.schema());
        const std::string native = native_paths(prober, node);
        if (!native.empty()) {
            line.resize(std::max(line.size() + 2, column), ' ');
            line += native;
        }
        text += line + "\n";
    }
    return text;
}

} // namespace ocmap
