// Filters for the same nodes are put together first: what they select adds up, so that each node of the
// answer is visited once however many of them name it. Selected nodes are marked then; what is unmarked is dropped.
#include "requests/filter.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "documents/read_tree.h"
#include "walk/hierarchy.h"

namespace tqm
{

namespace
{

constexpr uint8_t on_the_way = 1;
constexpr uint8_t whole = 2;

/// A filter's element without a namespace is meant in every namespace (RFC 6241, section 6.2.1).
bool is_in(const char *filter_ns, const OutputRecord &data)
{
    return *filter_ns == '\0' || std::strcmp(filter_ns, data.ns()) == 0;
}

// ---- The filters, put together --------------------------------------------------------------------------------------

struct LeafValue {
    const PathInfo *leaf;
    std::string_view value;
    auto operator<=>(const LeafValue &) const = default;
};
struct LeafValueHash {
    std::size_t operator()(const LeafValue &key) const
    {
        return std::hash<const void *>{}(key.leaf) * 31 + std::hash<std::string_view>{}(key.value);
    }
};

struct Match {
    LeafValue given;
    std::string_view trimmed;
    const char *ns;

    bool holds(const OutputRecord &node) const
    {
        if (node.dropped || node.info() != given.leaf || node.value == nullptr) {
            return false;
        }
        const std::string_view value = node.value;
        return (value == given.value || (trimmed.size() != given.value.size() && value == trimmed)) && is_in(ns, node);
    }
};

struct Named;

/// What one or several filters select among the children of a node; no content match stands in its way.
struct Branch {
    bool whole = false;                                                                 ///< everything
    std::unordered_map<const PathInfo *, std::vector<std::unique_ptr<Named>>> children; ///< one for each namespace
};

/// A sibling set with content matches: they decide for what stands beside them.
struct Conditional {
    std::vector<Match> matches;
    Branch branch;
};

/// All filters for the nodes of one name.
struct Named {
    const char *ns;
    std::unique_ptr<Branch> plain; ///< of the sibling sets without content matches; null if there is none
    std::unordered_map<std::string, Conditional> conditional; ///< by the matches' texts
    /// Each under the match that the fewest have.
    std::unordered_map<LeafValue, std::vector<const Conditional *>, LeafValueHash> by_match;
};

class Plan
{
public:
    explicit Plan(const PathTable &paths) : paths_(paths) {}

    Branch of(TreeBuilder::Roots filters) const
    {
        Branch branch;
        for (uint32_t i = 0; i < filters.count; ++i) {
            add(filters.nodes[i], paths_.find(filters.nodes[i].tag), branch);
        }
        index(branch);
        return branch;
    }

private:
    /// What has no path is nowhere in the answer.
    void add(const rdl_tqm_datatree &filter, const PathInfo *info, Branch &branch) const
    {
        if (info == nullptr || branch.whole) {
            return;
        }
        const std::span<const rdl_tqm_datatree> siblings = children_of(filter);
        std::vector<Match> matches;
        for (const rdl_tqm_datatree &sibling : siblings) {
            if (const char *value = given_value(&sibling)) {
                matches.push_back({{paths_.find_child(*info, sibling.tag), value}, without_blanks(value), sibling.ns});
            }
        }
        if (std::ranges::any_of(matches, [](const Match &match) { return match.given.leaf == nullptr; })) {
            return;
        }
        const bool only_matches = matches.size() == siblings.size();
        Named &named = named_in(branch, info, filter.ns);
        if (matches.empty() && named.plain == nullptr) {
            named.plain = std::make_unique<Branch>();
        }
        Branch &selected = matches.empty() ? *named.plain : conditional_in(named, matches).branch;
        if (only_matches) {
            selected.whole = true;
        }
        for (const rdl_tqm_datatree &sibling : siblings) {
            if (given_value(&sibling) == nullptr) {
                add(sibling, paths_.find_child(*info, sibling.tag), selected);
            }
        }
    }

    static Named &named_in(Branch &branch, const PathInfo *info, const char *ns)
    {
        auto &all = branch.children[info];
        for (const std::unique_ptr<Named> &named : all) {
            if (std::strcmp(named->ns, ns) == 0) {
                return *named;
            }
        }
        all.push_back(std::make_unique<Named>());
        all.back()->ns = ns;
        return *all.back();
    }

    static Conditional &conditional_in(Named &named, std::vector<Match> &matches)
    {
        std::ranges::sort(matches, {}, &Match::given);
        std::string text;
        for (const Match &match : matches) {
            for (const std::string_view part :
                 {std::string_view(match.given.leaf->tag), match.given.value, std::string_view(match.ns)}) {
                text.append(part).push_back('\0');
            }
        }
        const auto [position, is_new] = named.conditional.try_emplace(std::move(text));
        if (is_new) {
            position->second.matches = std::move(matches);
        }
        return position->second;
    }

    static void index(Branch &branch)
    {
        for (auto &[info, all] : branch.children) {
            for (const std::unique_ptr<Named> &named : all) {
                if (named->plain != nullptr) {
                    index(*named->plain);
                }
                for (auto &[text, conditional] : named->conditional) {
                    index(conditional.branch);
                }
                index(*named);
            }
        }
    }

    static void index(Named &named)
    {
        std::unordered_map<LeafValue, std::size_t, LeafValueHash> users;
        for (const auto &[text, conditional] : named.conditional) {
            for (const Match &match : conditional.matches) {
                ++users[match.given];
            }
        }
        for (const auto &[text, conditional] : named.conditional) {
            const Match &rarest = *std::ranges::min_element(conditional.matches, {},
                                                            [&](const Match &match) { return users.at(match.given); });
            named.by_match[rarest.given].push_back(&conditional);
            if (rarest.trimmed.size() != rarest.given.value.size()) {
                named.by_match[{rarest.given.leaf, rarest.trimmed}].push_back(&conditional);
            }
        }
    }

    const PathTable &paths_;
};

// ---- The answer -----------------------------------------------------------------------------------------------------

/// Keys of a selected entry come along.
void mark_on_the_way(OutputRecord &data)
{
    if (data.kept == whole) {
        return;
    }
    data.kept = on_the_way;
    for (OutputRecord *child = data.first_child(); data.list_entry && child != nullptr; child = child->next) {
        if (child->is_key()) {
            child->kept = whole;
        }
    }
}

bool select(const Branch &branch, OutputRecord &data);

bool holds(const Match &match, const OutputRecord &data)
{
    const OutputRecord *child = data.first_child();
    while (child != nullptr && !match.holds(*child)) {
        child = child->next;
    }
    return child != nullptr;
}

bool select(const Conditional &conditional, OutputRecord &data)
{
    if (!std::ranges::all_of(conditional.matches, [&](const Match &match) { return holds(match, data); })) {
        return false;
    }
    mark_on_the_way(data);
    for (const Match &match : conditional.matches) {
        for (OutputRecord *child = data.first_child(); child != nullptr; child = child->next) {
            if (match.holds(*child)) {
                child->kept = whole;
            }
        }
    }
    select(conditional.branch, data);
    return true;
}

bool select(const Named &named, OutputRecord &data)
{
    if (!is_in(named.ns, data)) {
        return false;
    }
    bool any = named.plain != nullptr && select(*named.plain, data);
    if (named.by_match.empty()) {
        return any;
    }
    for (OutputRecord *leaf = data.first_child(); leaf != nullptr; leaf = leaf->next) {
        if (leaf->dropped || leaf->value == nullptr) {
            continue;
        }
        const auto found = named.by_match.find({leaf->info(), leaf->value});
        if (found == named.by_match.end()) {
            continue;
        }
        for (const Conditional *conditional : found->second) {
            any = select(*conditional, data) || any;
        }
    }
    return any;
}

/// Marks what the branch selects of `data`. False if that is nothing.
bool select(const Branch &branch, OutputRecord &data)
{
    if (branch.whole) {
        data.kept = whole;
    }
    if (data.kept == whole) {
        return true;
    }
    bool any = false;
    for (OutputRecord *child = data.first_child(); child != nullptr; child = child->next) {
        const auto found = child->dropped ? branch.children.end() : branch.children.find(child->info());
        if (found == branch.children.end()) {
            continue;
        }
        for (const std::unique_ptr<Named> &named : found->second) {
            any = select(*named, *child) || any;
        }
    }
    if (any) {
        mark_on_the_way(data);
    }
    return any;
}

void drop_unmarked(OutputRecord &outer)
{
    for (OutputRecord *child = outer.first_child(); child != nullptr; child = child->next) {
        if (child->kept == 0) {
            child->dropped = true;
        } else if (child->kept == on_the_way) {
            drop_unmarked(*child);
        }
    }
}

} // namespace

void apply_filter(Output &output, const PathTable &paths, TreeBuilder::Roots filters)
{
    const Branch branch = Plan(paths).of(filters);
    select(branch, output.base());
    drop_unmarked(output.base());
}

} // namespace tqm
