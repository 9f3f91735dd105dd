// The frame of exported functions: log lines of the templates, argument tests, what a failure leaves for the client.
#include "frame.h"

#include <stdio.h>

// glibc's assert() calls this; <assert.h> declares it only where NDEBUG is not defined.
extern "C" [[noreturn]] void __assert_fail(const char *expression, const char *file, unsigned int line,
                                           const char *function) noexcept;

namespace oc_macsec
{

void reject_arguments(const frame &of, tqm_map_ctx ctx)
{
    log(of, ctx, MESSAGE_INVALID_ARGUMENTS);
    tqm_oc_error_path(ctx);
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
