// The commands of the tool, each from a document to what is printed.
#include "commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "model_tree.h"
#include "native_store.h"
#include "tqm/framework.h"

namespace ocmap
{
namespace
{

void print_line(std::string_view line)
{
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

// A framework with the lines that the options ask for.
class Session
{
public:
    static tqm::Expected<std::unique_ptr<Session>> open(const Options &options)
    {
        auto environment = Environment::load(options.locations);
        if (!environment) {
            return tl::unexpected(environment.error());
        }
        return std::unique_ptr<Session>(new Session(std::move(*environment), options));
    }

    tqm::Framework &framework() { return framework_; }
    const Environment &environment() const { return environment_; }

private:
    Session(Environment environment, const Options &options)
        : environment_(std::move(environment)), journal_(print_line, options.questions),
          framework_(environment_.plugin(), environment_.schema(), watch(options))
    {
    }

    tqm::Watch watch(const Options &options)
    {
        tqm::Watch watch;
        if (options.journal || options.questions) {
            watch.journal = &journal_;
        }
        if (options.trace) {
            watch.trace = print_line;
            watch.trace_on = true;
        }
        return watch;
    }

    Environment environment_;
    tqm::Journal journal_;
    tqm::Framework framework_;
};

tqm::Expected<tqm::Document> read_document(const std::string &file)
{
    return file == "-" ? tqm::Document::read(stdin) : tqm::Document::read_file(file);
}

tqm::Expected<void> print(const tqm::Expected<tqm::Trees> &trees)
{
    if (!trees) {
        return tl::unexpected(trees.error());
    }
    if (!trees->print(stdout) || std::fflush(stdout) != 0) {
        return tl::unexpected(tqm::Error{std::string("cannot write the result: ") + std::strerror(errno)});
    }
    return {};
}

tqm::Expected<router::Datastore> open_store(const Options &options, const router::Models &models, router::Access access)
{
    std::error_code ignored;
    if (access == router::Access::read && !std::filesystem::exists(options.store, ignored)) {
        return tl::unexpected(tqm::Error{"there is no store '" + options.store + "'"});
    }
    auto store = router::Datastore::open(models, options.store, access);
    if (!store) {
        return tl::unexpected(from_router(store.error()));
    }
    return std::move(*store);
}

tqm::Expected<void> load_operational(const std::string &file, router::Datastore &store)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return tl::unexpected(tqm::Error{"cannot open '" + file + "': " + std::strerror(errno)});
    }
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (auto set = store.set_operational(text); !set) {
        return tl::unexpected(from_router(set.error()));
    }
    return {};
}

} // namespace

tqm::Expected<void> forward(const Options &options)
{
    auto document = read_document(options.file);
    if (!document) {
        return tl::unexpected(document.error());
    }
    auto session = Session::open(options);
    if (!session) {
        return tl::unexpected(session.error());
    }
    return print((*session)->framework().forward(std::move(*document), options.kind.value_or(TQM_REQ_EDIT)));
}

tqm::Expected<void> reverse(const Options &options)
{
    auto document = read_document(options.file);
    if (!document) {
        return tl::unexpected(document.error());
    }
    auto session = Session::open(options);
    if (!session) {
        return tl::unexpected(session.error());
    }
    return print((*session)->framework().reverse(std::move(*document), options.kind.value_or(TQM_REQ_GET)));
}

tqm::Expected<void> edit(const Options &options)
{
    auto document = read_document(options.file);
    if (!document) {
        return tl::unexpected(document.error());
    }
    auto session = Session::open(options);
    if (!session) {
        return tl::unexpected(session.error());
    }
    auto store = open_store(options, (*session)->environment().models(), router::Access::write);
    if (!store) {
        return tl::unexpected(store.error());
    }
    NativeStore native(*store);
    return (*session)->framework().edit(std::move(*document), native);
}

namespace
{

tqm::Expected<void> read_store(const Options &options, uint32_t kind)
{
    std::optional<tqm::Document> document;
    if (!options.file.empty()) {
        auto read = read_document(options.file);
        if (!read) {
            return tl::unexpected(read.error());
        }
        document = std::move(*read);
    }
    auto session = Session::open(options);
    if (!session) {
        return tl::unexpected(session.error());
    }
    auto store = open_store(options, (*session)->environment().models(), router::Access::read);
    if (!store) {
        return tl::unexpected(store.error());
    }
    if (!options.operational.empty()) {
        if (auto loaded = load_operational(options.operational, *store); !loaded) {
            return loaded;
        }
    }
    NativeStore native(*store);
    tqm::Framework &framework = (*session)->framework();
    return print(kind == TQM_REQ_GET ? framework.get(std::move(document), native)
                                     : framework.get_config(std::move(document), native));
}

} // namespace

tqm::Expected<void> get(const Options &options)
{
    return read_store(options, TQM_REQ_GET);
}

tqm::Expected<void> get_config(const Options &options)
{
    return read_store(options, TQM_REQ_GET_CONFIG);
}

tqm::Expected<void> tree(const Options &options)
{
    auto environment = Environment::load(options.locations);
    if (!environment) {
        return tl::unexpected(environment.error());
    }
    const std::string text = model_tree(*environment);
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        return tl::unexpected(tqm::Error{std::string("cannot write the result: ") + std::strerror(errno)});
    }
    return {};
}

} // namespace ocmap
