// Texts and logs: copies for plug-ins, the texts of result codes, and the two sinks of log lines.
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "surface/operation.h"

namespace
{

using namespace tqm;

constexpr std::size_t log_line_max = 1024;

struct CodeText {
    rcode code;
    const char *text;
};

constexpr CodeText code_texts[] = {
    {0, "success"},
    {TQM_ERR_BAD_ARGS, "a node that is deleted must not have children in the request"},
    {TQM_ERR_NO_SUBTREE, "a list entry lacks its keys"},
    {TQM_ERR_UNSUPPORTED, "the node is not supported"},
    {TQM_ERR_LIST_KEY, "a list entry must have its key exactly once, with a value"},
    {TQM_ERR_KEY_DELETE, "the key of a list entry cannot be deleted: delete the entry"},
    {TQM_ERR_INVALID_REQUEST, "the request is invalid"},
    {TQM_ERR_SKIP_NODE, "there is nothing to do at this node"},
    {TQM_ERR_AUGMENT, "a node of another module cannot be edited here"},
    {TQM_ERR_NOT_FOUND, "there is no such entry or node"},
};

/// Copies `length` bytes of `src`, or empties `dest` if they do not fit.
rcode copy_bounded(char *dest, size_t dest_size, const char *src, size_t length)
{
    if (length >= dest_size) {
        dest[0] = '\0';
        return TQM_ERR_BAD_ARGS;
    }
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

rcode copy_operation(const char *name, const char *owner, char *dest, size_t dest_size, const char *src, size_t max)
{
    if (dest == nullptr || dest_size == 0) {
        return TQM_ERR_BAD_ARGS;
    }
    Request::Impl *request = serving();
    const auto copy = [&]() -> rcode {
        if (src == nullptr) {
            dest[0] = '\0';
            return TQM_ERR_BAD_ARGS;
        }
        return copy_bounded(dest, dest_size, src, strnlen(src, max));
    };
    if (request == nullptr) {
        return copy();
    }
    return run_operation(
        request, name, [&](Request::Impl &) { return copy(); },
        [&](JournalLine &line) { line.text("owner", owner).text("", src); });
}

} // namespace

extern "C" {

TQM_EXPORT char *tqm_strdup(const char *text, const char *owner)
{
    Request::Impl *request = serving();
    if (request == nullptr) {
        return text == nullptr ? nullptr : strdup(text);
    }
    const bool fault = request->watch().faults != nullptr && request->watch().faults->on_call("tqm_strdup") != 0;
    char *none = nullptr;
    char *copy =
        fault ? nullptr : without_exceptions(request, none, [&] { return request->failure().duplicate(text); });
    journal_call(request, "tqm_strdup",
                 [&](JournalLine &line) { line.text("", text).text("owner", owner).result_text(copy); });
    return copy;
}

TQM_EXPORT rcode tqm_strcpy_s(const char *owner, char *dest, size_t dest_size, const char *src)
{
    return copy_operation("tqm_strcpy_s", owner, dest, dest_size, src, SIZE_MAX);
}

TQM_EXPORT rcode tqm_strncpy_s(const char *owner, char *dest, size_t dest_size, const char *src, size_t max)
{
    return copy_operation("tqm_strncpy_s", owner, dest, dest_size, src, max);
}

TQM_EXPORT void plat_named_free(void *pointer)
{
    Request::Impl *request = serving();
    if (request == nullptr) {
        std::free(pointer);
        return;
    }
    journal_call(request, "plat_named_free",
                 [&](JournalLine &line) { line.text("", static_cast<const char *>(pointer)).done(); });
    without_exceptions(request, [&] { request->failure().free_text(pointer); });
}

TQM_EXPORT const char *rcode_strerror(rcode rc)
{
    journal_question("rcode_strerror", [&](JournalLine &line) { line.result(rc); });
    for (const CodeText &entry : code_texts) {
        if (entry.code == rc) {
            return entry.text;
        }
    }
    thread_local char text[sizeof "error 0x00000000"];
    std::snprintf(text, sizeof text, "error 0x%08x", rc);
    return text;
}

TQM_EXPORT int tqm_debug_should_log(const tqm_debug_ctx *debug, uint32_t level)
{
    const bool wanted = debug != nullptr && level < 64 && ((debug->filter >> level) & 1u) != 0;
    journal_question("tqm_debug_should_log",
                     [level, wanted](JournalLine &line) { line.number("level", level).result_number(wanted); });
    return wanted ? 1 : 0;
}

// The level alone decides here, so the call site's word stays as it is.
TQM_EXPORT void _plat_dt_log_filter_adv(tqm_log_handle handle, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                                        uint32_t *, const char *format, ...)
{
    Request::Impl *request = serving();
    if (request == nullptr || format == nullptr) {
        return;
    }
    char text[log_line_max];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    journal_question("_plat_dt_log_filter_adv", [&](JournalLine &line) { line.result_text(text); });
    if (request->watch().log) {
        without_exceptions(request, [&] {
            request->watch().log(handle == request->context().err_log ? TQM_LOG_ERROR : TQM_LOG_TRACE, text);
        });
    }
}

TQM_EXPORT uint32_t ret_nc_tqm_trace_index_incr(void)
{
    static std::atomic<uint32_t> outside_requests{0};
    Request::Impl *request = serving();
    const uint32_t index = request == nullptr ? ++outside_requests : request->next_trace_index();
    journal_question("ret_nc_tqm_trace_index_incr", [&](JournalLine &line) { line.result_number(index); });
    return index;
}

TQM_EXPORT void _rbtrace(uint64_t trace_buf, uint64_t flags, const char *line)
{
    Request::Impl *request = serving();
    if (request == nullptr || line == nullptr || trace_buf != request->context().trace_buf) {
        return;
    }
    journal_question("_rbtrace", [&](JournalLine &entry) { entry.number("flags", flags).result_text(line); });
    if (request->observation()) {
        without_exceptions(request, [&] { request->observation().traced(line); });
    }
    if (request->watch().trace) {
        without_exceptions(request, [&] { request->watch().trace(line); });
    }
}

} // extern "C"
