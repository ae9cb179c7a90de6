#include "src/table/options.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "platkit/warning.h"

namespace kestrel {
namespace {

constexpr option kLongOptions[] = {
    {"gid", required_argument, nullptr, 'g'},     {"level", required_argument, nullptr, 'l'},
    {"unit", required_argument, nullptr, 'u'},    {"iFilter", required_argument, nullptr, 'i'},
    {"eFilter", required_argument, nullptr, 'e'}, {"cSelect", required_argument, nullptr, 's'},
    {"verbose", no_argument, nullptr, 'v'},       {"csvMode", no_argument, nullptr, 'q'},
    {"tags", no_argument, nullptr, 't'},
};

HVC_ReturnStatus ParseLevel(const char *text, uint32_t &levels) {
  const auto count = static_cast<uint32_t>(std::strtol(text, nullptr, 10));
  if (count == 0) {
    Warning("Invalid level %s, must be > 0\n", text);
    return HVC_BAD_PARAM;
  }
  levels = count;
  if (count > kMostLevels) {
    // "reseting" has been in people's scripts for as long as the option.
    Warning("Specified level %s too high, reseting to %d\n", text, static_cast<int>(kMostLevels));
    levels = kMostLevels;
  }
  return HVC_OK;
}

// Group IDs are kept in 32 bits with their sign.
int64_t ParseGroup(const char *text) { return static_cast<int32_t>(std::strtol(text, nullptr, 10)); }

}  // namespace

HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const char *shortOptions, ReportOptions &options) {
  option longOptions[std::size(kLongOptions) + 1] = {};
  std::copy_if(std::begin(kLongOptions), std::end(kLongOptions), longOptions,
               [&](const option &o) { return std::strchr(shortOptions, o.val) != nullptr; });
  return ParseReportOptions(argc, argv, shortOptions, longOptions, options);
}

HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const char *shortOptions, const option *longOptions,
                                    ReportOptions &options) {
  for (;;) {
    switch (getopt_long(argc, argv, shortOptions, longOptions, nullptr)) {
      case -1: return HVC_OK;
      case 'g': options.startGroup = ParseGroup(optarg); break;
      case 'l':
        if (const HVC_ReturnStatus status = ParseLevel(optarg, options.levels); status != HVC_OK) return status;
        break;
      case 'u': options.unit = optarg; break;
      case 's': options.selection = optarg; break;
      case 'i': options.inclusionFilter = optarg; break;
      case 'e': options.exclusionFilter = optarg; break;
      case 'v': options.verbose = true; break;
      case 'q': options.csv = true; break;
      case 't': options.tags = true; break;
      default: break;
    }
  }
}

}  // namespace kestrel
