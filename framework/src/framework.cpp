// See tqm/framework.h.
#include "tqm/framework.h"

#include <cstring>

#include "document_content.h"
#include "error_path.h"
#include "filter.h"
#include "json_writer.h"
#include "request_impl.h"
#include "request_kind.h"
#include "writer.h"

namespace tqm
{

namespace
{

tl::unexpected<Error> not_registered()
{
    return tl::unexpected(Error{"the plug-in has registered no mapping"});
}

/// The first node below `node` that a code without a place of its own is about: a list entry without children, or a
/// deleted container with some. Its path with keys, or nothing.
std::string place_of(rcode code, const rdl_tqm_datatree &node, const std::string &parent_schema_path,
                     const std::string &parent, const Schema &schema)
{
    const std::string step = std::string("/") + (node.tag == nullptr ? "" : node.tag);
    const std::string schema_path = parent_schema_path + step;
    const std::vector<std::string> *const keys = schema.list_keys(schema_path);
    std::string path = parent + step;
    if (keys != nullptr) {
        append_keys(path, node, *keys);
    }
    const bool has_children = (node.present & TQM_PRESENT_SUBTREE) != 0 && node.subtree_count != 0;
    if (code == TQM_ERR_NO_SUBTREE && !has_children && keys != nullptr) {
        return path;
    }
    if (code == TQM_ERR_BAD_ARGS && has_children && tqm_map_is_request_delete(&node) != 0) {
        return path;
    }
    for (uint32_t i = 0; has_children && i < node.subtree_count; ++i) {
        if (std::string found = place_of(code, node.subtree[i], schema_path, path, schema); !found.empty()) {
            return found;
        }
    }
    return "";
}

/// Where the plug-in has noted no path, the request shows it.
Error placed(Error error, const rdl_tqm_datatree &tree, const Schema &schema)
{
    if (error.path.empty() && error.code) {
        error.path = place_of(*error.code, tree, "", "", schema);
    }
    return error;
}

/// Steering, not a failure: there was nothing to do.
rcode without_skip(rcode code)
{
    return code == TQM_ERR_SKIP_NODE ? 0 : code;
}

bool write_xml(Sink sink, std::string_view wrapper, std::string_view attributes,
               const std::vector<const OutputNode *> &roots, bool with_operations)
{
    const std::string netconf = std::string("=\"") + netconf_ns + "\"";
    const std::string operations = with_operations ? " xmlns:nc" + netconf : "";
    XmlWriter writer(std::move(sink));
    if (wrapper.empty()) {
        return writer.write(operations, roots, with_operations);
    }
    const std::string all = " xmlns" + netconf + operations + std::string(attributes);
    return writer.write(wrapper, all, roots, with_operations);
}

} // namespace

// ---- Trees ----

void Trees::print(std::string &text, Format format, Envelope envelope) const
{
    const auto sink = [&](std::string_view piece) {
        text += piece;
        return true;
    };
    print_to(sink, format, envelope);
}

bool Trees::print(std::FILE *file, Format format, Envelope envelope) const
{
    return print_to(
        [file](std::string_view piece) { return std::fwrite(piece.data(), 1, piece.size(), file) == piece.size(); },
        format, envelope);
}

bool Trees::print_to(const std::function<bool(std::string_view)> &sink, Format format, Envelope envelope) const
{
    constexpr const char *names[] = {"config", "filter", "data"};
    const char *const name = envelope == Envelope::none ? "" : names[static_cast<std::size_t>(wrapper_)];
    const bool is_read = kind_ == TQM_REQ_GET || kind_ == TQM_REQ_GET_CONFIG;
    const bool with_operations = wrapper_ == Wrapper::config || (wrapper_ == Wrapper::data && !is_read);
    if (format == Format::json) {
        return JsonWriter(request_->impl().schema, sink).write(name, roots_, with_operations);
    }
    return write_xml(sink, name, wrapper_ == Wrapper::filter ? " type=\"subtree\"" : "", roots_, with_operations);
}

// ---- Framework ----

Framework::Framework(const Plugin &plugin, const Schema &schema, Watch watch, EditChecker *checker)
    : plugin_(plugin), schema_(schema), watch_(std::move(watch)), checker_(checker)
{
}

Expected<std::shared_ptr<Request>> Framework::load(Document document, uint32_t kind, bool widened) const
{
    if (plugin_.registrations().empty()) {
        return not_registered();
    }
    auto request = std::make_shared<Request>(schema_, plugin_.registrations(), kind, Direction::forward, watch_);
    request->impl().widened = widened;
    if (Expected<void> loaded = request->load(std::move(document)); !loaded) {
        return with_instance(std::move(loaded.error()), schema_);
    }
    return request;
}

/// A request that the forward root has walked; one that selects or edits nothing has no output. A `widened` walk leads
/// to all that matching the answer needs.
Expected<std::shared_ptr<Request>> Framework::walk_forward(Document document, uint32_t kind, bool widened) const
{
    Expected<std::shared_ptr<Request>> request = load(std::move(document), kind, widened);
    if (!request) {
        return request;
    }
    if (Expected<void> walked = walk(**request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    return request;
}

Expected<void> Framework::walk_request(Request &request) const
{
    rdl_tqm_datatree *tree = request.tree();
    if (tree == nullptr) {
        return {};
    }
    for (const tqm_map_reg_info &registration : plugin_.registrations()) {
        if (std::strcmp(registration.oc_top, tree->tag) != 0) {
            continue;
        }
        request.impl().observation.begin(*tree);
        const rcode code = without_skip(registration.forward_root(request.ctx(), tree, request.out()));
        if (code != 0) {
            return with_instance(placed(request.error(code), *tree, schema_), schema_);
        }
        break;
    }
    if (request.impl().foreign) {
        return with_instance(*request.impl().foreign, schema_);
    }
    if (request.impl().is_forward_edit()) {
        request.impl().settle_markers();
    }
    return {};
}

Expected<void> Framework::walk(Request &request) const
{
    if (plugin_.registrations().empty()) {
        return not_registered();
    }
    if (request.impl().direction == Direction::forward) {
        return walk_request(request);
    }
    Expected<void> walked = walk_answers(request, request.impl().trees);
    if (walked && request.impl().is_read()) {
        request.drop_unanswered();
    }
    return walked;
}

uint32_t Framework::kind_of(const Document &document, Direction direction, uint32_t kind)
{
    kind = document.kind().value_or(kind);
    const bool reads = direction == Direction::forward && document.is_filter();
    return reads && kind != TQM_REQ_GET_CONFIG ? TQM_REQ_GET : kind;
}

Expected<Trees> Framework::forward(Document document, uint32_t kind, bool checked)
{
    kind = kind_of(document, Direction::forward, kind);
    Expected<std::shared_ptr<Request>> request = load(std::move(document), kind);
    if (!request) {
        return tl::unexpected(std::move(request.error()));
    }
    if (Expected<void> good = checked ? check(**request) : Expected<void>(); !good) {
        return tl::unexpected(std::move(good.error()));
    }
    if (Expected<void> walked = walk(**request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    if (Expected<void> good = checked ? check_values(**request) : Expected<void>(); !good) {
        return tl::unexpected(std::move(good.error()));
    }
    Trees trees;
    trees.request_ = *request;
    trees.roots_ = trees.request_->roots();
    trees.kind_ = kind;
    const bool is_read = kind == TQM_REQ_GET || kind == TQM_REQ_GET_CONFIG;
    trees.wrapper_ = is_read ? Trees::Wrapper::filter : Trees::Wrapper::config;
    return trees;
}

/// Walks each of the request's trees with the reverse root of its registration.
Expected<void> Framework::walk_answers(Request &request, TreeBuilder::Roots answers) const
{
    for (uint32_t i = 0; i < answers.count; ++i) {
        rdl_tqm_datatree &answer = answers.nodes[i];
        for (const tqm_map_reg_info &registration : plugin_.registrations()) {
            if (answer.tag == nullptr || std::strcmp(registration.native_top, answer.tag) != 0 ||
                answer.ns == nullptr || std::strcmp(registration.native_ns, answer.ns) != 0) {
                continue;
            }
            request.impl().start_walk();
            request.impl().observation.begin(answer);
            const rcode code = without_skip(registration.reverse_root(request.ctx(), &answer, request.out()));
            if (code != 0) {
                return with_instance(request.error(code), schema_);
            }
            break;
        }
    }
    return {};
}

Expected<Trees> Framework::reverse(Document document, uint32_t kind)
{
    Trees trees;
    trees.kind_ = kind_of(document, Direction::reverse, kind);
    trees.request_ =
        std::make_shared<Request>(schema_, plugin_.registrations(), trees.kind_, Direction::reverse, watch_);
    Request &request = *trees.request_;
    if (Expected<void> loaded = request.load(std::move(document)); !loaded) {
        return with_instance(std::move(loaded.error()), schema_);
    }
    if (Expected<void> walked = walk(request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    trees.roots_ = request.roots();
    return trees;
}

Expected<Trees> Framework::get(std::optional<Document> document, NativeSide &native)
{
    return read(std::move(document), native, TQM_REQ_GET);
}

Expected<Trees> Framework::get_config(std::optional<Document> document, NativeSide &native)
{
    return read(std::move(document), native, TQM_REQ_GET_CONFIG);
}

Expected<Trees> Framework::read(std::optional<Document> document, NativeSide &native, uint32_t kind)
{
    if (document && document->kind().value_or(kind) != kind) {
        return wrong_kind(*document->kind(), kind);
    }
    const bool selects_all = !document || document->selects_all();
    const Expected<std::shared_ptr<Request>> asked =
        walk_forward(document ? std::move(*document) : Document::selecting_all(), kind, true);
    if (!asked) {
        return tl::unexpected(asked.error());
    }

    Trees trees;
    trees.kind_ = kind;
    trees.request_ = std::make_shared<Request>(schema_, plugin_.registrations(), kind, Direction::reverse, watch_);
    Request &request = *trees.request_;
    request.impl().trace_index = (*asked)->impl().trace_index; // one read, one count
    for (const OutputNode *filter : (*asked)->roots()) {
        TreeBuilder answer = request.builder();
        if (Expected<void> read = native.read(*filter, answer); !read) {
            return with_instance(std::move(read.error()), schema_);
        }
        if (Expected<void> walked = walk_answers(request, answer.finish()); !walked) {
            return tl::unexpected(std::move(walked.error()));
        }
    }
    request.drop_unanswered();
    if (!selects_all) {
        apply_filter(request.impl().output, request.impl().paths, (*asked)->impl().filter);
    }
    trees.roots_ = request.roots();
    return trees;
}

} // namespace tqm
