// Display units.
#ifndef KESTREL_TABLE_UNIT_H
#define KESTREL_TABLE_UNIT_H

#include <cstdint>

#include "platkit/export.h"
#include "platkit/status.h"

namespace kestrel {

enum class ReportUnit : uint32_t { kMB = 3, kKB = 4, kPage = 5, kBytes = 6 };

// Reads a unit's text, case ignored: mb, kb, pg and, where bytes are allowed, b. Null gives KB. Any other text gets a
// warning and HVC_BAD_PARAM, and leaves `unit` as it was.
[[nodiscard]] HVC_ReturnStatus UnitParse(const char *text, bool bytesAllowed, ReportUnit &unit);

// "KB", "MB", "Page (4K)", "Bytes".
const char *UnitName(ReportUnit unit);

// An amount in KB in a display unit, rounded up. 64-bit arithmetic, which wraps.
uint64_t KBToUnit(uint64_t kb, ReportUnit unit);

// The same for an amount that may be unavailable, or a limit that may not be set: all ones stays all ones.
uint64_t OptionalKBToUnit(uint64_t kb, ReportUnit unit);

// A count of 4 KB pages in a display unit. Page counts have no mark for "not available".
uint64_t PagesToUnit(uint64_t pages, ReportUnit unit);

// An amount in bytes in a display unit: rounded up to KB, and from there on as such.
uint64_t BytesToUnit(uint64_t bytes, ReportUnit unit);

}  // namespace kestrel

#endif  // KESTREL_TABLE_UNIT_H
