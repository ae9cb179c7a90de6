#include "platkit/linux/kernel/process_stat.h"

#include <unistd.h>

#include <algorithm>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {

// "pid (name) state ...": the name may contain anything, so fields are counted from the last ')', which ends field 2.
Figure ReadStartTicks(HostFiles &files, int64_t pid) {
  constexpr int kFieldsBetween = 20;
  char buffer[1024];
  std::string_view text;
  if (files.Read(HostPath("proc/", pid, "/stat"), buffer, text) != HVC_OK) return Figure::Unreadable();
  TextScanner scanner(text.substr(std::min(text.rfind(')'), text.size())));
  for (int i = 0; i < kFieldsBetween; ++i)
    scanner.TakeUntil(' ');
  return ParseFigure(scanner.TakeUntil(' '));
}

uint64_t ReadLatestStart(HostFiles &files, int64_t pid) {
  constexpr uint64_t kNanoseconds = 1'000'000'000;
  const Figure ticks = ReadStartTicks(files, pid) + Figure(1);
  return (ticks * (kNanoseconds / static_cast<uint64_t>(sysconf(_SC_CLK_TCK)))).Cell(UINT64_MAX);
}

}  // namespace platkit
