// Records a host: takes a sample at each interval, and appends it to a history.
#ifndef NODAL_HISTORY_RECORDER_H
#define NODAL_HISTORY_RECORDER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platkit/history/format.h"
#include "platkit/history/history_folder.h"
#include "platkit/history/sample.h"
#include "platkit/history/segment_writer.h"
#include "tools/nodal/history/recorder_lock.h"
#include "tools/nodal/history/retention.h"

namespace nodal {

struct RecorderOptions {
  std::string folder;
  int64_t interval = 5 * platkit::history::kNanosInSecond;
  uint64_t count = 0;  // the number of samples; 0: until the recorder is asked to end
  RetentionLimits limits = {};
};

// Takes the samples of a recorder. Tests replace it.
class Sampled {
 public:
  virtual ~Sampled() = default;

  // Adds the entries to `sample`, and sets `host` and `availableBytes`. REQUIRES: `sample` is empty.
  virtual void Take(platkit::history::Sample &sample, platkit::history::HostHeader &host, uint64_t &availableBytes) = 0;
};

// The clocks of a recorder, and its waiting between samples. Tests replace it.
class Pace {
 public:
  virtual ~Pace() = default;

  virtual platkit::history::SampleTime Now() = 0;

  // Waits until the monotonic clock reaches `time`. Returns false at once if the recorder is asked to end.
  virtual bool WaitUntil(int64_t time) = 0;
};

class Recorder {
 public:
  // Creates the folder unless it exists, and locks it. Throws a Failure if the folder cannot be opened, belongs to
  // another user or is writable by others, or if another recorder has locked it.
  Recorder(const RecorderOptions &options, Sampled &sampled, Pace &pace);

  // Records until the number of samples is reached or the recorder is asked to end. A sample that cannot be written, as
  // on a full disk, is lost; messages report the first such sample and the end of the problem.
  void Run();

  // The last sample that was written, and its time. Before the first sample, there are no entries and no time.
  const platkit::history::Sample &last() const { return writer_.last(); }
  const std::optional<platkit::history::SampleTime> &lastTime() const { return lastTime_; }

  // HVC_OK if the last sample was written, otherwise the reason why it was not.
  HVC_ReturnStatus status() const { return status_; }

  uint64_t samples() const { return samples_; }
  uint64_t bytes() const { return bytes_; }

 private:
  using Name = platkit::history::SegmentName;

  void OpenFolder();
  void TakeSample();
  HVC_ReturnStatus Write(const platkit::history::SampleInfo &info);
  HVC_ReturnStatus OpenSegment(const Name &name);
  HVC_ReturnStatus SetAside(const Name &name);
  void RemoveOpenSegment(const Name &name);
  void Report(const Name &name, HVC_ReturnStatus status);
  void Keep(const platkit::history::SampleTime &time, const Name &name);
  int64_t NextDue(int64_t due);
  void End();

  RecorderOptions options_;
  Sampled &sampled_;
  Pace &pace_;
  platkit::history::HistoryFolder folder_;
  std::unique_ptr<RecorderLock> lock_;
  std::optional<Retention> retention_;
  platkit::history::SegmentWriter writer_;
  std::optional<Name> open_;
  platkit::history::Sample sample_;
  platkit::history::HostHeader host_;
  std::optional<platkit::history::SampleTime> lastTime_;
  HVC_ReturnStatus status_ = HVC_OK;
  uint64_t lost_ = 0;     // samples lost since the last one that was written
  uint64_t taken_ = 0;    // all samples
  uint64_t samples_ = 0;  // samples that were written
  uint64_t bytes_ = 0;
  uint64_t largestFrame_ = 0;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_RECORDER_H
