#include "rfc6241_model.h"

#include <algorithm>
#include <utility>

namespace test
{
namespace
{

const Refusal data_exists{tqm::ErrorTag::data_exists};
const Refusal data_missing{tqm::ErrorTag::data_missing};
const Refusal not_supported{tqm::ErrorTag::operation_not_supported};
const Refusal too_many_elements{tqm::ErrorTag::operation_failed, tqm::too_many_elements};
const Refusal any_error{};

void erase(Leaves &tree, const std::string &path)
{
    tree.erase(path);
    const std::string below = path + "/";
    auto at = tree.lower_bound(below);
    while (at != tree.end() && at->first.starts_with(below)) {
        at = tree.erase(at);
    }
}

class Application
{
public:
    Application(const Leaves &before) : before_(before), after_(before) {}

    /// `inherited` is the operation of what has none of its own. Below a replace the tree is `emptied`.
    void apply(const Element &element, const std::string &parent, Operation inherited, bool emptied)
    {
        const std::string path = parent + element.step();
        const Operation operation = element.operation.value_or(inherited);
        check(element, operation, !emptied && exists(before_, path));
        if (deletes(operation) || operation == Operation::replace) {
            erase(after_, path);
        }
        if (deletes(operation) || (operation == Operation::none && element.children.empty())) {
            return;
        }
        if (element.schema->kind >= Kind::key) {
            after_[path] = element.value;
            return;
        }
        const Operation below = operation == Operation::none ? operation : Operation::merge;
        emptied = emptied || operation == Operation::replace;
        for (const Element &child : element.children) {
            if (child.schema->kind != Kind::key) {
                apply(child, path, below, emptied);
            }
        }
        keep_one_value(element, path, below);
        if (element.schema->kind == Kind::list) {
            const std::string &key = element.schema->children.front().name;
            after_[path + "/" + key] = after_[path + "/config/" + key] = element.value;
        }
    }

    std::set<Refusal> refusals;
    const Leaves &after() const { return after_; }

private:
    void check(const Element &element, Operation operation, bool there)
    {
        const Kind kind = element.schema->kind;
        const std::size_t keys = kind == Kind::list ? 1 : 0;
        if (deletes(operation) && (kind == Kind::key_copy || element.children.size() > keys)) {
            refusals.insert(any_error);
        }
        if (operation == Operation::create && there) {
            refusals.insert(data_exists);
        }
        const bool must_exist =
            operation == Operation::delete_ || (operation == Operation::none && kind != Kind::container);
        if (must_exist && !there) {
            refusals.insert(data_missing);
        }
        // The native string goes with its key only.
        if (deletes(operation) && there && kind == Kind::secret) {
            refusals.insert(not_supported);
        }
    }

    // The native policy holds one cipher suite: a value that is merged takes the place of the one that is stored.
    void keep_one_value(const Element &config, const std::string &path, Operation below)
    {
        std::vector<const Element *> own;
        for (const Element &child : config.children) {
            const Operation operation = child.operation.value_or(below);
            if (child.schema->kind == Kind::leaf_list && !deletes(operation) && operation != Operation::none) {
                own.push_back(&child);
            }
        }
        if (own.empty()) {
            return;
        }
        const std::string kept = path + own.front()->step();
        const std::string values = path + "/" + own.front()->schema->name + "[";
        const auto beside = [&](const auto &leaf) { return leaf.first.starts_with(values) && leaf.first != kept; };
        const bool stays = std::ranges::any_of(after_, beside);
        if (own.size() > 1 || (stays && own.front()->operation == Operation::create)) {
            refusals.insert(too_many_elements);
        }
        std::erase_if(after_, beside);
    }

    const Leaves &before_;
    Leaves after_;
};

Schema config(std::vector<Schema> leaves)
{
    return {"config", Kind::container, {}, std::move(leaves)};
}

Schema list(const std::string &name, const std::string &key, const std::vector<std::string> &entries, Schema config,
            std::vector<Schema> more = {})
{
    config.children.insert(config.children.begin(), Schema{key, Kind::key_copy});
    more.insert(more.begin(), std::move(config));
    more.insert(more.begin(), Schema{key, Kind::key, entries});
    return {name, Kind::list, {}, std::move(more)};
}

Schema leaf(const std::string &name, const std::vector<std::string> &values, Kind kind = Kind::leaf)
{
    return {name, kind, values};
}

Schema container(const std::string &name, std::vector<Schema> children)
{
    return {name, Kind::container, {}, std::move(children)};
}

} // namespace

const Schema &schema()
{
    static const Schema policy =
        list("policy", "name", {"P0", "P1", "P'2"},
             config({leaf("key-server-priority", {"0", "16", "255"}),
                     leaf("macsec-cipher-suite", {"GCM_AES_128", "GCM_AES_256", "GCM_AES_XPN_128", "GCM_AES_XPN_256"},
                          Kind::leaf_list),
                     leaf("confidentiality-offset", {"0_BYTES", "30_BYTES", "50_BYTES"}),
                     leaf("delay-protection", {"true", "false"}), leaf("include-icv-indicator", {"true", "false"}),
                     leaf("sak-rekey-interval", {"0", "30", "65535"})}));
    static const Schema key =
        list("mka-key", "id", {"01", "a1"},
             config({leaf("key-clear-text", {"00112233445566778899aabbccddeeff", "0a", "ff"}, Kind::secret),
                     leaf("cryptographic-algorithm", {"AES_128_CMAC", "AES_256_CMAC"}),
                     leaf("valid-date-time", {"2024-02-29T23:59:59", "2031-12-31T00:00:00"}),
                     leaf("expiration-date-time", {"2032-01-01T00:00:00", "2099-06-30T12:30:15", "NO_EXPIRATION"})}));
    static const Schema chain = list("key-chain", "name", {"C0", "C1"}, config({}), {container("mka-keys", {key})});
    static const Schema interface =
        list("interface", "name", {"I0", "I1", "I/2"}, config({}),
             {container("mka", {config({leaf("mka-policy", {"P0", "P9"}), leaf("key-chain", {"C0", "C9"})})})});
    static const Schema top =
        container("macsec", {container("mka", {container("policies", {policy}), container("key-chains", {chain})}),
                             container("interfaces", {interface})});
    return top;
}

std::string Element::step() const
{
    const std::string name = "/" + schema->name;
    switch (schema->kind) {
    case Kind::list:
        return name + "[" + schema->children.front().name + "='" + value + "']";
    case Kind::leaf_list:
        return name + "[.='" + value + "']";
    default:
        return name;
    }
}

bool exists(const Leaves &tree, const std::string &path)
{
    const auto below = tree.lower_bound(path + "/");
    return tree.contains(path) || (below != tree.end() && below->first.starts_with(path + "/"));
}

std::set<Refusal> edit_config(const Edit &edit, Leaves &tree)
{
    Application application(tree);
    application.apply(edit.top, "", edit.default_operation, false);
    if (application.refusals.empty()) {
        tree = application.after();
    }
    return application.refusals;
}

} // namespace test
