// The kernel's status codes as texts.
#ifndef KESTREL_STATUS_STATUS_H
#define KESTREL_STATUS_STATUS_H

#include <array>

#include "platkit/export.h"
#include "platkit/status.h"

namespace kestrel {

inline constexpr unsigned kStatusTextCount = 355;
using StatusTexts = std::array<const char *, kStatusTextCount>;

}  // namespace kestrel

extern "C" {

// The texts of the kernel's own statuses, by index; index 0 is success. Programs in C may declare it as an array of
// pointers.
extern PLATKIT_EXPORT const kestrel::StatusTexts returnStatusStrs;

// The text of a status. Statuses of the service console share one text. An index has the same text as HVC_STATUS_BASE
// plus the index.
PLATKIT_EXPORT const char *HVC_ReturnStatusToString(HVC_ReturnStatus status);
}

#endif  // KESTREL_STATUS_STATUS_H
