// The scheduler groups of a Linux host: its control groups and processes under the identifiers that the tree of nodes
// knows them by.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_TREE_H
#define PLATKIT_LINUX_GROUPS_GROUP_TREE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/groups/vm_detector.h"
#include "platkit/linux/kernel/cgroup_files.h"
#include "platkit/linux/kernel/cgroup_mount.h"
#include "platkit/linux/kernel/ksm.h"
#include "platkit/linux/kernel/process_status.h"
#include "platkit/param_list.h"

namespace platkit {

enum class GroupKind : uint8_t { kHost, kKernel, kControlGroup, kProcess, kVm, kVmm };

// Identifiers keep their meaning when they are cut to 32 bits. Those of processes, which are their PIDs, end below the
// kernel's.
inline constexpr int64_t kHostGroup = 0;
inline constexpr int64_t kKernelGroup = 5'000'000;
inline constexpr int64_t kFirstControlGroup = 10'000'000;
inline constexpr int64_t kMostControlGroups = 10'000'000;
inline constexpr int64_t kFirstVmmGroup = 20'000'000;

// The records that are made from figures, as bits of Group::recordsGiven of the groups that keep these.
enum GivenRecord : uint32_t {
  kAllocRecord = 1 << 0,
  kCapacityRecord = 1 << 1,
  kStatsRecord = 1 << 2,
  kVmmStatsRecord = 1 << 3,
  kKernelStatsRecord = 1 << 4,
  kVmAllocRecord = 1 << 5,
  kVmmAllocRecord = 1 << 6,
  kVmStatsRecord = 1 << 7,
  // Of memory clients.
  kVmmRecord = 1 << 8,
  kSwapRecord = 1 << 9,
  kUserWorldRecord = 1 << 10,
  kZipRecord = 1 << 11,
  kLargePageRecord = 1 << 12,
  kRemapList = 1 << 13,
  kFirstRemapRecord = 1 << 14,  // one bit for each type
};

struct Group {
  GroupKind kind;
  int64_t id;
  int64_t parentID;
  std::string name;                    // as the kernel writes it
  std::string folder = {};             // of a control group, and of the host if it has control groups
  std::vector<int64_t> children = {};  // those known
  bool foldersKnown = false;           // all control groups among them are
  bool processesKnown = false;         // all processes are

  // What was read of the group and is kept for the nodes that share it; null until a node needs it.
  std::unique_ptr<ControlGroupFiles> files = nullptr;
  std::unique_ptr<ProcessStatus> status = nullptr;
  std::optional<ProcessSharing> sharing = {};
  std::optional<Figure> numaMoved = {};
  uint32_t recordsGiven = 0;

  ProcessIdentity identity = {};  // of a process, and of a machine's
  bool vmSought = false;
  bool mappingsSought = false;
  Figure guestMemory = {};  // in KB; absent if neither the machine's command line nor its mappings tell
  Figure mostMemory = {};   // in KB; absent if the command line does not tell
  std::optional<bool> hasOwnControlGroup = {};

  // Forgets what was read for the records, if this one was given from it already.
  void Renew(GivenRecord record) {
    if ((recordsGiven & record) != 0) Drop();
    recordsGiven |= record;
  }
  void Drop();
};

// Listing a group forgets all that was known and kept of what is below it. Groups are otherwise looked up in what
// earlier listings showed, and looked for on the host if no listing showed them.
class GroupTree {
 public:
  explicit GroupTree(HostFiles &files);

  // The group of an identifier, or null if the host has none. Good until a group above it is listed.
  Group *Find(int64_t id);

  // The same among those known already.
  Group *FindKnown(int64_t id);

  // Appends the group's members: for the host, the kernel group; then control groups by name; then processes by PID.
  [[nodiscard]] HVC_ReturnStatus List(Group &group, ParamList &list);

  // Learns the control groups right below a group, unless they are known.
  [[nodiscard]] HVC_ReturnStatus LearnFolders(Group &group);

  // A process turns out to be a virtual machine only when it is looked at closely, which this does once.
  void SeekVm(Group &group);

  // What was kept of a group, or is read. A status is null if the process is gone.
  const ProcessStatus *StatusOf(Group &group);

  // HVC_NOT_FOUND if the process, or the machine's, is gone: then what was read of it may be of another one.
  [[nodiscard]] HVC_ReturnStatus Confirm(const Group &process);
  Figure Amount(Group &group, GroupAmount amount);
  const GroupStat &StatOf(Group &group);

  // The memory of a machine's guest, in KB. Absent: nothing tells.
  Figure GuestMemory(Group &vm);

  // The control group whose figures are those of one process, because no other process is in it or below it; else null.
  Group *OwnControlGroup(Group &process);

  const Hierarchy &hierarchy();

 private:
  Group *FindProcess(int64_t pid);
  Group *FindControlGroup(int64_t id);
  Group *FindFolder(std::string_view folder);
  HVC_ReturnStatus ListContainer(Group &group, ParamList &list);
  HVC_ReturnStatus ReadFolders(Group &group);
  std::vector<int64_t> ReadPids(const Group &group);
  void AddProcess(Group &parent, int64_t pid, ProcessStatus &&status);
  int64_t FreeControlGroupID(uint64_t inode) const;
  void ForgetChildren(Group &group);
  Group *ParentOf(std::string_view folder);
  bool IsAlone(const Group &process, const Group &group);
  Group &Host() { return groups_.at(kHostGroup); }

  HostFiles &files_;
  VirtualMachineFinder vmFinder_;
  std::optional<Hierarchy> hierarchy_;
  std::unordered_map<int64_t, Group> groups_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_TREE_H
