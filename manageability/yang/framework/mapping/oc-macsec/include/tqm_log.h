// The log frame: how one message reaches its two sinks, the framework log and the trace buffer. Each sink is switched
// on its own, and a message is formatted only for a sink that is on. Needs C++; no heap and no run-time library.
#pragma once

#ifndef __cplusplus
#error "tqm_log.h is for plug-ins in C++20; C needs tqm_map.h alone"
#endif

#include <stdio.h>

#include "tqm_map.h"

// What a call-site word holds before the logger has seen it.
#define TQM_LOG_SITE_INITIAL 0xffffffffu

// The two forms of a message text, string literals both.
#define TQM_LOG_FORMAT(prefix, text) prefix ": TQM: ctx=%p," text
#define TQM_TRACE_FORMAT(prefix, text) "#%u: " prefix ": %s:%d ctx=%p," text

// Whether a message of `level` (TQM_LOG_*) has a sink that is on; `logged` receives whether the framework log is one.
inline bool tqm_log_wanted(tqm_map_ctx ctx, uint32_t level, bool *logged)
{
    const int should_log = tqm_debug_should_log(&ctx->debug, level);
    *logged = should_log != 0;
    return (should_log | ctx->trace_on) != 0; // one test for both sinks: it is made several times for every node
}

// Writes one message to the sinks that are on. The arguments are those of tqm_log_message. Kept apart from the mappers'
// own code: with both sinks off, which is the rule, a message costs the questions alone.
template <typename... Arguments>
[[gnu::noinline, gnu::cold]] void tqm_log_write(tqm_map_ctx ctx, bool logged, uint32_t level, uint32_t *site,
                                                const char *log_format, const char *trace_format, const char *function,
                                                int source_line, Arguments... arguments)
{
    void *const context = ctx;
    if (logged) {
        const tqm_log_handle handle = level == TQM_LOG_ERROR ? ctx->err_log : ctx->trc_log;
        _plat_dt_log_filter_adv(handle, 0, 0, 0, 0, 0, site, log_format, context, arguments...);
    }
    if (ctx->trace_on != 0) {
        char line[TQM_TRACE_LINE_MAX];
        (void)snprintf(line, sizeof line, trace_format, ret_nc_tqm_trace_index_incr(), function, source_line, context,
                       arguments...);
        _rbtrace(ctx->trace_buf, TQM_TRACE_FLAGS, line);
    }
}

// Writes one message. `level` is TQM_LOG_*, `site` the call site's own word, the two formats are the two forms above
// of one text, `function` and `source_line` say where it is logged, `arguments` are the text's own.
template <typename... Arguments>
inline void tqm_log_message(tqm_map_ctx ctx, uint32_t level, uint32_t *site, const char *log_format,
                            const char *trace_format, const char *function, int source_line, Arguments... arguments)
{
    bool logged = false;
    if (tqm_log_wanted(ctx, level, &logged)) [[unlikely]] {
        tqm_log_write(ctx, logged, level, site, log_format, trace_format, function, source_line, arguments...);
    }
}

#define TQM_LOG_AT(ctx, level, prefix, text, ...)                                                                      \
    do {                                                                                                               \
        static uint32_t site_word = TQM_LOG_SITE_INITIAL;                                                              \
        tqm_log_message((ctx), (level), &site_word, TQM_LOG_FORMAT(prefix, text), TQM_TRACE_FORMAT(prefix, text),      \
                        __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__);                                                \
    } while (0)

// One message of a hand-written function: `text` is a literal, behind it come its arguments.
#define TQM_TRC(ctx, ...) TQM_LOG_AT(ctx, TQM_LOG_TRACE, "TRC", __VA_ARGS__)
#define TQM_ERR(ctx, ...) TQM_LOG_AT(ctx, TQM_LOG_ERROR, "ERR", __VA_ARGS__)
