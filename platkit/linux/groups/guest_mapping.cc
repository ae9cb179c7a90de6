#include "platkit/linux/groups/guest_mapping.h"

#include <algorithm>
#include <string_view>

#include "platkit/linux/kernel/process_maps.h"

namespace platkit {
namespace {

// The size of a guest's memory is a multiple of kAlignment, and QEMU aligns the start of anonymous memory to it. Memory
// devices have at least kSmallestBlock, which is the unit in which guests hot-plug memory.
constexpr uint64_t kAlignment = uint64_t{2} << 20;
constexpr uint64_t kSmallestBlock = uint64_t{128} << 20;

// Two kinds of mappings may be larger than the guest's memory and are excluded. Device memory that is mapped for the
// guest is never anonymous. Code that QEMU's emulator generates is executable or in /memfd:tcg-jit.
bool IsMemory(const Mapping &mapping, std::span<const DeviceNumber> memoryDevices) {
  if (!mapping.isReadable || !mapping.isWritable || mapping.isExecutable) return false;
  if (mapping.name.starts_with("/memfd:tcg-jit")) return false;
  if (mapping.inode == 0) return mapping.name.empty() || mapping.name.starts_with("[anon");
  for (const std::string_view memoryFile : {"/memfd:", "/anon_hugepage", "/dev/zero", "/SYSV"}) {
    if (mapping.name.starts_with(memoryFile)) return true;
  }
  return std::ranges::binary_search(memoryDevices, mapping.device);
}

bool IsAligned(uint64_t number) { return number % kAlignment == 0; }

bool IsBlock(const Mapping &memory) {
  const uint64_t size = memory.end - memory.start;
  const bool isFile = memory.inode != 0;
  return (isFile || IsAligned(memory.start)) && IsAligned(size) && size >= kSmallestBlock;
}

bool IsContinuedBy(const Mapping &memory, const Mapping &next) {
  return next.start == memory.end && next.device == memory.device && next.inode == memory.inode;
}

Figure FigureOf(uint64_t bytes) { return bytes == 0 ? Figure() : Figure(bytes / 1024); }

}  // namespace

GuestMappings ReadGuestMappings(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices) {
  ProcessMaps maps(files, pid);
  uint64_t largest = 0, blocks = 0;
  Mapping memory, next;
  const auto count = [&] {
    largest = std::max(largest, memory.end - memory.start);
    if (IsBlock(memory)) blocks += memory.end - memory.start;
  };
  while (maps.Next(next)) {
    if (!IsMemory(next, memoryDevices)) continue;
    if (IsContinuedBy(memory, next)) {
      memory.end = next.end;
    } else {
      count();
      memory = next;
    }
  }
  count();
  if (maps.status() != HVC_OK) return {};
  return {.largest = FigureOf(largest), .blocks = FigureOf(blocks)};
}

}  // namespace platkit
