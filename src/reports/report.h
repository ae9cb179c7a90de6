// The description of a report, for the front end, the manual page and the shell completions.
#ifndef KESTREL_REPORTS_REPORT_H
#define KESTREL_REPORTS_REPORT_H

#include <cstdint>

#include "platkit/status.h"
#include "src/table/column_table.h"
#include "src/table/flags.h"
#include "src/table/options.h"

namespace kestrel {

struct GroupFrame;

// The rows of sums below a report's rows.
enum class Sums : uint8_t {
  kNone,
  kTotalRow,
  kTagRows,  // with -t, a row for each tag
};

struct Report {
  const char *name;     // for -r, which ignores case
  const char *summary;  // for the manual and the completions
  OptionSyntax options;
  ColumnTable columns;
  FlagTable filterFlags = {};  // for -i and -e
  bool inBytes = false;        // the default unit is bytes, and -u accepts b
  Sums sums = Sums::kNone;
  bool readsSavedHosts = true;
  const GroupFrame *frame = nullptr;  // null unless the report is per group

  // Runs the report with main's arguments. The option parser continues after the report's name. Returns the status of
  // the reads.
  HVC_ReturnStatus (*run)(const Report &report, int argc, char **argv);
};

}  // namespace kestrel

#endif  // KESTREL_REPORTS_REPORT_H
