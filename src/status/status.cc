#include "src/status/status.h"

#include "platkit/status_texts.h"

namespace {

constexpr kestrel::StatusTexts AllTexts() {
  kestrel::StatusTexts texts = {};
  for (unsigned i = 0; i < texts.size(); ++i)
    texts[i] = platkit::kStatusTexts[i].text;
  return texts;
}
static_assert(platkit::kStatusTexts.size() == kestrel::kStatusTextCount);

}  // namespace

extern "C" constinit const kestrel::StatusTexts returnStatusStrs = AllTexts();

extern "C" const char *HVC_ReturnStatusToString(HVC_ReturnStatus status) {
  if (status > HVC_STATUS_LAST_OWN) return "Opaque service console status";
  // HVC_STATUS_BASE itself is not a status. As an index it is too large, so its text is "Unknown status".
  const HVC_ReturnStatus index = status > HVC_STATUS_BASE ? status - HVC_STATUS_BASE : status;
  return index < kestrel::kStatusTextCount ? returnStatusStrs[index] : "Unknown status";
}
