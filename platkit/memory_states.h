// The names of the memory states of the host.
#ifndef PLATKIT_MEMORY_STATES_H
#define PLATKIT_MEMORY_STATES_H

#include <array>
#include <string_view>

namespace platkit {

// The states, from most to least free memory. GlobalMemoryRecord::memState is an index into this array. The names are
// the instances of the node sched_globalStats_memory_stateTransitions.
inline constexpr std::array<std::string_view, 5> kMemoryStates = {"high", "clear", "soft", "hard", "low"};

}  // namespace platkit

#endif  // PLATKIT_MEMORY_STATES_H
