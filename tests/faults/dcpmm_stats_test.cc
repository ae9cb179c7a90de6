// dcpmm-stats: the reads and writes of registers, their order, and all output.
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <algorithm>
#include <cstddef>

#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "tests/faults/memory_modules.h"
#include "tests/faults/report_case.h"
#include "tests/support/scratch.h"
#include "tests/support/text.h"

namespace faults::dcpmm_stats {
namespace {

using testing_support::Instance;
using testing_support::Lines;
using testing_support::OutputTo;
using testing_support::ScratchDirectory;
using testing_support::Unit;
using testing_support::Words;

using Files = std::map<std::string, std::string>;

const std::vector<Socket> kOneSocket = {{0, 100}};

// Sockets on different buses. The report has no limit on their number.
std::vector<Socket> ManySockets(int64_t count) {
  std::vector<Socket> sockets;
  for (int64_t number = 0; number < count; ++number)
    sockets.push_back({0, 1 + number});
  return sockets;
}

void ExpectSound(const Profile &profile) {
  EXPECT_EQ(profile.run.outcome.errors, "");
  EXPECT_EQ(profile.run.outcome.exitStatus, 0);
  EXPECT_EQ(ListErrors(profile.run), "");
}

struct Machine {
  const char *name;
  std::vector<Socket> sockets;
};

void PrintTo(const Machine &machine, std::ostream *stream) { *stream << machine.name; }

class Machines : public testing::TestWithParam<Machine> {
 protected:
  const std::vector<Socket> &sockets() const { return GetParam().sockets; }
};

TEST_P(Machines, AreProfiledIntoAFile) {
  const Profile profile = RunProfile(MemoryHost(sockets()));
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, kAnnouncement);
  EXPECT_EQ(profile.files, (Files{{kFileName, WholeFile(Steps(sockets()))}}));
  EXPECT_EQ(StepCalls(profile.run), Calls(Steps(sockets())));
}

TEST_P(Machines, AreProfiledIntoAFileSeveralTimes) {
  const std::vector<Step> steps = Steps(sockets(), 3, 7);
  const Profile profile = RunProfile(MemoryHost(sockets()), {"-i", "3", "-t", "7", "-v"});
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, std::string(kAnnouncement) + kDescriptions);
  EXPECT_EQ(profile.files, (Files{{kFileName, WholeFile(steps, 7)}}));
  EXPECT_EQ(StepCalls(profile.run), Calls(steps));
}

TEST_P(Machines, AreProfiledAsCsv) {
  const Profile profile = RunProfile(MemoryHost(sockets()), {"-q"});
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, Csv(Steps(sockets())));
  EXPECT_EQ(profile.files, Files());
  EXPECT_EQ(StepCalls(profile.run), Calls(Steps(sockets())));
}

TEST_P(Machines, AreProfiledAsCsvSeveralTimes) {
  const std::vector<Step> steps = Steps(sockets(), 2, 3);
  const Profile profile = RunProfile(MemoryHost(sockets()), {"--csvMode", "--verbose", "--iterations=2", "--time=3"});
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, Csv(steps) + kDescriptions);
  EXPECT_EQ(profile.files, Files());
  EXPECT_EQ(StepCalls(profile.run), Calls(steps));
}

INSTANTIATE_TEST_SUITE_P(Dcpmm, Machines,
                         testing::Values(Machine{"NoSocket", {}}, Machine{"OneSocket", kOneSocket},
                                         Machine{"TwoSockets", {{0, 100}, {0, 7}}},
                                         Machine{"FourSocketsInTwoSegments", {{0, 23}, {0, 100}, {1, 24}, {1, 101}}},
                                         Machine{"SegmentsInListOrder", {{3, 40}, {1, 41}}},
                                         // The counts come from two sockets, but all rows have the number of the first
                                         // one.
                                         Machine{"EqualBusesInTwoSegments", {{0, 100}, {1, 100}}},
                                         Machine{"EqualBusesAndAnother", {{0, 5}, {0, 6}, {1, 6}, {1, 7}}},
                                         Machine{"FortySockets", ManySockets(40)}),
                         NameOf<Machine>);

// The output file of one socket.
TEST(DcpmmFile, OfOneSocket) {
  const std::string rule = "\n" + std::string(79, '=') + "\n";
  const std::string lines =
      "\n  0 \t IMC-0 \t Channel-0 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 10001"
      "\n  0 \t IMC-0 \t Channel-0 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 10101"
      "\n  0 \t IMC-0 \t Channel-0 \t UNC_M_CAS_COUNT_WR \t \t \t 10201"
      "\n  0 \t IMC-0 \t Channel-0 \t UNC_M_CAS_COUNT_RD \t \t \t 10301"
      "\n  0 \t IMC-0 \t Channel-1 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 11001"
      "\n  0 \t IMC-0 \t Channel-1 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 11101"
      "\n  0 \t IMC-0 \t Channel-1 \t UNC_M_CAS_COUNT_WR \t \t \t 11201"
      "\n  0 \t IMC-0 \t Channel-1 \t UNC_M_CAS_COUNT_RD \t \t \t 11301"
      "\n  0 \t IMC-0 \t Channel-2 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 12001"
      "\n  0 \t IMC-0 \t Channel-2 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 12101"
      "\n  0 \t IMC-0 \t Channel-2 \t UNC_M_CAS_COUNT_WR \t \t \t 12201"
      "\n  0 \t IMC-0 \t Channel-2 \t UNC_M_CAS_COUNT_RD \t \t \t 12301"
      "\n  0 \t IMC-1 \t Channel-0 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 13001"
      "\n  0 \t IMC-1 \t Channel-0 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 13101"
      "\n  0 \t IMC-1 \t Channel-0 \t UNC_M_CAS_COUNT_WR \t \t \t 13201"
      "\n  0 \t IMC-1 \t Channel-0 \t UNC_M_CAS_COUNT_RD \t \t \t 13301"
      "\n  0 \t IMC-1 \t Channel-1 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 14001"
      "\n  0 \t IMC-1 \t Channel-1 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 14101"
      "\n  0 \t IMC-1 \t Channel-1 \t UNC_M_CAS_COUNT_WR \t \t \t 14201"
      "\n  0 \t IMC-1 \t Channel-1 \t UNC_M_CAS_COUNT_RD \t \t \t 14301"
      "\n  0 \t IMC-1 \t Channel-2 \t UNC_M_PMM_RPQ_INSERTS \t \t \t 15001"
      "\n  0 \t IMC-1 \t Channel-2 \t UNC_M_PMM_WPQ_INSERTS \t \t \t 15101"
      "\n  0 \t IMC-1 \t Channel-2 \t UNC_M_CAS_COUNT_WR \t \t \t 15201"
      "\n  0 \t IMC-1 \t Channel-2 \t UNC_M_CAS_COUNT_RD \t \t \t 15301"
      "\n  0 \t M2M-IMC-0 \t\t UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN \t 16001"
      "\n  0 \t M2M-IMC-0 \t\t UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY \t 16101"
      "\n  0 \t M2M-IMC-0 \t\t UNC_M2M_IMC_WRITES_NI \t 16201"
      "\n  0 \t M2M-IMC-1 \t\t UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN \t 17001"
      "\n  0 \t M2M-IMC-1 \t\t UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY \t 17101"
      "\n  0 \t M2M-IMC-1 \t\t UNC_M2M_IMC_WRITES_NI \t 17201";
  const std::string expected = "\nTime Interval: 1\n" + rule +
                               "\nSOCKET \t IMC \t CHANNEL \t \t EVENT \t \t \t\tCOUNTS \t" + rule + lines + rule +
                               "\nITERATION 1 COMPLETED\n" + rule;
  EXPECT_EQ(RunProfile(MemoryHost(kOneSocket)).files, (Files{{kFileName, expected}}));
}

TEST(DcpmmFile, OfNoSocketHasItsTrailers) {
  const std::string rule = "\n" + std::string(79, '=') + "\n";
  const Profile profile = RunProfile(MemoryHost({}), {"-i2", "-t3"});
  EXPECT_EQ(profile.files,
            (Files{{kFileName, "\nTime Interval: 3\n" + rule +
                                   "\nSOCKET \t IMC \t CHANNEL \t \t EVENT \t \t \t\tCOUNTS \t" + rule + rule +
                                   "\nITERATION 1 COMPLETED\n" + rule + rule + "\nITERATION 2 COMPLETED\n" + rule}}));
  EXPECT_EQ(StepCalls(profile.run), (std::vector<std::string>{"sleep(3)", "sleep(3)"}));
}

TEST(DcpmmFile, TakesThePlaceOfAnOldOne) {
  const std::string expected = WholeFile(Steps(kOneSocket));
  const Profile profile = RunProfile(
      MemoryHost(kOneSocket), {}, {.files = {{kFileName, std::string(expected.size() + 1000, 'x')}, {"other", "y"}}});
  EXPECT_EQ(profile.files, (Files{{kFileName, expected}, {"other", "y"}}));
}

struct Moment {
  const char *name;
  int64_t seconds;
  const char *timeZone;
  const char *file;
};

void PrintTo(const Moment &moment, std::ostream *stream) { *stream << moment.name; }

class Moments : public testing::TestWithParam<Moment> {};

TEST_P(Moments, NameTheFile) {
  const Moment &moment = GetParam();
  const Profile profile =
      RunProfile(MemoryHost({}).SetClock(moment.seconds), {"-t", "100000"}, {.timeZone = moment.timeZone});
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, std::string("Data output is being written to: ") + moment.file + "\n");
  EXPECT_EQ(profile.files, (Files{{moment.file, WholeFile(Steps({}), 100000)}}));
}

constexpr Moment kMoments[] = {
    {"EndOfJanuary", 1706745599, "UTC", "dcpmm-stats-20240131246060"},
    {"Midnight", 1706745600, "UTC", "dcpmm-stats-20240201010101"},
    {"YearsEnd", 1704067199, "UTC", "dcpmm-stats-20231231246060"},
    {"YearsBegin", 1704067200, "UTC", "dcpmm-stats-20240101010101"},
    {"LeapDay", 1709210096, "UTC", "dcpmm-stats-20240229133557"},
    {"FirstSecond", 0, "UTC", "dcpmm-stats-19700101010101"},
    {"EastOfGreenwich", 1704067199, "EST-5", "dcpmm-stats-20240101056060"},
    {"WestOfGreenwich", 1704067200, "WST+5:30", "dcpmm-stats-20231231193101"},
};

INSTANTIATE_TEST_SUITE_P(Dcpmm, Moments, testing::ValuesIn(kMoments), NameOf<Moment>);

// The reads of nodes before the first access to a register, without their results.
std::vector<std::string> Discovery(const StandinRun &run) {
  std::vector<std::string> reads;
  for (const std::string &call : run.calls) {
    if (call.find(kConfigRegister) != call.npos || call.starts_with("sleep")) break;
    if (call.find("hardware_") != call.npos) reads.push_back(call.substr(0, call.find(" = ")));
  }
  return reads;
}

TEST(DcpmmCalls, DiscoveryReadsEveryFunctionInListOrder) {
  StandinHost host = MemoryHost(kOneSocket);
  host.AddList("hardware_pci_seg_bus", {0}, {100, 0});
  host.AddList("hardware_pci_seg_bus_slot", {0, 100}, {13, 10});
  host.AddList("hardware_pci_seg_bus_slot_func", {0, 100, 13}, {});
  host.AddList("hardware_pci_seg_bus_slot_func", {0, 100, 10}, {6, 2});
  EXPECT_EQ(Discovery(RunProfile(host).run),
            Lines("NODAL_Get(hardware_cpu_cpuList, [0], 200)\n"
                  "NODAL_GetInstanceListAlloc(hardware_nvd_dimm, [])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg, [])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus, [0])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot, [0,100])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot_func, [0,100,13])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot_func, [0,100,10])\n"
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigHeader, [0,100,10,6], 164)\n"
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigHeader, [0,100,10,2], 164)\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot, [0,0])\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot_func, [0,0,0])\n"
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigHeader, [0,0,0,0], 164)\n"
                  "NODAL_GetInstanceListAlloc(hardware_pci_seg_bus_slot_func, [0,0,31])\n"
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigHeader, [0,0,31,0], 164)\n"
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigHeader, [0,0,31,2], 164)\n"));
}

// A call and the calls around it: `before` calls before it and `after` calls after it, without the numbers of the
// lists. Returns all calls of the run if it has no such call.
std::vector<std::string> CallsAround(const StandinRun &run, size_t before, const std::string &call, size_t after) {
  const auto found = std::find(run.calls.begin(), run.calls.end(), call);
  if (found == run.calls.end() || found - run.calls.begin() < static_cast<ptrdiff_t>(before) ||
      run.calls.end() - found <= static_cast<ptrdiff_t>(after)) {
    return run.calls;
  }
  std::vector<std::string> calls(found - static_cast<ptrdiff_t>(before), found + 1 + static_cast<ptrdiff_t>(after));
  for (std::string &text : calls) {
    const size_t list = text.find("list");
    if (list != text.npos) text.erase(list + 4, text.find_first_not_of("0123456789", list + 4) - list - 4);
  }
  return calls;
}

TEST(DcpmmCalls, OneWrite) {
  const std::string write =
      "NODAL_Set(hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, [0,100,10,2,4,228], [4194531], null, 0) = 0";
  EXPECT_EQ(CallsAround(RunProfile(MemoryHost(kOneSocket)).run, 9, write, 2),
            (std::vector<std::string>{
                "NODAL_ParamListCreate(1, 1) = list",
                "NODAL_ParamListCreate(0, 1) = list",
                "NODAL_ParamListAddInt(list, 0) = 0",
                "NODAL_ParamListAddInt(list, 100) = 0",
                "NODAL_ParamListAddInt(list, 10) = 0",
                "NODAL_ParamListAddInt(list, 2) = 0",
                "NODAL_ParamListAddInt(list, 4) = 0",
                "NODAL_ParamListAddInt(list, 228) = 0",
                "NODAL_ParamListAddInt(list, 4194531) = 0",
                write,
                "NODAL_ParamListDestroy(list)",
                "NODAL_ParamListDestroy(list)",
            }));
}

TEST(DcpmmCalls, OneRead) {
  EXPECT_EQ(
      CallsAround(RunProfile(MemoryHost(kOneSocket)).run, 7,
                  "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, [0,100,8,0,4,528], 4) = 0", 4),
      Lines("NODAL_ParamListCreate(1, 1) = list\n"
            "NODAL_ParamListAddInt(list, 0) = 0\n"
            "NODAL_ParamListAddInt(list, 100) = 0\n"
            "NODAL_ParamListAddInt(list, 8) = 0\n"
            "NODAL_ParamListAddInt(list, 0) = 0\n"
            "NODAL_ParamListAddInt(list, 4) = 0\n"
            "NODAL_ParamListAddInt(list, 528) = 0\n"
            "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, [0,100,8,0,4,528], 4) = 0\n"
            "NODAL_ParamListRemoveLastParam(list) = 0\n"
            "NODAL_ParamListAddInt(list, 532) = 0\n"
            "NODAL_Get(hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr, [0,100,8,0,4,532], 4) = 0\n"
            "NODAL_ParamListDestroy(list)\n"));
}

TEST(DcpmmCalls, EveryRegisterOfAChannelAndOfAMesh) {
  const StandinRun run = RunProfile(MemoryHost(kOneSocket), {"-t", "9"}).run;
  std::vector<std::string> channel, mesh;
  for (std::string call : StepCalls(run)) {
    const size_t node = call.find(kConfigRegister);
    if (node != call.npos) call.erase(node, std::string(kConfigRegister).size());
    if (call.starts_with("sleep") || call.find("[0,100,13,2,") != call.npos) channel.push_back(call);
    if (call.starts_with("sleep") || call.find("[0,100,9,0,") != call.npos) mesh.push_back(call);
  }
  EXPECT_EQ(channel, Lines("NODAL_Set(, [0,100,13,2,4,244], [256], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,228], [4194531], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,216], [4194535], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,224], [4197380], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,220], [4195076], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,244], [258], null, 0) = 0\n"
                           "NODAL_Set(, [0,100,13,2,4,244], [0], null, 0) = 0\n"
                           "sleep(9)\n"
                           "NODAL_Set(, [0,100,13,2,4,244], [256], null, 0) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,184], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,188], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,160], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,164], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,176], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,180], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,168], 4) = 0\n"
                           "NODAL_Get(, [0,100,13,2,4,172], 4) = 0\n"));
  EXPECT_EQ(mesh, Lines("NODAL_Set(, [0,100,9,0,4,600], [256], null, 0) = 0\n"
                        "NODAL_Set(, [0,100,9,0,4,568], [4194604], null, 0) = 0\n"
                        "NODAL_Set(, [0,100,9,0,4,560], [4194860], null, 0) = 0\n"
                        "NODAL_Set(, [0,100,9,0,4,576], [4227128], null, 0) = 0\n"
                        "NODAL_Set(, [0,100,9,0,4,600], [258], null, 0) = 0\n"
                        "NODAL_Set(, [0,100,9,0,4,600], [0], null, 0) = 0\n"
                        "sleep(9)\n"
                        "NODAL_Set(, [0,100,9,0,4,600], [256], null, 0) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,528], 4) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,532], 4) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,520], 4) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,524], 4) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,536], 4) = 0\n"
                        "NODAL_Get(, [0,100,9,0,4,540], 4) = 0\n"));
}

TEST(DcpmmCalls, TheClockIsReadForAFileOnly) {
  const auto clockCalls = [](const StandinRun &run) {
    return std::count_if(run.calls.begin(), run.calls.end(), [](const std::string &call) {
      return call.starts_with("time(") || call.starts_with("localtime(");
    });
  };
  EXPECT_EQ(clockCalls(RunProfile(MemoryHost(kOneSocket)).run), 2);
  EXPECT_EQ(clockCalls(RunProfile(MemoryHost(kOneSocket), {"-q"}).run), 0);
}

// A count is the low half ORed with the low 16 bits of the high half.
struct Halves {
  const char *name;
  uint32_t low;
  uint32_t high;
  const char *count;
};

void PrintTo(const Halves &halves, std::ostream *stream) { *stream << halves.name; }

class Combined : public testing::TestWithParam<Halves> {
 protected:
  // One counter of the channel at 12.6 and one of the mesh at 9.0 have these halves; all other counters are 0.
  static StandinHost Host() {
    const uint64_t amount = uint64_t{GetParam().high} << 32 | GetParam().low;
    StandinHost host = MemoryHost(kOneSocket);
    for (const auto &[slot, function] :
         {std::pair{10, 2}, {10, 6}, {11, 2}, {12, 2}, {12, 6}, {13, 2}, {8, 0}, {9, 0}}) {
      Unit unit = {0, 100, slot, function};
      if (slot == 12 && function == 6) unit.traffic = {{0x0c04, {amount}}};
      if (slot == 9) unit.traffic = {{0x8038, {amount}}};
      host.Add(unit);
    }
    return host;
  }
};

TEST_P(Combined, InAFile) {
  const Profile profile = RunProfile(Host());
  ASSERT_TRUE(profile.files.contains(kFileName)) << profile.run;
  const std::vector<std::string> lines = Lines(profile.files.at(kFileName));
  const std::string count = GetParam().count;
  const auto has = [&lines](const std::string &line) { return std::count(lines.begin(), lines.end(), line); };
  EXPECT_EQ(has("  0 \t IMC-1 \t Channel-1 \t UNC_M_CAS_COUNT_WR \t \t \t " + count), 1);
  EXPECT_EQ(has("  0 \t M2M-IMC-1 \t\t UNC_M2M_IMC_WRITES_NI \t " + count), 1);
  EXPECT_EQ(has("  0 \t IMC-1 \t Channel-1 \t UNC_M_CAS_COUNT_RD \t \t \t 0"), 1);
}

TEST_P(Combined, InCsv) {
  const std::vector<std::string> lines = Lines(RunProfile(Host(), {"-q"}).run.outcome.output);
  const std::string count = GetParam().count;
  const auto has = [&lines](const std::string &line) { return std::count(lines.begin(), lines.end(), line); };
  EXPECT_EQ(has("0,IMC-1,Channel-1,UNC_M_CAS_COUNT_WR," + count), 1);
  EXPECT_EQ(has("0,M2M-IMC-1,N/A,UNC_M2M_IMC_WRITES_NI," + count), 1);
  EXPECT_EQ(has("0,IMC-1,Channel-1,UNC_M_CAS_COUNT_RD,0"), 1);
}

constexpr Halves kHalves[] = {
    {"HighOverLow", 0x5, 0x00010002, "7"},
    {"MaskedAway", 0x5, 0xffff0000, "5"},
    {"WholeMask", 0, 0xffffffff, "65535"},
    {"SameBits", 0xff, 0x0f, "255"},
    {"TopBit", 0x80000000, 0, "2147483648"},
    {"TopBitAndHigh", 0x80000000, 0x80008000, "2147516416"},
    {"AllOnes", 0xffffffff, 0xffffffff, "4294967295"},
};

INSTANTIATE_TEST_SUITE_P(Dcpmm, Combined, testing::ValuesIn(kHalves), NameOf<Halves>);

// PCI functions that count as a socket, and functions that do not.
struct Function {
  const char *name;
  int64_t slot;
  int64_t function;
  uint16_t vendor;
  uint16_t device;
  bool isSocket;
};

void PrintTo(const Function &function, std::ostream *stream) { *stream << function.name; }

class Functions : public testing::TestWithParam<Function> {};

TEST_P(Functions, MakeASocketOrNot) {
  const Function &function = GetParam();
  StandinHost host = MemoryHost(kOneSocket);
  host.AddList("hardware_pci_seg_bus_slot", {0, 100}, {function.slot});
  host.AddList("hardware_pci_seg_bus_slot_func", {0, 100, function.slot}, {function.function});
  host.AddBytes(kConfigHeader, {0, 100, function.slot, function.function},
                ConfigHeader(function.vendor, function.device));
  const std::vector<Step> steps = Steps(function.isSocket ? kOneSocket : std::vector<Socket>{});
  const Profile profile = RunProfile(host, {"-q"});
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, Csv(steps));
  EXPECT_EQ(StepCalls(profile.run), Calls(steps));
}

constexpr Function kFunctions[] = {
    {"TheControllers", 10, 2, 0x8086, 0x2042, true},  {"OtherFunction", 10, 3, 0x8086, 0x2042, false},
    {"OtherSlot", 11, 2, 0x8086, 0x2042, false},      {"OtherVendor", 10, 2, 0x1022, 0x2042, false},
    {"OtherDevice", 10, 2, 0x8086, 0x2046, false},    {"SwappedBytes", 10, 2, 0x8680, 0x4220, false},
    {"SwappedNumbers", 10, 2, 0x2042, 0x8086, false}, {"SlotBeyondAByte", 266, 2, 0x8086, 0x2042, false},
    {"NoDevice", 10, 2, 0xffff, 0xffff, false},
};

INSTANTIATE_TEST_SUITE_P(Dcpmm, Functions, testing::ValuesIn(kFunctions), NameOf<Function>);

TEST(DcpmmDiscovery, EmptyListsAreNoFailure) {
  for (const auto &[node, arguments] :
       std::vector<std::pair<std::string, std::vector<Instance>>>{{"hardware_pci_seg", {}},
                                                                  {"hardware_pci_seg_bus", {0}},
                                                                  {"hardware_pci_seg_bus_slot", {0, 100}},
                                                                  {"hardware_pci_seg_bus_slot_func", {0, 100, 10}}}) {
    const Profile profile = RunProfile(MemoryHost(kOneSocket).AddList(node, arguments, {}));
    ExpectSound(profile);
    EXPECT_EQ(profile.run.outcome.output, kAnnouncement) << node;
    EXPECT_EQ(profile.files, (Files{{kFileName, WholeFile(Steps({}))}})) << node;
  }
}

// Options and their effect. The rows show the number of iterations; the calls of sleep() show the interval.
struct Given {
  const char *name;
  const char *options;
  int iterations;
  const char *interval;
};

void PrintTo(const Given &given, std::ostream *stream) { *stream << given.name; }

class GivenOptions : public testing::TestWithParam<Given> {};

TEST_P(GivenOptions, Count) {
  const Profile profile = RunProfile(MemoryHost(kOneSocket), Words(GetParam().options + std::string(" -q")));
  ExpectSound(profile);
  EXPECT_EQ(profile.run.outcome.output, Csv(Steps(kOneSocket, GetParam().iterations)));
  std::vector<std::string> sleeps = StepCalls(profile.run);
  std::erase_if(sleeps, [](const std::string &call) { return !call.starts_with("sleep"); });
  EXPECT_EQ(sleeps, std::vector<std::string>(static_cast<size_t>(GetParam().iterations),
                                             std::string("sleep(") + GetParam().interval + ")"));
}

constexpr Given kGivenOptions[] = {
    Given{"None", "", 1, "1"},
    Given{"Short", "-t 3 -i 2", 2, "3"},
    Given{"OneWord", "-t3 -i2", 2, "3"},
    Given{"Joined", "-qi2", 2, "1"},
    Given{"Long", "--time 3 --iterations 2", 2, "3"},
    Given{"LongInOneWord", "--time=3 --iterations=2", 2, "3"},
    Given{"StartOfALongOption", "--iter 2 --t=4", 2, "4"},
    Given{"TheLastCounts", "-t 8 -i 4 -t 5 -i 2", 2, "5"},
    Given{"StartsWithANumber", "-t 5x -i ' 2s'", 2, "5"},
    Given{"Decimal", "-t 010 -i +2", 2, "10"},
    // Numbers are truncated to 32 bits.
    Given{"LowBitsOne", "-t 4294967297 -i 4294967297", 1, "1"},
    Given{"TheLargest", "-t 2147483647", 1, "2147483647"},
    Given{"Words", "lunch -t 2 time", 1, "2"},
};

INSTANTIATE_TEST_SUITE_P(Dcpmm, GivenOptions, testing::ValuesIn(kGivenOptions), NameOf<Given>);

class Refused : public testing::TestWithParam<ReportCase> {};

// Expects an error before any register is accessed. No file is left behind.
TEST_P(Refused, AnswersAs) {
  const ReportCase &expected = GetParam();
  const Profile profile = RunProfile(expected.host(), Words(expected.arguments.JoinedBy(" ")));
  EXPECT_EQ(profile.run.outcome.output, expected.output.JoinedBy(""));
  EXPECT_EQ(profile.run.outcome.errors, expected.errors.JoinedBy(""));
  EXPECT_EQ(profile.run.outcome.exitStatus, expected.exitStatus);
  EXPECT_EQ(ListErrors(profile.run), "") << profile.run;
  EXPECT_EQ(profile.files, Files());
  EXPECT_EQ(StepCalls(profile.run), std::vector<std::string>());
}

constexpr char kInvalidOption[] = "\n Invalid option\n";

StandinHost OneSocketHost() { return MemoryHost(kOneSocket); }

constexpr ReportCase BadOptions(const char *name, const Text &options, const char *output, const Text &errors) {
  return {name, OneSocketHost, options, output, errors, 1};
}

constexpr ReportCase BadTime(const char *name, const char *text) {
  return BadOptions(name, {"-t", *text == '\0' ? "''" : text}, "",
                    {"\nInvalid Time interval ", text, ", must be > 0\n"});
}

constexpr ReportCase BadIterations(const char *name, const char *text) {
  return BadOptions(name, {"-i", *text == '\0' ? "''" : text}, "", {"\nInvalid Iterations ", text, ", must be > 0\n"});
}

constexpr ReportCase kDcpmmOptionsCases[] = {
    BadTime("TimeZero", "0"),
    BadTime("TimeNegative", "-3"),
    BadTime("TimeNotANumber", "abc"),
    BadTime("TimeEmpty", ""),
    BadTime("TimeLowBitsZero", "4294967296"),
    BadTime("TimeLowBitsNegative", "2147483648"),
    BadIterations("IterationsZero", "0"),
    BadIterations("IterationsNegative", "-3"),
    BadIterations("IterationsNotANumber", "abc"),
    BadIterations("IterationsEmpty", ""),
    BadIterations("IterationsLowBitsZero", "-4294967296"),
    BadOptions("ZeroIsNotMended", "-t 0 -t 1", "", "\nInvalid Time interval 0, must be > 0\n"),
    BadOptions("FirstErrorFirst", "-i -1 -x -t 0", "", "\nInvalid Iterations -1, must be > 0\n"),
    BadOptions("UnknownBeforeZero", "-x -t 0", kInvalidOption, ""),
    BadOptions("UnknownShort", "-x", kInvalidOption, ""),
    BadOptions("UnknownLong", "--lunch", kInvalidOption, ""),
    BadOptions("AmbiguousOrOfOthers", "--cSelect=IMC", kInvalidOption, ""),
    BadOptions("ColumnSelection", "-s IMC", kInvalidOption, ""),
    BadOptions("Unit", "-q -u mb", kInvalidOption, ""),
    BadOptions("Help", "-h", kInvalidOption, ""),
    BadOptions("CacheTooLate", "-c /host.cache", kInvalidOption, ""),
    BadOptions("ArgumentOfAFlag", "--csvMode=yes", kInvalidOption, ""),
    BadOptions("TimeWithoutAnArgument", "-q -t", kInvalidOption, ""),
    BadOptions("IterationsWithoutAnArgument", "--iterations", kInvalidOption, ""),
};

INSTANTIATE_TEST_SUITE_P(DcpmmOptions, Refused, testing::ValuesIn(kDcpmmOptionsCases), NameOf<ReportCase>);

constexpr char kNoModules[] =
    "\nNO AEP DIMMS IN THE PLATFORM.\n\nProfiling is not supported in NON-AEP platforms... Exiting\n";

StandinHost WithModel(uint8_t model) {
  return MemoryHost(kOneSocket).AddBytes("hardware_cpu_cpuList", {0}, Processor(model));
}

StandinHost WithoutModules() { return MemoryHost(kOneSocket).AddList("hardware_nvd_dimm", {}, {}); }

constexpr ReportCase kDcpmmMachinesCases[] = {
    {"OtherModel", [] { return WithModel(86); }, "", "\nProfiling not supported for this CPU Model: 86\n", "", 1},
    {"ModelZero", [] { return WithModel(0); }, "-q", "\nProfiling not supported for this CPU Model: 0\n", "", 1},
    {"HighestModel", [] { return WithModel(255); }, "-v", "\nProfiling not supported for this CPU Model: 255\n", "", 1},
    {"ModelBeforeOptions", [] { return WithModel(84); }, "-x -t 0",
     "\nProfiling not supported for this CPU Model: 84\n", "", 1},
    {"NoModules", WithoutModules, "", kNoModules, "", 1},
    {"NoModulesInCsv", WithoutModules, "-q -v", kNoModules, "", 1},
    {"OptionsBeforeModules", WithoutModules, "-x", kInvalidOption, "", 1},
};

INSTANTIATE_TEST_SUITE_P(DcpmmMachines, Refused, testing::ValuesIn(kDcpmmMachinesCases), NameOf<ReportCase>);

// Cases in which even root cannot create the output file.
TEST(DcpmmFile, ThatIsADirectoryIsAnError) {
  const ScratchDirectory directory;
  std::filesystem::create_directory(directory.path() / kFileName);
  const StandinRun run = RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats", "-v"},
                                    {.directory = directory.path(), .timeZone = "UTC"});
  EXPECT_EQ(run.outcome.output,
            std::string(kAnnouncement) + "Cannot create output file " + kFileName + ": Is a directory\n");
  EXPECT_EQ(run.outcome.errors, "");
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(StepCalls(run), std::vector<std::string>());
  EXPECT_EQ(ListErrors(run), "");
}

TEST(DcpmmFile, InADirectoryThatTakesNoneIsAnError) {
  const StandinRun run =
      RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats"}, {.directory = "/proc", .timeZone = "UTC"});
  EXPECT_EQ(run.outcome.output,
            std::string(kAnnouncement) + "Cannot create output file " + kFileName + ": No such file or directory\n");
  EXPECT_EQ(run.outcome.errors, "");
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(StepCalls(run), std::vector<std::string>());
}

TEST(DcpmmFile, OnAFullDeviceIsAnError) {
  const ScratchDirectory directory;
  const dev_t full = makedev(1, 7);  // the device number of /dev/full
  if (mknod((directory.path() / kFileName).c_str(), S_IFCHR | 0600, full) != 0) GTEST_SKIP() << "cannot make a device";
  const StandinRun run =
      RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats"}, {.directory = directory.path(), .timeZone = "UTC"});
  EXPECT_TRUE(run.outcome.output.starts_with(kAnnouncement)) << run;
  EXPECT_TRUE(run.outcome.output.ends_with("No space left on device\n")) << run;
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(ListErrors(run), "");
}

// Root must not write through a link that somebody else put into the folder.
TEST(DcpmmFile, ThatIsALinkIsAnError) {
  const ScratchDirectory directory;
  const std::filesystem::path victim = directory.path() / "victim";
  std::ofstream(victim) << "precious";
  std::filesystem::create_symlink(victim, directory.path() / kFileName);
  const StandinRun run =
      RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats"}, {.directory = directory.path(), .timeZone = "UTC"});
  EXPECT_EQ(run.outcome.output, std::string(kAnnouncement) + "Cannot create output file " + kFileName +
                                    ": Too many levels of symbolic links\n");
  EXPECT_EQ(run.outcome.exitStatus, 1);
  EXPECT_EQ(std::filesystem::file_size(victim), 8u);
}

TEST(DcpmmCsv, ToAFullDeviceIsAnError) {
  const StandinRun run =
      RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats", "-q"}, {.output = OutputTo::kFullDevice});
  EXPECT_EQ(run.outcome.errors, "Couldn't write to standard output: No space left on device\n");
  EXPECT_EQ(run.outcome.exitStatus, 1);
}

TEST(DcpmmCsv, EndsWhenNobodyReadsAlong) {
  const StandinRun run = RunKestrel(MemoryHost(kOneSocket), {"-r", "dcpmm-stats", "-q", "-i", "5"},
                                    {.output = OutputTo::kClosedPipe, .timeZone = "UTC"});
  EXPECT_EQ(run.outcome.errors, "");
  EXPECT_EQ(run.outcome.exitStatus, 1);
  const auto sleeps = [](const std::string &call) { return call.starts_with("sleep("); };
  EXPECT_EQ(std::count_if(run.calls.begin(), run.calls.end(), sleeps), 1) << run;
}

}  // namespace
}  // namespace faults::dcpmm_stats
