#include "platkit/linux/records/client_records.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "platkit/linux/records/group_records.h"

namespace platkit {
namespace {

constexpr uint64_t kLargePageKB = 2048;
constexpr uint64_t kGiganticPageKB = 1 << 20;
constexpr uint32_t kNoCount = UINT32_MAX;  // a count that cannot be told

// The reasons for which the kernel moves pages between memory nodes. In the order of their bits after
// kFirstRemapRecord.
enum RemapType : size_t { kNuma, kPromotion, kDemotion };
constexpr std::string_view kRemapTypes[] = {"numa", "promotion", "demotion"};

constexpr uint64_t Cell(Figure figure) { return figure.Cell(HVC_KB_NONE); }

// What adds to a figure where it can be told, and costs it nothing where it cannot.
constexpr Figure IfTold(Figure figure) { return figure == Figure::Unreadable() ? Figure() : figure; }

// A limit in KB, in a field that takes no more than 2 TB; -1 is none.
int32_t ShortLimit(Figure limit) {
  const uint64_t value = limit.Cell(HVC_KB_NONE);
  return value > INT32_MAX ? -1 : static_cast<int32_t>(value);
}

}  // namespace

HVC_ReturnStatus ClientRecords::Vmm(int64_t client, VmmMemoryStatsRecord &record) {
  Group *vm = FindMachine(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Owner owner = OwnerOf(*vm, kVmmRecord);
  const ProcessStatus *status = tree_.StatusOf(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const GroupStat &stat = StatOf(owner);
  const ProcessSharing &sharing = SharingOf(sharing_, *vm);
  const Figure memory = tree_.GuestMemory(*vm).IfAbsent(status->size);
  const Figure growth = vm->mostMemory - memory;
  const Figure mapped = Lower(status->GuestPart(memory) + IfTold(sharing.zero), memory);
  record.memSize = Cell(memory);
  record.memSizeLimit = Cell(memory + growth);
  record.mapped = Cell(mapped);
  record.shared = sharing.Saved().Cell(0);
  record.sharedSaved = sharing.Saved().Cell(0);
  record.zero = sharing.zero.Cell(0);
  record.zipped = (stat.zswapped / 1024).Cell(0);
  record.zipSaved = (stat.zswapped / 1024 - stat.zswap / 1024).Cell(0);
  // Huge pages of pools are on no list of active pages.
  const Figure active = stat.active.isAbsent() ? Figure() : stat.active / 1024 + status->hugePages;
  record.touched = Cell(Lower(active, mapped));
  record.allocTgt = Cell(memory);
  if (owner.group != nullptr) {
    const Figure high = tree_.Amount(*owner.group, GroupAmount::kHigh) / 1024;
    const Figure max = tree_.Amount(*owner.group, GroupAmount::kMax) / 1024;
    record.allocTgt = Cell(Lower(memory, Lower(high, max)));
  }
  return tree_.Confirm(*vm);
}

// What the guest does with its memory is known to nobody else.
HVC_ReturnStatus ClientRecords::Guest(int64_t client, GuestStatsRecord &record) {
  Group *vm = FindMachine(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Figure memory = tree_.GuestMemory(*vm);
  if (memory.isAbsent()) return HVC_NOT_FOUND;
  record.memTotal = Cell(memory);
  record.lpageTotal = kNoCount;
  record.memNeeded = HVC_KB_NONE;
  return tree_.Confirm(*vm);
}

// The kernel counts compressed memory of control groups alone.
HVC_ReturnStatus ClientRecords::Zip(int64_t client, ZipStatsRecord &record) {
  Group *vm = FindMachine(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Owner owner = OwnerOf(*vm, kZipRecord);
  const GroupStat &stat = StatOf(owner);
  if (owner.group == nullptr || stat.zswap.isAbsent()) return HVC_NOT_FOUND;
  record.totalCache = record.maxCache = Cell(tree_.Amount(*owner.group, GroupAmount::kZswapMax) / 1024);
  record.usedCache = Cell(stat.zswap / 1024);
  record.zipped = PagesInKB(stat.zswapOut).Cell(0);
  record.unZipped = PagesInKB(stat.zswapIn).Cell(0);
  return tree_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::VmmLeaderID(int64_t client, VmmLeaderIDRecord &record) {
  const Group *vm = FindMachine(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  record.vmmLeaderID = static_cast<uint32_t>(kFirstVmmGroup + vm->id);
  return HVC_OK;
}

HVC_ReturnStatus ClientRecords::SwapInfo(int64_t client, VmSwapInfoRecord &record) {
  Group *vm = FindMachineOfMonitor(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Owner owner = OwnerOf(*vm, kSwapRecord);
  const ProcessStatus *status = tree_.StatusOf(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const GroupStat &stat = StatOf(owner);
  const SwapSpace &space = HostSwap(client);
  record.swapped = Cell(Swapped(owner, *status));
  record.swapRead = (stat.swapCached / 1024).Cell(0);
  // The swap space of a Linux host is the one that all share.
  record.swapIn = record.gblSwapIn = PagesInKB(stat.swapIn).Cell(0);
  record.swapOut = record.gblSwapOut = PagesInKB(stat.swapOut).Cell(0);
  record.totalReg = Cell(space.total);
  record.freeReg = Cell(space.free);
  record.currentSwapper = 1;  // a monitor does not swap
  return tree_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::LargePages(int64_t client, LPageStatsRecord &record) {
  Group *vm = FindMachineOfMonitor(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Owner owner = OwnerOf(*vm, kLargePageRecord);
  const ProcessStatus *status = tree_.StatusOf(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const GroupStat &stat = StatOf(owner);
  const Figure memory = tree_.GuestMemory(*vm);
  Figure gigantic(0);
  if (owner.group != nullptr && status->hugePages != Figure(0)) {
    const Figure charged = IfTold(tree_.Amount(*owner.group, GroupAmount::kGiganticPages)).IfAbsent(Figure(0));
    gigantic = Lower(charged / 1024, status->hugePages);
  }
  const bool mayHaveTransparent =
      status->transparentHugePages != Figure(0) && (memory.isAbsent() || memory - status->hugePages != Figure(0));
  // Of a process alone, the kernel tells only at a price that grows with its memory.
  const Figure transparent = mayHaveTransparent ? (stat.transparent / 1024).IfAbsent(Figure::Unreadable()) : Figure(0);
  const uint64_t large = Cell((status->hugePages - gigantic + transparent) / kLargePageKB);
  record.backings2M = large < kNoCount ? static_cast<uint32_t>(large) : kNoCount;
  if (record.backings2M != kNoCount) record.backings1G = static_cast<uint32_t>(Cell(gigantic / kGiganticPageKB));
  record.allocSuccess = stat.hugeAllocs.Cell(0);
  record.broken = stat.hugeSplits.Cell(0);
  return tree_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::UserWorld(int64_t client, UwMemoryStatsRecord &record) {
  Group *process = FindProcess(client);
  if (process == nullptr) return HVC_NOT_FOUND;
  const Owner owner = OwnerOf(*process, kUserWorldRecord);
  const ProcessStatus *status = tree_.StatusOf(*process);
  const Figure limit = ReadAddressSpaceLimit(files_, process->id);
  if (status == nullptr) return HVC_NOT_FOUND;
  const ProcessSharing &sharing = SharingOf(sharing_, *process);
  const Figure unswappable = status->locked + status->pinned;
  const Figure swapBacked = status->anonymous + status->sharedMemory;
  record.max = record.minLimit = HVC_KB_NONE;
  if (owner.group != nullptr) {
    record.min = (tree_.Amount(*owner.group, GroupAmount::kMin) / 1024).Cell(0);
    record.max = Cell(tree_.Amount(*owner.group, GroupAmount::kMax) / 1024);
  }
  record.memSizeLimit = ShortLimit(limit / 1024);
  record.memSize = Cell(status->size);
  record.touched = record.memBStore = Cell(status->Consumed());
  record.mapped = Cell(status->Consumed() + IfTold(sharing.zero));
  record.sharedSaved = record.cow = sharing.Saved().Cell(0);
  record.swapBStore = record.swapped = Cell(status->swapped);
  record.swappable = Cell(status->anonymous - unswappable);
  record.shm = Cell(status->sharedMemory);
  record.pageable = Cell(swapBacked - unswappable);
  record.pageableUnacct = Cell(status->files);
  record.pinned = Cell(Lower(unswappable + status->hugePages, status->Consumed()));
  record.prealloced = Cell(status->hugePages);
  return tree_.Confirm(*process);
}

HVC_ReturnStatus ClientRecords::TotalCommon(int64_t client, TotalCommonRecord &) {
  return FindProcess(client) == nullptr && FindMachineOfMonitor(client) == nullptr ? HVC_NOT_FOUND : HVC_OK;
}

HVC_ReturnStatus ClientRecords::RemapTypes(int64_t client, ParamList &list) {
  Group *process = FindProcess(client);
  if (process == nullptr) return FindMachineOfMonitor(client) == nullptr ? HVC_NOT_FOUND : HVC_OK;
  const Owner owner = OwnerOf(*process, kRemapList);
  for (size_t type = 0; type < std::size(kRemapTypes); ++type) {
    if (RemappedPages(owner, type).isAbsent()) continue;
    if (const HVC_ReturnStatus status = list.Add(kRemapTypes[type]); status != HVC_OK) return status;
  }
  return tree_.Confirm(*process);
}

// The kernel counts the pages that it has moved, and does so at once: none wait.
HVC_ReturnStatus ClientRecords::Remap(int64_t client, std::string_view type, RemapStatsRecord &record) {
  Group *process = FindProcess(client);
  const auto *found = std::find(std::begin(kRemapTypes), std::end(kRemapTypes), type);
  if (process == nullptr || found == std::end(kRemapTypes)) return HVC_NOT_FOUND;
  const auto index = static_cast<size_t>(found - std::begin(kRemapTypes));
  const Owner owner = OwnerOf(*process, static_cast<GivenRecord>(kFirstRemapRecord << index));
  const Figure pages = RemappedPages(owner, index);
  if (pages.isAbsent()) return HVC_NOT_FOUND;
  record.added = record.remapped = Cell(pages);
  return tree_.Confirm(*process);
}

Group *ClientRecords::FindProcess(int64_t client) {
  if (client <= 0 || client >= kKernelGroup) return nullptr;
  Group *process = tree_.Find(client);
  if (process != nullptr) tree_.SeekVm(*process);
  return process;
}

Group *ClientRecords::FindMachine(int64_t client) {
  Group *process = FindProcess(client);
  return process != nullptr && process->kind == GroupKind::kVm ? process : nullptr;
}

Group *ClientRecords::FindMachineOfMonitor(int64_t client) {
  return client > kFirstVmmGroup ? FindMachine(client - kFirstVmmGroup) : nullptr;
}

// Only machines are worth the look for a group of their own.
ClientRecords::Owner ClientRecords::OwnerOf(Group &process, GivenRecord record) {
  process.Renew(record);
  Group *group = process.kind == GroupKind::kVm ? tree_.OwnControlGroup(process) : nullptr;
  if (group != nullptr) group->Renew(record);
  return {.process = &process, .group = group};
}

const GroupStat &ClientRecords::StatOf(const Owner &owner) {
  static constexpr GroupStat kNothing;
  return owner.group == nullptr ? kNothing : tree_.StatOf(*owner.group);
}

Figure ClientRecords::PagesInKB(Figure pages) { return pages.isAbsent() ? pages : pages * (pageSize_.KB()); }

// Shared memory that is swapped is in no process' count. What is compressed counts as swapped, and is not.
Figure ClientRecords::Swapped(const Owner &owner, const ProcessStatus &status) {
  if (owner.group == nullptr) return status.swapped;
  const GroupStat &stat = StatOf(owner);
  const Figure swap = stat.swap.isAbsent() ? tree_.Amount(*owner.group, GroupAmount::kSwap) : stat.swap;
  return (swap / 1024).IfAbsent(status.swapped) - stat.zswapped / 1024;
}

const SwapSpace &ClientRecords::HostSwap(int64_t client) {
  if (!swapSpaceGiven_.insert(client).second) {
    swapSpace_.reset();
    swapSpaceGiven_ = {client};
  }
  if (!swapSpace_) swapSpace_ = ReadSwapSpace(files_);
  return *swapSpace_;
}

// In the records' pages; absent if this kernel does not count them.
Figure ClientRecords::RemappedPages(const Owner &owner, size_t type) {
  const GroupStat &stat = StatOf(owner);
  Figure pages;
  switch (type) {
    case kPromotion: pages = stat.promoted; break;
    case kDemotion: pages = stat.demoted; break;
    default:
      pages = stat.numaMoved - stat.promoted;
      if (!pages.isAbsent()) break;
      if (!owner.process->numaMoved) owner.process->numaMoved = ReadNumaMoved(files_, owner.process->id);
      pages = *owner.process->numaMoved;
  }
  return pages.isAbsent() ? pages : pages * (pageSize_.RecordPages());
}

}  // namespace platkit
