// nodal dump: a snapshot as JSON.
#include "tools/nodal/commands.h"
#include "tools/nodal/entries.h"
#include "tools/nodal/output.h"
#include "tools/nodal/text.h"
#include "tools/nodal/value_json.h"

namespace nodal {
namespace {

using platkit::snapshot::SnapshotFile;
namespace snapshot = platkit::snapshot;

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
bool PrintNodes(const std::string &path, SnapshotFile &file, bool utf8) {
  const char *separator = "\n";
  bool others = false;
  for (Entries entries(path, file); entries.Next();) {
    const std::string &key = entries.key();
    if (IsUtf8(key) != utf8) {
      others = true;
      continue;
    }
    PrintEntry(separator, utf8 ? key : ToHex(BytesOf(key)), ValueToJson(key, entries.value()));
    separator = ",\n";
  }
  return others;
}

}  // namespace

void Dump(const std::string &path) {
  SnapshotFile file;
  OpenSnapshot(path, file);
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
