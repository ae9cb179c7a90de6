// The records of memory clients: of processes, known by their PIDs, and of the monitors of virtual machines, known by
// the identifiers of their groups.
//
// What is read of a process and of its control group is kept with their groups, as for the records of groups.
#ifndef PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H
#define PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H

#include <optional>
#include <string_view>
#include <unordered_set>

#include "platkit/linux/groups/group_tree.h"
#include "platkit/linux/kernel/ksm.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/kernel/swaps.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// Records come filled with zeros, which stand for what Linux has no counterpart of. HVC_NOT_FOUND throughout for a
// client that is not of the kind that has the record.
class ClientRecords {
 public:
  ClientRecords(HostFiles &files, GroupTree &tree, PageSharing &sharing, PageSize &pageSize)
      : files_(files), tree_(tree), sharing_(sharing), pageSize_(pageSize) {}

  // Of a machine's process.
  [[nodiscard]] HVC_ReturnStatus Vmm(int64_t client, VmmMemoryStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Guest(int64_t client, GuestStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus Zip(int64_t client, ZipStatsRecord &record);
  [[nodiscard]] HVC_ReturnStatus VmmLeaderID(int64_t client, VmmLeaderIDRecord &record);

  // Of a machine's monitor.
  [[nodiscard]] HVC_ReturnStatus SwapInfo(int64_t client, VmSwapInfoRecord &record);
  [[nodiscard]] HVC_ReturnStatus LargePages(int64_t client, LPageStatsRecord &record);

  // Of any process.
  [[nodiscard]] HVC_ReturnStatus UserWorld(int64_t client, UwMemoryStatsRecord &record);

  // Of any client.
  [[nodiscard]] HVC_ReturnStatus TotalCommon(int64_t client, TotalCommonRecord &record);
  [[nodiscard]] HVC_ReturnStatus RemapTypes(int64_t client, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Remap(int64_t client, std::string_view type, RemapStatsRecord &record);

 private:
  // A process, and the control group that a machine has of its own; else null.
  struct Owner {
    Group *process;
    Group *group;
  };

  Group *FindProcess(int64_t client);
  Group *FindMachine(int64_t client);
  Group *FindMachineOfMonitor(int64_t client);
  Owner OwnerOf(Group &process, GivenRecord record);
  const GroupStat &StatOf(const Owner &owner);
  Figure PagesInKB(Figure pages);
  Figure Swapped(const Owner &owner, const ProcessStatus &status);
  const SwapSpace &HostSwap(int64_t client);
  Figure RemappedPages(const Owner &owner, size_t type);

  HostFiles &files_;
  GroupTree &tree_;
  PageSharing &sharing_;
  PageSize &pageSize_;
  std::optional<SwapSpace> swapSpace_;
  std::unordered_set<int64_t> swapSpaceGiven_;  // to these clients, from what is kept
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_CLIENT_RECORDS_H
