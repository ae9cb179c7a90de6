// The samples of a history between two times.
#ifndef NODAL_HISTORY_HISTORY_RANGE_H
#define NODAL_HISTORY_HISTORY_RANGE_H

#include <functional>
#include <string>

#include "platkit/history/sample_table.h"
#include "tools/nodal/history/moment_file.h"

namespace nodal {

// The times as in options; empty: the start and the end of the history.
struct RangeOptions {
  std::string folder;
  std::string from = {};
  std::string to = {};
  std::string step = {};      // such as 1m: only the first sample of each step; empty: all samples
  bool isQuiet = false;       // tells no damage
  bool lastOfSecond = false;  // instead of the first sample of a step, the last one in its second, as DIR@TIME has
};

class HistoryRange {
 public:
  // Throws a Failure.
  explicit HistoryRange(const RangeOptions &options);

  // The times of the options, in seconds since 1970.
  int64_t from() const { return from_; }
  int64_t to() const { return to_; }

  using Visitor = std::function<void(const platkit::history::SampleInfo &info, const platkit::history::Sample &sample,
                                     const platkit::history::HostHeader &host)>;

  // Calls the visitor for each sample, in the order of time. With a filter, the samples have only some entries, and are
  // read much faster. Prints to standard error how many samples were damaged, unless it is quiet. Throws a Failure.
  void Visit(const platkit::history::KeyFilter *filter, const Visitor &visitor);

 private:
  void VisitSegment(const platkit::history::KeyFilter *filter, platkit::history::SegmentName name,
                    const Visitor &visitor);

  std::string folder_;
  platkit::history::History history_;
  int64_t from_;
  int64_t to_;
  int64_t step_;  // in seconds; 0: all samples
  bool lastOfSecond_;
  bool isQuiet_;
  int64_t lastStep_ = -1;
  size_t lost_ = 0;
  size_t damagedParts_ = 0;
};

// The seconds of a step, such as 10s; 0 for an empty text. Throws a UsageError.
int64_t StepOption(const std::string &text);

}  // namespace nodal

#endif  // NODAL_HISTORY_HISTORY_RANGE_H
