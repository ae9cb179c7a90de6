#include "tools/nodal/metrics/metric_table.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace nodal {
namespace {

using platkit::Field;
using platkit::Node;
using platkit::RecordLayout;
using enum MetricFamily;
using enum MetricType;

template <typename Type>
consteval NodeField IntegerField(platkit::NodeId node, size_t offset) {
  static_assert(std::is_integral_v<Type>);
  return {node, static_cast<uint32_t>(offset)};
}

template <typename Type>
consteval NodeField IntegerEntryField(platkit::NodeId node, size_t offset, size_t offsetInEntry) {
  static_assert(std::is_integral_v<Type>);
  return {node, static_cast<uint32_t>(offset), static_cast<uint32_t>(offsetInEntry)};
}

// NODE_FIELD is a field of a node's record, and ENTRY_FIELD a field of the entries of an array in such a record. A node
// or field that does not exist is a compile error.
#define RECORD_OF(node) decltype(platkit::nodes::node)::Record
#define NODE_FIELD(node, field) \
  IntegerField<decltype(RECORD_OF(node)::field)>(platkit::NodeId::node, offsetof(RECORD_OF(node), field))
#define ENTRY_OF(node, array) std::remove_all_extents_t<decltype(RECORD_OF(node)::array)>
#define ENTRY_FIELD(node, array, field)                                                                              \
  IntegerEntryField<decltype(ENTRY_OF(node, array)::field)>(platkit::NodeId::node, offsetof(RECORD_OF(node), array), \
                                                            offsetof(ENTRY_OF(node, array), field))

constexpr FamilyDescription kFamilies[] = {
    {kHost, "host", "", true, "The host as a whole."},
    {kGroup, "group", "group, name", true,
     "Each scheduler group except user worlds: the host, the kernel, containers of groups, virtual machines and their "
     "monitors."},
    {kVm, "vm", "group, vm", true, "Each virtual machine, by its group and its name."},
    {kWorld, "world", "group, name", false,
     "Each user world that is not a virtual machine. Each new user world adds a time series to each of these metrics."},
    {kPool, "pool", "numa_node, pool", true,
     "Each pool of large pages of each NUMA node; pshare is the pool of page sharing."},
    {kBuddy, "buddy", "buddy, numa_node, buffer_bytes", true,
     "Each buffer size of each buddy allocator. The label numa_node is empty for an allocator that does not belong to "
     "a NUMA node."},
    {kHeap, "heap", "heap", false, "Each kernel heap. A host may have hundreds of heaps."},
    {kVolume, "volume", "volume", true, "Each volume of persistent memory."},
    {kRegion, "region", "volume, region", true, "Each region of persistent memory."},
    {kReading, "reading", "", true, "Failed reads of the host, and the version of this program."},
};

constexpr Metric kMetrics[] = {
    {kHost, "host_memory_bytes", kGauge, NODE_FIELD(memory_comprehensive, total), "Physical memory of the host."},
    {kHost, "host_memory_managed_bytes", kGauge, NODE_FIELD(memory_comprehensive, managedByMemMap),
     "Memory that the page allocator manages."},
    {kHost, "host_memory_schedulable_bytes", kGauge, NODE_FIELD(sched_globalStats_memory_kestrel, managedByMemSched),
     "Memory that can be allocated to groups."},
    {kHost, "host_memory_free_bytes", kGauge, NODE_FIELD(memory_comprehensive, free), "Free memory."},
    {kHost, "host_memory_min_free_bytes", kGauge, NODE_FIELD(sched_globalStats_memory_kestrel, minFree),
     "Free memory that the host tries to keep."},
    {kHost, "host_memory_reliable_bytes", kGauge, NODE_FIELD(memory_comprehensive, reliableMem), "Reliable memory."},
    {kHost, "host_memory_discarded_bytes", kGauge, NODE_FIELD(memory_comprehensive, discarded),
     "Memory that the kernel has taken out of use, for example after an error."},
    {kHost, "host_memory_low_reserved_bytes", kGauge, NODE_FIELD(memory_comprehensive, rsvdLow),
     "Low memory reserved for allocations that need it."},
    {kHost, "host_kernel_code_bytes", kGauge, NODE_FIELD(memory_comprehensive, kernelCode), "Code of the kernel."},
    {kHost, "host_kernel_data_bytes", kGauge, NODE_FIELD(memory_comprehensive, dataAndHeap),
     "Data and heaps of the kernel."},
    {kHost, "host_buddy_overhead_bytes", kGauge, NODE_FIELD(memory_comprehensive, buddyOvhd),
     "Page-allocator metadata."},
    {kHost, "host_kernel_clients_bytes", kGauge, NODE_FIELD(memory_comprehensive, hvcClientConsumed),
     "Memory that the kernel's clients consume."},
    {kHost, "host_other_clients_bytes", kGauge, NODE_FIELD(memory_comprehensive, otherConsumed),
     "Memory that all other clients consume."},
    {kHost, "host_memory_state", kGauge, Computation::kMemoryState,
     "1 if the host is in this memory state (high, clear, soft, hard or low), else 0.", "state"},
    {kHost, "host_memory_state_entries_total", kCounter, Computation::kMemoryStateEntries,
     "Number of times the host entered the state.", "state"},
    {kHost, "host_virtual_machines", kGauge, NODE_FIELD(sched_globalStats_numVMs, numVMs),
     "Number of virtual machines."},
    {kHost, "host_numa_nodes", kGauge, NODE_FIELD(memory_memInfo, numNodes), "Number of NUMA nodes with memory."},
    {kHost, "host_shared_bytes", kGauge, NODE_FIELD(memory_pshare_stats, cow),
     "Client memory that is shared with identical client memory."},
    {kHost, "host_shared_zero_bytes", kGauge, NODE_FIELD(memory_pshare_stats, zero),
     "Shared client memory that contains only zeros."},
    {kHost, "host_shared_backing_bytes", kGauge, NODE_FIELD(memory_pshare_stats, used),
     "Machine memory that backs shared client memory."},
    {kHost, "host_shared_saved_bytes", kGauge, NODE_FIELD(memory_pshare_stats, reclaimed),
     "Machine memory that page sharing saves."},
    {kHost, "host_shared_added_bytes_total", kCounter, NODE_FIELD(memory_pshare_stats, totAdd),
     "Client memory that has become shared."},
    {kHost, "host_shared_removed_bytes_total", kCounter, NODE_FIELD(memory_pshare_stats, totRemove),
     "Client memory that is no longer shared."},
    {kHost, "host_sharing_hints_bytes", kGauge, NODE_FIELD(memory_pshare_stats, hintsActive),
     "Client memory that is watched for identical content."},
    {kGroup, "group_info", kGauge, Computation::kGroupInfo,
     "Always 1. The kind is vm, vmm (a virtual machine's monitor), kernel, container or other.", "parent, tag, kind"},
    {kGroup, "group_reservation_bytes", kGauge, NODE_FIELD(sched_groups_memAllocationInKB, min),
     "Configured reservation."},
    {kGroup, "group_limit_bytes", kGauge, NODE_FIELD(sched_groups_memAllocationInKB, max), "Configured limit."},
    {kGroup, "group_reservation_limit_bytes", kGauge, NODE_FIELD(sched_groups_memAllocationInKB, minLimit),
     "Configured limit of the reservation."},
    {kGroup, "group_shares", kGauge, NODE_FIELD(sched_groups_memAllocationInKB, shares), "Configured shares."},
    {kGroup, "group_reservation_consumed_bytes", kGauge, NODE_FIELD(sched_groups_stats_capacity, consumedResv),
     "Reservation used by the child groups."},
    {kGroup, "group_reservation_available_bytes", kGauge, NODE_FIELD(sched_groups_stats_capacity, availResv),
     "Reservation still available to child groups."},
    {kGroup, "group_effective_reservation_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, eMin),
     "Reservation in effect."},
    {kGroup, "group_allocation_target_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, allocTgt),
     "Memory that the scheduler intends to allocate to the group."},
    {kGroup, "group_size_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, memSize),
     "Guest memory, or address space in use."},
    {kGroup, "group_consumed_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, consumed), "Memory consumed."},
    {kGroup, "group_consumed_peak_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, consumedPeak),
     "Highest memory consumption since the group was created, or since its peak was reset."},
    {kGroup, "group_touched_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, touched),
     "Memory in active use."},
    {kGroup, "group_overhead_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, ovhd),
     "Overhead memory consumed."},
    {kGroup, "group_overhead_reservation_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, ovhdResv),
     "Overhead memory reserved."},
    {kGroup, "group_shared_saved_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, sharedSaved),
     "Memory that page sharing saves."},
    {kVm, "vm_consumed_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, consumed),
     "Host memory consumed, including overhead."},
    {kVm, "vm_size_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, memSize), "Guest memory."},
    {kVm, "vm_size_limit_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, memSizeLimit),
     "Maximum size of the guest memory."},
    {kVm, "vm_mapped_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, mapped),
     "Guest memory backed by host memory."},
    {kVm, "vm_touched_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, touched), "Guest memory in active use."},
    {kVm, "vm_allocation_target_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, allocTgt),
     "Host memory that the scheduler intends to allocate to the virtual machine."},
    {kVm, "vm_shared_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, shared),
     "Mapped guest memory that is shared."},
    {kVm, "vm_shared_saved_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, sharedSaved),
     "Host memory that page sharing saves."},
    {kVm, "vm_zero_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, zero),
     "Shared guest memory that contains only zeros."},
    {kVm, "vm_ballooned_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, ballooned),
     "Guest memory that the balloon holds."},
    {kVm, "vm_balloon_target_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, balloonTgt),
     "Target size of the balloon."},
    {kVm, "vm_swapped_bytes", kGauge, NODE_FIELD(sched_memClients_swapInfo, swapped),
     "Guest memory that the host has swapped out."},
    {kVm, "vm_swap_target_bytes", kGauge, NODE_FIELD(sched_memClients_swapInfo, swapTgt),
     "Guest memory that the host intends to swap out."},
    {kVm, "vm_swapped_in_bytes_total", kCounter, NODE_FIELD(sched_memClients_swapInfo, swapIn),
     "Guest memory that the host swapped in."},
    {kVm, "vm_swapped_out_bytes_total", kCounter, NODE_FIELD(sched_memClients_swapInfo, swapOut),
     "Guest memory that the host swapped out."},
    {kVm, "vm_swap_file_bytes", kGauge, NODE_FIELD(sched_memClients_swapInfo, totalReg),
     "Size of the virtual machine's regular swap file."},
    {kVm, "vm_swap_file_free_bytes", kGauge, NODE_FIELD(sched_memClients_swapInfo, freeReg),
     "Free space in the virtual machine's regular swap file."},
    {kVm, "vm_low_latency_swapped_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, llswapped),
     "Guest memory that the host has swapped to low-latency swap."},
    {kVm, "vm_zipped_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, zipped),
     "Guest memory that the host has compressed."},
    {kVm, "vm_zip_saved_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_vmm, zipSaved),
     "Host memory that compression saves."},
    {kVm, "vm_zip_cache_bytes", kGauge, NODE_FIELD(sched_memClients_memzipInfo, usedCache), "Compression cache used."},
    {kVm, "vm_zip_cache_limit_bytes", kGauge, NODE_FIELD(sched_memClients_memzipInfo, maxCache),
     "Largest size of the compression cache."},
    {kVm, "vm_zip_added_bytes_total", kCounter, NODE_FIELD(sched_memClients_memzipInfo, zipped),
     "Guest memory that the host has compressed."},
    {kVm, "vm_zip_removed_bytes_total", kCounter, NODE_FIELD(sched_memClients_memzipInfo, unZipped),
     "Guest memory that the host has decompressed."},
    {kVm, "vm_zip_rejected_bytes_total", kCounter, NODE_FIELD(sched_memClients_memzipInfo, zipRejected),
     "Guest memory that did not compress well enough."},
    {kVm, "vm_zip_time_seconds", kGauge, NODE_FIELD(sched_memClients_memzipInfo, avgZipTime),
     "Average time to compress a page."},
    {kVm, "vm_unzip_time_seconds", kGauge, NODE_FIELD(sched_memClients_memzipInfo, avgUnzipTime),
     "Average time to decompress a page."},
    {kVm, "vm_guest_memory_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_guest, memTotal),
     "Total memory reported by the guest."},
    {kVm, "vm_guest_needed_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_guest, memNeeded),
     "Memory that the guest's workload needs, as reported by the guest."},
    {kVm, "vm_large_pages", kGauge, NODE_FIELD(memory_lpage_vmLPage, backings2M),
     "2 MB large pages that back guest memory."},
    {kVm, "vm_huge_pages", kGauge, NODE_FIELD(memory_lpage_vmLPage, backings1G),
     "1 GB large pages that back guest memory."},
    {kVm, "vm_large_pages_backed_total", kCounter, NODE_FIELD(memory_lpage_vmLPage, allocSuccess),
     "Successful attempts to back guest memory with a large page."},
    {kVm, "vm_large_pages_failed_total", kCounter, NODE_FIELD(memory_lpage_vmLPage, failNoMem),
     "Attempts to back guest memory with a large page that failed because memory was short."},
    {kVm, "vm_large_pages_broken_total", kCounter, NODE_FIELD(memory_lpage_vmLPage, broken),
     "Large pages that backed guest memory and were split."},
    {kWorld, "world_consumed_bytes", kGauge, NODE_FIELD(sched_groups_stats_memoryStats, consumed), "Memory consumed."},
    {kWorld, "world_reservation_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, min),
     "Configured reservation."},
    {kWorld, "world_limit_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, max), "Configured limit."},
    {kWorld, "world_size_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, memSize), "Address space in use."},
    {kWorld, "world_mapped_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, mapped),
     "Address space backed by memory."},
    {kWorld, "world_touched_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, touched), "Memory in active use."},
    {kWorld, "world_pinned_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, pinned),
     "Mapped memory that cannot be swapped out."},
    {kWorld, "world_shared_memory_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, shm),
     "Shared-memory segments."},
    {kWorld, "world_shared_saved_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, sharedSaved),
     "Memory that page sharing saves."},
    {kWorld, "world_swapped_bytes", kGauge, NODE_FIELD(sched_memClients_kestrel_uw, swapped),
     "Memory that is swapped out."},
    {kPool, "pool_large_pages", kGauge, NODE_FIELD(memory_lpage_nodeList_vmPools, nrLPages),
     "Large pages in the pool."},
    {kPool, "pool_free_small_pages", kGauge, NODE_FIELD(memory_lpage_nodeList_vmPools, nrFreeSPages),
     "Free small pages in the pool."},
    {kPool, "pool_small_pages_allocated_total", kCounter, NODE_FIELD(memory_lpage_nodeList_vmPools, nrSPageAllocs),
     "Small pages allocated."},
    {kPool, "pool_small_pages_freed_total", kCounter, NODE_FIELD(memory_lpage_nodeList_vmPools, nrSPageFrees),
     "Small pages freed."},
    {kPool, "pool_small_pages_reaped_total", kCounter, NODE_FIELD(memory_lpage_nodeList_vmPools, nrSPagesReaped),
     "Small pages reaped."},
    {kPool, "pool_large_pages_defragmented_total", kCounter,
     NODE_FIELD(memory_lpage_nodeList_vmPools, nrLPagesDefragged), "Large pages defragmented."},
    {kBuddy, "buddy_free_buffers", kGauge, ENTRY_FIELD(system_buddy_comprehensive, sizes, free),
     "Free buffers of the size in the label buffer_bytes."},
    {kBuddy, "buddy_used_buffers", kGauge, ENTRY_FIELD(system_buddy_comprehensive, sizes, used),
     "Used buffers of the size in the label buffer_bytes."},
    {kHeap, "heap_size_bytes", kGauge, NODE_FIELD(system_heaps_stats, size), "Current size."},
    {kHeap, "heap_available_bytes", kGauge, NODE_FIELD(system_heaps_stats, avail), "Free part of the current size."},
    {kHeap, "heap_limit_bytes", kGauge, NODE_FIELD(system_heaps_stats, max),
     "Largest size of the heap; 0 if it is unlimited."},
    {kHeap, "heap_least_free_ratio", kGauge, NODE_FIELD(system_heaps_stats, lowPctFreeOfMax),
     "Smallest free share of the limit so far."},
    {kHeap, "heap_allocations_total", kCounter, NODE_FIELD(system_heaps_stats, numSuccAllocs),
     "Allocations that succeeded."},
    {kHeap, "heap_failed_allocations_total", kCounter, NODE_FIELD(system_heaps_stats, numFailAllocs),
     "Allocations that failed."},
    {kVolume, "volume_size_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, totalBlocks),
     "Size of the volume."},
    {kVolume, "volume_allocated_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, allocatedBlocks),
     "Allocated part of the volume."},
    {kVolume, "volume_reserved_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, reservedBlocks),
     "Reserved part of the volume."},
    {kVolume, "volume_available_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, availableBlocks),
     "Part of the volume that can be reserved."},
    {kVolume, "volume_regions", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, totalRegions),
     "Regions that fit into the volume's region store."},
    {kVolume, "volume_free_regions", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_info, freeRegions),
     "Free regions in the volume's region store."},
    {kVolume, "volume_clean", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_isClean, isClean),
     "1 if the region store is clean, else 0."},
    {kRegion, "region_size_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_regions_info, size),
     "Size of the region."},
    {kRegion, "region_allocated_bytes", kGauge,
     NODE_FIELD(memory_pmem_volumes_regionStore_regions_info, allocatedBlocks), "Allocated part of the region."},
    {kRegion, "region_reserved_bytes", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_regions_info, reservedBlocks),
     "Reserved part of the region."},
    {kRegion, "region_open_handles", kGauge, NODE_FIELD(memory_pmem_volumes_regionStore_regions_info, openCount),
     "Number of open handles to the region."},
    {kReading, "reading_failures", kGauge, Computation::kReadingFailures,
     "Number of nodes that could not be read and have no samples."},
    {kReading, "reading_info", kGauge, Computation::kReadingInfo, "Always 1.", "version, definitions"},
};

consteval bool FamiliesAreInOrder() {
  for (size_t i = 0; i < std::size(kFamilies); ++i) {
    if (static_cast<size_t>(kFamilies[i].family) != i) return false;
  }
  return std::ranges::is_sorted(kMetrics, {}, &Metric::family);
}
static_assert(FamiliesAreInOrder());

consteval bool NamesBeginWithTheirFamily() {
  return std::ranges::all_of(kMetrics, [](const Metric &metric) {
    const std::string_view family = kFamilies[static_cast<size_t>(metric.family)].name;
    return metric.name.starts_with(family) && metric.name.substr(family.size()).starts_with('_');
  });
}
static_assert(NamesBeginWithTheirFamily());

// The search always succeeds, because a layout lists every field of its struct.
const Field *FieldAt(const RecordLayout &layout, uint32_t offset) {
  return &*std::ranges::find(layout.fields, offset, &Field::offset);
}

}  // namespace

const Node *Metric::node() const {
  const auto *ref = std::get_if<NodeField>(&value);
  return ref == nullptr ? nullptr : platkit::FindNode(static_cast<uint32_t>(ref->node));
}

const Field *Metric::field() const {
  const auto *ref = std::get_if<NodeField>(&value);
  return ref == nullptr ? nullptr : FieldAt(*node()->record, ref->offset);
}

const Field *Metric::entryField() const {
  const auto *ref = std::get_if<NodeField>(&value);
  if (ref == nullptr || !ref->offsetInEntry) return nullptr;
  return FieldAt(*field()->entry, *ref->offsetInEntry);
}

std::span<const FamilyDescription> MetricFamilies() { return kFamilies; }

const FamilyDescription &DescriptionOf(MetricFamily family) { return kFamilies[static_cast<size_t>(family)]; }

std::span<const Metric> Metrics() { return kMetrics; }

}  // namespace nodal
