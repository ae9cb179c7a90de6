// nodal dump: a snapshot as JSON.
#include <cstring>
#include <optional>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_file.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/output.h"
#include "tools/nodal/record_json.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

using platkit::ParamKind;
using platkit::PathTarget;
using platkit::snapshot::SnapshotFile;
using platkit::snapshot::Value;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

OrderedJson RawToJson(const Value &value) {
  return {{"type", std::string(1, static_cast<char>(value.type))}, {"hex", ToHex(value.payload)}};
}

OrderedJson IntegersToJson(std::span<const std::byte> payload) {
  OrderedJson list = OrderedJson::array();
  for (size_t i = 0; i < payload.size(); i += sizeof(int64_t)) {
    int64_t integer;
    std::memcpy(&integer, payload.data() + i, sizeof integer);
    list.push_back(integer);
  }
  return list;
}

OrderedJson TextsToJson(std::string_view texts) {
  OrderedJson list = OrderedJson::array();
  while (!texts.empty()) {
    const size_t length = texts.find('\0');
    list.push_back(TextToJson(texts.substr(0, length)));
    texts.remove_prefix(length + 1);
  }
  return list;
}

OrderedJson StoredFailureToJson(const Value &value) {
  HVC_ReturnStatus failure = HVC_OK;
  if (value.type == ValueType::kRecord && value.payload.size() == sizeof failure) {
    std::memcpy(&failure, value.payload.data(), sizeof failure);
  }
  return failure == HVC_OK ? RawToJson(value) : FailureToJson(failure);
}

// In the catalogue's terms where it has any, else raw.
OrderedJson ValueToJson(std::string_view key, const Value &value) {
  if (snapshot::IsFailureKey(key)) return StoredFailureToJson(value);
  const PathTarget target = platkit::ParsePath(key);
  if (target.node == nullptr) return RawToJson(value);
  if (target.asRecord) {
    const bool known = value.type == ValueType::kRecord && value.payload.size() == target.node->record->size;
    return known ? RecordToJson(*target.node->record, value.payload) : RawToJson(value);
  }
  if (target.node->entry.kind == ParamKind::kInt) {
    const bool known = value.type == ValueType::kIntegers && value.payload.size() % sizeof(int64_t) == 0;
    return known ? IntegersToJson(value.payload) : RawToJson(value);
  }
  const bool known = value.type == ValueType::kTexts && (value.payload.empty() || value.text().back() == '\0');
  return known ? TextsToJson(value.text()) : RawToJson(value);
}

// A field on each line, so that a difference between two dumps shows as one; a value of one field on the key's own.
void PrintEntry(const char *separator, const std::string &key, const OrderedJson &value) {
  const bool oneLine = !value.is_object() || value.size() < 2;
  const std::string text = value.dump(oneLine ? -1 : 2, ' ', true);
  std::string line = std::string(separator) + "    " + Json(key).dump(-1, ' ', true) + ": ";
  for (const char c : text) {
    line += c;
    if (c == '\n') line += "    ";
  }
  Print(line);
}

// Prints the nodes whose keys are UTF-8, or those whose keys are not; whether there are others.
bool PrintNodes(const std::string &path, const SnapshotFile &file, bool utf8) {
  SnapshotFile::Cursor cursor(file);
  HVC_ReturnStatus status = HVC_OK;
  std::optional<std::string> previous;
  const char *separator = "\n";
  bool others = false;
  while ((status = cursor.Next()) == HVC_OK) {
    const std::string key(cursor.key());
    Value value;
    if (cursor.Read(value) != HVC_OK) throw Failure(path, key + ": " + StatusText(HVC_SNAPSHOT_DAMAGED));
    const bool ascending = !previous || *previous < key;
    if (!ascending || snapshot::IsReservedKey(key)) throw Failure(path, key + ": not in the order of the keys");
    previous = key;
    if (snapshot::IsHeaderKey(key)) continue;
    if (IsUtf8(key) != utf8) {
      others = true;
      continue;
    }
    PrintEntry(separator, utf8 ? key : ToHex(BytesOf(key)), ValueToJson(key, value));
    separator = ",\n";
  }
  if (status != HVC_NOT_FOUND) throw Failure(path, status);
  return others;
}

}  // namespace

void Dump(const std::string &path) {
  SnapshotFile file;
  const HVC_ReturnStatus status = file.Open(path.c_str());
  if (status != HVC_OK) throw Failure(path, status);
  const snapshot::Header &header = file.header();
  const auto printHeader = [](const char *key, const std::string &text) {
    Print("  \"" + std::string(key) + "\": " + TextToJson(text).dump(-1, ' ', true) + ",\n");
  };
  Print("{\n  \"format\": " + std::string(snapshot::kVersionText) + ",\n");
  printHeader("signature", header.definitions.signature);
  printHeader("build", header.definitions.build);
  printHeader("host", header.host);
  printHeader("time", header.time);
  Print("  \"nodes\": {");
  if (PrintNodes(path, file, true)) {
    Print("\n  },\n  \"hexNodes\": {");
    PrintNodes(path, file, false);
  }
  Print("\n  }\n}\n");
}

}  // namespace nodal
