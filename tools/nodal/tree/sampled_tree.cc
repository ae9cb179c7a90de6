#include "tools/nodal/tree/sampled_tree.h"

#include "tools/nodal/support/output.h"

namespace nodal {

platkit::SampledHost HostBelow(const std::string &root, size_t maxDescriptors) {
  return root.empty() ? platkit::SampledHost("/", platkit::Reach::kHost, maxDescriptors)
                      : platkit::SampledHost(root.c_str(), platkit::Reach::kRootFolder, maxDescriptors);
}

void OpenHost(platkit::SampledHost &host, const std::string &root) {
  if (const HVC_ReturnStatus status = host.Open(); status != HVC_OK) throw Failure(root.empty() ? "/" : root, status);
}

// Keeps no files open, because too few samples would use them.
SampledTree::SampledTree(const std::string &root) : host_(HostBelow(root, 0)), tree_(host_.source()) {
  OpenHost(host_, root);
  host_.BeginSample();
}

HVC_ReturnStatus SampledTree::Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) {
  return tree_.Get(node, arguments, record);
}

HVC_ReturnStatus SampledTree::List(const Node &node, const Arguments &arguments, Arguments &entries) {
  return tree_.List(node, arguments, entries);
}

std::unique_ptr<Tree> OpenTree(const std::string &cache, const std::string &root) {
  if (!cache.empty()) return std::make_unique<HostTree>();
  return std::make_unique<SampledTree>(root);
}

}  // namespace nodal
