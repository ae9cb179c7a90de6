#include "src/table/unit.h"

#include <strings.h>

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

}  // namespace kestrel
