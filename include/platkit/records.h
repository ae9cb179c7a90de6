/*
 * The wire records that NODAL_Get fills, as packed structs with a named field for all that is known of them.
 * records.def gives each field's unit and meaning; bytes that the kernel keeps to itself are named unread_<offset>.
 *
 * Fields stand at unaligned offsets: read and assign them by value, and do not take their addresses.
 */
#ifndef PLATKIT_RECORDS_H
#define PLATKIT_RECORDS_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "the wire records are little-endian, and so must the machine be"
#endif

#pragma pack(push, 1)
#define RECORD_BEGIN(name) typedef struct name {
#define FIELD(offset, type, name, unit, text) type name;
#define TEXT(offset, size, name, text) char name[size];
#define ENTRIES(offset, record, name, count, text) record name[count];
#define GAP(offset, size) uint8_t unread_##offset[size];
#define RECORD_END(name, size) \
  }                            \
  name;
#include "platkit/records.def"
#pragma pack(pop)

/* Bits of GroupFlagsRecord. */
enum HVC_GroupFlag {
  HVC_GROUP_PREDEFINED = 0x1,
  HVC_GROUP_LEAF = 0x2,
  HVC_GROUP_VM = 0x4,
  HVC_GROUP_USER_WORLD = 0x8,
  HVC_GROUP_SYSTEM_WORLD = 0x10,
  HVC_GROUP_TEST_WORLD = 0x20,
  HVC_GROUP_PROTECTED = 0x40,
  HVC_GROUP_SELF_DESTRUCT = 0x80,
  HVC_GROUP_NON_PERSISTENT = 0x100,
  HVC_GROUP_KERNEL = 0x200,
  HVC_GROUP_USER_CREATED = 0x400,
  HVC_GROUP_CONTAINER = 0x800,
  HVC_GROUP_SUB_CONTAINER = 0x1000,
  HVC_GROUP_VMM_SUB_CONTAINER = 0x2000,
  HVC_GROUP_UW_SUB_CONTAINER = 0x4000
};

/* Bits of RegionRecord.flags. */
enum HVC_RegionFlag {
  HVC_REGION_ALLOCATED = 0x1,
  HVC_REGION_DANGLING = 0x2,
  HVC_REGION_LOCKED = 0x4,
  HVC_REGION_READ_ONLY = 0x8,
  HVC_REGION_BLOCK_DEVICE = 0x10,
  HVC_REGION_PERSISTENT_RESERVATION = 0x20,
  HVC_REGION_SYSTEM = 0x40,
  HVC_REGION_ZOMBIE = 0x80
};

/* A KB amount that is not available, or a limit that is not set. */
#define HVC_KB_NONE UINT64_MAX

#ifdef __cplusplus
namespace platkit::layout {
#define RECORD_BEGIN(name) \
  struct name##Layout {    \
    using Record = ::name;
#define FIELD(offset, type, name, unit, text) static_assert(offsetof(Record, name) == (offset));
#define TEXT(offset, size, name, text) \
  static_assert(offsetof(Record, name) == (offset) && sizeof(Record::name) == (size));
#define ENTRIES(offset, record, name, count, text) static_assert(offsetof(Record, name) == (offset));
#define GAP(offset, size) static_assert(offsetof(Record, unread_##offset) == (offset));
#define RECORD_END(name, size)             \
  static_assert(sizeof(::name) == (size)); \
  }                                        \
  ;
#include "platkit/records.def"
}  // namespace platkit::layout
#endif

#endif /* PLATKIT_RECORDS_H */
