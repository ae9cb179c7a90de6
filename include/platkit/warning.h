/*
 * The channel for diagnostics.
 *
 * Programs that use the interface call this name, so it cannot change, although another library could also define it. A
 * program that defines a `Warning` of its own gets that one instead. The library never calls it, so the program's own
 * function sees no message of the library. Two libraries that define it are kept apart by the version of the symbol.
 */
#ifndef PLATKIT_WARNING_H
#define PLATKIT_WARNING_H

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writes a printf-style message to standard error, without a prefix or a newline of its own. Flushes standard output
 * first, so that a terminal or a log of both streams shows output and messages in order. Preserves errno.
 */
PLATKIT_EXPORT void Warning(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

#ifdef __cplusplus
}
#endif

#endif /* PLATKIT_WARNING_H */
