/*
 * Status codes of the hypervisor kernel's status space.
 *
 * 0 is success. A failure of the kernel's own space is HVC_STATUS_BASE plus the index of its text in status.def.
 * Values above HVC_STATUS_LAST_OWN belong to the service console's space and are not interpreted here.
 */
#ifndef PLATKIT_STATUS_H
#define PLATKIT_STATUS_H

#include <stdint.h>

typedef uint32_t HVC_ReturnStatus;

#define HVC_STATUS_BASE 0x0bad0000u
#define HVC_STATUS_LAST_OWN 0x2bacffffu

/* One constant per row of status.def: HVC_OK is 0, HVC_FAILURE is 0x0bad0001, and so on. */
#ifdef __cplusplus
#define STATUS(index, name, text) \
  inline constexpr HVC_ReturnStatus HVC_##name = (index) == 0 ? 0 : HVC_STATUS_BASE + (index);
#include "platkit/status.def"
#else
enum HVC_StatusCode {
#define STATUS(index, name, text) HVC_##name = (index) == 0 ? 0 : (int)(HVC_STATUS_BASE + (index)),
#include "platkit/status.def"
};
#endif

#endif /* PLATKIT_STATUS_H */
