#ifndef TESTS_PLATKIT_API_RECORDING_SOURCE_H
#define TESTS_PLATKIT_API_RECORDING_SOURCE_H

#include <cstring>
#include <string>

#include "platkit/source.h"

namespace platkit {

// A source that answers every read and logs the nodes.
class RecordingSource : public Source {
 public:
  explicit RecordingSource(std::string &log) : log_(log) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override {
    Log("get", node, arguments);
    std::memset(record.data(), 0x11, record.size());
    return HVC_OK;
  }

  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override {
    Log("list", node, arguments);
    for (int64_t i = 0; i < 100; ++i) {
      if (const HVC_ReturnStatus status = list.Add(i); status != HVC_OK) return status;
    }
    return HVC_OK;
  }

  const Definitions &definitions() const override { return definitions_; }

 private:
  void Log(const char *what, const Node &node, Arguments arguments) {
    log_ += std::string(what) + ' ' + std::string(node.name);
    for (const NODAL_Param &argument : arguments) {
      log_ += ' ';
      log_ += argument.kind == ParamKind::kInt ? std::to_string(argument.integer) : std::string(argument.text());
    }
    log_ += '\n';
  }

  std::string &log_;
  Definitions definitions_ = {.signature = "other", .build = "a build text of more than twenty characters"};
};

}  // namespace platkit

#endif  // TESTS_PLATKIT_API_RECORDING_SOURCE_H
