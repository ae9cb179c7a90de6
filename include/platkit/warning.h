/* The platform's warning channel: where every diagnostic that is not a report's own output goes. */
#ifndef PLATKIT_WARNING_H
#define PLATKIT_WARNING_H

#include "platkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writes one printf-style message to standard error, with neither prefix nor line end of its own. Standard output is
 * flushed first, so that a terminal and a log of both streams show reports and messages in the order they were made.
 * Leaves errno as it was.
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
