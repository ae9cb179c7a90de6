// Simulates the event counters of memory controllers, accessed through their PCI configuration registers.
//
// A unit is a memory channel or, in slots 8 and 9, a mesh-to-memory unit. Its control register stops the counters
// (0x100) and clears them (0x2). Each counter has a control register (0x400000: enabled; low 16 bits: the event) and
// two registers for the halves of its count. Time advances only while the program sleeps; the counters of running units
// then grow by the number of their events. A unit is initially running, with nonzero counts.
#ifndef TESTS_FAULTS_UNCORE_H
#define TESTS_FAULTS_UNCORE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace faults {

class Uncore {
 public:
  // Segment, bus, slot, function.
  using Address = std::array<int64_t, 4>;

  void AddUnit(const Address &address);
  // Sets the number of events of the last added unit in each period; the last amount repeats.
  void AddTraffic(uint32_t event, const std::vector<uint64_t> &amounts);

  // Both return whether the register exists.
  bool Write(const Address &address, int64_t offset, uint32_t value);
  bool Read(const Address &address, int64_t offset, uint32_t &value) const;

  void PassPeriod();

 private:
  struct Counter {
    int64_t controlRegister;
    int64_t countRegister;  // the low half; the high half follows
    uint32_t control = 0;
    uint64_t count = 0x1234'5678'9abc;
  };
  struct Unit {
    int64_t controlRegister;
    std::vector<Counter> counters;
    uint32_t control = 0;
    std::map<uint32_t, std::vector<uint64_t>> traffic = {};
  };

  static Unit MakeUnit(int64_t slot);

  std::map<Address, Unit> units_;
  Unit *last_ = nullptr;
  size_t periods_ = 0;
};

}  // namespace faults

#endif  // TESTS_FAULTS_UNCORE_H
