/* Result codes that mappers and walkers give and framework operations may give: one table for the whole plug-in.
 * Only the codes are here; what a client is told about each is the framework's (rcode_strerror). */
#pragma once

#include <stdint.h>

/* 0 is success; every other value is a failure, but for the steering code TQM_ERR_SKIP_NODE. */
typedef uint32_t rcode;

/* A null node or output tree, or a delete of a node that has children. */
#define TQM_ERR_BAD_ARGS ((rcode)0xaaf2a000u)
/* A child array is missing, a child has no tag, or a list node has no keys where the request needs them. */
#define TQM_ERR_NO_SUBTREE ((rcode)0xaaf29e00u)
/* The node exists in the model, or its tag stands in the model's namespace, and no mapping exists for it. */
#define TQM_ERR_UNSUPPORTED ((rcode)0xaaf2ee00u)
/* A key leaf without a value, or the wrong number of key leaves. */
#define TQM_ERR_LIST_KEY ((rcode)0xaaf2f000u)
/* A delete or remove operation on a key leaf. */
#define TQM_ERR_KEY_DELETE ((rcode)0xaaf2f200u)
/* A request that is refused on its merits; error_msg says why. */
#define TQM_ERR_INVALID_REQUEST ((rcode)0xaaf2f400u)
/* Steering code: there is nothing to do at this node, and the request goes on. */
#define TQM_ERR_SKIP_NODE ((rcode)0xaaf2f600u)
/* A child from another namespace in a request that adds data. */
#define TQM_ERR_AUGMENT ((rcode)0xaaf2f800u)
/* No such list entry, or no such node: from operations that search. */
#define TQM_ERR_NOT_FOUND ((rcode)0xaaf2fa00u)
