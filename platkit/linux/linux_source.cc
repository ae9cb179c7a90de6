#include "platkit/linux/linux_source.h"

namespace platkit {
namespace {

class LinuxSource : public Source {
 public:
  HVC_ReturnStatus Get(const Node &, Arguments, std::span<std::byte>) override { return HVC_NOT_FOUND; }
  HVC_ReturnStatus List(const Node &, Arguments, ParamList &) override { return HVC_NOT_FOUND; }
};

}  // namespace

std::unique_ptr<Source> OpenLinuxHost(const char *) { return std::make_unique<LinuxSource>(); }

HVC_ReturnStatus OpenSavedRoot(const char *root, std::unique_ptr<Source> &source) {
  source = OpenLinuxHost(root);
  return HVC_OK;
}

}  // namespace platkit
