// The wall clock, except that a leap forward counts only after a day.
#ifndef NODAL_HISTORY_BELIEVED_CLOCK_H
#define NODAL_HISTORY_BELIEVED_CLOCK_H

#include <cstdint>
#include <optional>

#include "platkit/history/format.h"

namespace nodal {

// Ages are measured with this clock, because a wall clock that is set to a wrong year must not make a month of samples
// look old. A clock that was set forward is believed after a day, one that was set back at once. A program that runs
// for less than a day cannot know whether the clock is right, so nothing may be removed because it lies in the future.
class BelievedClock {
 public:
  // `newest` is the wall time of the newest sample, if there is one: a clock that is more than a week later is not
  // believed at once.
  BelievedClock(const platkit::history::SampleTime &now, std::optional<int64_t> newest);

  // The believed wall time. Call it at least once a minute.
  int64_t Wall(const platkit::history::SampleTime &now);

  // False if the clock was set within the last day before the last call of Wall.
  bool isSettled() const { return isSettled_; }

 private:
  int64_t offset_;               // from the boot clock to the wall clock
  std::optional<int64_t> leap_;  // an offset that is not believed yet
  int64_t leapAt_ = 0;           // on the boot clock
  int64_t setAt_;                // when the wall clock was set last, or the program started, on the boot clock
  int64_t lastOffset_;           // the offset at the last call of Wall
  bool isSettled_ = false;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_BELIEVED_CLOCK_H
