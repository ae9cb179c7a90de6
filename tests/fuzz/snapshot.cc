// Opens a snapshot file of any bytes through the C interface, reads it with a report, and verifies it. A valid snapshot
// must be unchanged by dump and build.
#include "platkit/nodal.h"
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::MemoryFile file(fuzz::Text(data, size));
  fuzz::ReportOnSnapshot(file.path());
  if (fuzz::IsSound(file.path())) fuzz::CheckRoundTrip(file.path());
  return 0;
}
