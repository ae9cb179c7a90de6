#include "tools/nodal/capture/host_reading.h"

#include "tools/nodal/capture/vanished.h"
#include "tools/nodal/support/progress.h"
#include "tools/nodal/tree/walk.h"

namespace nodal {
namespace {

void ReadAll(CachingTree &tree, const PathFilter &filter) {
  Progress progress;
  const auto announce = [&](const std::string &what, size_t visits) { progress.Begin(what, visits); };
  Walk(tree, filter).Visit(announce, [&](const Node &node, bool asRecord, const Arguments &arguments) {
    tree.Read(node, asRecord, arguments);
    progress.Advance();
  });
}

void RequireAllFound(PathFilter &filter, CachingTree &tree) {
  for (const auto &[path, answer] : tree.answers()) {
    if (answer.status != HVC_NOT_FOUND) filter.MarkFound(path);
  }
  filter.RequireAllFound();
}

}  // namespace

size_t ReadHost(CachingTree &tree, Tree &host, PathFilter &filter) {
  ReadAll(tree, filter);
  RequireAllFound(filter, tree);
  host.BeginSample();
  return OmitVanished(tree, host);
}

}  // namespace nodal
