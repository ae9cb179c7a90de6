#include "platkit/linux/kernel/process_stat.h"

#include <unistd.h>

#include <algorithm>

#include "platkit/linux/files/text_scanner.h"

namespace platkit {

// "pid (name) state ...": the name may contain anything, so fields are counted from the last ')', which ends field 2.
uint64_t ReadLatestStart(HostFiles &files, int64_t pid) {
  constexpr int kFieldsBetween = 20;
  constexpr uint64_t kNanoseconds = 1'000'000'000;
  char buffer[1024];
  std::string_view text;
  if (files.Read(HostPath("proc/", pid, "/stat"), buffer, text) != HVC_OK) return UINT64_MAX;
  TextScanner scanner(text.substr(std::min(text.rfind(')'), text.size())));
  for (int i = 0; i < kFieldsBetween; ++i)
    scanner.TakeUntil(' ');
  uint64_t ticks = 0;
  if (!ParseNumber(scanner.TakeUntil(' '), ticks)) return UINT64_MAX;
  return (ticks + 1) * (kNanoseconds / static_cast<uint64_t>(sysconf(_SC_CLK_TCK)));
}

}  // namespace platkit
