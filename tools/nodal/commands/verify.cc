// nodal verify: everything that can be wrong with a snapshot.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/snapshot/verify.h"

namespace nodal {

Run DeclareVerify(OptionSet &options, const SourceOptions &) {
  const auto snapshot = std::make_shared<std::string>();
  options.Add("snapshot", *snapshot, "The snapshot").Required();
  return [snapshot] { return VerifySnapshot(*snapshot) ? kSuccess : kFailure; };
}

}  // namespace nodal
