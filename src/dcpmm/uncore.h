// The performance-monitoring counters of a socket's memory units: the channels of the integrated memory controllers
// (IMC) and the mesh-to-memory units (M2M). They are programmed and read through registers in PCI configuration space.
//
// Failures are printed to standard output. The functions on whole units end the process at the first failure, because a
// partly programmed unit gives meaningless counts.
#ifndef KESTREL_DCPMM_UNCORE_H
#define KESTREL_DCPMM_UNCORE_H

#include <cstdint>

#include "platkit/status.h"
#include "src/dcpmm/counter_output.h"

namespace kestrel {

// The address of a unit in PCI configuration space.
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

// Writes the value of an event or of a control to its register of the unit. Ignores the case of the name.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMProgramEvent(const UncoreUnit &unit, const char *event);

// Reads a counter of the unit and prints its count. Ignores the case of the name.
[[nodiscard]] HVC_ReturnStatus KestrelDCPMMReadCounters(const UncoreUnit &unit, const char *counter,
                                                        const CounterOutput &output);

// Stops the unit's counters.
void kestrelDCPMMFreezeUnit(const UncoreUnit &unit);

// Sets the events that the unit's counters count.
void kestrelDCPMMProgramAllUnits(const UncoreUnit &unit);

// Clears the unit's counters and starts them.
void kestrelDCPMMResetUnit(const UncoreUnit &unit);

// Freezes the unit and reads all its counters.
void kestrelDCPMMReadAllCounters(const UncoreUnit &unit, const CounterOutput &output);

}  // namespace kestrel

#endif  // KESTREL_DCPMM_UNCORE_H
