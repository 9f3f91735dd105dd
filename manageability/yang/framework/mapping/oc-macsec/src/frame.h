// The frame that every exported function works in: the assertion on its context, its "Start" and "End" lines, the test
// of its arguments, and what a failure leaves behind for the client. The templates (walkers and generated node
// functions) carry their frame in a descriptor; hand-written mappers use the macros at the end.
#pragma once

#include <stddef.h>

#include "tqm_log.h"
#include "tqm_map.h"

#define OC_MACSEC_EXPORT extern "C" __attribute__((visibility("default")))
// Weak: a function of the same name in a module's _man file takes its place at link time.
#define OC_MACSEC_EXPORT_WEAK extern "C" __attribute__((visibility("default"), weak))

// The two families of signatures, as parameter lists and as an assertion prints them.
#define MAPPER_PARAMETERS tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out
#define CONTAINER_PARAMETERS                                                                                           \
    tqm_map_ctx ctx, const rdl_tqm_datatree *node, unsigned int child_count, rdl_tqm_datatree *out
#define MAPPER_SIGNATURE "tqm_map_ctx, const struct rdl_tqm_datatree *, struct rdl_tqm_datatree *"
#define CONTAINER_SIGNATURE "tqm_map_ctx, const struct rdl_tqm_datatree *, unsigned int, struct rdl_tqm_datatree *"
#define ROW_SELECTION_SIGNATURE "tqm_map_ctx, int, struct xpath_list_type_t *"

namespace oc_macsec
{

// The messages of walkers and generated node functions.
enum message_id : unsigned char {
    MESSAGE_START,
    MESSAGE_END,
    MESSAGE_INVALID_ARGUMENTS,
    MESSAGE_NO_SUBTREES,
    MESSAGE_NO_TAG,
    MESSAGE_UNSUPPORTED_TAG,
    MESSAGE_IGNORED_TAG,
    MESSAGE_DELETE_WITH_SUBTREE,
    MESSAGE_NO_KEYS,
    MESSAGE_NO_KEYS_AT_ALL, // the same text, logged a second time where the request needs keys
    MESSAGE_KEY_NODE_ERROR,
    MESSAGE_EMPTY_KEY,
    MESSAGE_KEY_DELETE,
    MESSAGE_LEAFREF,
    MESSAGE_XPATH_ERROR,
    MESSAGE_PROCESSING_TAG,
    MESSAGE_COUNT
};

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
inline constexpr message messages[] = {
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

#undef TRACE_MESSAGE
#undef ERROR_MESSAGE

// The logger's words of one function, one for each message that it can log.
struct call_sites {
    uint32_t word[MESSAGE_COUNT] = {
        TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL,
        TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL,
        TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL,
        TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL, TQM_LOG_SITE_INITIAL,
    };
};

// Who a template runs for: the exported function's name, the place of its table entry, and its words.
struct frame {
    const char *function;
    const char *file;
    int line;
    call_sites *sites;
};

// Writes a message of a template to the sinks that are on; `logged` says whether the framework log is. Out of line, so
// that the frame is read for lines that are written, and not ahead of every question.
template <typename... Arguments>
[[gnu::noinline, gnu::cold]] void write_message(const frame &of, tqm_map_ctx ctx, bool logged, message_id id,
                                                Arguments... arguments)
{
    const message &written = messages[id];
    tqm_log_write(ctx, logged, written.level, &of.sites->word[id], written.log_format, written.trace_format,
                  of.function, of.line, arguments...);
}

// Logs a message of a template on behalf of the function that it runs for.
template <typename... Arguments>
inline void log(const frame &of, tqm_map_ctx ctx, message_id id, Arguments... arguments)
{
    bool logged = false;
    if (tqm_log_wanted(ctx, messages[id].level, &logged)) [[unlikely]] {
        write_message(of, ctx, logged, id, arguments...);
    }
}

// Ends the process with the usual text of a failed assertion. `parameters` is the parameter list that the text shows.
[[noreturn]] void context_assertion_failed(const char *function, const char *parameters, const char *file, int line);

// A null context ends the process.
inline void assert_context(const frame &of, tqm_map_ctx ctx, const char *parameters)
{
    if (ctx == nullptr) {
        context_assertion_failed(of.function, parameters, of.file, of.line);
    }
}

// Logs "Invalid arguments passed!" and notes the error path.
[[gnu::cold]] void reject_arguments(const frame &of, tqm_map_ctx ctx);

// The argument test that follows "Start": with a null node or output tree, rejects them and holds.
inline bool rejects_arguments(const frame &of, tqm_map_ctx ctx, const rdl_tqm_datatree *node,
                              const rdl_tqm_datatree *out)
{
    if (node != nullptr && out != nullptr) {
        return false;
    }
    reject_arguments(of, ctx);
    return true;
}

// Makes `tag` (null: none) the tag that the client is told of, in place of an earlier one.
void set_error_tag(tqm_map_ctx ctx, const char *tag);

// Makes `text` the message that the client is told.
void set_error_message(tqm_map_ctx ctx, const char *text, const char *owner);

// A walker gets its node as const, yet its marks (role, key, lowered operations, hidden children) are written on that
// very node: the framework hands out writable trees, and the signature only promises that mappers leave them alone.
inline rdl_tqm_datatree *writable(const rdl_tqm_datatree *node)
{
    return const_cast<rdl_tqm_datatree *>(node);
}

// The conversion of mapping table rows whose value passes unchanged.
inline const char *value_of(const rdl_tqm_datatree *node)
{
    return node->value;
}

inline bool has(const rdl_tqm_datatree *node, unsigned int present_bit)
{
    return (node->present & present_bit) != 0;
}

inline void set_present(rdl_tqm_datatree *node, unsigned int present_bit)
{
    node->present = static_cast<uint16_t>(node->present | present_bit);
}

inline void clear_present(rdl_tqm_datatree *node, unsigned int present_bit)
{
    node->present = static_cast<uint16_t>(node->present & ~present_bit);
}

inline void mark_key(rdl_tqm_datatree *node)
{
    node->is_key = 1;
    set_present(node, TQM_PRESENT_IS_KEY);
}

// Children given with their presence bit; without it both are empty, whatever the fields hold.
struct child_array {
    rdl_tqm_datatree *first;
    uint32_t count;

    rdl_tqm_datatree *begin() const { return first; }
    rdl_tqm_datatree *end() const { return first + count; }
    bool missing() const { return first == nullptr && count != 0; }
};

inline child_array children_of(const rdl_tqm_datatree *node)
{
    return has(node, TQM_PRESENT_SUBTREE) ? child_array{node->subtree, node->subtree_count} : child_array{nullptr, 0};
}

} // namespace oc_macsec

// A null context is a programming error in every build type, so this is no assert() that NDEBUG could take away.
#define ASSERT_CONTEXT(ctx, parameters)                                                                                \
    do {                                                                                                               \
        if (nullptr == (ctx)) {                                                                                        \
            oc_macsec::context_assertion_failed(__func__, parameters, __FILE__, __LINE__);                             \
        }                                                                                                              \
    } while (0)

// What a mapper answers to a null node or output tree.
#define REJECT_NULL_ARGUMENTS(ctx, is_null)                                                                            \
    do {                                                                                                               \
        if (is_null) {                                                                                                 \
            TQM_ERR(ctx, "Invalid arguments passed!");                                                                 \
            tqm_oc_error_path(ctx);                                                                                    \
            return TQM_ERR_BAD_ARGS;                                                                                   \
        }                                                                                                              \
    } while (0)

// How a hand-written mapper begins, and how it ends on its good path.
#define ENTER_FUNCTION(ctx, node, out, parameters)                                                                     \
    ASSERT_CONTEXT(ctx, parameters);                                                                                   \
    TQM_TRC(ctx, "Start");                                                                                             \
    REJECT_NULL_ARGUMENTS(ctx, (node) == nullptr || (out) == nullptr)
#define ENTER_MAPPER(ctx, node, out) ENTER_FUNCTION(ctx, node, out, MAPPER_SIGNATURE)
#define LEAVE_MAPPER(ctx, result)                                                                                      \
    do {                                                                                                               \
        TQM_TRC(ctx, "End");                                                                                           \
        return (result);                                                                                               \
    } while (0)
