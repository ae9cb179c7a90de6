// The performance-monitoring counters of a socket's memory side: those of the channels of the integrated memory
// controllers (IMC) and of the mesh-to-memory units (M2M), which are programmed and read through registers in PCI
// configuration space.
//
// Failures are reported on standard output. A counter that is half programmed counts nothing that means anything, so
// all but the two operations on single registers end the process at the first failure.
#ifndef KESTREL_DCPMM_UNCORE_H
#define KESTREL_DCPMM_UNCORE_H

#include <cstdint>

#include "platkit/status.h"
#include "src/dcpmm/counter_output.h"

namespace kestrel {

// The place of a unit in PCI configuration space.
struct UncoreUnit {
  uint32_t segment;
  uint32_t bus;
  uint32_t slot;
  uint32_t function;
};

// The units of a socket, in the order in which they are programmed and read.
struct UnitPlace {
  uint32_t slot;
  uint32_t function;
  const char *name;
  const char *channel;  // null for a mesh-to-memory unit
};
inline constexpr UnitPlace kUnitPlaces[] = {
    {10, 2, "IMC-0", "Channel-0"}, {10, 6, "IMC-0", "Channel-1"}, {11, 2, "IMC-0", "Channel-2"},
    {12, 2, "IMC-1", "Channel-0"}, {12, 6, "IMC-1", "Channel-1"}, {13, 2, "IMC-1", "Channel-2"},
    {8, 0, "M2M-IMC-0", nullptr},  {9, 0, "M2M-IMC-1", nullptr},
};

// Writes the event or control of that name, case ignored, to its register of the unit.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMProgramEvent(const UncoreUnit &unit, const char *event);

// Reads the counter of that name, case ignored, and puts its count into the output.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMReadCounters(const UncoreUnit &unit, const char *counter,
                                                        const CounterOutput &output);

// Stops the unit's counters where they are.
void kestrelDCPMMFreezeUnit(const UncoreUnit &unit);

// Tells each of the unit's counters what to count.
void kestrelDCPMMProgramAllUnits(const UncoreUnit &unit);

// Sets the unit's counters to zero and lets them run.
void kestrelDCPMMResetUnit(const UncoreUnit &unit);

// Freezes the unit and reads all its counters.
void kestrelDCPMMReadAllCounters(const UncoreUnit &unit, const CounterOutput &output);

}  // namespace kestrel

#endif  // KESTREL_DCPMM_UNCORE_H
