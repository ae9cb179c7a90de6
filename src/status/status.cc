#include "src/status/status.h"

extern "C" constinit const char *const returnStatusStrs[kestrel::kStatusTextCount] = {
#define STATUS(index, name, text) text,
#include "platkit/status.def"
#undef STATUS
};

extern "C" const char *HVC_ReturnStatusToString(HVC_ReturnStatus status) {
  if (status > HVC_STATUS_LAST_OWN) return "Opaque service console status";
  // The base itself is no status, so it is not taken off itself.
  const HVC_ReturnStatus index = status > HVC_STATUS_BASE ? status - HVC_STATUS_BASE : status;
  return index < kestrel::kStatusTextCount ? returnStatusStrs[index] : "Unknown status";
}
