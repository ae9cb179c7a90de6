// A host as of one sample.
#ifndef NODAL_TREE_SAMPLED_TREE_H
#define NODAL_TREE_SAMPLED_TREE_H

#include <memory>
#include <string>

#include "platkit/linux/sampled_host.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {

// The running host if `root` is empty, else the saved root folder `root`. Keeps up to `maxDescriptors` of the running
// host's files open between samples.
platkit::SampledHost HostBelow(const std::string &root, size_t maxDescriptors);

// Opens the host that HostBelow returned for `root`. Throws a Failure.
void OpenHost(platkit::SampledHost &host, const std::string &root);

// In a sample, each file of the host is read at most once, so that all figures of a file are of the same moment.
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

// The snapshot or history that NODAL_UseCache opened if `cache` is not empty, else a sample of the host.
std::unique_ptr<Tree> OpenTree(const std::string &cache, const std::string &root);

}  // namespace nodal

#endif  // NODAL_TREE_SAMPLED_TREE_H
