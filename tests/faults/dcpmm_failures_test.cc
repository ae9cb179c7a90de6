// dcpmm-stats: failing calls that every_call_test.cc does not cover. They occur in runs that write a file, in the
// second iteration, or for the second socket.
#include <algorithm>
#include <map>

#include "tests/faults/failure_rows.h"
#include "tests/faults/memory_modules.h"
#include "tests/faults/oracle.h"
#include "tests/faults/report_case.h"

namespace faults::dcpmm_failures {
namespace {

using Files = std::map<std::string, std::string>;

const std::vector<Socket> kOneSocket = {{0, 100}};
const std::vector<Socket> kTwoSockets = {{0, 100}, {0, 101}};

constexpr HVC_ReturnStatus kBusy = 0x0bad0004;

// A call during a write or read, and the message if it fails.
struct FailingCall {
  std::string operation;
  std::string node;
  unsigned number;  // number of the call of this operation within a write or read
  std::string message;
};

std::vector<FailingCall> CallsAt(const std::string &place) {
  std::vector<FailingCall> calls;
  for (const FailureRow &row : Profiler().table) {
    if (row.place != place) continue;
    const bool isAccess = row.operation == "NODAL_Set" || row.operation == "NODAL_Get";
    calls.push_back({row.operation, isAccess ? kConfigRegister : "*", row.number,
                     Replaced(WithStatus(row.messages[0].text, kBusy), "<text>", "Busy")});
  }
  return calls;
}

const std::vector<FailingCall> &CallsOf(const Step &step) {
  static const std::vector<FailingCall> none;
  static const std::vector<FailingCall> ofWrites = CallsAt(WriteOf(kConfigRegister));
  static const std::vector<FailingCall> ofReads = CallsAt(kConfigRegister);
  if (step.kind == Step::kWrite) return ofWrites;
  return step.kind == Step::kRead ? ofReads : none;
}

unsigned CallsOf(const Step &step, const FailingCall &like) {
  const std::vector<FailingCall> &calls = CallsOf(step);
  return static_cast<unsigned>(std::count_if(calls.begin(), calls.end(), [&like](const FailingCall &call) {
    return call.node == like.node && call.operation == like.operation;
  }));
}

// The number of calls of an operation before the first write.
unsigned CallsBefore(const StandinRun &clean, const FailingCall &like, const std::vector<Step> &steps) {
  const std::string start = like.operation + "(" + (like.node == "*" ? "" : like.node);
  unsigned count = 0;
  for (const std::string &call : clean.calls)
    count += call.starts_with(start) ? 1 : 0;
  for (const Step &step : steps)
    count -= CallsOf(step, like);
  return count;
}

// The sockets, and the range of steps in which calls fail.
struct Part {
  const char *name;
  std::vector<Socket> sockets;
  int iterations;
  size_t from;
  size_t to;
};

void PrintTo(const Part &part, std::ostream *stream) { *stream << part.name; }

class FailingSteps : public testing::TestWithParam<Part> {
 protected:
  // The register calls before the failing step, and those that this step made before it failed.
  static std::vector<std::string> CallsUpTo(const std::vector<Step> &steps, size_t failing, const FailingCall &call) {
    std::vector<std::string> calls = Calls({steps.begin(), steps.begin() + static_cast<ptrdiff_t>(failing)});
    const std::string operation = call.operation;
    const std::vector<std::string> &own = steps[failing].calls;
    const bool lowIsRead = steps[failing].kind == Step::kRead && (operation == "NODAL_ParamListRemoveLastParam" ||
                                                                  call.number == (operation == "NODAL_Get" ? 2 : 7));
    if (lowIsRead) calls.push_back(own[0]);
    if (call.node == kConfigRegister) {
      std::string text = own[call.number - 1];
      calls.push_back(text.replace(text.rfind("= 0"), 3, "= 0x0bad0004"));
    }
    return calls;
  }
};

TEST_P(FailingSteps, EndTheRun) {
  const Part &part = GetParam();
  const StandinHost host = MemoryHost(part.sockets);
  const std::vector<std::string> options = {"-v", "-i", std::to_string(part.iterations)};
  const std::vector<Step> steps = Steps(part.sockets, part.iterations);
  const StandinRun clean = RunProfile(host, options).run;
  ASSERT_EQ(StepCalls(clean), Calls(steps));
  ASSERT_LE(part.to, steps.size());

  for (size_t failing = part.from; failing < part.to; ++failing) {
    const std::string file = WholeFile({steps.begin(), steps.begin() + static_cast<ptrdiff_t>(failing)});
    for (const FailingCall &call : CallsOf(steps[failing])) {
      unsigned number = CallsBefore(clean, call, steps) + call.number;
      for (size_t before = 0; before < failing; ++before)
        number += CallsOf(steps[before], call);
      StandinHost failingHost = host;
      failingHost.Fail({.operation = call.operation, .node = call.node, .call = number, .status = kBusy});

      const Profile profile = RunProfile(failingHost, options);
      SCOPED_TRACE(testing::Message() << "step " << failing << ", " << call.operation << " " << call.number);
      ASSERT_EQ(profile.run.outcome.output, kAnnouncement + call.message + steps[failing].failure);
      ASSERT_EQ(profile.run.outcome.errors, "");
      ASSERT_EQ(profile.run.outcome.exitStatus, 1);
      ASSERT_EQ(profile.files, (Files{{kFileName, file}}));
      ASSERT_EQ(StepCalls(profile.run), CallsUpTo(steps, failing, call));
      ASSERT_EQ(ListErrors(profile.run), "");
    }
  }
}

// The steps for one socket: 8 freeze, 30 program, 16 reset, 1 sleeps, 38 freeze and read, and 1 prints the trailer. A
// second iteration starts with step 94. For two sockets, 76 steps program and 32 reset.
INSTANTIATE_TEST_SUITE_P(
    Dcpmm, FailingSteps,
    testing::Values(Part{"TheFirstWrite", kOneSocket, 1, 0, 1}, Part{"TheFirstReset", kOneSocket, 1, 38, 39},
                    Part{"TheFirstReads", kOneSocket, 1, 55, 58}, Part{"TheLastMesh", kOneSocket, 1, 92, 93},
                    Part{"ASecondReset", kOneSocket, 2, 94, 96}, Part{"ReadingAgain", kOneSocket, 2, 111, 114},
                    Part{"TheSecondSocket", kTwoSockets, 1, 38, 39},
                    Part{"ReadingTheSecondSocket", kTwoSockets, 1, 147, 149}),
    NameOf<Part>);

struct Failure {
  const char *name;
  StandinHost host;
  std::vector<std::string> options;
  std::string output;
  Files files;
};

void PrintTo(const Failure &failure, std::ostream *stream) { *stream << failure.name; }

class Failures : public testing::TestWithParam<Failure> {};

TEST_P(Failures, AnswerAs) {
  const Failure &expected = GetParam();
  const Profile profile = RunProfile(expected.host, expected.options);
  EXPECT_EQ(profile.run.outcome.output, expected.output);
  EXPECT_EQ(profile.run.outcome.errors, "");
  EXPECT_EQ(profile.run.outcome.exitStatus, 1);
  EXPECT_EQ(profile.files, expected.files);
  EXPECT_EQ(ListErrors(profile.run), "") << profile.run;
}

StandinHost FailingHost(const Fault &fault) { return MemoryHost(kOneSocket).Fail(fault); }

INSTANTIATE_TEST_SUITE_P(
    DcpmmStatuses, Failures,
    testing::Values(
        Failure{"NotFoundIsLikeAnyOther",
                FailingHost({.operation = "NODAL_Set", .call = 1, .status = 0x0bad0003}),
                {},
                std::string(kAnnouncement) + "KestrelDCPMMProgramEvent: error fetching PCI information Not found\n"
                                             "kestrelDCPMMFreezeUnit: Error in IMC Unit Freeze\n",
                {{kFileName, FileStart()}}},
        Failure{"OpaqueStatus",
                FailingHost({.operation = "NODAL_Get", .node = kConfigRegister, .call = 1, .status = 0xfffffffe}),
                {"-q"},
                std::string(kCsvHeader) +
                    "KestrelDCPMMReadCounters: error fetching PCI information Opaque service console status\n"
                    "kestrelDCPMMReadAllCounters: Error reading UNC_M_PMM_RPQ_INSERTS\n",
                {}},
        // The search for sockets and channels makes the first 25 calls. The CSV header is missing, because the report
        // prints it after the programming.
        Failure{"NumberAboveTheSignedRange",
                FailingHost({.operation = "NODAL_ParamListAddInt", .call = 26, .status = 0xfffffffe}),
                {"-q"},
                "NODAL_ParamListAddInt seg failure 4294967294\nkestrelDCPMMFreezeUnit: Error in IMC Unit Freeze\n",
                {}},
        Failure{"AUnitThatIsNotThere",
                MemoryHost({})
                    .AddList("hardware_pci_seg", {}, {0})
                    .AddList("hardware_pci_seg_bus", {0}, {100})
                    .AddList("hardware_pci_seg_bus_slot", {0, 100}, {10})
                    .AddList("hardware_pci_seg_bus_slot_func", {0, 100, 10}, {2})
                    .AddBytes(kConfigHeader, {0, 100, 10, 2}, ConfigHeader(0x8086, 0x2042)),
                {"-i", "3", "-t", "20"},
                std::string(kAnnouncement) + "KestrelDCPMMProgramEvent: error fetching PCI information Not found\n"
                                             "kestrelDCPMMFreezeUnit: Error in IMC Unit Freeze\n",
                {{kFileName, FileStart(20)}}}),
    NameOf<Failure>);

INSTANTIATE_TEST_SUITE_P(
    DcpmmFile, Failures,
    testing::Values(Failure{"NoSocket",
                            FailingHost({.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg"}),
                            {},
                            "DCPMM Profiler Info: NODAL_NODE_hardware_pci_seg Failure\n\n No Valid PCI BUS found.\n",
                            {}},
                    Failure{
                        "Time",
                        FailingHost({.operation = "time", .status = 75}),
                        {"-v"},
                        "time() failed: Value too large for defined data type\n\n Cannot Create report output file\n",
                        {}},
                    Failure{"LocalTime",
                            FailingHost({.operation = "localtime", .status = 22}),
                            {},
                            "localtime() failed: Invalid argument\n\n Cannot Create report output file\n",
                            {}}),
    NameOf<Failure>);

// If the search fails, the report profiles the sockets that it has found so far. The bus of the second socket is
// searched after the bus of the first one.
TEST(DcpmmDiscovery, GoesOnWithTheSocketsFoundSoFar) {
  const struct {
    Fault fault;
    const char *message;
    size_t sockets;
  } cases[] = {
      // The first two calls are for bus 0 and for the bus of the first socket.
      {{.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus_slot", .call = 3},
       "NODAL_NODE_hardware_pci_seg_bus_slot Failure",
       1},
      {{.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg_bus", .call = 3},
       "NODAL_NODE_hardware_pci_seg_bus, Unable to get bus param from busList",
       1},
      // Calls 1 to 3 are for the functions of bus 0, calls 4 and 5 for the first socket's slots 8 and 9, call 6 for its
      // function 10.2, and call 7 for its function 10.6.
      {{.operation = "NODAL_Get", .node = kConfigHeader, .call = 7},
       "NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, Unable to get pciConfiHeader",
       1},
      {{.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus_slot_func", .call = 14},
       "NODAL_NODE_hardware_pci_seg_bus_slot_func Failure",
       2},
  };
  for (const auto &[fault, message, count] : cases) {
    SCOPED_TRACE(message);
    const std::vector<Socket> found(kTwoSockets.begin(), kTwoSockets.begin() + static_cast<ptrdiff_t>(count));
    const Profile profile = RunProfile(MemoryHost(kTwoSockets).Fail(fault));
    EXPECT_EQ(profile.run.outcome.output, std::string("DCPMM Profiler Info: ") + message + "\n" + kAnnouncement);
    EXPECT_EQ(profile.run.outcome.errors, "");
    EXPECT_EQ(profile.run.outcome.exitStatus, 0);
    EXPECT_EQ(profile.files, (Files{{kFileName, WholeFile(Steps(found))}}));
    EXPECT_EQ(StepCalls(profile.run), Calls(Steps(found)));
    EXPECT_EQ(ListErrors(profile.run), "");
  }
}

}  // namespace
}  // namespace faults::dcpmm_failures
