// The banner above a report's table.
#ifndef KESTREL_TABLE_BANNER_H
#define KESTREL_TABLE_BANNER_H

#include <cstdint>

#include "src/table/column_table.h"
#include "src/table/unit.h"

namespace kestrel {

// The current local time in ctime's form, line end included; the next call overwrites it.
const char *ReportTimestamp();

// "MB" and "KB"; every other unit is shown as pages.
const char *WalkUnitName(ReportUnit unit);

// Prints a banner line by line: the title with the time over a rule of `dashes` dashes, then settings, their labels
// padded to `labelWidth`.
class Banner {
 public:
  Banner(const char *title, int dashes, int labelWidth = 16);

  void Setting(const char *label, const char *value) const;
  void Setting(const char *label, uint64_t value) const;

  // The last setting, with an empty line behind it.
  void SelectedColumns(ColumnTable table) const;

 private:
  int labelWidth_;
};

}  // namespace kestrel

#endif  // KESTREL_TABLE_BANNER_H
