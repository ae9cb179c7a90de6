#include "platkit/linux/kernel/process_maps.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace platkit {
namespace {

struct Mapping {
  uint64_t start = 0, end = 0;
  bool isData = false;  // written, and never run
  DeviceNumber device = 0;
  uint64_t inode = 0;
  std::string_view name;
};

// Takes a number off `text`, and the separator behind it.
bool TakeNumber(std::string_view &text, int base, char separator, uint64_t &number) {
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  if (error != std::errc() || stop == end || *stop != separator) return false;
  text.remove_prefix(static_cast<size_t>(stop - text.data()) + 1);
  return true;
}

// start-end permissions offset major:minor inode [name], with blanks before the name and perhaps none without one.
bool ParseMapping(std::string_view line, Mapping &mapping) {
  uint64_t offset = 0, major = 0, minor = 0;
  if (!TakeNumber(line, 16, '-', mapping.start) || !TakeNumber(line, 16, ' ', mapping.end)) return false;
  if (line.size() < 5 || line[4] != ' ') return false;
  mapping.isData = line[0] == 'r' && line[1] == 'w' && line[2] == '-';
  line.remove_prefix(5);
  if (!TakeNumber(line, 16, ' ', offset) || !TakeNumber(line, 16, ':', major) || !TakeNumber(line, 16, ' ', minor)) {
    return false;
  }
  mapping.device = major << 32 | minor;
  const auto [stop, error] = std::from_chars(line.data(), line.data() + line.size(), mapping.inode);
  if (error != std::errc()) return false;
  line.remove_prefix(static_cast<size_t>(stop - line.data()));
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  mapping.name = line;
  return mapping.start < mapping.end;
}

// Two kinds of mappings may be larger than the guest's memory: devices' memory that is mapped for the guest, which is
// never anonymous, and the code that an emulator makes of the guest's, which is run.
bool IsMemory(const Mapping &mapping, std::span<const DeviceNumber> memoryDevices) {
  if (!mapping.isData || mapping.name.starts_with("/memfd:tcg-jit")) return false;
  if (mapping.inode == 0) return mapping.name.empty() || mapping.name.starts_with("[anon");
  for (const std::string_view memoryFile : {"/memfd:", "/anon_hugepage", "/dev/zero", "/SYSV"}) {
    if (mapping.name.starts_with(memoryFile)) return true;
  }
  return std::find(memoryDevices.begin(), memoryDevices.end(), mapping.device) != memoryDevices.end();
}

}  // namespace

Figure LargestMemoryMapping(HostFiles &files, int64_t pid, std::span<const DeviceNumber> memoryDevices) {
  LineReader lines(files, HostPath("proc/", pid, "/maps"));
  uint64_t largest = 0, size = 0;
  Mapping last, mapping;
  for (std::string_view line; lines.Next(line);) {
    if (!ParseMapping(line, mapping) || !IsMemory(mapping, memoryDevices)) continue;
    const bool goesOn = mapping.start == last.end && mapping.device == last.device && mapping.inode == last.inode;
    size = (goesOn ? size : 0) + (mapping.end - mapping.start);
    largest = std::max(largest, size);
    last = mapping;
    last.name = {};  // ends with its line
  }
  return largest == 0 || lines.status() != HVC_OK ? Figure() : Figure(largest / 1024);
}

}  // namespace platkit
