// The wall clock, except that a leap forward counts only after a day.
#ifndef NODAL_HISTORY_BELIEVED_CLOCK_H
#define NODAL_HISTORY_BELIEVED_CLOCK_H

#include <cstdint>
#include <optional>

#include "platkit/history/format.h"

namespace nodal {

// Ages are measured with this clock, because a wall clock that is set to a wrong year must not make a month of samples
// look old. A clock that was set forward by more than a minute is believed after a day. A clock that was set back is
// believed at once. A program that runs for less than a day cannot know whether the clock is right. It must not remove
// samples because their time is in the future.
class BelievedClock {
 public:
  // `newest` is the wall time of the newest sample, if there is one. A clock that is more than a week later than this
  // sample is believed only after a day.
  BelievedClock(const platkit::history::SampleTime &now, std::optional<int64_t> newest);

  // Returns the believed wall time. Must be called at least once a minute.
  int64_t Wall(const platkit::history::SampleTime &now);

  // Whether a day or more had passed, at the last call of Wall, since the program started and since the clock was set
  // last.
  bool isSettled() const { return isSettled_; }

 private:
  int64_t offset_;               // the offset from the boot clock to the wall clock
  std::optional<int64_t> leap_;  // an offset that is not believed yet
  int64_t leapAt_ = 0;           // when `leap_` was first seen, on the boot clock
  int64_t setAt_;                // when the wall clock was set last, or the program started, on the boot clock
  int64_t lastOffset_;           // the offset at the last call of Wall
  bool isSettled_ = false;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_BELIEVED_CLOCK_H
