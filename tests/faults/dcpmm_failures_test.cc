// Every call of a profile of persistent memory that fails: what is said, how the run ends, and what its file then
// holds.
#include <algorithm>
#include <map>

#include "tests/faults/memory_modules.h"
#include "tests/faults/report_case.h"

namespace faults {
namespace {

using Files = std::map<std::string, std::string>;

const std::vector<Socket> kOneSocket = {{0, 100}};
const std::vector<Socket> kTwoSockets = {{0, 100}, {0, 101}};

constexpr HVC_ReturnStatus kBusy = 0x0bad0004;

// A call of a write or read, and what is said when it fails.
struct FailingCall {
  const char *operation;
  std::string node;
  unsigned number;  // of the calls of that operation that a write or read makes
  std::string message;
};

const std::vector<FailingCall> kWriteCalls = {
    {"NODAL_ParamListCreate", "*", 1, "Cannot create instanceArgs\n"},
    {"NODAL_ParamListCreate", "*", 2, "cannot create inputArgs\n"},
    {"NODAL_ParamListAddInt", "*", 1, "NODAL_ParamListAddInt seg failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 2, "NODAL_ParamListAddInt bus failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 3, "NODAL_ParamListAddInt slot failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 4, "NODAL_ParamListAddInt func failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 5, "NODAL_ParamListAddInt size failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 6, "NODAL_ParamListAddInt control failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 7, "NODAL_ParamListAddInt event failure 195887108\n"},
    {"NODAL_Set", kConfigRegister, 1, "KestrelDCPMMProgramEvent: error fetching PCI information Busy\n"},
};

const std::vector<FailingCall> kReadCalls = {
    {"NODAL_ParamListCreate", "*", 1, "Cannot allocate instanceArgs\n"},
    {"NODAL_ParamListAddInt", "*", 1, "NODAL_ParamListAddInt for seg failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 2, "NODAL_ParamListAddInt for bus failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 3, "NODAL_ParamListAddInt for slot failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 4, "NODAL_ParamListAddInt for func failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 5, "NODAL_ParamListAddInt for seg failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 6, "NODAL_ParamListAddInt for lowCounter failure 195887108\n"},
    {"NODAL_Get", kConfigRegister, 1, "KestrelDCPMMReadCounters: error fetching PCI information Busy\n"},
    {"NODAL_ParamListRemoveLastParam", "*", 1,
     "KestrelDCPMMReadCounters: NODAL_ParamListRemoveLastParam failure 195887108\n"},
    {"NODAL_ParamListAddInt", "*", 7,
     "KestrelDCPMMReadCounters: NODAL_ParamListAddInt for highCounter failure 195887108\n"},
    {"NODAL_Get", kConfigRegister, 2, "KestrelDCPMMReadCounters: error fetching PCI information Busy\n"},
};

const std::vector<FailingCall> &CallsOf(const Step &step) {
  static const std::vector<FailingCall> none;
  if (step.kind == Step::kWrite) return kWriteCalls;
  return step.kind == Step::kRead ? kReadCalls : none;
}

unsigned CallsOf(const Step &step, const FailingCall &like) {
  const std::vector<FailingCall> &calls = CallsOf(step);
  return static_cast<unsigned>(std::count_if(calls.begin(), calls.end(), [&like](const FailingCall &call) {
    return call.node == like.node && std::string(call.operation) == like.operation;
  }));
}

// How often an operation is called before the first write.
unsigned CallsBefore(const StandinRun &clean, const FailingCall &like, const std::vector<Step> &steps) {
  const std::string start = like.operation + std::string("(") + (like.node == "*" ? "" : like.node);
  unsigned count = 0;
  for (const std::string &call : clean.calls)
    count += call.starts_with(start) ? 1 : 0;
  for (const Step &step : steps)
    count -= CallsOf(step, like);
  return count;
}

// Sockets, and the part of the steps in which calls fail.
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
  // The register calls of the steps up to the one that fails, and what of that one was done.
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

// One socket: 8 steps freeze and 30 program, 16 reset, one sleeps, 38 freeze and read, one is the trailer. A second
// iteration starts with step 94. Two sockets: 76 steps program, 32 reset.
INSTANTIATE_TEST_SUITE_P(
    Dcpmm, FailingSteps,
    testing::Values(Part{"Freezing", kOneSocket, 1, 0, 8}, Part{"Programming", kOneSocket, 1, 8, 38},
                    Part{"Resetting", kOneSocket, 1, 38, 54}, Part{"ReadingTheFirstController", kOneSocket, 1, 55, 70},
                    Part{"ReadingTheSecondController", kOneSocket, 1, 70, 85},
                    Part{"ReadingTheMeshes", kOneSocket, 1, 85, 93}, Part{"ASecondReset", kOneSocket, 2, 94, 96},
                    Part{"ReadingAgain", kOneSocket, 2, 111, 114}, Part{"TheSecondSocket", kTwoSockets, 1, 38, 39},
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
        // Discovery adds 25 numbers. The header of CSV output comes after the programming.
        Failure{"NumberAboveTheSignedRange",
                FailingHost({.operation = "NODAL_ParamListAddInt", .call = 26, .status = 0xfffffffe}),
                {"-q"},
                "NODAL_ParamListAddInt seg failure 4294967294\nkestrelDCPMMFreezeUnit: Error in IMC Unit Freeze\n",
                {}},
        Failure{"ARowBeforeTheFailure",
                FailingHost({.operation = "NODAL_Get", .node = kConfigRegister, .call = 4, .status = kBusy}),
                {"-q", "-v"},
                std::string(kCsvHeader) + "0,IMC-0,Channel-0,UNC_M_PMM_RPQ_INSERTS,10001\n"
                                          "KestrelDCPMMReadCounters: error fetching PCI information Busy\n"
                                          "kestrelDCPMMReadAllCounters: Error reading UNC_M_PMM_WPQ_INSERTS\n",
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

constexpr char kNoBus[] = "\n No Valid PCI BUS found.\n";

// Fails before there is a socket, at the first call that fits; the file's absence shows that it ends there.
Failure NoSocket(const char *name, const Fault &fault, const std::string &message) {
  return {name, FailingHost(fault), {}, "DCPMM Profiler Info: " + message + "\n" + kNoBus, {}};
}

// The adds of a list begin with the processor's number; the first segment, bus, slot and function follow.
INSTANTIATE_TEST_SUITE_P(
    DcpmmDiscovery, Failures,
    testing::Values(
        NoSocket("List", {.operation = "NODAL_ParamListCreate", .call = 2}, "NODAL_ParamListCreate Failure"),
        NoSocket("Segments", {.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg"},
                 "NODAL_NODE_hardware_pci_seg Failure"),
        NoSocket("Segment", {.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg"},
                 "NODAL_NODE_hardware_pci_seg, Unable to get segment param from segList"),
        NoSocket("AddedSegment", {.operation = "NODAL_ParamListAddInt", .call = 2},
                 "NODAL_NODE_hardware_pci_seg, Unable to add segment to paramList"),
        NoSocket("Buses", {.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus"},
                 "NODAL_NODE_hardware_pci_seg_bus Failure"),
        NoSocket("Bus", {.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg_bus"},
                 "NODAL_NODE_hardware_pci_seg_bus, Unable to get bus param from busList"),
        NoSocket("AddedBus", {.operation = "NODAL_ParamListAddInt", .call = 3},
                 "NODAL_NODE_hardware_pci_seg_bus, Unable to add bus to paramList"),
        NoSocket("Slots", {.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus_slot"},
                 "NODAL_NODE_hardware_pci_seg_bus_slot Failure"),
        NoSocket("Slot", {.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg_bus_slot"},
                 "NODAL_NODE_hardware_pci_seg_bus_slot, Unable to get slot param from slotList"),
        NoSocket("AddedSlot", {.operation = "NODAL_ParamListAddInt", .call = 4},
                 "NODAL_NODE_hardware_pci_seg_bus_slot, Unable to add slot to paramList"),
        NoSocket("Functions", {.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus_slot_func"},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func Failure"),
        NoSocket("Function", {.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg_bus_slot_func"},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func, Unable to get func param from funcList"),
        NoSocket("AddedFunction", {.operation = "NODAL_ParamListAddInt", .call = 5},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func, Unable to add func to paramList"),
        NoSocket("Header", {.operation = "NODAL_Get", .node = kConfigHeader},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, Unable to get pciConfiHeader"),
        NoSocket("NotFoundIsLikeAnyOther",
                 {.operation = "NODAL_GetInstanceListAlloc",
                  .node = "hardware_pci_seg_bus_slot_func",
                  .call = 2,
                  .status = 0x0bad0003},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func Failure"),
        NoSocket("HeaderThatNobodyNeeds",
                 {.operation = "NODAL_Get", .node = kConfigHeader, .call = 3, .status = 0x0bad0003},
                 "NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, Unable to get pciConfiHeader")),
    NameOf<Failure>);

INSTANTIATE_TEST_SUITE_P(
    DcpmmChecks, Failures,
    testing::Values(
        Failure{"ProcessorList",
                FailingHost({.operation = "NODAL_ParamListCreate", .call = 1}),
                {"-x"},
                "ERROR: could not create cpuListInputParam: Success\n",
                {}},
        Failure{"ProcessorNumber",
                FailingHost({.operation = "NODAL_ParamListAddInt", .call = 1, .status = 0x0bad0014}),
                {},
                "NODAL_ParamListAddInt cpuListInputParam Failure Out of memory\n",
                {}},
        Failure{"Processor",
                FailingHost({.operation = "NODAL_Get", .node = "hardware_cpu_cpuList", .status = 0x0bad0001}),
                {"-q"},
                "ERROR: could not get cpuInfo: Failure\n",
                {}},
        Failure{"NoProcessor", StandinHost(), {"-t", "0"}, "ERROR: could not get cpuInfo: Not found\n", {}},
        Failure{"Modules",
                FailingHost({.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_nvd_dimm"}),
                {},
                "KestrelDCPMMCheckNVM: NODAL_GetInstanceListAlloc failure\n",
                {}},
        Failure{
            "ModulesNotFound",
            FailingHost({.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_nvd_dimm", .status = 0x0bad0003}),
            {"-q"},
            "KestrelDCPMMCheckNVM: NODAL_GetInstanceListAlloc failure\n",
            {}},
        Failure{"Time",
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

// A discovery that fails later goes on with what it has found. The second socket's bus comes after the first one's.
TEST(DcpmmDiscovery, GoesOnWithTheSocketsFoundSoFar) {
  const struct {
    Fault fault;
    const char *message;
    size_t sockets;
  } cases[] = {
      // The calls for bus 0 and for the first socket's bus come first.
      {{.operation = "NODAL_GetInstanceListAlloc", .node = "hardware_pci_seg_bus_slot", .call = 3},
       "NODAL_NODE_hardware_pci_seg_bus_slot Failure",
       1},
      {{.operation = "NODAL_ParamListGetParam", .node = "hardware_pci_seg_bus", .call = 3},
       "NODAL_NODE_hardware_pci_seg_bus, Unable to get bus param from busList",
       1},
      // Bus 0 has two slots with three functions; the socket's slots 8 and 9 have one function each, then come 10.2 and
      // 10.6.
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

// The failing header is the socket's own.
TEST(DcpmmDiscovery, ASocketWhoseHeaderFailsIsNone) {
  const Profile profile =
      RunProfile(FailingHost({.operation = "NODAL_Get", .node = kConfigHeader, .call = 6, .status = kBusy}), {"-q"});
  EXPECT_EQ(profile.run.outcome.output,
            std::string("DCPMM Profiler Info: NODAL_NODE_hardware_pci_seg_bus_slot_func_pciConfigHeader, Unable to get "
                        "pciConfiHeader\n") +
                kNoBus);
  EXPECT_EQ(profile.run.outcome.exitStatus, 1);
  EXPECT_EQ(StepCalls(profile.run), std::vector<std::string>());
}

}  // namespace
}  // namespace faults
