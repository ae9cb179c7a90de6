// Durations in nanoseconds.
#ifndef TESTS_TOOLS_NODAL_HISTORY_DURATIONS_H
#define TESTS_TOOLS_NODAL_HISTORY_DURATIONS_H

#include <cstdint>

#include "platkit/history/format.h"

namespace nodal {

inline constexpr int64_t kSecond = platkit::history::kNanosInSecond;
inline constexpr int64_t kMinute = 60 * kSecond;
inline constexpr int64_t kHour = 60 * kMinute;
inline constexpr int64_t kDay = 24 * kHour;

}  // namespace nodal

#endif  // TESTS_TOOLS_NODAL_HISTORY_DURATIONS_H
