// The parser calls the handler below for each token; nothing but the document object is built. Strings are decoded in
// place: all texts that the handler gets and keeps lie in the document's buffer.
#include "documents/json_reader.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// Texts may have any size, and nothing that a document holds may end the process.
#define RAPIDJSON_NO_SIZETYPEDEFINE
namespace rapidjson
{
using SizeType = std::size_t;
}
#define RAPIDJSON_ASSERT(holds) static_cast<void>(0)
#include <rapidjson/reader.h>

#include "documents/json_names.h"
#include "documents/xml_text.h"
#include "text/characters.h"
#include "text/line_index.h"

namespace tqm
{

namespace
{

constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
constexpr std::size_t depth_max = 260; ///< of a request and what stands around it
constexpr std::string_view operation = "ietf-netconf:operation";

bool is_wrapper(std::string_view name)
{
    return name == "rpc" || name == "rpc-reply" || name == "config" || name == "filter" || name == "data";
}

/// Annotations of one member, until all of the object around it is known.
struct Annotation {
    std::string_view member; ///< empty: the object itself
    pugi::xml_node after;    ///< what stood before it
    bool is_array = false;
    std::vector<std::string_view> operations; ///< an empty text: none
};

struct Level {
    enum Kind { object, array, annotation_object, annotation_array };
    Kind kind = object;
    pugi::xml_node node;     ///< the element that is filled; of an array the one around it
    std::string_view member; ///< the member that is being read; of an array the one that it is the value of
    NameSet names;
    std::vector<Annotation> annotations;
    enum { empty, scalars, objects } content = empty; ///< of an array

    void begin(Kind new_kind, pugi::xml_node new_node)
    {
        kind = new_kind;
        node = new_node;
        member = {};
        names.clear();
        annotations.clear();
        content = empty;
    }
};

/// What pugixml could not make for want of memory is false, null or without its name.
void require_memory(bool made)
{
    if (!made) {
        throw std::bad_alloc();
    }
}

void add_attribute(pugi::xml_node node, const char *name, std::string_view value)
{
    pugi::xml_attribute attribute = node.append_attribute(name);
    require_memory(*attribute.name() != '\0' && attribute.set_value(value.data(), value.size()));
}

/// Whether an escape was half a surrogate pair, as the parser lets the second one stand alone. Bytes of them are
/// nowhere else, as the document is UTF-8.
bool has_surrogate(std::string_view text)
{
    for (std::size_t at = text.find('\xed'); at < text.size(); at = text.find('\xed', at + 1)) {
        if (static_cast<unsigned char>(text[at + 1]) >= 0xa0) {
            return true;
        }
    }
    return false;
}

/// Each function takes one token in. False ends the parsing; the error is there then.
class Handler final : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler>
{
public:
    /// Without escapes the characters of strings are those of the text, which were looked at before.
    Handler(pugi::xml_node root, bool has_escapes) : root_(root), has_escapes_(has_escapes) {}

    const Error &error() const { return error_; }
    bool fail(std::string text)
    {
        error_.text = std::move(text);
        return false;
    }
    bool fail_at_syntax() { return fail("the request is no JSON document: syntax error"); }

    // NOLINTBEGIN(readability-identifier-naming): the parser's names
    bool Null() { return in_annotation() ? null_annotation() : scalar(""); }
    bool Bool(bool value) { return scalar(value ? "true" : "false"); }
    bool RawNumber(const char *text, std::size_t size, bool)
    {
        const std::string_view number(text, size);
        return scalar(number == "-0" ? "0" : number); // the one integer that has a second form
    }
    bool String(const char *text, std::size_t size, bool)
    {
        return has_escapes_ && has_surrogate({text, size}) ? fail_at_syntax() : scalar({text, size});
    }

    bool StartObject()
    {
        if (depth_ == 0) {
            return push(Level::object, root_);
        }
        if (in_annotation()) {
            return start_annotation();
        }
        if (!enters(Level::objects)) {
            return false;
        }
        const pugi::xml_node node = element();
        return node && push(Level::object, node);
    }

    bool Key(const char *text, std::size_t size, bool)
    {
        const std::string_view name(text, size);
        if (has_escapes_ && has_surrogate(name)) {
            return fail_at_syntax();
        }
        Level &level = top();
        level.member = name;
        if (!level.names.insert(name)) {
            return fail("the member '" + std::string(name) + "' stands twice in one object");
        }
        if (level.kind == Level::object && name.starts_with('@')) {
            level.annotations.push_back({name.substr(1), level.node.last_child(), false, {}});
        }
        return true;
    }

    bool EndObject(std::size_t)
    {
        if (top().kind == Level::object && !annotate(top())) {
            return false;
        }
        --depth_;
        return true;
    }

    bool StartArray()
    {
        if (depth_ == 0) {
            return fail("a request is a JSON object, not an array");
        }
        Level &level = top();
        if (in_annotation()) {
            if (level.kind != Level::object || level.annotations.back().member.empty()) {
                return fail("there is an array where an annotation has none");
            }
            level.annotations.back().is_array = true;
            return push(Level::annotation_array, level.node);
        }
        if (level.kind == Level::array) {
            return fail("there is an array in an array");
        }
        const std::string_view member = level.member;
        if (!push(Level::array, level.node)) {
            return false;
        }
        top().member = member;
        return true;
    }

    bool EndArray(std::size_t)
    {
        --depth_;
        return true;
    }
    // NOLINTEND(readability-identifier-naming)

private:
    bool push(Level::Kind kind, pugi::xml_node node)
    {
        if (depth_ >= depth_max) {
            return fail("the request is nested too deep");
        }
        if (depth_ == levels_.size()) {
            levels_.emplace_back();
        }
        levels_[depth_++].begin(kind, node);
        return true;
    }

    Level &top() { return levels_[depth_ - 1]; }
    const Level &top() const { return levels_[depth_ - 1]; }

    // ---- Data ----

    /// An array holds scalars, the values of a leaf-list, or objects, the entries of a list.
    bool enters(decltype(Level::content) content)
    {
        Level &level = top();
        if (level.kind != Level::array) {
            return true;
        }
        if (level.content != Level::empty && level.content != content) {
            return fail("the array '" + std::string(level.member) + "' holds objects beside other values");
        }
        level.content = content;
        return true;
    }

    bool scalar(std::string_view text)
    {
        if (depth_ == 0) {
            return fail("a request is a JSON object");
        }
        if (in_annotation()) {
            return annotation_value(text);
        }
        if (!enters(Level::scalars)) {
            return false;
        }
        pugi::xml_node leaf = element();
        if (!leaf) {
            return false;
        }
        if (has_escapes_ && text::find_bad_character(text) != text.npos) {
            return fail("the value of '" + std::string(top().member) + "' holds a character that XML cannot carry");
        }
        if (!text.empty()) {
            require_memory(leaf.append_child(pugi::node_pcdata).set_value(text.data(), text.size()));
        }
        return true;
    }

    pugi::xml_node element() { return element(top().node, top().member, {}); }

    /// The element of a member: behind `after`, or behind all others. Null if its name is none.
    pugi::xml_node element(pugi::xml_node parent, std::string_view member, std::optional<pugi::xml_node> after)
    {
        const std::size_t colon = member.find(':');
        const bool has_module = colon != member.npos;
        const std::string_view name = member.substr(has_module ? colon + 1 : 0);
        if (!is_identifier(name) || (has_module && !is_identifier(member.substr(0, colon)))) {
            fail("'" + std::string(member.substr(0, 100)) + "' is no name of a member: it is a name or 'module:name'");
            return {};
        }
        const bool is_outermost = parent == root_;
        if (is_outermost && !has_module && !is_wrapper(name)) {
            fail("the member '" + std::string(member) + "' must name its module, as 'module:" + std::string(member) +
                 "'");
            return {};
        }
        pugi::xml_node node = !after   ? parent.append_child(name.data())
                              : *after ? parent.insert_child_after(name.data(), *after)
                                       : parent.prepend_child(name.data());
        require_memory(*node.name() != '\0');
        if (has_module) {
            const std::string_view module = member.substr(0, colon);
            add_attribute(node, "xmlns", module == "ietf-netconf" ? netconf_ns : module);
        }
        if (is_outermost) {
            add_attribute(node, "xmlns:nc", netconf_ns);
        }
        return node;
    }

    // ---- Metadata (RFC 7952, section 5.2) ----

    bool in_annotation() const
    {
        if (depth_ == 0) {
            return false;
        }
        const Level &level = top();
        return level.kind == Level::annotation_object || level.kind == Level::annotation_array ||
               (level.kind == Level::object && level.member.starts_with('@'));
    }

    /// The annotations that are being read: they are those of the innermost object.
    Annotation &annotation()
    {
        std::size_t level = depth_ - 1;
        while (levels_[level].kind != Level::object) {
            --level;
        }
        return levels_[level].annotations.back();
    }

    bool start_annotation()
    {
        if (top().kind == Level::annotation_object) {
            return fail("an annotation has no object for its value");
        }
        annotation().operations.emplace_back();
        return push(Level::annotation_object, top().node);
    }

    bool null_annotation()
    {
        if (top().kind != Level::annotation_array) {
            return fail("there is null for an annotation");
        }
        annotation().operations.emplace_back();
        return true;
    }

    bool annotation_value(std::string_view text)
    {
        const Level &level = top();
        if (level.kind != Level::annotation_object) {
            return fail("the annotations of '" + std::string(annotation().member) + "' are no object");
        }
        if (level.member != operation) {
            return fail("unknown annotation '" + std::string(level.member) + "': only " + std::string(operation) +
                        " is known");
        }
        // An empty text would be taken for none, and one with other characters end early.
        if (text.empty() || text::find_bad_character(text) != text.npos) {
            return fail("operation '" + std::string(text) + "' is none of merge, replace, create, delete and remove");
        }
        annotation().operations.back() = text;
        return true;
    }

    using Members = std::unordered_map<std::string_view, std::vector<pugi::xml_node>>;

    std::string_view module_of(pugi::xml_node node) const
    {
        while (node != root_ && !node.attribute("xmlns")) {
            node = node.parent();
        }
        return node.attribute("xmlns").value();
    }

    /// The object itself, or its members of the annotation's name and module.
    std::vector<pugi::xml_node> annotated(const Annotation &annotation, const Level &level, Members &members) const
    {
        if (annotation.member.empty()) {
            return {level.node};
        }
        const std::size_t colon = annotation.member.find(':');
        const bool is_qualified = colon != annotation.member.npos;
        const std::string_view module = is_qualified ? annotation.member.substr(0, colon) : module_of(level.node);
        std::vector<pugi::xml_node> nodes = members[annotation.member.substr(is_qualified ? colon + 1 : 0)];
        std::erase_if(nodes, [&](pugi::xml_node node) { return module_of(node) != module; });
        return nodes;
    }

    bool annotate(Level &level)
    {
        if (level.annotations.empty()) {
            return true;
        }
        Members members;
        for (pugi::xml_node child : level.node.children()) {
            members[child.name()].push_back(child);
        }
        // Backwards, so that leaves which only have annotations come to stand in their order.
        for (auto found = level.annotations.rbegin(); found != level.annotations.rend(); ++found) {
            std::vector<pugi::xml_node> nodes = annotated(*found, level, members);
            const bool says_nothing = std::ranges::all_of(found->operations, &std::string_view::empty);
            if (nodes.empty() && says_nothing) {
                continue;
            }
            if (nodes.empty()) {
                nodes = {element(level.node, found->member, found->after)};
            }
            if (!nodes.front() || !annotate(*found, nodes)) {
                return false;
            }
        }
        return true;
    }

    bool annotate(const Annotation &annotation, const std::vector<pugi::xml_node> &nodes)
    {
        const std::string name = "'@" + std::string(annotation.member) + "'";
        if (nodes.front() == root_) {
            return fail("the outermost object has no annotations");
        }
        if (!annotation.member.empty() && nodes.front().first_child().type() == pugi::node_element) {
            return fail(name + " is for a leaf; annotations of an object stand in its own '@'");
        }
        if (!annotation.is_array && nodes.size() > 1) {
            return fail(name + " is for several values: its annotations are an array");
        }
        if (annotation.operations.size() > nodes.size()) {
            return fail(name + " has annotations for more values than there are");
        }
        for (std::size_t i = 0; i < annotation.operations.size(); ++i) {
            pugi::xml_node node = nodes[i];
            if (!annotation.operations[i].empty()) {
                add_attribute(node, "nc:operation", annotation.operations[i]);
            }
        }
        return true;
    }

    pugi::xml_node root_;
    bool has_escapes_;
    std::vector<Level> levels_; ///< of which `depth_` are in use; their memory is used again
    std::size_t depth_ = 0;
    Error error_;
};

/// Where the text is no JSON, or what was refused ends; `read` bytes were read. A number ends with the byte that is no
/// more a part of it, and the parser says where it begins.
std::size_t fault_offset(const rapidjson::ParseResult &result, std::size_t read, std::string_view text)
{
    switch (result.Code()) {
    case rapidjson::kParseErrorTermination:
        return result.Offset() == read ? read - 1 : std::min(read, text.size() - 1);
    case rapidjson::kParseErrorNumberTooBig:
        return std::min(text.find_first_not_of("+-.0123456789Ee", result.Offset()), text.size() - 1);
    default:
        return result.Offset();
    }
}

} // namespace

bool is_json(std::string_view text)
{
    text.remove_prefix(text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0);
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && (text[begin] == '{' || text[begin] == '[');
}

Expected<void> read_json(const text::LineIndex &lines, DocumentContent &content)
{
    pugi::xml_node root = content.dom.append_child("data");
    require_memory(*root.name() != '\0');
    const std::string_view text(content.buffer.get(), content.size);
    content.buffer[static_cast<std::ptrdiff_t>(content.size)] = '\0';
    rapidjson::InsituStringStream stream(content.buffer.get());
    if (text.starts_with(byte_order_mark)) {
        stream.src_ += byte_order_mark.size();
    }
    // In place it allocates nothing. It calls itself no deeper than the handler lets it.
    constexpr unsigned int flags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::Reader reader;
    Handler handler(root, text.find('\\') != text.npos);
    if (const rapidjson::ParseResult result = reader.Parse<flags>(stream, handler); result.IsError()) {
        if (result.Code() == rapidjson::kParseErrorNumberTooBig) {
            handler.fail("there is a number that is too large");
        } else if (result.Code() != rapidjson::kParseErrorTermination) {
            handler.fail_at_syntax();
        }
        Error error = handler.error();
        error.error_tag = ErrorTag::malformed_message;
        error.type = ErrorType::rpc;
        error.text += " at " + lines.place_of(fault_offset(result, stream.Tell(), text));
        return tl::unexpected(error);
    }
    if (root.first_child() && !root.first_child().next_sibling()) {
        require_memory(!content.dom.append_move(root.first_child()).empty());
        content.dom.remove_child(root);
    }
    content.json = true;
    return {};
}

} // namespace tqm
