// What a report is, to the front end that runs it, and to the manual and the shells' completions, which describe it.
#ifndef KESTREL_REPORTS_REPORT_H
#define KESTREL_REPORTS_REPORT_H

#include <cstdint>

#include "platkit/status.h"
#include "src/table/column_table.h"
#include "src/table/flags.h"
#include "src/table/options.h"

namespace kestrel {

struct GroupFrame;

// What stands below a report's rows.
enum class Sums : uint8_t {
  kNone,
  kTotalRow,
  kTagRows,  // with -t, a row for each tag
};

struct Report {
  const char *name;     // what -r takes, case ignored
  const char *summary;  // what it shows
  OptionSyntax options;
  ColumnTable columns;
  FlagTable filterFlags = {};  // what -i and -e name
  bool inBytes = false;        // in bytes, unless -u asks for something else
  Sums sums = Sums::kNone;
  bool readsSavedHosts = true;
  const GroupFrame *frame = nullptr;  // of a per-group report

  // Gets main's arguments, with option parsing left where the report's name stood, and returns the status of what it
  // gathered.
  HVC_ReturnStatus (*run)(const Report &report, int argc, char **argv);
};

}  // namespace kestrel

#endif  // KESTREL_REPORTS_REPORT_H
