// A read whose saved status is "Out of memory" failed on the host. It is a failure of this node only.
#include "tools/nodal/tree/tree.h"

#include <algorithm>
#include <filesystem>

#include "tests/tools/nodal/history/recorded.h"
#include "tests/tools/nodal/page/page_file.h"
#include "tests/tools/nodal/program.h"

namespace nodal {
namespace {

// The heaps "a" and "b", of which only "b" could be read.
const std::string kNodes = R"("/system/heaps": ["a", "b"], "/system/heaps/b/stats": {"size": 2},
  "failed:/system/heaps/a/stats": {"status": "Out of memory"}, "failed:/system/buddy": {"status": "Out of memory"},
  "failed:/sched/groups/0/members/groups": {"status": "Out of memory"})";

class SavedOutOfMemory : public testing::Test {
 protected:
  SavedOutOfMemory() {
    history_.Add(GroupsAt(0), 0);
    history_.Add(SampleOf(snapshot_), 5);
    history_.Add(GroupsAt(10), 10);
  }

  // Expects that a command succeeds without a message. Returns its output.
  static std::string OutputOf(const std::string &words) {
    const Outcome outcome = Nodal(words);
    EXPECT_EQ(outcome.status, 0) << words;
    EXPECT_EQ(outcome.err, "") << words;
    return outcome.out;
  }
  std::string Dump(const std::string &snapshot) { return OutputOf("dump " + snapshot); }
  std::string Moment() const { return history_.path() + "@@" + std::to_string(kStart + 5); }

  const Scratch scratch_;
  const std::string snapshot_ = Built(scratch_, HostOf(kNodes));
  Recorded history_;
};

TEST_F(SavedOutOfMemory, IsToldByGet) {
  for (const std::string &source : {snapshot_, Moment()}) {
    for (const std::string path : {"/system/heaps/a/stats", "/system/buddy"}) {
      const Outcome outcome = Nodal("--cache " + source + " get " + path);
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.err, "nodal: " + path + ": Out of memory\n");
    }
    EXPECT_EQ(OutputOf("--cache " + source + " get --json /system/heaps/b/stats").substr(0, 1), "{");
  }
}

TEST_F(SavedOutOfMemory, IsCaptured) {
  const std::string copy = scratch_.Path("copy.nodal");
  for (const std::string &source : {snapshot_, Moment()}) {
    const Outcome outcome = Nodal("--cache " + source + " capture -o " + copy);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("3 unreadable: Out of memory"), std::string::npos) << outcome.err;
    const std::string nodes = Dump(copy);
    for (const std::string path : {"/system/heaps/a/stats", "/system/buddy", "/sched/groups/0/members/groups"})
      EXPECT_NE(nodes.find("\"failed:" + path + "\": {\"status\":\"Out of memory\"}"), std::string::npos) << nodes;
    EXPECT_NE(nodes.find("\"/system/heaps/b/stats\""), std::string::npos) << nodes;
  }
}

TEST_F(SavedOutOfMemory, IsCountedByMetrics) {
  const std::string words = "metrics --prefix '' --only heap_size_bytes --only reading_failures --cache ";
  for (const std::string &source : {snapshot_, Moment()}) {
    const std::string text = OutputOf(words + source);
    EXPECT_NE(text.find("\nheap_size_bytes{heap=\"b\"} 2\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nreading_failures 1\n"), std::string::npos) << text;
  }
  const std::string range = OutputOf(words + history_.path() + " --from=-10s");
  EXPECT_NE(range.find("\nheap_size_bytes{heap=\"b\"} 2 1763694725.000\n"), std::string::npos) << range;
  EXPECT_NE(range.find("\nreading_failures 1 1763694725.000\n"), std::string::npos) << range;
}

TEST_F(SavedOutOfMemory, IsOnThePage) {
  OutputOf("page " + snapshot_ + " -o " + scratch_.Path("page.html"));
  const auto data = DataOf(Contents(scratch_.Path("page.html")));
  EXPECT_NE(data["unreadableLists"].dump().find(R"(["/system/buddy","Out of memory"])"), std::string::npos) << data;
  OutputOf("page " + history_.path() + " -o " + scratch_.Path("span.html"));
  const std::string span = Unpacked(EncodedDataOf(Contents(scratch_.Path("span.html"))));
  EXPECT_NE(span.find("Out of memory"), std::string::npos) << span;
}

TEST_F(SavedOutOfMemory, IsShownByTop) {
  for (const std::string &source : {snapshot_, Moment()}) {
    const std::string words = "top --batch --cache " + source + " --screen ";
    const std::string heaps = OutputOf(words + "heaps --columns size --unit b");
    EXPECT_NE(heaps.find("sum: 2 heaps"), std::string::npos) << heaps;
    OutputOf(words + "nodes");
    OutputOf(words + "groups");
  }
}

TEST_F(SavedOutOfMemory, IsAGapInASeries) {
  EXPECT_EQ(OutputOf("series " + history_.path() + " '/system/heaps/*/stats.size'"),
            "time,figure,value\n2025-11-21T03:12:05Z,/system/heaps/b/stats.size,2\n");
  EXPECT_EQ(OutputOf("series " + history_.path() + " /sched/groups/1/stats/memoryStats.consumed"),
            "time,figure,value\n"
            "2025-11-21T03:12:00Z,/sched/groups/1/stats/memoryStats.consumed,1000\n"
            "2025-11-21T03:12:10Z,/sched/groups/1/stats/memoryStats.consumed,1100\n");
}

// A source that runs out of memory itself.
class Exhausted : public platkit::Source {
 public:
  HVC_ReturnStatus Get(const Node &, platkit::Arguments, std::span<std::byte>) override { throw std::bad_alloc(); }
  HVC_ReturnStatus List(const Node &, platkit::Arguments, platkit::ParamList &) override { throw std::bad_alloc(); }
};

TEST(HostTree, ThrowsIfThisProcessRunsOutOfMemory) {
  platkit::UseSource(std::make_unique<Exhausted>());
  HostTree tree;
  Arguments entries;
  EXPECT_THROW(static_cast<void>(tree.List(nodes::system_heaps, {}, entries)), std::bad_alloc);
  MemInfoRecord record;
  EXPECT_THROW(static_cast<void>(GetRecord(tree, nodes::memory_memInfo, {}, record)), std::bad_alloc);
  platkit::UseSource(nullptr);
}

}  // namespace
}  // namespace nodal
