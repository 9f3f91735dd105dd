// One element of a document: its name and namespace, its attributes, its text, and its place where it is at fault. How
// elements make a tree is left to the loader.
#pragma once

#include <optional>
#include <string>

#include <pugixml.hpp>

#include "documents/document_content.h"
#include "documents/tree_loader.h"

namespace tqm
{

/// True for a text of white space alone.
bool is_blank(const char *text);

class ElementReader
{
public:
    ElementReader(const LoadRules &rules, const LoadTarget &target, const DocumentContent &content);

    bool is_edit() const { return !rules_.kind.is_read(); }
    bool is_reverse() const { return !rules_.kind.is_forward(); }
    /// True in a client's read: it may have several top elements, also those of models that are not here.
    bool is_filter() const { return is_filter_; }

    /// Takes in the namespaces that `element` declares; leave() is to be given the answer.
    std::size_t enter(pugi::xml_node element) { return scope_.enter(element); }
    void leave(std::size_t mark) { scope_.leave(mark); }
    bool declares_too_much() const { return scope_.overfull(); }

    /// Fails where there is no such prefix, or no such module.
    std::optional<XmlName> name_of(pugi::xml_node element);
    /// The namespace as the request keeps it.
    const char *kept_ns(const char *ns);
    /// Gives `record` the operation that the element's attributes say; false if one of them has no place here.
    bool attributes(pugi::xml_node element, rdl_tqm_datatree &record);
    /// `split`: comments and CDATA sections cut the text into pieces.
    const char *whole_text(pugi::xml_node element, bool split);
    /// Without the white space at its ends.
    const char *trimmed(const char *value);

    /// Where the element stands, with the keys that are given so far as text.
    InstancePath place_of(pugi::xml_node element) const;
    /// Notes an error at `element`. Always false.
    bool fail(ErrorTag tag, std::string text, pugi::xml_node element, std::string attribute = {});
    bool has_failed() const { return !error_.text.empty(); }
    Error &error() { return error_; }

private:
    bool operation(pugi::xml_node element, const char *value, rdl_tqm_datatree &record);

    const LoadRules &rules_;
    const LoadTarget &target_;
    pugi::xml_node holder_; ///< the trees are its children
    XmlScope scope_;
    bool is_json_;
    bool is_filter_;
    Error error_;
    const char *raw_ns_ = nullptr;
    const char *ns_ = nullptr;
};

} // namespace tqm
