// Reads: walks what a filter chooses of a data tree into a sink, in time of the filter and of what it chooses.
#pragma once

#include "entries.h"
#include "router/datastore.h"
#include "router/edit_node.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace router
{

class Reader
{
public:
    Reader(const ly_ctx *context, const ShownEntries &shown_entries, Sink &sink);
    ~Reader();

    /// `top` is the first of the top-level nodes, or null.
    void read(const EditNode &filter, const lyd_node *top);

private:
    /// What filters choose of a node.
    struct Choice;
    struct ChosenChild;
    using Choices = std::vector<const Choice *>;
    /// Children of a node that are chosen, each once, with the choices that it fell under.
    class Selection;

    void add(const EditNode &filter, const lysc_node *schema, Choice &choice) const;
    const Choice *marker(const lysc_node *list);
    void select(const Choice &choice, const lyd_node *parent, Selection &selection);
    bool select_by_entry(const Choice &choice, const lysc_node *list, const lyd_node *parent, Selection &selection);
    void select(const ChosenChild &child, const lyd_node *parent, Selection &selection);
    void walk(const lyd_node *node, const Choices &choices);
    void walk_all(const lyd_node *node);
    void walk_chosen(const lyd_node *node, const Choices &choices);

    void open(const lyd_node *node);
    void close();
    void leaf(const lyd_node *node);
    void flush();

    const ly_ctx *context_;
    const ShownEntries &shown_entries_;
    Sink &sink_;
    EntryFinder finder_;
    std::unordered_map<const lysc_node *, std::unique_ptr<Choice>> markers_; ///< null where there is none
    /// Containers that are open for us and not yet for the sink, since nothing in them has been chosen so far.
    std::vector<const lyd_node *> pending_;
};

} // namespace router
