// The display unit that a user chooses with -u, and conversions to it.
#ifndef KESTREL_TABLE_UNIT_H
#define KESTREL_TABLE_UNIT_H

#include <cstdint>

#include "platkit/records.h"
#include "platkit/status.h"

namespace kestrel {

enum class ReportUnit : uint32_t { kMB = 3, kKB = 4, kPage = 5, kBytes = 6 };

// Parses a unit, ignoring case: mb, kb, pg and, if `bytesAllowed`, b. Null means KB. For any other text it warns,
// returns HVC_BAD_PARAM and does not change `unit`.
[[nodiscard]] HVC_ReturnStatus UnitParse(const char *text, bool bytesAllowed, ReportUnit &unit);

// "KB", "MB", "Page (4K)" or "Bytes".
const char *UnitName(ReportUnit unit);

// Converts KB to a display unit, rounding up. The arithmetic wraps at 64 bits.
constexpr uint64_t KBToUnit(uint64_t kb, ReportUnit unit) {
  switch (unit) {
    case ReportUnit::kMB: return (kb + 1023) >> 10;
    case ReportUnit::kKB: return kb;
    case ReportUnit::kPage: return (kb + 3) >> 2;
    case ReportUnit::kBytes: return kb << 10;
  }
  return 0;
}

// Converts KB to a display unit. Keeps a value with all bits set, which means not available or unlimited.
constexpr uint64_t OptionalKBToUnit(uint64_t kb, ReportUnit unit) {
  return kb == HVC_KB_NONE ? kb : KBToUnit(kb, unit);
}

// Converts a count of 4 KB pages. UINT64_MAX is an ordinary count.
constexpr uint64_t PagesToUnit(uint64_t pages, ReportUnit unit) { return KBToUnit(pages * 4, unit); }

// Converts bytes, which are first rounded up to KB unless the display unit is bytes.
constexpr uint64_t BytesToUnit(uint64_t bytes, ReportUnit unit) {
  return unit == ReportUnit::kBytes ? bytes : KBToUnit((bytes + 1023) >> 10, unit);
}

}  // namespace kestrel

#endif  // KESTREL_TABLE_UNIT_H
