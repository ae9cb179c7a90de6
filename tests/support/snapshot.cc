#include "tests/support/snapshot.h"

#include <stdexcept>

#include "tests/support/process.h"
#include "tests/support/scratch.h"

namespace testing_support {

void BuildSnapshot(const std::filesystem::path &json, const std::filesystem::path &snapshot) {
  const Outcome outcome =
      Run({.program = NODAL_PROGRAM, .arguments = {"build", json.string(), "-o", snapshot.string()}});
  if (outcome.exitStatus != 0) throw std::runtime_error("nodal build " + json.string() + ": " + outcome.errors);
}

void BuildSnapshotFromText(const std::string &json, const std::filesystem::path &snapshot) {
  const ScratchDirectory scratch;
  const std::string file = scratch.File("host.json");
  WriteFile(file, json);
  BuildSnapshot(file, snapshot);
}

}  // namespace testing_support
