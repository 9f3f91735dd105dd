// The router's native configuration, kept in one directory, and the operational data that go with it. Edits are
// NETCONF's edit-config; reads walk what is there into a sink. Knows libyang and nothing of any mapping.
#ifndef ROUTER_DATASTORE_H
#define ROUTER_DATASTORE_H

#include "router/edit_node.h"
#include "router/error.h"
#include "router/models.h"

#include <memory>
#include <string>
#include <string_view>

namespace router
{

enum class Access { read, write };

// Receives what a read found, each node once: keys first, then in the order of the store, or of the filter where that
// names the nodes. Texts live until the call returns. Instances of a leaf-list come as one leaf each. A leaf of type
// empty has the value "".
class Sink
{
public:
    virtual ~Sink() = default;
    virtual void open(const char *ns, const char *name) = 0; // container or list entry
    virtual void leaf(const char *ns, const char *name, const char *value) = 0;
    virtual void close() = 0;
};

class Datastore
{
public:
    // Opens the store in `directory`, whose file is native.xml. With Access::write the directory (its last component
    // only) is made if it is missing, and a lock is held until the object goes: a second writer waits. A reader takes
    // no lock, and sees an empty store where there is no directory or no file. Fails if the directory is not one or
    // cannot be used, or if the file is damaged; a damaged file is left as it is.
    static Expected<Datastore> open(const Models &models, const std::string &directory, Access access);

    Datastore(Datastore &&) noexcept;
    Datastore &operator=(Datastore &&) noexcept;
    ~Datastore();

    // Applies the tree and its next siblings, validates, writes the file. All or nothing: after an error both memory
    // and file are as they were. Needs Access::write. Trees of the operational model are refused.
    Expected<void> edit(const EditNode *trees);

    // Walks what `filter` (this one tree, not its siblings) chooses into the sink. Nothing chosen: no call at all; a
    // name that no module has chooses nothing. Filters of the operational model are answered from the operational
    // data. Fails only if libyang runs out of memory.
    Expected<void> read(const EditNode &filter, Sink &sink);

    // Takes the router's state from a document of the operational model (<oc-macsec>, bare, in <data>, or a whole
    // <rpc-reply>), for this object's life and in place of what follows from the configuration. Nothing of it is
    // stored.
    Expected<void> set_operational(std::string_view document);

private:
    struct State;
    explicit Datastore(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

} // namespace router

#endif
