// The datastore: a tree in memory, its file, and the state that goes with it. An edit works on a copy, which takes the
// tree's place once the file is written.
#include "router/datastore.h"

#include "changes.h"
#include "document.h"
#include "edit.h"
#include "entries.h"
#include "read.h"
#include "report.h"
#include "router/memory.h"
#include "store_file.h"
#include "tree.h"

#include <optional>
#include <utility>

namespace router
{

// The trees stand behind the setup with its models, and so are gone before them.
struct Datastore::State {
    Setup setup;
    Access access;
    std::optional<StoreFile> file; // none: in memory alone
    Tree configuration;
    Tree given_state;   // null: state follows from the configuration
    Tree derived_state; // null: to be derived when it is asked for
    bool state_is_given = false;

    Expected<const lyd_node *> operational();
};

namespace
{

Expected<Tree> load(const Models &models, const StoreFile &file)
{
    auto content = file.load();
    if (!content) {
        return tl::unexpected(content.error());
    }
    if (!*content) {
        return Tree();
    }
    auto tree = parse_configuration(models.context(), std::move(**content));
    if (!tree) {
        return failure("the store " + file.path() + " is damaged: " + tree.error().text);
    }
    return tree;
}

Expected<Tree> copy_of(const Tree &tree)
{
    const MemoryWatch watch;
    lyd_node *copy = nullptr;
    if (tree && lyd_dup_siblings(tree.get(), nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_FLAGS, &copy)) {
        watch.check();
        return failure("libyang cannot copy the configuration");
    }
    Tree whole(copy);
    watch.check();
    return whole;
}

Expected<void> validate(const ly_ctx *context, Tree &tree)
{
    if (!tree) {
        return {};
    }
    const MemoryWatch watch;
    lyd_node *validated = tree.release();
    const LY_ERR code = lyd_validate_all(&validated, context, LYD_VALIDATE_PRESENT | LYD_VALIDATE_NO_STATE, nullptr);
    tree.reset(validated);
    watch.check();
    if (code) {
        return failure(document_fault(context));
    }
    return {};
}

// The configuration after an edit; nothing where it stays as it is.
Expected<std::optional<Tree>> applied(const Setup &setup, const Tree &configuration, const EditNode *trees)
{
    auto copy = copy_of(configuration);
    if (!copy) {
        return tl::unexpected(copy.error());
    }
    const ly_ctx *context = setup.models().context();
    Editor editor(context, setup.shown_entries(), *copy);
    const MemoryWatch watch;
    auto done = editor.apply(trees);
    watch.check();
    if (!done) {
        return tl::unexpected(done.error());
    }
    if (!editor.changed()) {
        return std::nullopt;
    }
    if (auto valid = validate(context, *copy); !valid) {
        return tl::unexpected(valid.error());
    }
    return std::move(*copy);
}

} // namespace

void FreeAll::operator()(lyd_node *node) const
{
    lyd_free_all(node);
}

Datastore::Datastore(std::unique_ptr<State> state) : state_(std::move(state)) {}

Datastore::Datastore(Datastore &&) noexcept = default;
Datastore &Datastore::operator=(Datastore &&) noexcept = default;
Datastore::~Datastore() = default;

Expected<Datastore> Datastore::open(const Setup &setup, const std::string &directory, Access access,
                                    const LockWait &wait)
{
    auto file = StoreFile::open(directory, access, wait);
    if (!file) {
        return tl::unexpected(file.error());
    }
    auto configuration = load(setup.models(), *file);
    if (!configuration) {
        return tl::unexpected(configuration.error());
    }
    return Datastore(
        std::make_unique<State>(State{setup, access, std::move(*file), std::move(*configuration), nullptr, nullptr}));
}

Datastore Datastore::in_memory(const Setup &setup)
{
    return Datastore(std::make_unique<State>(State{setup, Access::read, std::nullopt, nullptr, nullptr, nullptr}));
}

Expected<void> Datastore::edit(const EditNode *trees)
{
    if (state_->access != Access::write || !state_->file) {
        return refuse(Fault::denied, "", "the store is open for reading");
    }
    auto after = applied(state_->setup, state_->configuration, trees);
    if (!after) {
        return tl::unexpected(after.error());
    }
    if (*after) {
        auto document = print_configuration((*after)->get());
        if (!document) {
            return tl::unexpected(document.error());
        }
        if (auto saved = state_->file->save(*document); !saved) {
            return saved;
        }
        state_->configuration = std::move(**after);
        state_->derived_state.reset();
    }
    state_->file->keep_directory();
    return {};
}

Expected<std::vector<Change>> Datastore::preview(const EditNode *trees) const
{
    auto after = applied(state_->setup, state_->configuration, trees);
    if (!after) {
        return tl::unexpected(after.error());
    }
    const MemoryWatch watch;
    auto changes =
        *after ? changes_between(state_->configuration.get(), (*after)->get()) : Expected<std::vector<Change>>();
    watch.check();
    return changes;
}

// The first node of the operational data; null if there are none.
Expected<const lyd_node *> Datastore::State::operational()
{
    const OperationalSource &source = setup.source();
    if (state_is_given || derived_state || !source) {
        return state_is_given ? given_state.get() : derived_state.get();
    }
    const MemoryWatch watch;
    derived_state = source(setup.models().context(), configuration.get(),
                           [&](const lyd_node *entry) { return setup.shown_entries().shown(entry); });
    watch.check();
    if (!derived_state) {
        return failure("libyang cannot make the operational data");
    }
    return derived_state.get();
}

Expected<void> Datastore::read(const EditNode &filter, Sink &sink)
{
    const ly_ctx *context = state_->setup.models().context();
    const lysc_node *root = find_schema(context, nullptr, filter);
    Expected<const lyd_node *> top = state_->configuration.get();
    if (root && is_state(root)) {
        top = state_->operational();
    }
    if (!top) {
        return tl::unexpected(top.error());
    }
    const MemoryWatch watch;
    Reader(context, state_->setup.shown_entries(), sink).read(filter, *top);
    watch.check();
    return {};
}

Expected<void> Datastore::set_operational(std::string document)
{
    auto tree = parse_state(state_->setup.models().context(), std::move(document));
    if (!tree) {
        return failure("the operational data are not valid: " + tree.error().text);
    }
    state_->given_state = std::move(*tree);
    state_->state_is_given = true;
    return {};
}

} // namespace router
