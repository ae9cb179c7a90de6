#include "src/table/options.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "platkit/warning.h"
#include "src/table/terminal_text.h"

namespace kestrel {
namespace {

HVC_ReturnStatus ParseLevel(const char *text, uint32_t &levels) {
  const auto count = static_cast<uint32_t>(std::strtol(text, nullptr, 10));
  if (count == 0) {
    Warning("Invalid level %s, must be > 0\n", WarningText(text).c_str());
    return HVC_BAD_PARAM;
  }
  levels = count;
  if (count > kMaxLevels) {
    // "reseting" must not change: scripts match it.
    Warning("Specified level %s too high, reseting to %d\n", WarningText(text).c_str(), static_cast<int>(kMaxLevels));
    levels = kMaxLevels;
  }
  return HVC_OK;
}

// Group IDs are truncated to 32 bits and sign-extended.
int64_t ParseGroup(const char *text) { return static_cast<int32_t>(std::strtol(text, nullptr, 10)); }

}  // namespace

HVC_ReturnStatus ParseReportOptions(int argc, char **argv, const OptionSyntax &syntax, ReportOptions &options) {
  option shared[std::size(kSharedLongNames)] = {};
  std::copy_if(std::begin(kSharedLongNames), std::end(kSharedLongNames), shared,
               [&](const option &o) { return syntax.Takes(static_cast<char>(o.val)); });
  const option *longNames = syntax.ownLongNames != nullptr ? syntax.ownLongNames : shared;
  for (;;) {
    switch (getopt_long(argc, argv, syntax.letters, longNames, nullptr)) {
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
