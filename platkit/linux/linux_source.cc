#include "platkit/linux/linux_source.h"

#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

#include "platkit/linux/groups/host_groups.h"
#include "platkit/linux/records/buddy_records.h"
#include "platkit/linux/records/client_records.h"
#include "platkit/linux/records/group_records.h"
#include "platkit/linux/records/hardware_records.h"
#include "platkit/linux/records/heap_records.h"
#include "platkit/linux/records/host_memory_records.h"
#include "platkit/linux/records/large_page_pool_records.h"
#include "platkit/linux/records/page_sharing_records.h"
#include "platkit/linux/records/pci_records.h"
#include "platkit/linux/records/pmem_records.h"
#include "platkit/node_ref.h"

namespace platkit {
namespace {

// The readers behind all nodes.
struct Host {
  explicit Host(HostFiles hostFiles) : files(std::move(hostFiles)) {}

  HostFiles files;
  PageSize pageSize{files};
  HostGroups tree{files};
  HostWideFiles wide{files};

  PageSharingRecords sharing{files, pageSize, wide, tree.reader};
  GroupRecords groups{files, tree, wide, sharing};
  ClientRecords clients{files, pageSize, tree, wide, sharing};
  HostMemoryRecords memory{files, pageSize, wide};
  BuddyRecords buddies{files, pageSize};
  LargePagePoolRecords pools{files, buddies};
  HeapRecords heaps{files, pageSize};
  PmemRecords pmem{files};
  PciRecords pci{files};
};

template <typename Record>
using FillFunction = HVC_ReturnStatus (*)(Host &, Arguments, Record &);
using ListFunction = HVC_ReturnStatus (*)(Host &, Arguments, ParamList &);
using WriteFunction = HVC_ReturnStatus (*)(Host &, Arguments, int64_t value);

// The functions of one node. `fill` fills its record, which is zeroed, `list` lists its instances, and `write` writes a
// value. Functions that the node does not have are null. The record type of `fill` must be the node's.
class Row {
 public:
  Row() = default;
  template <typename Record>
  Row(NodeRef<Record> node, FillFunction<std::type_identity_t<Record>> fill, ListFunction list = nullptr,
      WriteFunction write = nullptr)
      : id_(node.id()),
        answer_(&Answer<Record>),
        fill_(reinterpret_cast<AnyFunction>(fill)),
        list_(list),
        write_(write) {}
  Row(NodeRef<NoRecord> node, ListFunction list) : id_(node.id()), list_(list) {}

  uint32_t id() const { return id_; }

  HVC_ReturnStatus Get(Host &host, Arguments arguments, std::span<std::byte> record) const {
    return answer_ == nullptr ? HVC_NOT_FOUND : answer_(fill_, host, arguments, record);
  }

  HVC_ReturnStatus List(Host &host, Arguments arguments, ParamList &list) const {
    return list_ == nullptr ? HVC_NOT_FOUND : list_(host, arguments, list);
  }

  HVC_ReturnStatus Set(Host &host, Arguments arguments, Arguments input) const {
    if (write_ == nullptr) return HVC_READ_ONLY;
    if (input.size() != 1 || input[0].kind != ParamKind::kInt) return HVC_NODE_NOT_WRITABLE;
    return write_(host, arguments, input[0].integer);
  }

 private:
  using AnyFunction = void (*)();

  template <typename Record>
  static HVC_ReturnStatus Answer(AnyFunction fill, Host &host, Arguments arguments, std::span<std::byte> bytes) {
    Record record = {};
    const HVC_ReturnStatus status = reinterpret_cast<FillFunction<Record>>(fill)(host, arguments, record);
    if (status == HVC_OK) std::memcpy(bytes.data(), &record, sizeof record);
    return status;
  }

  uint32_t id_ = 0;
  HVC_ReturnStatus (*answer_)(AnyFunction, Host &, Arguments, std::span<std::byte>) = nullptr;
  AnyFunction fill_ = nullptr;  // a FillFunction for the record type that answer_ knows
  ListFunction list_ = nullptr;
  WriteFunction write_ = nullptr;
};

// Instance arguments.
int64_t Int(Arguments arguments, size_t index) { return arguments[index].integer; }
std::string_view Text(Arguments arguments, size_t index) { return arguments[index].text(); }

PciAddress FunctionOf(Arguments arguments) {
  return {Int(arguments, 0), Int(arguments, 1), Int(arguments, 2), Int(arguments, 3)};
}

PciRegister RegisterOf(Arguments arguments) {
  return {.function = FunctionOf(arguments), .size = Int(arguments, 4), .address = Int(arguments, 5)};
}

HVC_ReturnStatus ListPci(Host &host, Arguments a, ParamList &list) { return host.pci.List(a, list); }

// One row for each node that exists on Linux, grouped as in the catalogue. All other nodes return HVC_NOT_FOUND.
const Row kRows[] = {
    {nodes::sched_groups_groupName,
     [](Host &host, Arguments a, GroupNameRecord &record) { return host.groups.Name(Int(a, 0), record); }},
    {nodes::sched_groups_groupTag,
     [](Host &host, Arguments a, GroupTagRecord &record) { return host.groups.Tag(Int(a, 0), record); }},
    {nodes::sched_groups_parentGroupID,
     [](Host &host, Arguments a, ParentGroupIDRecord &record) { return host.groups.ParentID(Int(a, 0), record); }},
    {nodes::sched_groups_groupFlags,
     [](Host &host, Arguments a, GroupFlagsRecord &record) { return host.groups.Flags(Int(a, 0), record); }},
    {nodes::sched_groups_groupLeaderID,
     [](Host &host, Arguments a, GroupLeaderIDRecord &record) { return host.groups.LeaderID(Int(a, 0), record); }},
    {nodes::sched_groups_memAllocationInKB,
     [](Host &host, Arguments a, GroupAllocRecord &record) { return host.groups.Alloc(Int(a, 0), record); }},
    {nodes::sched_groups_stats_memoryStats,
     [](Host &host, Arguments a, GroupMemoryStatsRecord &record) {
       return host.groups.MemoryStats(Int(a, 0), record);
     }},
    {nodes::sched_groups_stats_capacity,
     [](Host &host, Arguments a, GroupCapacityRecord &record) { return host.groups.Capacity(Int(a, 0), record); }},
    {nodes::sched_groups_members_groups,
     [](Host &host, Arguments a, ParamList &list) { return host.groups.Members(Int(a, 0), list); }},
    {nodes::sched_groups_members_memClients,
     [](Host &host, Arguments a, ParamList &list) { return host.groups.MemClients(Int(a, 0), list); }},

    {nodes::sched_memClients_kestrel_vmm,
     [](Host &host, Arguments a, VmmMemoryStatsRecord &record) { return host.clients.Vmm(Int(a, 0), record); }},
    {nodes::sched_memClients_kestrel_uw,
     [](Host &host, Arguments a, UwMemoryStatsRecord &record) { return host.clients.UserWorld(Int(a, 0), record); }},
    {nodes::sched_memClients_kestrel_guest,
     [](Host &host, Arguments a, GuestStatsRecord &record) { return host.clients.Guest(Int(a, 0), record); }},
    {nodes::sched_memClients_kestrel_totalCommon,
     [](Host &host, Arguments a, TotalCommonRecord &record) { return host.clients.TotalCommon(Int(a, 0), record); }},
    {nodes::sched_memClients_swapInfo,
     [](Host &host, Arguments a, VmSwapInfoRecord &record) { return host.clients.SwapInfo(Int(a, 0), record); }},
    {nodes::sched_memClients_memzipInfo,
     [](Host &host, Arguments a, ZipStatsRecord &record) { return host.clients.Zip(Int(a, 0), record); }},
    {nodes::sched_memClients_remapTypes,
     [](Host &host, Arguments a, RemapStatsRecord &record) {
       return host.clients.Remap(Int(a, 0), Text(a, 1), record);
     },
     [](Host &host, Arguments a, ParamList &list) { return host.clients.RemapTypes(Int(a, 0), list); }},
    {nodes::memory_lpage_vmLPage,
     [](Host &host, Arguments a, LPageStatsRecord &record) { return host.clients.LargePages(Int(a, 0), record); }},
    {nodes::worldGroups_vmmLeaderID,
     [](Host &host, Arguments a, VmmLeaderIDRecord &record) { return host.clients.VmmLeaderID(Int(a, 0), record); }},

    {nodes::memory_comprehensive,
     [](Host &host, Arguments, ComprehensiveRecord &record) { return host.memory.Comprehensive(record); }},
    {nodes::sched_globalStats_memory_kestrel,
     [](Host &host, Arguments, GlobalMemoryRecord &record) { return host.memory.Global(record); }},
    {nodes::sched_globalStats_memory_stateTransitions,
     [](Host &host, Arguments a, StateTransitionsRecord &record) {
       return host.memory.Transitions(Text(a, 0), record);
     }},
    {nodes::sched_globalStats_numVMs,
     [](Host &host, Arguments, NumVMsRecord &record) { return host.groups.NumVMs(record); }},
    {nodes::memory_pshare_stats,
     [](Host &host, Arguments, PShareStatsRecord &record) { return host.sharing.Stats(record); }},
    {nodes::system_heaps, [](Host &host, Arguments, ParamList &list) { return host.heaps.List(list); }},
    {nodes::system_heaps_stats,
     [](Host &host, Arguments a, HeapStatsRecord &record) { return host.heaps.Stats(Text(a, 0), record); }},

    {nodes::system_buddy, [](Host &host, Arguments, ParamList &list) { return host.buddies.List(list); }},
    {nodes::system_buddy_comprehensive,
     [](Host &host, Arguments a, BuddyComprehensiveRecord &record) {
       return host.buddies.Comprehensive(Text(a, 0), record);
     }},
    {nodes::memory_memNodes,
     [](Host &host, Arguments a, MemNodeRecord &record) { return host.buddies.MemNode(Int(a, 0), record); }},
    {nodes::memory_memInfo,
     [](Host &host, Arguments, MemInfoRecord &record) { return host.buddies.CountMemNodes(record); }},
    {nodes::memory_lpage_nodeList_vmPools,
     [](Host &host, Arguments a, LPoolStatsRecord &record) { return host.pools.Stats(Int(a, 0), Text(a, 1), record); },
     [](Host &host, Arguments a, ParamList &list) { return host.pools.List(Int(a, 0), list); }},
    {nodes::memory_lpage_nodeList_psharePool,
     [](Host &host, Arguments a, LPoolStatsRecord &record) { return host.pools.PSharePool(Int(a, 0), record); }},

    {nodes::memory_pmem_volumes, [](Host &host, Arguments, ParamList &list) { return host.pmem.Volumes(list); }},
    {nodes::memory_pmem_volumes_info,
     [](Host &host, Arguments a, PMemVolumeRecord &record) { return host.pmem.VolumeInfo(Text(a, 0), record); }},
    {nodes::memory_pmem_volumes_regionStore_info,
     [](Host &host, Arguments a, RegionStoreRecord &record) { return host.pmem.StoreInfo(Text(a, 0), record); }},
    {nodes::memory_pmem_volumes_regionStore_isClean,
     [](Host &host, Arguments a,
        RegionStoreCleanRecord &record) { return host.pmem.StoreIsClean(Text(a, 0), record); }},
    {nodes::memory_pmem_volumes_regionStore_regions,
     [](Host &host, Arguments a, ParamList &list) { return host.pmem.Regions(Text(a, 0), list); }},
    {nodes::memory_pmem_volumes_regionStore_regions_info,
     [](Host &host, Arguments a,
        RegionRecord &record) { return host.pmem.RegionInfo(Text(a, 0), Text(a, 1), record); }},
    {nodes::memory_pmem_volumes_regionStore_regions_numaAllocInfo,
     [](Host &host, Arguments a, RegionNumaRecord &record) {
       return host.pmem.RegionNode(Text(a, 0), Text(a, 1), Int(a, 2), record);
     },
     [](Host &host, Arguments a, ParamList &list) { return host.pmem.RegionNodes(Text(a, 0), Text(a, 1), list); }},
    {nodes::memory_pmem_volumes_extents,
     [](Host &host, Arguments a, ExtentRecord &record) { return host.pmem.Extent(Text(a, 0), Int(a, 1), record); },
     [](Host &host, Arguments a, ParamList &list) { return host.pmem.Extents(Text(a, 0), list); }},

    {nodes::hardware_cpu_cpuList,
     [](Host &host, Arguments a, CpuRecord &record) { return ReadProcessorRecord(host.files, Int(a, 0), record); }},
    {nodes::hardware_nvd_dimm,
     [](Host &host, Arguments, ParamList &list) { return ListNvdimmNumbers(host.files, list); }},
    {nodes::hardware_pci_seg, ListPci},
    {nodes::hardware_pci_seg_bus, ListPci},
    {nodes::hardware_pci_seg_bus_slot, ListPci},
    {nodes::hardware_pci_seg_bus_slot_func, ListPci},
    {nodes::hardware_pci_seg_bus_slot_func_pciConfigHeader,
     [](Host &host, Arguments a, PciConfigHeaderRecord &record) { return host.pci.Header(FunctionOf(a), record); }},
    {nodes::hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr,
     [](Host &host, Arguments a, PciConfigRegRecord &record) { return host.pci.Read(RegisterOf(a), record); }, nullptr,
     [](Host &host, Arguments a, int64_t value) { return host.pci.Write(RegisterOf(a), value); }},
};

// The row of a node; an empty row if it has none.
const Row &RowOf(const Node &node) {
  static const std::array<Row, kMaxNodes + 1> rows = [] {
    std::array<Row, kMaxNodes + 1> byID;
    for (const Row &row : kRows)
      byID[row.id()] = row;
    return byID;
  }();
  return rows[node.id];
}

class LinuxSource final : public Source {
 public:
  explicit LinuxSource(HostFiles files) : host_(std::move(files)) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override {
    return RowOf(node).Get(host_, arguments, record);
  }

  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override {
    return RowOf(node).List(host_, arguments, list);
  }

  HVC_ReturnStatus Set(const Node &node, Arguments arguments, Arguments input) override {
    return RowOf(node).Set(host_, arguments, input);
  }

 private:
  Host host_;
};

}  // namespace

std::unique_ptr<Source> OpenLinuxHost(const char *root) {
  return OpenLinuxHost(HostFiles(root, Reach::kHost, Writes::kTaken));
}

std::unique_ptr<Source> OpenLinuxHost(HostFiles files) { return std::make_unique<LinuxSource>(std::move(files)); }

HVC_ReturnStatus OpenSavedRoot(const char *root, Writes writes, std::unique_ptr<Source> &source) {
  HostFiles files(root, Reach::kRootFolder, writes);
  const HVC_ReturnStatus status = files.OpenRoot();
  if (status == HVC_OK) source = OpenLinuxHost(std::move(files));
  return status;
}

}  // namespace platkit
