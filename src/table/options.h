// The options that reports share. Each report says which of them it takes.
#ifndef KESTREL_TABLE_OPTIONS_H
#define KESTREL_TABLE_OPTIONS_H

#include <getopt.h>

#include <cstdint>

#include "platkit/status.h"

namespace kestrel {

inline constexpr uint32_t kMostLevels = 12;

struct ReportOptions {
  int64_t startGroup = 0;           // -g
  uint32_t levels = kMostLevels;    // -l
  const char *unit = nullptr;       // -u
  const char *selection = nullptr;  // -s
  char *inclusionFilter = nullptr;  // -i
  char *exclusionFilter = nullptr;  // -e
  bool verbose = false;             // -v
  bool csv = false;                 // -q
  bool tags = false;                // -t
};

// Parses a report's options, going on where the global options ended: the letters of `shortOptions`, in getopt's form,
// and their long names. A later option replaces an earlier one; unknown options and missing arguments are passed over.
// Only the level is checked here, as it is met: HVC_BAD_PARAM.
[[nodiscard]] HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const char *shortOptions,
                                                  ReportOptions &options);

// The same with long options of the report's own; the last is all zeros.
[[nodiscard]] HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const char *shortOptions,
                                                  const option *longOptions, ReportOptions &options);

}  // namespace kestrel

#endif  // KESTREL_TABLE_OPTIONS_H
