#include "case_request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

#include "ymap_oc_macsec.h"

namespace test
{

Lines words(const std::string &text, char separator)
{
    Lines found;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, separator);) {
        found.push_back(word);
    }
    return found;
}

namespace
{

// ---- The request ---------------------------------------------------------------------------------------------------

uint32_t kind_of(const std::string &name)
{
    static const std::map<std::string, uint32_t> kinds = {
        {"edit", TQM_REQ_EDIT}, {"get", TQM_REQ_GET}, {"get-config", TQM_REQ_GET_CONFIG}};
    const auto found = kinds.find(name);
    return found != kinds.end() ? found->second : static_cast<uint32_t>(std::stoul(name));
}

/// {text*3} as texttexttext.
std::string repeated(const std::string &text)
{
    static const std::regex form(R"(\{([^{}*]*)\*(\d+)\})");
    std::string made = text;
    for (std::smatch match; std::regex_search(made, match, form);) {
        std::string many;
        for (int count = std::stoi(match[2]); count > 0; --count) {
            many += match[1].str();
        }
        made = match.prefix().str() + many + match.suffix().str();
    }
    return made;
}

/// `text` with the fields of a row in place of @1, @2 and so on.
std::string filled_in(std::string text, const Lines &fields)
{
    for (std::size_t number = 9; number > 0; --number) {
        const std::string mark = "@" + std::to_string(number);
        const std::string value = number <= fields.size() ? fields[number - 1] : "";
        for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += value.size()) {
            text.replace(at, mark.size(), value);
        }
    }
    return text;
}

} // namespace

Request request_of(const Case &one, const std::string &row)
{
    const bool forward = one.has("forward");
    const Direction direction = forward ? Direction::forward : Direction::reverse;
    std::string kind = one.setting(forward ? "forward" : "reverse");
    std::string inside;
    for (const std::string &line : one.request) {
        inside += line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    std::string values = row;
    if (const std::size_t colon = row.find(": "); one.has("kinds") && colon != std::string::npos) {
        kind = row.substr(0, colon);
        values = row.substr(colon + 2);
    }
    inside = inside.empty() ? "@1" : inside;
    const Lines fields = one.has("fields") ? words(values, '|') : Lines{values};
    inside = filled_in(inside, fields);
    std::string path = one.setting("in");
    if (path == "@") { // a row is its own path
        path = inside;
        inside.clear();
    }
    const uint32_t number = kind_of(kind);
    return {direction, number, document(number, direction, repeated(wrap(path, inside))), fields};
}

namespace
{

// ---- What no document can say --------------------------------------------------------------------------------------

/// The node at a path of tags below `root`; the tag of `root` stands first.
rdl_tqm_datatree *node_at(rdl_tqm_datatree *root, const std::string &path)
{
    rdl_tqm_datatree *node = root;
    Lines tags = words(path, '/');
    for (std::size_t index = 1; index < tags.size() && node != nullptr; ++index) {
        rdl_tqm_datatree *next = nullptr;
        for (uint32_t child = 0; child < node->subtree_count && next == nullptr; ++child) {
            if (node->subtree[child].tag != nullptr && node->subtree[child].tag == tags[index]) {
                next = &node->subtree[child];
            }
        }
        node = next;
    }
    EXPECT_NE(node, nullptr) << path;
    return node;
}

/// "set PATH FIELD [VALUE]".
void set_field(Walk &walk, const std::string &setting)
{
    const Lines parts = words(setting);
    rdl_tqm_datatree *const node = node_at(walk.tree(), parts.at(0));
    const std::string &field = parts.at(1);
    if (node == nullptr) {
        return; // which is told
    }
    if (field == "no-tag") {
        node->tag = nullptr;
    } else if (field == "no-value") {
        node->value = nullptr;
        node->present = static_cast<uint16_t>(node->present & ~TQM_PRESENT_VALUE);
    } else if (field == "value") {
        static std::string kept;
        kept = parts.at(2);
        node->value = kept.c_str();
        node->present |= TQM_PRESENT_VALUE;
    } else if (field == "no-children") {
        node->subtree = nullptr;
        node->subtree_count = 0;
        node->present = static_cast<uint16_t>(node->present & ~TQM_PRESENT_SUBTREE);
    } else if (field == "missing-children") { // some are said to be there
        node->subtree = nullptr;
        node->subtree_count = 2;
        node->present |= TQM_PRESENT_SUBTREE;
    } else if (field == "ungiven-children") { // the presence bit alone decides
        node->present = static_cast<uint16_t>(node->present & ~TQM_PRESENT_SUBTREE);
    } else if (field == "operation") {
        node->operation = static_cast<uint32_t>(std::stoul(parts.at(2)));
        node->present |= TQM_PRESENT_OPERATION;
    } else if (field == "xpath-error") {
        node->error_kind = TQM_NODE_ERROR_XPATH;
        node->present |= TQM_PRESENT_ERROR_KIND;
    } else {
        ADD_FAILURE() << "no field: " << setting;
    }
}

void prepare(Walk &walk, const Case &one, const Lines &fields)
{
    tqm_map_request &record = *walk.ctx()->request;
    for (const auto &[word, rest] : one.settings) {
        if (word == "set") {
            set_field(walk, filled_in(rest, fields));
        } else if (word == "delete-mode") {
            record.delete_mode = static_cast<uint32_t>(std::stoul(rest));
        } else if (word == "fill-mode") {
            record.fill_mode = static_cast<uint32_t>(std::stoul(rest));
        } else if (word == "option-group-9") {
            record.hdr->option_group_9 = static_cast<int16_t>(std::stoi(rest));
        } else if (word == "data-selector") {
            record.hdr->data_selector = static_cast<uint32_t>(std::stoul(rest));
        }
    }
}

} // namespace

Walk walked(const Case &one, const Request &request, const std::optional<std::pair<std::string, unsigned int>> &fault,
            rcode code)
{
    static auto *const kept_chain = static_cast<macsec_kc_record *>(symbol("macsec_kc"));
    *kept_chain = {};
    Walk walk(request.kind, request.direction);
    for (const auto &[word, rest] : one.settings) {
        if (word == "without-configuration") {
            walk.without_configuration();
        } else if (word == "fault") {
            const Lines parts = words(rest);
            walk.fault(parts.at(0), static_cast<unsigned int>(std::stoul(parts.at(1))),
                       parts.size() > 2 ? TQM_ERR_SKIP_NODE : failure);
        }
    }
    if (fault) {
        walk.fault(fault->first, fault->second, code);
    }
    walk.load(request.document);
    if (walk.tree() == nullptr) {
        return walk; // which has said why
    }
    prepare(walk, one, request.fields);
    if (one.has("call")) { // a function, and the path of the node that it gets
        const Lines parts = words(one.setting("call"));
        walk.run(parts.at(0), node_at(walk.tree(), parts.at(1)));
    } else {
        walk.run();
    }
    // Key texts are seen nowhere but in the native tree.
    for (const Lines &lines : {walk.calls(), walk.lines(), walk.logged(), Lines{walk.outcome()}}) {
        for (const std::string &line : lines) {
            EXPECT_EQ(line.find("SECRET"), std::string::npos) << line;
        }
    }
    return walk;
}

} // namespace test
