// The parser calls the handler below for each token; nothing but the document object is built.
#include "documents/json_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "documents/json_cursor.h"
#include "documents/json_names.h"
#include "text/characters.h"
#include "text/line_index.h"

namespace tqm
{

namespace
{

using Json = nlohmann::json;

constexpr std::size_t depth_max = 260; ///< of a request and what stands around it
constexpr const char *operation = "ietf-netconf:operation";

bool is_wrapper(std::string_view name)
{
    return name == "rpc" || name == "rpc-reply" || name == "config" || name == "filter" || name == "data";
}

/// Annotations of one member, until all of the object around it is known.
struct Annotation {
    std::string member;   ///< empty: the object itself
    pugi::xml_node after; ///< what stood before it
    bool is_array = false;
    std::vector<std::string> operations; ///< an empty text: none
};

struct Level {
    enum Kind { object, array, annotation_object, annotation_array };
    Kind kind = object;
    pugi::xml_node node; ///< the element that is filled; of an array the one around it
    std::string member;  ///< the member that is being read; of an array the one that it is the value of
    NameSet names;
    std::vector<Annotation> annotations;
    enum { empty, scalars, objects } content = empty; ///< of an array

    void begin(Kind new_kind, pugi::xml_node new_node)
    {
        kind = new_kind;
        node = new_node;
        member.clear();
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

void add_attribute(pugi::xml_node node, const char *name, const char *value)
{
    pugi::xml_attribute attribute = node.append_attribute(name);
    require_memory(*attribute.name() != '\0' && attribute.set_value(value));
}

/// Each function takes one token in. False ends the parsing; the error is there then.
class Handler final : public nlohmann::json_sax<Json>
{
public:
    explicit Handler(pugi::xml_node root) : root_(root) {}

    const Error &error() const { return error_; }
    /// How many bytes were read when the text turned out to be no JSON; none if it is, or as far as that is known.
    std::optional<std::size_t> syntax_error() const { return syntax_error_; }

    bool null() override { return in_annotation() ? null_annotation() : scalar(""); }
    bool boolean(bool value) override { return scalar(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return number(value); }
    bool number_unsigned(number_unsigned_t value) override { return number(value); }
    bool number_float(number_float_t, const string_t &text) override { return scalar(text); }
    bool string(string_t &text) override { return scalar(text); }
    bool binary(binary_t &) override { return fail("there is binary data"); }

    bool start_object(std::size_t) override
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

    bool key(string_t &name) override
    {
        Level &level = top();
        level.member = name;
        if (!level.names.insert(name)) {
            return fail("the member '" + name + "' stands twice in one object");
        }
        if (level.kind == Level::object && name.starts_with('@')) {
            level.annotations.push_back({name.substr(1), level.node.last_child(), false, {}});
        }
        return true;
    }

    bool end_object() override
    {
        if (top().kind == Level::object && !annotate(top())) {
            return false;
        }
        --depth_;
        return true;
    }

    bool start_array(std::size_t) override
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
        if (!push(Level::array, level.node)) {
            return false;
        }
        top().member = level.member;
        return true;
    }

    bool end_array() override
    {
        --depth_;
        return true;
    }

    // What the exception says may hold a value of the document: only the place is taken.
    bool parse_error(std::size_t position, const std::string &, const nlohmann::detail::exception &exception) override
    {
        constexpr int number_overflow = 406;
        if (exception.id == number_overflow) {
            return fail("there is a number that is too large");
        }
        syntax_error_ = position;
        return fail("the request is no JSON document: syntax error");
    }

private:
    bool fail(std::string text)
    {
        error_.text = std::move(text);
        return false;
    }

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
            return fail("the array '" + level.member + "' holds objects beside other values");
        }
        level.content = content;
        return true;
    }

    template <class Number>
    bool number(Number value)
    {
        std::array<char, 24> text;
        const std::to_chars_result written = std::to_chars(text.begin(), text.end(), value);
        return scalar({text.begin(), written.ptr});
    }

    bool scalar(std::string_view text)
    {
        if (depth_ == 0) {
            return fail("a request is a JSON object");
        }
        if (in_annotation()) {
            return annotation_value(std::string(text));
        }
        if (!enters(Level::scalars)) {
            return false;
        }
        pugi::xml_node leaf = element();
        if (!leaf) {
            return false;
        }
        if (text::find_bad_character(text) != text.npos) {
            return fail("the value of '" + top().member + "' holds a character that XML cannot carry");
        }
        if (!text.empty()) {
            require_memory(leaf.append_child(pugi::node_pcdata).set_value(text.data(), text.size()));
        }
        return true;
    }

    pugi::xml_node element() { return element(top().node, top().member, {}); }

    /// The element of a member: behind `after`, or behind all others. Null if its name is none.
    pugi::xml_node element(pugi::xml_node parent, const std::string &member, std::optional<pugi::xml_node> after)
    {
        const std::size_t colon = member.find(':');
        const bool has_module = colon != std::string::npos;
        const std::string_view name = std::string_view(member).substr(has_module ? colon + 1 : 0);
        if (!is_identifier(name) || (has_module && !is_identifier({member.data(), colon}))) {
            fail("'" + member.substr(0, 100) + "' is no name of a member: it is a name or 'module:name'");
            return {};
        }
        const bool is_outermost = parent == root_;
        if (is_outermost && !has_module && !is_wrapper(name)) {
            fail("the member '" + member + "' must name its module, as 'module:" + member + "'");
            return {};
        }
        pugi::xml_node node = !after   ? parent.append_child(name.data())
                              : *after ? parent.insert_child_after(name.data(), *after)
                                       : parent.prepend_child(name.data());
        require_memory(*node.name() != '\0');
        if (has_module) {
            const std::string module = member.substr(0, colon);
            add_attribute(node, "xmlns", module == "ietf-netconf" ? netconf_ns : module.c_str());
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

    bool annotation_value(const std::string &text)
    {
        const Level &level = top();
        if (level.kind != Level::annotation_object) {
            return fail("the annotations of '" + annotation().member + "' are no object");
        }
        if (level.member != operation) {
            return fail("unknown annotation '" + level.member + "': only " + operation + " is known");
        }
        // An empty text would be taken for none, and one with other characters end early.
        if (text.empty() || text::find_bad_character(text) != text.npos) {
            return fail("operation '" + text + "' is none of merge, replace, create, delete and remove");
        }
        annotation().operations.back() = text;
        return true;
    }

    using Members = std::unordered_map<std::string, std::vector<pugi::xml_node>>;

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
        const bool is_qualified = colon != std::string::npos;
        const std::string_view module =
            is_qualified ? std::string_view(annotation.member).substr(0, colon) : module_of(level.node);
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
            const bool says_nothing = std::ranges::all_of(found->operations, &std::string::empty);
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
        const std::string name = "'@" + annotation.member + "'";
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
                add_attribute(node, "nc:operation", annotation.operations[i].c_str());
            }
        }
        return true;
    }

    pugi::xml_node root_;
    std::deque<Level> levels_; ///< of which `depth_` are in use; their memory is used again
    std::size_t depth_ = 0;
    Error error_;
    std::optional<std::size_t> syntax_error_;
};

} // namespace

bool is_json(std::string_view text)
{
    text.remove_prefix(text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && (text[begin] == '{' || text[begin] == '[');
}

Expected<void> read_json(std::string_view text, DocumentContent &content)
{
    pugi::xml_node root = content.dom.append_child("data");
    require_memory(*root.name() != '\0');
    Handler handler(root);
    const char *const end = text.data() + text.size();
    const char *read = text.data();
    if (!Json::sax_parse(JsonCursor(read, end, read), JsonCursor(end, end, read), &handler)) {
        Error error = handler.error();
        error.error_tag = ErrorTag::malformed_message;
        error.type = ErrorType::rpc;
        const std::size_t offset = handler.syntax_error() ? json_offset(text, *handler.syntax_error())
                                   : read == text.data()  ? 0
                                                          : static_cast<std::size_t>(read - text.data()) - 1;
        error.text += " at " + text::LineIndex(text).place_of(offset);
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
