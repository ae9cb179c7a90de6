/*
 * Bounded copy of strings. As with `Warning` (see warning.h), the name is fixed, and a program's own function of this
 * name takes precedence for the program's calls.
 */
#ifndef PLATKIT_STR_H
#define PLATKIT_STR_H

#include <stddef.h>

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copies at most `size` - 1 bytes of `source` to `destination` and adds a NUL. A longer source is truncated. A null
 * source is treated as an empty string. A `size` of 0 writes nothing.
 *
 * REQUIRES: `destination` has room for `size` bytes and does not overlap `source`.
 * Returns `destination`.
 */
PLATKIT_EXPORT char *Str_Strcpy(char *destination, const char *source, size_t size);

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_STR_H */
