// Operations and trees in the two sides' terms.
#include "native_store.h"

#include <deque>

#include "environment.h"

namespace ocmap
{
namespace
{

// Whether a create or a delete may be done has been decided in the client's terms: here they set, and take away.
router::Operation operation_of(const tqm::OutputNode &node, router::Operation lead)
{
    switch (node.operation().value_or(tqm::operation_none)) {
    case TQM_OP_MERGE:
    case TQM_OP_CREATE:
        return router::Operation::merge;
    case TQM_OP_REPLACE:
        return router::Operation::replace;
    case TQM_OP_DELETE:
    case TQM_OP_REMOVE:
        return router::Operation::remove;
    default:
        return lead;
    }
}

tqm::ErrorTag tag_of(router::Fault fault)
{
    switch (fault) {
    case router::Fault::failed:
        return tqm::ErrorTag::operation_failed;
    case router::Fault::unknown_node:
        return tqm::ErrorTag::unknown_element;
    case router::Fault::not_supported:
        return tqm::ErrorTag::operation_not_supported;
    case router::Fault::bad_value:
        return tqm::ErrorTag::invalid_value;
    case router::Fault::missing_key:
        return tqm::ErrorTag::missing_element;
    case router::Fault::exists:
        return tqm::ErrorTag::data_exists;
    case router::Fault::missing:
        return tqm::ErrorTag::data_missing;
    case router::Fault::denied:
        return tqm::ErrorTag::access_denied;
    case router::Fault::busy:
        return tqm::ErrorTag::in_use;
    case router::Fault::no_memory:
        return tqm::ErrorTag::resource_denied;
    }
    return tqm::ErrorTag::operation_failed;
}

tqm::NativeError native_error(router::Error error)
{
    return {std::move(error.text), std::move(error.path), static_cast<const tqm::OutputNode *>(error.origin),
            tag_of(error.fault)};
}

// Edit records over output trees. A deque keeps their addresses, by which the records point to one another.
class Overlay
{
public:
    explicit Overlay(router::Operation lead = router::Operation::none) : lead_(lead) {}

    router::EditNode *add(const tqm::OutputNode &node)
    {
        router::EditNode &record = records_.emplace_back();
        record.ns = node.ns();
        record.name = node.tag();
        record.value = node.value();
        record.operation = operation_of(node, lead_);
        record.origin = &node;
        const router::EditNode **link = &record.first_child;
        for (const tqm::OutputNode &child : node.children()) {
            router::EditNode *const added = add(child);
            *link = added;
            link = &added->next;
        }
        return &record;
    }

private:
    router::Operation lead_; // of nodes that only lead to others
    std::deque<router::EditNode> records_;
};

class AnswerSink final : public router::Sink
{
public:
    explicit AnswerSink(tqm::TreeBuilder &answer) : answer_(answer) {}
    void open(const char *ns, const char *name) override { answer_.open(ns, name); }
    void leaf(const char *ns, const char *name, const char *value) override { answer_.leaf(ns, name, value); }
    void close() override { answer_.close(); }

private:
    tqm::TreeBuilder &answer_;
};

} // namespace

tqm::Error from_router(router::Error error)
{
    tqm::Error found{std::move(error.text), std::move(error.path)};
    found.error_tag = tag_of(error.fault);
    return found;
}

tl::expected<void, tqm::NativeError> NativeStore::edit(std::span<const tqm::OutputNode *const> trees)
{
    Overlay overlay(leads_ == Leads::are_made ? router::Operation::merge : router::Operation::none);
    const router::EditNode *first = nullptr;
    const router::EditNode **link = &first;
    for (const tqm::OutputNode *tree : trees) {
        router::EditNode *const added = overlay.add(*tree);
        *link = added;
        link = &added->next;
    }
    if (auto applied = apply(first); !applied) {
        return tl::unexpected(native_error(std::move(applied.error())));
    }
    return {};
}

tqm::Expected<void> NativeStore::read(const tqm::OutputNode &filter, tqm::TreeBuilder &answer)
{
    Overlay overlay;
    AnswerSink sink(answer);
    if (auto done = datastore_.read(*overlay.add(filter), sink); !done) {
        return tl::unexpected(from_router(done.error()));
    }
    return {};
}

} // namespace ocmap
