// A host and clocks for tests of the recorder.
#ifndef TESTS_TOOLS_NODAL_HISTORY_RECORDER_SUPPORT_H
#define TESTS_TOOLS_NODAL_HISTORY_RECORDER_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "platkit/history/history_folder.h"
#include "platkit/history/segment_reader.h"
#include "tests/platkit/scratch.h"
#include "tests/tools/nodal/history/durations.h"
#include "tools/nodal/history/recorder.h"

namespace nodal {

using platkit::history::HistoryFolder;
using platkit::history::kNanosInSecond;
using platkit::history::Sample;
using platkit::history::SampleTime;
using platkit::history::SegmentName;
using platkit::history::SegmentReader;

// 2026-01-01T00:00:00Z.
inline constexpr int64_t kNewYear = 1'767'225'600 * kSecond;

// A host with some entries, each of which starts with the number of the sample.
class FakeHost : public Sampled {
 public:
  void Take(Sample &sample, platkit::history::HostHeader &host, uint64_t &availableBytes) override {
    for (int i = 0; i < entries; ++i) {
      const std::string key = "/sched/groups/" + std::to_string(1000 + i) + "/groupName";
      std::string payload = std::to_string(taken) + " ";
      while (payload.size() < payloadBytes)
        payload += static_cast<char>(random_());  // random, so that it cannot be compressed
      sample.Add(key, platkit::history::ValueType::kRecord, std::as_bytes(std::span(payload)));
    }
    host.definitions = platkit::OwnDefinitions();
    host.host = "alpha";
    host.kernel = "6.1.0";
    availableBytes = available ? available(taken) : taken;
    ++taken;
  }

  int entries = 3;
  size_t payloadBytes = 32;
  uint64_t taken = 0;
  std::function<uint64_t(uint64_t number)> available;

 private:
  std::minstd_rand random_;
};

// Clocks that advance only in WaitUntil.
class FakePace : public Pace {
 public:
  SampleTime Now() override { return now; }
  bool WaitUntil(int64_t time) override {
    if (beforeWait) beforeWait(*this);
    if (endAt <= time) return false;
    Advance(std::max<int64_t>(time - now.monotonic, 0));
    return true;
  }
  void Advance(int64_t by) {
    now.wall += by;
    now.boot += by;
    now.monotonic += by;
  }

  SampleTime now = {.wall = kNewYear, .boot = kHour, .monotonic = kHour};
  int64_t endAt = INT64_MAX;  // on the monotonic clock
  std::function<void(FakePace &)> beforeWait;
};

struct RecordedSample {
  platkit::history::SampleInfo info;
  std::string number;  // the number that FakeHost gave the sample
};

// All samples of a history, in the order of their segments.
inline std::vector<RecordedSample> SamplesIn(const std::string &path) {
  std::vector<RecordedSample> samples;
  HistoryFolder folder;
  EXPECT_EQ(folder.Open(path.c_str()), HVC_OK);
  std::vector<SegmentName> names;
  EXPECT_EQ(folder.List(names), HVC_OK);
  for (const SegmentName &name : names) {
    SegmentReader reader;
    EXPECT_EQ(reader.Open(folder.fd(), name.text().c_str()), HVC_OK) << name.text();
    EXPECT_TRUE(reader.damage().empty()) << name.text();
    for (size_t i = 0; i < reader.frames().size(); ++i) {
      if (reader.frames()[i].isEnd) continue;
      Sample sample;
      EXPECT_EQ(reader.Read(i, sample), HVC_OK) << name.text() << " " << i;
      EXPECT_GT(sample.size(), 0u);
      if (sample.size() == 0) continue;
      const auto *text = reinterpret_cast<const char *>(sample[0].payload.data());
      samples.push_back({reader.frames()[i].info, std::string(text, std::strspn(text, "0123456789"))});
    }
  }
  return samples;
}

// The sizes of the segments.
inline std::map<std::string, uint64_t> SegmentsIn(const std::string &path) {
  std::map<std::string, uint64_t> sizes;
  for (const auto &entry : std::filesystem::directory_iterator(path)) {
    if (entry.path().extension() == ".history") sizes[entry.path().filename()] = entry.file_size();
  }
  return sizes;
}

inline uint64_t SizeOf(const std::map<std::string, uint64_t> &segments) {
  uint64_t sum = 0;
  for (const auto &[name, size] : segments)
    sum += size;
  return sum;
}

}  // namespace nodal

#endif  // TESTS_TOOLS_NODAL_HISTORY_RECORDER_SUPPORT_H
