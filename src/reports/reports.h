// The list of reports. Each report is described and implemented in the file of its name. A new report is declared here,
// added to kReports, and added to the usage text.
#ifndef KESTREL_REPORTS_REPORTS_H
#define KESTREL_REPORTS_REPORTS_H

#include "src/dcpmm/dcpmm_stats.h"
#include "src/reports/report.h"

namespace kestrel {

extern const Report kGroupStats;
extern const Report kVmStats;
extern const Report kUwStats;
extern const Report kPShareStats;
extern const Report kPShareHintStats;
extern const Report kSwapStats;
extern const Report kBuddyStats;
extern const Report kCompStats;
extern const Report kLPoolStats;
extern const Report kHeapStats;
extern const Report kGuestStats;
extern const Report kZipStats;
extern const Report kLPageStats;
extern const Report kAsyncRemapStats;
extern const Report kPMemRegionStoreStats;
extern const Report kPMemRegionStats;
extern const Report kPMemExtentStats;
extern const Report kPMemRegionNumaStats;

inline constexpr const Report *kReports[] = {
    &kGroupStats,      &kVmStats,         &kUwStats,
    &kPShareStats,     &kPShareHintStats, &kSwapStats,
    &kBuddyStats,      &kCompStats,       &kLPoolStats,
    &kHeapStats,       &kGuestStats,      &kZipStats,
    &kLPageStats,      &kAsyncRemapStats, &kPMemRegionStoreStats,
    &kPMemRegionStats, &kPMemExtentStats, &kPMemRegionNumaStats,
    &kDcpmmStats,
};

}  // namespace kestrel

#endif  // KESTREL_REPORTS_REPORTS_H
