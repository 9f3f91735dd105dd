// The commands of the tool, each from a document to what is printed.
#include "commands.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "deviations.h"
#include "dry_run.h"
#include "edit_checker.h"
#include "explain.h"
#include "explanation_page.h"
#include "explanation_table.h"
#include "mapping_page.h"
#include "model_tree.h"
#include "native_store.h"
#include "openconfig.h"
#include "printable.h"
#include "tqm/framework.h"

namespace ocmap
{
namespace
{

void print_line(std::string_view line)
{
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

// The framework with what it needs and the lines that the options ask for.
class Desk
{
public:
    static tqm::Expected<std::unique_ptr<Desk>> open(const Options &options, Needs needs)
    {
        auto environment = Environment::load(options.locations, needs);
        if (!environment) {
            return tl::unexpected(environment.error());
        }
        std::optional<ModelChecker> checker;
        if (needs == Needs::checks) {
            auto model = load_client_model(environment->models(), options.locations.yang.string());
            if (!model) {
                return tl::unexpected(from_router(model.error()));
            }
            checker.emplace(std::move(*model));
        }
        return std::unique_ptr<Desk>(new Desk(std::move(*environment), std::move(checker), options));
    }

    tqm::Framework &framework() { return framework_; }
    ModelChecker *checker() { return checker_ ? &*checker_ : nullptr; }
    const Environment &environment() const { return environment_; }
    const tqm::Watch &watch() const { return watch_; }

private:
    Desk(Environment environment, std::optional<ModelChecker> checker, const Options &options)
        : environment_(std::move(environment)), checker_(std::move(checker)), journal_(print_line, options.questions),
          watch_(watch(options)), framework_(environment_.plugin(), environment_.schema(), watch_, this->checker())
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
    std::optional<ModelChecker> checker_;
    tqm::Journal journal_;
    tqm::Watch watch_;
    tqm::Framework framework_;
};

// Keeps an object to the end of the process, which is the end of its command: taking trees of millions of nodes apart
// node by node would be a good part of its time.
template <typename Object>
Object &keep(Object object)
{
    static auto &kept = *new std::vector<std::shared_ptr<void>>;
    auto owned = std::make_shared<Object>(std::move(object));
    kept.push_back(owned);
    return *owned;
}

tqm::Expected<tqm::Document> read_document(const std::string &file)
{
    return file == "-" ? tqm::Document::read(stdin) : tqm::Document::read_file(file);
}

tqm::Expected<void> print(tqm::Expected<tqm::Trees> result, const Options &options)
{
    if (!result) {
        return tl::unexpected(result.error());
    }
    const tqm::Trees &trees = keep(std::move(*result));
    if (!trees.print(stdout, options.format, options.envelope) || std::fflush(stdout) != 0) {
        return tl::unexpected(tqm::Error{std::string("cannot write the result: ") + std::strerror(errno)});
    }
    return {};
}

tqm::Expected<void> write_text(const std::string &text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        return tl::unexpected(tqm::Error{std::string("cannot write the result: ") + std::strerror(errno)});
    }
    return {};
}

tqm::Expected<void> write_file(const std::string &file, const std::string &text)
{
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
        return tl::unexpected(tqm::Error{"cannot write '" + file + "': " + std::strerror(errno)});
    }
    return {};
}

// On a terminal that can, unless the user has set NO_COLOR to anything.
bool colour_wanted()
{
    const char *const no_colour = std::getenv("NO_COLOR");
    const char *const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && (no_colour == nullptr || *no_colour == '\0') &&
           (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

// As a page in a file, or as a table.
tqm::Expected<void> show(const Explanation &explanation, const std::optional<std::string> &page)
{
    if (!page) {
        return write_text(explanation_table(explanation, colour_wanted()));
    }
    const std::string text = explanation_page(explanation);
    return *page == "-" ? write_text(text) : write_file(*page, text);
}

// How an edit waits for another editor, and that it says so.
router::LockWait lock_wait(const Options &options)
{
    router::LockWait wait;
    if (options.wait) {
        wait.limit = std::chrono::seconds(*options.wait);
    }
    wait.notice = [&options](const std::string &holder) {
        print_line("waiting for " + holder + ", which is editing the store " + printable(options.store));
    };
    return wait;
}

tqm::Expected<router::Datastore> open_store(const Options &options, const router::Setup &native, router::Access access)
{
    std::error_code ignored;
    if (access == router::Access::read && !std::filesystem::exists(options.store, ignored)) {
        return tl::unexpected(tqm::Error{"there is no store '" + options.store + "'"});
    }
    auto store = router::Datastore::open(native, options.store, access, lock_wait(options));
    if (!store) {
        return tl::unexpected(from_router(store.error()));
    }
    return std::move(*store);
}

// All that is in a file, "-" for standard input.
tqm::Expected<std::string> read_text(const std::string &file)
{
    const bool is_input = file == "-";
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> opened(is_input ? nullptr : std::fopen(file.c_str(), "rbe"),
                                                                  &std::fclose);
    std::FILE *const stream = is_input ? stdin : opened.get();
    if (stream == nullptr && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    if (stream == nullptr) {
        return tl::unexpected(tqm::Error{"cannot open '" + file + "': " + std::strerror(errno)});
    }
    struct stat status = {};
    const bool sized = fstat(fileno(stream), &status) == 0 && S_ISREG(status.st_mode);
    // One byte more than a regular file has, so that its end is seen without growing.
    std::string text(std::max<std::size_t>(sized ? static_cast<std::size_t>(status.st_size) + 1 : 0, 1 << 16), '\0');
    std::size_t size = std::fread(text.data(), 1, text.size(), stream);
    while (size == text.size()) {
        text.resize(2 * size);
        size += std::fread(text.data() + size, 1, size, stream);
    }
    if (std::ferror(stream) != 0) {
        return tl::unexpected(tqm::Error{"cannot read '" + file + "': " + std::strerror(errno)});
    }
    text.resize(size);
    return text;
}

tqm::Expected<void> load_operational(const std::string &file, router::Datastore &store)
{
    auto text = read_text(file);
    if (!text) {
        return tl::unexpected(text.error());
    }
    if (auto set = store.set_operational(std::move(*text)); !set) {
        return tl::unexpected(from_router(set.error()));
    }
    return {};
}

using OptionalDocument = std::optional<tqm::Document>;

// Opens the desk, and gives it with the document that the options name to `use`.
template <typename Use>
tqm::Expected<void> with_document(const Options &options, Needs needs, Use use)
{
    OptionalDocument document;
    if (options.file) {
        auto read = read_document(*options.file);
        if (!read) {
            return tl::unexpected(read.error());
        }
        document = std::move(*read);
    }
    auto desk = Desk::open(options, needs);
    if (!desk) {
        return tl::unexpected(desk.error());
    }
    return use(*keep(std::move(*desk)), std::move(document));
}

tqm::Expected<void> read_store(const Options &options, uint32_t kind)
{
    if (options.file == "-" && options.operational == "-") {
        return tl::unexpected(tqm::Error{"FILE and --oper cannot both be standard input"});
    }
    return with_document(options, Needs::data, [&](Desk &desk, OptionalDocument document) -> tqm::Expected<void> {
        auto store = open_store(options, desk.environment().native(), router::Access::read);
        if (!store) {
            return tl::unexpected(store.error());
        }
        if (!options.operational.empty()) {
            if (auto loaded = load_operational(options.operational, *store); !loaded) {
                return loaded;
            }
        }
        NativeStore native(keep(std::move(*store)));
        return print(kind == TQM_REQ_GET ? desk.framework().get(std::move(document), native)
                                         : desk.framework().get_config(std::move(document), native),
                     options);
    });
}

// What is said of the model alone.
tqm::Expected<void> print_model(const Options &options, tqm::Expected<std::string> (*text_of)(const Environment &))
{
    const auto environment = Environment::load(options.locations);
    if (!environment) {
        return tl::unexpected(environment.error());
    }
    const auto text = text_of(*environment);
    return text ? write_text(*text) : tl::unexpected(text.error());
}

// A store that is not there yet is an empty one: the edit would make it.
tqm::Expected<void> try_edit(Desk &desk, tqm::Document document, const Options &options)
{
    std::error_code ignored;
    tqm::Expected<router::Datastore> store = router::Datastore::in_memory(desk.environment().native());
    if (std::filesystem::exists(options.store, ignored)) {
        store = open_store(options, desk.environment().native(), router::Access::read);
    }
    if (!store) {
        return tl::unexpected(store.error());
    }
    Preview preview(*store);
    if (auto edited = desk.framework().edit(std::move(document), preview); !edited) {
        return edited;
    }
    return write_text(dry_run_text(preview.changes(), desk.checker()->notes(), options.format));
}

} // namespace

tqm::Expected<void> forward(const Options &options)
{
    return with_document(options, options.check ? Needs::checks : Needs::schema,
                         [&](Desk &desk, OptionalDocument document) {
                             return print(desk.framework().forward(std::move(*document),
                                                                   options.kind.value_or(TQM_REQ_EDIT), options.check),
                                          options);
                         });
}

tqm::Expected<void> reverse(const Options &options)
{
    return with_document(options, Needs::schema, [&](Desk &desk, OptionalDocument document) {
        return print(desk.framework().reverse(std::move(*document), options.kind.value_or(TQM_REQ_GET)), options);
    });
}

tqm::Expected<void> edit(const Options &options)
{
    return with_document(options, Needs::checks, [&](Desk &desk, OptionalDocument document) -> tqm::Expected<void> {
        if (options.dry_run) {
            return try_edit(desk, std::move(*document), options);
        }
        auto store = open_store(options, desk.environment().native(), router::Access::write);
        if (!store) {
            return tl::unexpected(store.error());
        }
        NativeStore native(*store);
        auto edited = desk.framework().edit(std::move(*document), native);
        if (edited) {
            keep(std::move(*store)); // else it goes now, with the directory that it may have made
        }
        return edited;
    });
}

tqm::Expected<void> get(const Options &options)
{
    return read_store(options, TQM_REQ_GET);
}

tqm::Expected<void> get_config(const Options &options)
{
    return read_store(options, TQM_REQ_GET_CONFIG);
}

tqm::Expected<void> explain(const Options &options)
{
    return with_document(options, Needs::checks, [&](Desk &desk, OptionalDocument document) -> tqm::Expected<void> {
        const auto direction = options.reverse ? tqm::Direction::reverse : tqm::Direction::forward;
        const uint32_t kind = options.kind.value_or(options.reverse ? TQM_REQ_GET : TQM_REQ_EDIT);
        std::optional<router::Datastore> store;
        if (!options.store.empty()) {
            auto opened = open_store(options, desk.environment().native(), router::Access::read);
            if (!opened) {
                return tl::unexpected(opened.error());
            }
            store = std::move(*opened);
        }
        const Judges judges{desk.checker(), store ? &*store : nullptr};
        const auto explanation =
            explain(desk.environment(), std::move(*document), direction, kind, judges, desk.watch());
        if (!explanation) {
            return tl::unexpected(explanation.error());
        }
        if (auto shown = show(*explanation, options.page); !shown) {
            return shown;
        }
        if (explanation->refusal) {
            return tl::unexpected(*explanation->refusal);
        }
        return {};
    });
}

tqm::Expected<void> tree(const Options &options)
{
    return print_model(options, options.markdown ? mapping_page : model_tree);
}

tqm::Expected<void> deviations(const Options &options)
{
    return print_model(options, deviations);
}

} // namespace ocmap
