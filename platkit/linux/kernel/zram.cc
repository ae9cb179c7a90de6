#include "platkit/linux/kernel/zram.h"

#include <string_view>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

// The file contains orig_data_size, compr_data_size, mem_used_total and more figures, in bytes.
Figure ReadMemory(HostFiles &files, uint64_t device) {
  char buffer[256];
  std::string_view text;
  const HostPath path("sys/block/zram", static_cast<int64_t>(device), "/mm_stat");
  if (files.ReadShort(path, buffer, text) != HVC_OK) return Figure::Unreadable();
  TextScanner scanner(text);
  scanner.TakeWord();
  scanner.TakeWord();
  return ParseFigure(scanner.TakeWord()) / 1024;
}

}  // namespace

Figure ReadZramMemory(HostFiles &files, std::span<const uint64_t> devices) {
  Figure sum(0);
  for (const uint64_t device : devices)
    sum = sum + ReadMemory(files, device);
  return sum;
}

}  // namespace platkit
