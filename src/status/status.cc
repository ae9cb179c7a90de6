#include "src/status/status.h"

#include <iterator>

extern "C" constinit const char *const returnStatusStrs[kestrel::kStatusTextCount] = {
#define STATUS(index, name, text) text,
#include "platkit/status.def"
};

namespace {

constexpr unsigned kRowIndexes[] = {
#define STATUS(index, name, text) index,
#include "platkit/status.def"
};

// A text is found by its position, so a row that is missing or out of place would shift all that follow it.
consteval bool EveryRowIsInItsPlace() {
  for (unsigned i = 0; i < std::size(kRowIndexes); ++i) {
    if (kRowIndexes[i] != i) return false;
  }
  return std::size(kRowIndexes) == kestrel::kStatusTextCount;
}
static_assert(EveryRowIsInItsPlace());

}  // namespace

extern "C" const char *HVC_ReturnStatusToString(HVC_ReturnStatus status) {
  if (status > HVC_STATUS_LAST_OWN) return "Opaque service console status";
  // The base itself is no status, so it is not taken off itself.
  const HVC_ReturnStatus index = status > HVC_STATUS_BASE ? status - HVC_STATUS_BASE : status;
  return index < kestrel::kStatusTextCount ? returnStatusStrs[index] : "Unknown status";
}
