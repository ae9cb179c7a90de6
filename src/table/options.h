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

// The long options, for a report's table; the table ends with an option of zeros.
inline constexpr option kOptionGid = {"gid", required_argument, nullptr, 'g'};
inline constexpr option kOptionLevel = {"level", required_argument, nullptr, 'l'};
inline constexpr option kOptionUnit = {"unit", required_argument, nullptr, 'u'};
inline constexpr option kOptionCSelect = {"cSelect", required_argument, nullptr, 's'};
inline constexpr option kOptionIFilter = {"iFilter", required_argument, nullptr, 'i'};
inline constexpr option kOptionEFilter = {"eFilter", required_argument, nullptr, 'e'};
inline constexpr option kOptionVerbose = {"verbose", no_argument, nullptr, 'v'};
inline constexpr option kOptionCsvMode = {"csvMode", no_argument, nullptr, 'q'};
inline constexpr option kOptionTags = {"tags", no_argument, nullptr, 't'};
inline constexpr option kOptionsEnd = {nullptr, 0, nullptr, 0};

// Parses a report's options, going on where the global options ended. A later option replaces an earlier one; unknown
// options and missing arguments are passed over. Only the level is checked here, as it is met: HVC_BAD_PARAM.
[[nodiscard]] HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const char *shortOptions,
                                                  const option *longOptions, ReportOptions &options);

}  // namespace kestrel

#endif  // KESTREL_TABLE_OPTIONS_H
