#include "platkit/linux/linux_source.h"

#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/groups/vm_counter.h"
#include "platkit/linux/kernel/ksm.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/records/buddy_records.h"
#include "platkit/linux/records/client_records.h"
#include "platkit/linux/records/group_records.h"
#include "platkit/linux/records/heap_records.h"
#include "platkit/linux/records/host_memory_records.h"
#include "platkit/linux/records/large_page_pool_records.h"
#include "platkit/linux/records/nvdimm_records.h"
#include "platkit/linux/records/pci_records.h"
#include "platkit/linux/records/pmem_records.h"
#include "platkit/linux/records/processor_records.h"

namespace platkit {
namespace {

class LinuxSource final : public Source {
 public:
  explicit LinuxSource(HostFiles files) : files_(std::move(files)) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override;
  HVC_ReturnStatus Set(const Node &node, Arguments arguments, Arguments input) override;

 private:
  using Recorder = HVC_ReturnStatus (LinuxSource::*)(Arguments, std::span<std::byte>);
  using Lister = HVC_ReturnStatus (LinuxSource::*)(Arguments, ParamList &);
  using Writer = HVC_ReturnStatus (LinuxSource::*)(Arguments, int64_t);

  // How a node is read, and written. A node that is not in the table is one that Linux has no counterpart of.
  struct Reader {
    std::string_view node;
    Recorder record = nullptr;
    Lister list = nullptr;
    Writer write = nullptr;
  };
  static const Reader kReaders[];

  static const Reader &ReaderOf(const Node &node);

  HVC_ReturnStatus PShareStats(Arguments arguments, std::span<std::byte> record);
  HVC_ReturnStatus Processor(Arguments arguments, std::span<std::byte> record);
  HVC_ReturnStatus Nvdimms(Arguments arguments, ParamList &list);
  HVC_ReturnStatus Pci(Arguments arguments, ParamList &list);
  HVC_ReturnStatus PciConfigHeader(Arguments arguments, std::span<std::byte> record);
  HVC_ReturnStatus PciConfigReg(Arguments arguments, std::span<std::byte> record);
  HVC_ReturnStatus SetPciConfigReg(Arguments arguments, int64_t value);

  template <typename Record, HVC_ReturnStatus (GroupRecords::*read)(Group &, Record &)>
  HVC_ReturnStatus OfGroup(Arguments arguments, std::span<std::byte> bytes);

  template <HVC_ReturnStatus (GroupRecords::*list)(Group &, ParamList &)>
  HVC_ReturnStatus ListOfGroup(Arguments arguments, ParamList &instances);

  // What an operation of the part of the source that is in `part` gives for the node's arguments.
  template <auto part, auto read>
  HVC_ReturnStatus Of(Arguments arguments, std::span<std::byte> bytes);

  template <auto part, auto list>
  HVC_ReturnStatus ListOf(Arguments arguments, ParamList &instances);

  HostFiles files_;
  PageSize pageSize_{files_};
  GroupTree tree_{files_};
  PageSharing sharing_{files_, pageSize_};
  GroupRecords groups_{files_, tree_, sharing_};
  PciDevices pci_{files_};
  ClientRecords clients_{files_, tree_, sharing_, pageSize_};

  HostMemory memory_{files_, pageSize_};
  MachineCounter machines_{files_, tree_};
  Buddies buddies_{files_, pageSize_};
  LargePagePools largePagePools_{files_, buddies_};
  Heaps heaps_{files_, pageSize_};
  PersistentMemory persistentMemory_{files_};
};

template <typename Record>
void Store(const Record &record, std::span<std::byte> bytes) {
  std::memcpy(bytes.data(), &record, sizeof record);
}

// An operation that takes the arguments of a node, as integers and texts, and last what it fills.
template <typename>
struct Operation;

template <typename Part, typename... Params>
struct Operation<HVC_ReturnStatus (Part::*)(Params...)> {
  using AllParams = std::tuple<Params...>;
  static constexpr size_t kArguments = sizeof...(Params) - 1;
  using Target = std::remove_reference_t<std::tuple_element_t<kArguments, AllParams>>;

  static HVC_ReturnStatus Call(Part &part, HVC_ReturnStatus (Part::*operation)(Params...), Arguments arguments,
                               Target &target) {
    const auto call = [&]<size_t... i>(std::index_sequence<i...>) {
      return (part.*operation)(As<std::tuple_element_t<i, AllParams>>(arguments[i])..., target);
    };
    return call(std::make_index_sequence<kArguments>());
  }

 private:
  template <typename Param>
  static Param As(const NODAL_Param &argument) {
    if constexpr (std::is_same_v<Param, int64_t>) {
      return argument.integer;
    } else {
      return argument.text();
    }
  }
};

template <typename Record, HVC_ReturnStatus (GroupRecords::*read)(Group &, Record &)>
HVC_ReturnStatus LinuxSource::OfGroup(Arguments arguments, std::span<std::byte> bytes) {
  Group *group = tree_.Find(arguments[0].integer);
  if (group == nullptr) return HVC_NOT_FOUND;
  Record record = {};
  const HVC_ReturnStatus status = (groups_.*read)(*group, record);
  if (status == HVC_OK) Store(record, bytes);
  return status;
}

template <HVC_ReturnStatus (GroupRecords::*list)(Group &, ParamList &)>
HVC_ReturnStatus LinuxSource::ListOfGroup(Arguments arguments, ParamList &instances) {
  Group *group = tree_.Find(arguments[0].integer);
  return group == nullptr ? HVC_NOT_FOUND : (groups_.*list)(*group, instances);
}

template <auto part, auto read>
HVC_ReturnStatus LinuxSource::Of(Arguments arguments, std::span<std::byte> bytes) {
  using Reading = Operation<decltype(read)>;
  typename Reading::Target record = {};
  const HVC_ReturnStatus status = Reading::Call(this->*part, read, arguments, record);
  if (status == HVC_OK) Store(record, bytes);
  return status;
}

template <auto part, auto list>
HVC_ReturnStatus LinuxSource::ListOf(Arguments arguments, ParamList &instances) {
  return Operation<decltype(list)>::Call(this->*part, list, arguments, instances);
}

HVC_ReturnStatus LinuxSource::PShareStats(Arguments, std::span<std::byte> bytes) {
  PShareStatsRecord record = {};
  sharing_.Fill(record);
  Store(record, bytes);
  return HVC_OK;
}

HVC_ReturnStatus LinuxSource::Processor(Arguments arguments, std::span<std::byte> bytes) {
  CpuRecord record = {};
  const HVC_ReturnStatus status = ReadProcessor(files_, arguments[0].integer, record);
  if (status == HVC_OK) Store(record, bytes);
  return status;
}

HVC_ReturnStatus LinuxSource::Nvdimms(Arguments, ParamList &list) { return ListNvdimms(files_, list); }

HVC_ReturnStatus LinuxSource::Pci(Arguments arguments, ParamList &list) { return pci_.List(arguments, list); }

PciAddress FunctionOf(Arguments arguments) {
  return {arguments[0].integer, arguments[1].integer, arguments[2].integer, arguments[3].integer};
}

PciRegister RegisterOf(Arguments arguments) {
  return {.function = FunctionOf(arguments), .size = arguments[4].integer, .address = arguments[5].integer};
}

HVC_ReturnStatus LinuxSource::PciConfigHeader(Arguments arguments, std::span<std::byte> bytes) {
  PciConfigHeaderRecord record = {};
  const HVC_ReturnStatus status = pci_.ReadHeader(FunctionOf(arguments), record);
  if (status == HVC_OK) Store(record, bytes);
  return status;
}

HVC_ReturnStatus LinuxSource::PciConfigReg(Arguments arguments, std::span<std::byte> bytes) {
  PciConfigRegRecord record = {};
  const HVC_ReturnStatus status = pci_.Read(RegisterOf(arguments), record);
  if (status == HVC_OK) Store(record, bytes);
  return status;
}

HVC_ReturnStatus LinuxSource::SetPciConfigReg(Arguments arguments, int64_t value) {
  return pci_.Write(RegisterOf(arguments), value);
}

const LinuxSource::Reader LinuxSource::kReaders[] = {
    {.node = "sched_groups_groupName", .record = &LinuxSource::OfGroup<GroupNameRecord, &GroupRecords::Name>},
    {.node = "sched_groups_groupTag", .record = &LinuxSource::OfGroup<GroupTagRecord, &GroupRecords::Tag>},
    {.node = "sched_groups_parentGroupID",
     .record = &LinuxSource::OfGroup<ParentGroupIDRecord, &GroupRecords::ParentID>},
    {.node = "sched_groups_groupFlags", .record = &LinuxSource::OfGroup<GroupFlagsRecord, &GroupRecords::Flags>},
    {.node = "sched_groups_groupLeaderID",
     .record = &LinuxSource::OfGroup<GroupLeaderIDRecord, &GroupRecords::LeaderID>},
    {.node = "sched_groups_memAllocationInKB", .record = &LinuxSource::OfGroup<GroupAllocRecord, &GroupRecords::Alloc>},
    {.node = "sched_groups_stats_memoryStats",
     .record = &LinuxSource::OfGroup<GroupMemoryStatsRecord, &GroupRecords::MemoryStats>},
    {.node = "sched_groups_stats_capacity",
     .record = &LinuxSource::OfGroup<GroupCapacityRecord, &GroupRecords::Capacity>},
    {.node = "sched_groups_members_groups", .list = &LinuxSource::ListOfGroup<&GroupRecords::Members>},
    {.node = "sched_groups_members_memClients", .list = &LinuxSource::ListOfGroup<&GroupRecords::MemClients>},

    {.node = "sched_memClients_kestrel_vmm", .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::Vmm>},
    {.node = "sched_memClients_kestrel_uw",
     .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::UserWorld>},
    {.node = "sched_memClients_kestrel_guest",
     .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::Guest>},
    {.node = "sched_memClients_kestrel_totalCommon",
     .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::TotalCommon>},
    {.node = "sched_memClients_swapInfo", .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::SwapInfo>},
    {.node = "sched_memClients_memzipInfo", .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::Zip>},
    {.node = "sched_memClients_remapTypes",
     .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::Remap>,
     .list = &LinuxSource::ListOf<&LinuxSource::clients_, &ClientRecords::RemapTypes>},
    {.node = "memory_lpage_vmLPage", .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::LargePages>},
    {.node = "worldGroups_vmmLeaderID",
     .record = &LinuxSource::Of<&LinuxSource::clients_, &ClientRecords::VmmLeaderID>},

    {.node = "memory_pshare_stats", .record = &LinuxSource::PShareStats},
    {.node = "hardware_cpu_cpuList", .record = &LinuxSource::Processor},
    {.node = "hardware_nvd_dimm", .list = &LinuxSource::Nvdimms},
    {.node = "hardware_pci_seg", .list = &LinuxSource::Pci},
    {.node = "hardware_pci_seg_bus", .list = &LinuxSource::Pci},
    {.node = "hardware_pci_seg_bus_slot", .list = &LinuxSource::Pci},
    {.node = "hardware_pci_seg_bus_slot_func", .list = &LinuxSource::Pci},
    {.node = "hardware_pci_seg_bus_slot_func_pciConfigHeader", .record = &LinuxSource::PciConfigHeader},
    {.node = "hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr",
     .record = &LinuxSource::PciConfigReg,
     .write = &LinuxSource::SetPciConfigReg},

    {.node = "memory_comprehensive", .record = &LinuxSource::Of<&LinuxSource::memory_, &HostMemory::Comprehensive>},
    {.node = "sched_globalStats_memory_kestrel",
     .record = &LinuxSource::Of<&LinuxSource::memory_, &HostMemory::Global>},
    {.node = "sched_globalStats_memory_stateTransitions",
     .record = &LinuxSource::Of<&LinuxSource::memory_, &HostMemory::Transitions>},
    {.node = "sched_globalStats_numVMs", .record = &LinuxSource::Of<&LinuxSource::machines_, &MachineCounter::Count>},
    {.node = "system_buddy", .list = &LinuxSource::ListOf<&LinuxSource::buddies_, &Buddies::List>},
    {.node = "system_buddy_comprehensive", .record = &LinuxSource::Of<&LinuxSource::buddies_, &Buddies::Comprehensive>},
    {.node = "memory_memNodes", .record = &LinuxSource::Of<&LinuxSource::buddies_, &Buddies::MemNode>},
    {.node = "memory_memInfo", .record = &LinuxSource::Of<&LinuxSource::buddies_, &Buddies::CountMemNodes>},
    {.node = "memory_lpage_nodeList_vmPools",
     .record = &LinuxSource::Of<&LinuxSource::largePagePools_, &LargePagePools::Stats>,
     .list = &LinuxSource::ListOf<&LinuxSource::largePagePools_, &LargePagePools::List>},
    {.node = "memory_lpage_nodeList_psharePool",
     .record = &LinuxSource::Of<&LinuxSource::largePagePools_, &LargePagePools::PSharePool>},
    {.node = "system_heaps", .list = &LinuxSource::ListOf<&LinuxSource::heaps_, &Heaps::List>},
    {.node = "system_heaps_stats", .record = &LinuxSource::Of<&LinuxSource::heaps_, &Heaps::Stats>},
    {.node = "memory_pmem_volumes",
     .list = &LinuxSource::ListOf<&LinuxSource::persistentMemory_, &PersistentMemory::Volumes>},
    {.node = "memory_pmem_volumes_info",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::VolumeInfo>},
    {.node = "memory_pmem_volumes_regionStore_info",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::StoreInfo>},
    {.node = "memory_pmem_volumes_regionStore_isClean",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::StoreIsClean>},
    {.node = "memory_pmem_volumes_regionStore_regions",
     .list = &LinuxSource::ListOf<&LinuxSource::persistentMemory_, &PersistentMemory::Regions>},
    {.node = "memory_pmem_volumes_regionStore_regions_info",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::RegionInfo>},
    {.node = "memory_pmem_volumes_regionStore_regions_numaAllocInfo",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::RegionNode>,
     .list = &LinuxSource::ListOf<&LinuxSource::persistentMemory_, &PersistentMemory::RegionNodes>},
    {.node = "memory_pmem_volumes_extents",
     .record = &LinuxSource::Of<&LinuxSource::persistentMemory_, &PersistentMemory::Extent>,
     .list = &LinuxSource::ListOf<&LinuxSource::persistentMemory_, &PersistentMemory::Extents>},
};

const LinuxSource::Reader &LinuxSource::ReaderOf(const Node &node) {
  // By identifier, so that a look-up does not depend on how many nodes there are.
  static const std::vector<Reader> readers = [] {
    std::vector<Reader> byID(Nodes().size() + 1);
    for (const Reader &reader : kReaders)
      byID[FindNode(reader.node)->id] = reader;
    return byID;
  }();
  return readers[node.id];
}

HVC_ReturnStatus LinuxSource::Get(const Node &node, Arguments arguments, std::span<std::byte> record) {
  const Recorder reader = ReaderOf(node).record;
  return reader == nullptr ? HVC_NOT_FOUND : (this->*reader)(arguments, record);
}

HVC_ReturnStatus LinuxSource::List(const Node &node, Arguments arguments, ParamList &list) {
  const Lister reader = ReaderOf(node).list;
  return reader == nullptr ? HVC_NOT_FOUND : (this->*reader)(arguments, list);
}

HVC_ReturnStatus LinuxSource::Set(const Node &node, Arguments arguments, Arguments input) {
  const Writer writer = ReaderOf(node).write;
  if (writer == nullptr) return HVC_READ_ONLY;
  if (input.size() != 1 || input[0].kind != ParamKind::kInt) return HVC_NODE_NOT_WRITABLE;
  return (this->*writer)(arguments, input[0].integer);
}

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
