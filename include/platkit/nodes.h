/*
 * The node identifiers of the system-information tree.
 *
 * The library exports one object per row of nodes.def, NODAL_NODE_<name>, that holds the node's 16-bit identifier. Read
 * it at each call and pass it, widened, to the operations of nodal.h: identifiers are the library's own and may differ
 * from one build of it to the next, so none may be compiled into a program.
 */
#ifndef PLATKIT_NODES_H
#define PLATKIT_NODES_H

#include <stdint.h>

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

#define NODE(name, path, entries, record) extern PLATKIT_EXPORT const uint16_t NODAL_NODE_##name;
#include "platkit/nodes.def"

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_NODES_H */
