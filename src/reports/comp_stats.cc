// comp-stats: one row with the host's physical memory, its consumers, the free memory, and how often the host entered
// each memory state.
#include <array>

#include "platkit/records.h"
#include "src/reports/host_report.h"
#include "src/reports/reports.h"
#include "src/table/banner.h"
#include "src/table/report_row.h"

namespace kestrel {
namespace {

enum MemState { kHigh, kClear, kSoft, kHard, kLow, kMemStates };

struct CompRow {
  ComprehensiveRecord host;
  GlobalMemoryRecord sched;
  uint32_t entered[kMemStates];  // number of times the host entered each state
  const char *memState;
};

using enum Conversion;
using enum FigureUnit;

// Some descriptions end in spaces; they must not change.
constinit auto columns = ColumnsOf<CompRow>({
    {"total", "Total physical memory on host", 10, kLu, kKB, [](auto &row) { return row.host.total; }},
    {"discarded", "Discarded by hvcore  ", 10, kLu, kKB, [](auto &row) { return row.host.discarded; }},
    {"managedByMemMap", "Memory managed by MemMap", 10, kLu, kKB, [](auto &row) { return row.host.managedByMemMap; }},
    {"reliableMem", "Reliable memory", 10, kLu, kKB, [](auto &row) { return row.host.reliableMem; }},
    {"kernelCode", "Hvcore code region", 10, kLu, kKB, [](auto &row) { return row.host.kernelCode; }},
    {"dataAndHeap", "Hvcore data and heap", 10, kLu, kKB, [](auto &row) { return row.host.dataAndHeap; }},
    {"buddyOvhd", "Memmap buddy overhead ", 10, kLu, kKB, [](auto &row) { return row.host.buddyOvhd; }},
    {"rsvdLow", "Reserved low memory", 10, kLu, kKB, [](auto &row) { return row.host.rsvdLow; }},
    {"managedByMemSched", "Memory managed by MemSched", 10, kLu, kKB,
     [](auto &row) { return row.sched.managedByMemSched; }},
    {"minFree", "Min Free", 10, kLu, kKB, [](auto &row) { return row.sched.minFree; }},
    {"hvcClientConsumed", "Consumed by hvcore clients", 10, kLu, kKB,
     [](auto &row) { return row.host.hvcClientConsumed; }},
    {"otherConsumed", "Consumed by non-hvcore clients", 10, kLu, kKB, [](auto &row) { return row.host.otherConsumed; }},
    {"free", "Available (Free) physical memory", 10, kLu, kKB, [](auto &row) { return row.host.free; }},
    {"numHigh", "Num times host in high state", 10, kU, [](auto &row) { return row.entered[kHigh]; }},
    {"numClear", "Num times host in clear state", 10, kU, [](auto &row) { return row.entered[kClear]; }},
    {"numSoft", "Num times host in soft state", 10, kU, [](auto &row) { return row.entered[kSoft]; }},
    {"numHard", "Num of times host in hard state", 10, kU, [](auto &row) { return row.entered[kHard]; }},
    {"numLow", "Num of times host in low state", 10, kU, [](auto &row) { return row.entered[kLow]; }},
    {"memState", "Current memory state", 7, kS, [](auto &row) { return Text(row.memState); }},
});

using Transitions = std::array<StateTransitionsRecord, kMemStates>;

HVC_ReturnStatus ReadTransitions(const char *state, StateTransitionsRecord &record) {
  const ParamList arguments = MakeArgumentsFor("KestrelCompGetGlobalKestrel", 1);
  if (arguments == nullptr) return HVC_FAILURE;
  const HVC_ReturnStatus status = NODAL_ParamListAddString(arguments.get(), state);
  if (status != HVC_OK) return status;
  return ReadRecord(nodes::kStateTransitions, arguments.get(), record);
}

HVC_ReturnStatus KestrelCompGetGlobalKestrel(GlobalMemoryRecord &sched, Transitions &transitions) {
  HVC_ReturnStatus status = ReadHostRecord("KestrelCompGetGlobalKestrel", nodes::kGlobalMemory, sched);
  constexpr const char *kStates[kMemStates] = {"high", "clear", "soft", "hard", "low"};
  for (size_t state = 0; state < kMemStates && status == HVC_OK; ++state)
    status = ReadTransitions(kStates[state], transitions[state]);
  return status;
}

// A state is entered from its two neighbours. The host starts in the high state, which counts as entering it.
void CountEntries(const Transitions &transitions, uint32_t (&entered)[kMemStates]) {
  for (size_t state = 0; state < kMemStates; ++state) {
    entered[state] = state == kHigh ? 1 : transitions[state - 1].toLowerCount;
    if (state + 1 < kMemStates) entered[state] += transitions[state + 1].toHigherCount;
  }
}

const char *NameOf(uint32_t memState) {
  constexpr const char *kNames[kMemStates] = {"High", "Clear", "Soft", "Hard", "Low"};
  return memState < kMemStates ? kNames[memState] : "Unknown";
}

HVC_ReturnStatus ReadRow(CompRow &row) {
  HVC_ReturnStatus status = ReadHostRecord("KestrelCompGetMemMapStats", nodes::kComprehensive, row.host);
  if (status != HVC_OK) return status;
  Transitions transitions = {};
  status = KestrelCompGetGlobalKestrel(row.sched, transitions);
  if (status != HVC_OK) return status;
  CountEntries(transitions, row.entered);
  row.memState = NameOf(row.sched.memState);
  return HVC_OK;
}

HVC_ReturnStatus KestrelCompGetStats(const Report &report, int argc, char **argv) {
  HostRun run;
  HVC_ReturnStatus status = StartHostReport(report, argc, argv, run);
  if (status != HVC_OK) return status;

  if (!run.options.csv) {
    const Banner banner("COMPREHENSIVE STATS", 45);
    banner.Setting("Unit", WalkUnitName(run.unit));
    banner.SelectedColumns(columns);
  }
  // The banner and the header are printed before the reads, even if a read then fails.
  TablePrintHead(columns, run.options.csv);
  CompRow row = {};
  status = ReadRow(row);
  if (status != HVC_OK) return status;
  PrintFigures(columns, run.options.csv, false, &row, run.unit);
  EndHostReport(columns, run.options);
  return HVC_OK;
}

}  // namespace

constinit const Report kCompStats = {
    .name = "comp-stats",
    .summary = "the host's physical memory in one row, and how often it was short",
    .options = {"s:u:vq"},
    .columns = columns,
    .run = KestrelCompGetStats,
};

}  // namespace kestrel
