/*
 * The channel for diagnostics.
 *
 * The name `Warning` cannot change, because programs that use the interface call it. Other code may define the name,
 * too:
 * - If a program defines its own `Warning`, its calls go to that function. The library never calls `Warning`, so the
 *   program's function gets no messages from the library.
 * - If another library also defines `Warning`, the version of the symbol tells the two functions apart.
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
