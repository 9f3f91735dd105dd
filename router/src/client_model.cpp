// Two contexts: the published model, and the one in which the deviations have changed it. Nodes are those of the first.
#include "router/client_model.h"

#include "report.h"
#include "router/memory.h"
#include "yang_files.h"

#include <libyang/libyang.h>

#include <array>
#include <cstring>

namespace router
{

struct ClientModel::Loaded {
    Models models;
    std::shared_ptr<ly_ctx> deviated;
    const lys_module *published;
    std::unordered_map<Node, Node> supported; // published to deviated
};

namespace
{

const lysc_node *find_child(const lysc_node *parent, const lysc_module *module, std::string_view name)
{
    const lysc_node *node = nullptr;
    while ((node = lys_getnext(node, parent, module, 0)) != nullptr) {
        if (name == node->name) {
            return node;
        }
    }
    return nullptr;
}

void pair(const lysc_node *published, const lysc_node *deviated,
          std::unordered_map<const lysc_node *, const lysc_node *> &pairs)
{
    pairs.emplace(published, deviated);
    const lysc_node *child = nullptr;
    while ((child = lys_getnext(child, published, nullptr, 0)) != nullptr) {
        if (const lysc_node *same = find_child(deviated, nullptr, child->name)) {
            pair(child, same, pairs);
        }
    }
}

const lysc_type *type_of(const lysc_node *node)
{
    return node->nodetype == LYS_LEAF ? reinterpret_cast<const lysc_node_leaf *>(node)->type
                                      : reinterpret_cast<const lysc_node_leaflist *>(node)->type;
}

// A union with a text in it holds a date and time, or a word for one.
bool holds_time(const lysc_node *node)
{
    const lysc_type *type = type_of(node);
    if (type->basetype != LY_TYPE_UNION) {
        return false;
    }
    const auto *members = reinterpret_cast<const lysc_type_union *>(type)->types;
    LY_ARRAY_COUNT_TYPE item;
    LY_ARRAY_FOR(members, item)
    {
        if (members[item]->basetype == LY_TYPE_STRING) {
            return true;
        }
    }
    return false;
}

constexpr size_t date_length = sizeof "2030-01-02T03:04:05" - 1;

bool is_date(std::string_view value)
{
    return value.size() >= date_length && value[4] == '-' && value[7] == '-' && value[10] == 'T';
}

// Whether the calendar has the date, and the day the time. The form has been tested.
bool is_in_calendar(std::string_view value)
{
    static constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const auto number = [&](size_t at, size_t digits) {
        int found = 0;
        for (; digits > 0; --digits, ++at) {
            found = found * 10 + (value[at] - '0');
        }
        return found;
    };
    const int year = number(0, 4);
    const int month = number(5, 2);
    if (month < 1 || month > 12) {
        return false;
    }
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    const int last = days[static_cast<size_t>(month) - 1] + (month == 2 && leap ? 1 : 0);
    const int day = number(8, 2);
    return day >= 1 && day <= last && number(11, 2) < 24 && number(14, 2) < 60 && number(17, 2) < 60;
}

} // namespace

Expected<ClientModel> ClientModel::load(const Models &models, const std::string &yang_directory,
                                        const std::string &module, const std::string &deviations)
{
    const MemoryWatch watch;
    Expected<std::shared_ptr<ly_ctx>> context = make_context(yang_directory, 0);
    if (!context) {
        return tl::unexpected(context.error());
    }
    ly_ctx *const created = context->get();
    auto loaded = std::make_shared<Loaded>(Loaded{models, std::move(*context), nullptr, {}});
    const lys_module *published = ly_ctx_get_module_implemented(models.context(), module.c_str());
    const lys_module *deviated = nullptr;
    if (ly_ctx_load_module(created, deviations.c_str(), nullptr, nullptr)) {
        deviated = ly_ctx_get_module_implemented(created, module.c_str());
    }
    watch.check();
    if (!published || !deviated) {
        return tl::unexpected(Error{"cannot load the YANG module " + deviations + " from " + yang_directory + ": " +
                                        watch.reason(created),
                                    ""});
    }
    loaded->published = published;
    const lysc_node *top = nullptr;
    while ((top = lys_getnext(top, nullptr, published->compiled, 0)) != nullptr) {
        if (const lysc_node *same = find_child(nullptr, deviated->compiled, top->name)) {
            pair(top, same, loaded->supported);
        }
    }
    return ClientModel(std::move(loaded));
}

ClientModel::Node ClientModel::top(std::string_view ns, std::string_view name) const
{
    const lys_module *const module = loaded_->published;
    return ns == module->ns ? find_child(nullptr, module->compiled, name) : nullptr;
}

ClientModel::Node ClientModel::child(Node parent, std::string_view name) const
{
    return find_child(parent, nullptr, name);
}

std::vector<std::string> ClientModel::editable_children(Node parent) const
{
    std::vector<std::string> names;
    const lysc_node *node = nullptr;
    while ((node = lys_getnext(node, parent, nullptr, 0)) != nullptr) {
        if (!is_state(node) && is_supported(node)) {
            names.emplace_back(node->name);
        }
    }
    return names;
}

bool ClientModel::is_state(Node node)
{
    return (node->flags & LYS_CONFIG_W) == 0;
}

bool ClientModel::is_list(Node node)
{
    return node->nodetype == LYS_LIST;
}

bool ClientModel::is_leaf_list(Node node)
{
    return node->nodetype == LYS_LEAFLIST;
}

bool ClientModel::has_values(Node node)
{
    return (node->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0;
}

std::vector<std::string> ClientModel::keys(Node list)
{
    std::vector<std::string> names;
    for (const lysc_node *key = lysc_node_child(list); key && lysc_is_key(key); key = key->next) {
        names.emplace_back(key->name);
    }
    return names;
}

bool ClientModel::is_supported(Node node) const
{
    return loaded_->supported.contains(node);
}

std::optional<std::string> ClientModel::value_fault(Node node, const char *value) const
{
    const auto found = loaded_->supported.find(node);
    if (found == loaded_->supported.end()) {
        return std::nullopt;
    }
    const lysc_node *const leaf = found->second;
    const std::string_view given = value ? value : "";
    const MemoryWatch watch;
    const LY_ERR code =
        lyd_value_validate(leaf->module->ctx, leaf, given.data(), given.size(), nullptr, nullptr, nullptr);
    watch.check();
    if (code && code != LY_EINCOMPLETE) { // a reference, whose target may come later
        return value_refused(leaf, value);
    }
    if (holds_time(leaf) && is_date(given) && !is_in_calendar(given)) {
        return "'" + std::string(given) + "' is no date and time that the calendar has";
    }
    return std::nullopt;
}

bool ClientModel::drops_zone(Node node, std::string_view value) const
{
    return holds_time(node) && is_date(value) && value.size() > date_length;
}

} // namespace router
