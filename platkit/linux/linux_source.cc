#include "platkit/linux/linux_source.h"

#include <cstring>
#include <utility>
#include <vector>

#include "platkit/linux/group_records.h"
#include "platkit/linux/group_tree.h"
#include "platkit/linux/page_sharing.h"

namespace platkit {
namespace {

class LinuxSource final : public Source {
 public:
  explicit LinuxSource(HostFiles files) : files_(std::move(files)) {}

  HVC_ReturnStatus Get(const Node &node, Arguments arguments, std::span<std::byte> record) override;
  HVC_ReturnStatus List(const Node &node, Arguments arguments, ParamList &list) override;

 private:
  using Recorder = HVC_ReturnStatus (LinuxSource::*)(Arguments, std::span<std::byte>);
  using Lister = HVC_ReturnStatus (LinuxSource::*)(Arguments, ParamList &);

  // How a node is read. A node that is not in the table is one that Linux has no counterpart of.
  struct Reader {
    std::string_view node;
    Recorder record = nullptr;
    Lister list = nullptr;
  };
  static const Reader kReaders[];

  static const Reader &ReaderOf(const Node &node);

  HVC_ReturnStatus PShareStats(Arguments arguments, std::span<std::byte> record);

  template <typename Record, HVC_ReturnStatus (GroupRecords::*read)(Group &, Record &)>
  HVC_ReturnStatus OfGroup(Arguments arguments, std::span<std::byte> bytes);

  template <HVC_ReturnStatus (GroupRecords::*list)(Group &, ParamList &)>
  HVC_ReturnStatus ListOfGroup(Arguments arguments, ParamList &instances);

  HostFiles files_;
  GroupTree tree_{files_};
  PageSharing sharing_{files_};
  GroupRecords groups_{files_, tree_, sharing_};
};

template <typename Record>
void Store(const Record &record, std::span<std::byte> bytes) {
  std::memcpy(bytes.data(), &record, sizeof record);
}

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

HVC_ReturnStatus LinuxSource::PShareStats(Arguments, std::span<std::byte> bytes) {
  PShareStatsRecord record = {};
  sharing_.Fill(record);
  Store(record, bytes);
  return HVC_OK;
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
    {.node = "memory_pshare_stats", .record = &LinuxSource::PShareStats},
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

}  // namespace

std::unique_ptr<Source> OpenLinuxHost(const char *root) { return OpenLinuxHost(HostFiles(root, Reach::kHost)); }

std::unique_ptr<Source> OpenLinuxHost(HostFiles files) { return std::make_unique<LinuxSource>(std::move(files)); }

HVC_ReturnStatus OpenSavedRoot(const char *root, std::unique_ptr<Source> &source) {
  HostFiles files(root, Reach::kRootFolder);
  const HVC_ReturnStatus status = files.OpenRoot();
  if (status == HVC_OK) source = OpenLinuxHost(std::move(files));
  return status;
}

}  // namespace platkit
