// Keeps a history within its limits: thins old segments to one sample per minute, and removes the oldest files.
#ifndef NODAL_HISTORY_RETENTION_H
#define NODAL_HISTORY_RETENTION_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>

#include "platkit/history/format.h"
#include "platkit/history/history_folder.h"
#include "tools/nodal/history/believed_clock.h"
#include "tools/nodal/history/segment_thinner.h"

namespace nodal {

struct RetentionLimits {
  int64_t unthinned = 86'400 * platkit::history::kNanosInSecond;  // the age up to which all samples are kept
  int64_t age = 30 * 86'400 * platkit::history::kNanosInSecond;
  uint64_t bytes = uint64_t{1} << 30;
};

// Removing a segment needs no disk space, so the limits also hold on a full disk.
class Retention {
 public:
  using Name = platkit::history::SegmentName;
  using Time = platkit::history::SampleTime;

  // The folder must outlive the object. Removes the temporary file of an interrupted thinning. The constructor and
  // Apply throw a Failure if the folder cannot be listed.
  Retention(const platkit::history::HistoryFolder &folder, const RetentionLimits &limits, const Time &now);

  // Removes files of the history that are too old, and then the oldest ones while all files together exceed the size
  // limit. The files are the segments and those that were set aside. Never removes the open segment; `openBytes` is its
  // size, or its expected size. Returns false if the open segment alone exceeds the limit.
  bool Apply(const Time &now, const Name &open, uint64_t openBytes);

  // Thins old segments while `hasTime` returns true, and does at least one step. If a step fails, returns its status
  // and does not thin that segment again until the next hour.
  HVC_ReturnStatus Thin(const std::function<bool()> &hasTime);

  // The size of all files of the history except the open segment, as of the last call of Apply.
  uint64_t closedBytes() const { return closedBytes_; }

 private:
  using SetAsideName = platkit::history::SetAsideName;
  // The names and their sizes.
  using Segments = std::map<Name, uint64_t>;
  using SetAsideFiles = std::map<SetAsideName, uint64_t>;

  void List(const Name &open);
  bool IsTooOld(const Name &name) const;
  void RemoveOldest();
  Segments::iterator Remove(Segments::iterator segment);
  SetAsideFiles::iterator Remove(SetAsideFiles::iterator file);
  int64_t SecondsOld(const Name &name) const;
  bool StartThinning();
  void FinishThinning(HVC_ReturnStatus status);
  void StopThinning();

  const platkit::history::HistoryFolder &folder_;
  RetentionLimits limits_;
  std::optional<BelievedClock> clock_;
  int64_t wall_ = 0;                // the believed wall time
  int64_t latest_ = 0;              // the later of the believed time and the time of the wall clock
  int64_t listedAt_ = INT64_MIN;    // when the folder was listed, on the monotonic clock
  std::optional<Name> listedOpen_;  // the open segment when the folder was listed
  Segments segments_;               // all segments except the open one
  SetAsideFiles setAside_;
  uint64_t closedBytes_ = 0;
  std::set<Name> done_;    // segments that need no thinning
  std::set<Name> failed_;  // segments whose thinning failed this hour
  SegmentThinner thinner_;
  std::optional<Name> thinned_;  // the segment that is being thinned
};

}  // namespace nodal

#endif  // NODAL_HISTORY_RETENTION_H
