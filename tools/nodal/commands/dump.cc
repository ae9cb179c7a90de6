// nodal dump: a snapshot as JSON.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/snapshot/dump.h"

namespace nodal {

Run DeclareDump(OptionSet &options, const SourceOptions &) {
  const auto snapshot = std::make_shared<std::string>();
  options.Add("snapshot", *snapshot, "The snapshot").Required();
  return [snapshot] {
    DumpSnapshot(*snapshot);
    return kSuccess;
  };
}

}  // namespace nodal
