// Processors and persistent-memory modules.
#include "platkit/linux/records/hardware_records.h"

#include "tests/linux/saved_host.h"

namespace platkit {
namespace {

using IDs = std::vector<int64_t>;
const std::string kCpuInfo = "proc/cpuinfo";
const std::string kModules = "sys/bus/nd/devices";

HVC_ReturnStatus Model(SavedHost &host, int64_t cpu, uint64_t &model) {
  CpuRecord record = {};
  const HVC_ReturnStatus status = host.ask().Get(nodes::hardware_cpu_cpuList, {cpu}, record);
  model = record.model;
  return status;
}

// Returns `cpuinfo` with the vendor Intel and family 6 for each processor: the library knows the models of this family.
std::string OfIntel(std::string_view cpuinfo) {
  const std::string lines = "vendor_id: GenuineIntel\ncpu family: 6\n";
  std::string text = lines + std::string(cpuinfo);
  for (size_t end = text.find("\n\n"); end != std::string::npos; end = text.find("\n\n", end + lines.size()))
    text.insert(end + 2, lines);
  return text;
}

// The model of processor 0 of a host with this cpuinfo. REQUIRES: `cpuinfo` contains processor 0.
uint64_t ModelOf(std::string_view cpuinfo) {
  SavedHost host;
  host.Write(kCpuInfo, OfIntel(cpuinfo));
  uint64_t model = 0;
  EXPECT_EQ(Model(host, 0, model), HVC_OK) << cpuinfo;
  return model;
}

HVC_ReturnStatus StatusOf(std::string_view cpuinfo) {
  SavedHost host;
  host.Write(kCpuInfo, OfIntel(cpuinfo));
  uint64_t model = 0;
  return Model(host, 0, model);
}

TEST(ProcessorRecord, TheModelIsOfTheProcessorAskedFor) {
  SavedHost host("persistent-memory.host");
  uint64_t model = 0;
  EXPECT_EQ(Model(host, 0, model), HVC_OK);
  EXPECT_EQ(model, 85u);
  EXPECT_EQ(Model(host, 1, model), HVC_OK);
  EXPECT_EQ(model, 106u);
  for (const int64_t absent : {int64_t{2}, int64_t{10}, int64_t{-1}, INT64_MAX, INT64_MIN}) {
    EXPECT_EQ(Model(host, absent, model), HVC_NOT_FOUND) << absent;
  }
}

TEST(ProcessorRecord, TheRestOfTheRecordIsZero) {
  SavedHost host("persistent-memory.host");
  CpuRecord record;
  std::fill_n(reinterpret_cast<char *>(&record), sizeof record, '\xff');
  ASSERT_EQ(host.ask().Get(nodes::hardware_cpu_cpuList, {0}, record), HVC_OK);
  std::string expected(200, '\0');
  expected[1] = 85;
  EXPECT_EQ(std::string(reinterpret_cast<char *>(&record), sizeof record), expected);
}

TEST(ProcessorRecord, LinesMayBeUnknownMissingReorderedAndRepeated) {
  EXPECT_EQ(ModelOf("processor: 0\nmodel: 0\n"), 0u);
  EXPECT_EQ(ModelOf("processor: 0\nmodel: 255"), 255u) << "ended or not";
  EXPECT_EQ(ModelOf("model\t\t: 7\nnew line\n:\nprocessor\t: 0\n\n"), 7u);
  EXPECT_EQ(ModelOf("processor: 0\nmodel: 7\nmodel: 8\nprocessor: 1\n"), 7u) << "the first line counts";
  EXPECT_EQ(ModelOf("processor: 0\nmodel name: 9\ncpu model: 9\nModel: 9\nmodel: 7\n"), 7u);
  EXPECT_EQ(ModelOf("processor: 1\nmodel: 1\n\n\nprocessor: 0\nmodel: 7\n"), 7u) << "in any order";
  EXPECT_EQ(ModelOf("processor: 0\nmodel: 7\n\nprocessor: 0\nmodel: 8\n"), 7u);
  EXPECT_EQ(ModelOf("processor: 0\nflags: " + std::string(100000, 'x') + "\nmodel: 7\n"), 7u);
  EXPECT_EQ(ModelOf("Hardware: board\n\nprocessor: 0\nmodel: 7\n \t\nmodel: 8\n"), 7u);
}

TEST(ProcessorRecord, OtherArchitecturesHaveNoModelNumber) {
  EXPECT_EQ(StatusOf("processor\t: 0\nBogoMIPS\t: 50.00\nCPU implementer\t: 0x41\nCPU part\t: 0xd0c\n\n"),
            HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("processor\t: 0\nmodel name\t: ARMv7 Processor rev 4 (v7l)\n\nHardware\t: BCM2835\n"),
            HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("processor\t: 0\ncpu\t\t: POWER9\n\ntimebase\t: 512000000\nmodel\t\t: 8335-GTH\n"), HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("vendor_id: IBM/S390\nprocessor 0: version = FF,  machine = 8561\n\ncpu number: 0\n"),
            HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("processor\t: 0\ncpu model\t\t: MIPS 24Kc V7.4\n"), HVC_NOT_FOUND);
}

TEST(ProcessorRecord, Garbage) {
  for (const std::string &bad :
       {std::string("x"), std::string("85x"), std::string("0x55"), std::string("-1"), std::string("256"), std::string(),
        std::string("99999999999999999999"), std::string("8 5"), std::string("85\0", 3)}) {
    EXPECT_EQ(StatusOf("processor: 0\nmodel: " + bad + "\n"), HVC_IO_ERROR) << bad;
    EXPECT_EQ(StatusOf("processor: " + (bad == "256" ? "x" : bad) + "\nmodel: 85\n"), HVC_NOT_FOUND) << bad;
  }
  EXPECT_EQ(StatusOf(""), HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("model: 85\n"), HVC_NOT_FOUND);
  EXPECT_EQ(StatusOf("processor: 0\n\nmodel: 85\n"), HVC_NOT_FOUND) << "a model of no processor";
  EXPECT_EQ(StatusOf(std::string("\0\xff\n:\n ", 6)), HVC_NOT_FOUND);
}

TEST(ProcessorRecord, AFileThatCannotBeRead) {
  SavedHost host("persistent-memory.host");
  uint64_t model = 0;
  host.Forbid(kCpuInfo);
  {
    OrdinaryUser user;
    EXPECT_EQ(Model(host, 0, model), HVC_NO_PERMISSION);
  }
  host.Remove(kCpuInfo);
  EXPECT_EQ(Model(host, 0, model), HVC_NOT_FOUND);
  host.MakeFolder(kCpuInfo);
  EXPECT_EQ(Model(host, 0, model), HVC_IO_ERROR);
}

// --- Persistent-memory modules

IDs Modules(SavedHost &host) {
  IDs modules;
  EXPECT_EQ(host.ask().List(nodes::hardware_nvd_dimm, {}, modules), HVC_OK);
  return modules;
}

TEST(NvdimmList, ModulesAreListedByNumber) {
  SavedHost host("persistent-memory.host");
  EXPECT_EQ(Modules(host), (IDs{0, 1, 2, 10}));
  host.Remove(kModules + "/nmem1");
  EXPECT_EQ(Modules(host), (IDs{0, 2, 10}));
}

TEST(NvdimmList, AHostWithoutTheBusHasNone) {
  SavedHost host("v2.host");
  EXPECT_EQ(Modules(host), IDs{});
  host.MakeFolder(kModules);
  EXPECT_EQ(Modules(host), IDs{});
}

TEST(NvdimmList, OtherNamesAreNoModules) {
  SavedHost host;
  for (const char *name :
       {"nmem", "nmem-1", "nmem1x", "nmem 1", "nmem+1", "nmem07", "nmem4294967296", "Nmem3", "xnmem3"})
    host.MakeFolder(kModules + "/" + name);
  host.MakeFolder(kModules + "/nmem4294967295");
  host.MakeLink(kModules + "/nmem5", "../../../devices/nmem5");
  EXPECT_EQ(Modules(host), (IDs{5, 4294967295}));
}

TEST(NvdimmList, AFolderThatCannotBeRead) {
  SavedHost host("persistent-memory.host");
  host.Forbid(kModules);
  OrdinaryUser user;
  IDs modules;
  EXPECT_EQ(host.ask().List(nodes::hardware_nvd_dimm, {}, modules), HVC_NO_PERMISSION);
}

}  // namespace
}  // namespace platkit
