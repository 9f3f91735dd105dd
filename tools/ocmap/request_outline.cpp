#include "request_outline.h"

#include "shown_value.h"

namespace ocmap
{
namespace
{

// `path` may end in a leaf-list's value, "[.='x']".
bool is_at(const RequestNode &node, const std::string &path)
{
    if (node.path == path || !node.value || !path.starts_with(node.path)) {
        return node.path == path;
    }
    std::string with_value = node.path;
    tqm::append_key(with_value, ".", *node.value);
    return with_value == path;
}

} // namespace

RequestOutline::RequestOutline(const tqm::Schema &schema, tqm::Request &request, Explanation &explanation)
    : schema_(schema), request_(request), explanation_(explanation)
{
    for (const tqm::LeftOut &left : request.left_out()) {
        left_out_.emplace(left.parent, &left);
    }
    for (uint32_t i = 0; i < request.tree_count(); ++i) {
        add(*request.tree(i), 0, "", "");
    }
    auto [left, left_end] = left_out_.equal_range(nullptr);
    for (; left != left_end; ++left) {
        add_left_out(*left->second, 0, "", "");
    }
}

std::optional<std::size_t> RequestOutline::position_of(const char *tag) const
{
    const auto found = by_tag_.find(tag);
    return found == by_tag_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::size_t> RequestOutline::position_of_path(const std::string &path,
                                                            std::optional<std::size_t> last) const
{
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < explanation_.request.size() && (!found || i <= last.value_or(0)); ++i) {
        if (is_at(explanation_.request[i], path)) {
            found = i;
        }
    }
    return found;
}

void RequestOutline::add(const rdl_tqm_datatree &node, std::size_t depth, const std::string &outer_schema_path,
                         const std::string &outer_path)
{
    const std::string schema_path = outer_schema_path + "/" + node.tag;
    RequestNode &shown = explanation_.request.emplace_back();
    by_tag_.emplace(node.tag, explanation_.request.size() - 1);
    shown.depth = depth;
    shown.tag = node.tag;
    const tqm::SchemaNode *const known = schema_.find(schema_path);
    tqm::InstancePath step;
    step.enter(node.tag);
    if (known != nullptr) {
        step.keys(node, known->keys);
    }
    shown.path = outer_path + step.text();
    if ((node.present & TQM_PRESENT_VALUE) != 0) {
        shown.value = shown_value(schema_, schema_path, node.value);
    } else if (known != nullptr && known->is_leaf_list()) { // a value that goes is told by itself
        shown.value = shown_value(schema_, schema_path, request_.deleted_text(node));
    }
    if ((node.present & TQM_PRESENT_OPERATION) != 0) {
        shown.operation = tqm::operation_name(node.operation);
    }
    const std::string path = shown.path;
    auto [left, left_end] = left_out_.equal_range(&node);
    const std::span<const rdl_tqm_datatree> children = tqm::children_of(node);
    for (uint32_t i = 0; i <= children.size(); ++i) {
        for (; left != left_end && left->second->position == i; ++left) {
            add_left_out(*left->second, depth + 1, schema_path, path);
        }
        if (i < children.size()) {
            add(children[i], depth + 1, schema_path, path);
        }
    }
}

void RequestOutline::add_left_out(const tqm::LeftOut &left, std::size_t depth, const std::string &outer_schema_path,
                                  const std::string &outer_path)
{
    const std::size_t first = explanation_.request.size();
    add(left.node, depth, outer_schema_path, outer_path);
    const char *const no_operation = "the default-operation is none, and it has no operation of its own";
    for (std::size_t i = first; i < explanation_.request.size(); ++i) {
        explanation_.request[i].fate = Fate::dropped;
        explanation_.request[i].reason = left.reason == nullptr ? no_operation : left.reason;
    }
}

} // namespace ocmap
