/*
 * NODAL: the system-information interface of the platform library.
 *
 * The kernel publishes its state as a tree of nodes. A node is a record (a fixed-size packed structure, see records.h),
 * a list (the instances below it), or a list at one depth and a record one level deeper. nodes.def is the catalogue of
 * all of them.
 *
 * Conventions
 *
 * 1. A node is named by its 16-bit identifier, read from an object of nodes.h and widened to 32 bits, and by an
 * argument list: one integer or text per instance on its path, outermost first. Null and an empty list mean the same.
 * 2. Every operation that can fail returns an HVC_ReturnStatus; 0 is success. Nothing is written to an output on
 * failure, unless the operation says so. Null pointers, wrong counts and wrong kinds of arguments get a status, never a
 * crash. HVC_NOT_FOUND is an ordinary answer: groups, clients and heaps come and go between listing and reading.
 * 3. The library never prints on its caller's behalf.
 * 4. Reads go to the running host until NODAL_UseCache succeeds, and from then on to the source that it named.
 * 5. The interface is for one thread at a time. A parameter list may be destroyed by another thread than its maker.
 * 6. A list handed out belongs to whoever received it and is released with NODAL_ParamListDestroy.
 */
#ifndef PLATKIT_NODAL_H
#define PLATKIT_NODAL_H

#include <stdint.h>

#include "platkit/export.h"
#include "platkit/nodes.h"
#include "platkit/status.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An ordered sequence of parameters: the arguments of a read, the instances of a list, or the value of a write. */
typedef struct NODAL_ParamList NODAL_ParamList;

/* One parameter: a 64-bit integer or a text. */
typedef struct NODAL_Param NODAL_Param;

/* Kinds of parameter lists. */
#define NODAL_LIST_INPUT 0u     /* the value of a NODAL_Set */
#define NODAL_LIST_INSTANCES 1u /* arguments or instances */

/*
 * Makes an empty list of the given kind. `capacity` is a hint: the list grows past it. A destroyed list is kept for the
 * next one, so a program that makes and destroys one list at a time allocates memory once.
 *
 * Returns null if the kind is unknown or memory is short.
 */
PLATKIT_EXPORT NODAL_ParamList *NODAL_ParamListCreate(uint32_t kind, uint32_t capacity);

/*
 * Makes an empty list with room for exactly `count` parameters and `bytes` bytes of text, terminators included. It is
 * filled up to that and no further: one parameter more gets HVC_LIMIT_EXCEEDED.
 *
 * Returns null if the kind is unknown or memory is short.
 */
PLATKIT_EXPORT NODAL_ParamList *NODAL_ParamListCreateAndAllocateParams(uint32_t kind, uint32_t count, uint32_t bytes);

/* Releases a list with all its texts. Null is allowed. */
PLATKIT_EXPORT void NODAL_ParamListDestroy(NODAL_ParamList *list);

/*
 * Appends an integer, or a copy of a text, to a list.
 *
 * HVC_BAD_PARAM: `list` or `text` is null. HVC_LIMIT_EXCEEDED: the list was made with a fixed room, which is used up.
 * HVC_NO_MEMORY.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListAddInt(NODAL_ParamList *list, int64_t value);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListAddString(NODAL_ParamList *list, const char *text);

/* Removes the last parameter. HVC_BAD_PARAM: `list` is null. HVC_NOT_FOUND: the list is empty. */
PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListRemoveLastParam(NODAL_ParamList *list);

/* The number of parameters in a list; 0 for null. */
PLATKIT_EXPORT uint32_t NODAL_ParamListUsedCount(const NODAL_ParamList *list);

/*
 * Store the integer parameter at `index`, counted from 0.
 *
 * HVC_BAD_PARAM: a null pointer. HVC_NOT_FOUND: no such index. HVC_WRONG_KIND: the parameter is a text.
 * HVC_OUT_OF_RANGE: the integer does not fit the type asked for.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetInt64(const NODAL_ParamList *list, uint32_t index,
                                                                          int64_t *value);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetInt32(const NODAL_ParamList *list, uint32_t index,
                                                                          int32_t *value);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetUInt32(const NODAL_ParamList *list, uint32_t index,
                                                                           uint32_t *value);

/*
 * Stores a pointer to the text parameter at `index`. The text is terminated, belongs to the list, and stays where it is
 * until that parameter is removed or the list destroyed. Statuses as for the integers.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetString(const NODAL_ParamList *list, uint32_t index,
                                                                           const char **text);

/*
 * The parameter at `index`, or null if there is none. It belongs to the list and is good until the list is changed or
 * destroyed.
 */
PLATKIT_EXPORT const NODAL_Param *NODAL_ParamListGetParam(const NODAL_ParamList *list, uint32_t index);

/* The integer value of a parameter; 0 for a text and for null. */
PLATKIT_EXPORT int64_t NODAL_ParamGetInt(const NODAL_Param *param);

/*
 * Reads a record into `record`. `size` must be the record's size: a record is read whole or not at all.
 *
 * HVC_NOT_FOUND: no such instance, or the source has no such record. HVC_NO_SUCH_NODE: unknown identifier.
 * HVC_NOT_A_RECORD: the node is only a list. HVC_WRONG_COUNT, HVC_WRONG_KIND: the arguments do not fit the node.
 * HVC_WRONG_SIZE: `size` is not the size of the record, or the source holds one of another size. HVC_BAD_PARAM:
 * `record` is null. HVC_SNAPSHOT_DAMAGED: a snapshot's record is not what was written. HVC_NO_PERMISSION: the record
 * exists, but not for this user. HVC_IO_ERROR: it cannot be read.
 *
 * A register of a device's configuration space also answers HVC_BAD_PARAM: the size is not 1, 2 or 4;
 * HVC_UNALIGNED_ADDRESS: the address is no multiple of the size; HVC_ADDRESS_TOO_HIGH: the space ends before it.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_Get(uint32_t node, const NODAL_ParamList *args, void *record,
                                                            uint32_t size);

/*
 * Writes the value in `input` to a node. Nodes that can be written yield no output: `output` is null and `outputSize`
 * 0.
 *
 * The one node that can be written is a register of a device's configuration space (pciConfigReg), which takes one
 * integer: the value, written with a single access of the size that the arguments give, 1, 2 or 4 bytes. The running
 * host takes it; of saved hosts, only a root folder that was named with NODAL_CACHE_WRITABLE does. No other operation
 * writes anything.
 *
 * HVC_READ_ONLY: the node, or the source, cannot be written. HVC_NODE_NOT_WRITABLE: `input` is not one integer.
 * HVC_OUT_OF_RANGE: the value does not fit the register. HVC_NO_PERMISSION: this user may not write it. Other statuses
 * as for NODAL_Get.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_Set(uint32_t node, const NODAL_ParamList *args,
                                                            const NODAL_ParamList *input, void *output,
                                                            uint32_t outputSize);

/*
 * Fills `list` with the instances of a list node, in the kernel's order. What the list held before is dropped, and it
 * is left empty on failure.
 *
 * HVC_NOT_A_LIST: the node is only a record. HVC_LIMIT_EXCEEDED: the list was made with a fixed room, and there are
 * more instances than fit. Other statuses as for NODAL_Get.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceList(uint32_t node, const NODAL_ParamList *args,
                                                                        NODAL_ParamList *list);

/*
 * Stores a new list with the instances of a list node, which the caller destroys. A failure leaves no list to destroy.
 * Statuses as for NODAL_GetInstanceList. `hint` is the number of instances that the caller expects, and may be wrong.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceListAlloc(uint32_t node, const NODAL_ParamList *args,
                                                                             NODAL_ParamList **list);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceListAllocHint(uint32_t node,
                                                                                 const NODAL_ParamList *args,
                                                                                 uint32_t hint, NODAL_ParamList **list);

/*
 * Flags of NODAL_UseCache: what `path` names, and whether it may be written.
 *
 * NODAL_CACHE_SNAPSHOT: a snapshot file. NODAL_CACHE_ROOT_FOLDER: a folder that holds a saved /proc and /sys, read as
 * if it were the host's root. It records what was, and stays as it is, unless NODAL_CACHE_WRITABLE is added: NODAL_Set
 * then writes to the files in it, as it does on the running host.
 */
#define NODAL_CACHE_SNAPSHOT 0u
#define NODAL_CACHE_ROOT_FOLDER 1u
#define NODAL_CACHE_WRITABLE 2u

/*
 * From now on answers every read of the process from a saved host, and reads nothing from the running one. On failure
 * the source stays what it was.
 *
 * HVC_NOT_FOUND: there is no such file. HVC_NO_PERMISSION: it may not be read. HVC_IO_ERROR: it cannot be read.
 * HVC_NOT_A_SNAPSHOT: it is something else. HVC_SNAPSHOT_DAMAGED: it is a snapshot that was cut or overwritten.
 * HVC_SNAPSHOT_TOO_NEW: a newer library wrote it, in a form that this one does not know. HVC_BAD_PARAM: `path` is null,
 * or flags are unknown or do not go together.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t flags);

/*
 * Compares the definitions of the tree that is read with this library's own: the paths, argument kinds and record sizes
 * of the catalogue. The running host always matches; a snapshot matches if it was taken with the same definitions.
 *
 * `kernelBuild` gets the build text of the tree's definitions, cut to `size` - 1 bytes and terminated; `*ownBuild` is
 * set to the library's own, a constant of at most 20 characters that changes only with the library's version and
 * catalogue. Both are set whether the definitions match or not.
 *
 * HVC_DEFINITIONS_DIFFER: they do not match. HVC_BAD_PARAM: a null pointer, or a `size` of 0.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size,
                                                                 const char **ownBuild);

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_NODAL_H */
