// nodal build: a snapshot from JSON.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/snapshot/build.h"

namespace nodal {
namespace {

struct BuildOptions {
  std::string json;
  std::string snapshot;
};

}  // namespace

Run DeclareBuild(OptionSet &options, const SourceOptions &) {
  const auto values = std::make_shared<BuildOptions>();
  options.Add("json", values->json, "The JSON file; - means standard input").Required();
  options.Add("-o,--output SNAPSHOT", values->snapshot, "The snapshot to write").Required().NotEmpty();
  return [values] {
    BuildSnapshot(values->json, values->snapshot);
    return kSuccess;
  };
}

}  // namespace nodal
