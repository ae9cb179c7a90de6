#include "tests/faults/hosts.h"

#include <cstdlib>

namespace faults {

using testing_support::Group;
using testing_support::StandinHost;

namespace {

Group WithFigures(Group group) {
  const auto base = static_cast<uint64_t>(group.id + 1) * 1000;
  group.alloc = {.min = base + 1,
                 .max = base + 2,
                 .shares = static_cast<int32_t>(base + 3),
                 .minLimit = base + 4,
                 .unread_28 = {}};
  group.capacity.consumedResv = base + 5;
  group.capacity.availResv = base + 6;
  GroupMemoryStatsRecord &memory = group.memory;
  memory.memSize = base + 7;
  memory.ovhdResv = base + 8;
  memory.ovhd = base + 9;
  memory.sharedSaved = base + 10;
  memory.consumed = base + 11;
  memory.touched = base + 12;
  memory.bMin = base + 13;
  memory.bMax = base + 14;
  memory.bShares = base + 15;
  memory.fShares = base + 16;
  memory.iMin = base + 17;
  memory.eMin = base + 18;
  memory.bActive = base + 19;
  memory.allocTgt = base + 20;
  memory.mps = base + 21;
  memory.rMinPeak = base + 22;
  memory.eMinPeak = base + 23;
  memory.consumedPeak = base + 24;
  memory.memSizePeak = base + 25;
  memory.throttlePct = static_cast<uint8_t>(group.id + 26);
  memory.rMinChildPeak = base + 27;
  return group;
}

}  // namespace

Group SmallGroup(int64_t id) {
  switch (id) {
    case 0:
      return WithFigures({.id = 0, .name = "host", .tag = "top", .parent = -1, .flags = 0x1, .children = {1, 4, 7}});
    case 1: return WithFigures({.id = 1, .name = "system", .tag = "sys", .parent = 0, .flags = 0x11});
    case 4: return WithFigures({.id = 4, .name = "user", .tag = "usr", .parent = 0, .flags = 0x800, .children = {5}});
    case 5: return WithFigures({.id = 5, .name = "web", .tag = "shop", .parent = 4, .flags = 0x6});
    case 7: return WithFigures({.id = 7, .name = "idle", .tag = "idle", .parent = 0, .flags = 0x10});
    default: std::abort();
  }
}

StandinHost SmallHost() {
  StandinHost host;
  for (const int64_t id : {0, 1, 4, 5, 7})
    host.Add(SmallGroup(id));
  return host;
}

PShareStatsRecord SharingFigures() {
  PShareStatsRecord record = {};
  record.cow = 257;
  record.cow1 = 1;
  record.zero = 0;
  record.used = 256;
  record.reclaimed = 1000000;
  record.totAdd = 4000000000;
  record.totRemove = 5;
  record.peakChainLength = 12;
  record.peakChainIndex = 34567;
  record.peakRefCount = 8901;
  return record;
}

StandinHost SharingHost() { return StandinHost().AddRecord("memory_pshare_stats", {}, SharingFigures()); }

}  // namespace faults
