#include "platkit/linux/records/client_records.h"

#include <algorithm>
#include <iterator>

#include "platkit/linux/groups/process_memory.h"
#include "platkit/linux/kernel/process_limits.h"

namespace platkit {
namespace {

constexpr uint64_t kLargePageKB = 2048;
constexpr uint64_t kGiganticPageKB = 1 << 20;
constexpr uint32_t kNoCount = UINT32_MAX;  // a count that is not available

// The reasons for which the kernel moves pages between memory nodes.
enum RemapType : size_t { kNuma, kPromotion, kDemotion };
constexpr std::string_view kRemapTypes[] = {"numa", "promotion", "demotion"};

constexpr uint64_t Cell(Figure figure) { return figure.Cell(HVC_KB_NONE); }

// Lets a sum omit an unreadable term.
constexpr Figure AbsentIfUnreadable(Figure figure) { return figure == Figure::Unreadable() ? Figure() : figure; }

// A limit in KB for a field that holds at most 2 TB; -1 is unlimited.
int32_t ShortLimit(Figure limit) {
  const uint64_t value = limit.Cell(HVC_KB_NONE);
  return value > INT32_MAX ? -1 : static_cast<int32_t>(value);
}

}  // namespace

HVC_ReturnStatus ClientRecords::Vmm(int64_t client, VmmMemoryStatsRecord &record) {
  Group *vm = FindVm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Group *own = vms_.OwnControlGroup(*vm);
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const CgroupStat &stat = StatOf(own);
  const ProcessSharing sharing = sharing_.OfProcess(*vm);
  const Figure memory = vms_.GuestMemory(*vm).IfAbsent(status->size);
  const Figure growth = vm->vm->maxMemory - memory;
  const Figure mapped = Lower(GuestPart(*status, memory) + AbsentIfUnreadable(sharing.zero), memory);
  record.memSize = Cell(memory);
  record.memSizeLimit = Cell(memory + growth);
  record.mapped = Cell(mapped);
  record.shared = sharing.saved.Cell(0);
  record.sharedSaved = sharing.saved.Cell(0);
  record.zero = sharing.zero.Cell(0);
  record.zipped = (stat.zswapped / 1024).Cell(0);
  record.zipSaved = (stat.zswapped / 1024 - stat.zswap / 1024).Cell(0);
  // Active pages exclude huge pages of pools.
  const Figure active = stat.active.isAbsent() ? Figure() : stat.active / 1024 + status->hugePages;
  record.touched = Cell(Lower(active, mapped));
  const Balloon balloon = monitors_.BalloonOf(*vm);
  record.balloonActive = balloon.isActive.Cell8(0);
  record.ballooned = Cell(balloon.size);
  record.balloonTgt = Cell(balloon.target);
  record.allocTgt = Cell(memory);
  if (own != nullptr) {
    const Figure high = reader_.Amount(*own, CgroupAmount::kHigh) / 1024;
    const Figure max = reader_.Amount(*own, CgroupAmount::kMax) / 1024;
    record.allocTgt = Cell(Lower(memory, Lower(high, max)));
  }
  return reader_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::Guest(int64_t client, GuestStatsRecord &record) {
  Group *vm = FindVm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const Figure memory = vms_.GuestMemory(*vm);
  if (memory.isAbsent()) return HVC_NOT_FOUND;
  const GuestUse use = monitors_.UseOf(*vm);
  record.memTotal = Cell(use.total.IfAbsent(memory));
  record.lpageTotal = kNoCount;
  record.memNeeded = Cell(use.needed);
  return reader_.Confirm(*vm);
}

// The kernel counts compressed memory per control group only.
HVC_ReturnStatus ClientRecords::Zip(int64_t client, ZipStatsRecord &record) {
  Group *vm = FindVm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Group *own = vms_.OwnControlGroup(*vm);
  const CgroupStat &stat = StatOf(own);
  if (own == nullptr || stat.zswap.isAbsent()) return HVC_NOT_FOUND;
  record.totalCache = record.maxCache = Cell(reader_.Amount(*own, CgroupAmount::kZswapMax) / 1024);
  record.usedCache = Cell(stat.zswap / 1024);
  record.zipped = PagesInKB(stat.zswapOut).Cell(0);
  record.unZipped = PagesInKB(stat.zswapIn).Cell(0);
  return reader_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::VmmLeaderID(int64_t client, VmmLeaderIDRecord &record) {
  const Group *vm = FindVm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  record.vmmLeaderID = static_cast<uint32_t>(kFirstVmmGroup + vm->id);
  return HVC_OK;
}

HVC_ReturnStatus ClientRecords::SwapInfo(int64_t client, VmSwapInfoRecord &record) {
  Group *vm = FindVmOfVmm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Group *own = vms_.OwnControlGroup(*vm);
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const CgroupStat &stat = StatOf(own);
  const Swaps &space = host_.swaps();
  record.swapped = Cell(Swapped(own, *status));
  record.swapRead = (stat.swapCached / 1024).Cell(0);
  // All VMs share the host's swap space.
  record.swapIn = record.gblSwapIn = PagesInKB(stat.swapIn).Cell(0);
  record.swapOut = record.gblSwapOut = PagesInKB(stat.swapOut).Cell(0);
  record.totalReg = Cell(space.total);
  record.freeReg = Cell(space.free);
  record.cptWritten = Cell(monitors_.CheckpointOf(*vm));
  record.currentSwapper = 1;  // the host's kernel; a VMM does not swap
  return reader_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::LargePages(int64_t client, LPageStatsRecord &record) {
  Group *vm = FindVmOfVmm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  Group *own = vms_.OwnControlGroup(*vm);
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const CgroupStat &stat = StatOf(own);
  const Figure transparent = TransparentPagesInKB(*vm, own, *status);
  const Figure gigantic = GiganticPagesInKB(own, *status);
  const uint64_t large = Cell((status->hugePages - gigantic + transparent) / kLargePageKB);
  record.backings2M = large < kNoCount ? static_cast<uint32_t>(large) : kNoCount;
  if (record.backings2M != kNoCount) record.backings1G = static_cast<uint32_t>(Cell(gigantic / kGiganticPageKB));
  record.allocSuccess = stat.hugeAllocs.Cell(0);
  record.broken = stat.hugeSplits.Cell(0);
  return reader_.Confirm(*vm);
}

// Huge pages of 1 GB. Only the own control group counts them separately.
Figure ClientRecords::GiganticPagesInKB(Group *own, const ProcessStatus &status) {
  if (own == nullptr || status.hugePages == Figure(0)) return Figure(0);
  const Figure charged = AbsentIfUnreadable(reader_.Amount(*own, CgroupAmount::kGiganticPages)).IfAbsent(Figure(0));
  return Lower(charged / 1024, status.hugePages);
}

// For a single process, only files whose cost grows with its memory contain these figures.
Figure ClientRecords::TransparentPagesInKB(Group &vm, Group *own, const ProcessStatus &status) {
  const Figure memory = vms_.GuestMemory(vm);
  const bool isPossible =
      status.transparentHugePages != Figure(0) && (memory.isAbsent() || memory - status.hugePages != Figure(0));
  return isPossible ? (StatOf(own).transparent / 1024).IfAbsent(Figure::Unreadable()) : Figure(0);
}

HVC_ReturnStatus ClientRecords::UserWorld(int64_t client, UwMemoryStatsRecord &record) {
  Group *process = FindProcess(client);
  if (process == nullptr) return HVC_NOT_FOUND;
  Group *own = vms_.OwnControlGroup(*process);
  const ProcessStatus *status = reader_.Status(*process);
  const Figure limit = ReadAddressSpaceLimit(files_, process->id);
  if (status == nullptr) return HVC_NOT_FOUND;
  const ProcessSharing sharing = sharing_.OfProcess(*process);
  const Figure consumed = Consumed(*status);
  const Figure unswappable = status->locked + status->pinned;
  const Figure swapBacked = status->anonymous + status->sharedMemory;
  record.max = record.minLimit = HVC_KB_NONE;
  if (own != nullptr) {
    record.min = (reader_.Amount(*own, CgroupAmount::kMin) / 1024).Cell(0);
    record.max = Cell(reader_.Amount(*own, CgroupAmount::kMax) / 1024);
  }
  record.memSizeLimit = ShortLimit(limit / 1024);
  record.memSize = Cell(status->size);
  record.touched = record.memBStore = Cell(consumed);
  record.mapped = Cell(consumed + AbsentIfUnreadable(sharing.zero));
  record.sharedSaved = record.cow = sharing.saved.Cell(0);
  record.swapBStore = record.swapped = Cell(status->swapped);
  record.swappable = Cell(status->anonymous - unswappable);
  record.shm = Cell(status->sharedMemory);
  record.pageable = Cell(swapBacked - unswappable);
  record.pageableUnacct = Cell(status->files);
  record.pinned = Cell(Lower(unswappable + status->hugePages, consumed));
  record.prealloced = Cell(status->hugePages);
  return reader_.Confirm(*process);
}

HVC_ReturnStatus ClientRecords::TotalCommon(int64_t client, TotalCommonRecord &) {
  return FindProcess(client) == nullptr && FindVmOfVmm(client) == nullptr ? HVC_NOT_FOUND : HVC_OK;
}

HVC_ReturnStatus ClientRecords::RemapTypes(int64_t client, ParamList &list) {
  Group *process = FindProcess(client);
  if (process == nullptr) return FindVmOfVmm(client) == nullptr ? HVC_NOT_FOUND : HVC_OK;
  for (size_t type = 0; type < std::size(kRemapTypes); ++type) {
    if (RemappedPages(*process, type).isAbsent()) continue;
    if (const HVC_ReturnStatus status = list.Add(kRemapTypes[type]); status != HVC_OK) return status;
  }
  return reader_.Confirm(*process);
}

// The kernel counts a page after it has moved it, so no page is pending.
HVC_ReturnStatus ClientRecords::Remap(int64_t client, std::string_view type, RemapStatsRecord &record) {
  Group *process = FindProcess(client);
  const auto *found = std::ranges::find(kRemapTypes, type);
  if (process == nullptr || found == std::end(kRemapTypes)) return HVC_NOT_FOUND;
  const Figure pages = RemappedPages(*process, static_cast<size_t>(found - std::begin(kRemapTypes)));
  if (pages.isAbsent()) return HVC_NOT_FOUND;
  record.added = record.remapped = Cell(pages);
  return reader_.Confirm(*process);
}

Group *ClientRecords::FindProcess(int64_t client) {
  if (client <= 0 || client > kMaxPid) return nullptr;
  Group *process = tree_.Find(client);
  if (process != nullptr) tree_.DetectVm(*process);
  return process;
}

Group *ClientRecords::FindVm(int64_t client) {
  Group *process = FindProcess(client);
  return process != nullptr && process->kind == GroupKind::kVm ? process : nullptr;
}

Group *ClientRecords::FindVmOfVmm(int64_t client) {
  return client > kFirstVmmGroup ? FindVm(client - kFirstVmmGroup) : nullptr;
}

const CgroupStat &ClientRecords::StatOf(Group *own) {
  static constexpr CgroupStat kAbsent;
  return own == nullptr ? kAbsent : reader_.Stat(*own);
}

Figure ClientRecords::PagesInKB(Figure pages) { return pages.isAbsent() ? pages : pages * pageSize_.KB(); }

// VmSwap of a process omits shared memory. The control group's figure includes memory that zswap keeps compressed.
Figure ClientRecords::Swapped(Group *own, const ProcessStatus &status) {
  if (own == nullptr) return status.swapped;
  const CgroupStat &stat = StatOf(own);
  const Figure swap = stat.swap.isAbsent() ? reader_.Amount(*own, CgroupAmount::kSwap) : stat.swap;
  return (swap / 1024).IfAbsent(status.swapped) - stat.zswapped / 1024;
}

// In pages of 4 KB. Absent if this kernel does not count them.
Figure ClientRecords::RemappedPages(Group &process, size_t type) {
  const CgroupStat &stat = StatOf(vms_.OwnControlGroup(process));
  Figure pages;
  switch (type) {
    case kPromotion: pages = stat.promoted; break;
    case kDemotion: pages = stat.demoted; break;
    default:
      pages = stat.numaMoved - stat.promoted;
      if (pages.isAbsent()) pages = reader_.NumaMovedPages(process);
  }
  return pages.isAbsent() ? pages : pages * pageSize_.RecordPages();
}

}  // namespace platkit
