// Builds a snapshot from any JSON text, and reads it with a report. The snapshot must be unchanged by dump and build.
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tools/nodal/snapshot/build.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::MemoryFile json(fuzz::Text(data, size));
  const std::string snapshot = fuzz::ScratchFolder() + "/built.nodal";
  if (!fuzz::Succeeds([&] { nodal::BuildSnapshot(json.path(), snapshot); })) return 0;
  fuzz::CheckRoundTrip(snapshot);
  fuzz::IsSound(snapshot);
  fuzz::ReportOnSnapshot(snapshot);
  return 0;
}
