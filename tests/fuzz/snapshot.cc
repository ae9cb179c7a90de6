// A snapshot file of any bytes: opened through the C interface, reported on, verified; and what is verified can be
// dumped and built again.
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
