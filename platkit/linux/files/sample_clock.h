// A clock that stands still during a sample.
#ifndef PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H
#define PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H

#include <algorithm>
#include <memory>

#include "platkit/linux/files/clock.h"
#include "platkit/linux/files/fresh.h"

namespace platkit {

// With this clock, what was read from a file is reused for the length of one sample, however long that takes.
class SampleClock {
 public:
  // Starts a sample: everything is read again.
  void BeginSample() { *time_ = std::max(std::chrono::steady_clock::now(), *time_ + kFreshTime); }

  Clock clock() const {
    return Clock([time = time_] { return *time; });
  }

 private:
  std::shared_ptr<Clock::Time> time_ = std::make_shared<Clock::Time>(std::chrono::steady_clock::now());
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H
