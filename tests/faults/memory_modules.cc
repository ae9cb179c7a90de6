#include "tests/faults/memory_modules.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <span>

#include "tests/support/scratch.h"

namespace faults {

using testing_support::Instance;
using testing_support::StandinHost;
using testing_support::Unit;

namespace {

struct Event {
  const char *name;
  uint32_t value;
  int controlRegister;
  const char *counter;
  int countRegister;
};

// The events of each kind of unit, in the order of programming and reading.
constexpr Event kChannelEvents[] = {
    {"RPQ_EVENT", 0x004000e3, 0xe4, "UNC_M_PMM_RPQ_INSERTS", 0xb8},
    {"WPQ_EVENT", 0x004000e7, 0xd8, "UNC_M_PMM_WPQ_INSERTS", 0xa0},
    {"CAS_COUNT_WR_EVENT", 0x00400c04, 0xe0, "UNC_M_CAS_COUNT_WR", 0xb0},
    {"CAS_COUNT_RD_EVENT", 0x00400304, 0xdc, "UNC_M_CAS_COUNT_RD", 0xa8},
};
constexpr Event kMeshEvents[] = {
    {"M2M_TAG_CLEAN_EVENT", 0x0040012c, 0x238, "UNC_M2M_TAG_HIT_NM_RD_HIT_CLEAN", 0x210},
    {"M2M_TAG_DIRTY_EVENT", 0x0040022c, 0x230, "UNC_M2M_TAG_HIT_NM_RD_HIT_DIRTY", 0x208},
    {"M2M_WRITE_NI_EVENT", 0x00408038, 0x240, "UNC_M2M_IMC_WRITES_NI", 0x218},
};

struct Controller {
  int64_t slot;
  int64_t function;
  const char *name;
  const char *channel;
  const char *inFile;  // between the socket and the counter
  const char *beforeCount;

  bool IsMesh() const { return slot < 10; }
  const char *Kind() const { return IsMesh() ? "M2M" : "IMC"; }
  int controlRegister() const { return IsMesh() ? 0x258 : 0xf4; }
  std::span<const Event> events() const {
    return IsMesh() ? std::span<const Event>(kMeshEvents) : std::span<const Event>(kChannelEvents);
  }
};

constexpr Controller kControllers[] = {
    {10, 2, "IMC-0", "Channel-0", " \t IMC-0 \t Channel-0 \t ", " \t \t \t "},
    {10, 6, "IMC-0", "Channel-1", " \t IMC-0 \t Channel-1 \t ", " \t \t \t "},
    {11, 2, "IMC-0", "Channel-2", " \t IMC-0 \t Channel-2 \t ", " \t \t \t "},
    {12, 2, "IMC-1", "Channel-0", " \t IMC-1 \t Channel-0 \t ", " \t \t \t "},
    {12, 6, "IMC-1", "Channel-1", " \t IMC-1 \t Channel-1 \t ", " \t \t \t "},
    {13, 2, "IMC-1", "Channel-2", " \t IMC-1 \t Channel-2 \t ", " \t \t \t "},
    {8, 0, "M2M-IMC-0", "N/A", " \t M2M-IMC-0 \t\t ", " \t "},
    {9, 0, "M2M-IMC-1", "N/A", " \t M2M-IMC-1 \t\t ", " \t "},
};

const std::string kRule = "\n" + std::string(79, '=') + "\n";

// The number of events in a period. All arguments count from 0.
uint64_t Amount(size_t socket, size_t controller, size_t event, size_t period) {
  return 10000 * (socket + 1) + 1000 * controller + 100 * event + period + 1;
}

// Returns the index of the first socket on a bus with this number. The report shows it for all sockets on such buses.
size_t ShownNumber(const std::vector<Socket> &sockets, int64_t bus) {
  const auto isOnBus = [bus](const Socket &socket) { return socket.bus == bus; };
  return static_cast<size_t>(std::find_if(sockets.begin(), sockets.end(), isOnBus) - sockets.begin());
}

std::string Access(const Socket &socket, const Controller &controller, int offset) {
  std::string text = kConfigRegister;
  text += ", [";
  for (const int64_t number : {socket.segment, socket.bus, controller.slot, controller.function, int64_t{4}})
    text += std::to_string(number) + ",";
  return text + std::to_string(offset) + "], ";
}

Step Write(const Socket &socket, const Controller &controller, int offset, uint32_t value, const std::string &failure) {
  return {
      .kind = Step::kWrite,
      .calls = {"NODAL_Set(" + Access(socket, controller, offset) + "[" + std::to_string(value) + "], null, 0) = 0"},
      .failure = failure};
}

Step Freeze(const Socket &socket, const Controller &controller) {
  return Write(socket, controller, controller.controlRegister(), 0x100,
               std::string("kestrelDCPMMFreezeUnit: Error in ") + controller.Kind() + " Unit Freeze\n");
}

void AddProgramming(std::vector<Step> &steps, const Socket &socket) {
  for (const Controller &controller : kControllers)
    steps.push_back(Freeze(socket, controller));
  for (const Controller &controller : kControllers) {
    for (const Event &event : controller.events()) {
      steps.push_back(Write(socket, controller, event.controlRegister, event.value,
                            std::string("kestrelDCPMMProgramAllUnits: Error programming ") + event.name + "\n"));
    }
  }
}

void AddReset(std::vector<Step> &steps, const Socket &socket) {
  for (const Controller &controller : kControllers) {
    const std::string step = "kestrelDCPMMResetUnit: Error ";
    steps.push_back(Write(socket, controller, controller.controlRegister(), 0x102,
                          step + (controller.IsMesh() ? "in M2M Unit Reset\n" : "IMC Unit Reset\n")));
    steps.push_back(Write(socket, controller, controller.controlRegister(), 0,
                          step + "in " + controller.Kind() + " Unit Unfreeze\n"));
  }
}

Step Read(const Socket &socket, const std::string &shown, const Controller &controller, const Event &event,
          const std::string &count) {
  return {.kind = Step::kRead,
          .calls = {"NODAL_Get(" + Access(socket, controller, event.countRegister) + "4) = 0",
                    "NODAL_Get(" + Access(socket, controller, event.countRegister + 4) + "4) = 0"},
          .failure = std::string("kestrelDCPMMReadAllCounters: Error reading ") + event.counter + "\n",
          .file = "\n  " + shown + controller.inFile + event.counter + controller.beforeCount + count,
          .row = shown + "," + controller.name + "," + controller.channel + "," + event.counter + "," + count + "\n"};
}

Step Trailer(int iteration) {
  return {.kind = Step::kTrailer, .file = kRule + "\nITERATION " + std::to_string(iteration) + " COMPLETED\n" + kRule};
}

void AddReading(std::vector<Step> &steps, const std::vector<Socket> &sockets, size_t number, size_t period) {
  const Socket &socket = sockets[number];
  const std::string shown = std::to_string(ShownNumber(sockets, socket.bus));
  for (size_t i = 0; i < std::size(kControllers); ++i) {
    const Controller &controller = kControllers[i];
    steps.push_back(Freeze(socket, controller));
    for (size_t j = 0; j < controller.events().size(); ++j) {
      const std::string count = std::to_string(Amount(number, i, j, period));
      steps.push_back(Read(socket, shown, controller, controller.events()[j], count));
    }
  }
}

void AddController(StandinHost &host, const std::vector<Socket> &sockets, size_t number, size_t controller) {
  const Controller &row = kControllers[controller];
  Unit unit = {sockets[number].segment, sockets[number].bus, row.slot, row.function};
  for (size_t event = 0; event < row.events().size(); ++event) {
    Unit::Traffic traffic = {.event = row.events()[event].value & 0xffff, .amounts = {}};
    for (size_t period = 0; period < 5; ++period)
      traffic.amounts.push_back(Amount(number, controller, event, period));
    unit.traffic.push_back(traffic);
  }
  host.Add(unit);
}

}  // namespace

std::string ConfigHeader(uint16_t vendor, uint16_t device) {
  std::string bytes(164, '\xee');
  const auto low = [](uint16_t number) { return static_cast<char>(number & 0xff); };
  bytes[0] = low(vendor);
  bytes[1] = low(static_cast<uint16_t>(vendor >> 8));
  bytes[2] = low(device);
  bytes[3] = low(static_cast<uint16_t>(device >> 8));
  return bytes;
}

std::string Processor(uint8_t model) {
  std::string bytes(200, '\xee');
  bytes[1] = static_cast<char>(model);
  return bytes;
}

StandinHost MemoryHost(const std::vector<Socket> &sockets) {
  StandinHost host;
  host.SetClock(kStart);
  host.AddBytes("hardware_cpu_cpuList", {0}, Processor(85));
  host.AddList("hardware_nvd_dimm", {}, {17});
  std::vector<Instance> segments;
  std::map<int64_t, std::vector<Instance>> buses;
  for (size_t number = 0; number < sockets.size(); ++number) {
    const auto &[segment, bus] = sockets[number];
    if (buses[segment].empty()) {
      segments.push_back(segment);
      buses[segment].push_back(0);
      host.AddList("hardware_pci_seg_bus_slot", {segment, 0}, {0, 31});
      host.AddList("hardware_pci_seg_bus_slot_func", {segment, 0, 0}, {0});
      host.AddBytes(kConfigHeader, {segment, 0, 0, 0}, ConfigHeader(0x8086, 0x2020));
      host.AddList("hardware_pci_seg_bus_slot_func", {segment, 0, 31}, {0, 2});
      host.AddBytes(kConfigHeader, {segment, 0, 31, 0}, ConfigHeader(0x8086, 0xa1c1));
      host.AddBytes(kConfigHeader, {segment, 0, 31, 2}, ConfigHeader(0x8086, 0x2042));
    }
    buses[segment].push_back(bus);
    host.AddList("hardware_pci_seg_bus_slot", {segment, bus}, {8, 9, 10, 11, 12, 13});
    for (const int64_t slot : {8, 9}) {
      host.AddList("hardware_pci_seg_bus_slot_func", {segment, bus, slot}, {0});
      host.AddBytes(kConfigHeader, {segment, bus, slot, 0}, ConfigHeader(0x8086, 0x2066));
    }
    for (const int64_t slot : {10, 11, 12, 13}) {
      host.AddList("hardware_pci_seg_bus_slot_func", {segment, bus, slot}, {2, 6});
      host.AddBytes(kConfigHeader, {segment, bus, slot, 2}, ConfigHeader(0x8086, 0x2042));
      host.AddBytes(kConfigHeader, {segment, bus, slot, 6}, ConfigHeader(0x8086, 0x2046));
    }
    for (size_t controller = 0; controller < std::size(kControllers); ++controller)
      AddController(host, sockets, number, controller);
  }
  host.AddList("hardware_pci_seg", {}, segments);
  for (const auto &[segment, instances] : buses)
    host.AddList("hardware_pci_seg_bus", {segment}, instances);
  return host;
}

std::vector<Step> Steps(const std::vector<Socket> &sockets, int iterations, int seconds) {
  std::vector<Step> steps;
  for (const Socket &socket : sockets)
    AddProgramming(steps, socket);
  for (int iteration = 1; iteration <= iterations; ++iteration) {
    for (const Socket &socket : sockets)
      AddReset(steps, socket);
    steps.push_back({.kind = Step::kSleep, .calls = {"sleep(" + std::to_string(seconds) + ")"}});
    for (size_t number = 0; number < sockets.size(); ++number)
      AddReading(steps, sockets, number, static_cast<size_t>(iteration - 1));
    steps.push_back(Trailer(iteration));
  }
  return steps;
}

std::string FileStart(int seconds) {
  return "\nTime Interval: " + std::to_string(seconds) + "\n" + kRule +
         "\nSOCKET \t IMC \t CHANNEL \t \t EVENT \t \t \t\tCOUNTS \t" + kRule;
}

std::string WholeFile(const std::vector<Step> &steps, int seconds) {
  std::string file = FileStart(seconds);
  for (const Step &step : steps)
    file += step.file;
  return file;
}

std::string Csv(const std::vector<Step> &steps) {
  std::string csv = kCsvHeader;
  for (const Step &step : steps)
    csv += step.row;
  return csv;
}

std::vector<std::string> Calls(const std::vector<Step> &steps) {
  std::vector<std::string> calls;
  for (const Step &step : steps)
    calls.insert(calls.end(), step.calls.begin(), step.calls.end());
  return calls;
}

Profile RunProfile(const StandinHost &host, const std::vector<std::string> &reportOptions,
                   const ProfileOptions &options) {
  const testing_support::ScratchDirectory directory;
  for (const auto &[name, contents] : options.files)
    testing_support::WriteFile(directory.File(name), contents);
  std::vector<std::string> arguments = {"-r", "dcpmm-stats"};
  arguments.insert(arguments.end(), reportOptions.begin(), reportOptions.end());

  Profile profile;
  profile.run = RunKestrel(host, arguments, {.directory = directory.path(), .timeZone = options.timeZone});
  for (const auto &entry : std::filesystem::directory_iterator(directory.path()))
    profile.files[entry.path().filename()] = testing_support::ReadFile(entry.path());
  return profile;
}

std::vector<std::string> StepCalls(const testing_support::StandinRun &run) {
  std::vector<std::string> calls = run.calls;
  std::erase_if(calls, [](const std::string &call) {
    return call.find(kConfigRegister) == call.npos && !call.starts_with("sleep");
  });
  return calls;
}

}  // namespace faults
