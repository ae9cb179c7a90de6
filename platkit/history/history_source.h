// The tree of a host at one moment of its history.
#ifndef PLATKIT_HISTORY_HISTORY_SOURCE_H
#define PLATKIT_HISTORY_HISTORY_SOURCE_H

#include <memory>

#include "platkit/history/format.h"
#include "platkit/history/sample.h"
#include "platkit/source.h"

namespace platkit {

// Reads from a sample, which must be sorted. The sample and its definitions must outlive the source.
class SampleSource : public Source {
 public:
  SampleSource(const history::Sample &sample, const Definitions &definitions)
      : sample_(sample), definitions_(definitions) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override;
  const Definitions &definitions() const override { return definitions_; }

 private:
  HVC_ReturnStatus Find(const Node &node, Arguments arguments, history::Entry &entry) const;

  const history::Sample &sample_;
  const Definitions &definitions_;
};

// A moment of a history, read into memory.
struct Moment {
  history::Sample sample;
  history::SampleInfo info;
  history::HostHeader host;
};

// Reads the last sample at or before the time of DIR@TIME.
//
// HVC_NOT_FOUND: the path does not have this form, or the folder does not exist or has no history. HVC_BAD_PARAM: the
// time has no known form. HVC_OUT_OF_RANGE: the time is outside of the history's span. Other statuses as for
// NODAL_UseCache.
[[nodiscard]] HVC_ReturnStatus ReadMoment(const char *path, Moment &moment);

// Opens a moment as the source of a tree. Statuses as for ReadMoment. `source` is set only on success.
[[nodiscard]] HVC_ReturnStatus OpenMoment(const char *path, std::unique_ptr<Source> &source);

}  // namespace platkit

#endif  // PLATKIT_HISTORY_HISTORY_SOURCE_H
