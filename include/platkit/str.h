/* The platform's bounded string copy. */
#ifndef PLATKIT_STR_H
#define PLATKIT_STR_H

#include <stddef.h>

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copies at most `size` - 1 bytes of `source` to `destination` and always ends what it wrote with a terminator; a
 * longer source is cut. A `size` of 0 writes nothing; a null source copies as an empty text.
 *
 * REQUIRES: `destination` has room for `size` bytes, and the two do not overlap.
 * Returns `destination`.
 */
PLATKIT_EXPORT char *Str_Strcpy(char *destination, const char *source, size_t size);

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_STR_H */
