#include "tests/fuzz/tree_form.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tests/fuzz/byte_reader.h"
#include "tools/nodal/tree/arguments.h"

namespace fuzz {
namespace {

using platkit::snapshot::SnapshotWriter;
using platkit::snapshot::ValueType;

constexpr size_t kMostEntries = 200;

enum Form { kRecord, kList, kFailure, kRaw };

// Mostly returns small integers, so that references between nodes often match.
int64_t TakeInteger(ByteReader &input) {
  const auto small = input.Take<int8_t>();
  return small == INT8_MIN ? input.Take<int64_t>() : small;
}

std::string TakeText(ByteReader &input) {
  constexpr std::array<std::string_view, 7> kNames = {"memmap0", "memmap1", "small", "numa", "soft", "v", ""};
  const size_t index = input.TakeIndex(kNames.size() + 1);
  std::string text(index < kNames.size() ? kNames[index] : input.TakeBytes(input.TakeIndex(80)));
  text.resize(std::min(text.find('\0'), text.size()));
  return text;
}

nodal::Argument TakeArgument(ByteReader &input, platkit::ParamKind kind) {
  return kind == platkit::ParamKind::kInt ? nodal::IntArgument(TakeInteger(input))
                                          : nodal::TextArgument(TakeText(input));
}

// Takes up to 255 bytes, and fills the rest of the record with the last one.
std::vector<std::byte> TakeRecord(ByteReader &input, size_t size) {
  const std::string_view bytes = input.TakeBytes(input.TakeIndex(256));
  std::vector<std::byte> record(size, static_cast<std::byte>(bytes.empty() ? 0 : bytes.back()));
  std::memcpy(record.data(), bytes.data(), std::min(bytes.size(), size));
  return record;
}

HVC_ReturnStatus AddList(const platkit::Node &node, const std::string &path, ByteReader &input,
                         SnapshotWriter &writer) {
  std::vector<int64_t> integers;
  std::vector<std::string> texts;
  const bool ofIntegers = node.entry.kind == platkit::ParamKind::kInt;
  for (size_t count = input.TakeIndex(32); count > 0; --count) {
    if (ofIntegers) {
      integers.push_back(TakeInteger(input));
    } else {
      texts.push_back(TakeText(input));
    }
  }
  return ofIntegers ? writer.AddIntegers(path, integers) : writer.AddTexts(path, texts);
}

HVC_ReturnStatus AddRaw(const std::string &path, ByteReader &input, SnapshotWriter &writer) {
  constexpr std::array kTypes = {ValueType::kRecord, ValueType::kIntegers, ValueType::kTexts, ValueType::kHeader};
  const ValueType type = kTypes[input.TakeIndex(kTypes.size())];
  return writer.Add(path, type, std::as_bytes(std::span(input.TakeBytes(input.TakeIndex(256)))));
}

HVC_ReturnStatus AddEntry(ByteReader &input, SnapshotWriter &writer) {
  const auto nodes = platkit::Nodes();
  const platkit::Node &node = nodes[input.TakeIndex(nodes.size())];
  const auto form = static_cast<Form>(input.TakeIndex(4));
  const bool asRecord = node.isRecord() && (!node.isList || form == kRecord);
  nodal::Arguments arguments;
  for (size_t i = 0; i < (asRecord ? node.recordArguments() : node.listArguments()); ++i)
    arguments.push_back(TakeArgument(input, node.arguments[i].kind));
  const std::string path = nodal::PathOf(node, arguments);
  switch (form) {
    case kFailure: return writer.AddFailure(path, 1 + input.Take<uint16_t>());
    case kRaw: return AddRaw(path, input, writer);
    default: break;
  }
  return asRecord ? writer.AddRecord(path, TakeRecord(input, node.record->size)) : AddList(node, path, input, writer);
}

}  // namespace

bool WriteTree(std::string_view text, const std::string &path) {
  ByteReader input(text);
  SnapshotWriter writer;
  const std::string host(input.TakeUntil('\n'));
  const platkit::snapshot::Header header = {
      .definitions = platkit::OwnDefinitions(), .host = host.substr(0, host.find('\0')), .time = {}};
  if (writer.AddHeader(header) != HVC_OK) return false;
  for (size_t entries = 0; !input.isEmpty() && entries < kMostEntries; ++entries) {
    if (AddEntry(input, writer) != HVC_OK) return false;
  }
  return writer.Write(path) == HVC_OK;
}

}  // namespace fuzz
