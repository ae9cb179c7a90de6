// dcpmm-stats over a saved host whose registers are files. The test checks its reads, and every byte that it writes.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "tests/linux/saved_host.h"
#include "tests/support/text.h"
#include "tests/tools/nodal/program.h"

namespace {

using platkit::SavedHost;

constexpr const char *kBuses[] = {"3a", "ae"};

// The units of a socket, in the order of the report.
struct Unit {
  const char *device;
  const char *name;
  const char *channel;
  bool isMesh;
};
constexpr Unit kUnits[] = {
    {"0a.2", "IMC-0", "Channel-0", false}, {"0a.6", "IMC-0", "Channel-1", false}, {"0b.2", "IMC-0", "Channel-2", false},
    {"0c.2", "IMC-1", "Channel-0", false}, {"0c.6", "IMC-1", "Channel-1", false}, {"0d.2", "IMC-1", "Channel-2", false},
    {"08.0", "M2M-IMC-0", "N/A", true},    {"09.0", "M2M-IMC-1", "N/A", true},
};

// The counters of a unit, by the register of the lower half, in the order of the report.
struct Counter {
  const char *name;
  size_t place;
};
constexpr Counter kChannelCounters[] = {{"UNC_M_PMM_RPQ_INSERTS", 0xB8},
                                        {"UNC_M_PMM_WPQ_INSERTS", 0xA0},
                                        {"UNC_M_CAS_COUNT_WR", 0xB0},
                                        {"UNC_M_CAS_COUNT_RD", 0xA8}};
constexpr Counter kMeshCounters[] = {{"UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN", 0x210},
                                     {"UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY", 0x208},
                                     {"UNC_M2M_IMC_WRITES_NI", 0x218}};

std::string ConfigOf(const char *bus, const Unit &unit) {
  return std::string("sys/bus/pci/devices/0000:") + bus + ":" + unit.device + "/config";
}

void Put(std::string &config, size_t place, uint32_t value) { std::memcpy(&config[place], &value, sizeof value); }

uint32_t Take(const std::string &config, size_t place) {
  uint32_t value = 0;
  std::memcpy(&value, &config[place], sizeof value);
  return value;
}

// A configuration space in which no two units have the same bytes.
std::string SpaceOf(size_t number) {
  std::string config;
  for (size_t i = 0; i < 4096; ++i)
    config += static_cast<char>(i * 7 + number * 31 + i / 256);
  return config;
}

// The configuration space after the profile: events in the control registers, counters frozen.
std::string Profiled(std::string config, const Unit &unit) {
  if (unit.isMesh) {
    Put(config, 0x230, 0x0040022C);
    Put(config, 0x238, 0x0040012C);
    Put(config, 0x240, 0x00408038);
    Put(config, 0x258, 0x100);
  } else {
    Put(config, 0xD8, 0x004000E7);
    Put(config, 0xDC, 0x00400304);
    Put(config, 0xE0, 0x00400C04);
    Put(config, 0xE4, 0x004000E3);
    Put(config, 0xF4, 0x100);
  }
  return config;
}

std::string RowsOf(size_t socket, const Unit &unit, const std::string &config) {
  std::string rows;
  const auto add = [&](const Counter &counter) {
    const uint32_t count = Take(config, counter.place) | (Take(config, counter.place + 4) & 0xFFFF);
    rows += std::to_string(socket) + "," + unit.name + "," + unit.channel + "," + counter.name + "," +
            std::to_string(count) + "\n";
  };
  if (unit.isMesh) {
    std::for_each(std::begin(kMeshCounters), std::end(kMeshCounters), add);
  } else {
    std::for_each(std::begin(kChannelCounters), std::end(kChannelCounters), add);
  }
  return rows;
}

class Profile : public testing::Test {
 protected:
  Profile() {
    ForEachUnit([&](size_t socket, const char *bus, const Unit &unit, const std::string &config) {
      AddDevice(bus, unit, config);
      rows_ += RowsOf(socket, unit, config);
    });
  }

  void AddDevice(const char *bus, const Unit &unit, const std::string &config) {
    const std::string folder = std::string("sys/bus/pci/devices/0000:") + bus + ":" + unit.device;
    const bool isController = std::string_view(unit.device) == "0a.2";
    host_.Write(folder + "/vendor", "0x8086\n");
    host_.Write(folder + "/device", isController ? "0x2042\n" : "0x2066\n");
    host_.Write(folder + "/config", config);
  }

  template <typename Visit>
  void ForEachUnit(Visit visit) {
    for (size_t socket = 0; socket < std::size(kBuses); ++socket) {
      for (size_t i = 0; i < std::size(kUnits); ++i)
        visit(socket, kBuses[socket], kUnits[i], SpaceOf(socket * std::size(kUnits) + i));
    }
  }

  testing_support::Outcome Run() {
    testing_support::Command command = {.program = KESTREL_PROGRAM,
                                        .arguments = {"-r", "dcpmm-stats", "-q", "-i", "2"},
                                        .environment = {{"ROOT_FOLDER", host_.Path("")}}};
    testing_support::Preload(command, ROOT_FOLDER_LIBRARY);
    return testing_support::Run(command);
  }

  SavedHost host_{"persistent-memory.host"};
  std::string rows_;  // of one iteration
};

TEST_F(Profile, ReadsTheCountersOfBothSockets) {
  const testing_support::Outcome outcome = Run();
  EXPECT_EQ(outcome.output, "Socket,IMC,Channel,Event,Counts\n" + rows_ + rows_);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(Profile, WritesTheRegistersOfTheCountersAndNothingElse) {
  const Unit other = {"0a.3", "", "", false};
  AddDevice("3a", other, SpaceOf(100));
  ASSERT_EQ(Run().exitStatus, 0);
  ForEachUnit([&](size_t, const char *bus, const Unit &unit, const std::string &config) {
    EXPECT_TRUE(host_.Read(ConfigOf(bus, unit)) == Profiled(config, unit)) << bus << ' ' << unit.device;
  });
  EXPECT_TRUE(host_.Read(ConfigOf("3a", other)) == SpaceOf(100));
}

TEST_F(Profile, EndsAtARegisterThatIsNotForTheUser) {
  const std::string header = SpaceOf(1).substr(0, 64);
  host_.Write(ConfigOf("3a", kUnits[1]), header);
  const testing_support::Outcome outcome = Run();
  EXPECT_EQ(outcome.output,
            "KestrelDCPMMProgramEvent: error fetching PCI information No permission\n"
            "kestrelDCPMMFreezeUnit: Error in IMC Unit Freeze\n");
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_TRUE(host_.Read(ConfigOf("3a", kUnits[1])) == header);
}

}  // namespace
