// /proc/PID/maps: the memory mappings of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H
#define PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H

#include <cstdint>
#include <string_view>

#include "platkit/linux/files/line_reader.h"
#include "platkit/linux/kernel/cgroup_mount.h"

namespace platkit {

struct Mapping {
  uint64_t start = 0, end = 0;  // addresses, `end` exclusive
  bool isWritable = false, isExecutable = false, isReadable = false;
  DeviceNumber device = 0;  // file system of the mapped file
  uint64_t inode = 0;       // inode of the mapped file; 0: none
  std::string_view name;    // path, or a name such as "[heap]"; may be empty. Valid until the next mapping is read.
};

class ProcessMaps {
 public:
  ProcessMaps(HostFiles &files, int64_t pid) : lines_(files, HostPath("proc/", pid, "/maps")) {}

  // Reads the next mapping. Skips malformed lines. Returns false at the end and on failure; status() tells them apart.
  bool Next(Mapping &mapping);

  HVC_ReturnStatus status() const { return lines_.status(); }

 private:
  LineReader lines_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_MAPS_H
