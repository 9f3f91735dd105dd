// The router's native configuration, kept in one directory, and the operational data that go with it. Edits are
// NETCONF's edit-config; reads walk what is there into a sink. Knows libyang and nothing of any mapping.
#pragma once

#include "router/edit_node.h"
#include "router/error.h"
#include "router/setup.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace router
{

enum class Access { read, write };

/// How a writer waits for the one before it.
struct LockWait {
    std::optional<std::chrono::milliseconds> limit = {}; ///< none: as long as it takes; 0: not at all
    /// Called once, when the wait has lasted a second, with who is waited for as far as is known, e.g. "process 17".
    std::function<void(const std::string &holder)> notice = {};
};

/// Receives what a read found, each node once: keys first, then in the order of the store, or of the filter where that
/// names the nodes. Texts live until the call returns. Instances of a leaf-list come as one leaf each. A leaf of type
/// empty has the value "".
class Sink
{
public:
    virtual ~Sink() = default;
    virtual void open(const char *ns, const char *name) = 0; ///< container or list entry
    virtual void leaf(const char *ns, const char *name, const char *value) = 0;
    virtual void close() = 0;
};

/// What an edit makes of one node of the configuration. An entry that goes is one change, with all in it; one that
/// comes is told by its leaves.
struct Change {
    enum class Kind { set, changed, removed };
    Kind kind;
    std::string path;   ///< with keys, without prefixes
    std::string before; ///< value; empty unless the leaf has changed, and of secrets
    std::string after;  ///< value; empty where it is removed, and of secrets
    bool has_value;     ///< of a leaf whose values may be shown
};

class Datastore
{
public:
    /// An empty store that is kept nowhere, for a look at what edits would do.
    static Datastore in_memory(const Setup &setup);

    /// Opens the store in `directory`, whose file is native.xml. With Access::write the directory (its last component
    /// only) is made if it is missing, and goes with this object if no edit has succeeded and nothing else is in it. A
    /// lock is held until the object goes: a second writer waits, as `wait` says. A reader takes no lock, and sees an
    /// empty store where there is no directory or no file. Fails if the directory is not one or cannot be used, if
    /// another writer has it for too long (Fault::busy), or if the file is damaged; a damaged file is left
    /// as it is.
    static Expected<Datastore> open(const Setup &setup, const std::string &directory, Access access,
                                    const LockWait &wait = {});

    Datastore(Datastore &&) noexcept;
    Datastore &operator=(Datastore &&) noexcept;
    ~Datastore();

    /// Applies the tree and its next siblings, validates, writes the file. All or nothing: after an error both memory
    /// and file are as they were. Needs Access::write. Trees of the operational model are refused.
    Expected<void> edit(const EditNode *trees);

    /// What edit() would do, or its error. Changes nothing; any access will do.
    Expected<std::vector<Change>> preview(const EditNode *trees) const;

    /// Walks what `filter` (this one tree, not its siblings) chooses into the sink. Nothing chosen: no call at all; a
    /// name that no module has chooses nothing. Filters of the operational model are answered from the operational
    /// data. Fails only if libyang runs out of memory.
    Expected<void> read(const EditNode &filter, Sink &sink);

    /// Takes the router's state from a document of the operational model (<oc-macsec>, bare, in <data>, or a whole
    /// <rpc-reply>), for this object's life and in place of what follows from the configuration. Nothing of it is
    /// stored.
    Expected<void> set_operational(std::string document);

private:
    struct State;
    explicit Datastore(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

} // namespace router
