// make_host FILE GROUPS [SEED]: writes a snapshot with GROUPS scheduler groups. The same arguments give the same
// snapshot.
//
// It follows nodal-snapshot(5) and does not use the library's writer. From the library it uses only the digest of the
// definitions and the layouts of the records.
#include <cdb.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xxhash.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"
#include "platkit/records.h"

namespace {

[[noreturn]] void Fail(const char *what) {
  std::perror(what);
  std::exit(EXIT_FAILURE);
}

// SplitMix64: the same numbers on every machine.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t Below(uint64_t bound) {
    uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return (z ^ (z >> 31)) % bound;
  }

 private:
  uint64_t state_;
};

uint32_t Check(const void *bytes, size_t size) { return static_cast<uint32_t>(XXH3_64bits(bytes, size)); }

void AppendCheck(std::string &value) {
  unsigned char check[4];
  cdb_pack(Check(value.data(), value.size()), check);
  value.append(reinterpret_cast<const char *>(check), sizeof check);
}

// The file. Entries are added in the order of their keys.
class HostFile {
 public:
  explicit HostFile(const char *path) : fd_(open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
    if (fd_ < 0 || cdb_make_start(&database_, fd_) != 0) Fail(path);
    AddRaw("nodal-snapshot", "1");
    AddRaw("index-check", std::string(kIndexCheckBytes, '\0'));
  }

  void Add(const std::string &key, char type, std::string_view payload) {
    if (key <= last_) {
      std::fprintf(stderr, "make_host: %s stands behind %s\n", key.c_str(), last_.c_str());
      std::exit(EXIT_FAILURE);
    }
    last_ = key;
    value_ = type;
    value_ += payload;
    AppendCheck(value_);
    AddRaw(key, value_);
  }

  template <typename Record>
  void AddRecord(const std::string &key, const Record &record) {
    Add(key, 'R', {reinterpret_cast<const char *>(&record), sizeof record});
  }

  void AddIntegers(const std::string &key, std::span<const int64_t> integers) {
    Add(key, 'I', {reinterpret_cast<const char *>(integers.data()), integers.size_bytes()});
  }

  void Finish() {
    if (cdb_make_finish(&database_) != 0) Fail("make_host");
    WriteIndexCheck();
    if (close(fd_) != 0) Fail("make_host");
  }

 private:
  static constexpr unsigned kTables = 256;
  static constexpr size_t kIndexCheckBytes = 1 + kTables * 4 + 4;
  static constexpr off_t kIndexCheckValue = 2071 + 8 + 11;

  void AddRaw(std::string_view key, std::string_view value) {
    const auto size = [](std::string_view text) { return static_cast<unsigned>(text.size()); };
    if (cdb_make_add(&database_, key.data(), size(key), value.data(), size(value)) != 0) Fail("make_host");
  }

  // Computes the checksums of the finished hash tables.
  void WriteIndexCheck() {
    const auto size = static_cast<size_t>(lseek(fd_, 0, SEEK_END));
    void *mapped = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd_, 0);
    if (mapped == MAP_FAILED) Fail("make_host");
    const auto *file = static_cast<const unsigned char *>(mapped);
    std::string value = "C";
    for (unsigned table = 0; table < kTables; ++table) {
      const unsigned char *entry = file + table * 8;
      unsigned char check[4];
      cdb_pack(Check(file + cdb_unpack(entry), size_t{cdb_unpack(entry + 4)} * 8), check);
      value.append(reinterpret_cast<const char *>(check), sizeof check);
    }
    munmap(mapped, size);
    AppendCheck(value);
    if (pwrite(fd_, value.data(), value.size(), kIndexCheckValue) != static_cast<ssize_t>(value.size())) {
      Fail("make_host");
    }
  }

  int fd_;
  cdb_make database_;
  std::string last_;
  std::string value_;
};

enum class Kind { kHost, kPool, kService, kVm, kMonitor, kHelpers };

struct Group {
  Kind kind;
  int64_t id;
  int64_t parent;
  uint32_t level;
  std::vector<int64_t> members = {};
};

bool HasWorlds(const Group &group) { return group.kind == Kind::kService || group.kind == Kind::kVm; }

// The memory clients of a group's leader and of a machine's monitor.
uint32_t LeaderOf(const Group &group) { return static_cast<uint32_t>(5'000'000 + 2 * group.id); }
uint32_t MonitorOf(const Group &vm) { return LeaderOf(vm) + 1; }

// Every fiftieth group is a pool; pools are nested and contain machines and services in random order. Every twentieth
// group is a machine with two child groups, its monitor and its helpers.
class Host {
 public:
  Host(size_t groups, uint64_t seed) : random_(seed), seed_(seed) {
    groups_.reserve(groups);
    groups_.push_back({.kind = Kind::kHost, .id = 0, .parent = -1, .level = 1});
    for (size_t i = 0; i < groups / 50; ++i)
      pools_.push_back(Place(Kind::kPool, SomePool()));
    size_t vms = groups / 20;
    size_t services = groups - std::min(groups, groups_.size() + 3 * vms);
    while (vms + services > 0) {
      if (random_.Below(vms + services) < vms) {
        --vms;
        PlaceVm();
      } else {
        --services;
        Place(Kind::kService, SomePool());
      }
    }
  }

  void Write(HostFile &file) const;

 private:
  // Reports show twelve levels, and a machine's monitor is one level below the machine.
  static constexpr uint32_t kDeepestPool = 10;

  size_t Place(Kind kind, size_t parent) {
    lastID_ += 1 + static_cast<int64_t>(random_.Below(3));
    groups_[parent].members.push_back(lastID_);
    groups_.push_back({.kind = kind, .id = lastID_, .parent = groups_[parent].id, .level = groups_[parent].level + 1});
    return groups_.size() - 1;
  }

  void PlaceVm() {
    const size_t vm = Place(Kind::kVm, SomePool());
    Place(Kind::kMonitor, vm);
    Place(Kind::kHelpers, vm);
  }

  // The host itself counts as a pool.
  size_t SomePool() {
    size_t pool = 0;
    do {
      const uint64_t choice = random_.Below(pools_.size() + 1);
      pool = choice == 0 ? 0 : pools_[choice - 1];
    } while (groups_[pool].level >= kDeepestPool);
    return pool;
  }

  // The groups for which `pick` returns a number, sorted by the decimal digits of this number.
  struct Numbered {
    std::string digits;
    const Group *group;
  };
  template <typename Pick>
  std::vector<Numbered> InOrder(Pick pick) const {
    std::vector<Numbered> found;
    for (const Group &group : groups_)
      pick(group, found);
    std::ranges::sort(found, {}, &Numbered::digits);
    return found;
  }

  Random random_;
  uint64_t seed_;
  int64_t lastID_ = 0;
  std::vector<Group> groups_;
  std::vector<size_t> pools_;
};

uint32_t FlagsOf(Kind kind) {
  switch (kind) {
    case Kind::kHost: return HVC_GROUP_PREDEFINED | HVC_GROUP_CONTAINER;
    case Kind::kPool: return HVC_GROUP_USER_CREATED | HVC_GROUP_CONTAINER;
    case Kind::kService: return HVC_GROUP_LEAF | HVC_GROUP_USER_WORLD;
    case Kind::kVm: return HVC_GROUP_VM | HVC_GROUP_USER_WORLD | HVC_GROUP_USER_CREATED | HVC_GROUP_CONTAINER;
    case Kind::kMonitor:
      return HVC_GROUP_LEAF | HVC_GROUP_NON_PERSISTENT | HVC_GROUP_SUB_CONTAINER | HVC_GROUP_VMM_SUB_CONTAINER;
    case Kind::kHelpers: return HVC_GROUP_LEAF | HVC_GROUP_SUB_CONTAINER | HVC_GROUP_UW_SUB_CONTAINER;
  }
  return 0;
}

struct Naming {
  std::string_view prefix, tag;
};

Naming NamingOf(Kind kind) {
  switch (kind) {
    case Kind::kHost: return {"host", "host"};
    case Kind::kPool: return {"pool-", "pool"};
    case Kind::kService: return {"service-", "service"};
    case Kind::kVm: return {"vm-", "vm"};
    case Kind::kMonitor: return {"vmm.", "vmm"};
    case Kind::kHelpers: return {"uw.", "uw"};
  }
  return {};
}

void WriteGroup(HostFile &file, const std::string &path, const Group &group, Random random) {
  const Naming naming = NamingOf(group.kind);
  const uint64_t size = uint64_t{1024} * (1 + random.Below(65536));
  const uint64_t consumed = size - random.Below(size / 2);

  file.AddRecord(path + "groupFlags", GroupFlagsRecord{.flags = FlagsOf(group.kind)});
  if (HasWorlds(group)) file.AddRecord(path + "groupLeaderID", GroupLeaderIDRecord{.leaderID = LeaderOf(group)});
  GroupNameRecord name = {};
  std::snprintf(name.name, sizeof name.name, "%s%lld", naming.prefix.data(), static_cast<long long>(group.id));
  file.AddRecord(path + "groupName", name);
  GroupTagRecord tag = {};
  naming.tag.copy(tag.tag, sizeof tag.tag);
  file.AddRecord(path + "groupTag", tag);
  GroupAllocRecord alloc = {};
  alloc.min = random.Below(4) == 0 ? consumed / 2 : 0;
  alloc.max = random.Below(8) == 0 ? size : HVC_KB_NONE;
  alloc.shares = static_cast<int32_t>(1000 * (1 + random.Below(40)));
  alloc.minLimit = HVC_KB_NONE;
  file.AddRecord(path + "memAllocationInKB", alloc);
  file.AddIntegers(path + "members/groups", group.members);
  file.AddRecord(path + "parentGroupID", ParentGroupIDRecord{.parentGroupID = group.parent});
  GroupCapacityRecord capacity = {};
  capacity.consumedResv = group.members.empty() ? 0 : random.Below(size);
  capacity.availResv = size - capacity.consumedResv;
  file.AddRecord(path + "stats/capacity", capacity);
  GroupMemoryStatsRecord stats = {};
  stats.memSize = stats.memSizePeak = size;
  stats.ovhd = random.Below(65536);
  stats.ovhdResv = stats.ovhd + random.Below(65536);
  stats.sharedSaved = random.Below(size / 8);
  stats.consumed = consumed;
  stats.consumedPeak = size;
  stats.touched = random.Below(consumed);
  stats.bMin = stats.iMin = stats.eMin = stats.rMinPeak = stats.eMinPeak = alloc.min;
  stats.bMax = alloc.max;
  stats.bShares = stats.fShares = static_cast<uint64_t>(alloc.shares);
  stats.allocTgt = size;
  stats.mps = size / static_cast<uint64_t>(alloc.shares);
  stats.throttlePct = static_cast<uint8_t>(random.Below(101));
  file.AddRecord(path + "stats/memoryStats", stats);
}

void WriteUserWorld(HostFile &file, const std::string &path, Random random) {
  UwMemoryStatsRecord world = {};
  world.max = world.minLimit = HVC_KB_NONE;
  world.shares = 1000;
  world.memSizeLimit = -1;
  world.memSize = 1024 * (1 + random.Below(4096));
  world.mapped = world.memBStore = world.memSize / 2;
  world.touched = random.Below(world.mapped);
  world.sharedSaved = world.cow = random.Below(1024);
  world.swappable = world.pageable = world.mapped / 2;
  world.pinned = random.Below(1024);
  file.AddRecord(path + "kestrel/uw", world);
}

void WriteVm(HostFile &file, const std::string &path, Random random) {
  VmmMemoryStatsRecord vm = {};
  vm.memSize = vm.memSizeLimit = vm.allocTgt = uint64_t{1024} * 1024 * (1 + random.Below(64));
  vm.mapped = vm.memSize - random.Below(vm.memSize / 2);
  vm.touched = random.Below(vm.mapped);
  vm.shared = random.Below(vm.mapped / 4);
  vm.sharedSaved = vm.shared / 2;
  vm.zero = vm.shared / 4;
  vm.zipped = random.Below(65536);
  vm.zipSaved = vm.zipped / 2;
  vm.balloonActive = random.Below(3) == 0;
  vm.ballooned = vm.balloonTgt = vm.balloonActive != 0 ? random.Below(65536) : 0;
  file.AddRecord(path + "kestrel/vmm", vm);
}

void WriteSwap(HostFile &file, const std::string &path, Random random) {
  VmSwapInfoRecord swap = {};
  swap.swapped = random.Below(65536);
  swap.swapTgt = swap.swapped;
  swap.totalReg = 1024 * 1024;
  swap.freeReg = swap.totalReg - swap.swapped;
  file.AddRecord(path + "swapInfo", swap);
}

void Host::Write(HostFile &file) const {
  PShareStatsRecord sharing = {};
  sharing.cow = 4 * groups_.size();
  sharing.zero = sharing.used = groups_.size();
  sharing.reclaimed = sharing.cow - sharing.used;
  sharing.totAdd = 8 * groups_.size();
  sharing.totRemove = sharing.totAdd - sharing.cow;
  file.AddRecord("/memory/pshare/stats", sharing);

  const auto randomOf = [this](int64_t id) { return Random(seed_ + static_cast<uint64_t>(id)); };
  const auto all = [](const Group &group, auto &found) { found.push_back({std::to_string(group.id), &group}); };
  const auto clients = [](const Group &group, auto &found) {
    if (HasWorlds(group)) found.push_back({std::to_string(LeaderOf(group)), &group});
    if (group.kind == Kind::kVm) found.push_back({std::to_string(MonitorOf(group)), &group});
  };
  const auto vms = [](const Group &group, auto &found) {
    if (group.kind == Kind::kVm) found.push_back({std::to_string(LeaderOf(group)), &group});
  };
  for (const auto &[id, group] : InOrder(all))
    WriteGroup(file, "/sched/groups/" + id + "/", *group, randomOf(group->id));
  for (const auto &[client, group] : InOrder(clients)) {
    const std::string path = "/sched/memClients/" + client + "/";
    const Random random = randomOf(group->id);
    if (client == std::to_string(LeaderOf(*group))) {
      WriteUserWorld(file, path, random);
      if (group->kind == Kind::kVm) WriteVm(file, path, random);
    } else {
      WriteSwap(file, path, random);
    }
  }
  for (const auto &[client, group] : InOrder(vms)) {
    file.AddRecord("/worldGroups/" + client + "/vmmLeaderID", VmmLeaderIDRecord{.vmmLeaderID = MonitorOf(*group)});
  }
  file.Add("build", 'H', platkit::OwnDefinitions().build);
  file.Add("host", 'H', "bench");
  file.Add("signature", 'H', platkit::OwnDefinitions().signature);
  file.Add("time", 'H', "2026-03-14T09:26:53Z");
}

}  // namespace

int main(int argc, char **argv) {
  const size_t groups = argc < 3 ? 0 : std::strtoull(argv[2], nullptr, 10);
  if (groups == 0 || groups > 2'000'000) {
    std::fprintf(stderr, "Usage: make_host FILE GROUPS [SEED]\n");
    return EXIT_FAILURE;
  }
  HostFile file(argv[1]);
  Host(groups, argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 1).Write(file);
  file.Finish();
  return EXIT_SUCCESS;
}
