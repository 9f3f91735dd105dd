// The framework: takes a request document through a plug-in to the native side and back. It knows neither the plug-in's
// functions nor the native side but by their interfaces.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tqm/document.h"
#include "tqm/edit_checker.h"
#include "tqm/export.h"
#include "tqm/native_side.h"
#include "tqm/plugin.h"
#include "tqm/request.h"

namespace tqm
{

/// Forms of a document: XML (RFC 6241), or JSON (RFC 7951) with operations as metadata (RFC 7952).
enum class Format { xml, json };

/// What stands around printed trees.
enum class Envelope {
    netconf, ///< <config>, <filter> or <data>
    none     ///< nothing: the trees one after another, in JSON the members of one object
};

/// Built trees together with all that they live in, which copies share; the schema that they were built with must
/// outlive them. Nothing changes in them any more: any number of threads may read and print them.
class TQM_EXPORT Trees
{
public:
    /// Configuration trees come before the operational one, in the order of the registrations.
    const std::vector<const OutputNode *> &roots() const { return roots_; }
    /// TQM_REQ_* of the request.
    uint32_t kind() const { return kind_; }

    /// Writes the trees as one document, 2 blanks a level, with a line end after each node. Forward results: <config>
    /// with nc:operation attributes, or <filter type="subtree">. Answers: <data>.
    void print(std::string &text, Format format = Format::xml, Envelope envelope = Envelope::netconf) const;
    /// The same to `file`; false if a write failed.
    bool print(std::FILE *file, Format format = Format::xml, Envelope envelope = Envelope::netconf) const;

private:
    friend class Framework;
    enum class Wrapper { config, filter, data };

    Trees() = default;

    bool print_to(const std::function<bool(std::string_view)> &sink, Format format, Envelope envelope) const;

    std::shared_ptr<Request> request_; ///< which the nodes live in
    const Schema *schema_ = nullptr;
    std::vector<const OutputNode *> roots_;
    uint32_t kind_ = 0;
    Wrapper wrapper_ = Wrapper::data;
};

/// `plugin`, `schema`, `checker` and what `watch` points at are borrowed, and must outlive it. Errors carry their place
/// also node by node (Error::instance); those of the native side, where it has said one with Error::at.
///
/// One framework is one thread's at a time. Several may share a plug-in and a schema: one walk runs at a time in a
/// process, from its root walker to the return, as plug-ins keep data between their calls; what surrounds it - parsing,
/// checking, reading from and writing to the native side, filtering, printing - runs side by side. Want of memory is
/// thrown as std::bad_alloc, by the library or out of a walk once the plug-in has returned.
class TQM_EXPORT Framework
{
public:
    /// Without a `checker` an edit is judged by the plug-in's walkers and the native side alone.
    Framework(const Plugin &plugin, const Schema &schema, Watch watch = {}, EditChecker *checker = nullptr);

    /// OpenConfig to native, without a native side, and so without a look at what is there. The document's own kind
    /// comes first, `kind` where it says none. The walkers alone judge the document, unless `checked`.
    Expected<Trees> forward(Document document, uint32_t kind = TQM_REQ_EDIT, bool checked = false);
    /// Native trees to OpenConfig.
    Expected<Trees> reverse(Document document, uint32_t kind = TQM_REQ_GET);
    /// An edit all the way. A document of another kind is an error. What RFC 6241, section 7.2 asks of the data before
    /// the edit is read first, in the client's terms; where journal and trace are watched, that stands under a heading
    /// of its own.
    Expected<void> edit(Document document, NativeSide &native);
    /// A read all the way; without a document everything is read.
    Expected<Trees> get(std::optional<Document> document, NativeSide &native);
    Expected<Trees> get_config(std::optional<Document> document, NativeSide &native);

    /// What `checker` says of the edit that `request` has loaded; nothing is wrong with other requests, or without a
    /// checker.
    Expected<void> check(Request &request) const;
    /// What is wrong with a loaded edit by what is there, and by what cannot be taken away. To be asked before walk().
    Expected<void> check_existence(Request &request, NativeSide &native) const;
    /// Gives the walked edit of `request` to the native side. A refusal is told in the client's terms.
    Expected<void> write(Request &request, NativeSide &native) const;

    /// Walks what `request` has loaded with the root walkers that are registered for it. After an error what was built
    /// until then is in the request's output: for those who look at a walk rather than at its result.
    Expected<void> walk(Request &request) const;
    /// TQM_REQ_* for the walk of a document: what it says itself, or `kind`.
    static uint32_t kind_of(const Document &document, Direction direction, uint32_t kind);

private:
    Expected<std::shared_ptr<Request>> load(Document document, uint32_t kind, bool widened = false) const;
    Expected<std::shared_ptr<Request>> walk_forward(Document document, uint32_t kind, bool widened = false) const;
    void head(const char *heading) const;
    Expected<void> check_values(Request &request) const;
    Error in_clients_terms(NativeError error, Request &request) const;
    Expected<Trees> read(std::optional<Document> document, NativeSide &native, uint32_t kind);
    Expected<void> walk_request(Request &request) const;
    Expected<void> walk_answers(Request &request, TreeBuilder::Roots answers) const;

    const Plugin &plugin_;
    const Schema &schema_;
    Watch watch_;
    EditChecker *checker_;
};

} // namespace tqm
