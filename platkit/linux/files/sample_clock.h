// A clock that stands still during a sample.
#ifndef PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H
#define PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H

#include <algorithm>
#include <memory>

#include "platkit/linux/files/clock.h"
#include "platkit/linux/files/fresh.h"

namespace platkit {

// With this clock, values that were read from files stay fresh until the next sample, however long that takes.
class SampleClock {
 public:
  // Starts a sample: values of earlier samples are no longer fresh.
  void BeginSample() { *time_ = std::max(std::chrono::steady_clock::now(), *time_ + kFreshTime); }

  Clock clock() const {
    return Clock([time = time_] { return *time; });
  }

 private:
  std::shared_ptr<Clock::Time> time_ = std::make_shared<Clock::Time>(std::chrono::steady_clock::now());
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_SAMPLE_CLOCK_H
