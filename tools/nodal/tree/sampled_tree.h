// A host as one sample reads it.
#ifndef NODAL_TREE_SAMPLED_TREE_H
#define NODAL_TREE_SAMPLED_TREE_H

#include <memory>
#include <string>

#include "platkit/linux/sampled_host.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {

// Returns the running host if `root` is empty, else the saved root folder `root`. The host keeps up to `maxDescriptors`
// files open between samples.
platkit::SampledHost HostBelow(const std::string &root, size_t maxDescriptors);

// Opens the host that HostBelow returned for `root`. Throws a Failure if it cannot be opened.
void OpenHost(platkit::SampledHost &host, const std::string &root);

// In one sample, reads each file of the host at most once, so that all figures of a file are from the same time.
class SampledTree : public Tree {
 public:
  // The running host, or a saved root folder. Throws a Failure if it cannot be opened.
  explicit SampledTree(const std::string &root);

  HVC_ReturnStatus Get(const Node &node, const Arguments &arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, const Arguments &arguments, Arguments &entries) override;
  void BeginSample() override { host_.BeginSample(); }

 private:
  platkit::SampledHost host_;
  SourceTree tree_;
};

// Returns the snapshot or history that NODAL_UseCache opened if `cache` is not empty, else one sample of the host.
std::unique_ptr<Tree> OpenTree(const std::string &cache, const std::string &root);

}  // namespace nodal

#endif  // NODAL_TREE_SAMPLED_TREE_H
