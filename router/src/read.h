// Reads: walks what a filter chooses of a data tree into a sink.
#ifndef ROUTER_READ_H
#define ROUTER_READ_H

#include "entries.h"
#include "router/datastore.h"
#include "router/edit_node.h"

#include <utility>
#include <vector>

namespace router
{

class Reader
{
public:
    Reader(const ly_ctx *context, const Visibility &visibility, Sink &sink)
        : context_(context), visibility_(visibility), sink_(sink)
    {
    }

    // `top` is the first of the top-level nodes, or null.
    void read(const EditNode &filter, const lyd_node *top);

private:
    using Filters = std::vector<const EditNode *>;
    // Children of a node that filters choose, each once, with the filters that chose it.
    class Selection;

    void select(const EditNode &filter, const lyd_node *parent, Selection &selection);
    void walk(const lyd_node *node, const Filters &filters);
    void walk_all(const lyd_node *node);
    void walk_chosen(const lyd_node *node, const Filters &filters);

    void open(const lyd_node *node);
    void close();
    void leaf(const lyd_node *node);
    void flush();

    const ly_ctx *context_;
    const Visibility &visibility_;
    Sink &sink_;
    EntryFinder finder_;
    // Containers that are open for us and not yet for the sink, since nothing in them has been chosen so far.
    std::vector<const lyd_node *> pending_;
};

} // namespace router

#endif
