#include "src/table/unit.h"

#include <strings.h>

#include "platkit/records.h"
#include "platkit/warning.h"

namespace kestrel {

HVC_ReturnStatus UnitParse(const char *text, bool bytesAllowed, ReportUnit &unit) {
  if (text == nullptr) {
    unit = ReportUnit::kKB;
  } else if (strcasecmp(text, "mb") == 0) {
    unit = ReportUnit::kMB;
  } else if (strcasecmp(text, "kb") == 0) {
    unit = ReportUnit::kKB;
  } else if (strcasecmp(text, "pg") == 0) {
    unit = ReportUnit::kPage;
  } else if (bytesAllowed && strcasecmp(text, "b") == 0) {
    unit = ReportUnit::kBytes;
  } else {
    Warning("Invalid unit specified. Choose from {mb, kb, pg%s}\n", bytesAllowed ? ", b" : "");
    return HVC_BAD_PARAM;
  }
  return HVC_OK;
}

const char *UnitName(ReportUnit unit) {
  switch (unit) {
    case ReportUnit::kMB: return "MB";
    case ReportUnit::kKB: return "KB";
    case ReportUnit::kPage: return "Page (4K)";
    case ReportUnit::kBytes: return "Bytes";
  }
  return "Unknown";
}

uint64_t KBToUnit(uint64_t kb, ReportUnit unit) {
  switch (unit) {
    case ReportUnit::kMB: return (kb + 1023) >> 10;
    case ReportUnit::kKB: return kb;
    case ReportUnit::kPage: return (kb + 3) >> 2;
    case ReportUnit::kBytes: return kb << 10;
  }
  return 0;
}

uint64_t OptionalKBToUnit(uint64_t kb, ReportUnit unit) { return kb == HVC_KB_NONE ? kb : KBToUnit(kb, unit); }

uint64_t PagesToUnit(uint64_t pages, ReportUnit unit) { return KBToUnit(pages * 4, unit); }

uint64_t BytesToUnit(uint64_t bytes, ReportUnit unit) {
  return unit == ReportUnit::kBytes ? bytes : KBToUnit((bytes + 1023) >> 10, unit);
}

}  // namespace kestrel
