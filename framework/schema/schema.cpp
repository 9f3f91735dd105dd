#include "tqm/schema.h"

#include <algorithm>
#include <utility>

#include "schema/paths.h"

namespace tqm
{

Schema::Schema() : paths_(std::make_unique<SchemaPaths>()) {}
Schema::Schema(Schema &&) noexcept = default;
Schema &Schema::operator=(Schema &&) noexcept = default;
Schema::~Schema() = default;

SchemaNode &Schema::add(SchemaNode node)
{
    if (SchemaNode *const known = find(node.path)) {
        return *known;
    }
    knows_leaves_ = knows_leaves_ || node.is_leaf();
    SchemaNode &added = nodes_.emplace_back(std::move(node));
    paths_->add(added);
    if (added.secret) {
        secret_tags_.insert(std::string_view(added.path).substr(added.path.rfind('/') + 1));
    }
    return added;
}

void Schema::add_module(SchemaModule module)
{
    modules_.push_back(std::move(module));
}

const SchemaNode *Schema::find(std::string_view path) const
{
    const PathInfo *const info = paths_->find(path);
    return info == nullptr || info->schema->path.empty() ? nullptr : info->schema;
}

SchemaNode *Schema::find(std::string_view path)
{
    return const_cast<SchemaNode *>(std::as_const(*this).find(path));
}

const SchemaModule *Schema::module_named(std::string_view name) const
{
    const auto found = std::ranges::find(modules_, name, &SchemaModule::name);
    return found == modules_.end() ? nullptr : &*found;
}

const SchemaModule *Schema::module_of(std::string_view ns) const
{
    const auto found = std::ranges::find(modules_, ns, &SchemaModule::ns);
    return found == modules_.end() ? nullptr : &*found;
}

bool Schema::hides(std::string_view path) const
{
    const SchemaNode *const node = find(path);
    const bool holds_values = node != nullptr && (node->is_leaf() || node->is_leaf_list());
    return holds_values ? node->secret : knows_leaves_ || (node != nullptr && node->secret);
}

bool Schema::is_secret_tag(std::string_view tag) const
{
    return secret_tags_.contains(tag);
}

} // namespace tqm
