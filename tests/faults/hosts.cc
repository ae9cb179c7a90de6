#include "tests/faults/hosts.h"

#include <cstdlib>
#include <cstring>

#include "tests/faults/figures.h"

namespace faults {

using testing_support::Group;
using testing_support::Instance;
using testing_support::StandinHost;

namespace {

Group WithFigures(Group group, const Figures &figures) {
  group.alloc = {.min = figures.Wide(1),
                 .max = figures.Wide(2),
                 .shares = figures.Signed(3),
                 .minLimit = figures.Wide(4),
                 .unread_28 = {}};
  group.capacity.consumedResv = figures.Wide(5);
  group.capacity.availResv = figures.Wide(6);
  GroupMemoryStatsRecord &memory = group.memory;
  memory.memSize = figures.Wide(7);
  memory.ovhdResv = figures.Wide(8);
  memory.ovhd = figures.Wide(9);
  memory.sharedSaved = figures.Wide(10);
  memory.consumed = figures.Wide(11);
  memory.touched = figures.Wide(12);
  memory.bMin = figures.Wide(13);
  memory.bMax = figures.Wide(14);
  memory.bShares = figures.Wide(15);
  memory.fShares = figures.Wide(16);
  memory.iMin = figures.Wide(17);
  memory.eMin = figures.Wide(18);
  memory.bActive = figures.Wide(19);
  memory.allocTgt = figures.Wide(20);
  memory.mps = figures.Wide(21);
  memory.rMinPeak = figures.Wide(22);
  memory.eMinPeak = figures.Wide(23);
  memory.consumedPeak = figures.Wide(24);
  memory.memSizePeak = figures.Wide(25);
  memory.throttlePct = figures.Byte(25);
  memory.rMinChildPeak = figures.Wide(27);
  return group;
}

Group WithFigures(const Group &group) { return WithFigures(group, static_cast<uint64_t>(group.id + 1) * 1000); }

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

namespace {

// A record in which no byte is zero. The caller sets the fields that are read.
template <typename Record>
Record Unread() {
  Record record;
  std::memset(&record, 0xee, sizeof record);
  return record;
}

VmmMemoryStatsRecord VmmFigures(const Figures &figures, uint64_t mapped, bool flag) {
  auto record = Unread<VmmMemoryStatsRecord>();
  record.memSizeLimit = figures.Wide(1);
  record.memSize = figures.Wide(2);
  record.touched = figures.Wide(3);
  record.allocTgt = figures.Wide(4);
  record.zero = figures.Wide(5);
  record.zipped = figures.Wide(6);
  record.llswapped = figures.Wide(7);
  record.vpmemRO = figures.Wide(8);
  record.vpmemRW = figures.Wide(9);
  record.vpmemUC = figures.Wide(10);
  record.llswapUsed = figures.Wide(11);
  record.mapped = figures.Wide(mapped);
  record.shared = figures.Wide(13);
  record.sharedSaved = figures.Wide(14);
  record.zipSaved = figures.Wide(15);
  record.swapTgt = figures.Wide(16);
  record.swapScope = figures.Wide(17);
  record.useReliableMem = flag ? 0 : 2;
  record.balloonActive = flag ? 4 : 0;
  record.ballooned = figures.Wide(18);
  record.balloonTgt = figures.Wide(19);
  return record;
}

VmSwapInfoRecord SwapFigures(const Figures &figures, bool flag) {
  auto record = Unread<VmSwapInfoRecord>();
  record.isSwapping = flag ? 0 : 2;
  record.swapTgt = figures.Wide(21);
  record.swapped = figures.Wide(22);
  record.swapRead = figures.Wide(23);
  record.swapIn = figures.Wide(24);
  record.swapOut = figures.Wide(25);
  record.gblSwapRead = figures.Wide(26);
  record.gblSwapIn = figures.Wide(27);
  record.gblSwapOut = figures.Wide(28);
  record.cowSwapper = figures.Wide(29);
  record.discarded = figures.Wide(30);
  record.vmmSwapOn = figures.Narrow(31);
  record.hvcSwapOn = figures.Narrow(32);
  record.currentSwapper = flag ? 0x10000 : 0;
  record.totalReg = figures.Wide(33);
  record.freeReg = figures.Wide(34);
  record.cptTgt = figures.Wide(35);
  record.cptRead = figures.Wide(36);
  record.cptWritten = figures.Wide(37);
  record.totalMig = figures.Wide(38);
  record.freeMig = figures.Wide(39);
  record.cacheUsage = figures.Narrow(40);
  record.swapoutReady = figures.Wide(41);
  return record;
}

GuestStatsRecord GuestFigures(const Figures &figures) {
  auto record = Unread<GuestStatsRecord>();
  record.memTotal = figures.Wide(51);
  record.lpageTotal = figures.Narrow(52);
  record.memNeeded = figures.Wide(53);
  return record;
}

ZipStatsRecord ZipFigures(const Figures &figures) {
  auto record = Unread<ZipStatsRecord>();
  record.totalCache = figures.Wide(61);
  record.usedCache = figures.Wide(62);
  record.maxCache = figures.Wide(63);
  record.nrFreeHalf = figures.Narrow(64);
  record.nrFreeQuarter = figures.Narrow(65);
  record.zipped = figures.Wide(66);
  record.unZipped = figures.Wide(67);
  record.zipRejected = figures.Wide(68);
  record.avgZipTime = figures.Wide(69);
  record.avgUnzipTime = figures.Wide(70);
  return record;
}

LPageStatsRecord LPageFigures(const Figures &figures) {
  auto record = Unread<LPageStatsRecord>();
  record.backings2M = figures.Narrow(71);
  record.allocSuccess = figures.Wide(72);
  record.failNoMem = figures.Wide(73);
  record.failPinned = figures.Wide(74);
  record.failSwapped = figures.Wide(75);
  record.failPinnedLate = figures.Wide(76);
  record.lockSuccess = figures.Narrow(77);
  record.broken = figures.Wide(78);
  record.maxSwapThreshold = figures.Narrow(79);
  record.backings1G = figures.Narrow(80);
  record.lockSuccess2 = figures.Narrow(81);
  return record;
}

UwMemoryStatsRecord UwFigures(const Figures &figures, uint64_t mapped, bool flag) {
  auto record = Unread<UwMemoryStatsRecord>();
  record.min = figures.Wide(101);
  record.max = figures.Wide(102);
  record.minLimit = figures.Wide(103);
  record.shares = figures.Signed(104);
  record.memSizeLimit = figures.Signed(105);
  record.memSize = figures.Wide(106);
  record.touched = figures.Wide(107);
  record.allocTgt = figures.Wide(108);
  record.zipped = figures.Wide(109);
  record.mapped = figures.Wide(mapped);
  record.sharedSaved = figures.Wide(111);
  record.zipSaved = figures.Wide(112);
  record.swapTgt = figures.Wide(113);
  record.swapScope = figures.Wide(114);
  record.useReliableMem = flag ? 0x80 : 0;
  record.totalResv = figures.Wide(115);
  record.pinnedResv = figures.Wide(116);
  record.memBStore = figures.Wide(117);
  record.swapBStore = figures.Wide(118);
  record.swappable = figures.Wide(119);
  record.shm = figures.Wide(120);
  record.cow = figures.Wide(121);
  record.pageable = figures.Wide(122);
  record.pageableUnacct = figures.Wide(123);
  record.swapped = figures.Wide(124);
  record.pinned = figures.Wide(125);
  record.prealloced = figures.Wide(126);
  return record;
}

RemapStatsRecord RemapFigures(const Figures &figures) {
  auto record = Unread<RemapStatsRecord>();
  record.added = figures.Wide(1);
  record.filtered = figures.Wide(2);
  record.prepared = figures.Wide(3);
  record.staged = figures.Wide(4);
  record.canceled = figures.Wide(5);
  record.remapped = figures.Wide(6);
  record.cUnprepared = figures.Wide(7);
  record.cPrepared = figures.Wide(8);
  record.cStaged = figures.Wide(9);
  return record;
}

struct Leader {
  int64_t group;
  uint32_t id;
  uint32_t vmmID;
  Figures figures;
  Figures vmmFigures;  // figures of the VMM's own client
  uint64_t mapped;     // the field number of `mapped`, so large that the reports' differences are not negative
  bool flags;          // true sets one half of the flags, false the other half
};

// The leader of a group and all its records, whether the reports read them or not.
void AddLeader(StandinHost &host, const Leader &leader) {
  host.AddRecord("sched_groups_groupLeaderID", {leader.group}, GroupLeaderIDRecord{leader.id});
  host.AddRecord("sched_memClients_kestrel_vmm", {leader.id}, VmmFigures(leader.figures, leader.mapped, leader.flags));
  host.AddRecord("sched_memClients_kestrel_uw", {leader.id}, UwFigures(leader.figures, leader.mapped, leader.flags));
  host.AddRecord("sched_memClients_kestrel_guest", {leader.id}, GuestFigures(leader.figures));
  host.AddRecord("sched_memClients_memzipInfo", {leader.id}, ZipFigures(leader.figures));
  host.AddRecord("worldGroups_vmmLeaderID", {leader.id}, VmmLeaderIDRecord{leader.vmmID});
  host.AddRecord("sched_memClients_swapInfo", {leader.vmmID}, SwapFigures(leader.vmmFigures, leader.flags));
  host.AddRecord("memory_lpage_vmLPage", {leader.vmmID}, LPageFigures(leader.vmmFigures));
}

void AddLeader(StandinHost &host, int64_t group, uint32_t leader, uint32_t vmmLeader) {
  const auto client = static_cast<uint64_t>(group) + 100;
  AddLeader(host, {.group = group,
                   .id = leader,
                   .vmmID = vmmLeader,
                   .figures = Figures::OfClient(client),
                   .vmmFigures = Figures::OfClient(client + 1),
                   .mapped = 1000 + client,
                   .flags = group == 30});
}

struct RemapClient {
  int64_t id;
  std::vector<const char *> types;
};

// The memory clients of a group. The figures of a client's n-th type are n times those of its first type.
void AddRemapClients(StandinHost &host, int64_t group, const std::vector<RemapClient> &clients,
                     Figures (*figuresOf)(uint64_t client)) {
  std::vector<Instance> ids;
  for (const RemapClient &client : clients) {
    ids.emplace_back(client.id);
    std::vector<Instance> types;
    for (const char *type : client.types) {
      types.emplace_back(type);
      const Figures figures = figuresOf(static_cast<uint64_t>(client.id));
      host.AddRecord("sched_memClients_remapTypes", {client.id, type}, RemapFigures(figures.Times(types.size())));
    }
    host.AddList("sched_memClients_remapTypes", {client.id}, types);
  }
  host.AddList("sched_groups_members_memClients", {group}, ids);
}

}  // namespace

StandinHost MachinesHost() {
  StandinHost host;
  host.Add(
      WithFigures({.id = 0, .name = "host", .parent = -1, .flags = HVC_GROUP_PREDEFINED, .children = {10, 20, 30}}));
  host.Add(WithFigures({.id = 10, .name = "web", .parent = 0, .flags = HVC_GROUP_VM, .children = {11}}));
  host.Add(WithFigures({.id = 11, .name = "vmm.web", .parent = 10, .flags = HVC_GROUP_VMM_SUB_CONTAINER}));
  host.Add(WithFigures({.id = 20, .name = "shell", .parent = 0, .flags = HVC_GROUP_USER_WORLD, .children = {21}}));
  host.Add(WithFigures({.id = 21, .name = "usr.shell", .parent = 20, .flags = HVC_GROUP_UW_SUB_CONTAINER}));
  host.Add(WithFigures({.id = 30,
                        .name = "mail",
                        .parent = 0,
                        .flags = HVC_GROUP_VM | HVC_GROUP_USER_WORLD | HVC_GROUP_CONTAINER,
                        .children = {31}}));
  host.Add(WithFigures({.id = 31, .name = "vmm.mail", .parent = 30, .flags = HVC_GROUP_VMM_SUB_CONTAINER}));
  AddLeader(host, 10, 110, 111);
  AddLeader(host, 20, 120, 121);
  AddLeader(host, 30, 130, 131);
  const auto thousands = [](uint64_t client) { return Figures(client * 1000); };
  AddRemapClients(host, 10, {{110, {"copy"}}}, thousands);
  AddRemapClients(host, 20, {{120, {"copy", "move", "zero"}}, {121, {"copy", "move"}}}, thousands);
  AddRemapClients(host, 30, {{130, {"copy"}}}, thousands);
  return host;
}

StandinHost MachinesHostLedBy(int64_t group, uint32_t leader, uint32_t vmmLeader) {
  StandinHost host = MachinesHost();
  AddLeader(host, group, leader, vmmLeader);
  return host;
}

namespace {

// A group whose record names a different parent from the one in the walk.
void AddOwned(StandinHost &host, int64_t owner, const Group &group) {
  Group owned = WithFigures(group, Figures::MultiplesOf(static_cast<uint64_t>(owner)));
  owned.tag = "t" + std::to_string(owner);
  owned.parent = owner * 3;
  host.Add(owned);
}

// A group with a leader and remap clients, and the sub-container of its VMM or user world.
void AddOwner(StandinHost &host, int64_t id, uint32_t flags, uint32_t innerFlags, std::vector<Instance> others = {}) {
  const std::string name = std::to_string(id);
  const int64_t inner = 2 * id;
  others.insert(others.begin(), inner);
  AddOwned(host, id, {.id = id, .name = "group-" + name, .flags = flags, .children = others});
  AddOwned(host, id, {.id = inner, .name = "inner-" + name, .flags = innerFlags});
  const auto owner = static_cast<uint32_t>(id);
  const Figures figures = Figures::MultiplesOf(owner);
  AddLeader(host, {.group = id,
                   .id = 4 * owner,
                   .vmmID = 5 * owner,
                   .figures = figures,
                   .vmmFigures = figures,
                   .mapped = 1000,
                   .flags = id % 4 == 1});
  AddRemapClients(host, id, {{4 * id, {"copy", "move"}}, {5 * id, {"copy"}}}, Figures::MultiplesOf);
}

}  // namespace

StandinHost OwnersHost() {
  StandinHost host;
  AddOwned(host, 113, {.id = 0, .name = "host", .flags = HVC_GROUP_PREDEFINED, .children = {127, 131, 137}});
  AddOwner(host, 127, HVC_GROUP_VM, HVC_GROUP_VMM_SUB_CONTAINER, {139, 149});
  AddOwner(host, 139, HVC_GROUP_USER_WORLD, HVC_GROUP_UW_SUB_CONTAINER);
  AddOwner(host, 149, HVC_GROUP_VM, HVC_GROUP_VMM_SUB_CONTAINER);
  AddOwner(host, 131, HVC_GROUP_USER_WORLD, HVC_GROUP_UW_SUB_CONTAINER);
  AddOwner(host, 137, HVC_GROUP_VM | HVC_GROUP_USER_WORLD, HVC_GROUP_VMM_SUB_CONTAINER);
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
