#include "tools/nodal/capture/vocabulary.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "platkit/path.h"
#include "tests/linux/saved_host.h"
#include "tests/tools/nodal/program.h"

namespace nodal {
namespace {

TEST(Vocabulary, OnlyWholeWordsInTheirPlaces) {
  EXPECT_TRUE(IsOwnWord("GroupNameRecord", "host"));
  EXPECT_TRUE(IsOwnWord("GroupTagRecord", "process"));
  EXPECT_TRUE(IsOwnWord("state", "soft"));
  EXPECT_TRUE(IsOwnWord("remapType", "promotion"));
  for (const char *buddy : {"memmap-00-lo", "memmap-17-hi", "memmap-123-lo", "memmap-4095-hi"})
    EXPECT_TRUE(IsOwnWord("buddy", buddy)) << buddy;

  EXPECT_FALSE(IsOwnWord("GroupNameRecord", "host-7"));
  EXPECT_FALSE(IsOwnWord("GroupNameRecord", "process"));
  EXPECT_FALSE(IsOwnWord("GroupTagRecord", "proc"));
  EXPECT_FALSE(IsOwnWord("heap", "numa"));
  EXPECT_FALSE(IsOwnWord("HeapStatsRecord", "host"));
  EXPECT_FALSE(IsOwnWord("remapType", ""));
  for (const char *buddy : {"memmap", "memmap-lo", "memmap-0-lo", "memmap-00000-lo", "memmap-00-low", "memmap-0x-lo",
                            "memmap-00-lo\n", " memmap-00-lo", "heap-large"})
    EXPECT_FALSE(IsOwnWord("buddy", buddy)) << buddy;
}

TEST(Vocabulary, Times) {
  EXPECT_TRUE(IsHeaderTime("2026-03-14T09:26:53Z"));
  EXPECT_TRUE(IsHeaderTime("2024-02-29T23:59:59Z"));
  for (const char *text : {"", "2026-03-14", "2026-03-14T09:26:53", "2026-03-14 09:26:53Z", "2026-03-14T09:26:53Z ",
                           "2026-02-29T09:26:53Z", "2026-13-01T09:26:53Z", "2026-00-01T09:26:53Z",
                           "2026-01-00T09:26:53Z", "2026-03-14T24:26:53Z", "2026-03-14T09:60:53Z",
                           "2026-03-14T09:26:60Z", "+026-03-14T09:26:53Z", "2026-03-14T0x:26:53Z"})
    EXPECT_FALSE(IsHeaderTime(text)) << text;
}

nlohmann::json NodesOf(const std::string &snapshot) {
  return nlohmann::json::parse(Nodal("dump " + testing_support::Quoted(snapshot)).out)["nodes"];
}

// If the Linux source gets another kind of group, or another type of remapping, this test fails.
TEST(Vocabulary, HasTheWordsOfALinuxHost) {
  size_t words = 0;
  for (const char *name : {"clients.host", "two-nodes.host", "v1.host", "kvm-list.host"}) {
    const platkit::SavedHost host(name);
    const Scratch scratch;
    const std::string capture = "--root " + testing_support::Quoted(host.Path("")) + " capture -o ";
    ASSERT_EQ(Nodal(capture + scratch.Path("plain")).status, 0);
    ASSERT_EQ(Nodal(capture + scratch.Path("anonymous") + " --anonymize").status, 0);
    const nlohmann::json plain = NodesOf(scratch.Path("plain")), anonymous = NodesOf(scratch.Path("anonymous"));
    for (const auto &[path, value] : plain.items()) {
      if (!path.ends_with("/groupTag") && !path.ends_with("/remapTypes") && path != "/system/buddy") continue;
      EXPECT_EQ(anonymous[path], value) << name << ": " << path;
      ++words;
    }
    for (const char *group : {"0", "5000000"}) {
      const std::string path = std::string("/sched/groups/") + group + "/groupName";
      EXPECT_EQ(anonymous[path], plain[path]) << name << ": " << path;
    }
  }
  EXPECT_GT(words, 20u);
}

}  // namespace
}  // namespace nodal
