// The frame of an operation: find the request, let a fault answer in its place, run it, write its journal line. Without
// journal and faults that is one branch each.
#pragma once

#include <new>
#include <string>
#include <string_view>

#include "tqm/export.h"
#include "walk/request_state.h"

namespace tqm
{

/// A journal line in the making: name(argument, ...) = result.
class JournalLine
{
public:
    explicit JournalLine(std::string_view operation) : text_(operation) { text_ += '('; }

    /// `name` may be empty: then only the value is shown.
    JournalLine &text(std::string_view name, const char *value, bool secret = false)
    {
        start(name);
        append_text(value, secret);
        return *this;
    }
    JournalLine &ns(const char *ns);
    JournalLine &node(std::string_view name, const rdl_tqm_datatree *node);
    JournalLine &source(const rdl_tqm_datatree *node);
    JournalLine &number(std::string_view name, uint64_t value)
    {
        start(name);
        text_ += std::to_string(value);
        return *this;
    }
    JournalLine &result(rcode code);
    JournalLine &result_number(uint64_t value);
    JournalLine &result_text(const char *value);
    /// Something that the operation has found, behind the result.
    JournalLine &found(std::string_view name, const char *value, bool secret = false)
    {
        text_.append(", ").append(name).append("=");
        append_text(value, secret);
        return *this;
    }
    /// Ends the line of an operation without a result.
    JournalLine &done()
    {
        text_ += ')';
        return *this;
    }
    std::string_view view() const { return text_; }

private:
    void start(std::string_view name);
    void append_text(const char *value, bool secret);
    void end();

    std::string text_;
    bool has_argument_ = false;
    bool ended_ = false;
};

/// True if the journal must not show a value of the node at `path`, which may lack its leading slash. Of a single name
/// only the tag is known.
bool hides_value(const Request::Impl *request, std::string_view path);
/// The same for a path that begins at some node.
bool hides_value_below(const Request::Impl *request, std::string_view path);

/// Runs what an operation does. The plug-in that has called it knows no exceptions: want of memory is noted in the
/// request, which throws it again once no plug-in stands in between, and the plug-in is given `otherwise`.
template <class Answer, class Body>
Answer without_exceptions(Request::Impl *request, Answer otherwise, const Body &body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc &) {
        if (request != nullptr) {
            request->failure().note_want_of_memory();
        }
        return otherwise;
    }
}

/// The same for what gives no answer.
template <class Body>
void without_exceptions(Request::Impl *request, const Body &body) noexcept
{
    without_exceptions(request, 0, [&] {
        body();
        return 0;
    });
}

/// What an operation without a result beside its code tells the journal about that.
inline constexpr auto nothing_found = [](JournalLine &) {};

/// The same operation where faults or a journal ask for it: kept out of the way of all others.
template <class Body, class Describe, class Found>
[[gnu::noinline, gnu::cold]] rcode run_watched(Request::Impl &request, const char *name, const Body &body,
                                               const Describe &describe, const Found &found)
{
    rcode rc = request.watch().faults == nullptr ? 0 : request.watch().faults->on_call(name);
    if (rc == 0) {
        rc = body(request);
    }
    if (request.watch().journal != nullptr) {
        JournalLine line(name);
        describe(line);
        line.result(rc);
        if (rc == 0) {
            found(line);
        }
        request.watch().journal->write(line.view());
    }
    return rc;
}

/// Runs `body(request)` as operation `name`; `describe(line)` gives the journal its arguments and `found(line)` what it
/// came back with. Without a request the answer is TQM_ERR_BAD_ARGS, and once memory has run out in it
/// TQM_ERR_INVALID_REQUEST: what was then being built is no longer whole.
template <class Body, class Describe, class Found = decltype(nothing_found)>
rcode run_operation(Request::Impl *request, const char *name, const Body &body, const Describe &describe,
                    const Found &found = nothing_found)
{
    if (request == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    serve(request);
    if (request->failure().is_out_of_memory()) {
        return TQM_ERR_INVALID_REQUEST;
    }
    return without_exceptions(request, rcode{TQM_ERR_INVALID_REQUEST}, [&] {
        const bool is_watched = request->watch().faults != nullptr || request->watch().journal != nullptr;
        return is_watched ? run_watched(*request, name, body, describe, found) : body(*request);
    });
}

/// Writes the line of an operation that has no result code. `describe` is taken by value and the writing is kept apart,
/// so that operations that are called for each node have their arguments in registers.
template <class Describe>
[[gnu::noinline, gnu::cold]] void write_line(Request::Impl &request, const char *name, Describe describe)
{
    without_exceptions(&request, [&] {
        JournalLine line(name);
        describe(line);
        request.watch().journal->write(line.view());
    });
}

template <class Describe>
void journal_call(Request::Impl *request, const char *name, Describe describe)
{
    if (request != nullptr && request->watch().journal != nullptr) [[unlikely]] {
        write_line(*request, name, describe);
    }
}

/// The same for the operations that are called so often that their lines must be asked for. They have no context: the
/// request is the one that this thread serves.
template <class Describe>
void journal_question(const char *name, Describe describe)
{
    if (questions_journal != nullptr) [[unlikely]] {
        write_line(*serving(), name, describe);
    }
}

} // namespace tqm
