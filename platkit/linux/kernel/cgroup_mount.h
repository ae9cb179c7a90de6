// /proc/self/mountinfo and /proc/PID/cgroup: the control-group hierarchy to use, and the control group of a process.
#ifndef PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H
#define PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// The version of a hierarchy's memory files, if it has any.
enum class CgroupVersion : uint8_t { kNone, kV1, kV2 };

// The device of a file system: major number in the upper 32 bits, minor number in the lower.
using DeviceNumber = uint64_t;

enum class FileSystem : uint8_t { kTmpfs, kHugetlbfs, kOther };

struct CgroupMount {
  bool exists = false;
  CgroupVersion memoryFiles = CgroupVersion::kNone;
  std::string top;        // the mount point, relative to the root folder
  std::string mounted;    // the control group that is visible there: "/" unless only a part is mounted
  std::string v1Options;  // for version 1, its controllers or its name, and other mount options; else empty

  // The devices of mounted file systems whose files are memory, in ascending order: tmpfs and hugetlbfs.
  std::vector<DeviceNumber> memoryDevices;

  // The mount points of these file systems, and all mount points below them, by absolute path.
  std::map<std::string, FileSystem, std::less<>> memoryFolders;
};

// The type of the file system that contains a file, determined from the file's path. Links in the path are not
// followed.
FileSystem FileSystemOf(const CgroupMount &mount, std::string_view path);

// Finds the hierarchy to use: preferably version 1 with the memory controller, then version 2, then any other.
CgroupMount FindCgroupMount(HostFiles &files);

// The path of a visible control group from the top of the hierarchy. `folder` is relative to the root folder.
std::string FullCgroupOfFolder(const CgroupMount &mount, std::string_view folder);

// The folder of a process's control group, relative to the mount's top and without a slash at either end. Empty for the
// top itself, and for a group that is invisible or unknown.
std::string ReadCgroupOfProcess(HostFiles &files, const CgroupMount &mount, int64_t pid);

// The control group of a process in the same hierarchy, as a path from the top of the hierarchy. The path starts with a
// slash; it is empty if the group is unknown.
std::string ReadFullCgroupOfProcess(HostFiles &files, const CgroupMount &mount, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_CGROUP_MOUNT_H
