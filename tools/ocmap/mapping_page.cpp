#include "mapping_page.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <regex>
#include <set>
#include <system_error>
#include <vector>

#include "model_queries.h"
#include "model_tree.h"
#include "native_store.h"
#include "openconfig.h"
#include "tqm/framework.h"

namespace ocmap
{
namespace
{

constexpr const char *introduction = R"(# The mapping

Made by `ocmap tree --markdown` (`make docs`), which runs the plug-in's walkers; not to be edited by hand. What a client should
know beyond single nodes stands in [clients.md](clients.md).

## Each node and where it goes

Beside a node stands its native path; `get:` and `edit:` where reads and edits differ, `oper:` for the operational model.

```
)";

constexpr const char *changed_heading = R"(```

## Leaves that do not come back as they were written

Values of each leaf's type were written to a store and read back.

| leaf | written | read back | why |
|---|---|---|---|
)";

// Why a leaf does not come back. That it does not is found by trying; why cannot be.
struct Note {
    const char *path;
    const char *why;
};

constexpr std::array notes = {
    Note{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/key-clear-text",
         "a key is a secret: the native text is written and never read back"},
    Note{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/valid-date-time",
         "the native model knows a start in the router's local time, and no keyword: zone and fraction are not looked "
         "at"},
    Note{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/expiration-date-time",
         "the native leaves hold the router's local time: zone and fraction are not looked at"},
};

using Values = std::vector<std::string>;

std::string joined(const Values &values, bool secret)
{
    std::string text;
    for (const std::string &value : values) {
        text += (text.empty() ? "`" : ", `") + (secret ? "***" : value) + "`";
    }
    return text.empty() ? "nothing" : text;
}

// A time that is not the one that was written is that of the day on which this runs.
std::string read_text(const Values &written, const Values &read)
{
    static const std::regex date("\\d{4}-\\d{2}-\\d{2}T.*");
    const bool is_now =
        read.size() == 1 && std::regex_match(read.front(), date) && !std::regex_match(written.front(), date);
    return is_now ? "the time of the edit" : joined(read, false);
}

void collect(const tqm::OutputNode &node, const std::string &path, Values &values)
{
    if (node.path() == path && node.value() != nullptr) {
        values.emplace_back(node.value());
    }
    for (const tqm::OutputNode &child : node.children()) {
        collect(child, path, values);
    }
}

// A directory that goes with its object.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "ocmap.XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::filesystem::filesystem_error("cannot make a directory", pattern,
                                                    std::error_code(errno, std::generic_category()));
        }
        path_ = pattern;
    }
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

class RoundTrip
{
public:
    explicit RoundTrip(const Environment &environment)
        : environment_(environment), framework_(environment.plugin(), environment.schema())
    {
    }

    // What a read gives of a leaf after an edit of it alone in an empty store; an error if the edit is refused.
    tqm::Expected<Values> run(const ProbedNode &leaf, const Values &values)
    {
        const TemporaryDirectory directory;
        auto store = router::Datastore::open(environment_.native(), directory.path(), router::Access::write);
        if (!store) {
            return tl::unexpected(from_router(store.error()));
        }
        NativeStore native(*store);
        auto document = tqm::Document::parse(edit(leaf.info.path, values));
        if (!document) {
            return tl::unexpected(document.error());
        }
        if (auto edited = framework_.edit(std::move(*document), native); !edited) {
            return tl::unexpected(edited.error());
        }
        const auto answer = framework_.get_config(std::nullopt, native);
        if (!answer) {
            return tl::unexpected(answer.error());
        }
        Values read;
        for (const tqm::OutputNode *root : answer->roots()) {
            collect(*root, leaf.info.path, read);
        }
        return read;
    }

private:
    std::string edit(const std::string &path, const Values &values) const
    {
        std::string open = "<config>";
        std::string close = "</config>";
        std::string walked;
        std::size_t begin = 1;
        for (std::size_t slash = 0; (slash = path.find('/', begin)) != std::string::npos; begin = slash + 1) {
            const std::string step = path.substr(begin, slash - begin);
            walked += "/" + step;
            open += "<" + step + (begin == 1 ? std::string(" xmlns='") + openconfig_ns + "'>" : ">");
            if (const tqm::SchemaNode *const known = environment_.schema().find(walked);
                known != nullptr && known->is_list()) {
                open += "<" + known->keys.front() + ">01</" + known->keys.front() + ">";
            }
            close.insert(0, "</" + step + ">");
        }
        const std::string leaf = path.substr(begin);
        for (const std::string &value : values) {
            open.append("<").append(leaf).append(">").append(value).append("</").append(leaf).append(">");
        }
        return open + close;
    }

    const Environment &environment_;
    tqm::Framework framework_;
};

// The values of one edit each.
std::vector<Values> edits_of(const router::Models &models, const router::SchemaNode &leaf)
{
    std::vector<Values> edits;
    const Values samples = sample_values(models, leaf.path);
    for (const std::string &sample : samples) {
        edits.push_back({sample});
    }
    return edits;
}

// Leaves that repeat their entry's key have no values of their own.
bool repeats_key(const std::string &path, const tqm::Schema &schema)
{
    const std::size_t slash = path.rfind('/');
    const std::size_t outer = path.rfind('/', slash - 1);
    const tqm::SchemaNode *const entry = schema.find(path.substr(0, outer));
    return entry != nullptr && entry->is_list() && entry->keys.front() == path.substr(slash + 1);
}

tqm::Expected<std::string> changed_rows(const Environment &environment, const std::vector<ProbedNode> &nodes)
{
    RoundTrip round_trip(environment);
    std::string rows;
    std::set<std::string> explained;
    for (const ProbedNode &node : nodes) {
        const bool is_leaf = node.info.kind == router::NodeKind::leaf || node.info.kind == router::NodeKind::leaf_list;
        if (!is_leaf || !node.supported || !node.info.config || node.info.is_key ||
            repeats_key(node.info.path, environment.schema())) {
            continue;
        }
        for (const Values &written : edits_of(environment.models(), node.info)) {
            const auto read = round_trip.run(node, written);
            if (!read) {
                return tl::unexpected(read.error());
            }
            if (*read == written) {
                continue;
            }
            const auto note = std::ranges::find_if(notes, [&](const Note &n) { return n.path == node.info.path; });
            if (note == notes.end()) {
                return tl::unexpected(tqm::Error{"it is not said why this leaf does not come back", node.info.path});
            }
            explained.insert(note->path);
            const bool hidden = environment.schema().hides(node.info.path);
            rows += "| `" + node.info.path + "` | " + joined(written, hidden) + " | " + read_text(written, *read) +
                    " | " + note->why + " |\n";
        }
    }
    for (const Note &note : notes) {
        if (!explained.contains(note.path)) {
            return tl::unexpected(tqm::Error{"it is said why this leaf does not come back, but it does", note.path});
        }
    }
    return rows;
}

} // namespace

tqm::Expected<std::string> mapping_page(const Environment &environment)
{
    const auto nodes = probe_model(environment);
    if (!nodes) {
        return tl::unexpected(nodes.error());
    }
    auto tree = tree_of(environment, *nodes);
    if (!tree) {
        return tree;
    }
    auto rows = changed_rows(environment, *nodes);
    if (!rows) {
        return rows;
    }
    std::string text = introduction + *tree + changed_heading + *rows + "\n## Nodes that are not supported\n\n";
    for (const ProbedNode &node : *nodes) {
        if (!node.supported) {
            text += "- `" + node.info.path + "`\n";
        }
    }
    return text;
}

} // namespace ocmap
