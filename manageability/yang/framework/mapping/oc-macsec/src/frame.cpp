// The frame of exported functions: log lines of the templates, argument tests, what a failure leaves for the client.
#include "frame.h"

#include <stdio.h>

// glibc's assert() calls this; <assert.h> declares it only where NDEBUG is not defined.
extern "C" [[noreturn]] void __assert_fail(const char *expression, const char *file, unsigned int line,
                                           const char *function) noexcept;

namespace oc_macsec
{
namespace
{

struct message {
    uint32_t level;
    const char *log_format;
    const char *trace_format;
};

#define TRACE_MESSAGE(text)                                                                                            \
    {                                                                                                                  \
        TQM_LOG_TRACE, TQM_LOG_FORMAT("TRC", text), TQM_TRACE_FORMAT("TRC", text)                                      \
    }
#define ERROR_MESSAGE(text)                                                                                            \
    {                                                                                                                  \
        TQM_LOG_ERROR, TQM_LOG_FORMAT("ERR", text), TQM_TRACE_FORMAT("ERR", text)                                      \
    }

// In the order of message_id.
constexpr message messages[] = {
    TRACE_MESSAGE("Start"),
    TRACE_MESSAGE("End"),
    ERROR_MESSAGE("Invalid arguments passed!"),
    ERROR_MESSAGE("Failed to get subtrees!"),
    ERROR_MESSAGE("Tag name is not available!"),
    ERROR_MESSAGE("Unsupported tag is specified in the request."),
    TRACE_MESSAGE("Unsupported tag. Ignoring."),
    TRACE_MESSAGE("Delete request with subtree present"),
    ERROR_MESSAGE("No keys specified with a list node."),
    ERROR_MESSAGE("No keys specified with a list node."),
    ERROR_MESSAGE("List key node error."),
    ERROR_MESSAGE("Empty list key specified."),
    ERROR_MESSAGE("The key node should not have delete operation."),
    ERROR_MESSAGE("leafref value check fail"),
    TRACE_MESSAGE("got xpath error node "),
    TRACE_MESSAGE("Processing tag '%s'"),
};
static_assert(sizeof messages / sizeof messages[0] == MESSAGE_COUNT);

} // namespace

void log(const frame &of, tqm_map_ctx ctx, message_id id)
{
    const message &logged = messages[id];
    tqm_log_message(ctx, logged.level, &of.sites->word[id], logged.log_format, logged.trace_format, of.function,
                    of.line);
}

void log(const frame &of, tqm_map_ctx ctx, message_id id, const char *argument)
{
    const message &logged = messages[id];
    tqm_log_message(ctx, logged.level, &of.sites->word[id], logged.log_format, logged.trace_format, of.function,
                    of.line, argument);
}

void assert_context(const frame &of, tqm_map_ctx ctx, const char *parameters)
{
    if (ctx == nullptr) {
        context_assertion_failed(of.function, parameters, of.file, of.line);
    }
}

bool rejects_arguments(const frame &of, tqm_map_ctx ctx, const rdl_tqm_datatree *node, const rdl_tqm_datatree *out)
{
    if (node != nullptr && out != nullptr) {
        return false;
    }
    log(of, ctx, MESSAGE_INVALID_ARGUMENTS);
    tqm_oc_error_path(ctx);
    return true;
}

void set_error_tag(tqm_map_ctx ctx, const char *tag)
{
    tqm_map_request *const request = ctx->request;
    if (request->error_tag != nullptr) {
        plat_named_free(request->error_tag);
        request->error_tag = nullptr;
    }
    request->error_tag = tqm_strdup(tag, TQM_MAP_OWNER);
}

void set_error_message(tqm_map_ctx ctx, const char *text, const char *owner)
{
    ctx->request->error_msg = tqm_strdup(text, owner);
}

void context_assertion_failed(const char *function, const char *parameters, const char *file, int line)
{
    char signature[TQM_TRACE_LINE_MAX];
    (void)snprintf(signature, sizeof signature, "rcode %s(%s)", function, parameters);
    __assert_fail("NULL != ctx", file, static_cast<unsigned int>(line), signature);
}

} // namespace oc_macsec
