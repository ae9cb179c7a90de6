// dcpmm-stats: a profile of the traffic to persistent-memory modules, from the processors' hardware counters.
#include "src/dcpmm/dcpmm_stats.h"

#include <getopt.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platkit/records.h"
#include "platkit/warning.h"
#include "src/dcpmm/counter_output.h"
#include "src/dcpmm/sockets.h"
#include "src/dcpmm/uncore.h"
#include "src/nodal/nodes.h"
#include "src/nodal/param_list.h"
#include "src/status/status.h"
#include "src/table/terminal_text.h"

namespace kestrel {
namespace {

// The only supported processor model.
constexpr uint8_t kModel = 85;

struct Options {
  int interval = 1;  // seconds
  int iterations = 1;
  bool verbose = false;
  bool csv = false;
};

HVC_ReturnStatus ReadCpu(CpuRecord &cpu) {
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) {
    // The message needs a status, but no call returned one.
    std::printf("ERROR: could not create cpuListInputParam: %s\n", HVC_ReturnStatusToString(HVC_OK));
    return HVC_FAILURE;
  }
  HVC_ReturnStatus status = NODAL_ParamListAddInt(arguments.get(), 0);
  if (status != HVC_OK) {
    std::printf("NODAL_ParamListAddInt cpuListInputParam Failure %s\n", HVC_ReturnStatusToString(status));
    return HVC_FAILURE;
  }
  status = ReadRecord(nodes::kCpu, arguments.get(), cpu);
  if (status != HVC_OK) {
    std::printf("ERROR: could not get cpuInfo: %s\n", HVC_ReturnStatusToString(status));
    return HVC_FAILURE;
  }
  return HVC_OK;
}

HVC_ReturnStatus CheckCpu() {
  CpuRecord cpu = {};
  const HVC_ReturnStatus status = ReadCpu(cpu);
  if (status != HVC_OK || cpu.model == kModel) return status;
  std::printf("\nProfiling not supported for this CPU Model: %u\n", cpu.model);
  return HVC_FAILURE;
}

// Parses a number and truncates it to 32 bits. It must be at least 1.
HVC_ReturnStatus ParseCount(const char *text, const char *what, int &count) {
  count = static_cast<int>(std::strtol(text, nullptr, 10));
  if (count >= 1) return HVC_OK;
  Warning("\nInvalid %s %s, must be > 0\n", what, WarningText(text).c_str());
  return HVC_BAD_PARAM;
}

constexpr option kLongNames[] = {
    {"time", required_argument, nullptr, 't'},
    {"iterations", required_argument, nullptr, 'i'},
    {"verbose", no_argument, nullptr, 'v'},
    {"csvMode", no_argument, nullptr, 'q'},
    {nullptr, 0, nullptr, 0},
};

// Unlike the other reports, this one refuses unknown options.
HVC_ReturnStatus ParseOptions(const OptionSyntax &syntax, int argc, char **argv, Options &options) {
  for (;;) {
    HVC_ReturnStatus status = HVC_OK;
    switch (getopt_long(argc, argv, syntax.letters, syntax.ownLongNames, nullptr)) {
      case -1: return HVC_OK;
      case 't': status = ParseCount(optarg, "Time interval", options.interval); break;
      case 'i': status = ParseCount(optarg, "Iterations", options.iterations); break;
      case 'v': options.verbose = true; break;
      case 'q': options.csv = true; break;
      default: std::puts("\n Invalid option"); return HVC_FAILURE;
    }
    if (status != HVC_OK) return status;
  }
}

HVC_ReturnStatus KestrelDCPMMCheckNVM() {
  ParamList modules;
  if (ListInstances(nodes::kNvdDimms, nullptr, modules) != HVC_OK) {
    std::puts("KestrelDCPMMCheckNVM: NODAL_GetInstanceListAlloc failure");
    return HVC_FAILURE;
  }
  if (NODAL_ParamListUsedCount(modules.get()) > 0) return HVC_OK;
  std::puts("\nNO AEP DIMMS IN THE PLATFORM.");
  std::puts("\nProfiling is not supported in NON-AEP platforms... Exiting");
  return HVC_FAILURE;
}

// Fails only if the search fails before it finds a socket. If it fails later, the sockets found so far are profiled. If
// it succeeds but finds no socket, the profile is empty.
HVC_ReturnStatus FindSockets() {
  if (KestrelDCPMMFindBuses() == HVC_OK || isBusListEmpty == 0) return HVC_OK;
  std::puts("\n No Valid PCI BUS found.");
  return HVC_FAILURE;
}

template <typename Visit>
void ForEachUnit(const Socket &socket, Visit visit) {
  for (const UnitPlace &place : kUnitPlaces)
    visit(UncoreUnit{socket.segment, socket.bus, place.slot, place.function});
}

void ProgramCounters() {
  for (const Socket &socket : Sockets()) {
    ForEachUnit(socket, kestrelDCPMMFreezeUnit);
    ForEachUnit(socket, kestrelDCPMMProgramAllUnits);
  }
}

HVC_ReturnStatus Sample(int number, int interval, CounterOutput &output) {
  for (const Socket &socket : Sockets())
    ForEachUnit(socket, kestrelDCPMMResetUnit);
  sleep(static_cast<unsigned>(interval));
  for (const Socket &socket : Sockets())
    ForEachUnit(socket, [&](const UncoreUnit &unit) { kestrelDCPMMReadAllCounters(unit, output); });
  return output.EndIteration(number);
}

HVC_ReturnStatus Profile(const Options &options) {
  CounterOutput output(options.csv);
  HVC_ReturnStatus status = options.csv ? HVC_OK : output.CreateFile(options.interval);
  if (status != HVC_OK) return status;
  ProgramCounters();
  output.PrintHeader();
  for (int64_t number = 1; number <= options.iterations && status == HVC_OK; ++number)
    status = Sample(static_cast<int>(number), options.interval, output);
  const HVC_ReturnStatus closed = output.Close();
  return status != HVC_OK ? status : closed;
}

HVC_ReturnStatus KestrelDCPMMStats(const Report &report, int argc, char **argv) {
  // The processor is checked first: on an unsupported model, the options are not even parsed.
  HVC_ReturnStatus status = CheckCpu();
  if (status != HVC_OK) return status;
  Options options;
  status = ParseOptions(report.options, argc, argv, options);
  if (status == HVC_OK) status = KestrelDCPMMCheckNVM();
  if (status == HVC_OK) status = FindSockets();
  if (status == HVC_OK) status = Profile(options);
  if (status == HVC_OK && options.verbose) CounterOutput::PrintDescriptions();
  return status;
}

}  // namespace

constinit const Report kDcpmmStats = {
    .name = "dcpmm-stats",
    .summary = "a profile of the traffic to persistent-memory modules",
    .options = {"t:i:vq", kLongNames},
    .columns = counterColumns,
    .readsSavedHosts = false,  // it reads the hardware counters of the running machine
    .run = KestrelDCPMMStats,
};

}  // namespace kestrel
