#include "tools/nodal/snapshot/dump.h"

#include "tools/nodal/snapshot/snapshot_entries.h"
#include "tools/nodal/snapshot/value_json.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

namespace snapshot = platkit::snapshot;

// Prints one field per line, so that text tools show which field differs. A value with a single field stays on the line
// of its key.
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

// If `utf8` is true, prints the nodes whose keys are UTF-8, else all other nodes. Returns whether it omitted any.
bool PrintNodes(OpenedSnapshot &snapshot, bool utf8) {
  const char *separator = "\n";
  bool hasOthers = false;
  for (SnapshotEntries entries(snapshot); entries.Next();) {
    const std::string &key = entries.key();
    if (IsUtf8(key) != utf8) {
      hasOthers = true;
      continue;
    }
    PrintEntry(separator, utf8 ? key : ToHex(BytesOf(key)), ValueToJson(key, entries.value()));
    separator = ",\n";
  }
  return hasOthers;
}

}  // namespace

void DumpSnapshot(const std::string &path) {
  OpenedSnapshot opened(path);
  const snapshot::Header &header = opened.file.header();
  const auto printHeader = [](const char *key, const std::string &text) {
    Print("  \"" + std::string(key) + "\": " + TextToJson(text).dump(-1, ' ', true) + ",\n");
  };
  Print("{\n  \"format\": " + std::string(snapshot::kVersionText) + ",\n");
  printHeader("signature", header.definitions.signature);
  printHeader("build", header.definitions.build);
  printHeader("host", header.host);
  printHeader("time", header.time);
  Print("  \"nodes\": {");
  if (PrintNodes(opened, true)) {
    Print("\n  },\n  \"hexNodes\": {");
    PrintNodes(opened, false);
  }
  Print("\n  }\n}\n");
}

}  // namespace nodal
