// nodal verify: everything that can be wrong with a snapshot or a history.
#include <sys/stat.h>

#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/history/verify_history.h"
#include "tools/nodal/snapshot/verify.h"

namespace nodal {

namespace {

bool IsFolder(const std::string &path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

Run DeclareVerify(OptionSet &options, const SourceOptions &) {
  const auto snapshot = std::make_shared<std::string>();
  options.Add("snapshot", *snapshot, "The snapshot, or the folder of a history").Required();
  return [snapshot] {
    const bool isWhole = IsFolder(*snapshot) ? VerifyHistory(*snapshot) : VerifySnapshot(*snapshot);
    return isWhole ? kSuccess : kFailure;
  };
}

}  // namespace nodal
