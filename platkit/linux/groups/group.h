// A scheduler group of a Linux host: the host, its kernel, a control group, a process, a VM or a VM's monitor.
#ifndef PLATKIT_LINUX_GROUPS_GROUP_H
#define PLATKIT_LINUX_GROUPS_GROUP_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/groups/guest_backing.h"
#include "platkit/linux/groups/guest_mapping.h"
#include "platkit/linux/kernel/cgroup_files.h"
#include "platkit/linux/kernel/ksm.h"
#include "platkit/linux/kernel/kvm_debugfs.h"
#include "platkit/linux/kernel/libvirt_status.h"
#include "platkit/linux/kernel/pressure.h"
#include "platkit/linux/kernel/process_status.h"
#include "platkit/linux/kernel/qemu_cmdline.h"

namespace platkit {

enum class GroupKind : uint8_t { kHost, kKernel, kControlGroup, kProcess, kVm, kVmm };

// Identifiers. The identifier of a process or a VM is its PID, which is below kKernelGroup. The identifier of a VM's
// monitor (VMM) is kFirstVmmGroup plus the PID. All fit 31 bits.
inline constexpr int64_t kHostGroup = 0;
inline constexpr int64_t kKernelGroup = 5'000'000;
inline constexpr int64_t kFirstControlGroup = 10'000'000;
inline constexpr int64_t kMaxControlGroups = 10'000'000;
inline constexpr int64_t kFirstVmmGroup = 20'000'000;
static_assert(kMaxPid < kKernelGroup);

// Figures read from the files of a control group.
struct CgroupReadings {
  std::array<Fresh<Figure>, kCgroupAmounts> amounts;
  Fresh<CgroupStat> stat;
  Fresh<Figure> limitHits;
  Fresh<MemoryPressure> pressure;
  // On a sampled host: the last value of the group's memory, and when the value was first seen.
  Figure current;
  Clock::Time changedAt;
};

// Figures read from the files of a process or a VM.
struct ProcessReadings {
  Fresh<std::optional<ProcessStatus>> status;  // nullopt: the process has ended
  Fresh<ProcessKsm> ksm;
  Fresh<Figure> numaMovedPages;
};

// Facts about a VM.
struct VmFacts {
  QemuOptions options;
  GuestBacking backing = GuestBacking::kAnonymous;
  Fresh<GuestMappings> mappings;
  Fresh<KvmPages> kvmPages;
  Fresh<int64_t> ownControlGroup;  // its identifier; kHostGroup: none
  Fresh<LibvirtStatus> libvirt;
};

struct Group {
  // Identity and kind.
  GroupKind kind;
  int64_t id;
  std::string name;  // as the kernel writes it; for a VM, the guest's name
  // The folder of a control group, relative to the root folder, and its inode number.
  std::string folder = {};
  uint64_t inode = 0;
  // Set only for a process or a VM.
  ProcessIdentity identity = {};
  uint64_t confirmedReads = 0;  // HostFiles::reads() at the last check that it is this process
  uint64_t threads = 0;
  ProcessUser user = {};

  // The group's place in the tree. `controlGroups` has the control groups right below the group, in the order of their
  // names. `processes` has its processes, in the order of their PIDs. Both contain the members found so far, and are
  // complete while `controlGroupsRead` and `processesRead` are fresh.
  int64_t parentID;
  std::vector<int64_t> controlGroups = {};
  std::vector<int64_t> processes = {};
  Fresh<HVC_ReturnStatus> controlGroupsRead = {};
  Fresh<HVC_ReturnStatus> processesRead = {};

  // Null until the first value of that kind is read.
  std::unique_ptr<CgroupReadings> cgroup = nullptr;
  std::unique_ptr<ProcessReadings> process = nullptr;
  std::unique_ptr<VmFacts> vm = nullptr;
  bool isKindKnown = false;  // for a process: it was checked whether it runs a VM
  bool mayBeVm = false;      // the check was not completed; see VmDetector
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_GROUP_H
