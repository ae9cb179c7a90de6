#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/tools/nodal/program.h"

namespace {

class Diff : public testing::Test {
 protected:
  // Compares two hosts with these nodes.
  Outcome Of(const std::string &from, const std::string &to, const std::string &options = "") {
    return Nodal("diff " + Built(scratch_, HostOf(from), "a") + " " + Built(scratch_, HostOf(to), "b") + options);
  }

  // The output without the two lines that name the snapshots.
  std::string Shown(const std::string &from, const std::string &to, const std::string &options = "") {
    const Outcome outcome = Of(from, to, options);
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    const std::string heading = "--- " + scratch_.Path("a") + "\n+++ " + scratch_.Path("b") + "\n";
    EXPECT_TRUE(outcome.out.starts_with(heading)) << outcome.out;
    return outcome.out.substr(std::min(heading.size(), outcome.out.size()));
  }

  nlohmann::json Json(const std::string &from, const std::string &to) {
    const Outcome outcome = Of(from, to, " --json");
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    return nlohmann::json::parse(outcome.out)["changes"];
  }

  Scratch scratch_;
};

TEST_F(Diff, EqualSnapshots) {
  const Outcome outcome = Nodal("diff " + kSample + " " + kSample);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  const Outcome json = Nodal("diff --json " + kSample + " " + kSample);
  EXPECT_EQ(json.status, 0);
  EXPECT_EQ(nlohmann::json::parse(json.out)["changes"], nlohmann::json::array());
}

TEST_F(Diff, HostAndTimeAreShownAndNotCompared) {
  const std::string nodes = R"("nodes": {"/system/heaps": []}})", other = R"("nodes": {"/system/heaps": ["main"]}})";
  const std::string a = Built(scratch_, R"({"format": 1, "host": "x", "time": "2026-03-14T09:26:53Z", )" + nodes, "a");
  const std::string b = Built(scratch_, R"({"format": 1, "host": "y", )" + nodes, "b");
  EXPECT_EQ(Nodal("diff " + a + " " + b).status, 0);
  const std::string c = Built(scratch_, R"({"format": 1, "host": "\u001b", )" + other, "c");
  EXPECT_EQ(Nodal("diff " + a + " " + c).out,
            "--- " + a + "  x  2026-03-14T09:26:53Z\n+++ " + c + "  ?\n~ /system/heaps\n    + 'main'\n");
  const nlohmann::json json = nlohmann::json::parse(Nodal("diff --json " + a + " " + b).out);
  EXPECT_EQ(json["from"]["file"], a);
  EXPECT_EQ(json["from"]["host"], "x");
  EXPECT_EQ(json["from"]["time"], "2026-03-14T09:26:53Z");
  EXPECT_EQ(json["to"]["host"], "y");
}

TEST_F(Diff, NodesOfOneAlone) {
  const std::string from = R"("/memory/memInfo": {"numNodes": 1}, "/system/heaps": [])";
  const std::string to = R"("/memory/comprehensive": {}, "/system/heaps": [])";
  EXPECT_EQ(Shown(from, to), "+ /memory/comprehensive\n- /memory/memInfo\n");
  EXPECT_EQ(Json(from, to), nlohmann::json::parse(R"([{"path": "/memory/comprehensive", "change": "appeared"},
                                                      {"path": "/memory/memInfo", "change": "vanished"}])"));
  EXPECT_EQ(Shown("", to), "+ /memory/comprehensive\n+ /system/heaps\n");
  EXPECT_EQ(Shown(from, ""), "- /memory/memInfo\n- /system/heaps\n");
}

TEST_F(Diff, FieldsWithUnitAndDifference) {
  const std::string from =
      R"("/sched/groups/7/memAllocationInKB": {"min": 1024, "max": -1, "shares": 5, "minLimit": 9})";
  const std::string to =
      R"("/sched/groups/7/memAllocationInKB": {"min": 24, "max": 2048, "shares": 1005, "minLimit": 9})";
  EXPECT_EQ(Shown(from, to),
            "~ /sched/groups/7/memAllocationInKB\n"
            "    min     1024 ->   24  KB  -1000\n"
            "    max       -1 -> 2048  KB\n"
            "    shares     5 -> 1005      +1000\n");
  EXPECT_EQ(Json(from, to), nlohmann::json::parse(R"([{"path": "/sched/groups/7/memAllocationInKB", "change": "record",
    "fields": [{"field": "min", "from": 1024, "to": 24, "unit": "KB", "difference": -1000},
               {"field": "max", "from": -1, "to": 2048, "unit": "KB"},
               {"field": "shares", "from": 5, "to": 1005, "difference": 1000}]}])"));
}

// The difference of two masks, identifiers or names has no meaning.
TEST_F(Diff, FieldsThatAreNoAmounts) {
  EXPECT_EQ(Shown(R"("/sched/groups/7/groupFlags": {"flags": 1}, "/sched/groups/7/groupLeaderID": {"leaderID": 10},
                     "/sched/groups/7/groupName": {"name": "a\u001bb"}, "/sched/groups/7/groupTag": {})",
                  R"("/sched/groups/7/groupFlags": {"flags": 17}, "/sched/groups/7/groupLeaderID": {"leaderID": 12},
                     "/sched/groups/7/groupName": {"name": "caf\u00e9"},
                     "/sched/groups/7/groupTag": {"tag": {"hex": "6100620000000000"}})"),
            "~ /sched/groups/7/groupFlags\n    flags  0x1 -> 0x11\n"
            "~ /sched/groups/7/groupLeaderID\n    leaderID  10 -> 12\n"
            "~ /sched/groups/7/groupName\n    name  'a?b' -> 'caf\xc3\xa9'\n"
            "~ /sched/groups/7/groupTag\n    tag  '' -> hex 6100620000000000\n");
}

TEST_F(Diff, TheLargestDifferences) {
  const auto sizes = [this](const std::string &from, const std::string &to) {
    return Json(R"("/memory/comprehensive": {"total": )" + from + "}",
                R"("/memory/comprehensive": {"total": )" + to + "}")[0]["fields"][0];
  };
  EXPECT_EQ(sizes("0", "9223372036854775807")["difference"], INT64_MAX);
  EXPECT_EQ(sizes("9223372036854775808", "0")["difference"], INT64_MIN);
  EXPECT_FALSE(sizes("0", "9223372036854775808").contains("difference"));
  EXPECT_FALSE(sizes("0", "18446744073709551614").contains("difference"));
}

TEST_F(Diff, EntriesOfARecord) {
  EXPECT_EQ(Shown(R"("/system/buddy/b/comprehensive": {"sizes": [{"free": 1}, {"free": 2, "used": 3}]})",
                  R"("/system/buddy/b/comprehensive": {"sizes": [{"free": 1}, {"free": 2, "used": 4}, {"free": 10}]})"),
            "~ /system/buddy/b/comprehensive\n"
            "    sizes[1].used  3 ->  4  +1\n"
            "    sizes[2].free  0 -> 10  +10\n");
}

TEST_F(Diff, BytesWithoutAName) {
  const std::string path = R"("/memory/memNodes/0": )";
  const std::string zeros = std::string(50, '0');
  EXPECT_EQ(Shown(path + R"({"unread_1": "0011)" + zeros + R"("})", path + R"({"unread_1": "0022)" + zeros + R"("})"),
            "~ /memory/memNodes/0\n    unread_1[1:2]  hex 11 -> hex 22\n");
  EXPECT_EQ(Shown(path + "{}", path + R"({"unread_1": "01)" + zeros + R"(ff"})"),
            "~ /memory/memNodes/0\n    unread_1[0:27]  hex 00" + zeros + "00 -> hex 01" + zeros + "ff\n");
  EXPECT_EQ(Json(path + "{}", path + R"({"unread_1": "01)" + zeros + R"(ff"})")[0]["fields"][0]["to"],
            "01" + zeros + "ff");
}

TEST_F(Diff, Lists) {
  const std::string from = R"("/sched/groups/0/members/groups": [1, 2, 2, 3], "/system/heaps": ["a", "b\n"])";
  const std::string to = R"("/sched/groups/0/members/groups": [3, 4, 2], "/system/heaps": ["b\n", "a"])";
  EXPECT_EQ(Shown(from, to),
            "~ /sched/groups/0/members/groups\n    - 1\n    - 2\n    + 4\n"
            "~ /system/heaps\n    order changed\n");
  EXPECT_EQ(Json(from, to), nlohmann::json::parse(
                                R"([{"path": "/sched/groups/0/members/groups", "change": "list", "removed": [1, 2],
    "added": [4]}, {"path": "/system/heaps", "change": "list", "removed": [], "added": []}])"));
  EXPECT_EQ(Shown(R"("/system/heaps": [])", R"("/system/heaps": ["\u001b", {"hex": "ff"}])"),
            "~ /system/heaps\n    + '?'\n    + hex ff\n");
}

// In a snapshot, unreadable nodes come after all other nodes.
TEST_F(Diff, WhatCouldNotBeRead) {
  const std::string from = R"("/memory/memInfo": {}, "failed:/memory/comprehensive": {"status": "No permission"},
    "failed:/system/buddy": {"status": "No permission"}, "/system/heaps": [])";
  const std::string to = R"("failed:/memory/memInfo": {"status": 4242}, "/memory/comprehensive": {"free": 1},
    "failed:/system/buddy": {"status": "Read error"}, "/system/heaps": [], "failed:/memory/pmem/volumes": {"status": "Read error"})";
  EXPECT_EQ(Shown(from, to),
            "~ /memory/comprehensive\n    unreadable: No permission -> readable\n"
            "~ /memory/memInfo\n    readable -> unreadable: Status 4242\n"
            "+ /memory/pmem/volumes  unreadable: Read error\n"
            "~ /system/buddy\n    unreadable: No permission -> unreadable: Read error\n");
  const nlohmann::json json = Json(from, to);
  EXPECT_EQ(json[1], nlohmann::json::parse(R"({"path": "/memory/memInfo", "change": "value", "from": {"numNodes": 0},
                                               "to": {"status": 4242}})"));
  EXPECT_EQ(json[2], nlohmann::json::parse(R"({"path": "/memory/pmem/volumes", "change": "appeared",
                                               "to": {"status": "Read error"}})"));
  EXPECT_EQ(Of(from, from).status, 0);
}

// Nodes and records from a host with a newer catalogue.
TEST_F(Diff, WhatTheCatalogueDoesNotKnow) {
  EXPECT_EQ(Shown(R"("/new/node": {"type": "R", "hex": "00"}, "/memory/memInfo": {"type": "R", "hex": "01"})",
                  R"("/new/node": {"type": "R", "hex": "0102"}, "/memory/memInfo": {"numNodes": 1})"),
            "~ /memory/memInfo\n    R 01 -> readable\n~ /new/node\n    R 00 -> R 0102\n");
}

TEST_F(Diff, KeysThatAreNotUtf8) {
  const auto host = [this](const std::string &name, const std::string &byte) {
    return Built(scratch_, R"({"format": 1, "hexNodes": {"2f78ff": {"type": "R", "hex": ")" + byte + "\"}}}", name);
  };
  const std::string words = "diff " + host("a", "00") + " " + host("b", "01");
  EXPECT_TRUE(Nodal(words).out.ends_with("~ /x?\n    R 00 -> R 01\n"));
  EXPECT_EQ(nlohmann::json::parse(Nodal(words + " --json").out)["changes"][0]["path"]["hex"], "2f78ff");
}

TEST_F(Diff, APart) {
  const std::string from =
      R"("/memory/memInfo": {"numNodes": 1}, "/system/heaps": ["a"], "/system/heapsX": {"type": "R",
    "hex": ""})";
  const std::string to = R"("/memory/memInfo": {"numNodes": 2}, "failed:/system/heaps": {"status": "Read error"})";
  EXPECT_EQ(Shown(from, to, " --only /system/heaps/"), "~ /system/heaps\n    readable -> unreadable: Read error\n");
  EXPECT_EQ(Shown(from, to, " --only /system/heaps --only /memory"),
            "~ /memory/memInfo\n    numNodes  1 -> 2  +1\n~ /system/heaps\n    readable -> unreadable: Read error\n");
  EXPECT_EQ(Of(from, to, " --only /nowhere").status, 2);
  EXPECT_EQ(Of(from, to, " --only /nowhere").err, "nodal: /nowhere: Not found\n");
  EXPECT_EQ(Of(from, to, " --only memory").status, 2);
  EXPECT_EQ(Of(from, from, " --only /").status, 0);
}

// The arguments that compare a sound file with another file in both orders, and the other file with itself.
std::vector<std::string> PairsOf(const std::string &sound, const std::string &other) {
  return {other + " " + sound, sound + " " + other, other + " " + other};
}

// diff must not report damage as a difference, and must not overlook it in equal files.
TEST_F(Diff, Trouble) {
  const std::string sound = Built(scratch_, HostOf(R"("/memory/memInfo": {}, "/system/heaps": ["main"])"), "sound");
  std::string bytes = Contents(sound);
  bytes[bytes.find("main")] = 'M';
  const std::string damaged = scratch_.Write("damaged", bytes);
  for (const std::string &words : PairsOf(sound, damaged)) {
    const Outcome outcome = Nodal("diff " + words);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "nodal: " + damaged + ": /system/heaps: Snapshot is damaged\n");
  }
  bytes = Contents(sound);
  bytes[bytes.find("/system/heaps") + 8] = 'e';
  const std::string renamed = scratch_.Write("renamed", bytes);
  for (const std::string &words : PairsOf(sound, renamed))
    EXPECT_EQ(Nodal("diff " + words).err, "nodal: " + renamed + ": /system/eeaps: Snapshot is damaged\n");
  const Outcome missing = Nodal("diff " + sound + " " + scratch_.Path("missing"));
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.err, "nodal: " + scratch_.Path("missing") + ": No such file or directory\n");
  EXPECT_EQ(Nodal("diff " + sound).status, 2);
  EXPECT_EQ(Nodal("diff " + kSample + " " + sound + " >/dev/full").status, 2);
}

}  // namespace
