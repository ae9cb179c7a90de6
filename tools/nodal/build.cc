// nodal build: a snapshot from JSON.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

#include "platkit/path.h"
#include "platkit/snapshot/snapshot_writer.h"
#include "tools/nodal/commands.h"
#include "tools/nodal/output.h"
#include "tools/nodal/record_json.h"
#include "tools/nodal/text.h"

namespace nodal {
namespace {

using platkit::PathTarget;
using platkit::snapshot::SnapshotWriter;
using platkit::snapshot::ValueType;
namespace snapshot = platkit::snapshot;

struct Close {
  void operator()(std::FILE *file) const { std::fclose(file); }
};

std::string ReadFile(const std::string &path) {
  std::unique_ptr<std::FILE, Close> opened;
  std::FILE *file = stdin;
  if (path != "-") {
    opened.reset(std::fopen(path.c_str(), "rbe"));
    if (opened == nullptr) throw Failure(path, std::strerror(errno));
    file = opened.get();
  }
  std::string text;
  char block[65536];
  while (const size_t size = std::fread(block, 1, sizeof block, file))
    text.append(block, size);
  if (std::ferror(file)) throw Failure(path, std::strerror(errno));
  return text;
}

// Of two values of one key, the parser would silently keep the last. The text is gone through once more for this: the
// parser's own hook for it takes a time that grows with the square of an object's size.
class DuplicateCheck : public nlohmann::json_sax<Json> {
 public:
  bool key(std::string &name) override {
    if (!objects_.back().keys.insert(name).second) {
      const std::string where = objects_.size() < 2 ? "" : objects_[objects_.size() - 2].current + ": ";
      throw InvalidJson(where + "the key '" + name + "' stands twice");
    }
    objects_.back().current = name;
    return true;
  }
  bool start_object(size_t) override {
    objects_.emplace_back();
    return true;
  }
  bool end_object() override {
    objects_.pop_back();
    return true;
  }

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(int64_t) override { return true; }
  bool number_unsigned(uint64_t) override { return true; }
  bool number_float(double, const std::string &) override { return true; }
  bool string(std::string &) override { return true; }
  bool binary(Json::binary_t &) override { return true; }
  bool start_array(size_t) override { return true; }
  bool end_array() override { return true; }
  // The text has been parsed before.
  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &) override { return false; }

 private:
  struct Object {
    std::set<std::string> keys;
    std::string current;
  };
  std::vector<Object> objects_;
};

// Line and column of the character that the parser had read last, counted from 1.
std::string Place(const std::string &text, size_t bytesRead) {
  const std::string_view before = std::string_view(text).substr(0, bytesRead == 0 ? 0 : bytesRead - 1);
  const auto line = 1 + std::ranges::count(before, '\n');
  const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

// What the library says, without its own name and place.
std::string Words(const Json::exception &error) {
  std::string what = error.what();
  for (const char *prefix : {"] ", "parse error", ": "}) {
    if (const size_t found = what.find(prefix); found != std::string::npos) what.erase(0, found + std::strlen(prefix));
  }
  return what;
}

Json ParseFile(const std::string &path) {
  const std::string text = ReadFile(path);
  try {
    Json json = Json::parse(text);
    DuplicateCheck check;
    Json::sax_parse(text, &check);
    return json;
  } catch (const Json::parse_error &error) {
    throw Failure(path + ":" + Place(text, error.byte), Words(error));
  } catch (const Json::out_of_range &error) {
    throw Failure(path, Words(error));  // a number, wherever it stands
  }
}

HVC_ReturnStatus AddRaw(std::string_view key, const Json &json, SnapshotWriter &writer) {
  if (json.size() != 2 || !json.contains("type"))
    throw InvalidJson("a raw value has a 'type' and a 'hex', and no more");
  const Json &type = json["type"];
  const std::string letter = type.is_string() ? type.get<std::string>() : "";
  if (letter.size() != 1 || !snapshot::IsValueType(static_cast<uint8_t>(letter[0]))) {
    throw InvalidJson(Brief(type) + " is not a type of value: R, I, T or H");
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
      throw InvalidJson("entry " + std::to_string(i) + ": " + Brief(entry) +
                        " is not a whole number from -9223372036854775808 to 9223372036854775807");
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
      throw InvalidJson("entry " + std::to_string(i) + ": a NUL stands in the text");
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
  if (target.node == nullptr) throw InvalidJson("no such node");
  if (target.asRecord) {
    std::vector<std::byte> record(target.node->record->size);
    RecordFromJson(*target.node->record, json, record);
    return writer.AddRecord(key, record);
  }
  if (!json.is_array()) throw InvalidJson(Brief(json) + " is not an array");
  return target.node->entry.kind == platkit::ParamKind::kInt ? AddIntegers(key, json, writer)
                                                             : AddTexts(key, json, writer);
}

bool IsReserved(std::string_view key) { return snapshot::IsReservedKey(key) || snapshot::IsHeaderKey(key); }

// What a message calls the entry: its path, or its key as it stands in the file.
void AddNodes(const Json &nodes, bool hex, SnapshotWriter &writer) {
  if (!nodes.is_object()) throw InvalidJson(Brief(nodes) + " is not an object");
  for (const auto &[name, value] : nodes.items()) {
    try {
      const std::string key = hex ? TextFromJson({{"hex", name}}) : name;
      if (IsReserved(key)) throw InvalidJson("no such node");
      if (hex && IsUtf8(key)) throw InvalidJson("a key in UTF-8 stands in 'nodes'");
      const HVC_ReturnStatus status = AddNode(key, value, writer);
      if (status != HVC_OK) throw InvalidJson(StatusText(status));
    } catch (const InvalidJson &invalid) {
      throw InvalidJson(name + ": " + invalid.what());
    }
  }
}

void CheckFormat(const Json &json) {
  if (!json.is_object()) throw InvalidJson(Brief(json) + " is not an object");
  for (const auto &[key, value] : json.items()) {
    constexpr std::string_view kKeys[] = {"format", "signature", "build", "host", "time", "nodes", "hexNodes"};
    if (std::ranges::find(kKeys, key) == std::end(kKeys)) throw InvalidJson("no such key: '" + key + "'");
  }
  if (!json.contains("format")) throw InvalidJson("the key 'format' is missing");
  if (json["format"] != snapshot::kVersion) {
    throw InvalidJson("format: " + Brief(json["format"]) + " is not " + std::string(snapshot::kVersionText));
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
      if (text->size() > snapshot::kMaxHeaderText) throw InvalidJson("longer than 255 bytes");
      if (text->find('\0') != std::string::npos) throw InvalidJson("a NUL stands in the text");
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

void Build(const std::string &input, const std::string &path) {
  SnapshotWriter writer;
  try {
    AddAll(ParseFile(input), writer);
  } catch (const InvalidJson &invalid) {
    throw Failure(input, invalid.what());
  }
  const HVC_ReturnStatus status = writer.Write(path);
  if (status != HVC_OK) throw Failure(path, status);
}

}  // namespace nodal
