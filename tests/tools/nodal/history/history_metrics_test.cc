// nodal metrics, for a range of a history.
#include <unistd.h>

#include <filesystem>

#include "tests/tools/nodal/history/recorded.h"

namespace nodal {
namespace {

Sample HeapsAt(int64_t second) {
  Sample sample;
  const std::string_view heaps("main\0", 5);
  sample.Add("/system/heaps", platkit::history::ValueType::kTexts, std::as_bytes(std::span(heaps)));
  HeapStatsRecord stats = {};
  stats.size = static_cast<uint32_t>(1000 + second);
  stats.numSuccAllocs = static_cast<uint32_t>(second);
  AddRecord(sample, "/system/heaps/main/stats", stats);
  return sample;
}

class HistoryMetrics : public testing::Test {
 protected:
  HistoryMetrics() {
    for (int64_t second = 0; second < 20; second += 5)
      history_.Add(HeapsAt(second), second);
  }

  std::string Metrics(const std::string &words) {
    const Outcome outcome = Nodal("metrics --cache " + history_.path() + " " + words);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  Recorded history_;
};

TEST_F(HistoryMetrics, HaveTimes) {
  EXPECT_EQ(Metrics("--from=-5s --only heap_size_bytes --only heap_allocations_total"),
            "# TYPE kestrel_heap_size_bytes gauge\n"
            "# HELP kestrel_heap_size_bytes Current size.\n"
            "kestrel_heap_size_bytes{heap=\"main\"} 1010 1763694730.000\n"
            "kestrel_heap_size_bytes{heap=\"main\"} 1015 1763694735.000\n"
            "# TYPE kestrel_heap_allocations counter\n"
            "# HELP kestrel_heap_allocations Allocations that succeeded.\n"
            "kestrel_heap_allocations_total{heap=\"main\"} 10 1763694730.000\n"
            "kestrel_heap_allocations_total{heap=\"main\"} 15 1763694735.000\n"
            "# EOF\n");
}

TEST_F(HistoryMetrics, HaveTheFirstSampleOfAStep) {
  EXPECT_EQ(Metrics("--step 10s --prefix '' --only heap_size_bytes"),
            "# TYPE heap_size_bytes gauge\n"
            "# HELP heap_size_bytes Current size.\n"
            "heap_size_bytes{heap=\"main\"} 1000 1763694720.000\n"
            "heap_size_bytes{heap=\"main\"} 1010 1763694730.000\n"
            "# EOF\n");
}

TEST_F(HistoryMetrics, GoToAFile) {
  const std::string file = history_.scratch().Path("metrics");
  EXPECT_EQ(Metrics("--to=-0s --only heap_size_bytes -o " + file), "");
  EXPECT_EQ(Contents(file), Metrics("--to=-0s --only heap_size_bytes"));
}

TEST_F(HistoryMetrics, NeedAHistory) {
  EXPECT_EQ(Nodal("metrics --from=-1m").status, 2);
  EXPECT_EQ(Nodal("metrics --from=-1m --cache no-such-folder").err, "nodal: no-such-folder: no such folder\n");
}

TEST_F(HistoryMetrics, LeaveOutOtherDefinitions) {
  history_.host().definitions.signature[0] ^= 1;
  history_.Add(HeapsAt(20), 20);
  const Outcome outcome = Nodal("metrics --from=-0s --cache " + history_.path());
  EXPECT_EQ(outcome.out, "# EOF\n");
  EXPECT_EQ(outcome.err, "nodal: " + history_.path() + ": left out 1 sample of another version\n");
}

// Prometheus' own tool imports the metrics into a block of its database.
TEST_F(HistoryMetrics, AreAcceptedByPrometheus) {
  const char *kTool = "/usr/bin/promtool";
  if (access(kTool, X_OK) != 0) GTEST_SKIP() << "promtool is not installed (package prometheus)";
  history_.Add(SampleOf(SAMPLE_SNAPSHOT), 20);
  history_.Add(SampleOf(SAMPLE_SNAPSHOT), 25);
  const std::string text = history_.scratch().Write("text", Metrics("--to=-0s"));
  const std::string data = history_.scratch().Path("data");
  const auto promtool = [&](const std::string &words) {
    const testing_support::Outcome outcome =
        testing_support::Run({.program = kTool, .arguments = testing_support::Words(words)});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome;
    return outcome.output;
  };
  promtool("tsdb create-blocks-from openmetrics " + text + " " + data);
  std::filesystem::create_directory(data + "/wal");  // promtool of Debian 12 requires it
  const std::string dump = promtool("tsdb dump " + data);
  EXPECT_NE(dump.find("1763694745000"), std::string::npos) << dump;
  EXPECT_NE(dump.find("kestrel_host_memory_bytes"), std::string::npos) << dump;
}

}  // namespace
}  // namespace nodal
