// The options that reports share. Each report declares which of them it accepts.
#ifndef KESTREL_TABLE_OPTIONS_H
#define KESTREL_TABLE_OPTIONS_H

#include <getopt.h>

#include <cstdint>
#include <cstring>

#include "platkit/status.h"

namespace kestrel {

inline constexpr uint32_t kMaxLevels = 12;

struct ReportOptions {
  int64_t startGroup = 0;           // -g
  uint32_t levels = kMaxLevels;     // -l
  const char *unit = nullptr;       // -u
  const char *selection = nullptr;  // -s
  char *inclusionFilter = nullptr;  // -i
  char *exclusionFilter = nullptr;  // -e
  bool verbose = false;             // -v
  bool csv = false;                 // -q
  bool tags = false;                // -t
};

// The long names of the options, except for reports with their own long names. The last entry is all zeros.
inline constexpr option kSharedLongNames[] = {
    {"gid", required_argument, nullptr, 'g'},     {"level", required_argument, nullptr, 'l'},
    {"unit", required_argument, nullptr, 'u'},    {"iFilter", required_argument, nullptr, 'i'},
    {"eFilter", required_argument, nullptr, 'e'}, {"cSelect", required_argument, nullptr, 's'},
    {"verbose", no_argument, nullptr, 'v'},       {"csvMode", no_argument, nullptr, 'q'},
    {"tags", no_argument, nullptr, 't'},          {nullptr, 0, nullptr, 0},
};

// The options of a report in the form of getopt: letters, and optional long names that replace the shared ones.
struct OptionSyntax {
  const char *letters;
  const option *ownLongNames = nullptr;

  bool Takes(char letter) const { return std::strchr(letters, letter) != nullptr; }
};

// Parses a report's options, starting where the parser of the global options stopped. A later option replaces an
// earlier one. Unknown options and missing arguments are ignored. For an invalid level it warns and returns
// HVC_BAD_PARAM. It checks no other values.
[[nodiscard]] HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const OptionSyntax &syntax,
                                                  ReportOptions &options);

}  // namespace kestrel

#endif  // KESTREL_TABLE_OPTIONS_H
