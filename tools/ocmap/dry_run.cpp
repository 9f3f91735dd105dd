#include "dry_run.h"

#include <nlohmann/json.hpp>

#include "printable.h"

namespace ocmap
{
namespace
{

using Kind = router::Change::Kind;

const char *verb(Kind kind)
{
    return kind == Kind::set ? "set" : kind == Kind::changed ? "change" : "remove";
}

std::string line(const router::Change &change)
{
    std::string text = std::string("would ") + verb(change.kind) + " " + printable(change.path);
    if (change.has_value && change.kind == Kind::changed) {
        text += ": " + printable(change.before) + " -> " + printable(change.after);
    } else if (change.has_value && !change.after.empty()) {
        text += " = " + printable(change.after);
    }
    return text + "\n";
}

std::string json(const std::vector<router::Change> &changes, const std::vector<std::string> &notes)
{
    nlohmann::ordered_json told = nlohmann::ordered_json::array();
    for (const router::Change &change : changes) {
        nlohmann::ordered_json &one = told.emplace_back();
        one["would"] = verb(change.kind);
        one["path"] = change.path;
        if (change.has_value && change.kind == Kind::changed) {
            one["before"] = change.before;
        }
        if (change.has_value && change.kind != Kind::removed) {
            one["value"] = change.after;
        }
    }
    nlohmann::ordered_json document;
    document["changes"] = std::move(told);
    document["notes"] = notes;
    return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

router::Expected<void> Preview::apply(const router::EditNode *trees)
{
    auto changes = datastore().preview(trees);
    if (!changes) {
        return tl::unexpected(std::move(changes.error()));
    }
    changes_ = std::move(*changes);
    return {};
}

std::string dry_run_text(const std::vector<router::Change> &changes, const std::vector<std::string> &notes,
                         tqm::Format format)
{
    if (format == tqm::Format::json) {
        return json(changes, notes);
    }
    std::string text = changes.empty() ? "would change nothing\n" : "";
    for (const router::Change &change : changes) {
        text += line(change);
    }
    for (const std::string &note : notes) {
        text += "note: " + printable(note) + "\n";
    }
    return text;
}

} // namespace ocmap
