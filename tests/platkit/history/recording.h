// Samples of a made-up host, and a folder that they are recorded to.
#ifndef TESTS_PLATKIT_HISTORY_RECORDING_H
#define TESTS_PLATKIT_HISTORY_RECORDING_H

#include <fcntl.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platkit/history/history_folder.h"
#include "platkit/history/segment_reader.h"
#include "platkit/history/segment_writer.h"
#include "tests/platkit/scratch.h"

namespace platkit::history {

inline constexpr const char *kName = "2025-11-21T03Z.history";  // of the segment that a test writes

// The entries of a sample, by key: the letter of the type, and the payload.
using Entries = std::map<std::string, std::pair<char, std::string>>;

inline Sample SampleOf(const Entries &entries) {
  Sample sample;
  for (const auto &[key, value] : entries)
    sample.Add(key, static_cast<ValueType>(value.first), std::as_bytes(std::span(value.second)));
  return sample;
}

inline Entries EntriesOf(const Sample &sample) {
  Entries entries;
  for (size_t i = 0; i < sample.size(); ++i) {
    const Entry entry = sample[i];
    const std::string payload(reinterpret_cast<const char *>(entry.payload.data()), entry.payload.size());
    const bool isNew = entries.emplace(entry.key, std::pair(static_cast<char>(entry.type), payload)).second;
    EXPECT_TRUE(isNew) << entry.key;
  }
  return entries;
}

inline std::string Integers(std::initializer_list<int64_t> integers) {
  std::string bytes;
  for (const int64_t integer : integers)
    bytes.append(reinterpret_cast<const char *>(&integer), sizeof integer);
  return bytes;
}

inline constexpr int64_t kStart = 1'763'694'720 * kNanosInSecond;  // 2025-11-21T03:12:00Z

// The values of the clocks this many seconds after the start.
inline SampleTime TimeAt(double seconds) {
  const auto passed = static_cast<int64_t>(seconds * 1e9);
  return {.wall = kStart + passed, .boot = 1000 * kNanosInSecond + passed, .monotonic = 900 * kNanosInSecond + passed};
}

inline HostHeader TestHost() {
  HostHeader host = {.definitions = OwnDefinitions(), .host = "alpha", .kernel = "6.1.0-18-amd64"};
  host.bootId[3] = std::byte{7};
  host.intervalMillis = 5000;
  return host;
}

// A host whose figures change, and whose groups come and go.
inline Entries HostAt(int second) {
  Entries entries;
  std::string groups;
  for (int64_t group = 0; group < 6; ++group) {
    if (group == 3 && second % 20 >= 10) continue;
    if (group == 5 && second < 15) continue;
    const std::string path = "/sched/groups/" + std::to_string(group);
    groups += Integers({group});
    entries[path + "/groupName"] = {'R', "group" + std::to_string(group) + std::string(20, '\0')};
    entries[path + "/stats/memoryStats"] = {'R',
                                            Integers({-1, 0, 4096 * (group + 1), group == 1 ? second : 7, 0}) + "odd"};
  }
  entries["/sched/groups"] = {'I', groups};
  entries["/system/heaps"] = {'T',
                              second % 30 < 15 ? std::string("main\0net\0", 9) : std::string("main\0mod-x\0net\0", 15)};
  if (second % 7 == 3) entries["failed:/system/buddy"] = {'R', std::string("\x0d\0\xad\x0b", 4)};
  if (second % 25 == 0) entries["/empty"] = {'I', ""};
  return entries;
}

class Recording {
 public:
  Recording() : folder_(open(scratch_.folder().c_str(), O_RDONLY | O_DIRECTORY)) {}
  ~Recording() { close(folder_); }
  Recording(const Recording &) = delete;
  Recording &operator=(const Recording &) = delete;

  int folder() const { return folder_; }
  Scratch &scratch() { return scratch_; }

  // Appends the samples of HostAt to the segment, every five seconds from second `from` to before `to`.
  void Record(SegmentWriter &writer, int from, int to, const HostHeader &host = TestHost()) const {
    for (int second = from; second < to; second += 5) {
      Sample sample = SampleOf(HostAt(second));
      ASSERT_EQ(writer.Append(host, {.time = TimeAt(second)}, sample), HVC_OK);
    }
  }

  // Writes the segment `name` with samples from second 0 on.
  std::string Write(const char *name, int seconds) {
    SegmentWriter writer;
    EXPECT_EQ(writer.Open(folder_, name), HVC_OK);
    Record(writer, 0, seconds);
    return Contents(scratch_.Path(name));
  }

 private:
  Scratch scratch_;
  int folder_;
};

}  // namespace platkit::history

#endif  // TESTS_PLATKIT_HISTORY_RECORDING_H
