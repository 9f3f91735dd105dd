// Parsing of documents, and of the NETCONF elements around the data (RFC 6241, sections 7.1, 7.2 and 7.7).
#include "tqm/document.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <sys/stat.h>

#include "arena.h"
#include "document_content.h"
#include "json_reader.h"
#include "tqm_map.h"

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
        if (is_declaration(name))
            bindings_.push_back({name[5] == ':' ? name + 6 : "", attribute.value()});
    }
    return mark;
}

const char *XmlScope::find(std::string_view prefix) const
{
    for (std::size_t at = bindings_.size(); at-- > 0;)
        if (bindings_[at].prefix == prefix)
            return bindings_[at].uri;
    if (prefix == "xml")
        return "http://www.w3.org/XML/1998/namespace";
    return prefix.empty() ? "" : nullptr;
}

std::optional<XmlName> XmlScope::element_name(const char *qualified) const
{
    const char *colon = std::strchr(qualified, ':');
    if (colon == nullptr)
        return XmlName{find(""), qualified};
    const char *uri = find({qualified, static_cast<std::size_t>(colon - qualified)});
    if (uri == nullptr)
        return std::nullopt;
    return XmlName{uri, colon + 1};
}

std::optional<XmlName> XmlScope::attribute_name(const char *qualified) const
{
    if (std::strchr(qualified, ':') == nullptr)
        return XmlName{"", qualified};
    return element_name(qualified);
}

namespace
{

tl::unexpected<Error> failure(std::string text)
{
    return tl::make_unexpected(Error{std::move(text)});
}

// ---- Text ----

bool is_control(unsigned char byte)
{
    return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}

/// True for eight bytes of ASCII none of which can be a control character.
bool is_plain(const char *text)
{
    constexpr uint64_t high = 0x8080808080808080u;
    constexpr uint64_t blanks = 0x2020202020202020u;
    uint64_t word;
    std::memcpy(&word, text, 8);
    return ((word | (word - blanks)) & high) == 0;
}

} // namespace

std::size_t find_bad_character(std::string_view text)
{
    const auto continues = [&](std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0u) == 0x80u;
    };
    for (std::size_t at = 0; at < text.size();) {
        if (at + 8 <= text.size() && is_plain(text.data() + at)) {
            at += 8;
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = is_control(byte) ? 0
                                   : byte < 0x80    ? 1
                                   : byte < 0xc2    ? 0
                                   : byte < 0xe0    ? 2
                                   : byte < 0xf0    ? 3
                                   : byte < 0xf5    ? 4
                                                    : 0;
        bool good = length != 0;
        for (std::size_t i = 1; good && i < length; ++i)
            good = continues(at + i);
        if (good && length == 3) {
            const auto second = static_cast<unsigned char>(text[at + 1]);
            const bool is_noncharacter =
                byte == 0xef && second == 0xbf && static_cast<unsigned char>(text[at + 2]) >= 0xbe;
            good = !(byte == 0xe0 && second < 0xa0) && !(byte == 0xed && second >= 0xa0) && !is_noncharacter;
        }
        if (good && length == 4) {
            const auto second = static_cast<unsigned char>(text[at + 1]);
            good = !(byte == 0xf0 && second < 0x90) && !(byte == 0xf4 && second >= 0x90);
        }
        if (!good)
            return at;
        at += length;
    }
    return std::string_view::npos;
}

namespace
{

/// Offsets of the line ends. The parser works in place, so they must be known before it runs.
class LineIndex
{
public:
    explicit LineIndex(std::string_view text)
    {
        for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
            ends_.push_back(at);
    }
    std::string place_of(std::size_t offset) const
    {
        const auto next = std::ranges::lower_bound(ends_, offset);
        const std::size_t line_start = next == ends_.begin() ? 0 : *(next - 1) + 1;
        return "line " + std::to_string(next - ends_.begin() + 1) + ", column " +
               std::to_string(offset - line_start + 1);
    }

private:
    std::vector<std::size_t> ends_;
};

/// Messages are UTF-8 (RFC 6241, section 3); a document that begins as another encoding or declares one is refused.
bool is_declared_utf8(std::string_view text)
{
    if (text.find('\0') < 4 || text.starts_with("\xfe\xff") || text.starts_with("\xff\xfe"))
        return false;
    text.remove_prefix(text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    if (!text.starts_with("<?xml"))
        return true;
    std::string declaration(text.substr(0, std::min<std::size_t>(text.find("?>"), 200)));
    std::ranges::transform(declaration, declaration.begin(), [](unsigned char c) { return std::tolower(c); });
    return declaration.find("encoding") == std::string::npos || declaration.find("utf-8") != std::string::npos ||
           declaration.find("us-ascii") != std::string::npos;
}

/// Whether `name`, what stands between "&" and ";", refers to a character that XML allows.
bool is_good_reference(std::string_view name)
{
    if (!name.starts_with('#'))
        return name == "lt" || name == "gt" || name == "amp" || name == "apos" || name == "quot";
    const bool hexadecimal = name.starts_with("#x");
    name.remove_prefix(hexadecimal ? 2 : 1);
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), code, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != name.data() + name.size())
        return false;
    return code == 0x9 || code == 0xa || code == 0xd || (code >= 0x20 && code <= 0xd7ff) ||
           (code >= 0xe000 && code <= 0xfffd) || (code >= 0x10000 && code <= 0x10ffff);
}

/// Offset of the first "&" that begins no reference, outside comments and CDATA sections; npos if there is none. The
/// parser leaves unknown references as they are, and a reference to U+0000 would end a value early.
std::size_t find_bad_reference(std::string_view text)
{
    std::size_t reference = text.find('&');
    std::size_t section = reference == std::string_view::npos ? reference : text.find("<!");
    while (reference != std::string_view::npos) {
        if (section < reference) {
            const std::string_view close = text.substr(section).starts_with("<![CDATA[") ? "]]>" : "-->";
            const std::size_t end = text.find(close, section);
            if (end == std::string_view::npos)
                return end; // truncated, which the parser says better
            section = text.find("<!", end);
            if (reference < end)
                reference = text.find('&', end);
            continue;
        }
        const std::size_t end = text.find(';', reference);
        if (end == std::string_view::npos || end - reference > 12 ||
            !is_good_reference(text.substr(reference + 1, end - reference - 1)))
            return reference;
        reference = text.find('&', end);
    }
    return reference;
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
        if (!name)
            return tl::make_unexpected(name.error());
        if (is_netconf(*name, "rpc"))
            return rpc(element);
        for (const char *operation : {"edit-config", "get", "get-config"})
            if (is_netconf(*name, operation))
                return this->operation(element, *name);
        const bool bare = *name->ns == '\0' || std::strcmp(name->ns, kNetconfNs) == 0;
        const std::string_view local = bare ? name->local : "";
        if (local == "config") {
            content_.kind = TQM_REQ_EDIT;
            return hold(element);
        }
        if (local == "filter")
            return filter(element);
        if (local == "data")
            return hold(element);
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
        if (!name)
            return failure(std::string("the prefix of element <") + element.name() + "> is not declared");
        return *name;
    }
    static bool is_netconf(const XmlName &name, const char *local)
    {
        return std::strcmp(name.ns, kNetconfNs) == 0 && std::strcmp(name.local, local) == 0;
    }
    Expected<void> hold(pugi::xml_node element)
    {
        content_.holder = element;
        return {};
    }

    Expected<void> rpc(pugi::xml_node element)
    {
        pugi::xml_node operation;
        for (pugi::xml_node child : element.children()) {
            if (child.type() != pugi::node_element)
                continue;
            if (operation)
                return failure(std::string("an <rpc> holds one operation, and <") + child.name() + "> is a second one");
            operation = child;
        }
        if (!operation)
            return failure("the <rpc> holds no operation");
        const auto name = enter(operation);
        if (!name)
            return tl::make_unexpected(name.error());
        return this->operation(operation, *name);
    }

    Expected<void> operation(pugi::xml_node operation, const XmlName &name)
    {
        if (is_netconf(name, "edit-config")) {
            content_.kind = TQM_REQ_EDIT;
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
        return failure(std::string("the operation <") + operation.name() + "> is not offered");
    }

    using Parameter = Expected<bool> (WrapperReader::*)(pugi::xml_node, std::string_view local);

    /// Hands each child to `parameter`, which says false for one that it does not know. `first` and `second` must be
    /// among them (null: nothing must).
    Expected<void> parameters(pugi::xml_node operation, Parameter parameter, const char *first, const char *second)
    {
        const std::size_t mark = content_.scope.enter({});
        std::vector<std::string> seen;
        for (pugi::xml_node child : operation.children()) {
            if (child.type() != pugi::node_element)
                continue;
            const bool leads_to_data = is_data_holder(child.name());
            const std::size_t child_mark = content_.scope.enter(child);
            const auto name = name_of(child);
            if (!name)
                return tl::make_unexpected(name.error());
            if (std::ranges::find(seen, name->local) != seen.end())
                return failure(std::string("<") + child.name() + "> stands twice in <" + operation.name() + ">");
            seen.emplace_back(name->local);
            const bool known = std::strcmp(name->ns, kNetconfNs) == 0;
            const Expected<bool> taken = known ? (this->*parameter)(child, name->local) : Expected<bool>(false);
            if (!taken)
                return tl::make_unexpected(taken.error());
            if (!*taken)
                return failure(std::string("unknown element <") + child.name() + "> in <" + operation.name() + ">");
            if (leads_to_data)
                data_scope_ = content_.scope;
            content_.scope.leave(child_mark);
        }
        content_.scope.leave(mark);
        for (const char *needed : {first, second})
            if (needed != nullptr && std::ranges::find(seen, needed) == seen.end())
                return failure(std::string("<") + operation.name() + "> lacks <" + needed + ">");
        if (data_scope_)
            content_.scope = *data_scope_;
        return {};
    }
    static bool is_data_holder(const char *qualified)
    {
        const char *colon = std::strchr(qualified, ':');
        const std::string_view local = colon == nullptr ? qualified : colon + 1;
        return local == "config" || local == "filter";
    }

    Expected<bool> edit_parameter(pugi::xml_node element, std::string_view local)
    {
        const std::string_view value = element.child_value();
        if (local == "target")
            return datastore(element);
        if (local == "config") {
            content_.holder = element;
            return true;
        }
        if (local == "default-operation") {
            if (value == "none")
                content_.default_operation = DefaultOperation::none;
            else if (value == "replace")
                content_.default_operation = DefaultOperation::replace;
            else if (value != "merge")
                return failure("default-operation '" + std::string(value) + "' is none of merge, replace and none");
            return true;
        }
        if (local == "test-option")
            return one_of("test-option", value, {"test-then-set", "set"});
        if (local == "error-option")
            return one_of("error-option", value, {"stop-on-error", "rollback-on-error"});
        return false;
    }

    static Expected<bool> one_of(const char *name, std::string_view value, std::initializer_list<const char *> offered)
    {
        if (std::ranges::find(offered, value) != offered.end())
            return true;
        std::string text = std::string(name) + " '" + std::string(value) + "' is not offered, only";
        for (const char *offer : offered)
            text += std::string(offer == *offered.begin() ? " " : " and ") + offer;
        return failure(text);
    }

    Expected<bool> get_parameter(pugi::xml_node element, std::string_view local)
    {
        if (local == "source")
            return datastore(element);
        if (local != "filter")
            return false;
        if (const Expected<void> read = filter(element); !read)
            return tl::make_unexpected(read.error());
        content_.selects_all = false;
        return true;
    }

    Expected<void> filter(pugi::xml_node element)
    {
        for (pugi::xml_attribute attribute : element.attributes()) {
            if (XmlScope::is_declaration(attribute.name()))
                continue;
            const auto name = content_.scope.attribute_name(attribute.name());
            if (!name || std::strcmp(name->local, "type") != 0)
                return failure(std::string("unknown attribute '") + attribute.name() + "' of <filter>");
            if (std::strcmp(attribute.value(), "subtree") != 0)
                return failure(std::string("filters of type '") + attribute.value() +
                               "' are not offered, only subtree");
        }
        content_.is_filter = true;
        return hold(element);
    }

    Expected<bool> datastore(pugi::xml_node element)
    {
        pugi::xml_node store =
            element.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
        const auto name = store ? content_.scope.element_name(store.name()) : std::nullopt;
        if (!name || std::strcmp(name->local, "running") != 0)
            return failure(std::string("the ") + element.name() + " '" + (store ? store.name() : "") +
                           "' does not exist: the only datastore is running");
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
    if (content->buffer == nullptr)
        return failure("out of memory");
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
        if (size < capacity)
            break;
        capacity *= 2;
        char *larger = static_cast<char *>(std::realloc(memory, capacity));
        if (larger == nullptr)
            std::free(memory);
        memory = larger;
    }
    if (memory == nullptr)
        throw std::bad_alloc();
    std::shared_ptr<char[]> buffer(memory, [](char *done) { std::free(done); });
    auto content = std::make_unique<Content>();
    content->buffer = std::move(buffer);
    content->size = size;
    if (std::ferror(file) != 0)
        return failure(std::string("the request cannot be read: ") + std::strerror(errno));
    return parse_buffer(std::move(content));
}

Expected<Document> Document::read_file(const std::filesystem::path &path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    if (file == nullptr && errno == ENOMEM)
        throw std::bad_alloc();
    if (file == nullptr)
        return failure("cannot open '" + path.string() + "': " + std::strerror(errno));
    Expected<Document> document = read(file.get());
    if (!document)
        document.error().text = path.string() + ": " + document.error().text;
    return document;
}

Expected<Document> Document::parse_buffer(std::unique_ptr<Content> content)
{
    const std::string_view text{content->buffer.get(), content->size};
    if (text.empty())
        return failure("the request is empty");
    if (!is_declared_utf8(text))
        return failure("the request is no UTF-8 text");
    const LineIndex lines(text);
    if (const std::size_t bad = find_bad_character(text); bad != std::string_view::npos)
        return failure("the request has bytes that are no XML character in UTF-8 at " + lines.place_of(bad));
    if (is_json(text)) {
        if (Expected<void> read = read_json(text, *content); !read)
            return tl::make_unexpected(read.error());
        if (const Expected<void> read = WrapperReader(*content).root(content->dom.first_child()); !read)
            return tl::make_unexpected(read.error());
        return Document(std::move(content));
    }
    if (const std::size_t bad = find_bad_reference(text); bad != std::string_view::npos)
        return failure("the request is no XML document: '&' begins no reference to a character at " +
                       lines.place_of(bad));
    constexpr unsigned int options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                     pugi::parse_eol | pugi::parse_embed_pcdata | pugi::parse_doctype |
                                     pugi::parse_fragment;
    const pugi::xml_parse_result result =
        content->dom.load_buffer_inplace(content->buffer.get(), content->size, options, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory)
        throw std::bad_alloc();
    if (!result)
        return failure(std::string("the request is no XML document: ") + result.description() + " at " +
                       lines.place_of(static_cast<std::size_t>(result.offset)));

    pugi::xml_node root;
    for (pugi::xml_node node : content->dom.children()) {
        if (node.type() == pugi::node_doctype)
            return failure("a document type declaration is not allowed");
        if (node.type() != pugi::node_element)
            return failure("the request is no XML document: there is text outside its root element");
        if (root)
            return failure(std::string("the request has a second root element, <") + node.name() + ">");
        root = node;
    }
    if (!root)
        return failure("the request has no element");
    if (const Expected<void> read = WrapperReader(*content).root(root); !read)
        return tl::make_unexpected(read.error());
    return Document(std::move(content));
}

} // namespace tqm
