// Hosts with persistent-memory modules for dcpmm-stats, and the expected steps and output of a run.
#ifndef TESTS_FAULTS_MEMORY_MODULES_H
#define TESTS_FAULTS_MEMORY_MODULES_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/support/standin_host.h"

namespace faults {

constexpr char kConfigHeader[] = "hardware_pci_seg_bus_slot_func_pciConfigHeader";
constexpr char kConfigRegister[] = "hardware_pci_seg_bus_slot_func_pciConfigReg_size_addr";

// The last second of January 2024 in UTC, and the output file of a run that starts then.
constexpr int64_t kStart = 1706745599;
constexpr char kFileName[] = "dcpmm-stats-20240131246060";
constexpr char kAnnouncement[] = "Data output is being written to: dcpmm-stats-20240131246060\n";
constexpr char kCsvHeader[] = "Socket,IMC,Channel,Event,Counts\n";
constexpr char kDescriptions[] = R"(Description of report header labels:
              Socket: Socket Number
                 IMC: IMC/M2M
             Channel: Channel Number
               Event: Name of the Hardware Event
              Counts: Number of Counts
)";

// The PCI bus of a socket's memory controllers.
struct Socket {
  int64_t segment;
  int64_t bus;
};

// A host with modules and the supported processor model, whose clock starts at kStart. Each segment also has a bus 0
// without memory controllers.
testing_support::StandinHost MemoryHost(const std::vector<Socket> &sockets);

// The header of a PCI function.
std::string ConfigHeader(uint16_t vendor, uint16_t device);

// The record of a processor of this model.
std::string Processor(uint8_t model);

// One step of a run after the search for sockets.
struct Step {
  enum Kind { kWrite, kRead, kSleep, kTrailer };

  Kind kind;
  std::vector<std::string> calls = {};  // the accesses to registers and the calls of sleep, as in the log
  std::string failure = {};             // the last message, if a write or read fails
  std::string file = {};                // the text in the output file
  std::string row = {};                 // the text in CSV output
};

// The steps of a run over MemoryHost(sockets), whose counts all differ.
std::vector<Step> Steps(const std::vector<Socket> &sockets, int iterations = 1, int seconds = 1);

std::string FileStart(int seconds = 1);
std::string WholeFile(const std::vector<Step> &steps, int seconds = 1);
std::string Csv(const std::vector<Step> &steps);
std::vector<std::string> Calls(const std::vector<Step> &steps);

// A run in its own directory, and the files that it writes there.
struct Profile {
  testing_support::StandinRun run;
  std::map<std::string, std::string> files;  // contents by name
};

struct ProfileOptions {
  std::string timeZone = "UTC";
  std::map<std::string, std::string> files = {};  // existing before the run
};

Profile RunProfile(const testing_support::StandinHost &host, const std::vector<std::string> &reportOptions = {},
                   const ProfileOptions &options = {});

// The accesses to registers, and the calls of sleep.
std::vector<std::string> StepCalls(const testing_support::StandinRun &run);

}  // namespace faults

#endif  // TESTS_FAULTS_MEMORY_MODULES_H
