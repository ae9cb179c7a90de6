// The banner above a report's table.
#ifndef KESTREL_TABLE_BANNER_H
#define KESTREL_TABLE_BANNER_H

#include <cstdint>

#include "src/table/column_table.h"
#include "src/table/unit.h"

namespace kestrel {

// The current local time as ctime prints it, with its newline. The next call overwrites it.
const char *ReportTimestamp();

// "MB", "KB", or "Page (4K)" for every other unit.
const char *WalkUnitName(ReportUnit unit);

// Prints a banner line by line: the title with the time, a line of `dashes` dashes, then settings, whose labels are
// padded to `labelWidth`.
class Banner {
 public:
  Banner(const char *title, int dashes, int labelWidth = 16);

  void Setting(const char *label, const char *value) const;
  void Setting(const char *label, uint64_t value) const;

  // Prints the last setting and an empty line.
  void SelectedColumns(ColumnTable table) const;

 private:
  int labelWidth_;
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_BANNER_H
