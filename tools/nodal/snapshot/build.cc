#include "tools/nodal/snapshot/build.h"

#include <algorithm>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tools/nodal/snapshot/json_file.h"
#include "tools/nodal/snapshot/record_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::PathTarget;
using platkit::snapshot::SnapshotWriter;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

HVC_ReturnStatus AddRaw(std::string_view key, const Json &json, SnapshotWriter &writer) {
  if (json.size() != 2 || !json.contains("type")) throw InvalidJson("a raw value has only the keys 'type' and 'hex'");
  const Json &type = json["type"];
  const std::string letter = type.is_string() ? type.get<std::string>() : "";
  if (letter.size() != 1 || !snapshot::IsValueType(static_cast<uint8_t>(letter[0]))) {
    throw InvalidJson("expected the type R, I, T or H, got " + Brief(type));
  }
  const std::string payload = TextFromJson({{"hex", json["hex"]}});
  return writer.Add(key, static_cast<ValueType>(letter[0]), BytesOf(payload));
}

HVC_ReturnStatus AddIntegers(std::string_view key, const Json &json, SnapshotWriter &writer) {
  std::vector<int64_t> integers;
  for (size_t i = 0; i < json.size(); ++i) {
    const Json &entry = json[i];
    const bool fits = entry.is_number_integer() && (!entry.is_number_unsigned() || entry.get<uint64_t>() <= INT64_MAX);
    if (!fits) {
      throw InvalidJson("entry " + std::to_string(i) + ": expected a signed 64-bit integer, got " + Brief(entry));
    }
    integers.push_back(entry.get<int64_t>());
  }
  return writer.AddIntegers(key, integers);
}

HVC_ReturnStatus AddTexts(std::string_view key, const Json &json, SnapshotWriter &writer) {
  std::vector<std::string> texts;
  for (size_t i = 0; i < json.size(); ++i) {
    try {
      texts.push_back(TextFromJson(json[i]));
    } catch (const InvalidJson &invalid) {
      throw InvalidJson("entry " + std::to_string(i) + ": " + invalid.what());
    }
    if (texts.back().find('\0') != std::string::npos) {
      throw InvalidJson("entry " + std::to_string(i) + ": text contains a NUL");
    }
  }
  return writer.AddTexts(key, texts);
}

HVC_ReturnStatus AddNode(std::string_view key, const Json &json, SnapshotWriter &writer) {
  if (json.is_object() && json.contains("hex")) return AddRaw(key, json, writer);
  if (snapshot::IsFailureKey(key)) {
    return writer.AddFailure(key.substr(snapshot::kFailurePrefix.size()), FailureFromJson(json));
  }
  const PathTarget target = platkit::ParsePath(key);
  if (target.node == nullptr) throw InvalidJson("unknown node");
  if (target.asRecord) {
    std::vector<std::byte> record(target.node->record->size);
    RecordFromJson(*target.node->record, json, record);
    return writer.AddRecord(key, record);
  }
  if (!json.is_array()) throw InvalidJson("expected an array, got " + Brief(json));
  return target.node->entry.kind == platkit::ParamKind::kInt ? AddIntegers(key, json, writer)
                                                             : AddTexts(key, json, writer);
}

bool IsReserved(std::string_view key) { return snapshot::IsReservedKey(key) || snapshot::IsHeaderKey(key); }

// Messages name an entry by its path or, if `hex` is true, by its hexadecimal key in the JSON file.
void AddNodes(const Json &nodes, bool hex, SnapshotWriter &writer) {
  if (!nodes.is_object()) throw InvalidJson("expected an object, got " + Brief(nodes));
  for (const auto &[name, value] : nodes.items()) {
    try {
      const std::string key = hex ? TextFromJson({{"hex", name}}) : name;
      if (IsReserved(key)) throw InvalidJson("unknown node");
      if (hex && IsUtf8(key)) throw InvalidJson("a UTF-8 key belongs in 'nodes'");
      const HVC_ReturnStatus status = AddNode(key, value, writer);
      if (status != HVC_OK) throw InvalidJson(StatusText(status));
    } catch (const InvalidJson &invalid) {
      throw InvalidJson(name + ": " + invalid.what());
    }
  }
}

void CheckFormat(const Json &json) {
  if (!json.is_object()) throw InvalidJson("expected an object, got " + Brief(json));
  for (const auto &[key, value] : json.items()) {
    constexpr std::string_view kKeys[] = {"format", "signature", "build", "host", "time", "nodes", "hexNodes"};
    if (std::ranges::find(kKeys, key) == std::end(kKeys)) throw InvalidJson("unknown key '" + key + "'");
  }
  if (!json.contains("format")) throw InvalidJson("missing key 'format'");
  if (json["format"] != snapshot::kVersion) {
    throw InvalidJson("unsupported format " + Brief(json["format"]) + " (expected " +
                      std::string(snapshot::kVersionText) + ")");
  }
}

void AddHeader(const Json &json, SnapshotWriter &writer) {
  snapshot::Header header = {.definitions = platkit::OwnDefinitions(), .host = {}, .time = {}};
  for (const auto &[key, text] :
       {std::pair("signature", &header.definitions.signature), std::pair("build", &header.definitions.build),
        std::pair("host", &header.host), std::pair("time", &header.time)}) {
    if (!json.contains(key)) continue;
    try {
      *text = TextFromJson(json[key]);
      if (text->size() > snapshot::kMaxHeaderText) throw InvalidJson("text exceeds 255 bytes");
      if (text->find('\0') != std::string::npos) throw InvalidJson("text contains a NUL");
    } catch (const InvalidJson &invalid) {
      throw InvalidJson(std::string(key) + ": " + invalid.what());
    }
  }
  const HVC_ReturnStatus status = writer.AddHeader(header);
  if (status != HVC_OK) throw InvalidJson(StatusText(status));
}

void AddAll(const Json &json, SnapshotWriter &writer) {
  CheckFormat(json);
  AddHeader(json, writer);
  if (json.contains("nodes")) AddNodes(json["nodes"], false, writer);
  if (json.contains("hexNodes")) AddNodes(json["hexNodes"], true, writer);
}

}  // namespace

void BuildSnapshot(const std::string &json, const std::string &snapshot) {
  SnapshotWriter writer;
  try {
    AddAll(ParseJsonFile(json), writer);
  } catch (const InvalidJson &invalid) {
    throw Failure(json, invalid.what());
  }
  WriteFile(snapshot, platkit::Readers::kOwner, [&](int fd) { return writer.WriteTo(fd); });
}

}  // namespace nodal
