// Operations and trees in the two sides' terms.
#include "native_store.h"

#include <deque>

#include "environment.h"

namespace ocmap
{
namespace
{

// A leaf that an add gave no source carries no operation of the client's: its value, if it has one, is set, and nothing
// is made of a missing one.
bool carries_no_operation(const tqm::OutputNode &node)
{
    return node.source() == nullptr && !node.is_list_entry() && node.children().empty();
}

router::Operation operation_of(const tqm::OutputNode &node)
{
    if (carries_no_operation(node)) {
        return router::Operation::none;
    }
    switch (node.operation().value_or(tqm::kOperationNone)) {
    case TQM_OP_MERGE:
        return router::Operation::merge;
    case TQM_OP_REPLACE:
        return router::Operation::replace;
    case TQM_OP_CREATE:
        return router::Operation::create;
    case TQM_OP_DELETE:
        return router::Operation::delete_;
    case TQM_OP_REMOVE:
        return router::Operation::remove;
    default:
        return router::Operation::none;
    }
}

// Edit records over output trees. A deque keeps their addresses, by which the records point to one another.
class Overlay
{
public:
    router::EditNode *add(const tqm::OutputNode &node)
    {
        router::EditNode &record = records_.emplace_back();
        record.ns = node.ns();
        record.name = node.tag();
        record.value = node.value();
        record.operation = operation_of(node);
        record.group = node.source();
        const router::EditNode **link = &record.first_child;
        for (const tqm::OutputNode &child : node.children()) {
            router::EditNode *const added = add(child);
            *link = added;
            link = &added->next;
        }
        return &record;
    }

private:
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

tqm::Expected<void> NativeStore::edit(std::span<const tqm::OutputNode *const> trees)
{
    Overlay overlay;
    const router::EditNode *first = nullptr;
    const router::EditNode **link = &first;
    for (const tqm::OutputNode *tree : trees) {
        router::EditNode *const added = overlay.add(*tree);
        *link = added;
        link = &added->next;
    }
    if (auto applied = datastore_.edit(first); !applied) {
        return tl::unexpected(from_router(applied.error()));
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
