#ifndef TESTS_PLATKIT_C_INTERFACE_H
#define TESTS_PLATKIT_C_INTERFACE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the number of a group's members, or UINT32_MAX on failure. */
uint32_t CountMembersInC(int64_t group);

#ifdef __cplusplus
}
#endif

#endif /* TESTS_PLATKIT_C_INTERFACE_H */
