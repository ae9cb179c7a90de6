/*
 * NODAL: the system-information interface of the platform library.
 *
 * The library presents the state of a host as a tree of nodes. A node is a record, a list, or both. A record is a
 * packed struct; see records.h. A list contains the instances below the node. A node that is both is a list at one
 * path, and has a record for each entry of the list. nodes.h declares all nodes.
 *
 * Conventions
 *
 * 1. Nodes. Read a node's 16-bit identifier from its object in nodes.h and widen it to 32 bits. Pass one argument, an
 *    integer or a text, for each {argument} of its path, outermost first. A null argument list and an empty one mean
 *    the same.
 *
 * 2. Errors. Operations that can fail return an HVC_ReturnStatus: HVC_OK is success. Each operation lists its other
 *    statuses. HVC_NO_MEMORY is always possible; the failed call leaks nothing, and later calls work as usual. No
 *    operation throws a C++ exception. On failure, outputs are unchanged unless the operation says otherwise.
 *    HVC_NOT_FOUND is an ordinary answer: groups, clients and heaps may vanish between a listing and a read.
 *
 * 3. Null. Operations that return a status answer a null pointer with HVC_BAD_PARAM, except where null is allowed.
 *    A null list has no parameters, and destroying it has no effect.
 *
 * 4. Ownership. The caller owns each list that it created or received, and releases it with NODAL_ParamListDestroy. The
 *    caller also owns all buffers that it passes. The library copies the texts that it receives, and keeps no pointer
 *    to the caller's memory after the call.
 *
 * 5. Lifetime of texts. A text or parameter read from a list belongs to the list. A text stays valid until its
 *    parameter is removed, the list is filled again, or the list is destroyed. A NODAL_Param pointer stays valid until
 *    the list changes in any way. Texts are bytes that end in a NUL; their encoding is not checked.
 *
 * 6. Threads. One thread at a time may use the interface. Any thread may destroy a list, not only the one that created
 *    it.
 *
 * 7. Sources. Reads go to the running host until NODAL_UseCache succeeds, and then to the source that it selected.
 *
 * 8. Signals. While a snapshot is in use, the library maps the file and installs a handler for SIGBUS, because another
 *    process can truncate the file. Reads of a truncated snapshot return HVC_SNAPSHOT_DAMAGED. The handler passes every
 *    other SIGBUS on to the previously installed action. If a program installs its own handler later, that handler must
 *    pass faults at addresses that it does not know on to the handler that it replaced.
 *
 * 9. Output. The library prints nothing, except that Warning (warning.h) writes to standard error.
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
 * Creates an empty list. `kind` is NODAL_LIST_INPUT or NODAL_LIST_INSTANCES. `capacity` is the number of parameters
 * that the caller expects; the list can have more.
 *
 * Returns the list, or null if the kind is unknown or memory is short. The caller destroys it.
 */
PLATKIT_EXPORT NODAL_ParamList *NODAL_ParamListCreate(uint32_t kind, uint32_t capacity);

/*
 * Creates an empty list with a fixed capacity: at most `count` parameters, and at most `bytes` bytes of text, NULs
 * included. Additions beyond the capacity return HVC_LIMIT_EXCEEDED.
 *
 * Returns the list, or null if the kind is unknown or memory is short. The caller destroys it.
 */
PLATKIT_EXPORT NODAL_ParamList *NODAL_ParamListCreateAndAllocateParams(uint32_t kind, uint32_t count, uint32_t bytes);

/* Releases a list and its texts. Null is allowed. */
PLATKIT_EXPORT void NODAL_ParamListDestroy(NODAL_ParamList *list);

/*
 * Appends an integer.
 *
 * HVC_BAD_PARAM: `list` is null. HVC_LIMIT_EXCEEDED: the list has a fixed capacity and is full.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListAddInt(NODAL_ParamList *list, int64_t value);

/*
 * Appends a copy of `text`, which ends in a NUL. Statuses as for NODAL_ParamListAddInt; HVC_BAD_PARAM also if `text` is
 * null.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListAddString(NODAL_ParamList *list, const char *text);

/* Removes the last parameter. HVC_BAD_PARAM: `list` is null. HVC_NOT_FOUND: the list is empty. */
PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListRemoveLastParam(NODAL_ParamList *list);

/* Returns the number of parameters; 0 for null. */
PLATKIT_EXPORT uint32_t NODAL_ParamListUsedCount(const NODAL_ParamList *list);

/*
 * Store the integer at `index`, counted from 0, in `*value`.
 *
 * HVC_BAD_PARAM: a null pointer. HVC_NOT_FOUND: the list has no parameter at `index`. HVC_WRONG_KIND: the parameter is
 * a text. HVC_OUT_OF_RANGE: the integer does not fit the type of `*value`.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetInt64(const NODAL_ParamList *list, uint32_t index,
                                                                          int64_t *value);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetInt32(const NODAL_ParamList *list, uint32_t index,
                                                                          int32_t *value);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetUInt32(const NODAL_ParamList *list, uint32_t index,
                                                                           uint32_t *value);

/*
 * Stores a pointer to the text at `index` in `*text`. The list owns the text (convention 5).
 *
 * HVC_BAD_PARAM: a null pointer. HVC_NOT_FOUND: the list has no parameter at `index`. HVC_WRONG_KIND: the parameter is
 * an integer.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_ParamListGetString(const NODAL_ParamList *list, uint32_t index,
                                                                           const char **text);

/* Returns the parameter at `index`, which the list owns (convention 5), or null if there is none. */
PLATKIT_EXPORT const NODAL_Param *NODAL_ParamListGetParam(const NODAL_ParamList *list, uint32_t index);

/* Returns the integer of a parameter; 0 for a text and for null. */
PLATKIT_EXPORT int64_t NODAL_ParamGetInt(const NODAL_Param *param);

/*
 * Reads the record of a node into `record`. `size` is the size of the record's struct in bytes. records.h has the
 * structs, with the unit of each field.
 *
 * HVC_BAD_PARAM: `record` is null. HVC_NO_SUCH_NODE: unknown identifier. HVC_NOT_A_RECORD: the node is only a list.
 * HVC_WRONG_COUNT, HVC_WRONG_KIND: the arguments do not fit the node. HVC_WRONG_SIZE: `size` is not the record's size,
 * or the source holds a record of another size. HVC_NOT_FOUND: no such instance, or the source has no such record.
 * HVC_NO_PERMISSION: this user may not read the record. HVC_IO_ERROR: the read failed. HVC_SNAPSHOT_DAMAGED: the record
 * is damaged in the snapshot or the history.
 *
 * A register of a device's configuration space (pciConfigReg) has more statuses. HVC_BAD_PARAM: the size is not 1, 2 or
 * 4 bytes. HVC_UNALIGNED_ADDRESS: the address is not a multiple of the size. HVC_ADDRESS_TOO_HIGH: the address is
 * negative or beyond the end of the space.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_Get(uint32_t node, const NODAL_ParamList *args, void *record,
                                                            uint32_t size);

/*
 * Writes the value in `input` to a node. No node returns output: pass null and 0 for `output` and `outputSize`.
 *
 * One node can be written: a register of a device's configuration space (pciConfigReg). Its value is one integer. The
 * arguments give the size of the register: 1, 2 or 4 bytes, which are written with a single access. The running host
 * accepts such writes, and so does a root folder opened with NODAL_CACHE_WRITABLE. Nothing else in this interface
 * writes to a source.
 *
 * HVC_BAD_PARAM: `input` is null, or an output was passed. HVC_READ_ONLY: the node or the source cannot be written.
 * HVC_NODE_NOT_WRITABLE: `input` is not one integer. HVC_OUT_OF_RANGE: the value does not fit the register.
 * HVC_NO_PERMISSION: this user may not write the register. HVC_BUSY: a driver of the kernel uses the device.
 * HVC_TRANSFER_TRUNCATED: only a part of the value was written. Other statuses as for NODAL_Get.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_Set(uint32_t node, const NODAL_ParamList *args,
                                                            const NODAL_ParamList *input, void *output,
                                                            uint32_t outputSize);

/*
 * Replaces the contents of `list` with the instances of a list node, in the order of the source. After HVC_BAD_PARAM,
 * the list is unchanged; after any other failure, it is empty.
 *
 * HVC_BAD_PARAM: `list` is null, or is also the argument list. HVC_NOT_A_LIST: the node is only a record.
 * HVC_LIMIT_EXCEEDED: the list has a fixed capacity, and the instances do not fit. Other statuses as for NODAL_Get.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceList(uint32_t node, const NODAL_ParamList *args,
                                                                        NODAL_ParamList *list);

/*
 * Create a list with the instances of a list node, and store it in `*list`. The caller destroys it. After a failure,
 * there is nothing to destroy. `hint` is the number of instances that the caller expects. A wrong value is harmless.
 *
 * Statuses as for NODAL_GetInstanceList.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceListAlloc(uint32_t node, const NODAL_ParamList *args,
                                                                             NODAL_ParamList **list);
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_GetInstanceListAllocHint(uint32_t node,
                                                                                 const NODAL_ParamList *args,
                                                                                 uint32_t hint, NODAL_ParamList **list);

/* Flags of NODAL_UseCache: one of the first two, and optionally the third. */
#define NODAL_CACHE_SNAPSHOT 0u    /* a snapshot file, or a moment of a history */
#define NODAL_CACHE_ROOT_FOLDER 1u /* a folder with a saved /proc and /sys, read as the root of the host */
#define NODAL_CACHE_WRITABLE 2u    /* for a root folder: NODAL_Set writes to its files */

/*
 * Selects a saved host for all later reads of the process. The library then reads nothing from the running host. On
 * failure, the source is unchanged.
 *
 * The path of a moment is DIR@TIME: the folder of a history, and a time in a form that nodal(1) describes. The source
 * is then the last sample at or before this time. If a file has the whole path as its name, the library opens that file
 * instead.
 *
 * HVC_BAD_PARAM: `path` is null, the flags are unknown or exclude each other, or the time has no known form.
 * HVC_NOT_FOUND: no such file or history. HVC_OUT_OF_RANGE: the time is before the first sample of the history, or more
 * than one sampling interval after the last one. HVC_NAME_TOO_LONG: the path is too long. HVC_LIMIT_EXCEEDED: the
 * history has too many files. HVC_NO_PERMISSION: this user may not read the file. HVC_IO_ERROR: the read failed.
 * HVC_NOT_A_SNAPSHOT: the file is not a snapshot. HVC_SNAPSHOT_DAMAGED: the snapshot or the sample is truncated or
 * damaged. HVC_SNAPSHOT_TOO_NEW: a newer library wrote the file, in a format that this one does not know.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t flags);

/*
 * Compares the definitions of the source's tree with the library's own: paths, kinds of arguments, sizes of records.
 * The running host always matches. A snapshot matches if it was captured with the same definitions.
 *
 * Copies the build text of the source's definitions to `kernelBuild`, truncated to `size` - 1 bytes and terminated by a
 * NUL. Points `*ownBuild` to the library's own build text, which has at most 20 characters and stays valid until the
 * process ends. Both are set if the status is HVC_OK or HVC_DEFINITIONS_DIFFER.
 *
 * HVC_DEFINITIONS_DIFFER: the definitions do not match. HVC_BAD_PARAM: a null pointer, or a `size` of 0.
 */
PLATKIT_NODISCARD PLATKIT_EXPORT HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size,
                                                                 const char **ownBuild);

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_NODAL_H */
