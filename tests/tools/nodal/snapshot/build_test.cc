// For each error in a JSON file, nodal build prints the right message and writes no snapshot.
#include <algorithm>
#include <filesystem>

#include "tests/platkit/snapshot/colliding_keys.h"
#include "tests/tools/nodal/program.h"

namespace {

// The message for a JSON file, without the program's and the file's names.
std::string Complaint(const std::string &json) {
  const Scratch scratch;
  const std::string source = scratch.Write("host.json", json);
  const Outcome outcome = Nodal("build " + source + " -o " + scratch.Path("host.nodal"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(scratch.Names(), std::vector<std::string>{"host.json"});
  const std::string start = "nodal: " + source;
  EXPECT_TRUE(outcome.err.starts_with(start)) << outcome.err;
  return outcome.err.substr(std::min(start.size(), outcome.err.size()));
}

std::string NodesComplaint(const std::string &nodes) { return Complaint(HostOf(nodes)); }

TEST(Build, Syntax) {
  // nodal computes the position. The reason comes from the JSON library, whose wording depends on the version.
  const auto complains = [](const std::string &json, const std::string &place, const std::string &reason) {
    const std::string complaint = Complaint(json);
    EXPECT_TRUE(complaint.starts_with(place) && complaint.ends_with('\n')) << complaint;
    EXPECT_NE(complaint.find(reason), std::string::npos) << complaint;
    EXPECT_EQ(std::ranges::count(complaint, '\n'), 1) << complaint;
  };
  complains("{\n  \"format\": 1,\n  \"nodes\": {]\n}", ":3:13: syntax error", "unexpected ']'");
  complains("", ":1:1: ", "input");
  complains("{\"a\": \"\xff\"}", ":1:8: syntax error", "ill-formed UTF-8 byte");
  complains("{\"format\": 1e999}", ": number overflow", "1e999");
}

TEST(Build, Frame) {
  EXPECT_EQ(Complaint("[]"), ": expected an object, got an array\n");
  EXPECT_EQ(Complaint("{}"), ": missing key 'format'\n");
  EXPECT_EQ(Complaint(R"({"format": 2})"), ": unsupported format 2 (expected 1)\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "node": {}})"), ": unknown key 'node'\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "nodes": []})"), ": expected an object, got an array\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "host": 7})"), ": host: expected a string, got 7\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "host": "a\u0000b"})"), ": host: text contains a NUL\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "host": ")" + std::string(256, 'x') + "\"}"),
            ": host: text exceeds 255 bytes\n");
}

TEST(Build, Keys) {
  EXPECT_EQ(Complaint(R"({"format": 1, "format": 1})"), ": duplicate key 'format'\n");
  EXPECT_EQ(NodesComplaint(R"("/system/heaps": [], "/system/heaps": [])"), ": nodes: duplicate key '/system/heaps'\n");
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/4/groupFlags": {"flags": 1, "flags": 2})"),
            ": /sched/groups/4/groupFlags: duplicate key 'flags'\n");
}

// A message that quotes the file must not be as long as the file.
TEST(Build, LongKeysAndNumbers) {
  const std::string complaint = Complaint("{\"" + std::string(100'000, 'x') + "\": 1}");
  EXPECT_TRUE(complaint.starts_with(": unknown key 'xxx") && complaint.ends_with("xxx...\n")) << complaint.size();
  EXPECT_LT(complaint.size(), 10'000u);
  EXPECT_LT(Complaint("{\"format\": " + std::string(100'000, '1') + "}").size(), 10'000u);
}

TEST(Build, Nesting) {
  const auto nested = [](size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
  EXPECT_EQ(Complaint(nested(64)), ": expected an object, got an array\n");
  EXPECT_EQ(Complaint(nested(65)), ": nested deeper than 64 levels\n");
  EXPECT_EQ(Complaint(nested(1'000'000)), ": nested deeper than 64 levels\n");
  EXPECT_EQ(NodesComplaint(R"("/x": {"type": "R", "hex": )" + nested(1'000'000) + "}"),
            ": nested deeper than 64 levels\n");
}

TEST(Build, InputWithoutEnd) {
  const Scratch scratch;
  const Outcome zeros = Nodal("build /dev/zero -o " + scratch.Path("host.nodal"));
  EXPECT_EQ(zeros.status, 1);
  EXPECT_EQ(zeros.err, "nodal: /dev/zero: not JSON: NUL at byte 0\n");
}

TEST(Build, LargeInput) {
  const Scratch scratch;
  const std::string json = scratch.Write("large.json", "{}");
  std::filesystem::resize_file(json, (size_t{1} << 30) + 1);
  const Outcome outcome = Nodal("build " + json + " -o " + scratch.Path("host.nodal"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + json + ": larger than 1 GiB, the maximum for JSON\n");
}

TEST(Build, KeysThatCollide) {
  const Scratch scratch;
  std::string nodes;
  for (const std::string &key : platkit::snapshot::CollidingKeys("/x/", 512))
    nodes += (nodes.empty() ? "\"" : ",\"") + key + R"(": {"type": "R", "hex": ""})";
  const std::string snapshot = scratch.Path("host.nodal");
  const Outcome outcome = Nodal("build " + scratch.Write("host.json", HostOf(nodes)) + " -o " + snapshot);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + snapshot + ": too many keys collide in the index (hash collisions)\n");
  EXPECT_EQ(scratch.Names(), std::vector<std::string>{"host.json"});
}

TEST(Build, Paths) {
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/04/groupFlags": {})"), ": /sched/groups/04/groupFlags: unknown node\n");
  EXPECT_EQ(NodesComplaint(R"("host": {"type": "H", "hex": ""})"), ": host: unknown node\n");
  EXPECT_EQ(NodesComplaint(R"("nodal-snapshot": {"type": "H", "hex": ""})"), ": nodal-snapshot: unknown node\n");
  EXPECT_EQ(NodesComplaint(R"("/a\nb": [])"), ": /a?b: unknown node\n");
  EXPECT_EQ(Complaint(R"({"format": 1, "hexNodes": {"2f61": {"type": "R", "hex": ""}}})"),
            ": 2f61: a UTF-8 key belongs in 'nodes'\n");
}

TEST(Build, RawValues) {
  EXPECT_EQ(NodesComplaint(R"("/a": {"hex": "00"})"), ": /a: a raw value has only the keys 'type' and 'hex'\n");
  EXPECT_EQ(NodesComplaint(R"("/a": {"hex": "00", "type": "X"})"), ": /a: expected the type R, I, T or H, got \"X\"\n");
  EXPECT_EQ(NodesComplaint(R"("/a": {"hex": "0", "type": "R"})"),
            ": /a: expected pairs of hexadecimal digits (0-9, a-f), got \"0\"\n");
}

TEST(Build, Failures) {
  const auto failure = [](const std::string &value) { return NodesComplaint("\"failed:/system/heaps\": " + value); };
  const std::string path = ": failed:/system/heaps: ";
  const std::string form = "expected an object with only the key 'status', got ";
  const std::string status = "expected a failure status as text or number, got ";
  EXPECT_EQ(failure(R"("No permission")"), path + form + "\"No permission\"\n");
  EXPECT_EQ(failure(R"({"status": 3, "more": 1})"), path + form + "an object\n");
  EXPECT_EQ(failure(R"({"status": "no permission"})"), path + status + "\"no permission\"\n");
  EXPECT_EQ(failure(R"({"status": "Success"})"), path + status + "\"Success\"\n");
  EXPECT_EQ(failure(R"({"status": 0})"), path + status + "0\n");
  EXPECT_EQ(failure(R"({"status": -1})"), path + status + "-1\n");
  EXPECT_EQ(failure(R"({"status": 4294967296})"), path + status + "4294967296\n");
}

TEST(Build, Fields) {
  const auto alloc = [](const std::string &fields) {
    return NodesComplaint("\"/sched/groups/4/memAllocationInKB\": " + fields);
  };
  const std::string path = ": /sched/groups/4/memAllocationInKB: ";
  const std::string u64 = "expected an integer from -1 to 18446744073709551615, got ";
  EXPECT_EQ(alloc("[1]"), path + "expected an object, got an array\n");
  EXPECT_EQ(alloc(R"({"mim": 1})"), path + "unknown field 'mim' in GroupAllocRecord\n");
  EXPECT_EQ(alloc(R"({"min": 1.5})"), path + "field 'min': " + u64 + "1.5\n");
  EXPECT_EQ(alloc(R"({"min": -2})"), path + "field 'min': " + u64 + "-2\n");
  EXPECT_EQ(alloc(R"({"min": "1"})"), path + "field 'min': " + u64 + "\"1\"\n");
  EXPECT_EQ(alloc(R"({"min": null})"), path + "field 'min': " + u64 + "null\n");
  EXPECT_EQ(alloc(R"({"min": {}})"), path + "field 'min': " + u64 + "an object\n");
  EXPECT_EQ(alloc(R"({"min": 18446744073709551616})"), path + "field 'min': " + u64 + "1.8446744073709552e+19\n");
  EXPECT_EQ(alloc(R"({"shares": 2147483648})"),
            path + "field 'shares': expected an integer from -2147483648 to 2147483647, got 2147483648\n");
  EXPECT_EQ(alloc(R"({"shares": -2147483649})"),
            path + "field 'shares': expected an integer from -2147483648 to 2147483647, got -2147483649\n");
  EXPECT_EQ(alloc(R"({"unread_28": "00"})"), path + "field 'unread_28': expected 4 bytes, got 1\n");
  EXPECT_EQ(NodesComplaint(R"("/memory/memNodes/0": {"numaNode": 256})"),
            ": /memory/memNodes/0: field 'numaNode': expected an integer from -1 to 255, got 256\n");
}

TEST(Build, TextFields) {
  const std::string path = ": /sched/groups/4/groupTag: field 'tag': ";
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/4/groupTag": {"tag": "ninechars"})"),
            path + "text has 9 bytes (maximum: 8)\n");
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/4/groupTag": {"tag": "a\u0000b"})"), path + "text contains a NUL\n");
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/4/groupTag": {"tag": {"hex": "61"}})"),
            path + "expected 8 bytes, got 1\n");
  EXPECT_EQ(NodesComplaint(R"("/sched/groups/4/groupTag": {"tag": 5})"), path + "expected a string, got 5\n");
}

TEST(Build, Entries) {
  const std::string path = ": /system/buddy/b/comprehensive: field 'sizes': ";
  EXPECT_EQ(NodesComplaint(R"("/system/buddy/b/comprehensive": {"sizes": 1})"), path + "expected an array, got 1\n");
  EXPECT_EQ(NodesComplaint(R"("/system/buddy/b/comprehensive": {"sizes": [{}, {"fre": 1}]})"),
            path + "entry 1: unknown field 'fre' in BuddySizeRecord\n");
  std::string twenty = "{}";
  for (int i = 1; i < 20; ++i)
    twenty += ", {}";
  EXPECT_EQ(NodesComplaint(R"("/system/buddy/b/comprehensive": {"sizes": [)" + twenty + "]}"),
            path + "20 entries (maximum: 19)\n");
}

TEST(Build, Lists) {
  EXPECT_EQ(NodesComplaint(R"("/system/heaps": {"name": "x"})"), ": /system/heaps: expected an array, got an object\n");
  EXPECT_EQ(NodesComplaint(R"("/system/heaps": ["a", 1])"), ": /system/heaps: entry 1: expected a string, got 1\n");
  EXPECT_EQ(NodesComplaint(R"("/system/heaps": ["a\u0000"])"), ": /system/heaps: entry 0: text contains a NUL\n");
  EXPECT_EQ(NodesComplaint(R"("/hardware/nvd/dimm": [1, 9223372036854775808])"),
            ": /hardware/nvd/dimm: entry 1: expected a signed 64-bit integer, got 9223372036854775808\n");
}

TEST(Build, FilesThatCannotBeOpened) {
  const Scratch scratch;
  const std::string missing = scratch.Path("missing");
  EXPECT_EQ(Nodal("build " + missing + " -o " + scratch.Path("x")).err,
            "nodal: " + missing + ": No such file or directory\n");
  EXPECT_EQ(Nodal("build " + scratch.folder() + " -o " + scratch.Path("x")).err,
            "nodal: " + scratch.folder() + ": Is a directory\n");
  const std::string source = scratch.Write("host.json", HostOf(""));
  EXPECT_EQ(Nodal("build " + source + " -o " + missing + "/x").err,
            "nodal: " + missing + "/x: No such file or directory\n");
  EXPECT_EQ(Nodal("build " + source + " -o /dev/null").err, "nodal: /dev/null: not a regular file\n");
  EXPECT_EQ(scratch.Names(), std::vector<std::string>{"host.json"});
}

TEST(Build, AFullDisk) {
  const Scratch scratch;
  const std::string source = scratch.Write("host.json", HostOf(""));
  const Outcome outcome =
      Nodal("--version >/dev/null; ulimit -f 1; " + kNodal + " build " + source + " -o " + scratch.Path("host.nodal"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "nodal: " + scratch.Path("host.nodal") + ": File too large\n");
  EXPECT_EQ(scratch.Names(), std::vector<std::string>{"host.json"});
}

}  // namespace
