// Describes a host to the stand-in library and runs kestrel over it.
#ifndef TESTS_SUPPORT_STANDIN_HOST_H
#define TESTS_SUPPORT_STANDIN_HOST_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platkit/records.h"
#include "platkit/status.h"
#include "tests/support/process.h"

namespace testing_support {

// An instance argument, or an entry of a list.
struct Instance {
  template <std::integral Integer>
  Instance(Integer value) : written(std::to_string(value)) {}
  Instance(const char *text) : written('"' + std::string(text) + '"') {}
  Instance(std::nullptr_t) : written("null") {}  // a null text

  std::string written;
};

// A call that fails.
struct Fault {
  std::string operation = "*";
  std::string node = "*";
  unsigned call = 0;                      // the number of the matching call, from 1; 0: all of them
  HVC_ReturnStatus status = HVC_FAILURE;  // an error number for time and localtime
  bool answers = false;                   // the call fails, but returns its record or list
};

// A scheduler group with all its records.
struct Group {
  int64_t id = 0;
  std::string name = {};
  std::string tag = {};
  int64_t parent = -1;
  uint32_t flags = HVC_GROUP_CONTAINER;
  std::vector<Instance> children = {};
  GroupAllocRecord alloc = {};
  GroupCapacityRecord capacity = {};
  GroupMemoryStatsRecord memory = {};
};

// A unit of event counters at a PCI address.
struct Unit {
  struct Traffic {
    uint32_t event;                 // the low 16 bits of a counter's control register
    std::vector<uint64_t> amounts;  // in each period; the last one repeats
  };

  int64_t segment;
  int64_t bus;
  int64_t slot;
  int64_t function;
  std::vector<Traffic> traffic = {};
};

// The results that the stand-in returns. A read of a node that has no record or list here returns HVC_NOT_FOUND.
class StandinHost {
 public:
  template <typename Record>
  StandinHost &AddRecord(std::string_view node, const std::vector<Instance> &arguments, const Record &record) {
    static_assert(std::is_trivially_copyable_v<Record>);
    return AddBytes(node, arguments, {reinterpret_cast<const char *>(&record), sizeof record});
  }
  // Allows records that are shorter than the output of a read. The stand-in does not change the rest of the output.
  StandinHost &AllowShortRecords();
  StandinHost &AddBytes(std::string_view node, const std::vector<Instance> &arguments, std::string_view bytes);
  StandinHost &AddList(std::string_view node, const std::vector<Instance> &arguments,
                       const std::vector<Instance> &instances);
  StandinHost &Add(const Group &group);
  StandinHost &Add(const Unit &unit);
  // Starts the clock at this second. Time advances only while the program sleeps.
  StandinHost &SetClock(int64_t secondsSince1970);
  StandinHost &AddCache(std::string_view path);
  StandinHost &Fail(const Fault &fault);
  StandinHost &Signature(HVC_ReturnStatus status, std::string_view kernelBuild, std::string_view ownBuild);

  const std::string &script() const { return script_; }

 private:
  std::string script_;
};

// Copies the text into a field of fixed size. If the text fills the field, the field has no terminator.
template <size_t size>
void SetText(char (&field)[size], std::string_view text) {
  std::memset(field, 0, size);
  std::memcpy(field, text.data(), text.size() < size ? text.size() : size);
}

// A run of a program, with the times in its output masked.
struct StandinRun {
  Outcome outcome;
  std::vector<std::string> calls;  // the stand-in's log
};

struct RunOptions {
  std::string program = {};  // default: kestrel
  OutputTo output = OutputTo::kPipe;
  bool errorsToOutput = false;
  std::string directory = {};  // working directory; empty: the test's own
  std::string timeZone = {};   // empty: the test's own
};

StandinRun RunKestrel(const StandinHost &host, const std::vector<std::string> &arguments,
                      const RunOptions &options = {});

// Describes the misuse of lists in a run: lists that were used after their destruction, destroyed twice, or never
// destroyed. Returns an empty text if there is no misuse.
std::string ListErrors(const StandinRun &run);

// The number of calls that can fail.
unsigned FallibleCalls(const StandinRun &run);

std::ostream &operator<<(std::ostream &stream, const StandinRun &run);

}  // namespace testing_support

#endif  // TESTS_SUPPORT_STANDIN_HOST_H
