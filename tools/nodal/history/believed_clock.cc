#include "tools/nodal/history/believed_clock.h"

#include <algorithm>
#include <cstdlib>

namespace nodal {
namespace {

using platkit::history::kNanosInSecond;
using platkit::history::SampleTime;

constexpr int64_t kDay = 86'400 * kNanosInSecond;

// Time synchronization changes the clock by less than this at a time.
constexpr int64_t kCorrection = 60 * kNanosInSecond;

}  // namespace

BelievedClock::BelievedClock(const SampleTime &now, std::optional<int64_t> newest)
    : offset_(std::min(now.wall, newest.value_or(now.wall) + 7 * kDay) - now.boot),
      setAt_(now.boot),
      lastOffset_(now.wall - now.boot) {}

int64_t BelievedClock::Wall(const SampleTime &now) {
  const int64_t offset = now.wall - now.boot;
  if (std::abs(offset - lastOffset_) > kCorrection) setAt_ = now.boot;
  lastOffset_ = offset;
  isSettled_ = now.boot - setAt_ >= kDay;
  if (offset <= offset_ + kCorrection) {
    offset_ = offset;
    leap_.reset();
  } else if (!leap_ || std::abs(offset - *leap_) > kCorrection) {
    leap_ = offset;
    leapAt_ = now.boot;
  } else if (now.boot - leapAt_ >= kDay) {
    offset_ = offset;
    leap_.reset();
  }
  return now.boot + offset_;
}

}  // namespace nodal
