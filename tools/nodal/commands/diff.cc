// nodal diff: the differences between two snapshots.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/snapshot/diff.h"

namespace nodal {

Run DeclareDiff(OptionSet &options, const SourceOptions &) {
  const auto values = std::make_shared<DiffOptions>();
  options.Add("from", values->from, "The first snapshot").Required();
  options.Add("to", values->to, "The second snapshot").Required();
  options.AddRepeatable("--only PATH", values->only, "Compare only this path and everything below it; repeatable");
  options.AddFlag("--json", values->json, "Show JSON");
  options.SetFooter(
      "Exit status: 0 if the snapshots are equal, 1 if they differ, 2 on failure. Host and time are not compared.");
  return [values] { return DiffSnapshots(*values) ? kSuccess : kDifferent; };
}

}  // namespace nodal
