// nodal verify: checks a snapshot or a history.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/history/moment_file.h"
#include "tools/nodal/history/verify_history.h"
#include "tools/nodal/snapshot/verify.h"

namespace nodal {

Run DeclareVerify(OptionSet &options, const SourceOptions &) {
  const auto snapshot = std::make_shared<std::string>();
  options.Add("snapshot", *snapshot, "The snapshot, or the folder of a history").Required();
  return [snapshot] {
    const bool isWhole = IsFolder(*snapshot) ? VerifyHistory(*snapshot) : VerifySnapshot(*snapshot);
    return isWhole ? kSuccess : kFailure;
  };
}

}  // namespace nodal
