#include "platkit/linux/groups/guest_mapping.h"

#include <algorithm>
#include <string_view>

#include "platkit/linux/kernel/process_maps.h"

namespace platkit {
namespace {

// Two kinds of mappings may be larger than the guest's memory. Device memory that is mapped for the guest is never
// anonymous. Code that QEMU's emulator generates is executable.
bool IsMemory(const Mapping &mapping, std::span<const DeviceNumber> memoryDevices) {
  if (!mapping.isReadable || !mapping.isWritable || mapping.isExecutable) return false;
  if (mapping.name.starts_with("/memfd:tcg-jit")) return false;
  if (mapping.inode == 0) return mapping.name.empty() || mapping.name.starts_with("[anon");
  for (const std::string_view memoryFile : {"/memfd:", "/anon_hugepage", "/dev/zero", "/SYSV"}) {
    if (mapping.name.starts_with(memoryFile)) return true;
  }
  return std::find(memoryDevices.begin(), memoryDevices.end(), mapping.device) != memoryDevices.end();
}

}  // namespace

Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices) {
  ProcessMaps maps(files, pid);
  uint64_t largest = 0, size = 0;
  Mapping last, mapping;
  while (maps.Next(mapping)) {
    if (!IsMemory(mapping, memoryDevices)) continue;
    const bool isAdjacent = mapping.start == last.end && mapping.device == last.device && mapping.inode == last.inode;
    size = (isAdjacent ? size : 0) + (mapping.end - mapping.start);
    largest = std::max(largest, size);
    last = mapping;
  }
  return largest == 0 || maps.status() != HVC_OK ? Figure() : Figure(largest / 1024);
}

}  // namespace platkit
