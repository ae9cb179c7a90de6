// dump and build are exact inverses.
#include <cstring>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tests/tools/nodal/program.h"

namespace {

using platkit::snapshot::Header;
using platkit::snapshot::SnapshotWriter;
using platkit::snapshot::ValueType;
using testing_support::Quoted;

std::span<const std::byte> Bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

void ExpectRoundTrip(const std::string &snapshot) {
  const Scratch scratch;
  const Outcome outcome = Nodal("dump " + Quoted(snapshot) + " | " + kNodal + " build - -o " + scratch.Path("again"));
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(Contents(snapshot) == Contents(scratch.Path("again"))) << Nodal("dump " + Quoted(snapshot)).out;
}

TEST(RoundTrip, TheSample) { ExpectRoundTrip(SAMPLE_SNAPSHOT); }

TEST(RoundTrip, AnEmptyHost) {
  const Scratch scratch;
  ExpectRoundTrip(Built(scratch, R"({"format": 1})"));
}

TEST(RoundTrip, RandomRecords) {
  const Scratch scratch;
  SnapshotWriter writer;
  uint32_t state = 1;
  for (int64_t instance = 0; instance < 20; ++instance) {
    for (const platkit::Node &node : platkit::Nodes()) {
      if (!node.isRecord()) continue;
      std::string record(node.record->size, '\0');
      for (char &byte : record) {
        state = state * 1664525 + 1013904223;
        byte = instance == 0 ? '\xff' : static_cast<char>(state >> 24);
      }
      std::vector<NODAL_Param> params;
      const std::string text = "\xc3\xa9/" + std::to_string(instance);
      for (uint32_t i = 0; i < node.recordArguments(); ++i) {
        NODAL_Param param = {
            .kind = node.arguments[i].kind, .length = static_cast<uint32_t>(text.size()), .integer = 0};
        if (param.kind == platkit::ParamKind::kInt) {
          param.integer = instance;
        } else {
          param.chars = text.c_str();
        }
        params.push_back(param);
      }
      if (params.empty() && instance > 0) continue;
      platkit::PathWriter path;
      platkit::WritePath(node, params, path);
      ASSERT_EQ(writer.AddRecord(path.view(), Bytes(record)), HVC_OK);
    }
  }
  ASSERT_EQ(writer.AddHeader({.definitions = platkit::OwnDefinitions(), .host = {}, .time = {}}), HVC_OK);
  ASSERT_EQ(writer.Write(scratch.Path("random")), HVC_OK);
  ExpectRoundTrip(scratch.Path("random"));
}

TEST(RoundTrip, WhatTheCatalogueDoesNotKnow) {
  const Scratch scratch;
  SnapshotWriter writer;
  const Header header = {.definitions = {.signature = "\xff", .build = "a\tb"}, .host = "\xc3\xa9", .time = "noon"};
  ASSERT_EQ(writer.AddHeader(header), HVC_OK);
  int number = 0;
  for (const ValueType type : {ValueType::kRecord, ValueType::kIntegers, ValueType::kTexts, ValueType::kHeader}) {
    for (const std::string_view payload :
         {std::string_view(), std::string_view("\0", 1), std::string_view("1234567")}) {
      const std::string n = std::to_string(number++);
      ASSERT_EQ(writer.Add("/unknown/" + n, type, Bytes(payload)), HVC_OK);
      ASSERT_EQ(writer.Add("/sched/groups/" + n + "/groupFlags", type, Bytes(payload)), HVC_OK);
      ASSERT_EQ(writer.Add("/sched/groups/" + n + "/members/groups", type, Bytes(payload)), HVC_OK);
      ASSERT_EQ(writer.Add("/sched/memClients/" + n + "/remapTypes", type, Bytes(payload)), HVC_OK);
    }
  }
  for (const std::string_view key : {"", "no slash", "zzz", "/\xff", "/system/heaps/caf\xe9/stats", "/a\nb", "/%41"})
    ASSERT_EQ(writer.Add(key, ValueType::kRecord, Bytes("x")), HVC_OK);
  ASSERT_EQ(writer.Add("/system/heaps/\xe9/stats", ValueType::kRecord, Bytes(std::string(148, 'n'))), HVC_OK);
  ASSERT_EQ(writer.AddTexts("/system/heaps", std::vector<std::string>{"", "\xe9", "a\x1b\x7f"}), HVC_OK);
  ASSERT_EQ(writer.AddIntegers("/hardware/nvd/dimm", std::vector<int64_t>{INT64_MIN, -1, INT64_MAX}), HVC_OK);
  ASSERT_EQ(writer.Write(scratch.Path("odd")), HVC_OK);
  ExpectRoundTrip(scratch.Path("odd"));
}

TEST(RoundTrip, Forms) {
  const Scratch scratch;
  const std::string snapshot =
      Built(scratch, R"({"format": 1, "signature": "s", "build": "b", "host": "h", "time": "", "nodes": {
        "/sched/groups/4/memAllocationInKB": {"max": 18446744073709551615, "shares": -5, "unread_28": "00000007"},
        "/sched/groups/4/groupName": {"name": "caf\u00e9"},
        "/sched/groups/4/groupTag": {"tag": {"hex": "6100620000000000"}},
        "/sched/groups/4/members/groups": [],
        "/system/buddy/b/comprehensive": {"sizes": [{"free": 1}, {"used": 2}, {}]},
        "/memory/memNodes/0": {"numaNode": -1}}})");
  EXPECT_EQ(Nodal("dump " + snapshot).out, R"({
  "format": 1,
  "signature": "s",
  "build": "b",
  "host": "h",
  "time": "",
  "nodes": {
    "/memory/memNodes/0": {"numaNode":255},
    "/sched/groups/4/groupName": {"name":"caf\u00e9"},
    "/sched/groups/4/groupTag": {"tag":{"hex":"6100620000000000"}},
    "/sched/groups/4/memAllocationInKB": {
      "min": 0,
      "max": -1,
      "shares": -5,
      "minLimit": 0,
      "unread_28": "00000007"
    },
    "/sched/groups/4/members/groups": [],
    "/system/buddy/b/comprehensive": {"sizes":[{"free":1,"used":0},{"free":0,"used":2}]}
  }
}
)");
  ExpectRoundTrip(snapshot);
}

TEST(RoundTrip, Failures) {
  const Scratch scratch;
  SnapshotWriter writer;
  ASSERT_EQ(writer.AddHeader({.definitions = platkit::OwnDefinitions(), .host = {}, .time = {}}), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/system/heaps", HVC_NO_PERMISSION), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/memory/memInfo", 4000000000), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/unknown", HVC_NOT_FOUND), HVC_OK);
  ASSERT_EQ(writer.AddFailure("/memory/comprehensive", HVC_OK), HVC_OK);
  ASSERT_EQ(writer.AddTexts("failed:", {}), HVC_OK);
  ASSERT_EQ(writer.Write(scratch.Path("failures")), HVC_OK);
  const std::string dump = Nodal("dump " + scratch.Path("failures")).out;
  EXPECT_TRUE(dump.ends_with(R"(  "nodes": {
    "failed:": {
      "type": "T",
      "hex": ""
    },
    "failed:/memory/comprehensive": {
      "type": "R",
      "hex": "00000000"
    },
    "failed:/memory/memInfo": {"status":4000000000},
    "failed:/system/heaps": {"status":"No permission"},
    "failed:/unknown": {"status":"Not found"}
  }
}
)")) << dump;
  ExpectRoundTrip(scratch.Path("failures"));
}

TEST(RoundTrip, ADamagedValueIsNotDumped) {
  const Scratch scratch;
  std::string bytes = Contents(Built(scratch, HostOf(R"("/system/heaps": ["main"])")));
  bytes[bytes.find("main")] = 'M';
  const std::string damaged = scratch.Write("damaged", bytes);
  const Outcome outcome = Nodal("dump " + damaged);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + damaged + ": /system/heaps: Snapshot is damaged\n");
}

}  // namespace
