// Which of the host's control-group hierarchies the groups are taken from.
#ifndef PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H
#define PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// What the memory files of a hierarchy's groups are called, if it has any.
enum class MemoryFiles : uint8_t { kNone, kV1, kV2 };

// A file system's device: the major number in the upper half, the minor number in the lower.
using DeviceNumber = uint64_t;

struct Hierarchy {
  bool exists = false;
  MemoryFiles memoryFiles = MemoryFiles::kNone;
  std::string top;        // the mount point, below the root folder
  std::string mounted;    // the control group that is seen there: "/" unless the mount shows only a part
  std::string v1Options;  // of a version 1 mount: its controllers, or its name, among other words; else empty

  // The devices of the mounted file systems whose files are memory: tmpfs, and those of huge pages.
  std::vector<DeviceNumber> memoryDevices;
};

// Looks the hierarchies up in the host's mounts. The one that limits memory is preferred, then version 2, then any that
// tells which processes belong together.
Hierarchy FindHierarchy(HostFiles &files);

// The folder of a process' control group, below the hierarchy's top and without a slash at either end. It is empty for
// the top itself, and for a group that the mount does not show or that cannot be told.
std::string FolderOfProcess(HostFiles &files, const Hierarchy &hierarchy, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H
