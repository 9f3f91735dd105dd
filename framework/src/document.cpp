// Parsing of documents, and of the NETCONF elements around the data (RFC 6241, sections 7.1, 7.2 and 7.7).
#include "tqm/document.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <sys/stat.h>

#include "arena.h"
#include "document_content.h"
#include "json_reader.h"
#include "text/characters.h"
#include "text/line_index.h"
#include "tqm_map.h"
#include "xml_text.h"

namespace tqm
{

// ---- Namespaces ----

bool XmlScope::is_declaration(const char *attribute_name)
{
    return std::strncmp(attribute_name, "xmlns", 5) == 0 && (attribute_name[5] == '\0' || attribute_name[5] == ':');
}

std::size_t XmlScope::enter(pugi::xml_node element)
{
    const std::size_t mark = bindings_.size();
    for (pugi::xml_attribute attribute : element.attributes()) {
        const char *name = attribute.name();
        if (is_declaration(name)) {
            bindings_.push_back({name[5] == ':' ? name + 6 : "", attribute.value()});
        }
    }
    return mark;
}

const char *XmlScope::find(std::string_view prefix) const
{
    for (std::size_t at = bindings_.size(); at-- > 0;) {
        if (bindings_[at].prefix == prefix) {
            return bindings_[at].uri;
        }
    }
    if (prefix == "xml") {
        return "http://www.w3.org/XML/1998/namespace";
    }
    return prefix.empty() ? "" : nullptr;
}

std::optional<XmlName> XmlScope::element_name(const char *qualified) const
{
    const char *colon = std::strchr(qualified, ':');
    if (colon == nullptr) {
        return XmlName{find(""), qualified};
    }
    const char *uri = find({qualified, static_cast<std::size_t>(colon - qualified)});
    if (uri == nullptr) {
        return std::nullopt;
    }
    return XmlName{uri, colon + 1};
}

std::optional<XmlName> XmlScope::attribute_name(const char *qualified) const
{
    if (std::strchr(qualified, ':') == nullptr) {
        return XmlName{"", qualified};
    }
    return element_name(qualified);
}

namespace
{

tl::unexpected<Error> failure(ErrorTag tag, std::string text, std::string element = {})
{
    Error error{std::move(text)};
    error.error_tag = tag;
    error.type = tag == ErrorTag::malformed_message ? ErrorType::rpc : ErrorType::protocol;
    error.bad_element = std::move(element);
    return tl::unexpected(std::move(error));
}

tl::unexpected<Error> malformed(std::string text)
{
    return failure(ErrorTag::malformed_message, std::move(text));
}

// ---- Wrappers ----

/// Reads what stands around the data. Each function takes one element in and says what is wrong with it.
class WrapperReader
{
public:
    explicit WrapperReader(Document::Content &content) : content_(content) {}

    Expected<void> root(pugi::xml_node element)
    {
        const auto name = enter(element);
        if (!name) {
            return tl::unexpected(name.error());
        }
        if (is_netconf(*name, "rpc")) {
            return rpc(element);
        }
        for (const char *operation : {"edit-config", "get", "get-config"}) {
            if (is_netconf(*name, operation)) {
                return this->operation(element, *name);
            }
        }
        const bool bare = *name->ns == '\0' || std::strcmp(name->ns, netconf_ns) == 0;
        if (bare && std::strcmp(name->local, "rpc-reply") == 0) {
            return reply(element);
        }
        const std::string_view local = bare ? name->local : "";
        if (local == "config") {
            content_.kind = TQM_REQ_EDIT;
            return hold_edit(element);
        }
        if (local == "filter") {
            return filter(element);
        }
        if (local == "data") {
            return hold(element);
        }
        content_.single = element;
        return {};
    }

private:
    Expected<XmlName> enter(pugi::xml_node element)
    {
        content_.scope.enter(element);
        return name_of(element);
    }
    Expected<XmlName> name_of(pugi::xml_node element) const
    {
        const auto name = content_.scope.element_name(element.name());
        if (!name) {
            return malformed(std::string("the prefix of element <") + element.name() + "> is not declared");
        }
        return *name;
    }
    static bool is_netconf(const XmlName &name, const char *local)
    {
        return std::strcmp(name.ns, netconf_ns) == 0 && std::strcmp(name.local, local) == 0;
    }
    Expected<void> hold(pugi::xml_node element)
    {
        content_.holder = element;
        return {};
    }

    /// A saved answer is what it holds.
    Expected<void> reply(pugi::xml_node element)
    {
        pugi::xml_node data;
        for (pugi::xml_node child : element.children()) {
            const std::string_view local = local_name(child.name());
            if (child.type() != pugi::node_element || (content_.json && local == "message-id")) {
                continue;
            }
            if (local == "rpc-error" || local == "ok") {
                return failure(ErrorTag::invalid_value,
                               std::string("it is a reply that holds <") + child.name() + ">, and no data");
            }
            if (data || local != "data") {
                return failure(ErrorTag::invalid_value, "it is a reply that does not hold <data> alone");
            }
            data = child;
        }
        if (!data) {
            return failure(ErrorTag::invalid_value, "it is a reply that holds no data");
        }
        const auto name = enter(data);
        return name ? hold(data) : tl::unexpected(name.error());
    }

    /// What would stand at <config> as a whole is said by default-operation, and by nothing else: an operation that
    /// was passed over would be taken for a merge.
    Expected<void> hold_edit(pugi::xml_node element)
    {
        if (Expected<void> plain = without_attributes(element); !plain) {
            return plain;
        }
        return hold(element);
    }

    static Expected<void> without_attributes(pugi::xml_node element)
    {
        for (pugi::xml_attribute attribute : element.attributes()) {
            if (XmlScope::is_declaration(attribute.name()) || std::strncmp(attribute.name(), "xml:", 4) == 0) {
                continue;
            }
            Error error{std::string("<") + element.name() + "> has no attribute '" + attribute.name() + "'"};
            error.error_tag = ErrorTag::unknown_attribute;
            error.type = ErrorType::protocol;
            error.bad_attribute = attribute.name();
            error.bad_element = element.name();
            return tl::unexpected(std::move(error));
        }
        return {};
    }

    Expected<void> rpc(pugi::xml_node element)
    {
        pugi::xml_node operation;
        for (pugi::xml_node child : element.children()) {
            if (child.type() != pugi::node_element) {
                continue;
            }
            if (operation) {
                return failure(ErrorTag::bad_element,
                               std::string("an <rpc> holds one operation, and <") + child.name() + "> is a second one",
                               child.name());
            }
            operation = child;
        }
        if (!operation) {
            return failure(ErrorTag::missing_element, "the <rpc> holds no operation");
        }
        const auto name = enter(operation);
        if (!name) {
            return tl::unexpected(name.error());
        }
        return this->operation(operation, *name);
    }

    Expected<void> operation(pugi::xml_node operation, const XmlName &name)
    {
        if (is_netconf(name, "edit-config")) {
            content_.kind = TQM_REQ_EDIT;
            if (Expected<void> plain = without_attributes(operation); !plain) {
                return plain;
            }
            return parameters(operation, &WrapperReader::edit_parameter, "config", "target");
        }
        content_.selects_all = true;
        if (is_netconf(name, "get")) {
            content_.kind = TQM_REQ_GET;
            return parameters(operation, &WrapperReader::get_parameter, nullptr, nullptr);
        }
        if (is_netconf(name, "get-config")) {
            content_.kind = TQM_REQ_GET_CONFIG;
            return parameters(operation, &WrapperReader::get_parameter, nullptr, "source");
        }
        return failure(ErrorTag::operation_not_supported,
                       std::string("the operation <") + operation.name() + "> is not offered", operation.name());
    }

    using Parameter = Expected<bool> (WrapperReader::*)(pugi::xml_node, std::string_view local);

    /// Hands each child to `parameter`, which says false for one that it does not know. `first` and `second` must be
    /// among them (null: nothing must).
    Expected<void> parameters(pugi::xml_node operation, Parameter parameter, const char *first, const char *second)
    {
        const std::size_t mark = content_.scope.enter({});
        std::vector<std::string> seen;
        for (pugi::xml_node child : operation.children()) {
            if (child.type() != pugi::node_element) {
                continue;
            }
            const bool leads_to_data = is_data_holder(child.name());
            const std::size_t child_mark = content_.scope.enter(child);
            const auto name = name_of(child);
            if (!name) {
                return tl::unexpected(name.error());
            }
            if (std::ranges::find(seen, name->local) != seen.end()) {
                return failure(ErrorTag::bad_element,
                               std::string("<") + child.name() + "> stands twice in <" + operation.name() + ">",
                               child.name());
            }
            seen.emplace_back(name->local);
            const bool known = std::strcmp(name->ns, netconf_ns) == 0;
            const Expected<bool> taken = known ? (this->*parameter)(child, name->local) : Expected<bool>(false);
            if (!taken) {
                return tl::unexpected(taken.error());
            }
            if (!*taken) {
                return failure(ErrorTag::unknown_element,
                               std::string("unknown element <") + child.name() + "> in <" + operation.name() + ">",
                               child.name());
            }
            if (leads_to_data) {
                data_scope_ = content_.scope;
            }
            content_.scope.leave(child_mark);
        }
        content_.scope.leave(mark);
        for (const char *needed : {first, second}) {
            if (needed != nullptr && std::ranges::find(seen, needed) == seen.end()) {
                return failure(ErrorTag::missing_element,
                               std::string("<") + operation.name() + "> lacks <" + needed + ">", needed);
            }
        }
        if (data_scope_) {
            content_.scope = *data_scope_;
        }
        return {};
    }
    static std::string_view local_name(const char *qualified)
    {
        const char *colon = std::strchr(qualified, ':');
        return colon == nullptr ? qualified : colon + 1;
    }
    static bool is_data_holder(const char *qualified)
    {
        const std::string_view local = local_name(qualified);
        return local == "config" || local == "filter";
    }

    static std::string_view without_blanks(std::string_view text)
    {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
        text.remove_suffix(text.size() - std::min(text.find_last_not_of(" \t\r\n") + 1, text.size()));
        return text;
    }

    Expected<bool> edit_parameter(pugi::xml_node element, std::string_view local)
    {
        const std::string_view value = without_blanks(element.child_value());
        if (local == "target") {
            return datastore(element);
        }
        if (local == "config") {
            if (const Expected<void> held = hold_edit(element); !held) {
                return tl::unexpected(held.error());
            }
            return true;
        }
        if (local == "default-operation") {
            if (value == "none") {
                content_.default_operation = DefaultOperation::none;
            } else if (value == "replace") {
                content_.default_operation = DefaultOperation::replace;
            } else if (value != "merge") {
                return failure(ErrorTag::invalid_value,
                               "default-operation '" + std::string(value) + "' is none of merge, replace and none",
                               "default-operation");
            }
            return true;
        }
        if (local == "test-option") {
            return one_of("test-option", value, {"test-then-set", "set"});
        }
        if (local == "error-option") {
            return one_of("error-option", value, {"stop-on-error", "rollback-on-error"});
        }
        return false;
    }

    static Expected<bool> one_of(const char *name, std::string_view value, std::initializer_list<const char *> offered)
    {
        if (std::ranges::find(offered, value) != offered.end()) {
            return true;
        }
        std::string text = std::string(name) + " '" + std::string(value) + "' is not offered, only";
        for (const char *offer : offered) {
            text += std::string(offer == *offered.begin() ? " " : " and ") + offer;
        }
        return failure(ErrorTag::operation_not_supported, text, name);
    }

    Expected<bool> get_parameter(pugi::xml_node element, std::string_view local)
    {
        if (local == "source") {
            return datastore(element);
        }
        if (local != "filter") {
            return false;
        }
        if (const Expected<void> read = filter(element); !read) {
            return tl::unexpected(read.error());
        }
        content_.selects_all = false;
        return true;
    }

    Expected<void> filter(pugi::xml_node element)
    {
        for (pugi::xml_attribute attribute : element.attributes()) {
            if (XmlScope::is_declaration(attribute.name())) {
                continue;
            }
            const auto name = content_.scope.attribute_name(attribute.name());
            if (!name || std::strcmp(name->local, "type") != 0) {
                return failure(ErrorTag::unknown_attribute,
                               std::string("unknown attribute '") + attribute.name() + "' of <filter>", "filter");
            }
            if (std::strcmp(attribute.value(), "subtree") != 0) {
                return failure(ErrorTag::operation_not_supported,
                               std::string("filters of type '") + attribute.value() + "' are not offered, only subtree",
                               "filter");
            }
        }
        content_.is_filter = true;
        return hold(element);
    }

    Expected<bool> datastore(pugi::xml_node element)
    {
        pugi::xml_node store =
            element.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
        const auto name = store ? content_.scope.element_name(store.name()) : std::nullopt;
        if (!name || std::strcmp(name->local, "running") != 0) {
            return failure(ErrorTag::invalid_value,
                           std::string("the ") + element.name() + " '" + (store ? store.name() : "") +
                               "' does not exist: the only datastore is running",
                           element.name());
        }
        return true;
    }

    Document::Content &content_;
    std::optional<XmlScope> data_scope_;
};

std::shared_ptr<char[]> allocate(std::size_t size)
{
    return {allocate_large(size), [](char *memory) { std::free(memory); }};
}

} // namespace

// ---- Document ----

Document::Document(std::unique_ptr<Content> content) : content_(std::move(content)) {}
Document::Document(Document &&) noexcept = default;
Document &Document::operator=(Document &&) noexcept = default;
Document::~Document() = default;

std::optional<uint32_t> Document::kind() const
{
    return content_->kind;
}

DefaultOperation Document::default_operation() const
{
    return content_->default_operation;
}

std::unique_ptr<Document::Content> Document::take()
{
    return std::move(content_);
}

bool Document::is_filter() const
{
    return content_->is_filter;
}

bool Document::selects_all() const
{
    return content_->selects_all;
}

Document Document::selecting_all()
{
    auto content = std::make_unique<Content>();
    content->selects_all = true;
    return Document(std::move(content));
}

Expected<Document> Document::parse(std::string_view text)
{
    auto content = std::make_unique<Content>();
    content->buffer = allocate(text.size() + 1);
    content->size = text.size();
    if (content->buffer == nullptr) {
        return failure(ErrorTag::resource_denied, "out of memory");
    }
    std::memcpy(content->buffer.get(), text.data(), text.size());
    return parse_buffer(std::move(content));
}

Expected<Document> Document::read(std::FILE *file)
{
    // One byte more than a regular file has, so that its end is seen without growing.
    struct stat status {
    };
    const bool sized = fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
    std::size_t capacity = std::max<std::size_t>(sized ? static_cast<std::size_t>(status.st_size) + 1 : 0, 1 << 16);
    std::size_t size = 0;
    char *memory = allocate_large(capacity);
    while (memory != nullptr) {
        size += std::fread(memory + size, 1, capacity - size, file);
        if (size < capacity) {
            break;
        }
        capacity *= 2;
        char *larger = static_cast<char *>(std::realloc(memory, capacity));
        if (larger == nullptr) {
            std::free(memory);
        }
        memory = larger;
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    std::shared_ptr<char[]> buffer(memory, [](char *done) { std::free(done); });
    auto content = std::make_unique<Content>();
    content->buffer = std::move(buffer);
    content->size = size;
    if (std::ferror(file) != 0) {
        return failure(ErrorTag::operation_failed, std::string("the request cannot be read: ") + std::strerror(errno));
    }
    return parse_buffer(std::move(content));
}

Expected<Document> Document::read_file(const std::filesystem::path &path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    if (file == nullptr && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    if (file == nullptr) {
        return failure(ErrorTag::operation_failed, "cannot open '" + path.string() + "': " + std::strerror(errno));
    }
    Expected<Document> document = read(file.get());
    if (!document) {
        document.error().text = path.string() + ": " + document.error().text;
    }
    return document;
}

Expected<Document> Document::parse_buffer(std::unique_ptr<Content> content)
{
    const std::string_view text{content->buffer.get(), content->size};
    if (text.empty()) {
        return malformed("the request is empty");
    }
    if (!is_declared_utf8(text)) {
        return malformed("the request is no UTF-8 text");
    }
    const text::LineIndex lines(text);
    if (const std::size_t bad = text::find_bad_character(text); bad != std::string_view::npos) {
        return malformed("the request has bytes that are no XML character in UTF-8 at " + lines.place_of(bad));
    }
    if (is_json(text)) {
        if (Expected<void> read = read_json(text, *content); !read) {
            return tl::unexpected(read.error());
        }
        if (const Expected<void> read = WrapperReader(*content).root(content->dom.first_child()); !read) {
            return tl::unexpected(read.error());
        }
        return Document(std::move(content));
    }
    if (const std::size_t bad = find_bad_reference(text); bad != std::string_view::npos) {
        return malformed("the request is no XML document: '&' begins no reference to a character at " +
                         lines.place_of(bad));
    }
    constexpr unsigned int options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                     pugi::parse_eol | pugi::parse_embed_pcdata | pugi::parse_ws_pcdata_single |
                                     pugi::parse_doctype | pugi::parse_fragment;
    const pugi::xml_parse_result result =
        content->dom.load_buffer_inplace(content->buffer.get(), content->size, options, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    if (!result) {
        return malformed(std::string("the request is no XML document: ") + result.description() + " at " +
                         lines.place_of(static_cast<std::size_t>(result.offset)));
    }

    pugi::xml_node root;
    for (pugi::xml_node node : content->dom.children()) {
        if (node.type() == pugi::node_doctype) {
            return malformed("a document type declaration is not allowed");
        }
        if (node.type() != pugi::node_element) {
            return malformed("the request is no XML document: there is text outside its root element");
        }
        if (root) {
            return malformed(std::string("the request has a second root element, <") + node.name() + ">");
        }
        root = node;
    }
    if (!root) {
        return malformed("the request has no element");
    }
    if (const Expected<void> read = WrapperReader(*content).root(root); !read) {
        return tl::unexpected(read.error());
    }
    return Document(std::move(content));
}

} // namespace tqm
