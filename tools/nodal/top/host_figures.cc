#include "tools/nodal/top/screen.h"

namespace nodal::top {
namespace {

using enum Use;

constexpr Column kHostColumns[] = {
    {.name = "value", .use = kRow, .isDefault = true, .meaning = "the figure"},
    {.name = "percent", .use = kRow, .isDefault = true, .meaning = "share of the host's memory"},
    {.name = "report", .use = kText, .isDefault = true, .meaning = "the report that shows the figure"},
    {.name = "meaning", .use = kText, .isDefault = true, .meaning = "what the figure means"},
};

// The number of transitions from a memory state to its lower or higher neighbour.
#define LOWER(number)                                                                                              \
  Term {                                                                                                           \
    platkit::NodeId::sched_globalStats_memory_stateTransitions, offsetof(StateTransitionsRecord, toLowerCount), 1, \
        number                                                                                                     \
  }
#define HIGHER(number)                                                                                              \
  Term {                                                                                                            \
    platkit::NodeId::sched_globalStats_memory_stateTransitions, offsetof(StateTransitionsRecord, toHigherCount), 1, \
        number                                                                                                      \
  }
#define COMP(name, use) \
  { {#name, use, {TOP_FIELD(memory_comprehensive, name)}}, "comp-stats" }
#define SCHED(name, use) \
  { {#name, use, {TOP_FIELD(sched_globalStats_memory_kestrel, name)}}, "comp-stats" }
#define ENTRIES(title, ...) \
  { .name = title, .use = kCounter, .terms = {__VA_ARGS__}, .meaning = "times the host entered the state" }
#define PSHARE(name, use) \
  { {#name, use, {TOP_FIELD(memory_pshare_stats, name)}}, "pshare-stats" }
#define HINTS(name, use) \
  { {#name, use, {TOP_FIELD(memory_pshare_stats, name)}}, "pshareHint-stats" }

constexpr HostFigure kFigures[] = {
    {{.name = "memState",
      .use = kSetting,
      .terms = {TOP_FIELD(sched_globalStats_memory_kestrel, memState)},
      .quantity = Quantity::kMemoryState,
      .meaning = "memory state"},
     "comp-stats"},
    COMP(total, kLevel),
    COMP(free, kLevel),
    SCHED(minFree, kSetting),
    COMP(discarded, kLevel),
    COMP(managedByMemMap, kLevel),
    COMP(reliableMem, kLevel),
    COMP(kernelCode, kLevel),
    COMP(dataAndHeap, kLevel),
    COMP(buddyOvhd, kLevel),
    COMP(rsvdLow, kLevel),
    SCHED(managedByMemSched, kLevel),
    COMP(hvcClientConsumed, kLevel),
    COMP(otherConsumed, kLevel),
    // The host starts in the high state, which counts as entering it.
    {ENTRIES("numHigh", HIGHER(1)), "comp-stats", 1},
    {ENTRIES("numClear", LOWER(0), HIGHER(2)), "comp-stats"},
    {ENTRIES("numSoft", LOWER(1), HIGHER(3)), "comp-stats"},
    {ENTRIES("numHard", LOWER(2), HIGHER(4)), "comp-stats"},
    {ENTRIES("numLow", LOWER(3)), "comp-stats"},
    {{"numVMs", kLevel, {TOP_FIELD(sched_globalStats_numVMs, numVMs)}}, ""},
    PSHARE(cow, kLevel),
    PSHARE(cow1, kLevel),
    PSHARE(zero, kLevel),
    PSHARE(used, kLevel),
    PSHARE(reclaimed, kLevel),
    PSHARE(totAdd, kCounter),
    PSHARE(totRemove, kCounter),
    PSHARE(peakChainLength, kSetting),
    PSHARE(peakRefCount, kSetting),
    HINTS(hintsActive, kLevel),
    HINTS(hintsAdded, kCounter),
    HINTS(hintsRemoved, kCounter),
    HINTS(lpageHintsAdded, kCounter),
    HINTS(lpageHintsRemoved, kCounter),
};

#undef LOWER
#undef HIGHER
#undef COMP
#undef SCHED
#undef ENTRIES
#undef PSHARE
#undef HINTS

}  // namespace

std::span<const Column> HostColumns() { return kHostColumns; }
std::span<const HostFigure> HostFigures() { return kFigures; }

}  // namespace nodal::top
