#include "result_outline.h"

#include <optional>
#include <unordered_map>
#include <utility>

#include "shown_value.h"

namespace ocmap
{
namespace
{

class ResultOutline
{
public:
    ResultOutline(const tqm::Schema &schema, Explanation &explanation) : schema_(schema), explanation_(explanation) {}

    void add(const tqm::OutputNode &node, std::size_t depth = 0, const std::string &outer = "",
             uint32_t outer_operation = TQM_OP_MERGE)
    {
        positions_.emplace(&node, explanation_.results.size());
        ResultNode &shown = explanation_.results.emplace_back();
        shown.depth = depth;
        shown.tag = node.tag();
        shown.ns = node.ns();
        shown.value = shown_value(schema_, node.path(), node.value());
        const tqm::WrittenOperation operation = tqm::written_operation(node, outer_operation);
        shown.operation = operation.name == nullptr ? "" : operation.name;
        shown.path = outer + "/" + shown.tag;
        for (const tqm::OutputNode &child : node.children()) {
            if (node.is_list_entry() && child.is_key() && child.value() != nullptr) {
                tqm::append_key(shown.path, child.tag(), child.value());
            }
        }
        const std::string path = shown.path;
        for (const tqm::OutputNode &child : node.children()) {
            add(child, depth + 1, path, operation.effective);
        }
    }

    // Entries that turned out to be one have been joined.
    std::optional<std::size_t> position_of(const tqm::OutputNode *node) const
    {
        const auto found = node == nullptr ? positions_.end() : positions_.find(&node->joined());
        return found == positions_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    const tqm::Schema &schema_;
    Explanation &explanation_;
    std::unordered_map<const tqm::OutputNode *, std::size_t> positions_;
};

// An operation that was not known yet when the node was added is no other one.
bool differ(const Add &a, const Add &b)
{
    return a.value != b.value || (!a.operation.empty() && !b.operation.empty() && a.operation != b.operation);
}

// Of several adds to one node the last stands.
void find_winners(Explanation &explanation, const ResultNode &result, bool is_key)
{
    std::vector<std::size_t> standing;
    for (const std::size_t position : result.adds) {
        Add &add = explanation.adds[position];
        if (standing.empty() || !differ(explanation.adds[standing.back()], add)) {
            standing.push_back(position);
            continue;
        }
        if (is_key && !add.value) {
            add.not_taken = "a key keeps its value";
            continue;
        }
        for (const std::size_t loser : standing) {
            explanation.adds[loser].lost_to = position;
        }
        add.wins_over = std::exchange(standing, {position});
    }
}

void connect(Explanation &explanation, const ResultOutline &results,
             const std::vector<const tqm::OutputNode *> &targets)
{
    std::vector<bool> keys(explanation.results.size());
    for (std::size_t position = 0; position < targets.size(); ++position) {
        Add &add = explanation.adds[position];
        add.result = results.position_of(targets[position]);
        if (add.result) {
            explanation.results[*add.result].adds.push_back(position);
            keys[*add.result] = targets[position]->is_key();
        }
    }
    for (std::size_t position = 0; position < explanation.results.size(); ++position) {
        find_winners(explanation, explanation.results[position], keys[position]);
    }
}

} // namespace

void outline_result(const tqm::Schema &schema, const std::vector<const tqm::OutputNode *> &roots,
                    const std::vector<const tqm::OutputNode *> &targets, Explanation &explanation)
{
    ResultOutline results(schema, explanation);
    for (const tqm::OutputNode *root : roots) {
        results.add(*root);
    }
    connect(explanation, results, targets);
}

} // namespace ocmap
