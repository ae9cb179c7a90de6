// Anonymized captures of snapshots from others. The captures contain no text of the snapshot, unless the library itself
// uses this text.
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "platkit/node_ref.h"
#include "platkit/path.h"
#include "platkit/record_layout.h"
#include "platkit/records.h"
#include "tests/tools/nodal/program.h"
#include "tools/nodal/capture/capture_writer.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"
#include "tools/nodal/tree/arguments.h"

namespace {

using nlohmann::json;
using platkit::FieldType;

// Fits into the shortest text field.
constexpr std::string_view kMarker = "Zq7#";

json DumpOf(const std::string &snapshot) { return json::parse(Nodal("dump " + testing_support::Quoted(snapshot)).out); }

// Fills the bytes with the marker, over and over.
void FillWithMarkers(std::span<std::byte> bytes) {
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::byte>(kMarker[i % kMarker.size()]);
}

// Appends the marker to the text, which is truncated to make room. Fills the rest with more markers.
void MarkText(std::span<std::byte> bytes) {
  const std::string_view all(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  const std::string text(all.substr(0, std::min(all.find('\0'), bytes.size() - kMarker.size() - 1)));
  const std::string marked = text + std::string(kMarker);
  FillWithMarkers(bytes);
  std::memcpy(bytes.data(), marked.c_str(), marked.size() + 1);
}

void MarkRecord(const platkit::RecordLayout &layout, std::span<std::byte> record) {
  for (const platkit::Field &field : layout.fields) {
    const auto bytes = record.subspan(field.offset, size_t{field.size} * field.count);
    if (field.type == FieldType::kText) MarkText(bytes);
    if (field.type == FieldType::kGap) FillWithMarkers(bytes);
    for (uint32_t i = 0; field.type == FieldType::kEntries && i < field.count; ++i)
      MarkRecord(*field.entry, bytes.subspan(i * size_t{field.size}, field.size));
  }
}

// The path with the marker in every text. The names of the memory states get no marker, because the capture visits
// these states by their fixed names.
std::string MarkedPath(platkit::PathTarget target) {
  for (nodal::Argument &argument : target.arguments) {
    const bool isState = target.node->id == platkit::nodes::sched_globalStats_memory_stateTransitions.id();
    if (argument.kind == platkit::ParamKind::kText && !isState) argument.text += kMarker;
  }
  return nodal::PathOf(*target.node, target.arguments);
}

json MarkedValue(const platkit::PathTarget &target, const json &value) {
  if (target.asRecord) {
    std::vector<std::byte> record(target.node->record->size);
    nodal::RecordFromJson(*target.node->record, value, record);
    MarkRecord(*target.node->record, record);
    return {{"type", "R"}, {"hex", nodal::ToHex(record)}};
  }
  json entries = json::array();
  for (const json &entry : value)
    entries.push_back(entry.is_string() ? json(entry.get<std::string>() + std::string(kMarker)) : entry);
  return entries;
}

// The sample host, with the marker in every text, in every unused byte of a record, and in every unknown key.
json MarkedHost() {
  const json sample = DumpOf(SAMPLE_SNAPSHOT);
  const std::string marker(kMarker);
  json nodes;
  for (const auto &[path, value] : sample["nodes"].items()) {
    const platkit::PathTarget target = platkit::ParsePath(path);
    EXPECT_NE(target.node, nullptr) << path;
    nodes[MarkedPath(target)] = MarkedValue(target, value);
  }
  nodes["/system/heaps"].push_back("unreadable" + marker);
  nodes["failed:/system/heaps/unreadable" + marker + "/stats"] = {{"status", "No permission"}};
  nodes["/system/buddy"].push_back("memmap" + marker);
  nodes["failed:/system/buddy/memmap" + marker + "/comprehensive"] = {{"status", "I/O error"}};
  nodes["/sched/memClients/1003/remapTypes"].push_back("numa" + marker);
  nodes["failed:/sched/memClients/1003/remapTypes/numa" + marker] = {{"status", "I/O error"}};
  const json unknown = {{"type", "H"}, {"hex", nodal::ToHex(nodal::BytesOf(marker))}};
  for (const std::string &key : {"/" + marker, "failed:/" + marker, marker})
    nodes[key] = unknown;
  return {{"format", 1},
          {"host", "host" + marker},
          {"build", "1.0.0-" + marker},
          {"time", sample["time"]},
          {"nodes", std::move(nodes)}};
}

class AnonymousCapture : public testing::Test {
 protected:
  // Captures everything that can be captured.
  Outcome CaptureOf(const std::string &snapshot, const std::string &words, const std::string &name) const {
    return Nodal("--cache " + snapshot + " capture --only / --only /hardware/pci -o " + scratch_.Path(name) + " " +
                 words);
  }

  Scratch scratch_;
};

TEST_F(AnonymousCapture, HasNoForeignText) {
  const std::string host = Built(scratch_, MarkedHost().dump());
  ASSERT_EQ(CaptureOf(host, "", "plain").status, 0);
  const Outcome outcome = CaptureOf(host, "--anonymize", "anonymous");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err.find(kMarker), std::string::npos) << outcome.err;
  EXPECT_EQ(Contents(scratch_.Path("anonymous")).find(kMarker), std::string::npos);

  // The marker was everywhere, and nothing was omitted.
  const json plain = DumpOf(scratch_.Path("plain")), anonymous = DumpOf(scratch_.Path("anonymous"));
  for (const char *key : {"host", "build"})
    EXPECT_NE(plain[key].get<std::string>().find(kMarker), std::string::npos) << key;
  for (const char *path : {"/sched/groups/10/groupName", "/sched/groups/10/groupTag", "/memory/comprehensive",
                           "/sched/memClients/1003/remapTypes", "/system/buddy", "/memory/pmem/volumes",
                           "/memory/lpage/nodeList/0/vmPools", "failed:/system/heaps/unreadableZq7#/stats",
                           "failed:/sched/memClients/1003/remapTypes/numaZq7#", "/system/heaps/mainZq7#/stats",
                           "failed:/system/buddy/memmapZq7#/comprehensive"})
    EXPECT_TRUE(plain["nodes"].contains(path)) << path;
  EXPECT_EQ(anonymous["nodes"].size(), plain["nodes"].size());
  EXPECT_EQ(anonymous["time"], plain["time"]);
  EXPECT_EQ(anonymous["build"], DumpOf(SAMPLE_SNAPSHOT)["build"]);
  const Outcome verified = Nodal("verify " + scratch_.Path("anonymous"));
  EXPECT_EQ(verified.status, 0) << verified.out;
}

TEST_F(AnonymousCapture, ANameHasTheSamePseudonymEverywhere) {
  ASSERT_EQ(CaptureOf(kSample, "--anonymize", "anonymous").status, 0);
  const json nodes = DumpOf(scratch_.Path("anonymous"))["nodes"];
  for (const json &heap : nodes["/system/heaps"]) {
    const std::string name = heap.get<std::string>();
    EXPECT_EQ(nodes["/system/heaps/" + name + "/stats"]["name"], name);
  }
  EXPECT_EQ(nodes["/memory/lpage/nodeList/0/vmPools"], nodes["/memory/lpage/nodeList/1/vmPools"]);
  EXPECT_EQ(nodes["/sched/groups/10/groupTag"], nodes["/sched/groups/20/groupTag"]);
  EXPECT_EQ(nodes["/sched/groups/0/groupName"]["name"], "host");
}

TEST_F(AnonymousCapture, RefusesATextInPlaceOfTheTime) {
  const std::string host = Built(scratch_, R"({"format": 1, "time": "by Zq7#", "nodes": {"/system/heaps": []}})");
  const std::string words = "--cache " + host + " capture -o " + scratch_.Path("out");
  EXPECT_EQ(Nodal(words + " --anonymize").err, "nodal: header: the time does not have the form 2026-03-14T09:26:53Z\n");
  EXPECT_EQ(Nodal(words).status, 0);
}

// With this key, the pseudonyms of both tags have the same seven digits. Two heaps with the same pseudonym would even
// have the same path.
TEST_F(AnonymousCapture, TwoNamesWithOnePseudonymAreAnError) {
  nodal::PseudonymKey::Bytes key;
  key.fill('k');
  nodal::CaptureWriter writer{nodal::Pseudonyms(nodal::PseudonymKey(key))};
  const nodal::Node &node = platkit::nodes::sched_groups_groupTag;
  const auto add = [&](int64_t group, const std::string &tag) {
    writer.Add(
        {.node = &node, .asRecord = true, .arguments = {nodal::IntArgument(group)}, .status = HVC_OK, .record = tag});
  };
  add(1, "00119127");
  add(2, "00119127");
  EXPECT_THROW(add(3, "00362502"), nodal::Failure);
}

// The expected pseudonym was computed by two other tools: the derived key is Argon2id of the secret, the digits are
// BLAKE2b of the host's name. Deriving the key takes half a second.
TEST_F(AnonymousCapture, OfAKeyFile) {
  const std::string file = scratch_.Write("key", "secret\n");
  ASSERT_EQ(chmod(file.c_str(), 0600), 0);
  const std::string words =
      "--cache " + kSample + " capture --anonymize -o " + scratch_.Path("out") + " --only /system";
  const Outcome outcome = Nodal(words + " --key-file " + file);
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(DumpOf(scratch_.Path("out"))["host"], "name-3756pmz8bkdf");

  ASSERT_EQ(chmod(file.c_str(), 0644), 0);
  EXPECT_EQ(Nodal(words + " --key-file " + file).err,
            "nodal: " + file + ": other users may access the key file (use chmod 600)\n");
  EXPECT_EQ(Nodal(words + " --key-file - </dev/null").err, "nodal: standard input: the key is empty\n");
}

}  // namespace
