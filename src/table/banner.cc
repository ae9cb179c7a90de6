#include "src/table/banner.h"

#include <cinttypes>
#include <cstdio>
#include <ctime>

#include "src/table/output.h"

namespace kestrel {

const char *ReportTimestamp() {
  static char text[26];
  const std::time_t now = std::time(nullptr);
  // ctime_r fails for years of more than four digits.
  return ctime_r(&now, text) == nullptr ? "(no time)\n" : text;
}

const char *WalkUnitName(ReportUnit unit) {
  return UnitName(unit == ReportUnit::kMB || unit == ReportUnit::kKB ? unit : ReportUnit::kPage);
}

Banner::Banner(const char *title, int dashes, int labelWidth) : labelWidth_(labelWidth) {
  std::printf("\n %s: %s", title, ReportTimestamp());
  std::putchar(' ');
  PrintDashes(static_cast<size_t>(dashes));
  std::putchar('\n');
}

void Banner::Setting(const char *label, const char *value) const {
  std::printf("   %-*s : %s\n", labelWidth_, label, value);
}

void Banner::Setting(const char *label, uint64_t value) const {
  std::printf("   %-*s : %" PRIu64 "\n", labelWidth_, label, value);
}

void Banner::SelectedColumns(ColumnTable table) const {
  Setting("Selected columns", ColumnsDescribeSelection(table).Text());
  std::putchar('\n');
}

}  // namespace kestrel
