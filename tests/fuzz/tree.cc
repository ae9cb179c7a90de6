// Reads a well-formed snapshot, whose nodes may contradict each other, with a report. The snapshot must be unchanged by
// dump and build.
#include "tests/fuzz/kestrel.h"
#include "tests/fuzz/nodal.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/tree_form.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string path = fuzz::ScratchFolder() + "/tree.nodal";
  if (!fuzz::WriteTree(fuzz::Text(data, size), path)) return 0;
  fuzz::ReportOnSnapshot(path);
  fuzz::IsSound(path);
  fuzz::CheckRoundTrip(path);
  return 0;
}
