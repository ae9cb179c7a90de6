#include "platkit/linux/records/client_records.h"

#include <algorithm>
#include <iterator>

#include "platkit/linux/groups/process_memory.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/kernel/process_limits.h"

namespace platkit {
namespace {

constexpr uint64_t kGiganticPageKB = 1 << 20;
constexpr uint32_t kNoCount = UINT32_MAX;  // a count that is not available

// The reasons for which the kernel moves pages between memory nodes.
enum RemapType : size_t { kNuma, kPromotion, kDemotion };
constexpr std::string_view kRemapTypes[] = {"numa", "promotion", "demotion"};

constexpr uint64_t Cell(Figure figure) { return figure.Cell(HVC_KB_NONE); }

// Whether the group is removed with its last process, so that it never belonged to another VM.
bool EndsWithItsProcesses(const Group &group) {
  return group.folder.find(".scope/") != std::string::npos || group.folder.ends_with(".scope") ||
         group.folder.find(".libvirt-qemu") != std::string::npos;
}

// Lets a sum omit an unreadable term.
constexpr Figure AbsentIfUnreadable(Figure figure) { return figure == Figure::Unreadable() ? Figure() : figure; }

// Converts a limit in KB for a signed field of 32 bits. The result is -1 (unlimited) for a limit of 2 TB or more, and
// for one that is absent or unreadable.
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
  const Compressed compressed = CompressedOf(own);
  const ProcessSharing sharing = sharing_.OfProcess(*vm);
  const GuestMemory guest = vms_.Guest(*vm, *status);
  const Figure memory = guest.size.IfAbsent(status->size());
  const Figure growth = vm->vm->options.maxMemory - memory;
  const Figure mapped = Lower(GuestPart(*status, guest) + AbsentIfUnreadable(sharing.zero), memory);
  record.memSize = Cell(memory);
  record.memSizeLimit = Cell(memory + growth);
  record.mapped = Cell(mapped);
  record.shared = sharing.saved.Cell(0);
  record.sharedSaved = sharing.saved.Cell(0);
  record.zero = sharing.zero.Cell(0);
  record.zipped = Cell(compressed.size);
  record.zipSaved = Cell(compressed.saved);
  record.touched = HVC_KB_NONE;
  record.allocTgt = Cell(AllocationTarget(*vm, own, memory));
  const ZramUse zram = InZram(Swapped(own, *status));
  record.llswapped = Cell(zram.size);
  record.llswapUsed = Cell(zram.memory);
  const bool hasPersistentMemory = vm->vm->options.hasPersistentMemory != Figure(0);
  record.vpmemRO = record.vpmemRW = record.vpmemUC = hasPersistentMemory ? HVC_KB_NONE : 0;
  const Balloon balloon = monitors_.BalloonOf(*vm);
  record.balloonActive = balloon.isActive.Cell8(0);
  record.ballooned = Cell(balloon.size);
  record.balloonTgt = Cell(balloon.target);
  return reader_.Confirm(*vm);
}

HVC_ReturnStatus ClientRecords::Guest(int64_t client, GuestStatsRecord &record) {
  Group *vm = FindVm(client);
  if (vm == nullptr) return HVC_NOT_FOUND;
  const ProcessStatus *status = reader_.Status(*vm);
  if (status == nullptr) return HVC_NOT_FOUND;
  const Figure memory = vms_.GuestSize(*vm, *status);
  if (memory.isAbsent()) return HVC_NOT_FOUND;
  const GuestUse use = monitors_.UseOf(*vm, *status);
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
  record.totalCache = record.maxCache = Cell(CompressionCache(*vm));
  record.usedCache = Cell(stat.zswap / 1024);
  record.zipped = Cell(PagesInKB(CountOfVm(own, stat.zswapOut, Figure())));
  record.unZipped = Cell(PagesInKB(CountOfVm(own, stat.zswapIn, Figure())));
  // While zswap is off, it rejects nothing.
  if (record.totalCache != 0) {
    record.zipRejected =
        Cell(PagesInKB(CountOfVm(own, stat.unzippable, host_.vmstat().swapWrites.IfAbsent(Figure(0)))));
  }
  return reader_.Confirm(*vm);
}

// The maximum size of the VM's compressed memory: the lowest limit of its control groups, but at most what zswap may
// use on the host. 0 while zswap is off, or on a kernel without zswap.
Figure ClientRecords::CompressionCache(Group &vm) {
  const Figure percent = host_.zswapMaxPercent();
  if (percent.isAbsent()) return Figure(0);
  const Figure pool =
      percent == Figure(0) || percent == Figure::Unreadable() ? percent : host_.meminfo().total / 100 * percent.Cell(0);
  return Lower(pool, limits_.Lowest(vm, CgroupAmount::kZswapMax) / 1024);
}

// Without a control group of its own, a VM's compressed memory is known only if the host has no compressed memory.
ClientRecords::Compressed ClientRecords::CompressedOf(Group *own) {
  const CgroupStat &stat = StatOf(own);
  if (!stat.zswapped.isAbsent()) {
    return {.size = stat.zswapped / 1024, .saved = stat.zswapped / 1024 - stat.zswap / 1024};
  }
  const Figure unknown = host_.Zswapped() == Figure(0) ? Figure(0) : Figure::Unreadable();
  return {.size = unknown, .saved = unknown};
}

// `count` is the count of the VM's own control group. Without it, the result is 0 if `ofHost`, the count of the whole
// host, is 0, and unreadable otherwise. If the group may have existed before the VM, only 0 is certain, because an
// earlier VM may have contributed to the count. systemd and libvirt remove a VM's scope with its last process.
Figure ClientRecords::CountOfVm(const Group *own, Figure count, Figure ofHost) {
  if (count.isAbsent() || own == nullptr) return ofHost == Figure(0) ? Figure(0) : Figure::Unreadable();
  return count == Figure(0) || EndsWithItsProcesses(*own) ? count : Figure::Unreadable();
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
  const Vmstat &counters = host_.vmstat();
  const Figure cached = host_.meminfo().swapCached.IfAbsent(Figure(0));
  const Swaps &space = host_.swaps();
  const SwapLimit limit = limits_.Swap(*vm);
  const Figure swapped = Swapped(own, *status);
  record.isSwapping = IsSwapping(own, swapped).Cell8(0);
  record.swapped = Cell(swapped);
  record.swapRead = Cell((stat.swapCached / 1024).IfAbsent(cached == Figure(0) ? cached : Figure::Unreadable()));
  record.swapIn = Cell(PagesInKB(CountOfVm(own, stat.swapIn, counters.swapIn.IfAbsent(Figure(0)))));
  record.swapOut = Cell(PagesInKB(CountOfVm(own, stat.swapOut, counters.swapOut.IfAbsent(Figure(0)))));
  record.gblSwapRead = Cell(cached);
  record.gblSwapIn = Cell(PagesInKB(counters.swapIn.IfAbsent(Figure(0))));
  record.gblSwapOut = Cell(PagesInKB(counters.swapOut.IfAbsent(Figure(0))));
  record.hvcSwapOn = own == nullptr ? kNoCount : CountOfVm(own, reader_.LimitHits(*own), Figure()).Cell32(kNoCount);
  record.totalReg = Cell(Lower(space.total, limit.total / 1024));
  record.freeReg = Cell(Lower(space.free, limit.free / 1024));
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
  const Vmstat &counters = host_.vmstat();
  const Figure gigantic = GiganticPagesInKB(*vm, own, *status);
  const Figure transparent = TransparentPagesInKB(*vm, own, *status, status->hugePages - gigantic);
  const uint64_t large = Cell((status->hugePages - gigantic + transparent) / kRecordLargePageKB);
  record.backings2M = large < kNoCount ? static_cast<uint32_t>(large) : kNoCount;
  if (record.backings2M != kNoCount) record.backings1G = static_cast<uint32_t>(Cell(gigantic / kGiganticPageKB));
  record.allocSuccess = Cell(CountOfVm(own, stat.hugeAllocs, counters.hugeAllocs.IfAbsent(Figure(0))));
  record.broken = Cell(CountOfVm(own, stat.hugeSplits, counters.hugeSplits.IfAbsent(Figure(0))));
  // The kernel counts these for the host only.
  record.failNoMem = Cell(CountOfVm(nullptr, Figure(), counters.hugeFailures.IfAbsent(Figure(0))));
  record.failSwapped = Cell(CountOfVm(nullptr, Figure(), counters.hugeSwappedRefused.IfAbsent(Figure(0))));
  record.maxSwapThreshold = host_.maxSwappedPages().Cell32(0);
  return reader_.Confirm(*vm);
}

// The VM's huge pages of 1 GB. Its own control group counts them separately. KVM counts only those that the guest has
// mapped.
Figure ClientRecords::GiganticPagesInKB(Group &vm, Group *own, const ProcessStatus &status) {
  if (status.hugePages == Figure(0)) return Figure(0);
  Figure charged = own == nullptr ? Figure() : reader_.Amount(*own, CgroupAmount::kGiganticPages) / 1024;
  charged = AbsentIfUnreadable(charged).IfAbsent(AbsentIfUnreadable(reader_.GuestPages(vm).gigantic) * kGiganticPageKB);
  return Lower(charged.IfAbsent(Figure(0)), status.hugePages);
}

// The VM's transparent huge pages. The kernel's figures for a single process are not used, because the time to read
// them grows with the memory of the process. KVM counts the pages that the guest has mapped, including `pooled`, the
// huge pages of pools. The VM's own control group also counts the monitor's pages.
Figure ClientRecords::TransparentPagesInKB(Group &vm, Group *own, const ProcessStatus &status, Figure pooled) {
  const Figure memory = vms_.GuestSize(vm, status);
  const bool isPossible =
      status.transparentHugePages != Figure(0) && (memory.isAbsent() || memory - status.hugePages != Figure(0));
  if (!isPossible || host_.TransparentPages() == Figure(0)) return Figure(0);
  const Figure mapped = AbsentIfUnreadable(reader_.GuestPages(vm).large) * kRecordLargePageKB;
  if (!mapped.isAbsent()) return Lower(mapped - pooled, memory);
  return (StatOf(own).transparent / 1024).IfAbsent(Figure::Unreadable());
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
  const Figure reserved = own == nullptr ? Figure(0) : reader_.Amount(*own, CgroupAmount::kMin) / 1024;
  record.min = reserved.Cell(0);
  // Locked memory is charged to the control group and protected with it; huge pages of pools are not.
  record.totalResv = Cell(Higher(reserved, unswappable) + status->hugePages);
  record.pinnedResv = Cell(unswappable + status->hugePages);
  record.allocTgt = Cell(AllocationTarget(*process, own, status->size()));
  if (process->kind == GroupKind::kVm) record.max = Cell(limits_.Lowest(*process, CgroupAmount::kMax) / 1024);
  record.memSizeLimit = ShortLimit(limit / 1024);
  record.memSize = Cell(status->size());
  record.touched = HVC_KB_NONE;
  record.memBStore = Cell(consumed);
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

// The kernel counts pages only after it has moved them, so no page is pending.
HVC_ReturnStatus ClientRecords::Remap(int64_t client, std::string_view type, RemapStatsRecord &record) {
  Group *process = FindProcess(client);
  const auto *found = std::ranges::find(kRemapTypes, type);
  if (process == nullptr || found == std::end(kRemapTypes)) return HVC_NOT_FOUND;
  const Figure pages = RemappedPages(*process, static_cast<size_t>(found - std::begin(kRemapTypes)));
  if (pages.isAbsent()) return HVC_NOT_FOUND;
  const Figure left = type == kRemapTypes[kNuma] ? NumaPagesLeft(*process) : Figure();
  record.remapped = Cell(pages);
  record.filtered = left.Cell(0);
  record.added = Cell(pages + left);
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

// VmSwap of a process omits shared memory. The figure of a version 2 control group includes memory that zswap keeps
// compressed, and memory that was read again but keeps its place in swap space. Both are subtracted. Some kernels keep
// a page in zswap after reading it again, and the result is then too low. Version 1 excludes memory that was read
// again.
Figure ClientRecords::Swapped(Group *own, const ProcessStatus &status) {
  if (own == nullptr) return status.swapped;
  const CgroupStat &stat = StatOf(own);
  if (!stat.swap.isAbsent()) return stat.swap / 1024;
  const Figure swap = reader_.Amount(*own, CgroupAmount::kSwap);
  if (swap.isAbsent()) return status.swapped;
  return swap / 1024 - stat.zswapped / 1024 - stat.swapCached / 1024;
}

// The part of the VM's swapped memory that is in zram. It is known only if all or none of the host's swapped memory is
// in zram. The memory that zram uses for it is the VM's share of the memory that zram uses in total.
ClientRecords::ZramUse ClientRecords::InZram(Figure swapped) {
  const Swaps &space = host_.swaps();
  if (space.zramUsed == Figure(0) || swapped == Figure(0)) return {.size = Figure(0), .memory = Figure(0)};
  ZramUse use = {.size = Figure::Unreadable(), .memory = Figure::Unreadable()};
  if (space.total - space.free == Figure(0)) use.size = Lower(swapped.IfAbsent(Figure::Unreadable()), space.zramUsed);
  const Figure memory = host_.zramMemory();
  if (use.size == Figure::Unreadable() || memory == Figure::Unreadable()) return use;
  const double share = static_cast<double>(use.size.Cell(0)) / static_cast<double>(space.zramUsed.Cell(0));
  use.memory = Figure(static_cast<uint64_t>(static_cast<double>(memory.Cell(0)) * share));
  return use;
}

// The kernel does not report whether memory is being swapped out now. A VM without swapped memory is not swapping. Any
// other VM counts as swapping if tasks of its group, or of the host if the group has no such figure, waited for memory
// for at least 1 % of the last ten seconds.
Figure ClientRecords::IsSwapping(Group *own, Figure swapped) {
  if (swapped == Figure(0) || swapped == Figure::Unreadable()) return swapped;
  const Figure waited = own == nullptr ? Figure() : reader_.Pressure(*own).some;
  const Figure share = waited.IfAbsent(host_.pressure().some).IfAbsent(Figure::Unreadable());
  return share == Figure::Unreadable() ? share : Figure(share == Figure(0) ? 0 : 1);
}

// `memory`, or the lowest limit of the control groups above if that is lower. The kernel throttles a group at
// memory.high, which counts only for a VM with a control group of its own.
Figure ClientRecords::AllocationTarget(Group &process, Group *own, Figure memory) {
  const Figure high = own == nullptr ? Figure() : limits_.Lowest(process, CgroupAmount::kHigh) / 1024;
  return Lower(memory, Lower(high, limits_.Lowest(process, CgroupAmount::kMax) / 1024));
}

// Pages that a task on another NUMA node touched and that were not moved there, in pages of 4 KB.
Figure ClientRecords::NumaPagesLeft(Group &process) {
  const CgroupStat &stat = StatOf(vms_.OwnControlGroup(process));
  const Figure pages = stat.numaFaults - stat.numaMoved;
  return pages.isAbsent() ? pages : pages * pageSize_.RecordPages();
}

// Pages that the kernel moved for this reason, in pages of 4 KB. Absent if this kernel does not count them.
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
