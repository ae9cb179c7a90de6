#include "tests/faults/uncore.h"

#include <algorithm>
#include <cstdlib>

namespace faults {
namespace {

constexpr uint32_t kStop = 0x100;
constexpr uint32_t kZero = 0x2;
constexpr uint32_t kEnable = 0x400000;
constexpr uint32_t kEvent = 0xffff;

}  // namespace

Uncore::Unit Uncore::MakeUnit(int64_t slot) {
  if (slot == 8 || slot == 9)
    return {.controlRegister = 0x258, .counters = {{0x230, 0x208}, {0x238, 0x210}, {0x240, 0x218}}};
  return {.controlRegister = 0xf4, .counters = {{0xd8, 0xa0}, {0xdc, 0xa8}, {0xe0, 0xb0}, {0xe4, 0xb8}}};
}

void Uncore::AddUnit(const Address &address) {
  last_ = &units_.insert_or_assign(address, MakeUnit(address[2])).first->second;
}

void Uncore::AddTraffic(uint32_t event, const std::vector<uint64_t> &amounts) {
  if (last_ == nullptr || amounts.empty()) std::abort();
  last_->traffic[event] = amounts;
}

bool Uncore::Write(const Address &address, int64_t offset, uint32_t value) {
  const auto found = units_.find(address);
  if (found == units_.end()) return false;
  Unit &unit = found->second;
  if (offset == unit.controlRegister) {
    unit.control = value;
    if ((value & kZero) != 0) {
      for (Counter &counter : unit.counters)
        counter.count = 0;
    }
    return true;
  }
  for (Counter &counter : unit.counters) {
    if (offset == counter.controlRegister) {
      counter.control = value;
      return true;
    }
  }
  return false;
}

bool Uncore::Read(const Address &address, int64_t offset, uint32_t &value) const {
  const auto found = units_.find(address);
  if (found == units_.end()) return false;
  for (const Counter &counter : found->second.counters) {
    if (offset != counter.countRegister && offset != counter.countRegister + 4) continue;
    value = static_cast<uint32_t>(offset == counter.countRegister ? counter.count : counter.count >> 32);
    return true;
  }
  return false;
}

void Uncore::PassPeriod() {
  for (auto &[address, unit] : units_) {
    if ((unit.control & kStop) != 0) continue;
    for (Counter &counter : unit.counters) {
      const auto traffic = unit.traffic.find(counter.control & kEvent);
      if ((counter.control & kEnable) == 0 || traffic == unit.traffic.end()) continue;
      counter.count += traffic->second[std::min(periods_, traffic->second.size() - 1)];
    }
  }
  ++periods_;
}

}  // namespace faults
