// A cached value that was read from a file of the host. It is fresh for 100 ms.
#ifndef PLATKIT_LINUX_FILES_FRESH_H
#define PLATKIT_LINUX_FILES_FRESH_H

#include <optional>
#include <utility>

#include "platkit/linux/files/clock.h"

namespace platkit {

inline constexpr std::chrono::milliseconds kFreshTime{100};

template <typename T>
class Fresh {
 public:
  Fresh() = default;

  // Starts with a value that was read before. `readAt` is a time before its file was opened.
  Fresh(T value, Clock::Time readAt) : value_(std::move(value)), readAt_(readAt) {}

  bool IsFresh(const Clock &clock) const { return IsFreshAt(clock.Now()); }

  // The value if it is fresh, else null.
  const T *IfFresh(const Clock &clock) const { return IsFresh(clock) ? &*value_ : nullptr; }

  // Returns the value. Calls `read` first unless the value is fresh. The reference is valid until the next call.
  template <typename Read>
  T &Get(const Clock &clock, Read read) {
    const Clock::Time now = clock.Now();
    if (!IsFreshAt(now)) {
      value_ = read();
      readAt_ = now;
    }
    return *value_;
  }

  // As Get, but also reuses a value that was read at `changedAt` or later and is younger than `maxAge`.
  template <typename Read>
  T &GetIfChanged(const Clock &clock, Clock::Time::duration maxAge, Clock::Time changedAt, Read read) {
    const bool isSame = value_.has_value() && readAt_ >= changedAt && clock.Now() - readAt_ < maxAge;
    return isSame ? *value_ : Get(clock, read);
  }

  // As Get, but also reuses a value that is younger than `maxAge`.
  template <typename Read>
  T &GetYounger(const Clock &clock, Clock::Time::duration maxAge, Read read) {
    return GetIfChanged(clock, maxAge, Clock::Time::min(), read);
  }

  // As Get, for a value that is computed from other cached values. `make` returns a Fresh that is as old as the oldest
  // of these values.
  template <typename Make>
  T &GetMade(const Clock &clock, Make make) {
    if (!IsFresh(clock)) *this = make();
    return *value_;
  }

  // The time from which the value's age counts.
  Clock::Time readAt() const { return readAt_; }

 private:
  bool IsFreshAt(Clock::Time now) const { return value_.has_value() && now - readAt_ < kFreshTime; }

  std::optional<T> value_;
  Clock::Time readAt_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_FRESH_H
