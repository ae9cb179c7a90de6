// Simulates the event counters of memory controllers behind their PCI configuration registers.
//
// A unit is a memory channel or, at slots 8 and 9, a mesh-to-memory unit. Its control register stops its counters
// (0x100) and sets them to zero (0x2). Each counter has a control register, which selects the event (low 16 bits) and
// enables the counter (0x400000), and two registers with the halves of the count. Time passes only while the program
// sleeps: then each counter of a running unit grows by the number of its events. Initially, the units run and have old
// counts.
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
  // Sets the numbers of events in the periods, in the unit that was added last. The last number applies to all later
  // periods.
  void AddTraffic(uint32_t event, const std::vector<uint64_t> &amounts);

  // Write() writes a control register, and Read() reads one half of a count. Both return false if the unit has no such
  // register.
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
