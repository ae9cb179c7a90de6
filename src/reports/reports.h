// The entries of the reports. Each gets main's arguments, with option parsing left where the report's name stood, and
// returns the status of what it gathered.
#ifndef KESTREL_REPORTS_REPORTS_H
#define KESTREL_REPORTS_REPORTS_H

#include "platkit/status.h"

namespace kestrel {

[[nodiscard]] HVC_ReturnStatus KestrelGroupStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelVmStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelUwStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelPShareGetStats(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelPShareHintGetStats(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelSwapStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelBuddyGetStats(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelCompGetStats(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelLPoolStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelHeapStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelGuestStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelZipStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelLPageStatsReport(int argc, char **argv);
[[nodiscard]] HVC_ReturnStatus KestrelAsyncRemapReport(int argc, char **argv);

// Kinds of the persistent-memory reports; any other is HVC_BAD_PARAM.
enum PMemKind { kPMemRegionStore, kPMemRegion, kPMemExtent, kPMemRegionNuma };
[[nodiscard]] HVC_ReturnStatus KestrelPMemReport(int argc, char **argv, int kind);

}  // namespace kestrel

#endif  // KESTREL_REPORTS_REPORTS_H
