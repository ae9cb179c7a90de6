// Counts the allocations of this process and fails some of them: operator new, and malloc, calloc and realloc as called
// by kestrel and the library.
#ifndef TESTS_STRESS_ALLOCATIONS_H
#define TESTS_STRESS_ALLOCATIONS_H

#include <cstdint>

namespace stress {

// The allocations that fail, counted from 1.
struct Shortage {
  uint64_t from = 0;   // 0: none
  bool lasts = false;  // all later ones fail too
};

// Starts to count the allocations, and to fail those that `shortage` selects.
void BeginShortage(Shortage shortage);

// Ends the counting and the failures, and returns the number of allocations since BeginShortage.
uint64_t EndShortage();

// The number of allocations that have failed since BeginShortage.
uint64_t FailedAllocations();

// The number of blocks that are allocated now.
int64_t BlocksInUse();

}  // namespace stress

#endif  // TESTS_STRESS_ALLOCATIONS_H
