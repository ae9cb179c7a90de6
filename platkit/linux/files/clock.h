// A monotonic clock, which tests can replace.
#ifndef PLATKIT_LINUX_FILES_CLOCK_H
#define PLATKIT_LINUX_FILES_CLOCK_H

#include <chrono>
#include <functional>
#include <utility>

namespace platkit {

class Clock {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // CLOCK_MONOTONIC.
  Clock() = default;

  // Uses the time that `now` returns.
  explicit Clock(std::function<Time()> now) : now_(std::move(now)) {}

  Time Now() const { return now_ ? now_() : std::chrono::steady_clock::now(); }

 private:
  std::function<Time()> now_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_CLOCK_H
